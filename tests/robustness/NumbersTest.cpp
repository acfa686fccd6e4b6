// Numbers at and beyond their limits, in every version.
#include <cmath>
#include <limits>
#include <memory>

#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/SampleAlignments.h"

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr unsigned int noAlignment = 4294967295U;

class NumbersTest : public CreatedStoreTest {
 protected:
  using Record = std::unique_ptr<IAntennaAlignmentReportData>;
  using Reports = std::unique_ptr<AntennaAlignmentPdfReportData>;

  Record Save(SampleSiteAlignment* sample, Orientation* measured) {
    return Record(store_->SaveAlignmentReportData(&sample->site, &sample->location, measured, &sample->height,
                                                  sample->time, &sample->options));
  }

  Reports Read() {
    QString identifier = QStringLiteral("Site 1");
    return Reports(store_->GetAlignmentReportDataForSite(identifier));
  }

  int Count(const char* table) const {
    return Rows(Main(), QStringLiteral("SELECT count(*) FROM ") + QLatin1String(table))[0].toInt();
  }
};

// Not-a-number is NULL to the engine, and the column needs a value: the row's insert fails without a line,
// what precedes it is kept, and the record has no alignment.
TEST_P(NumbersTest, NotANumberEndsTheSaveAtItsRow) {
  SampleSiteAlignment sample(1);
  Orientation measured(1, nan, 3);
  const Record record = Save(&sample, &measured);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->AntennaAlignmentKey(), noAlignment);
  EXPECT_EQ(Count("Sites"), 1);
  EXPECT_EQ(Count("Orientation"), 1);
  EXPECT_EQ(Count("AntennaAlignment"), 0);
}

TEST_P(NumbersTest, NotANumberInTheAlignmentUndoesTheSave) {
  SampleSiteAlignment sample(1);
  MeasurementOptions options(nan, false, 1, 1, 1, 1, QString(), 0);
  const Record record(store_->SaveAlignmentReportData(&sample.site, &sample.location, &sample.measured,
                                                      &sample.height, sample.time, &options));
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(Count("Sites"), 0);
}

// Thresholds may be NULL: they read back as 0.
TEST_P(NumbersTest, ThresholdsThatAreNoNumbersReadAsZero) {
  SampleSiteAlignment sample(1);
  MeasurementOptions options(0.5F, false, nan, infinity, nan, 1, QString(), 0);
  const Record record(store_->SaveAlignmentReportData(&sample.site, &sample.location, &sample.measured,
                                                      &sample.height, sample.time, &options));
  ASSERT_NE(record, nullptr);
  const Reports reports = Read();
  const IMeasurementOptions& read = *reports->AlignmentData()->first()->GetMeasurementOptions();
  EXPECT_EQ(read.AzimuthThreshold(), 0.0F);
  EXPECT_EQ(read.TiltThreshold(), Version().HasThresholdsFile() ? infinity : 0.0F);
  EXPECT_EQ(read.RollThreshold(), 0.0F);
}

TEST_P(NumbersTest, ExtremesComeBack) {
  constexpr float largest = std::numeric_limits<float>::max();
  constexpr float smallest = std::numeric_limits<float>::denorm_min();
  constexpr double huge = std::numeric_limits<double>::max();
  SampleSiteAlignment sample(1);
  Orientation measured(infinity, -largest, smallest);
  Geolocation location(huge, -huge, -std::numeric_limits<double>::infinity(), GpsDatum::Wgs84, sample.time,
                       true);
  Height height(std::numeric_limits<double>::denorm_min(),
                static_cast<HeightSource>(std::numeric_limits<int>::min()));
  MeasurementOptions options(-infinity, true, 1, 1, 1, 1, QString(),
                             static_cast<unsigned long>(std::numeric_limits<int>::max()));
  const Record record(
      store_->SaveAlignmentReportData(&sample.site, &location, &measured, &height, sample.time, &options));
  ASSERT_NE(record, nullptr);
  const Reports reports = Read();
  ASSERT_EQ(reports->AlignmentData()->size(), 1);
  const IAntennaAlignmentReportData& read = *reports->AlignmentData()->first();
  EXPECT_EQ(read.GetMeasuredOrientation()->AzimuthDegrees(), infinity);
  EXPECT_EQ(read.GetMeasuredOrientation()->TiltDegrees(), -largest);
  EXPECT_EQ(read.GetMeasuredOrientation()->RollDegrees(), smallest);
  EXPECT_EQ(read.GetGeolocation()->LatitudeDegreesNorth(), huge);
  EXPECT_EQ(read.GetGeolocation()->LongitudeDegreesEast(), -huge);
  EXPECT_EQ(read.GetGeolocation()->ElevationMeters(), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(read.GetHeight()->HeightInMeters(nullptr), std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(static_cast<int>(read.GetHeight()->HeightType()), std::numeric_limits<int>::min());
  EXPECT_EQ(read.GetMeasurementOptions()->AzimuthOffset(), -infinity);
  EXPECT_EQ(read.GetMeasurementOptions()->RollPrecision(),
            Version().HasRollPrecision() ? std::numeric_limits<int>::max() : 0);
}

// Seconds are unsigned and stored in 32 bits with a sign: the later half of the range is stored as negative
// numbers and comes back all the same. What lies outside becomes the last second.
TEST_P(NumbersTest, TimesAtTheirLimits) {
  const struct {
    QDateTime time;
    int stored;
    unsigned int read;
  } samples[] = {
      {QDateTime::fromMSecsSinceEpoch(0).toUTC(), 0, 0},
      {QDateTime::fromMSecsSinceEpoch(2147483647999).toUTC(), 2147483647, 2147483647U},
      {QDateTime::fromMSecsSinceEpoch(2147483648000).toUTC(), std::numeric_limits<int>::min(), 2147483648U},
      {QDateTime::fromMSecsSinceEpoch(4294967294000).toUTC(), -2, 4294967294U},
      {QDateTime::fromMSecsSinceEpoch(-1000).toUTC(), -1, 4294967295U},
      {QDateTime::fromMSecsSinceEpoch(4294967296000).toUTC(), -1, 4294967295U},
      {QDateTime(), -1, 4294967295U},
  };
  int number = 0;
  for (const auto& sample : samples) {
    SCOPED_TRACE(++number);
    SampleSiteAlignment alignment(1);
    alignment.time = sample.time;
    const Record record(alignment.Save(store_.get()));
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT LinuxTimeUTC FROM AntennaAlignment")),
              QStringList(QString::number(sample.stored)));
    const Reports reports = Read();
    EXPECT_EQ(reports->AlignmentData()->first()->GetMeasurementTime(),
              QDateTime::fromSecsSinceEpoch(sample.read));
    RunSql(Main(), QStringLiteral("DELETE FROM AntennaAlignment"));
  }
}

// Keys are 64 bits wide in the file and handled in 32: a site beyond them is found under the low bits of its
// key, where there is no site for the alignment to refer to. Nothing is saved, nothing else is touched.
TEST_P(NumbersTest, SiteKeyBeyond32BitsRefusesAlignments) {
  RunSql(Main(), QStringLiteral("INSERT INTO Sites (SiteKey, SiteIdentifier) VALUES (4294967303, 'Site 1')"));
  SampleSiteAlignment sample(1);
  const Record record(sample.Save(store_.get()));
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(Count("AntennaAlignment"), 0);
  EXPECT_EQ(Count("Orientation"), 0);
  EXPECT_EQ(store_->GetSiteIdentifiers(), QVector<QString>{QStringLiteral("Site 1")});
}

// An alignment beyond 32 bits is read under the low bits of its key.
TEST_P(NumbersTest, AlignmentKeyBeyond32BitsIsReadByItsLowBits) {
  SampleSiteAlignment sample(1);
  const Record record(sample.Save(store_.get()));
  RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET AntennaAlignmentKey = 4294967303"));
  const Reports reports = Read();
  ASSERT_EQ(reports->AlignmentData()->size(), 1);
  EXPECT_EQ(reports->AlignmentData()->first()->AntennaAlignmentKey(), 7U);
}

TEST_P(NumbersTest, IntegerPreferencesAtTheirLimits) {
  for (const int value : {std::numeric_limits<int>::min(), -1, 0, std::numeric_limits<int>::max()}) {
    PreferencesModel saved;
    saved.SerialNumber()->SetValue(value);
    saved.GNSSFileCRC()->SetValue(value);
    ASSERT_TRUE(store_->SavePreferences(&saved));
    PreferencesModel read;
    const int unchanged = read.GNSSFileCRC()->Value();
    ASSERT_TRUE(store_->RestorePreferences(&read));
    EXPECT_EQ(read.SerialNumber()->Value(), value);
    EXPECT_EQ(read.GNSSFileCRC()->Value(), Version().number >= 2 ? value : unchanged);
  }
}

// A preference that is not a number fails the row's only insert: the row saved before stays.
TEST_P(NumbersTest, PreferenceThatIsNoNumberKeepsTheRow) {
  PreferencesModel saved;
  saved.SerialNumber()->SetValue(5);
  ASSERT_TRUE(store_->SavePreferences(&saved));
  saved.SerialNumber()->SetValue(6);
  saved.TiltThreshold()->SetValue(std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(store_->SavePreferences(&saved));
  PreferencesModel read;
  ASSERT_TRUE(store_->RestorePreferences(&read));
  EXPECT_EQ(read.SerialNumber()->Value(), 5);
}

// The site's screen reports it, the path's does not.
TEST_P(NumbersTest, ScreensThatHoldNoNumbersAreNotStored) {
  AlignerModel model;
  model.SetCurrentPathInformation(
      new PathInformation(QStringLiteral("Path"), static_cast<double>(nan), 0, 0));
  EXPECT_TRUE(store_->StoreInputContents(&model));
  EXPECT_EQ(Count("PathScreenContents"), 0);
  model.SetCurrentSiteInformation(new SiteInformation(QStringLiteral("Site"), QString::fromLatin1(""),
                                                      QString::fromLatin1(""), 1, nan, 3));
  EXPECT_FALSE(store_->StoreInputContents(&model));
  EXPECT_EQ(Count("SiteScreenContents"), 0);
}

INSTANTIATE_FOR_ALL_VERSIONS(NumbersTest);

}  // namespace
