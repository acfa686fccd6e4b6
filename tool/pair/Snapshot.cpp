#include "tool/pair/Snapshot.h"

#include <QHash>
#include <algorithm>
#include <iterator>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/ReportReading.h"
#include "tool/pair/SourceFile.h"
#include "tool/pair/Versions.h"

namespace {

QString ShownOrEmpty(const QString& name) { return name.isEmpty() ? QString() : FileName::Shown(name); }

Reports ReportsOf(unsigned int version, const Snapshot::Summary& summary, std::vector<Alignment> alignments) {
  Reports reports;
  reports.kind = summary.kind;
  reports.identifier = summary.identifier;
  reports.pdfName = ReportReading::PdfName(summary.kind, summary.identifier);
  reports.alignments = std::move(alignments);
  int index = 0;
  for (Alignment& alignment : reports.alignments) {
    alignment.identifier = summary.identifier;
    alignment.index = index++;
    alignment.heightSource = static_cast<HeightSource>(
        Versions::CurrentHeightType(version, static_cast<int>(alignment.heightSource)));
  }
  return reports;
}

std::vector<Snapshot::Summary> SummariesOf(const PrivatePair& files, Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  QHash<qint64, qint64> counts;
  Sqlite::Rows counted = files.Db().Select(QByteArray("SELECT ") + tables.ownerKey + ", count(*) FROM main." +
                                           tables.alignments + " GROUP BY 1");
  while (counted.Next()) counts.insert(counted.Int(0), counted.Int(1));
  std::vector<Snapshot::Summary> summaries;
  Sqlite::Rows owners = files.Db().Select(QByteArray("SELECT ") + tables.ownerKey + ", " + tables.ownerName +
                                          " FROM main." + tables.owners + " ORDER BY 1");
  while (owners.Next()) {
    summaries.push_back({kind, owners.Int(0), owners.Text(1), counts.value(owners.Int(0))});
  }
  return summaries;
}

using PreferencesRow = QVector<QPair<QString, QVariant>>;

/// What the one row of a table holds; nothing if there is none.
void AddRow(const Sqlite& db, const char* schema, const char* table, PreferencesRow* row) {
  Sqlite::Rows columns =
      db.Select(QByteArray("SELECT name FROM pragma_table_info('") + table + "', '" + schema + "')");
  while (columns.Next()) {
    const QByteArray name = Quoted(columns.Bytes(0));
    // All digits: SQLite's own text of a number does not have them.
    Sqlite::Rows value = db.Select("SELECT " + name + ", typeof(" + name + "), printf('%!.17g', " + name +
                                   ") FROM " + schema + '.' + table + " WHERE rowid = 1");
    if (!value.Next()) return;
    const QByteArray type = value.Bytes(1);
    QVariant stored = value.Text(0);
    if (type == "integer") stored = value.Int(0);
    if (type == "real") stored = value.Bytes(2).toDouble();
    row->append({columns.Text(0), stored});
  }
}

}  // namespace

Snapshot::Snapshot(const QString& mainName, const QString& thresholdsName, const Deadline& deadline,
                   Look look)
    : files_(FileName::Shown(mainName), ShownOrEmpty(thresholdsName)) {
  CopyTogether(mainName, files_.MainPath(), thresholdsName, files_.ThresholdsPath(), deadline);
  if (look == Look::Pair) files_.RequirePair();
  if (look == Look::Version) {
    files_.Open();
    files_.RequireVersion();
  }
}

std::vector<Snapshot::Summary> Snapshot::Summaries() const {
  std::vector<Summary> summaries = SummariesOf(files_, Kind::Site);
  const std::vector<Summary> paths = SummariesOf(files_, Kind::Path);
  summaries.insert(summaries.end(), paths.begin(), paths.end());
  return summaries;
}

std::vector<Reports> Snapshot::ReadAllOf(const PrivatePair& files) {
  ReportReading::RequireNumbers(files);
  ReportReading::RequireComplete(files);
  std::vector<Reports> all;
  for (const Kind kind : {Kind::Site, Kind::Path}) {
    auto byOwner = ReportReading::Read(files, kind, nullptr);
    for (const Summary& summary : SummariesOf(files, kind)) {
      all.push_back(ReportsOf(files.Version(), summary, std::move(byOwner[summary.key])));
    }
  }
  return all;
}

std::vector<Alignment> Snapshot::ReadWhole() const {
  std::vector<Alignment> whole;
  for (Reports& reports : ReadAll()) {
    std::move(reports.alignments.begin(), reports.alignments.end(), std::back_inserter(whole));
  }
  return whole;
}

Snapshot::Summary Snapshot::Find(Kind kind, const QString& identifier) const {
  for (const Summary& summary : SummariesOf(files_, kind)) {
    if (summary.identifier == identifier) return summary;
  }
  throw Failure(files_.ShownMain() + QStringLiteral(": there is no ") + ShownSubject(kind, identifier));
}

qint64 Snapshot::KeyOf(Kind kind, const QString& identifier) const { return Find(kind, identifier).key; }

Reports Snapshot::ReadOne(Kind kind, const QString& identifier) const {
  ReportReading::RequireNumbers(files_);
  const Summary summary = Find(kind, identifier);
  auto byOwner = ReportReading::Read(files_, kind, &summary.key);
  return ReportsOf(Version(), summary, std::move(byOwner[summary.key]));
}

void Snapshot::RequireComplete() const { ReportReading::RequireComplete(files_); }

void Snapshot::RequirePreferences() const { ReportReading::RequirePreferences(files_); }

QVector<QPair<QString, QVariant>> Snapshot::Preferences() const {
  PreferencesRow row;
  AddRow(files_.Db(), "main", "Preferences", &row);
  if (files_.HasThresholds()) AddRow(files_.Db(), "thresholds", "PreferencesPathLength", &row);
  return row;
}
