#include "tests/model/SlotPosition.h"

#include <gtest/gtest.h>

#include <numeric>

#include "model/AlignerModel.h"
#include "model/AntennaAlignmentReportData.h"
#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IMeasurementOptions.h"
#include "model/IOrientation.h"
#include "model/IPathInformation.h"
#include "model/ISiteInformation.h"
#include "model/PathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/model/Counted.h"

namespace {

using Positions = std::vector<int>;

Positions Range(int first, int last) {
  Positions positions(static_cast<std::size_t>(last - first + 1));
  std::iota(positions.begin(), positions.end(), first);
  return positions;
}

TEST(SlotPositionTest, PlainMemberHasNone) {
  EXPECT_EQ(SlotPosition(&IPathInformation::TargetGeolocation), 0);
}

TEST(SlotPositionTest, Orientation) {
  EXPECT_EQ(
      SlotPositions(&IOrientation::AzimuthDegrees, &IOrientation::TiltDegrees, &IOrientation::RollDegrees),
      Range(1, 3));
}

TEST(SlotPositionTest, Geolocation) {
  EXPECT_EQ(SlotPositions(&IGeolocation::Datum, &IGeolocation::FixTime, &IGeolocation::IsValid,
                          &IGeolocation::LatitudeDegreesNorth, &IGeolocation::LongitudeDegreesEast,
                          &IGeolocation::ElevationMeters),
            Range(1, 6));
}

TEST(SlotPositionTest, Height) {
  EXPECT_EQ(SlotPositions(&IHeight::HeightType, &IHeight::HeightInMeters), Range(17, 18));
}

TEST(SlotPositionTest, SiteInformation) {
  EXPECT_EQ(SlotPositions(&ISiteInformation::SiteIdentifier, &ISiteInformation::SectorName,
                          &ISiteInformation::AntennaPosition, &ISiteInformation::TargetOrientation),
            Range(6, 9));
}

TEST(SlotPositionTest, PathInformation) {
  EXPECT_EQ(SlotPositions(&IPathInformation::PathIdentifier, &IPathInformation::PathLocation), Range(6, 7));
}

TEST(SlotPositionTest, MeasurementOptions) {
  EXPECT_EQ(SlotPositions(&IMeasurementOptions::AzimuthOffset, &IMeasurementOptions::TiltInversionEnabled,
                          &IMeasurementOptions::Note, &IMeasurementOptions::RollPrecision,
                          &IMeasurementOptions::AzimuthThreshold, &IMeasurementOptions::TiltThreshold,
                          &IMeasurementOptions::RollThreshold, &IMeasurementOptions::PathLengthThreshold),
            Range(1, 8));
}

TEST(SlotPositionTest, AntennaAlignmentReportData) {
  using Record = IAntennaAlignmentReportData;
  EXPECT_EQ(SlotPositions(&Record::GetGeolocation, &Record::GetMeasuredOrientation, &Record::GetHeight,
                          &Record::GetMeasurementTime, &Record::GetSiteInformation,
                          &Record::AntennaAlignmentKey, &Record::GetMeasurementOptions),
            Range(13, 19));
}

TEST(SlotPositionTest, PathAlignmentReportData) {
  using Record = IPathAlignmentReportData;
  EXPECT_EQ(
      SlotPositions(&Record::GetGeolocation, &Record::GetMeasuredOrientation, &Record::GetHeight,
                    &Record::GetMeasurementTime, &Record::GetPathInformation, &Record::GetTargetOrientation,
                    &Record::PathAlignmentKey, &Record::GetMeasurementOptions),
      Range(13, 20));
}

template <typename Record>
void ExpectTenOperationsBeforeDestructor() {
  EXPECT_EQ(SlotPositions(&Record::Clone, &Record::IsValid, &Record::Identifier, &Record::Note,
                          &Record::AzimuthErrorDegrees, &Record::TiltErrorDegrees, &Record::RollErrorDegrees,
                          &Record::IsAzimuthWithinThreshold, &Record::IsTiltWithinThreshold,
                          &Record::IsWithinThresholds),
            Range(1, 10));
}

TEST(SlotPositionTest, DestructorOfReportRecordsIsEleventhAndTwelfth) {
  ExpectTenOperationsBeforeDestructor<IAntennaAlignmentReportData>();
  ExpectTenOperationsBeforeDestructor<IPathAlignmentReportData>();
  int destroyed = 0;
  IAntennaAlignmentReportData* site = new Counted<AntennaAlignmentReportData>(
      &destroyed, 1U, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr);
  DeleteThroughSlot(site, 12);
  EXPECT_EQ(destroyed, 1);
  IPathAlignmentReportData* path = new Counted<PathAlignmentReportData>(
      &destroyed, 1U, nullptr, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr);
  DeleteThroughSlot(path, 12);
  EXPECT_EQ(destroyed, 2);
}

TEST(SlotPositionTest, AlignerModel) {
  EXPECT_EQ(SlotPositions(&IAlignerModel::AddObserver, &IAlignerModel::RemoveObserver,
                          &IAlignerModel::CurrentPathInformation, &IAlignerModel::HasCurrentPath,
                          &IAlignerModel::CurrentSiteInformation, &IAlignerModel::HasCurrentSite,
                          &IAlignerModel::SetCurrentSiteInformation, &IAlignerModel::ClearCurrentSite,
                          &IAlignerModel::SetCurrentPathInformation, &IAlignerModel::ClearCurrentPath),
            Range(1, 10));
}

TEST(SlotPositionTest, PreferencesModel) {
  using Model = IPreferencesModel;
  EXPECT_EQ(SlotPositions(
                &Model::DistanceUnits, &Model::AzimuthOffset, &Model::DateFormat, &Model::CoordinateFormat,
                &Model::AutoShutoffDelay, &Model::DatumFormat, &Model::HeightSource, &Model::TimeZone,
                &Model::BluetoothMode, &Model::ShowCrosshairs, &Model::ShowTarget, &Model::CameraEnabled,
                &Model::SoundEnabled, &Model::SerialNumberValid, &Model::AzimuthThreshold,
                &Model::TiltThreshold, &Model::RollThreshold, &Model::AccelerometerXOffset,
                &Model::AccelerometerYOffset, &Model::AccelerometerZOffset, &Model::AccelerometerXGain,
                &Model::AccelerometerZGain, &Model::CalibrationDate, &Model::SerialNumber,
                &Model::DaylightSavingsEnabled, &Model::AccelerometerCalibrated, &Model::GNSSFileCRC,
                &Model::TiltIndicatorEnabled, &Model::RollIndicatorEnabled, &Model::TiltInversionEnabled,
                &Model::BluetoothDisplayName, &Model::RollPrecision, &Model::GeoidFormat, &Model::UserTechId,
                &Model::PathLengthThresholdEnabled, &Model::PathLengthThreshold),
            Range(1, 36));
}

TEST(SlotPositionTest, ReportContainers) {
  EXPECT_EQ(SlotPositions(&IReportData::Name, &IReportData::GetReportType, &IPdfReportData::FileName),
            Range(1, 3));
  int destroyed = 0;
  DeleteThroughSlot(new Counted<AntennaAlignmentPdfReportData>(&destroyed, QString(), QString(),
                                                               new QVector<IAntennaAlignmentReportData*>()),
                    5);
  EXPECT_EQ(destroyed, 1);
  DeleteThroughSlot(new Counted<PathAlignmentPdfReportData>(&destroyed, QString(), QString(),
                                                            new QVector<IPathAlignmentReportData*>()),
                    5);
  EXPECT_EQ(destroyed, 2);
}

}  // namespace
