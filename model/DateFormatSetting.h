#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A way of writing dates.
class TARNBEAMDATABASE_EXPORT DateFormatSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
