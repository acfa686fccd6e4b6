#pragma once

#include <QVector>

#include "TarnbeamDatabaseExport.h"
#include "model/ObservableModel.h"

/// A preference with a fixed list of allowed values, each known by a key; the key is what database files
/// hold. `T` has `unsigned int Key() const`. The setting owns none of the values: they have to outlive it.
template <typename T>
class TARNBEAMDATABASE_EXPORT EnumeratedSetting : public ObservableModel {
 public:
  /// `currentValue` may be null.
  EnumeratedSetting(const QVector<T*>& allowedValues, T* currentValue)
      : allowedValues_(allowedValues), currentValue_(currentValue) {}

  /// The value in force; null if the setting was built without one and none was assigned.
  T* CurrentValue() const { return currentValue_; }

  /// In the order in which keys are looked up.
  const QVector<T*>& AllowedValues() const { return allowedValues_; }

  /// Makes the first allowed value with this key the current one and notifies, even if it already was the
  /// current one. A key that no value has changes nothing and gives false; null entries match no key.
  virtual bool AssignValueWithKey(unsigned int key) {
    for (T* value : allowedValues_) {
      if (value != nullptr && value->Key() == key) {
        currentValue_ = value;
        NotifyObserversOfChange();
        return true;
      }
    }
    return false;
  }

 private:
  const QVector<T*> allowedValues_;
  T* currentValue_;
};
