// What a save writes, and the record that it returns.
#include <QRegularExpression>

#include "tests/store/SavedRows.h"
#include "tests/support/SqliteCalls.h"

namespace {

class SavingTest : public CreatedStoreTest {
 protected:
  // Makes the next keys of all tables differ. Location 101 is given a namesake: the far end of a path was
  // declared to be an orientation at first.
  void SpreadKeys() {
    RunSql(Main(),
           "INSERT INTO sqlite_sequence VALUES ('Sites', 10), ('Paths', 20), ('Orientation', 200), "
           "('Geolocation', 100), ('Height', 300), ('AntennaAlignment', 400), ('PathAlignment', 500);"
           "INSERT INTO Orientation VALUES (101, 0, 0, 0)");
    if (Version().HasThresholdsFile()) {
      RunSql(Thresholds(),
             "INSERT INTO sqlite_sequence VALUES ('AntennaAlignmentThresholds', 600), "
             "('PathAlignmentThresholds', 700)");
    }
  }

  QStringList ThresholdRows() const {
    return Version().HasThresholdsFile() ? SavedRows(Thresholds()) : QStringList();
  }
  static QStringList IfThresholds(const QStringList& rows) {
    return Version().HasThresholdsFile() ? rows : QStringList();
  }

  // What one save does to files and transactions.
  QStringList FileCallsOfSave(const QStringList& trace) const {
    return trace.filter(QRegularExpression("^(open_v2|close|exec (BEGIN|END|ROLLBACK))"));
  }
  QStringList ExpectedFileCalls() const {
    QStringList calls;
    for (const QString& path : QStringList{Main()} + IfThresholds({Thresholds()})) {
      calls += QStringList{"open_v2 " + path + ", 6 = 0", "exec BEGIN TRANSACTION; = 0",
                           "exec END TRANSACTION; = 0", "close " + path + " = 0"};
    }
    return calls;
  }
};

TEST_P(SavingTest, WritesASiteAlignment) {
  SpreadKeys();
  SaveSample(store_, SampleSiteAlignment(2));
  EXPECT_EQ(
      SavedRows(Main()),
      (QStringList{"AntennaAlignment|401|401|11|'Sector 2'|'Position 2'|2.375|201|101|1500000002|202|301" +
                       SiteColumnsOfSample2(Version()),
                   "Geolocation|101|101|53.5|-2.125|37.25", "Height|301|301|24.5|3",
                   "Orientation|101|101|0.0|0.0|0.0", "Orientation|201|201|92.5|-7.75|5.125",
                   "Orientation|202|202|122.5|-5.25|3.75", "Sites|11|11|'Site 2'"}));
  EXPECT_EQ(ThresholdRows(), IfThresholds({"AntennaAlignmentThresholds|601|601|401|11|4.5|6.5|8.5"}));
  EXPECT_EQ(ForeignKeyCheck(Main()), QStringList());
}

TEST_P(SavingTest, WritesAPathAlignment) {
  SpreadKeys();
  SaveSample(store_, SamplePathAlignment(2));
  EXPECT_EQ(SavedRows(Main()),
            (QStringList{"Geolocation|101|101|50.75|13.625|521.5", "Geolocation|102|102|53.5|-2.125|37.25",
                         "Height|301|301|24.5|3", "Orientation|101|101|0.0|0.0|0.0",
                         "Orientation|201|201|202.25|-9.5|7.875", "Orientation|202|202|122.5|-5.25|3.75",
                         "PathAlignment|501|501|21|'ZZZ'|'ZZZ'|2.375|101|201|102|1500000002|202|301" +
                             PathColumnsOfSample2(Version()),
                         "Paths|21|21|'Path 2'"}));
  EXPECT_EQ(ThresholdRows(), IfThresholds({"PathAlignmentThresholds|701|701|501|21|4.5|6.5|10.5"}));
  EXPECT_EQ(ForeignKeyCheck(Main()), QStringList());
}

TEST_P(SavingTest, TiltInversionIsAFlag) {
  if (!Version().HasTiltInversion()) {
    EXPECT_EQ(
        Rows(Main(), "SELECT COUNT(*) FROM pragma_table_info('AntennaAlignment') WHERE name LIKE 'Tilt%'"),
        QStringList{"0"});
    return;
  }
  for (const int number : {1, 2}) {
    SaveSample(store_, SampleSiteAlignment(number));
    SaveSample(store_, SamplePathAlignment(number));
  }
  EXPECT_EQ(Rows(Main(), "SELECT TiltInversionEnabled FROM AntennaAlignment"), (QStringList{"0", "1"}));
  EXPECT_EQ(Rows(Main(), "SELECT TiltInversionEnabled FROM PathAlignment"), (QStringList{"0", "1"}));
}

TEST_P(SavingTest, ASecondSaveReusesTheSite) {
  SaveSample(store_, SampleSiteAlignment(1, "Site", "A"));
  SaveSample(store_, SampleSiteAlignment(2, "Site", "B"));
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Sites"), QStringList{"1|'Site'"});
  EXPECT_EQ(Rows(Main(),
                 "SELECT SiteKey, TargetOrientationKey, MeasuredOrientationKey, LocationKey, "
                 "SiteHeightKey FROM AntennaAlignment"),
            (QStringList{"1|1|2|1|1", "1|3|4|2|2"}));
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM Orientation"), QStringList{"4"});
  EXPECT_EQ(ThresholdRows(), IfThresholds({"AntennaAlignmentThresholds|1|1|1|1|3.5|5.5|7.5",
                                           "AntennaAlignmentThresholds|2|2|2|1|4.5|6.5|8.5"}));
}

TEST_P(SavingTest, ASecondSaveReusesThePathButNotItsFarEnd) {
  SaveSample(store_, SamplePathAlignment(1, "Path"));
  SaveSample(store_, SamplePathAlignment(1, "Path"));
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Paths"), QStringList{"1|'Path'"});
  EXPECT_EQ(Rows(Main(), "SELECT PathKey, PathLocationKey, LocationKey FROM PathAlignment"),
            (QStringList{"1|1|2", "1|3|4"}));
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM Geolocation"), QStringList{"4"});
}

TEST_P(SavingTest, AnswersARecordThatBorrowsTheCallersObjects) {
  SpreadKeys();
  SampleSiteAlignment site(2);
  SamplePathAlignment path(2);
  const std::unique_ptr<IPathAlignmentReportData> pathRecord(path.Save(store_.get()));
  const std::unique_ptr<IAntennaAlignmentReportData> siteRecord(site.Save(store_.get()));
  ASSERT_TRUE(siteRecord && pathRecord);
  EXPECT_EQ(siteRecord->AntennaAlignmentKey(), 401U);
  EXPECT_EQ(siteRecord->GetSiteInformation(), &site.site);
  EXPECT_EQ(siteRecord->GetGeolocation(), &site.location);
  EXPECT_EQ(siteRecord->GetMeasuredOrientation(), &site.measured);
  EXPECT_EQ(siteRecord->GetHeight(), &site.height);
  EXPECT_EQ(siteRecord->GetMeasurementTime(), site.time);
  EXPECT_EQ(siteRecord->GetMeasurementOptions(), &site.options);

  EXPECT_EQ(pathRecord->PathAlignmentKey(), 501U);
  EXPECT_EQ(pathRecord->GetPathInformation(), &path.path);
  EXPECT_EQ(pathRecord->GetGeolocation(), &path.location);
  EXPECT_EQ(pathRecord->GetMeasuredOrientation(), &path.measured);
  EXPECT_EQ(pathRecord->GetHeight(), &path.height);
  EXPECT_EQ(pathRecord->GetTargetOrientation(), &path.target);
  EXPECT_EQ(pathRecord->GetMeasurementTime(), path.time);
  EXPECT_EQ(pathRecord->GetMeasurementOptions(), &path.options);
}

TEST_P(SavingTest, FinishesTheMainFileBeforeTheThresholds) {
  SqliteCalls::Record();
  SaveSample(store_, SampleSiteAlignment(1));
  EXPECT_EQ(FileCallsOfSave(SqliteCalls::TakeTrace()), ExpectedFileCalls());
  SaveSample(store_, SamplePathAlignment(1));
  EXPECT_EQ(FileCallsOfSave(SqliteCalls::TakeTrace()), ExpectedFileCalls());
}

QStringList Prepared(QStringList statements) {
  for (QString& statement : statements) statement = "prepare_v2 " + statement + " = 0";
  return statements;
}

const char orientation[] = "INSERT INTO Orientation (AzimuthDegrees,TiltDegrees,RollDegrees) VALUES (?,?,?)";
const char geolocation[] =
    "INSERT INTO Geolocation (LatitudeDegreesNorth,LongitudeDegreesEast,ElevationMeters) VALUES (?,?,?)";
const char height[] = "INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?)";

TEST_P(SavingTest, PreparesTheStatementsOfASite) {
  const QString common =
      "INSERT INTO AntennaAlignment (SiteKey, SectorName, AntennaPosition, AzimuthOffsetDegrees, "
      "TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey";
  const char* const ends[] = {" ) VALUES (?,?,?,?,?,?,?,?,?)",
                              " ) VALUES (?,?,?,?,?,?,?,?,?)",
                              ", TiltInversionEnabled) VALUES (?,?,?,?,?,?,?,?,?,?)",
                              ", TiltInversionEnabled,Note) VALUES (?,?,?,?,?,?,?,?,?,?,?)",
                              ", TiltInversionEnabled,Note,RollPrecision) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)",
                              ", TiltInversionEnabled,Note,RollPrecision) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)",
                              ", TiltInversionEnabled,Note,RollPrecision) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)"};
  SqliteCalls::Record();
  SaveSample(store_, SampleSiteAlignment(1));
  QStringList statements = {"SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?)",
                            "INSERT INTO Sites (SiteIdentifier) VALUES (?)",
                            orientation,
                            orientation,
                            geolocation,
                            height,
                            common + ends[Version().number - 1]};
  statements +=
      IfThresholds({"INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, "
                    "AzimuthThreshold, TiltThreshold, RollThreshold) VALUES (?,?,?,?,?)"});
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("prepare_v2"), Prepared(statements));
}

TEST_P(SavingTest, PreparesTheStatementsOfAPath) {
  const QString common =
      "INSERT INTO PathAlignment (PathKey, SectorName, AntennaPosition, AzimuthOffset, PathLocationKey, "
      "TargetOrientationKey, LocationKey, LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey";
  const QString end =
      Version().HasPathNote()        ? ", TiltInversionEnabled, Note ) VALUES (?,?,?,?,?,?,?,?,?,?,?,?) "
      : Version().HasTiltInversion() ? ", TiltInversionEnabled ) VALUES (?,?,?,?,?,?,?,?,?,?,?) "
                                     : " ) VALUES (?,?,?,?,?,?,?,?,?,?) ";
  SqliteCalls::Record();
  SaveSample(store_, SamplePathAlignment(1));
  QStringList statements = {"SELECT  PathKey  FROM Paths WHERE (PathIdentifier=?)",
                            "INSERT INTO Paths (PathIdentifier) VALUES (?)",
                            geolocation,
                            orientation,
                            orientation,
                            geolocation,
                            height,
                            common + end};
  statements +=
      IfThresholds({"INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey, AzimuthThreshold, "
                    "TiltThreshold, PathLengthThreshold ) VALUES (?,?,?,?,?) "});
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("prepare_v2"), Prepared(statements));
}

// Until version 2 the far end is declared to be an orientation.
TEST_P(SavingTest, TheFarEndNeedsAnOrientationOfItsKeyInTheFirstVersions) {
  SpreadKeys();
  RunSql(Main(), "DELETE FROM Orientation");
  SamplePathAlignment path(2);
  const std::unique_ptr<IPathAlignmentReportData> record(path.Save(store_.get()));
  if (Version().number < 3) {
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(SavedRows(Main()), QStringList());
    EXPECT_EQ(Lines(), QStringList{"SQL last step failed with  19 : FOREIGN KEY constraint failed"});
  } else {
    EXPECT_NE(record, nullptr);
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(SavingTest);

}  // namespace
