#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A geoid model to which elevations refer.
class TARNBEAMDATABASE_EXPORT GeoidFormatSetting : public SettingValue {
 public:
  using SettingValue::SettingValue;
};
