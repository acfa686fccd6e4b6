#include "tool/pair/Repair.h"

#include <QRegularExpression>
#include <cstdio>

#include "tool/Console.h"
#include "tool/pair/CheckRules.h"
#include "tool/pair/FileCheck.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/RowChanges.h"
#include "tool/pair/Versions.h"

namespace Repair {
namespace {

[[noreturn]] void Refuse(const QString& shown, const QString& reason, const QString& help) {
  throw Failure(shown + QStringLiteral(": ") + reason + QStringLiteral(", which cannot be repaired; ") + help,
                Status::Damaged);
}

const QString salvageHint = QStringLiteral("'tarnbeam-db salvage' reads what can be read into new files");

bool IsOfIntegrity(const Finding& finding) { return finding.rule == QLatin1String(FileCheck::integrityRule); }

/// Refuses what is not damage, and damage too unless it is `allowed`.
void RequireNoErrors(const PrivatePair& copies, const FileCheck& check, bool allowDamage) {
  if (Versions::IsKnown(check.Version()) && check.Version() < Versions::firstWithThresholds) {
    Refuse(copies.ShownMain(), QStringLiteral("is of version ") + QString::number(check.Version()),
           QStringLiteral("'tarnbeam-db migrate' brings it to version ") +
               QString::number(currentSchemaVersion));
  }
  for (const Finding& finding : check.Findings()) {
    if (finding.severity != Finding::Severity::Error || (allowDamage && IsOfIntegrity(finding))) continue;
    Refuse(finding.shownFile,
           finding.rule + QStringLiteral(" (") +
               Console::Printable(finding.keys.first().section(QLatin1Char('\n'), -1)) + QLatin1Char(')'),
           salvageHint);
  }
}

/// Makes a sound index for each that a table has for its UNIQUE columns, and puts it in its place. The pages
/// of those that were there lie about afterwards.
void ReplaceIndices(const Sqlite& db) {
  struct Index {
    QByteArray name;
    QByteArray table;
    QByteArray column;
  };
  std::vector<Index> indices;
  {
    Sqlite::Rows rows = db.Select(
        "SELECT s.name, s.tbl_name, i.name FROM sqlite_schema s, pragma_index_info(s.name) i WHERE s.type = "
        "'index'");
    while (rows.Next()) indices.push_back({rows.Bytes(0), rows.Bytes(1), rows.Bytes(2)});
  }
  for (const Index& index : indices) {
    db.Execute("CREATE UNIQUE INDEX rebuilt_index ON " + Quoted(index.table) + " (" + Quoted(index.column) +
               ')');
    db.Execute("PRAGMA writable_schema = ON");
    db.Select(
          "UPDATE sqlite_schema SET rootpage = (SELECT rootpage FROM sqlite_schema WHERE name = "
          "'rebuilt_index') WHERE name = ?")
        .Bind(1, index.name)
        .Next();
    db.Execute("DELETE FROM sqlite_schema WHERE name = 'rebuilt_index'");
    db.Execute("PRAGMA writable_schema = RESET");
  }
}

/// Whether rows could be on a page.
bool IsPageOfTable(const QByteArray& path, qint64 number, qint64 pageSize) {
  constexpr char interior = 0x05;
  constexpr char leaf = 0x0D;
  char type = 0;
  const Descriptor file(path, O_RDONLY);
  return !file.IsOpen() || pread(file.Number(), &type, 1, (number - 1) * pageSize) != 1 || type == interior ||
         type == leaf;
}

/// With all indices sound, nothing may be wrong but pages that were those of the indices before.
void RequireSoundTables(const QByteArray& path, const QString& shown) {
  static const QRegularExpression unusedPage(QStringLiteral("^Page (\\d+)(?: is|:) never used$"));
  const Sqlite db(path, shown);
  const qint64 pageSize = db.Number("PRAGMA page_size");
  Sqlite::Rows rows = db.Select("PRAGMA integrity_check(1000000)");
  while (rows.Next()) {
    for (const QString& line : rows.Text(0).split(QLatin1Char('\n'))) {
      if (line == QLatin1String("ok") || line.startsWith(QLatin1String("***"))) continue;
      const QRegularExpressionMatch unused = unusedPage.match(line);
      if (unused.hasMatch() && !IsPageOfTable(path, unused.captured(1).toLongLong(), pageSize)) continue;
      Refuse(shown, QStringLiteral("is damaged (") + Console::Printable(line) + QLatin1Char(')'),
             salvageHint);
    }
  }
}

/// Into a new file, which has no pages that lie about.
void CopyTables(const QByteArray& path, const QString& shown, const QByteArray& fresh) {
  { const Descriptor empty(fresh, O_RDWR | O_CREAT | O_TRUNC, 0600); }
  {
    const Sqlite db(fresh, shown);
    db.Attach(path, "old");
    for (const QByteArray pragma : {"user_version", "application_id"}) {
      db.Execute("PRAGMA main." + pragma + " = " + QByteArray::number(db.Number("PRAGMA old." + pragma)));
    }
    db.Execute("BEGIN");
    // In the order in which they stood.
    Sqlite::Rows tables = db.Select(
        "SELECT sql FROM old.sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
        "ORDER BY rowid");
    while (tables.Next()) db.Execute(tables.Bytes(0));
    RowChanges::Apply(db, "old", "main");
    db.Execute("COMMIT");
  }
  if (std::rename(fresh.constData(), path.constData()) != 0) FailWithErrno(path);
}

void RebuildIndices(const QByteArray& path, const QString& shown, const QByteArray& fresh) {
  try {
    ReplaceIndices(Sqlite(path, shown));
    RequireSoundTables(path, shown);
    CopyTables(path, shown, fresh);
  } catch (const Damage& damage) {
    Refuse(shown, damage.Reason(), salvageHint);
  }
}

void Delete(const Sqlite& db, const QByteArray& deletion, qint64 key) {
  db.Select(deletion).Bind(1, key).Next();
}

void Report(const QString& shown, const char* rule, std::size_t rows, std::vector<Deed>* deeds) {
  if (rows > 0) deeds->push_back({shown, QString::fromUtf8(rule), qint64(rows)});
}

void RemoveRows(const PrivatePair& copies, std::vector<Deed>* deeds) {
  const Sqlite& db = copies.Db();
  const KeyUse used(db);
  db.Execute("BEGIN");
  for (const CheckRules::OfMain& rule : CheckRules::unusedRules) {
    const std::vector<KeyUse::Row> unused = used.Unused(db, rule.table);
    for (const KeyUse::Row& row : unused) Delete(db, KeyUse::Deletion(rule.table), row.key);
    Report(copies.ShownMain(), rule.name, unused.size(), deeds);
  }
  const ThresholdsUse sites(used, db, Kind::Site);
  const ThresholdsUse paths(used, db, Kind::Path);
  for (const CheckRules::OfPair& rule : CheckRules::thresholdsRules) {
    if (rule.deletable == nullptr) continue;
    for (const qint64 row : sites.*rule.deletable) Delete(db, ThresholdsUse::Deletion(Kind::Site), row);
    Report(copies.ShownThresholds(), rule.ofSites, (sites.*rule.deletable).size(), deeds);
    for (const qint64 row : paths.*rule.deletable) Delete(db, ThresholdsUse::Deletion(Kind::Path), row);
    Report(copies.ShownThresholds(), rule.ofPaths, (paths.*rule.deletable).size(), deeds);
  }
  db.Execute("COMMIT");
}

}  // namespace

std::vector<Deed> Perform(PrivatePair* copies) {
  std::vector<Deed> deeds;
  {
    const FileCheck before(copies);
    RequireNoErrors(*copies, before, true);
    for (const Finding& finding : before.Findings()) {
      if (!IsOfIntegrity(finding) || finding.severity != Finding::Severity::Error) continue;
      RebuildIndices(finding.inMain ? copies->MainPath() : copies->ThresholdsPath(), finding.shownFile,
                     copies->Folder().Path(PrivateFolder::Name::ReadMain));
      deeds.push_back({finding.shownFile, QString(), 0});
    }
  }
  if (!deeds.empty()) RequireNoErrors(*copies, FileCheck(copies), false);
  copies->RequirePair();
  copies->RequireBelonging();
  RemoveRows(*copies, &deeds);
  copies->Close();
  RequireNoErrors(*copies, FileCheck(copies), false);
  return deeds;
}

}  // namespace Repair
