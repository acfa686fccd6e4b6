#include "tool/pair/ReportReading.h"

#include <QHash>
#include <algorithm>
#include <memory>

#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/IAlignmentDatabase.h"
#include "tool/Console.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/ColumnTypes.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/LibraryCall.h"
#include "tool/pair/Versions.h"

namespace {

using Belonging::Tables;

/// The one site or path under which the library is made to find all that is to be read.
const QByteArray everythingRead = QByteArrayLiteral("everything");

/// The library looks through all alignments for each site, so reading one after the other takes time that
/// grows with the square. In a second copy all that is to be read belongs to one site, which is asked for
/// once.
class Gathered {
 public:
  Gathered(const PrivatePair& files, const Tables& tables, const qint64* onlyOwner)
      : files_(files), tables_(tables) {
    CopyFile(files.MainPath(), MainPath());
    if (files.HasThresholds()) CopyFile(files.ThresholdsPath(), ThresholdsPath());
    db_ = std::make_unique<Sqlite>(MainPath(), files.ShownMain());
    if (files.HasThresholds()) db_->Attach(ThresholdsPath(), "thresholds");
    db_->Execute("BEGIN");
    Gather(onlyOwner);
    db_->Execute("COMMIT");
    db_.reset();
  }

  std::shared_ptr<IAlignmentDatabase> Store() const {
    return Versions::Open(files_.Version(), QString::fromLocal8Bit(MainPath()),
                          QString::fromLocal8Bit(ThresholdsPath()));
  }

 private:
  QByteArray MainPath() const { return files_.Folder().Path(PrivateFolder::Name::ReadMain); }
  QByteArray ThresholdsPath() const { return files_.Folder().Path(PrivateFolder::Name::ReadThresholds); }

  void Gather(const qint64* onlyOwner) const {
    const QByteArray owner = tables_.ownerKey;
    const QByteArray alignments = QByteArray("main.") + tables_.alignments;
    const QByteArray owners = QByteArray("main.") + tables_.owners;
    const qint64 everything =
        db_->Number("SELECT min(0, (SELECT ifnull(min(" + owner + "), 0) FROM " + owners +
                    "), (SELECT ifnull(min(" + owner + "), 0) FROM " + alignments + ")) - 1");
    if (files_.HasThresholds()) {
      // Rows that belong to something else are not used.
      const QByteArray thresholds = QByteArray("thresholds.") + tables_.thresholds;
      db_->Execute("DELETE FROM " + thresholds + " WHERE rowid IN (" +
                   Belonging::Joined(tables_.kind, "t.rowid") + Belonging::Disagree(tables_.kind) + ')');
      db_->Select("UPDATE " + thresholds + " SET " + tables_.thresholdsOwner + " = ?")
          .Bind(1, everything)
          .Next();
    }
    const QByteArray chosen = onlyOwner != nullptr ? "?2" : "(SELECT " + owner + " FROM " + owners + ')';
    Sqlite::Rows move = db_->Select("UPDATE " + alignments + " SET " + owner + " = ?1 WHERE " + owner +
                                    (onlyOwner != nullptr ? " = " : " IN ") + chosen);
    move.Bind(1, everything);
    if (onlyOwner != nullptr) move.Bind(2, *onlyOwner);
    move.Next();
    db_->Select("DELETE FROM " + owners + " WHERE " + tables_.ownerName + " = ?")
        .Bind(1, everythingRead)
        .Next();
    db_->Select("INSERT INTO " + owners + " (" + owner + ", " + tables_.ownerName + ") VALUES (?, ?)")
        .Bind(1, everything)
        .Bind(2, everythingRead)
        .Next();
  }

  const PrivatePair& files_;
  const Tables& tables_;
  std::unique_ptr<Sqlite> db_;
};

template <typename Container>
std::vector<Alignment> Take(const Container& records) {
  std::vector<Alignment> alignments;
  alignments.reserve(static_cast<std::size_t>(records.size()));
  for (const auto* record : records) alignments.emplace_back(*record);
  return alignments;
}

std::vector<Alignment> ReadGathered(const PrivatePair& files, Kind kind, const Gathered& gathered) {
  const QString failed = files.ShownMain() + QStringLiteral(": the alignments cannot be read");
  const std::shared_ptr<IAlignmentDatabase> store = gathered.Store();
  QString identifier = QString::fromLatin1(everythingRead);
  LibraryCall call;
  if (kind == Kind::Site) {
    const std::unique_ptr<AntennaAlignmentPdfReportData> container(
        store->GetAlignmentReportDataForSite(identifier));
    call.RequireSuccess(container != nullptr, failed);
    return Take(*container->AlignmentData());
  }
  const std::unique_ptr<PathAlignmentPdfReportData> container(
      store->GetPathAlignmentReportDataForSite(identifier));
  call.RequireSuccess(container != nullptr && container->PathData() != nullptr, failed);
  return Take(*container->PathData());
}

bool StandsBefore(const Alignment& a, const Alignment& b) {
  const int bySector = a.sector.toLower().compare(b.sector.toLower());
  if (bySector != 0) return bySector < 0;
  const int byPosition = a.position.toLower().compare(b.position.toLower());
  return byPosition != 0 ? byPosition < 0 : a.key < b.key;
}

/// How many alignments name a row that is not there.
qint64 Incomplete(const Sqlite& db, Kind kind) {
  QByteArray condition = "0";
  for (const Belonging::Reference& reference : Belonging::ReferencesOf(kind)) {
    condition += QByteArray(" OR ") + reference.column + " NOT IN (SELECT " + reference.key + " FROM main." +
                 reference.table + ')';
  }
  return db.Number(QByteArray("SELECT count(*) FROM main.") + Belonging::Of(kind).alignments + " WHERE " +
                   condition);
}

void RequireNumbersOf(const PrivatePair& files, const char* schema, const char* table) {
  const std::vector<qint64> wrong =
      ColumnTypes::WrongRows(files.Db(), schema, table, ColumnTypes::Looked::Numbers, 1);
  if (wrong.empty()) return;
  const bool inMain = qstrcmp(schema, "main") == 0;
  throw Damage(inMain ? files.ShownMain() : files.ShownThresholds(),
               QStringLiteral("row ") + QString::number(wrong.front()) + QStringLiteral(" of ") +
                   QLatin1String(table) + QStringLiteral(" holds what is no finite number"));
}

}  // namespace

namespace ReportReading {

void RequireComplete(const PrivatePair& files) {
  const qint64 incomplete = Incomplete(files.Db(), Kind::Site) + Incomplete(files.Db(), Kind::Path);
  if (incomplete == 0) return;
  throw Damage(files.ShownMain(), Console::Counted(incomplete, QStringLiteral("alignment")) +
                                      QStringLiteral(" without all the rows that belong to it"));
}

void RequireNumbers(const PrivatePair& files) {
  for (const char* table : {"Orientation", "Geolocation", "Height", "AntennaAlignment", "PathAlignment"}) {
    RequireNumbersOf(files, "main", table);
  }
  if (!files.HasThresholds()) return;
  for (const char* table : {"AntennaAlignmentThresholds", "PathAlignmentThresholds"}) {
    RequireNumbersOf(files, "thresholds", table);
  }
}

void RequirePreferences(const PrivatePair& files) {
  RequireNumbersOf(files, "main", "Preferences");
  if (files.HasThresholds()) RequireNumbersOf(files, "thresholds", "PreferencesPathLength");
}

std::map<qint64, std::vector<Alignment>> Read(const PrivatePair& files, Kind kind, const qint64* onlyOwner) {
  const Tables& tables = Belonging::Of(kind);
  QHash<qint64, qint64> owners;
  Sqlite::Rows rows = files.Db().Select(QByteArray("SELECT ") + tables.alignmentKey + ", " + tables.ownerKey +
                                        " FROM main." + tables.alignments);
  while (rows.Next()) owners.insert(rows.Int(0), rows.Int(1));
  std::map<qint64, std::vector<Alignment>> byOwner;
  for (Alignment& alignment : ReadGathered(files, kind, Gathered(files, tables, onlyOwner))) {
    const auto owner = owners.constFind(alignment.key);
    // A key of more than 32 bits comes back truncated.
    if (owner == owners.constEnd()) {
      throw Damage(files.ShownMain(), QStringLiteral("alignments have keys that cannot be read"));
    }
    byOwner[*owner].push_back(std::move(alignment));
  }
  for (auto& [owner, alignments] : byOwner) {
    std::sort(alignments.begin(), alignments.end(), StandsBefore);
  }
  return byOwner;
}

QString PdfName(Kind kind, const QString& identifier) {
  return identifier +
         (kind == Kind::Site ? QStringLiteral("-A-Report.pdf") : QStringLiteral("-M-Report.pdf"));
}

}  // namespace ReportReading
