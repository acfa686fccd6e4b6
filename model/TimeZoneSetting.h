#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A time zone in which times are shown.
class TARNBEAMDATABASE_EXPORT TimeZoneSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
