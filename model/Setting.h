#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/ObservableModel.h"

/// A preference holding a plain value: bool, int, double or text.
template <typename T>
class TARNBEAMDATABASE_EXPORT Setting : public ObservableModel {
 public:
  explicit Setting(const T& value) : value_(value) {}

  T Value() const { return value_; }

  /// Takes the value over and notifies, also when it is the one already held.
  virtual void SetValue(const T& value) {
    value_ = value;
    NotifyObserversOfChange();
  }

 private:
  T value_;
};
