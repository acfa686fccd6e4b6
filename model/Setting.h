#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/ObservableModel.h"

/// A preference holding a plain value: bool, int, double or text.
template <typename T>
class TARNBEAMDATABASE_EXPORT Setting : public ObservableModel {
 public:
  /// The value at first; nobody is notified of it.
  explicit Setting(const T& value) : value_(value) {}

  /// The value in force.
  T Value() const { return value_; }

  /// Takes the value over and notifies, even if it is the one already held.
  virtual void SetValue(const T& value) {
    value_ = value;
    NotifyObserversOfChange();
  }

 private:
  T value_;
};
