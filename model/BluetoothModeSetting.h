#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A mode of the Bluetooth radio.
class TARNBEAMDATABASE_EXPORT BluetoothModeSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
