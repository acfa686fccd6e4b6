#include "fuzz/HostileFiles.h"

#include <sqlite3.h>

#include <QDir>
#include <QTemporaryDir>
#include <algorithm>
#include <memory>

#include "core/OperationGuard.h"
#include "fuzz/Seeds.h"
#include "migration/AllConverters.h"
#include "model/AlignerModel.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/AllStores.h"
#include "tests/support/SampleAlignments.h"

struct HostileFiles {
  QString main;
  QString thresholds;
  QString complaint;

  void Require(bool condition, const char* what) {
    if (!condition && complaint.isEmpty()) complaint = QLatin1String(what);
  }
};

namespace {

/// How long an input may calculate, counted in instructions of the engine's machine and not in time, so that
/// an input does the same every time. Holds for every connection of the process.
class Share {
 public:
  static void HoldForAllConnections() {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&HoldFor));  // NOLINT: the engine asks for this type
  }
  static void Renew() { used = 0; }

 private:
  static constexpr int instructionsPerQuestion = 1000;
  static constexpr int questions = 300;
  // Keeps one value from taking up all memory.
  static constexpr int longestValue = 1 << 20;

  static int HoldFor(sqlite3* db, char** /*message*/, const void* /*api*/) {
    sqlite3_progress_handler(
        db, instructionsPerQuestion, [](void*) { return ++used > questions ? 1 : 0; }, nullptr);
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, longestValue);
    return SQLITE_OK;
  }

  static inline int used = 0;
};

Met met;

void Count(const OperationGuard& guard) {
  const auto& failures = guard.Failures();
  const bool interrupted =
      std::any_of(failures.begin(), failures.end(),
                  [](const OperationGuard::Failure& failure) { return failure.code == SQLITE_INTERRUPT; });
  met.interrupted += interrupted ? 1 : 0;
  met.endlessLoops += guard.LoopEnded() ? 1 : 0;
  met.leftOpen += guard.RefusedConnections();
}

// A store that is destroyed through its own class.
using Store = std::shared_ptr<AlignmentDatabaseStore>;

enum class Opening { Open, Create };

template <typename Version>
Store Make(const HostileFiles& files, Opening opening) {
  return std::shared_ptr<Version>(opening == Opening::Open ? Version::Open(files.main, files.thresholds)
                                                           : Version::Create(files.main, files.thresholds));
}

template <typename Converter>
bool Convert(QString path) {
  return Converter().Convert(path);
}

constexpr auto stores = AllStores::Table([](auto store) { return &Make<typename decltype(store)::Type>; });

constexpr auto converters =
    AllConverters::Table([](auto converter) { return &Convert<typename decltype(converter)::Type>; });

unsigned int Probe(const QString& path) {
  unsigned int version = 0;
  return AlignmentDatabase::GetDatabaseFileVersion(path, &version) ? version : 0;
}

/// The store of the version that the file claims to have; the current one if it claims none.
Store StoreOf(const HostileFiles& files, Opening opening) {
  const unsigned int version = Probe(files.main);
  const bool known = version >= 1 && version <= stores.size();
  return (known ? stores[version - 1] : stores.back())(files, opening);
}

/// The first identifiers: as many as are read, and one that is not there.
QVector<QString> Some(QVector<QString> identifiers) {
  constexpr int several = 3;
  identifiers.resize(qMin(identifiers.size(), several));
  identifiers << QStringLiteral("nowhere");
  return identifiers;
}

void OpenFiles(HostileFiles* files) { StoreOf(*files, Opening::Create)->Close(); }

void ProbeFile(HostileFiles* files) { Probe(files->main); }

void ReadFiles(HostileFiles* files) {
  const Store store = StoreOf(*files, Opening::Open);
  for (QString& site : Some(store->GetSiteIdentifiers())) {
    const std::unique_ptr<AntennaAlignmentPdfReportData> reports(store->GetAlignmentReportDataForSite(site));
    if (reports) files->Require(reports->Name() == site, "A report names another site");
  }
  for (const QString& path : Some(store->GetPathIdentifiers())) {
    const std::unique_ptr<PathAlignmentPdfReportData> reports(store->GetPathAlignmentReportDataForSite(path));
    if (reports) files->Require(reports->Name() == path, "A report names another path");
  }
  PreferencesModel preferences;
  store->RestorePreferences(&preferences);
  AlignerModel screens;
  store->RestoreInputContents(&screens);
}

void SaveFiles(HostileFiles* files) {
  const Store store = StoreOf(*files, Opening::Open);
  for (const int number : {1, 7}) {
    delete SampleSiteAlignment(number).Save(store.get());
    delete SamplePathAlignment(number).Save(store.get());
  }
  // What was read goes back: a value that had a wrong type in the file is written with the right one.
  PreferencesModel preferences;
  store->RestorePreferences(&preferences);
  store->SavePreferences(&preferences);
  AlignerModel screens;
  store->RestoreInputContents(&screens);
  store->StoreInputContents(&screens);
  AlignerModel empty;
  store->StoreInputContents(&empty);
}

void DeleteFromFiles(HostileFiles* files) {
  const Store store = StoreOf(*files, Opening::Open);
  QString sector = QStringLiteral("Sector 1");
  for (QString& site : Some(store->GetSiteIdentifiers())) {
    store->DeleteReportsBySiteAndIndex(site, 0);
    store->DeleteReportsBySiteAndSector(site, sector);
  }
  for (QString& path : Some(store->GetPathIdentifiers())) {
    store->DeleteReportsByPathAndIndex(path, 0);
    store->DeleteReportsByPath(path);
  }
}

/// The first row of PRAGMA integrity_check, over a connection of its own.
QByteArray Integrity(const QString& path) {
  sqlite3* db = nullptr;
  sqlite3_stmt* statement = nullptr;
  QByteArray answer;
  if (sqlite3_open_v2(path.toLocal8Bit().constData(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW) {
    answer = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
  return answer;
}

/// All the way up, as an application does when it starts. A file of no known version goes to some converter.
void ConvertFile(HostileFiles* files) {
  unsigned int version = Probe(files->main);
  const unsigned int steps = converters.size();
  if (version < 1 || version > steps) version = 1 + version % steps;
  for (; version <= steps; ++version) {
    const QByteArray before = Seeds::Read(files->main);
    if (!converters[version - 1](files->main)) {
      files->Require(Seeds::Read(files->main) == before, "A refused conversion has changed the file");
      return;
    }
    Share::Renew();
    files->Require(Probe(files->main) == version + 1, "A converted file has another version");
    files->Require(Integrity(files->main) == "ok", "A converted file is damaged");
  }
  ReadFiles(files);
}

void SwallowLog(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) fprintf(stderr, "%s\n", qPrintable(text));
}

/// The files of this process, in a folder of its own.
class Folder {
 public:
  Folder() {
    qInstallMessageHandler(SwallowLog);
    Share::HoldForAllConnections();
    // It is not up to the library to make the scratch folder, and without it all conversions would be
    // refused.
    if (!QDir(QStringLiteral("/opt/tarnbeam/database")).exists()) {
      qFatal("Conversions need the folder /opt/tarnbeam/database");
    }
    Seeds::MakeCurrent({Path("main"), Path("thresholds")});
    main_ = Seeds::Read(Path("main"));
    thresholds_ = Seeds::Read(Path("thresholds"));
  }

  HostileFiles With(Side side, const QByteArray& input) const {
    for (const QString& name : QDir(folder_.path()).entryList(QDir::Files))
      QFile::remove(folder_.filePath(name));
    Seeds::Write(Path("main"), side == Side::Main ? input : main_);
    Seeds::Write(Path("thresholds"), side == Side::Main ? thresholds_ : input);
    return {Path("main"), Path("thresholds"), QString()};
  }

 private:
  QString Path(const char* name) const { return folder_.filePath(QLatin1String(name)); }

  QTemporaryDir folder_;
  QByteArray main_;
  QByteArray thresholds_;
};

}  // namespace

const std::vector<Target>& Target::All() {
  static const std::vector<Target> targets = {
      {"probe_main", Side::Main, ProbeFile},        {"convert_main", Side::Main, ConvertFile},
      {"open_main", Side::Main, OpenFiles},         {"open_thresholds", Side::Thresholds, OpenFiles},
      {"read_main", Side::Main, ReadFiles},         {"read_thresholds", Side::Thresholds, ReadFiles},
      {"save_main", Side::Main, SaveFiles},         {"save_thresholds", Side::Thresholds, SaveFiles},
      {"delete_main", Side::Main, DeleteFromFiles}, {"delete_thresholds", Side::Thresholds, DeleteFromFiles},
  };
  return targets;
}

const Target* Target::Named(const QString& name) {
  for (const Target& target : All()) {
    if (name == QLatin1String(target.name)) return &target;
  }
  return nullptr;
}

const Met& Target::HasMet() { return met; }

QString Target::Run(const QByteArray& input) const {
  static const Folder folder;
  HostileFiles files = folder.With(side, input);
  Share::Renew();
  {
    const OperationGuard guard;
    run(&files);
    Count(guard);
  }
  const QString& other = side == Side::Main ? files.thresholds : files.main;
  files.Require(Integrity(other) == "ok", "The file beside the hostile one is damaged");
  return files.complaint;
}
