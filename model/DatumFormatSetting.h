#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A geodetic datum in which positions are shown.
class TARNBEAMDATABASE_EXPORT DatumFormatSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
