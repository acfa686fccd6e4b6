#include "tool/pair/FileCheck.h"

#include <algorithm>
#include <memory>

#include "tool/Console.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/ReportReading.h"
#include "tool/pair/Schema.h"
#include "tool/pair/Versions.h"

using Severity = Finding::Severity;

/// A query for the keys of rows that are not as they have to be.
struct FileCheck::Rule {
  const char* name;
  Severity severity;
  QByteArray sql;
};

namespace {

constexpr char Integrity[] = "integrity errors";
constexpr char ForeignKeys[] = "foreign key violations";
constexpr char UnknownVersion[] = "unknown version";
constexpr char Differences[] = "schema differences";
constexpr char Converted[] = "defaults and references of converted files";
constexpr char WrongValues[] = "values of a wrong type or not finite";

QStringList Column(const Sqlite& db, const QByteArray& sql) {
  QStringList values;
  Sqlite::Rows rows = db.Select(sql);
  while (rows.Next()) values.append(rows.Text(0));
  return values;
}

QStringList IntegrityErrors(const Sqlite& db) {
  QStringList lines = Column(db, "PRAGMA integrity_check");
  lines.removeAll(QStringLiteral("ok"));
  return lines;
}

QStringList ForeignKeyViolations(const Sqlite& db) {
  QStringList violations;
  Sqlite::Rows rows = db.Select("PRAGMA foreign_key_check");
  while (rows.Next()) {
    violations.append(rows.Text(0) + QStringLiteral(" row ") + rows.Text(1) +
                      QStringLiteral(" names no row of ") + rows.Text(2));
  }
  return violations;
}

/// Tables with a text in the place of a number, an infinity, or something else in the place of a text.
QStringList WrongTypes(const Sqlite& db) {
  QStringList wrong;
  for (const QString& name : Column(db,
                                    "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE "
                                    "'sqlite\\_%' ESCAPE '\\' ORDER BY 1")) {
    const QByteArray table = name.toUtf8();
    QByteArray condition = ReportReading::WrongNumbers(db, "main", table.constData());
    Sqlite::Rows texts = db.Select("SELECT name FROM pragma_table_info(?) WHERE upper(type) = 'TEXT'");
    texts.Bind(1, table);
    while (texts.Next()) condition += " OR typeof(" + Quoted(texts.Bytes(0)) + ") <> 'text'";
    for (const QString& row : Column(db, "SELECT rowid FROM " + Quoted(table) + " WHERE " + condition)) {
      wrong.append(name + QStringLiteral(" row ") + row);
    }
  }
  return wrong;
}

/// Rows of a table that no alignment names in these columns.
QByteArray Unused(const char* table, const char* key, const char* shown,
                  std::initializer_list<std::pair<const char*, const char*>> users) {
  QByteArray used;
  for (const auto& [alignments, column] : users) {
    used += (used.isEmpty() ? "SELECT " : " UNION SELECT ") + QByteArray(column) + " FROM " + alignments;
  }
  return QByteArray("SELECT ") + shown + " FROM " + table + " WHERE " + key + " NOT IN (" + used + ')';
}

const char* const Sites = "AntennaAlignment";
const char* const Paths = "PathAlignment";

QByteArray WithoutThresholds(Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const QByteArray key = tables.alignmentKey;
  return "SELECT " + key + " FROM main." + tables.alignments + " WHERE " + key + " NOT IN (" +
         Belonging::Joined(kind, "t." + key) + "NOT (" + Belonging::Disagree(kind) + "))";
}

QByteArray WithoutAlignment(Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const QByteArray key = tables.alignmentKey;
  return "SELECT " + key + " FROM thresholds." + tables.thresholds + " WHERE " + key + " NOT IN (SELECT " +
         key + " FROM main." + tables.alignments + ')';
}

QByteArray Doubled(Kind kind) {
  return Belonging::Joined(kind, QByteArray("t.") + Belonging::Of(kind).alignmentKey) + "NOT (" +
         Belonging::Disagree(kind) + ") GROUP BY 1 HAVING count(*) > 1";
}

QByteArray OfOthers(Kind kind) {
  return Belonging::Joined(kind, QByteArray("t.") + Belonging::Of(kind).alignmentKey) +
         Belonging::Disagree(kind);
}

}  // namespace

FileCheck::FileCheck(PrivatePair* files) : files_(files) {
  LookAtMain();
  if (!files_->HasThresholds()) return;
  LookAtThresholds();
  LookAtPair();
}

Severity FileCheck::Worst() const {
  Severity worst = Severity::None;
  for (const Finding& finding : findings_) worst = std::max(worst, finding.severity);
  return worst;
}

void FileCheck::Add(About file, const char* rule, Severity severity, const QStringList& found) {
  constexpr int Shown = 20;
  const bool inMain = file == About::Main;
  findings_.push_back({inMain, inMain ? files_->ShownMain() : files_->ShownThresholds(),
                       QString::fromUtf8(rule), found.isEmpty() ? Severity::None : severity, found.size(),
                       found.mid(0, Shown)});
}

void FileCheck::Look(About file, const char* rule, Severity severity,
                     const std::function<QStringList()>& look) {
  try {
    Add(file, rule, severity, look());
  } catch (const Damage& damage) {
    Add(file, rule, Severity::Error, {damage.Reason()});
  }
}

void FileCheck::Skip(About file, const char* rule) {
  Add(file, rule, Severity::Skipped, {QStringLiteral("not looked at")});
}

bool FileCheck::LookAtFile(About file) {
  const bool inMain = file == About::Main;
  const Sqlite db(inMain ? files_->MainPath() : files_->ThresholdsPath(),
                  inMain ? files_->ShownMain() : files_->ShownThresholds());
  Look(file, Integrity, Severity::Error, [&] {
    db.Execute("PRAGMA journal_mode = DELETE");
    return IntegrityErrors(db);
  });
  const bool intact = findings_.back().severity == Severity::None;
  if (inMain) {
    // If another page is damaged than the one with the version, the version can still be read.
    Look(file, UnknownVersion, Severity::Error, [&] {
      version_ = db.Number("SELECT VersionNumber FROM Version WHERE rowid = 1");
      return Versions::IsKnown(version_)
                 ? QStringList()
                 : QStringList{QStringLiteral("version ") + QString::number(version_) +
                               QStringLiteral(" is not known")};
    });
    if (!Versions::IsKnown(version_)) return false;
    files_->MakeFresh(static_cast<unsigned int>(version_));
    if (intact) Look(file, ForeignKeys, Severity::Error, [&] { return ForeignKeyViolations(db); });
  }
  if (!Versions::IsKnown(version_)) return false;
  const bool right = LookAtSchema(file, db, inMain ? files_->FreshMainPath() : files_->FreshThresholdsPath());
  if (!intact || !right) {
    Skip(file, WrongValues);
    return false;
  }
  Look(file, WrongValues, Severity::Error, [&] { return WrongTypes(db); });
  return true;
}

/// Whether everything is there that files of its version have.
bool FileCheck::LookAtSchema(About file, const Sqlite& db, const QByteArray& freshPath) {
  const Sqlite fresh(freshPath, QStringLiteral("a new file"));
  bool right = false;
  Look(file, Differences, Severity::Error, [&] {
    QStringList differences = Schema::Differences(db, fresh);
    // What is there in addition does not keep anything from being looked at.
    right = std::all_of(differences.cbegin(), differences.cend(), [](const QString& difference) {
      return difference.endsWith(QStringLiteral("does not belong there"));
    });
    return differences;
  });
  Look(file, Converted, Severity::Note, [&] { return Schema::ConvertedTables(db, fresh); });
  return right;
}

void FileCheck::LookByRules(About file, const Sqlite* db, const std::vector<Rule>& rules) {
  for (const Rule& rule : rules) {
    if (db == nullptr) {
      Skip(file, rule.name);
    } else {
      Look(file, rule.name, rule.severity, [&] { return Column(*db, rule.sql); });
    }
  }
}

void FileCheck::LookAtMain() {
  mainIsSound_ = LookAtFile(About::Main);
  const std::unique_ptr<Sqlite> db =
      mainIsSound_ ? std::make_unique<Sqlite>(files_->MainPath(), files_->ShownMain()) : nullptr;
  LookByRules(
      About::Main, db.get(),
      {{"sites that no alignment refers to", Severity::Warning,
        Unused("Sites", "SiteKey", "SiteKey || ' ' || SiteIdentifier", {{Sites, "SiteKey"}})},
       {"paths that no alignment refers to", Severity::Warning,
        Unused("Paths", "PathKey", "PathKey || ' ' || PathIdentifier", {{Paths, "PathKey"}})},
       {"orientations that no alignment refers to", Severity::Warning,
        Unused("Orientation", "OrientationKey", "OrientationKey",
               {{Sites, "TargetOrientationKey"},
                {Sites, "MeasuredOrientationKey"},
                {Paths, "TargetOrientationKey"},
                {Paths, "MeasuredOrientationKey"}})},
       {"locations that no alignment refers to", Severity::Warning,
        Unused("Geolocation", "GeolocationKey", "GeolocationKey",
               {{Sites, "LocationKey"}, {Paths, "LocationKey"}, {Paths, "PathLocationKey"}})},
       {"heights that no alignment refers to", Severity::Warning,
        Unused("Height", "HeightKey", "HeightKey", {{Sites, "SiteHeightKey"}, {Paths, "SiteHeightKey"}})}});
}

void FileCheck::LookAtThresholds() { thresholdsAreSound_ = LookAtFile(About::Thresholds); }

/// Conversions leave other texts of tables than new files have, and alignments without thresholds.
bool FileCheck::IsConverted() const {
  return Schema::HasOtherTexts(Sqlite(files_->MainPath(), files_->ShownMain()),
                               Sqlite(files_->FreshMainPath(), QStringLiteral("a new file")));
}

void FileCheck::LookAtPair() {
  std::unique_ptr<Sqlite> db;
  if (mainIsSound_ && thresholdsAreSound_) {
    db = std::make_unique<Sqlite>(files_->MainPath(), files_->ShownMain());
    db->Attach(files_->ThresholdsPath(), "thresholds");
  }
  const Severity missing = db && !IsConverted() ? Severity::Warning : Severity::Note;
  LookByRules(
      About::Thresholds, db.get(),
      {{"site alignments without thresholds", missing, WithoutThresholds(Kind::Site)},
       {"path alignments without thresholds", missing, WithoutThresholds(Kind::Path)},
       {"thresholds without site alignment", Severity::Note, WithoutAlignment(Kind::Site)},
       {"thresholds without path alignment", Severity::Note, WithoutAlignment(Kind::Path)},
       {"two thresholds rows for one site alignment", Severity::Warning, Doubled(Kind::Site)},
       {"two thresholds rows for one path alignment", Severity::Warning, Doubled(Kind::Path)},
       {"thresholds that name another site than their alignment", Severity::Warning, OfOthers(Kind::Site)},
       {"thresholds that name another path than their alignment", Severity::Warning, OfOthers(Kind::Path)}});
}
