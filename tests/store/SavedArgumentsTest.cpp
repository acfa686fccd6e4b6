// What saves make of the objects that they are given: nulls, the order of questions, unusual texts, numbers
// and times.
#include <QTextCodec>
#include <limits>

#include "tests/store/SavedRows.h"
#include "tests/support/SqliteCalls.h"

namespace {

constexpr unsigned int NoKey = 4294967295U;

// The local encoding while an object of it lives.
class LocalEncoding {
 public:
  explicit LocalEncoding(const char* name) { QTextCodec::setCodecForLocale(QTextCodec::codecForName(name)); }
  ~LocalEncoding() { QTextCodec::setCodecForLocale(before_); }
  LocalEncoding(const LocalEncoding&) = delete;
  LocalEncoding& operator=(const LocalEncoding&) = delete;

 private:
  QTextCodec* const before_ = QTextCodec::codecForLocale();
};

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
  EXPECT_EQ(untargeted->PathAlignmentKey(), NoKey);
  EXPECT_EQ(SavedRows(Main()), (QStringList{"Geolocation|1|1|50.75|13.625|521.5", "Paths|1|1|'Path 2'"}));
  const PathRecord heightless =
      SavePath(&path_.path, &path_.location, &path_.target, &path_.measured, nullptr);
  ASSERT_NE(heightless, nullptr);
  EXPECT_EQ(heightless->PathAlignmentKey(), NoKey);
  EXPECT_EQ(SavedRows(Main()).size(), 2 + 4);
  EXPECT_EQ(One("SELECT COUNT(*) FROM PathAlignment"), "0");
  if (Version().HasThresholdsFile()) {
    EXPECT_EQ(SavedRows(Thresholds()), (QStringList{"PathAlignmentThresholds|1|1|-1|1|4.5|6.5|10.5",
                                                    "PathAlignmentThresholds|2|2|-1|1|4.5|6.5|10.5"}));
  }
}

// Records that lack an inner object, and that write down what they are asked.
QStringList asked;

template <typename Answer>
Answer Asked(const char* name, Answer answer) {
  asked.append(name);
  return answer;
}

class AskedOrientation : public Orientation {
 public:
  AskedOrientation() : Orientation(1, 2, 3) {}
  float AzimuthDegrees() const override { return Asked("AzimuthDegrees", 1.0F); }
  float TiltDegrees() const override { return Asked("TiltDegrees", 2.0F); }
  float RollDegrees() const override { return Asked("RollDegrees", 3.0F); }
};

class AskedGeolocation : public Geolocation {
 public:
  AskedGeolocation() : Geolocation(1, 2, 3, GpsDatum::Wgs84, QDateTime(), true) {}
  double LatitudeDegreesNorth() const override { return Asked("Latitude", 1.0); }
  double LongitudeDegreesEast() const override { return Asked("Longitude", 2.0); }
  double ElevationMeters() const override { return Asked("Elevation", 3.0); }
};

class AskedHeight : public Height {
 public:
  AskedHeight() : Height(1, static_cast<HeightSource>(2)) {}
  HeightSource HeightType() const override { return Asked("HeightType", Height::HeightType()); }
  double HeightInMeters(bool* valid) const override {
    EXPECT_NE(valid, nullptr);
    if (valid != nullptr) *valid = false;
    return Asked("HeightInMeters", 1.0);
  }
};

class AskedSite : public SiteInformation {
 public:
  explicit AskedSite(IOrientation* target)
      : SiteInformation("Site", "Sector", "Position", 0, 0, 0), target_(target) {}
  const QString& SiteIdentifier() const override {
    return *Asked("SiteIdentifier", &SiteInformation::SiteIdentifier());
  }
  const QString& SectorName() const override { return *Asked("SectorName", &SiteInformation::SectorName()); }
  const QString& AntennaPosition() const override {
    return *Asked("AntennaPosition", &SiteInformation::AntennaPosition());
  }
  IOrientation* TargetOrientation() const override { return Asked("TargetOrientation", target_); }

 private:
  IOrientation* const target_;
};

class AskedPath : public PathInformation {
 public:
  explicit AskedPath(IGeolocation* farEnd) : PathInformation("Path", 0, 0, 0), farEnd_(farEnd) {}
  const QString& PathIdentifier() const override {
    return *Asked("PathIdentifier", &PathInformation::PathIdentifier());
  }
  IGeolocation* PathLocation() const override { return Asked("PathLocation", farEnd_); }

 private:
  IGeolocation* const farEnd_;
};

class AskedOptions : public MeasurementOptions {
 public:
  AskedOptions() : MeasurementOptions(0, false, 0, 0, 0, 0, QString(), 0) {}
  float AzimuthOffset() const override { return Asked("AzimuthOffset", 1.0F); }
  bool TiltInversionEnabled() const override { return Asked("TiltInversionEnabled", true); }
  QString Note() const override { return Asked("Note", QString("note")); }
  int RollPrecision() const override { return Asked("RollPrecision", 2); }
  float AzimuthThreshold() const override { return Asked("AzimuthThreshold", 3.0F); }
  float TiltThreshold() const override { return Asked("TiltThreshold", 4.0F); }
  float RollThreshold() const override { return Asked("RollThreshold", 5.0F); }
  float PathLengthThreshold() const override { return Asked("PathLengthThreshold", 6.0F); }
};

TEST_P(SavedArgumentsTest, MissingInnerObjectsCutASaveShort) {
  AskedSite site(nullptr);
  AskedPath path(nullptr);
  const SiteRecord siteRecord = SaveSite(&site, &site_.location, &site_.measured, &site_.height);
  const PathRecord pathRecord =
      SavePath(&path, &path_.location, &path_.target, &path_.measured, &path_.height);
  ASSERT_TRUE(siteRecord && pathRecord);
  EXPECT_EQ(siteRecord->AntennaAlignmentKey(), NoKey);
  EXPECT_EQ(pathRecord->PathAlignmentKey(), NoKey);
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

TEST_P(QuestionsTest, OfASiteSaveComeInThisOrder) {
  AskedSite site(&target);
  delete store_->SaveAlignmentReportData(&site, &location, &measured, &height, site_.time, &options);
  EXPECT_EQ(asked,
            (QStringList{"SiteIdentifier", "TargetOrientation"} + orientation_ + orientation_ + location_ +
             height_ +
             QStringList{"SectorName", "AntennaPosition", "AzimuthOffset", "TiltInversionEnabled", "Note",
                         "RollPrecision", "AzimuthThreshold", "TiltThreshold", "RollThreshold"}));
}

// Neither the roll precision nor the roll threshold is asked for.
TEST_P(QuestionsTest, OfAPathSaveComeInThisOrder) {
  AskedPath path(&farEnd);
  delete store_->SavePathReportData(&path, &location, &target, &measured, &height, path_.time, &options);
  EXPECT_EQ(asked, (QStringList{"PathIdentifier", "PathLocation"} + location_ + orientation_ + orientation_ +
                    location_ + height_ +
                    QStringList{"AzimuthOffset", "TiltInversionEnabled", "Note", "AzimuthThreshold",
                                "TiltThreshold", "PathLengthThreshold"}));
}

INSTANTIATE_TEST_SUITE_P(Current, QuestionsTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

TEST_P(SavedArgumentsTest, TextsAreWrittenInTheLocalEncoding) {
  const QString text = QString::fromUtf8("Z\u00fcrich");
  {
    const LocalEncoding utf8("UTF-8");
    SaveSample(store_, SampleSiteAlignment(1, text, text));
    SaveSample(store_, SamplePathAlignment(1, text));
  }
  const LocalEncoding latin1("ISO-8859-1");
  SaveSample(store_, SampleSiteAlignment(1, text, text));
  EXPECT_EQ(Rows(Main(), "SELECT hex(SiteIdentifier) FROM Sites"),
            (QStringList{"'5AC3BC72696368'", "'5AFC72696368'"}));
  EXPECT_EQ(Rows(Main(), "SELECT hex(SectorName) FROM AntennaAlignment"),
            (QStringList{"'5AC3BC72696368'", "'5AFC72696368'"}));
  EXPECT_EQ(Rows(Main(), "SELECT hex(PathIdentifier) FROM Paths"), QStringList{"'5AC3BC72696368'"});
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
  EXPECT_EQ(record->AntennaAlignmentKey(), NoKey);
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
  EXPECT_EQ(One("SELECT LatitudeDegreesNorth = 9e999, LongitudeDegreesEast = -9e999, "
                "ElevationMeters = 1.7976931348623157e308, HeightType FROM Geolocation, Height"),
            "1|1|1|-2147483648");
}

TEST_P(SavedArgumentsTest, TimesAreWholeSecondsIn32Bits) {
  const struct {
    QDateTime time;
    const char* stored;
  } times[] = {
      {QDateTime::fromMSecsSinceEpoch(1500000000999), "1500000000"},
      {QDateTime::fromMSecsSinceEpoch(0), "0"},
      {QDateTime::fromMSecsSinceEpoch(2147483648000), "-2147483648"},
      {QDateTime(QDate(2017, 7, 14), QTime(4, 40), Qt::OffsetFromUTC, 7200), "1500000000"},
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
