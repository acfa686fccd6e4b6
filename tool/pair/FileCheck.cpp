#include "tool/pair/FileCheck.h"

#include <algorithm>
#include <memory>

#include "tool/Console.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/CheckRules.h"
#include "tool/pair/ColumnTypes.h"
#include "tool/pair/Schema.h"
#include "tool/pair/Versions.h"

using Severity = Finding::Severity;

namespace {

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

/// The library handles keys of alignments as unsigned numbers of 32 bits.
QStringList KeysThatCannotBeRead(const Sqlite& db) {
  QStringList wrong;
  for (const Kind kind : {Kind::Site, Kind::Path}) {
    const Belonging::Tables& tables = Belonging::Of(kind);
    for (const QString& key :
         Column(db, QByteArray("SELECT ") + tables.alignmentKey + " FROM main." + tables.alignments +
                        " WHERE " + tables.alignmentKey + " NOT BETWEEN 0 AND 4294967295")) {
      wrong.append(QLatin1String(tables.alignments) + QStringLiteral(" row ") + key);
    }
  }
  return wrong;
}

QStringList WrongTypes(const Sqlite& db, const Sqlite& fresh) {
  QStringList wrong;
  for (const QString& name : Column(fresh,
                                    "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE "
                                    "'sqlite\\_%' ESCAPE '\\' ORDER BY 1")) {
    for (const qint64 row :
         ColumnTypes::WrongRows(db, "main", name.toUtf8(), ColumnTypes::Looked::NumbersAndTexts)) {
      wrong.append(name + QStringLiteral(" row ") + QString::number(row));
    }
  }
  return wrong;
}

}  // namespace

FileCheck::FileCheck(PrivatePair* files) : files_(files), main_(files->MainPath(), files->ShownMain()) {
  LookAtMain();
  const bool isEarlier = Versions::IsKnown(version_) && version_ < Versions::FirstWithThresholds;
  if (!files_->HasThresholds() || isEarlier) return;
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

bool FileCheck::LookAtFile(About file, const Sqlite& db) {
  const bool inMain = file == About::Main;
  Look(file, Integrity, Severity::Error, [&] {
    db.Execute("PRAGMA journal_mode = DELETE");
    // Pages are kept: the file is gone through more than once.
    db.Execute("PRAGMA cache_size = -65536");
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
  const Sqlite fresh(inMain ? files_->FreshMainPath() : files_->FreshThresholdsPath(),
                     QStringLiteral("a new file"));
  const bool right = LookAtSchema(file, db, fresh);
  if (!intact || !right) {
    Skip(file, WrongValues);
    return false;
  }
  Look(file, WrongValues, Severity::Error,
       [&] { return inMain ? WrongTypes(db, fresh) + KeysThatCannotBeRead(db) : WrongTypes(db, fresh); });
  return true;
}

/// Whether everything is there that files of its version have.
bool FileCheck::LookAtSchema(About file, const Sqlite& db, const Sqlite& fresh) {
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

void FileCheck::LookAtMain() {
  mainIsSound_ = LookAtFile(About::Main, main_);
  if (!mainIsSound_) {
    for (const auto& rule : CheckRules::Unused) Skip(About::Main, rule.name);
    return;
  }
  const Sqlite db(files_->MainPath(), files_->ShownMain());
  used_ = std::make_unique<KeyUse>(db);
  for (const auto& rule : CheckRules::Unused) {
    QStringList shown;
    for (const KeyUse::Row& row : used_->Unused(db, rule.table)) shown.append(row.shown);
    Add(About::Main, rule.name, Severity::Warning, shown);
  }
}

void FileCheck::LookAtThresholds() {
  const Sqlite db(files_->ThresholdsPath(), files_->ShownThresholds());
  thresholdsAreSound_ = LookAtFile(About::Thresholds, db);
}

/// Conversions leave other texts of tables than new files have, and alignments without thresholds.
bool FileCheck::IsConverted() const {
  return Schema::HasOtherTexts(main_, Sqlite(files_->FreshMainPath(), QStringLiteral("a new file")));
}

void FileCheck::LookAtPair() {
  if (!mainIsSound_ || !thresholdsAreSound_) {
    for (const auto& rule : CheckRules::Thresholds) {
      for (const char* name : {rule.ofSites, rule.ofPaths}) Skip(About::Thresholds, name);
    }
    return;
  }
  main_.Attach(files_->ThresholdsPath(), "thresholds");
  const ThresholdsUse sites(*used_, main_, Kind::Site);
  const ThresholdsUse paths(*used_, main_, Kind::Path);
  const bool isConverted = IsConverted();
  for (const auto& rule : CheckRules::Thresholds) {
    const bool isMissing = rule.found == &ThresholdsUse::alignmentsWithout;
    const Severity severity = isMissing && isConverted ? Severity::Note : rule.severity;
    Add(About::Thresholds, rule.ofSites, severity, sites.*rule.found);
    Add(About::Thresholds, rule.ofPaths, severity, paths.*rule.found);
  }
}
