#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A geodetic datum in which positions are shown.
class TARNBEAMDATABASE_EXPORT DatumFormatSetting : public SettingValue {
 public:
  using SettingValue::SettingValue;
};
