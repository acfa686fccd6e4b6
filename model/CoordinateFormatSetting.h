#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A way of writing latitude and longitude.
class TARNBEAMDATABASE_EXPORT CoordinateFormatSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
