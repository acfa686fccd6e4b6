#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// How long the instrument is left unused before it switches itself off.
class TARNBEAMDATABASE_EXPORT AutoShutOffDelaySetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
