#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A time zone in which times are shown.
class TARNBEAMDATABASE_EXPORT TimeZoneSetting : public SettingValue {
 public:
  using SettingValue::SettingValue;
};
