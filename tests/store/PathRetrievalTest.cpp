// Reading the alignments of a path. Its statements are never finalised, so that its connections refuse to
// close and stay open.
#include <QRegularExpression>

#include "tests/store/RetrievalTest.h"

namespace {

const char statementFailed[] = "SQL Statement failed";

class PathRetrievalTest : public RetrievalTest {
 protected:
  // What comes back with the failures, and what is left open.
  void Check(const RetrievalFailure& failure) {
    SCOPED_TRACE(failure.name);
    SqliteCalls::Reset();
    for (const Fault& fault : failure.faults) SqliteCalls::Arm(fault);
    {
      const PathReport report = GetPath("Path 2");
      EXPECT_EQ(report == nullptr ? QStringList{"null"} : DescribedAll(report->PathData()), failure.records);
      if (report != nullptr) {
        EXPECT_EQ(report->Name(), "Path 2");
        EXPECT_EQ(report->FileName(""), "Path 2-M-Report");
      }
    }
    EXPECT_EQ(Lines(), failure.lines);
    EXPECT_EQ(SqliteCalls::FiredCount(), static_cast<int>(failure.faults.size()));
    EXPECT_EQ(SqliteCalls::OpenConnections(), failure.leakedConnections);
    EXPECT_EQ(SqliteCalls::LiveStatements(), failure.leakedStatements);
    SqliteCalls::CloseLeaked();
  }
};

TEST_P(PathRetrievalTest, GivesBackWhatWasSaved) {
  SaveSample(store_, SamplePathAlignment(2));
  EXPECT_EQ(Path("Path 2"), QStringList{Path2WithThresholds()});
}

TEST_P(PathRetrievalTest, NamesItsContainer) {
  SaveSample(store_, SamplePathAlignment(1));
  for (const QString identifier : {"Path 1", "unknown"}) {
    const PathReport report = GetPath(identifier);
    ASSERT_NE(report, nullptr);
    EXPECT_EQ(report->Name(), identifier);
    EXPECT_EQ(report->FileName(".pdf"), identifier + "-M-Report.pdf");
    ASSERT_NE(report->PathData(), nullptr);
    EXPECT_EQ(report->PathData()->size(), identifier == "unknown" ? 0 : 1);
  }
  ExpectLeftOpen(2);
}

TEST_P(PathRetrievalTest, ReadsThePathsRowsAloneInTheirOrder) {
  SaveSample(store_, SamplePathAlignment(3, "Path"));
  SaveSample(store_, SamplePathAlignment(1, "Other"));
  SaveSample(store_, SamplePathAlignment(2, "Path"));
  const QStringList records = Path("Path");
  ASSERT_EQ(records.size(), 2);
  EXPECT_EQ(records[0].section('|', 0, 0), "1");
  EXPECT_EQ(records[1].section('|', 0, 0), "3");
}

TEST_P(PathRetrievalTest, LocationIsOfThisMomentAndTheTimeIsNot) {
  SaveSample(store_, SamplePathAlignment(2));
  const QDateTime before = QDateTime::currentDateTime();
  const PathReport report = GetPath("Path 2");
  const IPathAlignmentReportData& record = *report->PathData()->at(0);
  EXPECT_LE(before, record.GetGeolocation()->FixTime());
  EXPECT_LE(record.GetGeolocation()->FixTime(), QDateTime::currentDateTime());
  EXPECT_TRUE(record.GetGeolocation()->IsValid());
  EXPECT_EQ(static_cast<int>(record.GetGeolocation()->Datum()), 0);
  EXPECT_EQ(record.GetMeasurementTime(), QDateTime::fromSecsSinceEpoch(1500000002));
  ExpectLeftOpen(1);
}

TEST_P(PathRetrievalTest, RowsThatAreNotThereReadAsNothing) {
  SaveSample(store_, SamplePathAlignment(2));
  RunSql(Main(), "DELETE FROM Orientation; DELETE FROM Geolocation; DELETE FROM Height");
  const QString options =
      Version().HasThresholdsFile() ? PathOptions("4.5,6.5", "10.5") : PathOptions("0,0", "-1");
  EXPECT_EQ(Path("Path 2"), QStringList{"1|Path 2,0,0,0|0,0,0|0,0,0|0,0,0|0,0|1500000002|" + options});
}

TEST_P(PathRetrievalTest, NullTextsAreEmpty) {
  SaveSample(store_, SamplePathAlignment(2));
  SqliteCalls::Arm(Fault("column_text", 1).Times(2));
  const QString expected = Path2WithThresholds().replace("Path 2,50.75", ",50.75").replace("'note 2'", "''");
  EXPECT_EQ(Path("Path 2"), QStringList{expected});
}

TEST_P(PathRetrievalTest, OnlyDoneEndsTheLoops) {
  SaveSample(store_, SamplePathAlignment(2));
  SqliteCalls::Arm(
      Fault("step", 0).Results({SQLITE_BUSY, SQLITE_OK, SQLITE_IOERR}).OnText("FROM PathAlignment "));
  SqliteCalls::Arm(
      Fault("step", 0).Results({SQLITE_BUSY, SQLITE_IOERR}).OnText("FROM PathAlignmentThresholds"));
  EXPECT_EQ(Path("Path 2"), QStringList{Path2WithThresholds()});
  EXPECT_EQ(SqliteCalls::FiredCount(), Version().HasThresholdsFile() ? 5 : 3);
}

TEST_P(PathRetrievalTest, AsksTheseStatementsOfTheseFiles) {
  const QString common =
      "SELECT a.PathAlignmentKey, p.PathIdentifier, a.SectorName, a.AntennaPosition, a.AzimuthOffset, "
      "t.AzimuthDegrees, t.TiltDegrees, t.RollDegrees, g.LatitudeDegreesNorth, g.LongitudeDegreesEast, "
      "g.ElevationMeters, c.LatitudeDegreesNorth, c.LongitudeDegreesEast, c.ElevationMeters, a.LinuxTimeUTC, "
      "m.AzimuthDegrees,m.TiltDegrees,m.RollDegrees, h.HeightInMeters,h.HeightType";
  const QString columns = Version().HasPathNote()        ? ", a.TiltInversionEnabled,a.Note"
                          : Version().HasTiltInversion() ? ", a.TiltInversionEnabled"
                                                         : "";
  const QString rows =
      "prepare_v2 " + common + columns +
      " FROM PathAlignment a INNER JOIN Paths p ON p.PathKey=a.PathKey AND p.PathIdentifier=? LEFT JOIN "
      "Orientation t "
      "ON t.OrientationKey=a.TargetOrientationKey LEFT JOIN Geolocation g ON g.GeolocationKey=a.LocationKey "
      "LEFT JOIN "
      "Orientation m ON m.OrientationKey=a.MeasuredOrientationKey LEFT JOIN Geolocation c ON "
      "c.GeolocationKey=a.PathLocationKey LEFT JOIN Height h ON h.HeightKey=a.SiteHeightKey = 0";
  QStringList calls = {"open_v2 " + Main() + ", 6 = 0"};
  if (Version().HasThresholdsFile()) {
    calls += QStringList{"prepare_v2 SELECT  PathKey  FROM Paths WHERE (PathIdentifier=?) = 0",
                         "open_v2 " + Thresholds() + ", 6 = 0",
                         "prepare_v2 SELECT PathAlignmentKey, PathKey, AzimuthThreshold, TiltThreshold, "
                         "PathLengthThreshold  FROM PathAlignmentThresholds WHERE (PathKey = ?) = 0",
                         "close " + Thresholds() + " = 5"};
  }
  calls += QStringList{rows, "close " + Main() + " = 5"};
  SqliteCalls::Record();
  EXPECT_EQ(Path("Path"), QStringList());
  EXPECT_EQ(SqliteCalls::TakeTrace().filter(QRegularExpression("^(open|prepare|close)")), calls);
  EXPECT_EQ(QFile::exists(Thresholds()), Version().HasThresholdsFile());
}

INSTANTIATE_FOR_ALL_VERSIONS(PathRetrievalTest);

class PathFlagTest : public PathRetrievalTest {};

TEST_P(PathFlagTest, IsOnAboveZero) {
  SaveSample(store_, SamplePathAlignment(2));
  for (const int value : {-1, 0, 1, 2}) {
    RunSql(Main(), QStringLiteral("UPDATE PathAlignment SET TiltInversionEnabled = %1").arg(value));
    const QString expected = Path2WithThresholds().replace("inverted", value > 0 ? "inverted" : "upright");
    EXPECT_EQ(Path("Path 2"), QStringList{expected}) << value;
  }
}

INSTANTIATE_TEST_SUITE_P(FromThree, PathFlagTest,
                         testing::ValuesIn(StoreVersion::All().begin() + 2, StoreVersion::All().end()),
                         StoreVersionName);

// Faults that the failures below are put together from.
const Fault mainOpen = Fault("open_v2", SQLITE_CANTOPEN).OnFile("main.sqlite");
const Fault rowsPrepare = Fault("prepare_v2", SQLITE_BUSY).OnText("FROM PathAlignment ");
const Fault rowsBind = Fault("bind_text", SQLITE_NOMEM).OnText("FROM PathAlignment ");
const Fault thresholdsOpen = Fault("open_v2", SQLITE_CANTOPEN).OnFile("thresholds.sqlite");
const Fault thresholdsPrepare = Fault("prepare_v2", SQLITE_BUSY).OnText("FROM PathAlignmentThresholds");
const Fault thresholdsBind = Fault("bind_int64", SQLITE_NOMEM).OnText("FROM PathAlignmentThresholds");
const Fault lookUpPrepare = Fault("prepare_v2", SQLITE_BUSY).OnText("FROM Paths WHERE");
const Fault lookUpBind = Fault("bind_text", SQLITE_NOMEM).OnText("FROM Paths WHERE");

const char rowsNotPrepared[] = "SQL prepare  Fetch Report Data for Path  failed with  5 : database is locked";
const char thresholdsNotPrepared[] =
    "SQL prepare  Fetch Threshold Report Data for Path  failed with  5 : database is locked";

// Without a thresholds phase there is no vector yet, so every failure gives null.
class EarlierPathFailuresTest : public PathRetrievalTest {};

TEST_P(EarlierPathFailuresTest, GiveNull) {
  SaveSample(store_, SamplePathAlignment(2));
  Check({"open", {mainOpen}, {cannotOpen}, {"null"}});
  Check({"prepare", {rowsPrepare}, {rowsNotPrepared, statementFailed}, {"null"}});
  Check({"bind", {rowsBind}, {bindFailed, refusedClose}, {"null"}, 1, 1});
}

INSTANTIATE_TEST_SUITE_P(Earlier, EarlierPathFailuresTest,
                         testing::ValuesIn(StoreVersion::All().begin(), StoreVersion::All().end() - 1),
                         StoreVersionName);

class CurrentPathFailuresTest : public PathRetrievalTest {};

TEST_P(CurrentPathFailuresTest, OfTheMainFileGiveTheVectorOfTheThresholds) {
  SaveSample(store_, SamplePathAlignment(2));
  Check({"open", {mainOpen}, {cannotOpen, refusedClose}, {}, 1, 1});
  Check({"prepare", {rowsPrepare}, {refusedClose, rowsNotPrepared, statementFailed}, {}, 1, 1});
  Check({"bind", {rowsBind}, {refusedClose, bindFailed, refusedClose}, {}, 2, 2});
}

TEST_P(CurrentPathFailuresTest, OfBothFilesGiveNull) {
  SaveSample(store_, SamplePathAlignment(2));
  Check({"both opens", {mainOpen, thresholdsOpen}, {cannotOpen, cannotOpen}, {"null"}});
  Check({"open and prepare",
         {mainOpen, thresholdsPrepare},
         {cannotOpen, thresholdsNotPrepared, statementFailed},
         {"null"}});
  Check(
      {"open and bind", {mainOpen, thresholdsBind}, {cannotOpen, bindFailed, refusedClose}, {"null"}, 1, 1});
  Check({"prepare and open",
         {rowsPrepare, thresholdsOpen},
         {cannotOpen, rowsNotPrepared, statementFailed},
         {"null"}});
  Check({"bind and prepare",
         {rowsBind, thresholdsPrepare},
         {thresholdsNotPrepared, statementFailed, bindFailed, refusedClose},
         {"null"},
         1,
         1});
}

TEST_P(CurrentPathFailuresTest, OfTheThresholdsGiveTheirDefaults) {
  SaveSample(store_, SamplePathAlignment(2));
  const QStringList rows = {Path2("0,0", "-1")};
  Check({"open", {thresholdsOpen}, {cannotOpen, refusedClose}, rows, 1, 1});
  Check({"prepare", {thresholdsPrepare}, {thresholdsNotPrepared, statementFailed, refusedClose}, rows, 1, 1});
  Check({"bind", {thresholdsBind}, {bindFailed, refusedClose, refusedClose}, rows, 2, 2});
  Check({"look-up prepare",
         {lookUpPrepare},
         {"SQL prepare  Select PathKey for Path Identifier  failed with  5 : database is locked",
          refusedClose, refusedClose},
         rows,
         2,
         2});
  Check({"look-up bind", {lookUpBind}, {bindFailed, refusedClose, refusedClose}, rows, 2, 2});
}

TEST_P(CurrentPathFailuresTest, MissingTablesGiveTheDefaults) {
  SaveSample(store_, SamplePathAlignment(2));
  QFile::remove(Thresholds());
  Check({"missing",
         {},
         {"SQL prepare  Fetch Threshold Report Data for Path  failed with  1 : no such table: "
          "PathAlignmentThresholds",
          statementFailed, refusedClose},
         {Path2("0,0", "-1")},
         1,
         1});
}

TEST_P(CurrentPathFailuresTest, ThresholdsAreFoundByTheAlignmentsKey) {
  SaveSample(store_, SamplePathAlignment(2));
  const struct {
    const char* rows;
    QString record;
  } cases[] = {{"(-1, 1, 1, 2, 3)", Path2("0,0", "-1")},
               {"(2, 1, 1, 2, 3)", Path2("0,0", "-1")},
               {"(1, 2, 1, 2, 3)", Path2("0,0", "-1")},
               {"(1, 1, 1, NULL, NULL)", Path2("1,0", "0")},
               {"(1, 1, 1, 2, 3), (1, 1, 4, 5, 6)", Path2("4,5", "6")},
               {"(4294967297, 1, 1, 2, 3)", Path2("1,2", "3")}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.rows);
    RunSql(Thresholds(), QStringLiteral("DELETE FROM PathAlignmentThresholds;"
                                        "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey, "
                                        "AzimuthThreshold, TiltThreshold, PathLengthThreshold) VALUES ") +
                             one.rows);
    Check({"", {}, {refusedClose, refusedClose}, {one.record}, 2, 2});
  }
}

// The key under which thresholds are looked for: the path's, 0 for one that is unknown or was not looked up,
// -1 if the look-up failed.
TEST_P(CurrentPathFailuresTest, ThresholdsAreAskedForByThePathsKey) {
  SaveSample(store_, SamplePathAlignment(1));
  SaveSample(store_, SamplePathAlignment(2));
  const struct {
    const char* identifier;
    std::vector<Fault> faults;
    const char* bound;
  } cases[] = {{"Path 2", {}, "1, 2"},
               {"unknown", {}, "1, 0"},
               {"Path 2", {lookUpPrepare}, "1, -1"},
               {"Path 2", {mainOpen}, "1, 0"}};
  for (const auto& one : cases) {
    SqliteCalls::Reset();
    for (const Fault& fault : one.faults) SqliteCalls::Arm(fault);
    SqliteCalls::Record();
    GetPath(one.identifier);
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("bind_int64").value(0).section(" = ", 0, 0),
              QStringLiteral("bind_int64 ") + one.bound);
    SqliteCalls::CloseLeaked();
  }
  EXPECT_EQ(Lines().size(), 2 + 2 + 3 + 2);
}

INSTANTIATE_TEST_SUITE_P(Current, CurrentPathFailuresTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

}  // namespace
