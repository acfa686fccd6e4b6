#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A way of obtaining the antenna height.
class TARNBEAMDATABASE_EXPORT HeightSourceSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
