#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A way of writing dates.
class TARNBEAMDATABASE_EXPORT DateFormatSetting : public SettingValue {
 public:
  using SettingValue::SettingValue;
};
