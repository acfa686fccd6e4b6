// What saves make of the objects that they are given: nulls, the order of accesses, unusual texts, numbers
// and times.
#include <limits>

#include "tests/store/AskedRecords.h"
#include "tests/store/SavedRows.h"
#include "tests/support/LocalEncoding.h"
#include "tests/support/SqliteCalls.h"

namespace {

constexpr unsigned int noKey = 4294967295U;

class SavedArgumentsTest : public CreatedStoreTest {
 protected:
  using SiteRecord = std::unique_ptr<IAntennaAlignmentReportData>;
  using PathRecord = std::unique_ptr<IPathAlignmentReportData>;

  SiteRecord SaveSite(ISiteInformation* site, IGeolocation* location, IOrientation* measured,
                      IHeight* height) {
    return SiteRecord(
        store_->SaveAlignmentReportData(site, location, measured, height, site_.time, &site_.options));
  }
  PathRecord SavePath(IPathInformation* path, IGeolocation* location, IOrientation* target,
                      IOrientation* measured, IHeight* height) {
    return PathRecord(
        store_->SavePathReportData(path, location, target, measured, height, path_.time, &path_.options));
  }
  SiteRecord SaveSiteWith(MeasurementOptions options) {
    return SiteRecord(store_->SaveAlignmentReportData(&site_.site, &site_.location, &site_.measured,
                                                      &site_.height, site_.time, &options));
  }
  QString One(const QString& sql) const { return Rows(Main(), sql).join(";"); }

  SampleSiteAlignment site_{2};
  SamplePathAlignment path_{2};
};

TEST_P(SavedArgumentsTest, ASiteSaveRefusesNulls) {
  SqliteCalls::Reset();
  EXPECT_EQ(SaveSite(nullptr, &site_.location, &site_.measured, &site_.height), nullptr);
  EXPECT_EQ(SaveSite(&site_.site, nullptr, &site_.measured, &site_.height), nullptr);
  EXPECT_EQ(SaveSite(&site_.site, &site_.location, nullptr, &site_.height), nullptr);
  EXPECT_EQ(SaveSite(&site_.site, &site_.location, &site_.measured, nullptr), nullptr);
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(SavedArgumentsTest, APathSaveRefusesThreeNulls) {
  SqliteCalls::Reset();
  EXPECT_EQ(SavePath(nullptr, &path_.location, &path_.target, &path_.measured, &path_.height), nullptr);
  EXPECT_EQ(SavePath(&path_.path, nullptr, &path_.target, &path_.measured, &path_.height), nullptr);
  EXPECT_EQ(SavePath(&path_.path, &path_.location, &path_.target, nullptr, &path_.height), nullptr);
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(SavedArgumentsTest, APathWithoutTargetOrHeightIsCutShort) {
  const PathRecord untargeted =
      SavePath(&path_.path, &path_.location, nullptr, &path_.measured, &path_.height);
  ASSERT_NE(untargeted, nullptr);
  EXPECT_EQ(untargeted->PathAlignmentKey(), noKey);
  EXPECT_EQ(SavedRows(Main()), (QStringList{"Geolocation|1|1|50.75|13.625|521.5", "Paths|1|1|'Path 2'"}));
  const PathRecord heightless =
      SavePath(&path_.path, &path_.location, &path_.target, &path_.measured, nullptr);
  ASSERT_NE(heightless, nullptr);
  EXPECT_EQ(heightless->PathAlignmentKey(), noKey);
  EXPECT_EQ(SavedRows(Main()).size(), 2 + 4);
  EXPECT_EQ(One("SELECT COUNT(*) FROM PathAlignment"), "0");
  if (Version().HasThresholdsFile()) {
    EXPECT_EQ(SavedRows(Thresholds()), (QStringList{"PathAlignmentThresholds|1|1|-1|1|4.5|6.5|10.5",
                                                    "PathAlignmentThresholds|2|2|-1|1|4.5|6.5|10.5"}));
  }
}

TEST_P(SavedArgumentsTest, MissingInnerObjectsCutASaveShort) {
  AskedSite site(nullptr);
  AskedPath path(nullptr);
  const SiteRecord siteRecord = SaveSite(&site, &site_.location, &site_.measured, &site_.height);
  const PathRecord pathRecord =
      SavePath(&path, &path_.location, &path_.target, &path_.measured, &path_.height);
  ASSERT_TRUE(siteRecord && pathRecord);
  EXPECT_EQ(siteRecord->AntennaAlignmentKey(), noKey);
  EXPECT_EQ(pathRecord->PathAlignmentKey(), noKey);
  EXPECT_EQ(SavedRows(Main()), (QStringList{"Paths|1|1|'Path'", "Sites|1|1|'Site'"}));
}

class QuestionsTest : public SavedArgumentsTest {
 protected:
  QuestionsTest() { asked.clear(); }

  const QStringList orientation_ = {"AzimuthDegrees", "TiltDegrees", "RollDegrees"};
  const QStringList location_ = {"Latitude", "Longitude", "Elevation"};
  const QStringList height_ = {"HeightInMeters", "HeightType"};
  AskedOrientation target;
  AskedOrientation measured;
  AskedGeolocation location;
  AskedGeolocation farEnd;
  AskedHeight height;
  AskedOptions options;
};

// Values that the version has no column for are not asked for.
TEST_P(QuestionsTest, OfASiteSaveComeInThisOrder) {
  AskedSite site(&target);
  delete store_->SaveAlignmentReportData(&site, &location, &measured, &height, site_.time, &options);
  QStringList ofOptions{"AzimuthOffset"};
  if (Version().HasTiltInversion()) ofOptions << "TiltInversionEnabled";
  if (Version().HasSiteNote()) ofOptions << "Note";
  if (Version().HasRollPrecision()) ofOptions << "RollPrecision";
  if (Version().HasThresholdsFile())
    ofOptions << "AzimuthThreshold"
              << "TiltThreshold"
              << "RollThreshold";
  EXPECT_EQ(asked, (QStringList{"SiteIdentifier", "TargetOrientation"} + orientation_ + orientation_ +
                    location_ + height_ + QStringList{"SectorName", "AntennaPosition"} + ofOptions));
}

// Neither the roll precision nor the roll threshold is asked for.
TEST_P(QuestionsTest, OfAPathSaveComeInThisOrder) {
  AskedPath path(&farEnd);
  delete store_->SavePathReportData(&path, &location, &target, &measured, &height, path_.time, &options);
  QStringList ofOptions{"AzimuthOffset"};
  if (Version().HasTiltInversion()) ofOptions << "TiltInversionEnabled";
  if (Version().HasPathNote()) ofOptions << "Note";
  if (Version().HasThresholdsFile()) {
    ofOptions << "AzimuthThreshold"
              << "TiltThreshold"
              << "PathLengthThreshold";
  }
  EXPECT_EQ(asked, (QStringList{"PathIdentifier", "PathLocation"} + location_ + orientation_ + orientation_ +
                    location_ + height_ + ofOptions));
}

INSTANTIATE_FOR_ALL_VERSIONS(QuestionsTest);

TEST_P(SavedArgumentsTest, TextsAreWrittenInTheLocalEncoding) {
  const QString text = QString::fromUtf8("Z\u00fcrich");
  {
    const LocalEncoding utf8("UTF-8");
    SaveSample(store_, SampleSiteAlignment(1, text, text));
    SaveSample(store_, SamplePathAlignment(1, text));
  }
  const LocalEncoding latin1("ISO-8859-1");
  SaveSample(store_, SampleSiteAlignment(1, text, text));
  const QString inUtf8 = QStringLiteral("'5AC3BC72696368'");
  if (!LocalEncoding::varies) {
    EXPECT_EQ(Rows(Main(), "SELECT hex(SiteIdentifier) FROM Sites"), QStringList{inUtf8});
    EXPECT_EQ(Rows(Main(), "SELECT hex(SectorName) FROM AntennaAlignment"), (QStringList{inUtf8, inUtf8}));
    return;
  }
  const QStringList each{inUtf8, "'5AFC72696368'"};
  EXPECT_EQ(Rows(Main(), "SELECT hex(SiteIdentifier) FROM Sites"), each);
  EXPECT_EQ(Rows(Main(), "SELECT hex(SectorName) FROM AntennaAlignment"), each);
  EXPECT_EQ(Rows(Main(), "SELECT hex(PathIdentifier) FROM Paths"), QStringList{inUtf8});
  // What was not UTF-8 does not come back.
  EXPECT_EQ(store_->GetSiteIdentifiers(), (QVector<QString>{text, QString::fromUtf8("Z\ufffdrich")}));
}

TEST_P(SavedArgumentsTest, TextsKeepQuotesAndBreaksAndEndAtAZero) {
  SaveSample(store_, SampleSiteAlignment(1, "it's \"A\"; DROP TABLE Sites --\n", ""));
  SaveSample(store_, SampleSiteAlignment(1, QString("cut") + QChar(0) + "off", QString(QChar(0)) + "gone"));
  EXPECT_EQ(Rows(Main(), "SELECT SiteIdentifier, length(SiteIdentifier) FROM Sites"),
            (QStringList{"'it''s \"A\"; DROP TABLE Sites --\\n'|30", "'cut'|3"}));
  EXPECT_EQ(Rows(Main(), "SELECT SectorName FROM AntennaAlignment"), (QStringList{"''", "''"}));
}

TEST_P(SavedArgumentsTest, NullTextsAreEmptyOnes) {
  SaveSample(store_, SampleSiteAlignment(1, QString(), QString()));
  EXPECT_EQ(One("SELECT typeof(SiteIdentifier), typeof(SectorName) FROM Sites, AntennaAlignment"),
            "'text'|'text'");
}

TEST_P(SavedArgumentsTest, FloatsAreWidened) {
  site_.site.SetTargetOrientation(0.1F, std::numeric_limits<float>::max(),
                                  std::numeric_limits<float>::denorm_min());
  SaveSample(store_, SampleSiteAlignment(1));
  EXPECT_NE(SaveSite(&site_.site, &site_.location, &site_.measured, &site_.height), nullptr);
  EXPECT_EQ(One("SELECT AzimuthDegrees = 0.10000000149011612, TiltDegrees = 3.4028234663852886e38, "
                "RollDegrees = 1.401298464324817e-45 FROM Orientation WHERE OrientationKey = 3"),
            "1|1|1");
}

TEST_P(SavedArgumentsTest, NotANumberIsNullWhichTheRowDoesNotTake) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Geolocation nowhere(1, nan, 3, GpsDatum::Wgs84, QDateTime(), true);
  const SiteRecord record = SaveSite(&site_.site, &nowhere, &site_.measured, &site_.height);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->AntennaAlignmentKey(), noKey);
  EXPECT_EQ(SavedRows(Main()).size(), 1 + 2);
  // In the alignment itself it undoes everything.
  EXPECT_EQ(SaveSiteWith(MeasurementOptions(static_cast<float>(nan), false, 1, 2, 3, 4, "", 0)), nullptr);
  EXPECT_EQ(SavedRows(Main()).size(), 1 + 2);
}

TEST_P(SavedArgumentsTest, NotANumberIsNoThreshold) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_NE(SaveSiteWith(MeasurementOptions(0, false, nan, nan, nan, nan, "", 0)), nullptr);
  if (Version().HasThresholdsFile()) {
    EXPECT_EQ(SavedRows(Thresholds()), QStringList{"AntennaAlignmentThresholds|1|1|1|1|NULL|NULL|NULL"});
  }
}

TEST_P(SavedArgumentsTest, ExtremesAreKept) {
  Geolocation location(std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::max(), GpsDatum::Wgs84, QDateTime(), true);
  Height height(-0.5, static_cast<HeightSource>(-2147483647 - 1));
  EXPECT_NE(SaveSite(&site_.site, &location, &site_.measured, &height), nullptr);
  // Where a long double is no longer than a double, the engine takes the largest number's digits for
  // infinity.
  EXPECT_EQ(One("SELECT LatitudeDegreesNorth = 9e999, LongitudeDegreesEast = -9e999, "
                "ElevationMeters > 1.7976931348623e308, ElevationMeters < 9e999, HeightType "
                "FROM Geolocation, Height"),
            "1|1|1|1|-2147483648");
}

TEST_P(SavedArgumentsTest, TimesAreWholeSecondsIn32Bits) {
  const struct {
    QDateTime time;
    const char* stored;
  } times[] = {
      {QDateTime::fromMSecsSinceEpoch(1500000000999), "1500000000"},
      {QDateTime::fromMSecsSinceEpoch(0), "0"},
      {QDateTime::fromMSecsSinceEpoch(2147483648000), "-2147483648"},
      {QDateTime::fromString("2017-07-14T04:40:00+02:00", Qt::ISODate), "1500000000"},
      {QDateTime(), "-1"},
  };
  for (const auto& time : times) {
    site_.time = time.time;
    path_.time = time.time;
    EXPECT_NE(SiteRecord(site_.Save(store_.get())), nullptr);
    EXPECT_NE(PathRecord(path_.Save(store_.get())), nullptr);
    EXPECT_EQ(Rows(Main(), "SELECT LinuxTimeUTC FROM AntennaAlignment").last(), time.stored);
    EXPECT_EQ(Rows(Main(), "SELECT LinuxTimeUTC FROM PathAlignment").last(), time.stored);
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(SavedArgumentsTest);

}  // namespace
