// Reading the alignments of a site.
#include <QRegularExpression>
#include <cmath>
#include <limits>

#include "tests/store/RetrievalTest.h"
#include "tests/support/LocalEncoding.h"

namespace {

class SiteRetrievalTest : public RetrievalTest {
 protected:
  // Saves sample 2, and changes its row.
  void SaveChanged(const QString& changes) {
    SaveSample(store_, SampleSiteAlignment(2));
    RunSql(Main(), changes);
  }
};

TEST_P(SiteRetrievalTest, GivesBackWhatWasSaved) {
  SaveSample(store_, SampleSiteAlignment(2));
  EXPECT_EQ(Site("Site 2"), QStringList{Site2WithThresholds()});
}

TEST_P(SiteRetrievalTest, NamesItsContainer) {
  SaveSample(store_, SampleSiteAlignment(1));
  for (const QString identifier : {"Site 1", "unknown"}) {
    QString given = identifier;
    const SiteReport report(store_->GetAlignmentReportDataForSite(given));
    ASSERT_NE(report, nullptr);
    EXPECT_EQ(given, identifier);
    EXPECT_EQ(report->Name(), identifier);
    EXPECT_EQ(report->FileName(".pdf"), identifier + "-A-Report.pdf");
    EXPECT_EQ(report->AlignmentData()->size(), identifier == "unknown" ? 0 : 1);
  }
}

TEST_P(SiteRetrievalTest, ReadsTheSitesRowsAloneSortedBySector) {
  SaveSample(store_, SampleSiteAlignment(1, "Site", "b"));
  SaveSample(store_, SampleSiteAlignment(2, "Site", "A"));
  SaveSample(store_, SampleSiteAlignment(3, "Other", "a"));
  SaveSample(store_, SampleSiteAlignment(4, "site", "a"));
  const SiteReport report = GetSite("Site");
  ASSERT_EQ(report->AlignmentData()->size(), 2);
  EXPECT_EQ(report->AlignmentData()->at(0)->AntennaAlignmentKey(), 2U);
  EXPECT_EQ(report->AlignmentData()->at(1)->AntennaAlignmentKey(), 1U);
}

TEST_P(SiteRetrievalTest, LocationsAreOfThisMoment) {
  SaveSample(store_, SampleSiteAlignment(2));
  const QDateTime before = QDateTime::currentDateTime();
  const SiteReport report = GetSite("Site 2");
  const IGeolocation& location = *report->AlignmentData()->at(0)->GetGeolocation();
  EXPECT_LE(before, location.FixTime());
  EXPECT_LE(location.FixTime(), QDateTime::currentDateTime());
  EXPECT_TRUE(location.IsValid());
  EXPECT_EQ(static_cast<int>(location.Datum()), 0);
}

// That of each record, not that of the first one.
TEST_P(SiteRetrievalTest, TheMomentIsThatOfEachRecord) {
  SaveSample(store_, SampleSiteAlignment(1, "Site", "a"));
  SaveSample(store_, SampleSiteAlignment(2, "Site", "b"));
  qint64 first = 0;
  qint64 second = 0;
  SqliteCalls::Reset();
  // The second row comes after the clock has moved on.
  SqliteCalls::Arm(Fault::Before("step",
                                 [&] {
                                   first = QDateTime::currentMSecsSinceEpoch();
                                   do {
                                     second = QDateTime::currentMSecsSinceEpoch();
                                   } while (second <= first);
                                 })
                       .OnText("FROM AntennaAlignment a")
                       .At(2));
  const SiteReport report = GetSite("Site");
  EXPECT_EQ(SqliteCalls::Count("step"), Version().HasThresholdsFile() ? 1 + 3 + 3 : 3);
  ASSERT_EQ(report->AlignmentData()->size(), 2);
  const auto fixTime = [&](int index) {
    return report->AlignmentData()->at(index)->GetGeolocation()->FixTime().toMSecsSinceEpoch();
  };
  EXPECT_LE(fixTime(0), first);
  EXPECT_LT(first, second);
  EXPECT_GE(fixTime(1), second);
}

TEST_P(SiteRetrievalTest, RowsThatAreNotThereReadAsNothing) {
  SaveChanged("DELETE FROM Orientation; DELETE FROM Geolocation; DELETE FROM Height");
  EXPECT_EQ(Site("Site 2"),
            QStringList{"1|Site 2,Sector 2,Position 2|0,0,0|0,0,0|0,0,0|0,0|1500000002|" +
                        SiteOptions(Version().HasThresholdsFile() ? "4.5,6.5,8.5" : "0,0,0")});
}

TEST_P(SiteRetrievalTest, NullTextsAreEmpty) {
  SaveSample(store_, SampleSiteAlignment(2));
  SqliteCalls::Arm(Fault("column_text", 1).Times(4));
  const QString expected =
      Site2WithThresholds().replace("Site 2,Sector 2,Position 2", ",,").replace("'note 2'", "''");
  EXPECT_EQ(Site("Site 2"), QStringList{expected});
}

TEST_P(SiteRetrievalTest, TimesAbove31BitsComeBack) {
  SaveChanged("UPDATE AntennaAlignment SET LinuxTimeUTC = -2147483648");
  const SiteReport report = GetSite("Site 2");
  const QDateTime time = report->AlignmentData()->at(0)->GetMeasurementTime();
  EXPECT_EQ(time.toSecsSinceEpoch(), 2147483648);
  EXPECT_EQ(time.timeSpec(), Qt::LocalTime);
}

TEST_P(SiteRetrievalTest, NumbersKeepTheirValue) {
  // 2 to the power of 53, 19 times: digits of so large a number would be read differently by engines with a
  // long double and by those without.
  const QString large = QString("9007199254740992.0 * ").repeated(18) + "9007199254740992.0";
  SaveChanged(
      "UPDATE Geolocation SET LatitudeDegreesNorth = 0.1, LongitudeDegreesEast = 9e999;"
      "UPDATE Height SET HeightInMeters = " +
      large +
      ", HeightType = -2147483648;"
      "UPDATE Orientation SET AzimuthDegrees = 0.1, TiltDegrees = 1e300");
  const SiteReport report = GetSite("Site 2");
  const IAntennaAlignmentReportData& record = *report->AlignmentData()->at(0);
  EXPECT_EQ(record.GetGeolocation()->LatitudeDegreesNorth(), 0.1);
  EXPECT_EQ(record.GetGeolocation()->LongitudeDegreesEast(), std::numeric_limits<double>::infinity());
  EXPECT_EQ(record.GetHeight()->HeightInMeters(nullptr), std::ldexp(1.0, 19 * 53));
  EXPECT_EQ(static_cast<int>(record.GetHeight()->HeightType()), std::numeric_limits<int>::min());
  EXPECT_EQ(record.GetMeasuredOrientation()->AzimuthDegrees(), 0.1F);
}

TEST_P(SiteRetrievalTest, IdentifiersAreAskedForInTheLocalEncodingAndReadAsUtf8) {
  const LocalEncoding utf8("UTF-8");
  const QString text = QString::fromUtf8("\u0141\u00f3d\u017a \u5317 'x\"");
  SaveSample(store_, SampleSiteAlignment(2, text, text));
  const SiteReport report = GetSite(text);
  EXPECT_EQ(report->AlignmentData()->size(), 1);
  EXPECT_EQ(report->Name(), text);
  EXPECT_EQ(report->AlignmentData()->value(0)->GetSiteInformation()->SectorName(), text);
  const LocalEncoding latin1("ISO-8859-1");
  EXPECT_EQ(Site(text).isEmpty(), LocalEncoding::varies);
}

TEST_P(SiteRetrievalTest, OnlyDoneEndsTheLoops) {
  SaveSample(store_, SampleSiteAlignment(2));
  SqliteCalls::Arm(
      Fault("step", 0).Results({SQLITE_BUSY, SQLITE_OK, SQLITE_IOERR}).OnText("FROM AntennaAlignment "));
  SqliteCalls::Arm(
      Fault("step", 0).Results({SQLITE_BUSY, SQLITE_IOERR}).OnText("FROM AntennaAlignmentThresholds"));
  EXPECT_EQ(Site("Site 2"), QStringList{Site2WithThresholds()});
  EXPECT_EQ(SqliteCalls::FiredCount(), Version().HasThresholdsFile() ? 5 : 3);
}

TEST_P(SiteRetrievalTest, AsksTheseStatementsOfTheseFiles) {
  const QString common =
      "SELECT a.AntennaAlignmentKey, s.SiteIdentifier, a.SectorName, a.AntennaPosition, "
      "a.AzimuthOffsetDegrees, "
      "t.AzimuthDegrees, t.TiltDegrees, t.RollDegrees, g.LatitudeDegreesNorth, g.LongitudeDegreesEast, "
      "g.ElevationMeters, a.LinuxTimeUTC, "
      "m.AzimuthDegrees,m.TiltDegrees,m.RollDegrees,h.HeightInMeters,h.HeightType";
  const QString tilt = ", a.TiltInversionEnabled";
  const QString columns[] = {"",
                             "",
                             tilt,
                             tilt + ",a.Note",
                             tilt + ",a.Note, a.RollPrecision",
                             tilt + ",a.Note, a.RollPrecision",
                             tilt + ",a.Note, a.RollPrecision"};
  const QString rows =
      "prepare_v2 " + common + columns[Version().number - 1] +
      " FROM AntennaAlignment a INNER JOIN Sites s ON s.SiteKey=a.SiteKey AND s.SiteIdentifier=? LEFT JOIN "
      "Orientation t ON t.OrientationKey=a.TargetOrientationKey LEFT JOIN Geolocation g ON "
      "g.GeolocationKey=a.LocationKey LEFT JOIN Orientation m ON m.OrientationKey=a.MeasuredOrientationKey "
      "LEFT JOIN "
      "Height h ON h.HeightKey=a.SiteHeightKey  = 0";
  QStringList calls = {"open_v2 " + Main() + ", 6 = 0"};
  if (Version().HasThresholdsFile()) {
    calls +=
        QStringList{"prepare_v2 SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?) = 0",
                    "open_v2 " + Thresholds() + ", 6 = 0",
                    "prepare_v2 SELECT AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold, TiltThreshold, "
                    "RollThreshold FROM AntennaAlignmentThresholds WHERE (SiteIdentifier = ?) = 0",
                    "close " + Thresholds() + " = 0"};
  }
  calls += QStringList{rows, "close " + Main() + " = 0"};
  SqliteCalls::Record();
  EXPECT_EQ(Site("Site"), QStringList());
  EXPECT_EQ(SqliteCalls::TakeTrace().filter(QRegularExpression("^(open|prepare|close)")), calls);
  EXPECT_EQ(QFile::exists(Thresholds()), Version().HasThresholdsFile());
}

TEST_P(SiteRetrievalTest, FailsWithTheMainFile) {
  SaveSample(store_, SampleSiteAlignment(2));
  const RetrievalFailure failures[] = {
      {"open", {Fault("open_v2", SQLITE_CANTOPEN).OnFile("main.sqlite")}, {cannotOpen}, {"null"}},
      {"prepare",
       {Fault("prepare_v2", SQLITE_BUSY).OnText("FROM AntennaAlignment ")},
       {"SQL prepare  Fetch Report Data for Site  failed with  5 : database is locked"},
       {"null"}},
      {"bind", {Fault("bind_text", SQLITE_NOMEM).OnText("FROM AntennaAlignment ")}, {bindFailed}, {"null"}},
  };
  for (const RetrievalFailure& failure : failures) {
    SCOPED_TRACE(failure.name);
    SqliteCalls::Reset();
    for (const Fault& fault : failure.faults) SqliteCalls::Arm(fault);
    EXPECT_EQ(Site("Site 2"), failure.records);
    EXPECT_EQ(Lines(), failure.lines);
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(SiteRetrievalTest);

// Tilt inversion is on above 0.
class SiteFlagTest : public SiteRetrievalTest {};

TEST_P(SiteFlagTest, IsOnAboveZero) {
  SaveSample(store_, SampleSiteAlignment(2));
  for (const int value : {-2147483647, -1, 0, 1, 2, 2147483647}) {
    RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET TiltInversionEnabled = %1").arg(value));
    const SiteReport report = GetSite("Site 2");
    EXPECT_EQ(report->AlignmentData()->at(0)->GetMeasurementOptions()->TiltInversionEnabled(), value > 0)
        << value;
  }
}

INSTANTIATE_TEST_SUITE_P(FromThree, SiteFlagTest,
                         testing::ValuesIn(StoreVersion::All().begin() + 2, StoreVersion::All().end()),
                         StoreVersionName);

class SiteThresholdsTest : public SiteRetrievalTest {
 protected:
  // Sample 2 with these threshold rows instead of its own.
  QStringList With(const QString& rows) {
    RunSql(Thresholds(), "DELETE FROM AntennaAlignmentThresholds");
    if (!rows.isEmpty()) {
      RunSql(Thresholds(),
             "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, "
             "AzimuthThreshold, TiltThreshold, RollThreshold) VALUES " +
                 rows);
    }
    return Site("Site 2");
  }
};

TEST_P(SiteThresholdsTest, AreFoundByTheAlignmentsKey) {
  SaveSample(store_, SampleSiteAlignment(2));
  EXPECT_EQ(With(""), QStringList{Site2("0,0,0")});
  EXPECT_EQ(With("(-1, 1, 1, 2, 3)"), QStringList{Site2("0,0,0")});
  EXPECT_EQ(With("(2, 1, 1, 2, 3)"), QStringList{Site2("0,0,0")});
  EXPECT_EQ(With("(1, 2, 1, 2, 3)"), QStringList{Site2("0,0,0")}) << "of another site";
  EXPECT_EQ(With("(1, 1, NULL, 2, NULL)"), QStringList{Site2("0,2,0")});
  EXPECT_EQ(With("(1, 1, 1, 2, 3), (1, 1, 4, 5, 6)"), QStringList{Site2("4,5,6")}) << "the later row";
  EXPECT_EQ(With("(4294967297, 1, 1, 2, 3)"), QStringList{Site2("1,2,3")}) << "the low 32 bits";
}

TEST_P(SiteThresholdsTest, AreAskedForByTheSitesKey) {
  SaveSample(store_, SampleSiteAlignment(1));
  SaveSample(store_, SampleSiteAlignment(2));
  const struct {
    const char* identifier;
    int faults;
    const char* bound;
  } cases[] = {{"Site 2", 0, "1, 2"}, {"unknown", 0, "1, 0"}, {"Site 2", 1, "1, -1"}};
  for (const auto& one : cases) {
    SqliteCalls::Arm(Fault("prepare_v2", SQLITE_BUSY).OnText("FROM Sites WHERE").Times(one.faults));
    SqliteCalls::Record();
    Site(one.identifier);
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("bind_int64").value(0).section(" = ", 0, 0),
              QStringLiteral("bind_int64 ") + one.bound);
  }
  EXPECT_EQ(
      Lines(),
      QStringList{"SQL prepare  Select SiteKey for Site Identifier  failed with  5 : database is locked"});
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("open_v2", SQLITE_CANTOPEN).OnFile("main.sqlite"));
  SqliteCalls::Record();
  EXPECT_EQ(Site("Site 2"), QStringList{"null"});
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("bind_int64").value(0).section(" = ", 0, 0), "bind_int64 1, 0");
  EXPECT_EQ(Lines(), QStringList{cannotOpen});
}

TEST_P(SiteThresholdsTest, FailingDoesNotKeepTheRowsBack) {
  SaveSample(store_, SampleSiteAlignment(2));
  const RetrievalFailure failures[] = {
      {"open", {Fault("open_v2", SQLITE_CANTOPEN).OnFile("thresholds.sqlite")}, {cannotOpen}, {}},
      {"prepare",
       {Fault("prepare_v2", SQLITE_BUSY).OnText("Thresholds")},
       {"SQL prepare  Fetch Threshold Report Data for Site  failed with  5 : database is locked"},
       {}},
      {"bind", {Fault("bind_int64", SQLITE_NOMEM).OnText("Thresholds")}, {bindFailed}, {}},
      {"look-up bind", {Fault("bind_text", SQLITE_NOMEM).OnText("FROM Sites WHERE")}, {bindFailed}, {}},
  };
  for (const RetrievalFailure& failure : failures) {
    SCOPED_TRACE(failure.name);
    SqliteCalls::Arm(failure.faults[0]);
    EXPECT_EQ(Site("Site 2"), QStringList{Site2("0,0,0")});
    EXPECT_EQ(Lines(), failure.lines);
  }
  EXPECT_EQ(SqliteCalls::FiredCount(), 4);
}

TEST_P(SiteThresholdsTest, MissingTablesGiveTheDefaults) {
  SaveSample(store_, SampleSiteAlignment(2));
  QFile::remove(Thresholds());
  EXPECT_EQ(Site("Site 2"), QStringList{Site2("0,0,0")});
  EXPECT_EQ(Lines(),
            QStringList{"SQL prepare  Fetch Threshold Report Data for Site  failed with  1 : no such table: "
                        "AntennaAlignmentThresholds"});
}

INSTANTIATE_TEST_SUITE_P(Current, SiteThresholdsTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

}  // namespace
