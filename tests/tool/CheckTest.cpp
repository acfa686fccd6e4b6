// Looking files over.
#include <QFile>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

const QString Clean = QStringLiteral(
    "ok     unknown version in m: none\n"
    "ok     integrity errors in m: none\n"
    "ok     foreign key violations in m: none\n"
    "ok     schema differences in m: none\n"
    "ok     sites that no alignment refers to: none\n"
    "ok     paths that no alignment refers to: none\n"
    "ok     orientations that no alignment refers to: none\n"
    "ok     locations that no alignment refers to: none\n"
    "ok     heights that no alignment refers to: none\n"
    "ok     integrity errors in t: none\n"
    "ok     schema differences in t: none\n"
    "ok     site alignments without thresholds: none\n"
    "ok     path alignments without thresholds: none\n"
    "ok     thresholds without site alignment: none\n"
    "ok     thresholds without path alignment: none\n");

using CheckTest = ToolTest;

TEST_F(CheckTest, RightFilesAreLeftAlone) {
  CreateFilesWith({SiteEntry(), PathEntry()});
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  EXPECT_EQ(RunWell({"check", "m", "t"}), Clean);
  EXPECT_EQ(ReadFile("m"), mainFile);
  EXPECT_EQ(ReadFile("t"), thresholds);
}

// Statements that make a file wrong, and the lines that then take the place of those that say ok.
struct Damage {
  const char* name;
  const char* file;
  const char* sql;
  QStringList lines;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

std::string NameOf(const testing::TestParamInfo<Damage>& test) { return test.param.name; }

class DamageTest : public ToolTest, public testing::WithParamInterface<Damage> {};

TEST_P(DamageTest, IsCountedAndNamed) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  RunSql(Path(GetParam().file), GetParam().sql);
  const QByteArray before = ReadFile(GetParam().file);
  const Outcome outcome = Run({"check", "m", "t"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, QString());
  EXPECT_EQ(ReadFile(GetParam().file), before);
  QStringList expected = Clean.split('\n');
  for (const QString& line : GetParam().lines) {
    const QString what = line.mid(7).section(':', 0, 0);
    expected.replaceInStrings("ok     " + what + ": none", line);
  }
  EXPECT_EQ(outcome.out.split('\n'), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Files, DamageTest,
    testing::Values(
        Damage{"Orphans",
               "m",
               "INSERT INTO Sites VALUES (7, 'Å'); INSERT INTO Paths VALUES (8, 'P8');"
               "INSERT INTO Orientation VALUES (20, 1, 2, 3), (21, 1, 2, 3);"
               "INSERT INTO Geolocation VALUES (30, 1, 2, 3); INSERT INTO Height VALUES (40, 1, 2)",
               {"WRONG  sites that no alignment refers to: 1 (7 Å)",
                "WRONG  paths that no alignment refers to: 1 (8 P8)",
                "WRONG  orientations that no alignment refers to: 2 (20, 21)",
                "WRONG  locations that no alignment refers to: 1 (30)",
                "WRONG  heights that no alignment refers to: 1 (40)"}},
        Damage{"ForeignKeys",
               "m",
               "DELETE FROM Height WHERE HeightKey = 1",
               {"WRONG  foreign key violations in m: 1 (AntennaAlignment row 1 names no row of Height)"}},
        Damage{"NoThresholds",
               "t",
               "DELETE FROM AntennaAlignmentThresholds; DELETE FROM PathAlignmentThresholds",
               {"WRONG  site alignments without thresholds: 1 (1)",
                "WRONG  path alignments without thresholds: 1 (1)"}},
        Damage{"ThresholdsAlone",
               "t",
               "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (5, 1);"
               "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey) VALUES (6, 1), (7, 1)",
               {"WRONG  thresholds without site alignment: 1 (5)",
                "WRONG  thresholds without path alignment: 2 (6, 7)"}},
        Damage{"Column",
               "m",
               "ALTER TABLE Height ADD Extra INTEGER",
               {"WRONG  schema differences in m: 1 (the columns of Height differ)"}},
        Damage{"Objects",
               "m",
               "DROP TABLE SiteScreenContents; CREATE TABLE Extra (x); CREATE INDEX i ON Sites(SiteKey)",
               {"WRONG  schema differences in m: 3 (index i does not belong there, table Extra does not "
                "belong there, table SiteScreenContents is missing)"}},
        Damage{"ThresholdsSchema",
               "t",
               "DROP TABLE PreferencesPathLength",
               {"WRONG  schema differences in t: 1 (table PreferencesPathLength is missing)"}}),
    NameOf);

TEST_F(CheckTest, TheVersionDecidesWhichTablesBelong) {
  CreateFiles();
  const auto look = [this](const char* version) {
    RunSql(Path("m"), QString("UPDATE Version SET VersionNumber = %1").arg(version));
    const Outcome outcome = Run({"check", "m"});
    EXPECT_EQ(outcome.status, 1);
    return outcome.out.split('\n');
  };
  EXPECT_EQ(
      look("6").at(3),
      "WRONG  schema differences in m: 2 (the columns of PathAlignment differ, the columns of Preferences "
      "differ)");
  EXPECT_EQ(look("8").at(0), "WRONG  unknown version in m: 1 (version 8 is not known)");
}

TEST_F(CheckTest, DamagedPagesAreFound) {
  CreateFilesWith({SiteEntry(), PathEntry()});
  const QString root = Rows(Path("m"), "SELECT rootpage FROM sqlite_master WHERE name = 'Height'").first();
  QFile file(Path("m"));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  ASSERT_TRUE(file.seek((root.toInt() - 1) * 4096));
  file.write(QByteArray(64, '\x55'));
  file.close();
  const Outcome outcome = Run({"check", "m", "t"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.out.contains("\nWRONG  integrity errors in m: ")) << outcome.out.toStdString();
}

TEST_F(CheckTest, FilesThatAreNone) {
  CreateFiles();
  ExpectFailure({"check", "none", "t"}, "none: no such file");
  WriteFile("text", "text");
  ExpectFailure({"check", "text"}, "text: is no database");
}

// A new file of every version is right; the golden files besides hold rows that nothing refers to.
TEST_F(CheckTest, MainFilesOfEarlierVersionsStandAlone) {
  for (int version = 1; version <= 6; ++version) {
    const QString name = QString("v%1").arg(version);
    LoadSqlFile(Path(name), QString(TARNBEAM_GOLDEN_FOLDER "/version_%1.sql").arg(version));
    const Outcome outcome = Run({"check", name});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out.split('\n').mid(0, 5),
              (QStringList{"ok     unknown version in " + name + ": none",
                           "ok     integrity errors in " + name + ": none",
                           "ok     foreign key violations in " + name + ": none",
                           "ok     schema differences in " + name + ": none",
                           "WRONG  sites that no alignment refers to: 1 (6 Site without alignments)"}));
  }
}

}  // namespace
