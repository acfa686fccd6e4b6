// Import and export.
#include <sys/stat.h>

#include <QFile>
#include <QJsonDocument>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

// What is said of an entry that a trigger keeps from being saved.
const QString notSaved = QStringLiteral(
    "tarnbeam-db: in.json: entry 2: could not be saved, so nothing was\n"
    "  library: step INSERT INTO Paths (PathIdentifier) VALUES (?): full\n");

using ImportTest = ToolTest;

TEST_F(ImportTest, Example) {
  CreateFiles();
  EXPECT_EQ(RunWell({"import", "m", "t", TARNBEAM_EXAMPLE}),
            "16 alignments saved, 12 of sites and 4 of paths\n");
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM AntennaAlignment"), QStringList{"12"});
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM PathAlignment"), QStringList{"4"});
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM Sites WHERE SiteIdentifier = '東京タワー'"),
            QStringList{"1"});
}

TEST_F(ImportTest, LongWorkShowsItsProgressOnATerminal) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry(), PathEntry()});
  constexpr int aSecond = 1000;
  const Outcome outcome = RunOnTerminal({"import", "m", "t", "in.json"}, aSecond);
  EXPECT_EQ(outcome.out, "2 alignments saved, 1 of sites and 1 of paths\n");
  EXPECT_EQ(outcome.err, "\r\x1b[K1 of 2 alignments\r\x1b[K2 of 2 alignments\r\x1b[K");
}

TEST_F(ImportTest, EveryValueOfASiteReachesItsColumn) {
  CreateFilesWith({SiteEntry()});
  EXPECT_EQ(
      Rows(Path("m"),
           "SELECT SiteIdentifier, SectorName, AntennaPosition, AzimuthOffsetDegrees, LinuxTimeUTC, "
           "TiltInversionEnabled, Note, RollPrecision FROM AntennaAlignment JOIN Sites USING (SiteKey)"),
      QStringList{"'Åsgård'|'Alpha'|'Høyt'|90.0|1715670753|1|'Grüße, \"Ole\"\\nline 2'|2"});
  EXPECT_EQ(Rows(Path("m"), "SELECT * FROM Orientation"),
            (QStringList{"1|0.5|-2.25|0.125", "2|359.75|-2.5|0.375"}));
  EXPECT_EQ(Rows(Path("m"), "SELECT TargetOrientationKey, MeasuredOrientationKey FROM AntennaAlignment"),
            QStringList{"1|2"});
  EXPECT_EQ(Rows(Path("m"), "SELECT * FROM Geolocation"), QStringList{"1|59.318742|10.477905|38.5"});
  EXPECT_EQ(Rows(Path("m"), "SELECT * FROM Height"), QStringList{"1|31.5|3"});
  EXPECT_EQ(Rows(Path("t"), "SELECT * FROM AntennaAlignmentThresholds"), QStringList{"1|1|1|1.5|0.125|0.0"});
}

TEST_F(ImportTest, EveryValueOfAPathReachesItsColumn) {
  CreateFilesWith({PathEntry()});
  EXPECT_EQ(Rows(Path("m"),
                 "SELECT PathIdentifier, AzimuthOffset, LinuxTimeUTC, TiltInversionEnabled, c.*, g.* FROM "
                 "PathAlignment a JOIN Paths USING (PathKey) JOIN Geolocation c ON c.GeolocationKey = "
                 "a.PathLocationKey JOIN Geolocation g ON g.GeolocationKey = a.LocationKey"),
            QStringList{"'Żuławy'|90.0|1715670753|1|1|54.152287|19.408831|27.75|2|59.318742|10.477905|38.5"});
  EXPECT_EQ(Rows(Path("t"), "SELECT * FROM PathAlignmentThresholds"), QStringList{"1|1|1|1.5|0.25|1000.5"});
}

struct Fault {
  QJsonObject entry;
  const char* message;
};

const QJsonValue nothing = QJsonValue::Undefined;
const char* const notThatTime = "time must be a time such as 2024-05-14T09:12:33+02:00";
const char* const outsideTime = "time must lie from 1970-01-01T00:00:00Z to 2106-02-07T06:28:14Z";

std::vector<Fault> Faults() {
  return {
      {With(SiteEntry(), "kind", nothing), "kind is missing"},
      {With(SiteEntry(), "kind", "mast"), "kind must be site or path"},
      {With(SiteEntry(), "identifier", nothing), "identifier is missing"},
      {With(PathEntry(), "identifier", ""), "identifier must not be empty"},
      {With(SiteEntry(), "sector", 1), "sector must be a text"},
      {With(SiteEntry(), "sector", QJsonObject()), "sector must be a text"},
      {With(SiteEntry(), "sector", QString::fromLatin1("A\0B", 3)),
       "sector must not hold NUL or half a surrogate pair: the files cannot keep them"},
      {With(SiteEntry(), "options.note", nothing), "options.note is missing"},
      {With(SiteEntry(), "height.unit", "m"), "height.unit is not a field of a site alignment"},
      {With(SiteEntry(), "farEnd.latitude", 1), "farEnd.latitude is not a field of a site alignment"},
      {With(PathEntry(), "sector", "A"), "sector is not a field of a path alignment"},
      {With(PathEntry(), "options.thresholds.roll", 1),
       "options.thresholds.roll is not a field of a path alignment"},
      {With(PathEntry(), "farEnd.elevation", nothing), "farEnd.elevation is missing"},
      {With(SiteEntry(), "target", 12), "target must be an object"},
      {With(SiteEntry(), "target.azimuth", "12"), "target.azimuth must be a number from -360 to 360"},
      {With(SiteEntry(), "measured.azimuth", 360.5), "measured.azimuth must be a number from -360 to 360"},
      {With(SiteEntry(), "measured.azimuth", QJsonValue::Null),
       "measured.azimuth must be a number from -360 to 360"},
      {With(PathEntry(), "target.tilt", 90.01), "target.tilt must be a number from -90 to 90"},
      {With(PathEntry(), "measured.roll", -180.5), "measured.roll must be a number from -180 to 180"},
      {With(SiteEntry(), "location.latitude", 90.0001), "location.latitude must be a number from -90 to 90"},
      {With(PathEntry(), "farEnd.longitude", -180.0001),
       "farEnd.longitude must be a number from -180 to 180"},
      {With(PathEntry(), "farEnd.elevation", 20000.1),
       "farEnd.elevation must be a number from -1000 to 20000"},
      {With(PathEntry(), "height.value", -1000.1), "height.value must be a number from -1000 to 20000"},
      {With(SiteEntry(), "height.source", "laser"),
       "height.source must be unknown, manual, barometric, gps or a whole number"},
      {With(SiteEntry(), "height.source", 1.5),
       "height.source must be unknown, manual, barometric, gps or a whole number"},
      {With(SiteEntry(), "options.tiltInversion", 1), "options.tiltInversion must be true or false"},
      {With(SiteEntry(), "options.rollPrecision", 0.5),
       "options.rollPrecision must be a whole number from -2147483648 to 2147483647"},
      {With(SiteEntry(), "options.rollPrecision", 2147483648.0),
       "options.rollPrecision must be a whole number from -2147483648 to 2147483647"},
      {With(SiteEntry(), "options.thresholds.roll", -0.5),
       "options.thresholds.roll must be a number from 0 to 180"},
      {With(SiteEntry(), "time", 1715670753), notThatTime},
      {With(SiteEntry(), "time", "yesterday"), notThatTime},
      {With(SiteEntry(), "time", "2024-02-30T00:00:00Z"), notThatTime},
      {With(SiteEntry(), "time", "2024-05-14T09:12:33"), "time must end with an offset from UTC or Z"},
      {With(SiteEntry(), "time", "2024-05-14T09:12:33.250Z"), "time must be a whole second"},
      {With(SiteEntry(), "time", "1970-01-01T00:59:59+01:00"), outsideTime},
      {With(SiteEntry(), "time", "2106-02-07T06:28:15Z"), outsideTime}};
}

TEST_F(ImportTest, AFaultIsNamedAndNothingIsSaved) {
  CreateFiles();
  const QByteArray before = ReadFile("m");
  for (const Fault& fault : Faults()) {
    WriteJson("in.json", {SiteEntry(), fault.entry, PathEntry()});
    ExpectFailure({"import", "m", "t", "in.json"},
                  QString("in.json: entry 2: %1\nnothing was saved").arg(fault.message));
  }
  EXPECT_EQ(ReadFile("m"), before);
}

struct Bounds {
  QJsonObject entry;
  const char* field;
  double lowest;
  double highest;
};

// A number may be as large and as small as that; the nearest one beyond it that a file can hold may not.
TEST_F(ImportTest, BoundsOfEveryNumber) {
  QJsonArray largest;
  QJsonArray tooLarge;
  QString faults;
  const QList<Bounds> all{{SiteEntry(), "target.azimuth", -360, 360},
                          {SiteEntry(), "target.tilt", -90, 90},
                          {SiteEntry(), "target.roll", -180, 180},
                          {SiteEntry(), "measured.azimuth", -360, 360},
                          {SiteEntry(), "measured.tilt", -90, 90},
                          {SiteEntry(), "measured.roll", -180, 180},
                          {SiteEntry(), "location.latitude", -90, 90},
                          {SiteEntry(), "location.longitude", -180, 180},
                          {SiteEntry(), "location.elevation", -1000, 20000},
                          {PathEntry(), "farEnd.latitude", -90, 90},
                          {PathEntry(), "farEnd.longitude", -180, 180},
                          {PathEntry(), "farEnd.elevation", -1000, 20000},
                          {SiteEntry(), "height.value", -1000, 20000},
                          {SiteEntry(), "options.azimuthOffset", -360, 360},
                          {SiteEntry(), "options.thresholds.azimuth", 0, 180},
                          {SiteEntry(), "options.thresholds.tilt", 0, 180},
                          {SiteEntry(), "options.thresholds.roll", 0, 180}};
  for (const Bounds& bounds : all) {
    for (const double bound : {bounds.lowest, bounds.highest}) {
      largest.append(With(bounds.entry, bounds.field, bound));
      tooLarge.append(With(bounds.entry, bounds.field, bound + (bound == bounds.lowest ? -0.001 : 0.001)));
      faults += QString("\nin.json: entry %1: %2 must be a number from %3 to %4")
                    .arg(tooLarge.size())
                    .arg(bounds.field)
                    .arg(bounds.lowest)
                    .arg(bounds.highest);
    }
  }
  CreateFiles();
  WriteJson("in.json", tooLarge);
  ExpectFailure({"import", "m", "t", "in.json"},
                faults.mid(1).replace("\n", "\ntarnbeam-db: ") + "\nnothing was saved");
  WriteJson("in.json", largest);
  EXPECT_EQ(RunWell({"import", "m", "t", "in.json"}), "34 alignments saved, 28 of sites and 6 of paths\n");
}

TEST_F(ImportTest, EveryFaultIsNamed) {
  CreateFiles();
  WriteFile("in.json", R"([{"kind": "site"}, 7, {"identifier": "P"}])");
  const Outcome outcome = Run({"import", "m", "t", "in.json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  QStringList expected;
  for (const char* field : {"identifier",
                            "sector",
                            "position",
                            "time",
                            "target.azimuth",
                            "target.tilt",
                            "target.roll",
                            "measured.azimuth",
                            "measured.tilt",
                            "measured.roll",
                            "location.latitude",
                            "location.longitude",
                            "location.elevation",
                            "height.value",
                            "height.source",
                            "options.azimuthOffset",
                            "options.tiltInversion",
                            "options.rollPrecision",
                            "options.note",
                            "options.thresholds.azimuth",
                            "options.thresholds.tilt",
                            "options.thresholds.roll"}) {
    expected.append(QString("tarnbeam-db: in.json: entry 1: %1 is missing").arg(field));
  }
  expected += QStringList{"tarnbeam-db: in.json: entry 2: must be an object",
                          "tarnbeam-db: in.json: entry 3: kind is missing", "nothing was saved", ""};
  EXPECT_EQ(outcome.err.split('\n'), expected);
}

TEST_F(ImportTest, FromStandardInput) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P")});
  const QString line = "exec \"$0\" \"$@\" < in.json";
  const Outcome outcome = RunInShell(line, {"import", "m", "t", "-"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, QString());
  EXPECT_EQ(outcome.out, "2 alignments saved, 1 of sites and 1 of paths\n");
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\nsite        1  S\npath        1  P\n");
  WriteFile("in.json", "[\n{");
  const Outcome broken = RunInShell(line, {"import", "m", "t", "-"});
  EXPECT_EQ(broken.status, 1);
  EXPECT_EQ(broken.err, "tarnbeam-db: standard input: line 2: unterminated object\n");
}

// Somebody's own: what a trigger writes besides is kept, though one of the columns takes no value.
TEST_F(ImportTest, ATriggerFillsATableWithAColumnThatIsCalculated) {
  CreateFiles();
  RunSql(Path("m"),
         "CREATE TABLE log (twice AS (2 * key), key); CREATE TRIGGER logs AFTER INSERT ON AntennaAlignment "
         "BEGIN "
         "INSERT INTO log (key) VALUES (NEW.AntennaAlignmentKey); END");
  WriteJson("in.json", {SiteEntry(), PathEntry(), SiteEntry("B")});
  RunWell({"import", "m", "t", "in.json"});
  EXPECT_EQ(Rows(Path("m"), "SELECT twice || ' ' || key FROM log ORDER BY key"),
            (QStringList{"'2 1'", "'4 2'"}));
}

TEST_F(ImportTest, ModesAndLinksStay) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S")});
  ASSERT_EQ(chmod(Path("m").toUtf8().constData(), 0640), 0);
  ASSERT_EQ(chmod(Path("t").toUtf8().constData(), 0604), 0);
  ASSERT_TRUE(QFile::link("m", Path("link")));
  RunWell({"import", "link", "t", "in.json"});
  EXPECT_EQ(QFile::symLinkTarget(Path("link")), Path("m"));
  for (const auto& [name, mode] : {std::pair("m", 0640U), std::pair("t", 0604U)}) {
    struct stat status {};
    ASSERT_EQ(stat(Path(name).toUtf8().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, mode) << name;
  }
  EXPECT_EQ(Rows(Path("m"), "SELECT SiteIdentifier FROM Sites"), QStringList{"'S'"});
}

TEST_F(ImportTest, FilesThatHoldNoAlignments) {
  CreateFiles();
  WriteFile("broken.json", "[\n{\"kind\": \"site\",\n]");
  WriteFile("object.json", "{}");
  WriteFile("none.json", "[]");
  ExpectFailure({"import", "m", "t", "broken.json"}, "broken.json: line 3: unterminated object");
  ExpectFailure({"import", "m", "t", "object.json"}, "object.json: must be an array of alignments");
  ExpectFailure({"import", "m", "t", "gone.json"}, "gone.json: No such file or directory");
  EXPECT_EQ(RunWell({"import", "m", "t", "none.json"}), "0 alignments saved, 0 of sites and 0 of paths\n");
}

TEST_F(ImportTest, LimitsOfTheRangesAreWithin) {
  CreateFilesWith({With(With(SiteEntry("first"), "time", "1970-01-01T00:00:00Z"), "target.azimuth", -360),
                   With(With(SiteEntry("last"), "time", "2106-02-07T06:28:14Z"), "target.azimuth", 360),
                   With(SiteEntry("number"), "height.source", -2147483648.0),
                   With(PathEntry("none"), "options.thresholds.pathLength", -1)});
  EXPECT_EQ(Rows(Path("m"), "SELECT LinuxTimeUTC & 4294967295 FROM AntennaAlignment LIMIT 2"),
            (QStringList{"0", "4294967294"}));
  const QJsonArray exported = QJsonDocument::fromJson(RunWell({"export", "m", "t"}).toUtf8()).array();
  EXPECT_EQ(exported.at(0)["time"].toString(), "1970-01-01T00:00:00Z");
  EXPECT_EQ(exported.at(1)["time"].toString(), "2106-02-07T06:28:14Z");
  EXPECT_EQ(exported.at(2)["height"]["source"].toDouble(), -2147483648.0);
}

TEST_F(ImportTest, ExportIntoNewFilesGivesEqualReports) {
  CreateFiles();
  RunWell({"import", "m", "t", TARNBEAM_EXAMPLE});
  // A float has its own shortest form; these need the most digits possible.
  WriteJson("digits.json",
            {With(With(SiteEntry("digits"), "measured.tilt", 0.1), "measured.azimuth", 299.999969482421875),
             With(With(PathEntry("digits"), "location.latitude", 0.1 + 0.2), "location.longitude",
                  -179.99999999999997)});
  RunWell({"import", "m", "t", "digits.json"});
  const QString exported = RunWell({"export", "m", "t"});
  WriteFile("out.json", exported.toUtf8());
  RunWell({"create", "m2", "t2"});
  RunWell({"import", "m2", "t2", "out.json"});
  EXPECT_EQ(RunWell({"export", "m2", "t2"}), exported);
  for (const char* file : {"m", "m2"}) {
    EXPECT_EQ(Rows(Path(file),
                   "SELECT count(*) FROM Orientation WHERE AzimuthDegrees = 299.999969482421875 AND "
                   "TiltDegrees = 0.100000001490116119384765625"),
              QStringList{"1"});
    EXPECT_EQ(Rows(Path(file),
                   "SELECT count(*) FROM Geolocation WHERE LatitudeDegreesNorth = 0.1 + 0.2 AND "
                   "LongitudeDegreesEast = -179.99999999999997"),
              QStringList{"1"});
  }
}

TEST_F(ImportTest, SkipExistingLeavesOutWhatIsThere) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  const QJsonArray entries{
      // Note and thresholds do not make another measurement, nor does the offset of the time.
      With(With(SiteEntry("S"), "options.note", "other"), "options.thresholds.azimuth", 9),
      With(PathEntry("P"), "time", "2024-05-14T07:12:33Z"), With(SiteEntry("S"), "measured.tilt", -2.625),
      // What is twice in the file is saved once.
      PathEntry("Q"), PathEntry("Q"), SiteEntry("T")};
  WriteJson("in.json", entries);
  EXPECT_EQ(RunWell({"import", "--skip-existing", "m", "t", "in.json"}),
            "3 alignments saved, 2 of sites and 1 of paths\n3 alignments left out, already there\n");
  EXPECT_EQ(Rows(Path("m"), "SELECT SiteIdentifier, Note FROM AntennaAlignment JOIN Sites USING (SiteKey)"),
            (QStringList{R"('S'|'Grüße, "Ole"\nline 2')", R"('S'|'Grüße, "Ole"\nline 2')",
                         R"('T'|'Grüße, "Ole"\nline 2')"}));
  EXPECT_EQ(Rows(Path("m"), "SELECT PathIdentifier FROM PathAlignment JOIN Paths USING (PathKey)"),
            (QStringList{"'P'", "'Q'"}));
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  EXPECT_EQ(RunWell({"import", "--skip-existing", "m", "t", "in.json"}),
            "0 alignments saved, 0 of sites and 0 of paths\n6 alignments left out, already there\n");
  EXPECT_EQ(ReadFile("m"), mainFile);
  EXPECT_EQ(ReadFile("t"), thresholds);
  WriteJson("in.json", {SiteEntry("T")});
  EXPECT_EQ(RunWell({"import", "--skip-existing", "m", "t", "in.json"}),
            "0 alignments saved, 0 of sites and 0 of paths\n1 alignment left out, already there\n");
}

TEST_F(ImportTest, WithoutSkipExistingEverythingIsSaved) {
  CreateFilesWith({SiteEntry("S")});
  EXPECT_EQ(RunWell({"import", "m", "t", "in.json"}), "1 alignment saved, 1 of sites and 0 of paths\n");
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM AntennaAlignment"), QStringList{"2"});
}

// Entries are numbered as they are in the file, whatever was left out before it.
TEST_F(ImportTest, SkipExistingNamesTheEntryThatFails) {
  CreateFilesWith({SiteEntry("S")});
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P")});
  RunSql(Path("m"), "CREATE TRIGGER full BEFORE INSERT ON Paths BEGIN SELECT RAISE(FAIL, 'full'); END");
  const Outcome outcome = Run({"import", "--skip-existing", "m", "t", "in.json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(outcome.err, notSaved);
}

TEST_F(ImportTest, AnInfiniteNumberIsNotExported) {
  CreateFilesWith({SiteEntry("S")});
  RunSql(Path("m"), "UPDATE Height SET HeightInMeters = 9e999");
  for (const QStringList& words : {QStringList{"export", "m", "t"}, QStringList{"report", "m", "t", "--all"},
                                   QStringList{"report", "m", "t", "--site", "S", "--format", "csv"}}) {
    ExpectFailure(words, "m: row 1 of Height holds what is no finite number" + tellsMore, 4);
  }
}

TEST_F(ImportTest, ASaveThatFailsKeepsNone) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P"), SiteEntry("T")});
  RunSql(Path("m"), "CREATE TRIGGER full BEFORE INSERT ON Paths BEGIN SELECT RAISE(FAIL, 'full'); END");
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  const Outcome outcome = Run({"import", "m", "t", "in.json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(outcome.err, notSaved);
  EXPECT_EQ(ReadFile("m"), mainFile);
  EXPECT_EQ(ReadFile("t"), thresholds);
}

// The library is told that all went well.
TEST_F(ImportTest, RowsThatATriggerDoesAwayWithAreMissed) {
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P")});
  for (const char* table : {"AntennaAlignment", "PathAlignment", "Orientation", "Geolocation", "Height"}) {
    for (const char* file : {"m", "t"}) QFile::remove(Path(file));
    CreateFiles();
    RunSql(Path("m"),
           QString("CREATE TRIGGER away BEFORE INSERT ON %1 BEGIN SELECT RAISE(IGNORE); END").arg(table));
    const QByteArray before = ReadFile("m");
    const Outcome outcome = Run({"import", "m", "t", "in.json"});
    EXPECT_EQ(outcome.status, 1) << table;
    EXPECT_EQ(outcome.out, QString());
    EXPECT_NE(outcome.err, QString());
    EXPECT_EQ(ReadFile("m"), before) << table;
  }
}

// Nor does the library notice these, and as many rows are there as have to be.
TEST_F(ImportTest, ValuesThatATriggerAltersAreMissed) {
  struct Alteration {
    const char* file;
    const char* table;
    const char* change;
    const char* refused;
  };
  const char* const site = "site S";
  const char* const path = "path P";
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P")});
  for (const Alteration& alteration : std::initializer_list<Alteration>{
           {"m", "Sites", "SiteIdentifier = 'T'", site},
           {"m", "Paths", "PathIdentifier = 'T'", path},
           {"m", "Orientation", "TiltDegrees = 0", site},
           {"m", "Orientation", "AzimuthDegrees = 0.25", site},
           {"m", "Orientation", "RollDegrees = 0.25", site},
           {"m", "Geolocation", "LatitudeDegreesNorth = 0", site},
           {"m", "Geolocation", "LongitudeDegreesEast = 0", site},
           {"m", "Geolocation", "ElevationMeters = 27.5", site},
           {"m", "Geolocation", "ElevationMeters = 27.5 WHERE ElevationMeters = 27.75", path},
           {"m", "Height", "HeightInMeters = 0", site},
           {"m", "Height", "HeightType = 1", site},
           {"m", "AntennaAlignment", "SectorName = 'Beta'", site},
           {"m", "AntennaAlignment", "AntennaPosition = ''", site},
           {"m", "AntennaAlignment", "AzimuthOffsetDegrees = 0", site},
           {"m", "AntennaAlignment", "LinuxTimeUTC = LinuxTimeUTC + 1", site},
           {"m", "AntennaAlignment", "TiltInversionEnabled = 0", site},
           {"m", "AntennaAlignment", "Note = ''", site},
           {"m", "AntennaAlignment", "RollPrecision = 0", site},
           {"m", "AntennaAlignment", "MeasuredOrientationKey = TargetOrientationKey", site},
           {"m", "PathAlignment", "AzimuthOffset = 0", path},
           {"m", "PathAlignment", "LinuxTimeUTC = LinuxTimeUTC + 1", path},
           {"m", "PathAlignment", "TiltInversionEnabled = 0", path},
           {"m", "PathAlignment", "Note = ''", path},
           {"m", "PathAlignment", "PathLocationKey = LocationKey", path},
           {"t", "AntennaAlignmentThresholds", "AzimuthThreshold = 0", site},
           {"t", "AntennaAlignmentThresholds", "TiltThreshold = 0", site},
           {"t", "AntennaAlignmentThresholds", "RollThreshold = 1", site},
           {"t", "AntennaAlignmentThresholds", "SiteIdentifier = 7", site},
           {"t", "PathAlignmentThresholds", "AzimuthThreshold = 0", path},
           {"t", "PathAlignmentThresholds", "TiltThreshold = 0", path},
           {"t", "PathAlignmentThresholds", "PathLengthThreshold = 0", path},
           {"t", "PathAlignmentThresholds", "PathKey = 7", path}}) {
    SCOPED_TRACE(QString("%1: %2").arg(alteration.table, alteration.change).toStdString());
    for (const char* file : {"m", "t"}) QFile::remove(Path(file));
    CreateFiles();
    RunSql(Path(alteration.file),
           QString("CREATE TRIGGER alters AFTER INSERT ON %1 BEGIN UPDATE %1 SET %2; END")
               .arg(alteration.table, alteration.change));
    const QByteArray mainFile = ReadFile("m");
    const QByteArray thresholds = ReadFile("t");
    ExpectFailure(
        {"import", "m", "t", "in.json"},
        QString("%1: an alignment is not kept as it was given, perhaps because of a trigger; nothing "
                "was saved")
            .arg(alteration.refused));
    EXPECT_EQ(ReadFile("m"), mainFile);
    EXPECT_EQ(ReadFile("t"), thresholds);
  }
}

TEST_F(ImportTest, EveryAlignmentIsComparedWithWhatIsKept) {
  CreateFiles();
  RunSql(Path("m"),
         "CREATE TRIGGER alters AFTER INSERT ON AntennaAlignment WHEN NEW.SectorName = 'third' BEGIN UPDATE "
         "AntennaAlignment SET Note = 'x' WHERE SectorName = 'third'; END");
  WriteJson("in.json", {SiteEntry("A"), SiteEntry("B"), SiteEntry("C", "third")});
  ExpectFailure(
      {"import", "m", "t", "in.json"},
      "site C: an alignment is not kept as it was given, perhaps because of a trigger; nothing was saved");
}

TEST_F(ImportTest, FilesThatAreNoPairAreRefused) {
  CreateFilesWith({SiteEntry("S")});
  RunSql(Path("t"), "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = 9");
  const QByteArray before = ReadFile("m");
  ExpectFailure({"import", "m", "t", "in.json"}, "m and t" + noPair, 4);
  EXPECT_EQ(ReadFile("m"), before);
}

TEST_F(ImportTest, AFileInUseKeepsBothAsTheyAre) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S")});
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  for (const char* file : {"m", "t"}) {
    for (const char* work :
         {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE", "BEGIN; SELECT count(*) FROM sqlite_schema"}) {
      const Holder holder(Path(file), work);
      ExpectFailure({"import", "m", "t", "in.json", "--wait", "0"}, InUse(file), 3);
      EXPECT_EQ(ReadFile("m"), mainFile);
      EXPECT_EQ(ReadFile("t"), thresholds);
    }
  }
}

// Nothing is concluded from debug lines, whoever silences them.
TEST_F(ImportTest, LoggingRulesChangeNothing) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S"), PathEntry("P")});
  WriteFile("qtlogging.ini", "[Rules]\n*.debug=false\n");
  RunSql(Path("m"), "CREATE TRIGGER full BEFORE INSERT ON Paths BEGIN SELECT RAISE(FAIL, 'full'); END");
  for (const QMap<QString, QString>& variables :
       {QMap<QString, QString>{{"QT_LOGGING_RULES", "*.debug=false"}},
        QMap<QString, QString>{{"QT_LOGGING_CONF", Path("qtlogging.ini")}}}) {
    const auto run = [&] {
      return RunProgram(TARNBEAM_TOOL, {"import", "m", "t", "in.json", "--wait", "0"}, variables);
    };
    const Outcome failed = run();
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err, notSaved);
    const Holder reader(Path("m"), "BEGIN; SELECT count(*) FROM sqlite_schema");
    const Outcome inUse = run();
    EXPECT_EQ(inUse.status, 3);
    EXPECT_EQ(inUse.err, "tarnbeam-db: " + InUse("m") + "\n");
  }
}

TEST_F(ImportTest, AWriteProtectedFileKeepsBothAsTheyAre) {
  CreateFiles();
  WriteJson("in.json", {SiteEntry("S")});
  const QByteArray before = ReadFile("t");
  ASSERT_TRUE(QFile::setPermissions(Path("m"), QFile::ReadOwner));
  const Outcome outcome = RunUnprivileged({"import", "m", "t", "in.json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: m: cannot be written; both files are as they were\n");
  EXPECT_EQ(ReadFile("t"), before);
}

}  // namespace
