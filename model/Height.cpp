#include "model/Height.h"

namespace {

constexpr double metersPerFoot = 0.3048;

}  // namespace

IHeight::~IHeight() = default;

Height::Height(double heightInMeters, HeightSource heightType)
    : heightInMeters_(heightInMeters), heightType_(heightType) {}

Height::~Height() = default;

void Height::AddObserver(IModelObserver* observer) { ObservableModel::AddObserver(observer); }

void Height::RemoveObserver(IModelObserver* observer) { ObservableModel::RemoveObserver(observer); }

void Height::NotifyObserversOfChange() { ObservableModel::NotifyObserversOfChange(); }

Height* Height::Clone() const {
  auto* copy = new Height(heightInMeters_, heightType_);
  copy->valid_ = valid_;
  copy->measurementTime_ = measurementTime_;
  copy->uncertaintyInMeters_ = uncertaintyInMeters_;
  return copy;
}

bool Height::IsValid() const { return valid_; }

void Height::Invalidate() {
  valid_ = false;
  NotifyObserversOfChange();
}

void Height::SetHeight(double meters, HeightSource type) {
  heightInMeters_ = meters;
  heightType_ = type;
  valid_ = true;
  NotifyObserversOfChange();
}

void Height::SetHeightInMeters(double meters) { SetHeight(meters, heightType_); }

void Height::SetHeightInFeet(double feet) { SetHeight(feet * metersPerFoot, heightType_); }

void Height::SetHeightType(HeightSource type) {
  heightType_ = type;
  NotifyObserversOfChange();
}

double Height::HeightInFeet(bool* valid) const { return HeightInMeters(valid) / metersPerFoot; }

bool Height::IsFromGps() const { return heightType_ == HeightSource::Gps; }

QDateTime Height::MeasurementTime() const { return measurementTime_; }

void Height::SetMeasurementTime(const QDateTime& time) {
  measurementTime_ = time;
  NotifyObserversOfChange();
}

double Height::UncertaintyInMeters() const { return uncertaintyInMeters_; }

void Height::SetUncertaintyInMeters(double meters) {
  uncertaintyInMeters_ = meters;
  NotifyObserversOfChange();
}

HeightSource Height::HeightType() const { return heightType_; }

double Height::HeightInMeters(bool* valid) const {
  if (valid != nullptr) {
    *valid = valid_;
  }
  return heightInMeters_;
}
