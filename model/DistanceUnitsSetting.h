#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/SettingValue.h"

/// A unit in which distances and heights are shown.
class TARNBEAMDATABASE_EXPORT DistanceUnitsSetting : public SettingValue {
 public:
  /// Constructed from its key and its name.
  using SettingValue::SettingValue;
};
