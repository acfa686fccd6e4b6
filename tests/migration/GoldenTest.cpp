// What conversions make of whole files, compared with expectations that were worked out by hand.
#include "tests/migration/ConversionTest.h"

namespace {

using GoldenTest = ConversionTest;
INSTANTIATE_TEST_SUITE_P(Converters, GoldenTest, testing::ValuesIn(Converters()), NameOf);

QString WithoutPreferences(const QString& dump) {
  QString text;
  for (const QString& line : dump.split(QLatin1Char('\n'))) {
    if (!line.startsWith(QLatin1String("Preferences|")) && !line.isEmpty()) text += line + QLatin1Char('\n');
  }
  return text;
}

TEST_P(GoldenTest, OneStep) {
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines, PlainLines());
  ExpectDump(Main(), Expected());
  EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
  EXPECT_EQ(ForeignKeyCheck(Main()), QStringList());
  EXPECT_FALSE(QFile::exists(scratchPath));
}

TEST_P(GoldenTest, AllTheWay) {
  EXPECT_TRUE(ConvertToCurrent(Tested().source, Main()));
  ExpectDump(Main(), GoldenDump(Tested().source, 7));
  EXPECT_EQ(ForeignKeyCheck(Main()), QStringList());
}

TEST_P(GoldenTest, WithoutPreferencesRow) {
  RunSql(Main(), "DELETE FROM Preferences");
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  QStringList lines = PlainLines();
  if (Tested().source == 1) {
    lines = QStringList{"failed to retrieve accelerometer calibration values",
                        "Calibration constants found to have invalid values"};
  }
  EXPECT_EQ(converted.lines, lines);
  ExpectDump(Main(), WithoutPreferences(Expected()));
  if (Tested().source == 6) return;
  EXPECT_TRUE(ConvertToCurrent(Tested().source + 1, Main()));
  ExpectDump(Main(), WithoutPreferences(GoldenDump(Tested().source, 7)));
}

// All statements of a conversion, in order. What follows a table's name in the texts shows in the schema.
TEST_P(GoldenTest, StatementsInOrder) {
  const QString attach =
      "exec ATTACH DATABASE '/opt/tarnbeam/database/TemporaryDB.sqlite' as TemporaryDB = 0";
  const QString detach = "exec DETACH DATABASE TemporaryDB = 0";
  const auto executed = [](const QString& sql) { return QStringLiteral("exec %1 = 0").arg(sql); };
  const auto prepared = [](const QString& sql) { return QStringLiteral("prepare_v2 %1 = 0").arg(sql); };
  QStringList expected{
      QStringLiteral("open_v2 %1, 6 = 0").arg(Main()),
      "exec PRAGMA foreign_keys = ON; = 0",
      "exec PRAGMA temp_store = MEMORY; = 0",
      attach,
      executed("CREATE TABLE IF NOT EXISTS TemporaryDB.Version ( VersionNumber INTEGER NOT NULL)"),
      prepared("INSERT OR REPLACE INTO TemporaryDB.Version (RowID,VersionNumber) values (1,?)"),
      detach};
  for (const CopiedTableTexts& texts : CopiedTables()) {
    const QString table = texts.table;
    expected << attach << QStringLiteral("exec CREATE TABLE IF NOT EXISTS TemporaryDB.%1").arg(table)
             << executed(QStringLiteral("INSERT INTO TemporaryDB.%1 SELECT * FROM main.%1").arg(table));
    for (const AddedChange& change : ChangesOf(Tested(), texts.table)) expected << executed(change.sql);
    if (Tested().source == 1 && table == "Preferences") {
      expected
          << prepared(
                 "SELECT AccelerometerXOffset, AccelerometerYOffset, AccelerometerXGain, "
                 "AccelerometerZOffset, AccelerometerZGain FROM TemporaryDB.Preferences WHERE (RowID=1) ")
          << prepared("UPDATE TemporaryDB.Preferences SET  AccelerometerCalibrated=? WHERE(RowID=1)")
          << prepared("UPDATE TemporaryDB.Preferences SET  AutoShutoffDelay=?  WHERE(RowID=1)");
    }
    expected << detach;
  }
  if (Tested().cleansUp) {
    expected << attach << prepared(selectSiteKeys) << prepared(selectPathKeys);
    for (const CleanupTexts& texts : Cleanups()) {
      expected << prepared(texts.select);
      for (int count = 0; count < texts.unused.size(); ++count) expected << prepared(texts.deleteSql);
    }
    expected << detach;
  }
  expected << attach << prepared("PRAGMA TemporaryDB.integrity_check") << detach << attach
           << prepared("PRAGMA TemporaryDB.foreign_key_check") << detach
           << QStringLiteral("close %1 = 0").arg(Main());

  SqliteCalls::Record();
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  QStringList met;
  for (const QString& call : SqliteCalls::TakeTrace()) {
    if (call.startsWith("exec CREATE TABLE") && !call.contains("TemporaryDB.Version")) {
      met << call.section(QLatin1Char(' '), 0, 6).section(QLatin1Char('('), 0, 0);
    } else if (QStringList{"open_v2", "exec", "prepare_v2", "close"}.contains(call.section(' ', 0, 0))) {
      met << call;
    }
  }
  EXPECT_EQ(met, expected);
}

TEST_P(GoldenTest, PermissionsAreKept) {
  const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
  QFile::setPermissions(Main(), permissions);
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  // The user's own bits depend on who runs the test.
  const QFile::Permissions users = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
  EXPECT_EQ(QFile::permissions(Main()) & ~users, permissions);
}

TEST_P(GoldenTest, EmptyTables) {
  RunSql(Main(),
         "DELETE FROM AntennaAlignment; DELETE FROM PathAlignment; DELETE FROM Preferences;"
         "DELETE FROM SiteScreenContents; DELETE FROM PathScreenContents");
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  for (const CleanupTexts& texts : Cleanups()) {
    const auto left = Rows(Main(), QStringLiteral("SELECT * FROM %1").arg(texts.table)).size();
    EXPECT_EQ(left == 0, Tested().cleansUp) << texts.table << ": " << left;
  }
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Version"), QStringList{QString::number(Tested().source + 1)});
}

}  // namespace
