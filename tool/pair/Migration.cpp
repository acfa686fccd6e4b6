#include "tool/pair/Migration.h"

#include <QElapsedTimer>
#include <cerrno>
#include <memory>

#include "migration/AllConverters.h"
#include "store/AllStores.h"
#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Creation.h"
#include "tool/pair/Edit.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/LibraryCall.h"
#include "tool/pair/NewFile.h"
#include "tool/pair/Schema.h"
#include "tool/pair/Versions.h"

namespace {

template <typename Converter>
bool Convert(QString* path) {
  return Converter().Convert(*path);
}

// The converter at index N - 1 starts from version N.
constexpr auto steps =
    AllConverters::Table([](auto converter) { return &Convert<typename decltype(converter)::Type>; });
static_assert(steps.size() == currentSchemaVersion - 1, "a version without its converter");

/// Tables whose rows every step has to carry over.
constexpr const char* keptTables[] = {"AntennaAlignment", "PathAlignment", "Preferences",
                                      "SiteScreenContents", "PathScreenContents"};

class Conversion {
 public:
  Conversion(PrivatePair* copies, bool acceptLosses, const Deadline& deadline)
      : copies_(copies), acceptLosses_(acceptLosses), deadline_(deadline) {}

  /// Returns what was done, a line per step.
  QString Run() {
    TakeOutSurplus();
    const QVector<qint64> before = Counts();
    const unsigned int from = copies_->Version();
    copies_->Close();
    QString lines;
    for (unsigned int version = from; version < currentSchemaVersion; ++version) lines += RunStep(version);
    copies_->Open();
    copies_->RequireVersion();
    copies_->RequireShape();
    RequireRows(before);
    return lines;
  }

 private:
  void Lose(const QStringList& losses) const {
    if (losses.isEmpty() || acceptLosses_) return;
    throw Failure(copies_->ShownMain() + QStringLiteral(": the conversion would lose ") +
                  Console::Printable(losses.join(QStringLiteral(", "))) +
                  QStringLiteral("; nothing was changed. --accept-losses goes on without"));
  }

  void TakeOutSurplus() const {
    const Sqlite fresh(copies_->FreshMainPath(), copies_->ShownMain());
    const Schema::Surplus surplus = Schema::SurplusOf(copies_->Db(), fresh);
    Lose(surplus.shown);
    for (const QByteArray& removal : surplus.removals) copies_->Db().Execute(removal);
  }

  QVector<qint64> Counts() const {
    QVector<qint64> counts;
    for (const char* table : keptTables) {
      counts.append(copies_->Db().Number(QByteArray("SELECT count(*) FROM main.") + table));
    }
    return counts;
  }

  QString RunStep(unsigned int version) const {
    QElapsedTimer timer;
    timer.start();
    const QString step = QStringLiteral("version ") + QString::number(version) + QStringLiteral(" to ") +
                         QString::number(version + 1);
    while (!TryStep(version, step)) {
      if (deadline_.Pause()) continue;
      throw Failure(copies_->ShownMain() +
                        QStringLiteral(": another conversion is under way, and /opt/tarnbeam/database "
                                       "serves one at a time; try again, or wait longer with --wait "
                                       "SECONDS"),
                    Status::InUse);
    }
    return step + QStringLiteral(": ") + QString::number(timer.elapsed()) + QStringLiteral(" ms\n");
  }

  /// False where another conversion has the folder that they work through.
  bool TryStep(unsigned int version, const QString& step) const {
    QString path = QString::fromLocal8Bit(copies_->MainPath());
    LibraryCall call;
    if (!steps.at(version - 1)(&path)) {
      if (call.MetOnly(EWOULDBLOCK)) return false;
      call.RequireSuccess(false,
                          copies_->ShownMain() + QStringLiteral(": ") + step +
                              QStringLiteral(" could not be done; the file is as it was. Conversions work "
                                             "through /opt/tarnbeam/database/TemporaryDB.sqlite: that folder "
                                             "must exist and be writable."));
    }
    if (!acceptLosses_) {
      call.RequireSuccess(
          true, copies_->ShownMain() + QStringLiteral(": ") + step +
                    QStringLiteral(" would lose something; nothing was changed. --accept-losses goes "
                                   "on without"));
    }
    return true;
  }

  void RequireRows(const QVector<qint64>& before) const {
    const QVector<qint64> after = Counts();
    QStringList losses;
    for (int at = 0; at < after.size(); ++at) {
      if (after.at(at) >= before.at(at)) continue;
      losses.append(Console::Counted(before.at(at) - after.at(at), QStringLiteral("row")) +
                    QStringLiteral(" of ") + QLatin1String(keptTables[at]));
    }
    Lose(losses);
  }

  PrivatePair* const copies_;
  const bool acceptLosses_;
  const Deadline& deadline_;
};

/// A file that goes again unless it is told to stay.
class PlacedFile {
 public:
  PlacedFile() = default;
  PlacedFile(const PlacedFile&) = delete;
  PlacedFile& operator=(const PlacedFile&) = delete;
  ~PlacedFile() {
    if (file_) file_->TakeBack();
  }
  void Place(const QByteArray& content, const QString& name) {
    NewFile::RemoveLeftovers(FileName::ToBytes(name));
    auto file = std::make_unique<NewFile>(content, name);
    file->Place();
    file_ = std::move(file);
  }
  void Stay() { file_.reset(); }

 private:
  std::unique_ptr<NewFile> file_;
};

}  // namespace

namespace Migration {

void Run(const QString& mainName, const QString& thresholdsName, const Choices& choices,
         const Deadline& deadline) {
  const bool makesThresholds = !thresholdsName.isEmpty() && !FileExists(thresholdsName);
  // Not while there are private copies: where a signal ends the run, one folder of them is all that is known.
  if (!thresholdsName.isEmpty() && !makesThresholds) RequireThresholdsFile(thresholdsName, deadline);
  Edit edit(mainName, QString(), deadline, Edit::Files::AsTheyAre);
  PrivatePair& copies = edit.Copies();
  const bool isCurrent = copies.RequireVersion() == currentSchemaVersion;
  copies.RequireShape();
  QString lines;
  PlacedFile backup;
  PlacedFile thresholds;
  if (isCurrent) {
    lines = copies.ShownMain() + QStringLiteral(" is of version ") + QString::number(currentSchemaVersion) +
            QStringLiteral(" already\n");
  } else {
    if (!choices.backup.isEmpty()) {
      backup.Place(copies.MainPath(), choices.backup);
      lines += QStringLiteral("copied to ") + FileName::Shown(choices.backup) + QLatin1Char('\n');
    }
    lines += Conversion(&copies, choices.acceptLosses, deadline).Run();
  }
  if (makesThresholds) {
    // Should the run be killed before the main file is changed, the next one goes on from there.
    thresholds.Place(copies.FreshThresholdsPath(), thresholdsName);
    lines += QStringLiteral("created ") + FileName::Shown(thresholdsName) + QLatin1Char('\n');
  }
  // From here on a copy of what was there may be needed.
  backup.Stay();
  if (!isCurrent) edit.Commit();
  thresholds.Stay();
  Console::Print(lines);
}

}  // namespace Migration
