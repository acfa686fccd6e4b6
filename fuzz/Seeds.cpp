#include "fuzz/Seeds.h"

#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <memory>

#include "migration/AllConverters.h"
#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "store/AllStores.h"
#include "tests/support/SampleAlignments.h"

namespace {

[[noreturn]] void Fail(const QString& what) { qFatal("%s", qPrintable(what)); }

void RunSqlFile(const QString& path, const QByteArray& sql) {
  sqlite3* db = nullptr;
  char* message = nullptr;
  const bool done = sqlite3_open(path.toLocal8Bit().constData(), &db) == SQLITE_OK &&
                    sqlite3_exec(db, sql.constData(), nullptr, nullptr, &message) == SQLITE_OK;
  if (!done) Fail(path + QStringLiteral(": ") + QString::fromUtf8(message));
  sqlite3_close(db);
}

// Mutations find more in a file of small pages, and libFuzzer goes through it faster.
void MakeSmall(const QString& path) { RunSqlFile(path, "PRAGMA page_size = 512; VACUUM;"); }

void SaveScreens(CurrentStore* store) {
  AlignerModel screens;
  screens.SetCurrentSiteInformation(SampleSiteAlignment(5).site.Clone());
  screens.SetCurrentPathInformation(SamplePathAlignment(6).path.Clone());
  store->StoreInputContents(&screens);
}

// Texts begin with the name of the file that they damage: "main_" or "thresholds_".
void MakeHostile(const Seeds::Pair& current, const QString& folder) {
  const QDir texts(QStringLiteral(TARNBEAM_SOURCE_FOLDER "/fuzz/hostile"));
  for (const QFileInfo& text : texts.entryInfoList({QStringLiteral("*.sql")})) {
    const bool isMain = text.fileName().startsWith(QLatin1String("main_"));
    const QString path = folder + QLatin1String(isMain ? "/main/" : "/thresholds/") +
                         text.completeBaseName() + QLatin1String(".sqlite");
    Seeds::Write(path, Seeds::Read(isMain ? current.main : current.thresholds));
    RunSqlFile(path, Seeds::Read(text.filePath()));
  }
}

}  // namespace

namespace Seeds {

void MakeCurrent(const Pair& files) {
  const std::unique_ptr<CurrentStore> store(CurrentStore::Create(files.main, files.thresholds));
  for (int number = 1; number <= 2; ++number) {
    delete SampleSiteAlignment(number).Save(store.get());
    delete SamplePathAlignment(number).Save(store.get());
  }
  PreferencesModel preferences;
  store->SavePreferences(&preferences);
  SaveScreens(store.get());
  MakeSmall(files.main);
  MakeSmall(files.thresholds);
}

void MakeAll(const QString& folder) {
  QDir(folder).removeRecursively();
  for (const char* side : {"main", "thresholds"}) {
    if (!QDir().mkpath(folder + QLatin1Char('/') + QLatin1String(side))) Fail(folder);
  }
  for (std::size_t version = 1; version <= AllConverters::count; ++version) {
    const QString name = QStringLiteral("version_%1").arg(version);
    const QString path = folder + QLatin1String("/main/") + name + QLatin1String(".sqlite");
    const QByteArray sql =
        Read(QStringLiteral(TARNBEAM_SOURCE_FOLDER "/tests/golden/") + name + QLatin1String(".sql"));
    RunSqlFile(path, "PRAGMA page_size = 512;" + sql);
  }
  const Pair current{folder + QLatin1String("/main/current.sqlite"),
                     folder + QLatin1String("/thresholds/current.sqlite")};
  MakeCurrent(current);
  MakeHostile(current, folder);
}

QByteArray Read(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) Fail(path);
  return file.readAll();
}

void Write(const QString& path, const QByteArray& content) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) Fail(path);
}

}  // namespace Seeds
