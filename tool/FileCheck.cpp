#include "tool/FileCheck.h"

#include <QStringList>
#include <QTemporaryDir>
#include <array>
#include <functional>
#include <iterator>
#include <memory>

#include "store/AlignmentDatabaseVersion7.h"
#include "store/legacy/AlignmentDatabaseVersion1.h"
#include "store/legacy/AlignmentDatabaseVersion2.h"
#include "store/legacy/AlignmentDatabaseVersion3.h"
#include "store/legacy/AlignmentDatabaseVersion4.h"
#include "store/legacy/AlignmentDatabaseVersion5.h"
#include "store/legacy/AlignmentDatabaseVersion6.h"
#include "tool/AlignmentFiles.h"
#include "tool/Console.h"
#include "tool/ReadOnlyDatabase.h"

namespace {

class Findings {
 public:
  bool AllRight() const { return allRight_; }

  /// Looks for something and prints what was found wrong. A query that fails is wrong too: with tables
  /// missing there is more to be said than that.
  void Look(const QString& what, const std::function<QStringList()>& look) {
    QStringList wrong;
    try {
      wrong = look();
    } catch (const Failure& failure) {
      wrong = QStringList{QString::fromUtf8(failure.what())};
    }
    if (wrong.isEmpty()) {
      Console::Print(QStringLiteral("ok     %1: none\n").arg(what));
      return;
    }
    allRight_ = false;
    constexpr int Shown = 20;
    const int count = wrong.size();
    if (count > Shown) wrong = wrong.mid(0, Shown) << QStringLiteral("...");
    Console::Print(
        QStringLiteral("WRONG  %1: %2 (%3)\n")
            .arg(what, QString::number(count), Console::Printable(wrong.join(QStringLiteral(", ")))));
  }

  static void Note(const QString& text) { Console::Print(QStringLiteral("note   %1\n").arg(text)); }

 private:
  bool allRight_ = true;
};

QStringList Integrity(const ReadOnlyDatabase& db) {
  QStringList lines = db.Column(QStringLiteral("PRAGMA integrity_check"));
  lines.removeAll(QStringLiteral("ok"));
  return lines;
}

QStringList ForeignKeys(const ReadOnlyDatabase& db) {
  QStringList violations;
  for (const QStringList& row : db.Rows(QStringLiteral("PRAGMA foreign_key_check"))) {
    violations.append(
        QStringLiteral("%1 row %2 names no row of %3").arg(row.value(0), row.value(1), row.value(2)));
  }
  return violations;
}

template <typename Store>
void CreateFiles(const QString& mainPath, const QString& thresholdsPath) {
  const std::unique_ptr<Store> store(Store::Create(mainPath, thresholdsPath));
}

constexpr void (*Creators[])(const QString&, const QString&) = {
    CreateFiles<AlignmentDatabaseVersion1>, CreateFiles<AlignmentDatabaseVersion2>,
    CreateFiles<AlignmentDatabaseVersion3>, CreateFiles<AlignmentDatabaseVersion4>,
    CreateFiles<AlignmentDatabaseVersion5>, CreateFiles<AlignmentDatabaseVersion6>,
    CreateFiles<AlignmentDatabaseVersion7>};
static_assert(std::size(Creators) == CurrentVersion, "a version without its store");

/// Rows of a pragma on a table, each as one text.
QStringList TableFacts(const ReadOnlyDatabase& db, const QString& columns, const QString& pragma,
                       const QString& table) {
  QStringList facts;
  const QString sql = QStringLiteral("SELECT %1 FROM pragma_%2('%3') ORDER BY 1").arg(columns, pragma, table);
  for (const QStringList& row : db.Rows(sql)) facts.append(row.join(QLatin1Char(' ')));
  return facts;
}

QStringList Columns(const ReadOnlyDatabase& db, const QString& table) {
  QStringList columns = TableFacts(
      db,
      QStringLiteral("cid, name, upper(type), CASE \"notnull\" WHEN 1 THEN 'NOT NULL' ELSE '' END, "
                     "CASE pk WHEN 1 THEN 'PRIMARY KEY' ELSE '' END"),
      QStringLiteral("table_info"), table);
  for (QString& column : columns) column = column.simplified();
  return columns;
}

QStringList DefaultsAndReferences(const ReadOnlyDatabase& db, const QString& table) {
  return TableFacts(db, QStringLiteral("name, dflt_value"), QStringLiteral("table_info"), table) +
         TableFacts(db, QStringLiteral("\"from\", \"table\", \"to\", on_delete"),
                    QStringLiteral("foreign_key_list"), table);
}

QStringList Names(const ReadOnlyDatabase& db) {
  return db.Column(
      QStringLiteral("SELECT type || ' ' || name FROM sqlite_master WHERE name NOT LIKE 'sqlite\\_%' ESCAPE "
                     "'\\' ORDER BY 1"));
}

/// What of `file` is not as in `fresh`, a new file of its version. Conversions leave other defaults and
/// references than new files have; that is noted, not counted.
QStringList SchemaDifferences(const ReadOnlyDatabase& file, const ReadOnlyDatabase& fresh,
                              QStringList* notes) {
  QStringList wrong;
  const QStringList present = Names(file);
  const QStringList expected = Names(fresh);
  for (const QString& name : present) {
    if (!expected.contains(name)) wrong.append(name + QStringLiteral(" does not belong there"));
  }
  for (const QString& name : expected) {
    const QString table = name.section(QLatin1Char(' '), 1);
    if (!present.contains(name)) {
      wrong.append(name + QStringLiteral(" is missing"));
    } else if (Columns(file, table) != Columns(fresh, table)) {
      wrong.append(QStringLiteral("the columns of %1 differ").arg(table));
    } else if (DefaultsAndReferences(file, table) != DefaultsAndReferences(fresh, table)) {
      notes->append(QStringLiteral("%1: defaults or references are not those of a new file; a conversion "
                                   "leaves it so")
                        .arg(table));
    }
  }
  return wrong;
}

struct Rule {
  const char* what;
  const char* sql;
};

constexpr std::array<Rule, 5> MainRules = {
    {{"sites that no alignment refers to",
      "SELECT SiteKey || ' ' || SiteIdentifier FROM Sites WHERE SiteKey NOT IN (SELECT SiteKey FROM "
      "AntennaAlignment)"},
     {"paths that no alignment refers to",
      "SELECT PathKey || ' ' || PathIdentifier FROM Paths WHERE PathKey NOT IN (SELECT PathKey FROM "
      "PathAlignment)"},
     {"orientations that no alignment refers to",
      "SELECT OrientationKey FROM Orientation WHERE OrientationKey NOT IN (SELECT TargetOrientationKey FROM "
      "AntennaAlignment UNION SELECT MeasuredOrientationKey FROM AntennaAlignment UNION SELECT "
      "TargetOrientationKey FROM PathAlignment UNION SELECT MeasuredOrientationKey FROM PathAlignment)"},
     {"locations that no alignment refers to",
      "SELECT GeolocationKey FROM Geolocation WHERE GeolocationKey NOT IN (SELECT LocationKey FROM "
      "AntennaAlignment UNION SELECT LocationKey FROM PathAlignment UNION SELECT PathLocationKey FROM "
      "PathAlignment)"},
     {"heights that no alignment refers to",
      "SELECT HeightKey FROM Height WHERE HeightKey NOT IN (SELECT SiteHeightKey FROM AntennaAlignment UNION "
      "SELECT SiteHeightKey FROM PathAlignment)"}}};

constexpr std::array<Rule, 4> PairRules = {
    {{"site alignments without thresholds",
      "SELECT AntennaAlignmentKey FROM main.AntennaAlignment WHERE AntennaAlignmentKey NOT IN (SELECT "
      "AntennaAlignmentKey FROM thresholds.AntennaAlignmentThresholds)"},
     {"path alignments without thresholds",
      "SELECT PathAlignmentKey FROM main.PathAlignment WHERE PathAlignmentKey NOT IN (SELECT "
      "PathAlignmentKey FROM thresholds.PathAlignmentThresholds)"},
     {"thresholds without site alignment",
      "SELECT AntennaAlignmentKey FROM thresholds.AntennaAlignmentThresholds WHERE AntennaAlignmentKey NOT "
      "IN (SELECT AntennaAlignmentKey FROM main.AntennaAlignment)"},
     {"thresholds without path alignment",
      "SELECT PathAlignmentKey FROM thresholds.PathAlignmentThresholds WHERE PathAlignmentKey NOT IN "
      "(SELECT PathAlignmentKey FROM main.PathAlignment)"}}};

template <typename Rules>
void LookByRules(const ReadOnlyDatabase& db, const Rules& rules, Findings* findings) {
  for (const Rule& rule : rules) {
    findings->Look(QString::fromUtf8(rule.what), [&] { return db.Column(QString::fromUtf8(rule.sql)); });
  }
}

void LookAtSchema(const QString& path, const ReadOnlyDatabase& db, const QString& freshPath,
                  Findings* findings) {
  QStringList notes;
  findings->Look(QStringLiteral("schema differences in %1").arg(path),
                 [&] { return SchemaDifferences(db, ReadOnlyDatabase(freshPath), &notes); });
  for (const QString& note : notes) Findings::Note(note);
}

/// 0 where there is none to be read.
unsigned int ReadVersion(const ReadOnlyDatabase& db) {
  const QStringList rows = db.Column(QStringLiteral("SELECT VersionNumber FROM Version WHERE rowid = 1"));
  return rows.value(0).toUInt();
}

}  // namespace

bool CheckFiles(const QString& mainPath, const QString& thresholdsPath) {
  Findings findings;
  ReadOnlyDatabase mainFile(mainPath);
  unsigned int version = 0;
  findings.Look(QStringLiteral("unknown version in %1").arg(mainPath), [&] {
    version = ReadVersion(mainFile);
    const bool known = version >= 1 && version <= CurrentVersion;
    return known ? QStringList() : QStringList{QStringLiteral("version %1 is not known").arg(version)};
  });
  findings.Look(QStringLiteral("integrity errors in %1").arg(mainPath), [&] { return Integrity(mainFile); });
  findings.Look(QStringLiteral("foreign key violations in %1").arg(mainPath),
                [&] { return ForeignKeys(mainFile); });

  const QTemporaryDir folder;
  const QString freshMain = folder.filePath(QStringLiteral("main.sqlite"));
  const QString freshThresholds = folder.filePath(QStringLiteral("thresholds.sqlite"));
  const bool known = version >= 1 && version <= CurrentVersion;
  if (known) {
    Creators[version - 1](freshMain, freshThresholds);
    LookAtSchema(mainPath, mainFile, freshMain, &findings);
  }
  LookByRules(mainFile, MainRules, &findings);
  if (thresholdsPath.isEmpty()) return findings.AllRight();

  const ReadOnlyDatabase thresholdsFile(thresholdsPath);
  findings.Look(QStringLiteral("integrity errors in %1").arg(thresholdsPath),
                [&] { return Integrity(thresholdsFile); });
  if (version == CurrentVersion) LookAtSchema(thresholdsPath, thresholdsFile, freshThresholds, &findings);
  mainFile.Attach(thresholdsPath, QStringLiteral("thresholds"));
  LookByRules(mainFile, PairRules, &findings);
  return findings.AllRight();
}
