#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A geoid model to which elevations refer.
class TARNBEAMDATABASE_EXPORT GeoidFormatSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
