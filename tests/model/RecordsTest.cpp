#include <gtest/gtest.h>

#include <QTimeZone>
#include <cmath>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "model/AntennaAlignmentReportData.h"
#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/PathAlignmentReportData.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "tests/model/Counted.h"
#include "tests/model/CountingObserver.h"

namespace {

const QDateTime someTime(QDate(2020, 2, 29), QTime(12, 30), QTimeZone::utc());

TEST(OrientationTest, AnswersItsAngles) {
  const Orientation orientation(10.5F, -2.25F, 3.0F);
  const std::unique_ptr<IOrientation> copy(orientation.Clone());
  for (const IOrientation* each : std::initializer_list<const IOrientation*>{&orientation, copy.get()}) {
    EXPECT_EQ(each->AzimuthDegrees(), 10.5F);
    EXPECT_EQ(each->TiltDegrees(), -2.25F);
    EXPECT_EQ(each->RollDegrees(), 3.0F);
  }
}

TEST(GeolocationTest, AnswersItsPosition) {
  const Geolocation location(50.25, -14.5, 321.0, GpsDatum::Nad27, someTime, false);
  const std::unique_ptr<IGeolocation> copy(location.Clone());
  for (const IGeolocation* each : std::initializer_list<const IGeolocation*>{&location, copy.get()}) {
    EXPECT_EQ(each->LatitudeDegreesNorth(), 50.25);
    EXPECT_EQ(each->LongitudeDegreesEast(), -14.5);
    EXPECT_EQ(each->ElevationMeters(), 321.0);
    EXPECT_EQ(each->Datum(), GpsDatum::Nad27);
    EXPECT_EQ(each->FixTime(), someTime);
    EXPECT_FALSE(each->IsValid());
  }
}

TEST(HeightTest, NewHeightIsValid) {
  const Height height(12.5, HeightSource::Gps);
  bool valid = false;
  EXPECT_EQ(height.HeightInMeters(&valid), 12.5);
  EXPECT_TRUE(valid);
  EXPECT_TRUE(height.IsFromGps());
  EXPECT_EQ(height.HeightInMeters(nullptr), 12.5);
}

TEST(HeightTest, GpsIsStoredAsThreeAndUnknownNumbersPassThrough) {
  EXPECT_EQ(static_cast<int>(HeightSource::Gps), 3);
  for (const int number : {-1, 0, 1, 3, 4711}) {
    const Height height(1.0, static_cast<HeightSource>(number));
    EXPECT_EQ(static_cast<int>(height.HeightType()), number);
    EXPECT_EQ(height.IsFromGps(), number == 3);
  }
}

TEST(HeightTest, InvalidatedHeightKeepsItsValueAndIsValidAgainOnceSet) {
  Height height(12.5, HeightSource::Manual);
  height.Invalidate();
  bool valid = true;
  EXPECT_EQ(height.HeightInMeters(&valid), 12.5);
  EXPECT_FALSE(valid);
  EXPECT_FALSE(height.IsValid());
  height.SetHeightType(HeightSource::Barometric);
  EXPECT_FALSE(height.IsValid());
  height.SetHeightInMeters(20.0);
  EXPECT_TRUE(height.IsValid());
  EXPECT_EQ(height.HeightType(), HeightSource::Barometric);
}

TEST(HeightTest, AFootIs0Point3048Metres) {
  Height height(3.048, HeightSource::Manual);
  bool valid = false;
  EXPECT_DOUBLE_EQ(height.HeightInFeet(&valid), 10.0);
  EXPECT_TRUE(valid);
  height.SetHeightInFeet(100.0);
  EXPECT_DOUBLE_EQ(height.HeightInMeters(nullptr), 30.48);
}

TEST(HeightTest, CloneHasEverythingButTheObservers) {
  Height height(12.5, HeightSource::Gps);
  CountingObserver observer;
  height.AddObserver(&observer);
  height.SetMeasurementTime(someTime);
  height.SetUncertaintyInMeters(0.75);
  height.Invalidate();
  observer.changed.clear();
  const std::unique_ptr<IHeight> copy(height.Clone());
  EXPECT_EQ(copy->HeightInMeters(nullptr), 12.5);
  EXPECT_EQ(copy->HeightType(), HeightSource::Gps);
  EXPECT_EQ(copy->MeasurementTime(), someTime);
  EXPECT_EQ(copy->UncertaintyInMeters(), 0.75);
  EXPECT_FALSE(copy->IsValid());
  copy->SetHeightInMeters(1.0);
  EXPECT_EQ(observer.changed.size(), 0);
}

TEST(HeightTest, EverySetterNotifiesOnce) {
  Height height(12.5, HeightSource::Gps);
  CountingObserver observer;
  height.AddObserver(&observer);
  height.SetHeight(1.0, HeightSource::Manual);
  height.SetHeightInMeters(2.0);
  height.SetHeightInFeet(3.0);
  height.SetHeightType(HeightSource::Gps);
  height.SetMeasurementTime(someTime);
  height.SetUncertaintyInMeters(1.0);
  height.Invalidate();
  EXPECT_EQ(observer.changed.size(), 7);
  height.RemoveObserver(&observer);
  height.Invalidate();
  EXPECT_EQ(observer.changed.size(), 7);
}

TEST(SiteInformationTest, MakesItsTargetFromTheThreeAngles) {
  QString identifier = "S1";
  QString sector = "Alpha";
  QString position = "Left";
  const SiteInformation site(identifier, sector, position, 10.0F, 2.0F, 3.0F);
  const std::unique_ptr<ISiteInformation> copy(site.Clone());
  for (const ISiteInformation* each : std::initializer_list<const ISiteInformation*>{&site, copy.get()}) {
    EXPECT_EQ(each->SiteIdentifier(), "S1");
    EXPECT_EQ(each->SectorName(), "Alpha");
    EXPECT_EQ(each->AntennaPosition(), "Left");
    EXPECT_EQ(each->TargetOrientation()->AzimuthDegrees(), 10.0F);
    EXPECT_EQ(each->TargetOrientation()->TiltDegrees(), 2.0F);
    EXPECT_EQ(each->TargetOrientation()->RollDegrees(), 3.0F);
    EXPECT_TRUE(each->IsValid());
  }
  EXPECT_NE(site.TargetOrientation(), copy->TargetOrientation());
}

TEST(SiteInformationTest, CanBeEdited) {
  SiteInformation site("", "", "", 0.0F, 0.0F, 0.0F);
  EXPECT_FALSE(site.IsValid());
  site.SetSiteIdentifier("S2");
  site.SetSectorName("Beta");
  site.SetAntennaPosition("2");
  site.SetTargetOrientation(4.0F, 5.0F, 6.0F);
  EXPECT_TRUE(site.IsValid());
  EXPECT_EQ(site.SiteIdentifier(), "S2");
  EXPECT_EQ(site.SectorName(), "Beta");
  EXPECT_EQ(site.AntennaPosition(), "2");
  EXPECT_EQ(site.TargetOrientation()->AzimuthDegrees(), 4.0F);
  EXPECT_EQ(site.TargetOrientation()->TiltDegrees(), 5.0F);
  EXPECT_EQ(site.TargetOrientation()->RollDegrees(), 6.0F);
}

void ExpectPosition(const IGeolocation* location, double latitude, double longitude, double elevation) {
  EXPECT_EQ(location->LatitudeDegreesNorth(), latitude);
  EXPECT_EQ(location->LongitudeDegreesEast(), longitude);
  EXPECT_EQ(location->ElevationMeters(), elevation);
}

TEST(PathInformationTest, MakesItsFarEndFromTheThreeNumbers) {
  QString identifier = "P1";
  const PathInformation path(identifier, 50.0, 14.0, 200.0);
  const std::unique_ptr<IPathInformation> copy(path.Clone());
  for (const IPathInformation* each : std::initializer_list<const IPathInformation*>{&path, copy.get()}) {
    EXPECT_EQ(each->PathIdentifier(), "P1");
    ExpectPosition(each->PathLocation(), 50.0, 14.0, 200.0);
    EXPECT_EQ(each->TargetGeolocation(), each->PathLocation());
    EXPECT_TRUE(each->IsValid());
  }
  EXPECT_NE(path.PathLocation(), copy->PathLocation());
}

TEST(PathInformationTest, CanBeEditedAndCleared) {
  PathInformation path("", 0.0, 0.0, 0.0);
  EXPECT_FALSE(path.IsValid());
  path.SetPathIdentifier("P2");
  path.SetPathLocation(1.0, 2.0, 3.0);
  EXPECT_EQ(path.PathIdentifier(), "P2");
  ExpectPosition(path.PathLocation(), 1.0, 2.0, 3.0);
  path.Clear();
  EXPECT_EQ(path.PathIdentifier(), "");
  ExpectPosition(path.PathLocation(), 0.0, 0.0, 0.0);
}

TEST(MeasurementOptionsTest, AnswersWhatItIsBuiltFrom) {
  const MeasurementOptions options(1.5F, true, 2.5F, 3.5F, 4.5F, 5.5F, "windy", 2);
  const std::unique_ptr<IMeasurementOptions> copy(options.Clone());
  for (const IMeasurementOptions* each :
       std::initializer_list<const IMeasurementOptions*>{&options, copy.get()}) {
    EXPECT_EQ(each->AzimuthOffset(), 1.5F);
    EXPECT_TRUE(each->TiltInversionEnabled());
    EXPECT_EQ(each->AzimuthThreshold(), 2.5F);
    EXPECT_EQ(each->TiltThreshold(), 3.5F);
    EXPECT_EQ(each->RollThreshold(), 4.5F);
    EXPECT_EQ(each->PathLengthThreshold(), 5.5F);
    EXPECT_EQ(each->Note(), "windy");
    EXPECT_EQ(each->RollPrecision(), 2);
  }
}

/// The objects of one record of each kind, and how often each was destroyed.
class RecordParts {
 public:
  enum Part { site, path, location, measured, height, target, options, partCount };

  explicit RecordParts(const Orientation& measuredAngles = Orientation(11.0F, 2.5F, 3.25F))
      : measuredOrientation(new Counted<Orientation>(destroyed + measured, measuredAngles)) {}

  std::unique_ptr<AntennaAlignmentReportData> SiteRecord() const {
    return std::make_unique<AntennaAlignmentReportData>(7U, siteInformation.get(), geolocation.get(),
                                                        measuredOrientation.get(), antennaHeight.get(),
                                                        someTime, measurementOptions.get());
  }

  std::unique_ptr<PathAlignmentReportData> PathRecord() const {
    return std::make_unique<PathAlignmentReportData>(
        8U, pathInformation.get(), geolocation.get(), measuredOrientation.get(), antennaHeight.get(),
        targetOrientation.get(), someTime, measurementOptions.get());
  }

  std::vector<int> Destroyed() const { return {destroyed, destroyed + partCount}; }

  /// Gives up everything that records of both kinds hold.
  void ReleaseCommonParts() {
    geolocation.release();
    measuredOrientation.release();
    antennaHeight.release();
    measurementOptions.release();
  }

  int destroyed[partCount] = {};
  std::unique_ptr<ISiteInformation> siteInformation{
      new Counted<SiteInformation>(destroyed + site, "S1", "Alpha", "1", 10.0F, 2.0F, 3.0F)};
  std::unique_ptr<IPathInformation> pathInformation{
      new Counted<PathInformation>(destroyed + path, "P1", 50.0, 14.0, 200.0)};
  std::unique_ptr<IGeolocation> geolocation{
      new Counted<Geolocation>(destroyed + location, 49.0, 13.0, 100.0, GpsDatum::Wgs84, someTime, true)};
  std::unique_ptr<IOrientation> measuredOrientation;
  std::unique_ptr<IHeight> antennaHeight{new Counted<Height>(destroyed + height, 30.0, HeightSource::Gps)};
  std::unique_ptr<IOrientation> targetOrientation{
      new Counted<Orientation>(destroyed + target, 10.0F, 2.0F, 3.0F)};
  std::unique_ptr<IMeasurementOptions> measurementOptions{new Counted<MeasurementOptions>(
      destroyed + options, 0.0F, false, 1.0F, 0.5F, 0.25F, 9.0F, "windy", 1UL)};
};

template <typename Record>
void ExpectCommonParts(const Record& record, const RecordParts& parts, const QString& identifier) {
  EXPECT_EQ(record.GetGeolocation(), parts.geolocation.get());
  EXPECT_EQ(record.GetMeasuredOrientation(), parts.measuredOrientation.get());
  EXPECT_EQ(record.GetHeight(), parts.antennaHeight.get());
  EXPECT_EQ(record.GetMeasurementTime(), someTime);
  EXPECT_EQ(record.GetMeasurementOptions(), parts.measurementOptions.get());
  EXPECT_EQ(record.Identifier(), identifier);
  EXPECT_EQ(record.Note(), "windy");
  EXPECT_TRUE(record.IsValid());
}

TEST(ReportRecordTest, SiteRecordAnswersWhatItIsBuiltFrom) {
  const RecordParts parts;
  const std::unique_ptr<IAntennaAlignmentReportData> record = parts.SiteRecord();
  EXPECT_EQ(record->AntennaAlignmentKey(), 7U);
  EXPECT_EQ(record->GetSiteInformation(), parts.siteInformation.get());
  ExpectCommonParts(*record, parts, "S1");
}

TEST(ReportRecordTest, PathRecordAnswersWhatItIsBuiltFrom) {
  const RecordParts parts;
  const std::unique_ptr<IPathAlignmentReportData> record = parts.PathRecord();
  EXPECT_EQ(record->PathAlignmentKey(), 8U);
  EXPECT_EQ(record->GetPathInformation(), parts.pathInformation.get());
  EXPECT_EQ(record->GetTargetOrientation(), parts.targetOrientation.get());
  ExpectCommonParts(*record, parts, "P1");
}

TEST(ReportRecordTest, RecordsBorrowTheirObjects) {
  const RecordParts parts;
  parts.SiteRecord().reset();
  parts.PathRecord().reset();
  EXPECT_EQ(parts.Destroyed(), std::vector<int>(RecordParts::partCount, 0));
}

TEST(ReportRecordTest, SiteRecordFreesWhatItOwns) {
  RecordParts parts;
  std::unique_ptr<AntennaAlignmentReportData> record = parts.SiteRecord();
  record->TakeOwnership();
  record->TakeOwnership();
  parts.ReleaseCommonParts();
  parts.siteInformation.release();
  EXPECT_EQ(parts.Destroyed(), std::vector<int>(RecordParts::partCount, 0));
  record.reset();
  EXPECT_EQ(parts.Destroyed(), (std::vector<int>{1, 0, 1, 1, 1, 0, 1}));
}

TEST(ReportRecordTest, PathRecordFreesWhatItOwns) {
  RecordParts parts;
  std::unique_ptr<PathAlignmentReportData> record = parts.PathRecord();
  record->TakeOwnership();
  parts.ReleaseCommonParts();
  parts.pathInformation.release();
  parts.targetOrientation.release();
  record.reset();
  EXPECT_EQ(parts.Destroyed(), (std::vector<int>{0, 1, 1, 1, 1, 1, 1}));
}

TEST(ReportRecordTest, CloneOutlivesTheObjectsOfTheOriginal) {
  std::unique_ptr<IAntennaAlignmentReportData> site;
  std::unique_ptr<IPathAlignmentReportData> path;
  {
    const RecordParts parts;
    site.reset(parts.SiteRecord()->Clone());
    path.reset(parts.PathRecord()->Clone());
  }
  EXPECT_EQ(site->AntennaAlignmentKey(), 7U);
  EXPECT_EQ(site->GetSiteInformation()->SectorName(), "Alpha");
  EXPECT_EQ(path->PathAlignmentKey(), 8U);
  EXPECT_EQ(path->GetPathInformation()->PathIdentifier(), "P1");
  EXPECT_EQ(path->GetTargetOrientation()->AzimuthDegrees(), 10.0F);
  for (const IAlignmentReportData* record :
       std::initializer_list<const IAlignmentReportData*>{site.get(), path.get()}) {
    EXPECT_TRUE(record->IsValid());
    EXPECT_EQ(record->Note(), "windy");
    EXPECT_EQ(record->GetMeasurementTime(), someTime);
    EXPECT_EQ(record->GetGeolocation()->LatitudeDegreesNorth(), 49.0);
    EXPECT_EQ(record->GetMeasuredOrientation()->AzimuthDegrees(), 11.0F);
    EXPECT_EQ(record->GetHeight()->HeightInMeters(nullptr), 30.0);
  }
}

TEST(ReportRecordTest, RecordsWithoutObjectsAreInvalidAndHarmless) {
  AntennaAlignmentReportData site(1, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr);
  PathAlignmentReportData path(1, nullptr, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr);
  site.TakeOwnership();
  path.TakeOwnership();
  for (const IAlignmentReportData* record :
       std::initializer_list<const IAlignmentReportData*>{&site, &path}) {
    EXPECT_FALSE(record->IsValid());
    EXPECT_EQ(record->Identifier(), "");
    EXPECT_EQ(record->Note(), "");
    EXPECT_TRUE(std::isnan(record->AzimuthErrorDegrees()));
    EXPECT_FALSE(record->IsAzimuthWithinThreshold());
    EXPECT_FALSE(record->IsTiltWithinThreshold());
    EXPECT_FALSE(record->IsWithinThresholds());
    const std::unique_ptr<IAlignmentReportData> copy(record->Clone());
    EXPECT_FALSE(copy->IsValid());
  }
}

/// A measurement against the target 10, 2, 3 with the thresholds 1, 0.5 and 0.25.
struct Deviation {
  const char* name;
  Orientation measured;
  float azimuthError;
  float tiltError;
  float rollError;
  bool azimuthWithin;
  bool tiltWithin;
  bool siteWithin;
  bool pathWithin;
};

void PrintTo(const Deviation& deviation, std::ostream* out) { *out << deviation.name; }

std::string DeviationName(const testing::TestParamInfo<Deviation>& info) { return info.param.name; }

class DeviationTest : public testing::TestWithParam<Deviation> {};

TEST_P(DeviationTest, IsComparedWithTheThresholds) {
  const Deviation& expected = GetParam();
  const RecordParts parts(expected.measured);
  const auto site = parts.SiteRecord();
  const auto path = parts.PathRecord();
  for (const IAlignmentReportData* record :
       std::initializer_list<const IAlignmentReportData*>{site.get(), path.get()}) {
    EXPECT_EQ(record->AzimuthErrorDegrees(), expected.azimuthError);
    EXPECT_EQ(record->TiltErrorDegrees(), expected.tiltError);
    EXPECT_EQ(record->RollErrorDegrees(), expected.rollError);
    EXPECT_EQ(record->IsAzimuthWithinThreshold(), expected.azimuthWithin);
    EXPECT_EQ(record->IsTiltWithinThreshold(), expected.tiltWithin);
  }
  EXPECT_EQ(site->IsWithinThresholds(), expected.siteWithin);
  EXPECT_EQ(path->IsWithinThresholds(), expected.pathWithin);
}

const Deviation deviations[] = {
    {"AtThresholds", Orientation(11.0F, 2.5F, 3.25F), 1.0F, 0.5F, 0.25F, true, true, true, true},
    {"AtNegativeThresholds", Orientation(9.0F, 1.5F, 2.75F), -1.0F, -0.5F, -0.25F, true, true, true, true},
    {"AzimuthBeyond", Orientation(11.5F, 2.0F, 3.0F), 1.5F, 0.0F, 0.0F, false, true, false, false},
    {"TiltBeyond", Orientation(10.0F, 2.75F, 3.0F), 0.0F, 0.75F, 0.0F, true, false, false, false},
    // Roll does not count for paths.
    {"RollBeyond", Orientation(10.0F, 2.0F, 2.5F), 0.0F, 0.0F, -0.5F, true, true, false, true},
    {"AzimuthTheShorterWayRound", Orientation(355.0F, 2.0F, 3.0F), -15.0F, 0.0F, 0.0F, false, true, false,
     false},
    {"AzimuthBeyondFullTurn", Orientation(370.5F, 2.0F, 3.0F), 0.5F, 0.0F, 0.0F, true, true, true, true},
};

INSTANTIATE_TEST_SUITE_P(Table, DeviationTest, testing::ValuesIn(deviations), DeviationName);

}  // namespace
