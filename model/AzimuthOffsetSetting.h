#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A mounting direction, added to the measured azimuth.
class TARNBEAMDATABASE_EXPORT AzimuthOffsetSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
