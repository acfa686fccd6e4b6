#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A time without use after which the instrument switches itself off.
class TARNBEAMDATABASE_EXPORT AutoShutOffDelaySetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
