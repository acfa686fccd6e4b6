// What the files that the stores create look like.
#include "tests/store/ExpectedSchema.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SqliteCalls.h"

namespace {

QString Quoted(QString text) {
  return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("''")) + QLatin1Char('\'');
}

// The expected schema in the order of creation. The engine makes its table of sequences with the first one
// that has one.
QStringList ExpectedSchema(const std::vector<CreatedTable>& tables) {
  QStringList schema;
  for (const CreatedTable& table : tables) {
    schema.append(Quoted(table.name) + QLatin1Char('|') + Quoted(StoredText(table.statement)));
    if (table.statement.contains("AUTOINCREMENT") && schema.filter("sqlite_sequence").isEmpty()) {
      schema.append("'sqlite_sequence'|'CREATE TABLE sqlite_sequence(name,seq)'");
    }
  }
  return schema;
}

QStringList Schema(const QString& path) {
  return Rows(path, "SELECT name, sql FROM sqlite_schema WHERE sql IS NOT NULL ORDER BY rowid");
}

class SchemaTest : public CreatedStoreTest {
 protected:
  // Runs a statement on the main file with foreign keys enforced.
  bool Execute(const char* sql) {
    const ConnectionPointer db = OpenMain();
    return Call(&Operations::ExecuteNonQueryCommand, db.get(), sql, "Test");
  }

  // Two alignments of one site, which share all that they refer to.
  void InsertTwoAlignments() {
    EXPECT_TRUE(
        Execute("INSERT INTO Sites VALUES (1, 'S'); INSERT INTO Orientation VALUES (1, 0, 0, 0);"
                "INSERT INTO Geolocation VALUES (1, 0, 0, 0); INSERT INTO Height VALUES (1, 0, 0);"));
    for (int count = 0; count < 2; ++count) {
      EXPECT_TRUE(
          Execute("INSERT INTO AntennaAlignment (SiteKey, SectorName, AntennaPosition, AzimuthOffsetDegrees, "
                  "TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey) "
                  "VALUES (1, '', '', 0, 1, 1, 0, 1, 1)"));
    }
  }
};

TEST_P(SchemaTest, MainFileIsVerbatim) {
  EXPECT_EQ(Schema(Main()), ExpectedSchema(MainTables(Version().number)));
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM sqlite_schema WHERE type IN ('trigger', 'view')"),
            QStringList{"0"});
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM sqlite_schema WHERE type = 'index' AND sql IS NOT NULL"),
            QStringList{"0"});
}

TEST_P(SchemaTest, OnlyTheVersionHasARow) {
  const QStringList dump = DumpDatabase(Main()).split('\n', Qt::SkipEmptyParts);
  EXPECT_EQ(dump.mid(Schema(Main()).size()),
            QStringList{QStringLiteral("Version|1|%1").arg(Version().number)});
}

TEST_P(SchemaTest, ThresholdsFileIsVerbatim) {
  if (Version().HasThresholdsFile()) {
    EXPECT_EQ(Schema(Thresholds()), ExpectedSchema(ThresholdTables()));
    EXPECT_EQ(DumpDatabase(Thresholds()).split('\n', Qt::SkipEmptyParts).size(), 4) << "there are rows";
  } else {
    EXPECT_FALSE(QFile::exists(Thresholds()));
  }
}

TEST_P(SchemaTest, AHeightTakesItsSiteAlignmentsWithIt) {
  InsertTwoAlignments();
  EXPECT_TRUE(Execute("DELETE FROM Height WHERE HeightKey = 1"));
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM AntennaAlignment"), QStringList{"0"});
}

TEST_P(SchemaTest, WhatAnAlignmentRefersToStays) {
  InsertTwoAlignments();
  QStringList tables = {"Sites", "Orientation"};
  if (Version().number >= 3) tables.append("Geolocation");
  for (const QString& table : tables) {
    EXPECT_FALSE(Execute(("DELETE FROM " + table).toUtf8().constData()));
    EXPECT_EQ(Lines(), QStringList{"SQL  Test  failed with  19 : FOREIGN KEY constraint failed"});
    EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM " + table), QStringList{"1"});
  }
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM AntennaAlignment"), QStringList{"2"});
}

TEST_P(SchemaTest, IdentifiersAreUniqueAndNotNull) {
  EXPECT_TRUE(Execute("INSERT INTO Sites VALUES (1, 'S'); INSERT INTO Paths VALUES (1, 'P');"));
  EXPECT_FALSE(Execute("INSERT INTO Sites VALUES (2, 'S')"));
  EXPECT_FALSE(Execute("INSERT INTO Paths VALUES (2, 'P')"));
  EXPECT_FALSE(Execute("INSERT INTO Sites VALUES (2, NULL)"));
  EXPECT_EQ(Lines(),
            (QStringList{"SQL  Test  failed with  19 : UNIQUE constraint failed: Sites.SiteIdentifier",
                         "SQL  Test  failed with  19 : UNIQUE constraint failed: Paths.PathIdentifier",
                         "SQL  Test  failed with  19 : NOT NULL constraint failed: "
                         "Sites.SiteIdentifier"}));
}

TEST_P(SchemaTest, KeysAreNotHandedOutAgain) {
  EXPECT_TRUE(
      Execute("INSERT INTO Sites (SiteIdentifier) VALUES ('A'), ('B'); DELETE FROM Sites WHERE SiteKey = 2;"
              "INSERT INTO Sites (SiteIdentifier) VALUES ('C')"));
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Sites"), (QStringList{"1|'A'", "3|'C'"}));
}

TEST_P(SchemaTest, AlignmentColumnsThatAreNotNamedTakeTheirDefaults) {
  InsertTwoAlignments();
  QString defaults = "1|1|''|''|0.0|1|1|0|1|1";
  if (Version().HasTiltInversion()) defaults += "|0";
  if (Version().HasSiteNote()) defaults += "|''";
  if (Version().HasRollPrecision()) defaults += "|0";
  EXPECT_EQ(Rows(Main(), "SELECT * FROM AntennaAlignment").value(0), defaults);
}

INSTANTIATE_FOR_ALL_VERSIONS(SchemaTest);

// The engine removes blanks and the final semicolon, so what is executed says more than what it keeps.
TEST(CurrentSchema, IsCreatedWithTheseStatementsInThisOrder) {
  StoreFiles files;
  QStringList statements;
  for (const CreatedTable& table : MainTables()) statements.append("exec " + table.statement + " = 0");
  for (const CreatedTable& table : ThresholdTables()) statements.append("exec " + table.statement + " = 0");
  SqliteCalls::Record();
  const StorePointer store = StoreVersion::All().back().create(files.Main(), files.Thresholds());
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("exec CREATE"), statements);
}

TEST(CurrentSchema, HasDefaultsInItsPreferences) {
  StoreFiles files;
  const StorePointer store = StoreVersion::All().back().create(files.Main(), files.Thresholds());
  QStringList columns;
  for (const QString& name :
       Rows(files.Main(), "SELECT name FROM pragma_table_info('Preferences') WHERE dflt_value IS NULL")) {
    columns.append(QString(name).remove('\''));
  }
  EXPECT_EQ(columns.size(), 26);
  const QString values = QStringLiteral("1,").repeated(25) + QLatin1Char('1');
  RunSql(files.Main(),
         QStringLiteral("INSERT INTO Preferences (%1) VALUES (%2)").arg(columns.join(","), values));
  EXPECT_EQ(Rows(files.Main(),
                 "SELECT GNSSFileCRC, TiltIndicatorEnabled, RollIndicatorEnabled, TiltInversionEnabled, "
                 "BluetoothDisplayName, Language, RollPrecision, GeoidFormat, UserTechId FROM Preferences"),
            QStringList{"0|1|1|0|'Tarnbeam'|0|0|0|'tbm001'"});
  RunSql(files.Thresholds(), "INSERT INTO PreferencesPathLength DEFAULT VALUES");
  EXPECT_EQ(Rows(files.Thresholds(), "SELECT * FROM PreferencesPathLength"), QStringList{"0|1000.0"});
}

// The checked-in files of the earlier versions were written by hand from the same definitions.
class GoldenSchemaTest : public CreatedStoreTest {};

TEST_P(GoldenSchemaTest, IsTheCreatedOne) {
  const QString golden = files_.Folder().Path("golden.sqlite");
  LoadSqlFile(golden, QStringLiteral(GOLDEN_FOLDER "/version_%1.sql").arg(Version().number));
  EXPECT_EQ(Schema(Main()), Schema(golden));
}

INSTANTIATE_TEST_SUITE_P(Earlier, GoldenSchemaTest,
                         testing::ValuesIn(StoreVersion::All().begin(), StoreVersion::All().end() - 1),
                         StoreVersionName);

}  // namespace
