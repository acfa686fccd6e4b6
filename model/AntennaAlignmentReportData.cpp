#include "model/AntennaAlignmentReportData.h"

#include <cmath>
#include <utility>

#include "model/CloneOrNull.h"
#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IMeasurementOptions.h"
#include "model/IOrientation.h"
#include "model/ISiteInformation.h"

AntennaAlignmentReportData::AntennaAlignmentReportData(unsigned int antennaAlignmentKey,
                                                       ISiteInformation* siteInformation,
                                                       IGeolocation* geolocation,
                                                       IOrientation* measuredOrientation, IHeight* height,
                                                       QDateTime measurementTime,
                                                       IMeasurementOptions* measurementOptions)
    : AlignmentReportData(geolocation, measuredOrientation, height, std::move(measurementTime),
                          measurementOptions),
      antennaAlignmentKey_(antennaAlignmentKey),
      siteInformation_(siteInformation) {}

AntennaAlignmentReportData::~AntennaAlignmentReportData() {
  if (OwnsObjects()) {
    delete siteInformation_;
  }
}

AntennaAlignmentReportData* AntennaAlignmentReportData::Clone() const {
  auto* copy = new AntennaAlignmentReportData(antennaAlignmentKey_, CloneOrNull(siteInformation_),
                                              CloneOrNull(GetGeolocation()),
                                              CloneOrNull(GetMeasuredOrientation()), CloneOrNull(GetHeight()),
                                              GetMeasurementTime(), CloneOrNull(GetMeasurementOptions()));
  copy->TakeOwnership();
  return copy;
}

QString AntennaAlignmentReportData::Identifier() const {
  return siteInformation_ == nullptr ? QString() : siteInformation_->SiteIdentifier();
}

bool AntennaAlignmentReportData::IsWithinThresholds() const {
  return IsAzimuthWithinThreshold() && IsTiltWithinThreshold() &&
         std::fabs(RollErrorDegrees()) <= GetMeasurementOptions()->RollThreshold();
}

ISiteInformation* AntennaAlignmentReportData::GetSiteInformation() const { return siteInformation_; }

unsigned int AntennaAlignmentReportData::AntennaAlignmentKey() const { return antennaAlignmentKey_; }
