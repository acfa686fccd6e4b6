// Checking files.
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

const QString clean = QStringLiteral(
    "ok       integrity errors in m: none\n"
    "ok       unknown version in m: none\n"
    "ok       foreign key violations in m: none\n"
    "ok       schema differences in m: none\n"
    "ok       defaults and references of converted files in m: none\n"
    "ok       values of a wrong type or not finite in m: none\n"
    "ok       sites that no alignment refers to in m: none\n"
    "ok       paths that no alignment refers to in m: none\n"
    "ok       orientations that no alignment refers to in m: none\n"
    "ok       locations that no alignment refers to in m: none\n"
    "ok       heights that no alignment refers to in m: none\n"
    "ok       integrity errors in t: none\n"
    "ok       schema differences in t: none\n"
    "ok       defaults and references of converted files in t: none\n"
    "ok       values of a wrong type or not finite in t: none\n"
    "ok       site alignments without thresholds in t: none\n"
    "ok       path alignments without thresholds in t: none\n"
    "ok       thresholds without site alignment in t: none\n"
    "ok       thresholds without path alignment in t: none\n"
    "ok       two thresholds rows for one site alignment in t: none\n"
    "ok       two thresholds rows for one path alignment in t: none\n"
    "ok       thresholds that name another site than their alignment in t: none\n"
    "ok       thresholds that name another path than their alignment in t: none\n");

using CheckTest = ToolTest;

TEST_F(CheckTest, RightFilesAreLeftAlone) {
  CreateFilesWith({SiteEntry(), PathEntry()});
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  EXPECT_EQ(RunWell({"check", "m", "t"}), clean);
  EXPECT_EQ(ReadFile("m"), mainFile);
  EXPECT_EQ(ReadFile("t"), thresholds);
}

const QStringList ofMainRows{
    "values of a wrong type or not finite",  "sites that no alignment refers to",
    "paths that no alignment refers to",     "orientations that no alignment refers to",
    "locations that no alignment refers to", "heights that no alignment refers to"};
const QStringList ofThePair{"site alignments without thresholds",
                            "path alignments without thresholds",
                            "thresholds without site alignment",
                            "thresholds without path alignment",
                            "two thresholds rows for one site alignment",
                            "two thresholds rows for one path alignment",
                            "thresholds that name another site than their alignment",
                            "thresholds that name another path than their alignment"};

// What is said of rules that an error keeps from being looked at.
QStringList Skipped(const QStringList& rules, const char* file) {
  QStringList lines;
  for (const QString& rule : rules)
    lines.append(QString("skipped  %1 in %2: 1 (not looked at)").arg(rule, file));
  return lines;
}

// Statements that make a file wrong, and the lines that then replace those that say ok.
struct Damage {
  const char* name;
  const char* file;
  const char* sql;
  QStringList lines;
  int status;
  int strictStatus;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

std::string NameOf(const testing::TestParamInfo<Damage>& test) { return test.param.name; }

class DamageTest : public ToolTest, public testing::WithParamInterface<Damage> {};

TEST_P(DamageTest, IsCountedAndNamed) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  RunSql(Path(GetParam().file), GetParam().sql);
  const QByteArray before = ReadFile(GetParam().file);
  const Outcome outcome = Run({"check", "m", "t"});
  EXPECT_EQ(outcome.status, GetParam().status);
  EXPECT_EQ(Run({"check", "m", "t", "--strict"}).status, GetParam().strictStatus);
  EXPECT_EQ(outcome.err, QString());
  EXPECT_EQ(ReadFile(GetParam().file), before);
  QStringList expected = clean.split('\n');
  for (const QString& line : GetParam().lines) {
    const QString what = line.mid(9).section(':', 0, 0);
    expected.replaceInStrings("ok       " + what + ": none", line);
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
               {"WARNING  sites that no alignment refers to in m: 1 (7 Å)",
                "WARNING  paths that no alignment refers to in m: 1 (8 P8)",
                "WARNING  orientations that no alignment refers to in m: 2 (20, 21)",
                "WARNING  locations that no alignment refers to in m: 1 (30)",
                "WARNING  heights that no alignment refers to in m: 1 (40)"},
               0,
               4},
        Damage{"ForeignKeys",
               "m",
               "DELETE FROM Height WHERE HeightKey = 1",
               {"ERROR    foreign key violations in m: 1 (AntennaAlignment row 1 names no row of Height)"},
               4,
               4},
        Damage{"NoThresholds",
               "t",
               "DELETE FROM AntennaAlignmentThresholds; DELETE FROM PathAlignmentThresholds",
               {"WARNING  site alignments without thresholds in t: 1 (1)",
                "WARNING  path alignments without thresholds in t: 1 (1)"},
               0,
               4},
        Damage{"ThresholdsAlone",
               "t",
               "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (5, 1);"
               "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey) VALUES (6, 1), (7, 1)",
               {"note     thresholds without site alignment in t: 1 (5)",
                "note     thresholds without path alignment in t: 2 (6, 7)"},
               0,
               0},
        Damage{"ThresholdsTwice",
               "t",
               "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (1, 1);"
               "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey) VALUES (1, 1), (1, 1)",
               {"WARNING  two thresholds rows for one site alignment in t: 1 (1)",
                "WARNING  two thresholds rows for one path alignment in t: 1 (1)"},
               0,
               4},
        Damage{"ThresholdsOfOthers",
               "t",
               "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (1, 9);"
               "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey) VALUES (1, 9), (1, 8)",
               {"WARNING  thresholds that name another site than their alignment in t: 1 (1)",
                "WARNING  thresholds that name another path than their alignment in t: 2 (1, 1)"},
               0,
               4},
        Damage{
            "Types",
            "m",
            "UPDATE Height SET HeightInMeters = 9e999 WHERE HeightKey = 1; UPDATE Orientation SET "
            "TiltDegrees = 'steep' WHERE OrientationKey = 2; UPDATE AntennaAlignment SET Note = x'00'",
            {"ERROR    values of a wrong type or not finite in m: 3 (AntennaAlignment row 1, Height row 1, "
             "Orientation row 2)"},
            4,
            4},
        // Angles are read as numbers of 32 bits, places as numbers of 64.
        Damage{"TooLarge",
               "m",
               "UPDATE Orientation SET AzimuthDegrees = 1e39 WHERE OrientationKey = 1;"
               "UPDATE Geolocation SET LatitudeDegreesNorth = 1e39",
               {"ERROR    values of a wrong type or not finite in m: 1 (Orientation row 1)"},
               4,
               4},
        Damage{"Keys",
               "m",
               "UPDATE AntennaAlignment SET AntennaAlignmentKey = 4294967296;"
               "UPDATE PathAlignment SET PathAlignmentKey = -1",
               {"ERROR    values of a wrong type or not finite in m: 2 (AntennaAlignment row 4294967296, "
                "PathAlignment row -1)",
                "WARNING  site alignments without thresholds in t: 1 (4294967296)",
                "WARNING  path alignments without thresholds in t: 1 (-1)",
                "note     thresholds without site alignment in t: 1 (1)",
                "note     thresholds without path alignment in t: 1 (1)"},
               4,
               4},
        Damage{"Column", "m", "ALTER TABLE Height ADD Extra INTEGER",
               QStringList{"ERROR    schema differences in m: 1 (the columns of Height differ)"} +
                   Skipped(ofMainRows, "m") + Skipped(ofThePair, "t"),
               4, 4},
        Damage{"Objects",
               "m",
               "CREATE TABLE Extra (x); CREATE INDEX i ON Sites(SiteKey)",
               {"ERROR    schema differences in m: 2 (index i does not belong there, table Extra does not "
                "belong there)"},
               4,
               4}),
    NameOf);

TEST_F(CheckTest, TheVersionDecidesWhichTablesBelong) {
  CreateFiles();
  const auto look = [this](const char* version) {
    RunSql(Path("m"), QString("UPDATE Version SET VersionNumber = %1").arg(version));
    const Outcome outcome = Run({"check", "m"});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.err, QString());
    return outcome.out.split('\n');
  };
  const QString sound = "ok       integrity errors in m: none";
  EXPECT_EQ(
      look("6"),
      (QStringList{sound, "ok       unknown version in m: none", "ok       foreign key violations in m: none",
                   "ERROR    schema differences in m: 2 (the columns of PathAlignment differ, the "
                   "columns of Preferences differ)",
                   "ok       defaults and references of converted files in m: none"} +
       Skipped(ofMainRows, "m") + QStringList{""}));
  EXPECT_EQ(look("8"), (QStringList{sound, "ERROR    unknown version in m: 1 (version 8 is not known)"} +
                        Skipped(ofMainRows.mid(1), "m") + QStringList{""}));
}

TEST_F(CheckTest, DamagedPagesAreFound) {
  CreateFilesWith({SiteEntry(), PathEntry()});
  Overwrite("m", PageOf("m", "Height") * 4096, QByteArray(64, '\x55'));
  const Outcome outcome = Run({"check", "m", "t"});
  EXPECT_EQ(outcome.status, 4);
  EXPECT_EQ(outcome.err, QString());
  QStringList lines = outcome.out.split('\n');
  // The first has words of SQLite's.
  const QString first = lines.takeFirst();
  const QRegularExpression error("^ERROR    integrity errors in m: [1-9][0-9]* \\(.+\\)$");
  EXPECT_TRUE(error.match(first).hasMatch()) << first.toStdString();
  EXPECT_EQ(lines,
            (QStringList{"ok       unknown version in m: none", "ok       schema differences in m: none",
                         "ok       defaults and references of converted files in m: none"} +
             Skipped(ofMainRows, "m") +
             QStringList{"ok       integrity errors in t: none", "ok       schema differences in t: none",
                         "ok       defaults and references of converted files in t: none",
                         "ok       values of a wrong type or not finite in t: none"} +
             Skipped(ofThePair, "t") + QStringList{""}));
}

TEST_F(CheckTest, FilesThatAreNone) {
  CreateFiles();
  ExpectFailure({"check", "none", "t"}, "none: no such file");
  WriteFile("text", "text");
  ExpectFailure({"check", "text"}, "text: is no database", 4);
}

TEST_F(CheckTest, AFileInUseIsNotDamaged) {
  CreateFiles();
  const Holder holder(Path("t"), "BEGIN EXCLUSIVE");
  ExpectFailure({"check", "m", "t", "--wait", "0"}, InUse("t"), 3);
}

TEST_F(CheckTest, JsonHasTheRulesWithFindings) {
  CreateFilesWith({SiteEntry("S")});
  const auto findings = [this] {
    const QString json = Run({"check", "m", "t", "--format", "json"}).out;
    EXPECT_TRUE(json.endsWith("}\n")) << json.toStdString();
    QJsonObject object = QJsonDocument::fromJson(json.toUtf8()).object();
    EXPECT_EQ(object.take("version"), 7);
    EXPECT_EQ(object.keys(), QStringList{"findings"});
    return object["findings"].toArray();
  };
  const auto finding = [](const char* file, const char* rule, const char* severity, const QJsonArray& keys) {
    return QJsonObject{
        {"file", file}, {"rule", rule}, {"severity", severity}, {"count", keys.size()}, {"keys", keys}};
  };
  EXPECT_EQ(findings(), QJsonArray());
  RunSql(Path("m"), "INSERT INTO Sites VALUES (7, 'Å'), (8, 'B'); CREATE TABLE Extra (x)");
  RunSql(Path("t"),
         "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (5, 1)");
  EXPECT_EQ(findings(),
            (QJsonArray{finding("main", "schema differences", "error", {"table Extra does not belong there"}),
                        finding("main", "sites that no alignment refers to", "warning", {"7 Å", "8 B"}),
                        finding("thresholds", "thresholds without site alignment", "note", {"5"})}));
}

// The golden files hold rows that nothing refers to, and say which.
TEST_F(CheckTest, MainFilesOfEarlierVersionsStandAlone) {
  for (int version = 1; version <= 6; ++version) {
    SCOPED_TRACE(version);
    LoadEarlier("m", version);
    EXPECT_EQ(RunWell({"check", "m"}),
              clean.section('\n', 0, 5) +
                  "\nWARNING  sites that no alignment refers to in m: 1 (6 Site without alignments)\n"
                  "WARNING  paths that no alignment refers to in m: 2 (3 Path without alignments, "
                  "7 Another path without alignments)\n"
                  "WARNING  orientations that no alignment refers to in m: 3 (8, 17, 20)\n"
                  "WARNING  locations that no alignment refers to in m: 3 (4, 12, 16)\n"
                  "WARNING  heights that no alignment refers to in m: 2 (5, 12)\n");
    EXPECT_EQ(Run({"check", "m", "--strict"}).status, 4);
    ASSERT_TRUE(QFile::remove(Path("m")));
  }
}

TEST_F(CheckTest, TheThresholdsFileHasToFitTheVersion) {
  CreateFiles();
  ExpectFailure({"check", "m"}, "m: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  LoadEarlier("v6", 6);
  ExpectFailure({"check", "v6", "t"},
                "v6: is of version 6, which has no thresholds file: leave THRESHOLDS out" + hint, 2);
}

// A view that never comes to an end stands where a table has to be.
TEST_F(CheckTest, AViewWithoutEndIsNotAsked) {
  CreateFiles();
  RunSql(
      Path("m"),
      "DROP TABLE Sites; CREATE VIEW Sites AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM "
      "n) SELECT i AS SiteKey, 'S' || i AS SiteIdentifier FROM n");
  EXPECT_EQ(Run({"check", "m", "t"}).status, 4);
  for (const char* command : {"list", "export"}) {
    ExpectFailure({command, "m", "t"}, "m: has no table Sites; 'tarnbeam-db check' tells more", 4);
  }
}

}  // namespace
