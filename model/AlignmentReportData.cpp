#include "model/AlignmentReportData.h"

#include <cmath>
#include <limits>
#include <utility>

#include "model/IGeolocation.h"
#include "model/IHeight.h"
#include "model/IMeasurementOptions.h"
#include "model/IOrientation.h"
#include "model/IPathInformation.h"
#include "model/ISiteInformation.h"

namespace {

const IOrientation* TargetOf(const IAntennaAlignmentReportData& record) {
  const ISiteInformation* site = record.GetSiteInformation();
  return site == nullptr ? nullptr : site->TargetOrientation();
}

const IOrientation* TargetOf(const IPathAlignmentReportData& record) { return record.GetTargetOrientation(); }

bool HasSubject(const IAntennaAlignmentReportData& record) { return record.GetSiteInformation() != nullptr; }

bool HasSubject(const IPathAlignmentReportData& record) { return record.GetPathInformation() != nullptr; }

/// Measured minus target of one angle. Not-a-number fails every comparison with a threshold.
template <typename Record>
float ErrorOf(const Record& record, float (IOrientation::*angle)() const) {
  const IOrientation* measured = record.GetMeasuredOrientation();
  const IOrientation* target = TargetOf(record);
  if (measured == nullptr || target == nullptr) {
    return std::numeric_limits<float>::quiet_NaN();
  }
  return (measured->*angle)() - (target->*angle)();
}

}  // namespace

IAlignmentReportData::~IAlignmentReportData() = default;

IAntennaAlignmentReportData::~IAntennaAlignmentReportData() = default;

IPathAlignmentReportData::~IPathAlignmentReportData() = default;

template <typename Interface>
AlignmentReportData<Interface>::AlignmentReportData(IGeolocation* geolocation,
                                                    IOrientation* measuredOrientation, IHeight* height,
                                                    QDateTime measurementTime,
                                                    IMeasurementOptions* measurementOptions)
    : geolocation_(geolocation),
      measuredOrientation_(measuredOrientation),
      height_(height),
      measurementTime_(std::move(measurementTime)),
      measurementOptions_(measurementOptions) {}

template <typename Interface>
AlignmentReportData<Interface>::~AlignmentReportData() {
  if (ownsObjects_) {
    delete geolocation_;
    delete measuredOrientation_;
    delete height_;
    delete measurementOptions_;
  }
}

template <typename Interface>
void AlignmentReportData<Interface>::TakeOwnership() {
  ownsObjects_ = true;
}

template <typename Interface>
bool AlignmentReportData<Interface>::IsValid() const {
  return HasSubject(*this) && TargetOf(*this) != nullptr && geolocation_ != nullptr &&
         measuredOrientation_ != nullptr && height_ != nullptr && measurementOptions_ != nullptr;
}

template <typename Interface>
QString AlignmentReportData<Interface>::Note() const {
  return measurementOptions_ == nullptr ? QString() : measurementOptions_->Note();
}

template <typename Interface>
float AlignmentReportData<Interface>::AzimuthErrorDegrees() const {
  return std::remainder(ErrorOf(*this, &IOrientation::AzimuthDegrees), 360.0F);
}

template <typename Interface>
float AlignmentReportData<Interface>::TiltErrorDegrees() const {
  return ErrorOf(*this, &IOrientation::TiltDegrees);
}

template <typename Interface>
float AlignmentReportData<Interface>::RollErrorDegrees() const {
  return ErrorOf(*this, &IOrientation::RollDegrees);
}

template <typename Interface>
bool AlignmentReportData<Interface>::IsAzimuthWithinThreshold() const {
  return measurementOptions_ != nullptr &&
         std::fabs(this->AzimuthErrorDegrees()) <= measurementOptions_->AzimuthThreshold();
}

template <typename Interface>
bool AlignmentReportData<Interface>::IsTiltWithinThreshold() const {
  return measurementOptions_ != nullptr &&
         std::fabs(this->TiltErrorDegrees()) <= measurementOptions_->TiltThreshold();
}

template <typename Interface>
IGeolocation* AlignmentReportData<Interface>::GetGeolocation() const {
  return geolocation_;
}

template <typename Interface>
IOrientation* AlignmentReportData<Interface>::GetMeasuredOrientation() const {
  return measuredOrientation_;
}

template <typename Interface>
IHeight* AlignmentReportData<Interface>::GetHeight() const {
  return height_;
}

template <typename Interface>
QDateTime AlignmentReportData<Interface>::GetMeasurementTime() const {
  return measurementTime_;
}

template <typename Interface>
IMeasurementOptions* AlignmentReportData<Interface>::GetMeasurementOptions() const {
  return measurementOptions_;
}

template class AlignmentReportData<IAntennaAlignmentReportData>;
template class AlignmentReportData<IPathAlignmentReportData>;
