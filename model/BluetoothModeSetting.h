#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A mode of the Bluetooth radio.
class TARNBEAMDATABASE_EXPORT BluetoothModeSetting : public SettingValue {
 public:
  using SettingValue::SettingValue;
};
