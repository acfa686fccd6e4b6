#include "model/PathAlignmentReportData.h"

#include <utility>

#include "model/CloneOrNull.h"
#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IMeasurementOptions.h"
#include "model/IOrientation.h"
#include "model/IPathInformation.h"

PathAlignmentReportData::PathAlignmentReportData(unsigned int pathAlignmentKey,
                                                 IPathInformation* pathInformation, IGeolocation* geolocation,
                                                 IOrientation* measuredOrientation, IHeight* height,
                                                 IOrientation* targetOrientation, QDateTime measurementTime,
                                                 IMeasurementOptions* measurementOptions)
    : AlignmentReportData(geolocation, measuredOrientation, height, std::move(measurementTime),
                          measurementOptions),
      pathAlignmentKey_(pathAlignmentKey),
      pathInformation_(pathInformation),
      targetOrientation_(targetOrientation) {}

PathAlignmentReportData::~PathAlignmentReportData() {
  if (OwnsObjects()) {
    delete pathInformation_;
    delete targetOrientation_;
  }
}

PathAlignmentReportData* PathAlignmentReportData::Clone() const {
  auto* copy = new PathAlignmentReportData(
      pathAlignmentKey_, CloneOrNull(pathInformation_), CloneOrNull(GetGeolocation()),
      CloneOrNull(GetMeasuredOrientation()), CloneOrNull(GetHeight()), CloneOrNull(targetOrientation_),
      GetMeasurementTime(), CloneOrNull(GetMeasurementOptions()));
  copy->TakeOwnership();
  return copy;
}

QString PathAlignmentReportData::Identifier() const {
  return pathInformation_ == nullptr ? QString() : pathInformation_->PathIdentifier();
}

bool PathAlignmentReportData::IsWithinThresholds() const {
  return IsAzimuthWithinThreshold() && IsTiltWithinThreshold();
}

IPathInformation* PathAlignmentReportData::GetPathInformation() const { return pathInformation_; }

IOrientation* PathAlignmentReportData::GetTargetOrientation() const { return targetOrientation_; }

unsigned int PathAlignmentReportData::PathAlignmentKey() const { return pathAlignmentKey_; }
