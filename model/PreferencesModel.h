#pragma once

#include <memory>

#include "TarnbeamDatabaseExport.h"
#include "model/IPreferencesModel.h"

/// Preferences with the values an instrument is delivered with. Owns its settings and their values.
class TARNBEAMDATABASE_EXPORT PreferencesModel : public IPreferencesModel {
 public:
  PreferencesModel();
  PreferencesModel(const PreferencesModel&) = delete;
  PreferencesModel& operator=(const PreferencesModel&) = delete;

  EnumeratedSetting<DistanceUnitsSetting>* DistanceUnits() override;
  EnumeratedSetting<AzimuthOffsetSetting>* AzimuthOffset() override;
  EnumeratedSetting<DateFormatSetting>* DateFormat() override;
  EnumeratedSetting<CoordinateFormatSetting>* CoordinateFormat() override;
  EnumeratedSetting<AutoShutOffDelaySetting>* AutoShutoffDelay() override;
  EnumeratedSetting<DatumFormatSetting>* DatumFormat() override;
  EnumeratedSetting<HeightSourceSetting>* HeightSource() override;
  EnumeratedSetting<TimeZoneSetting>* TimeZone() override;
  EnumeratedSetting<BluetoothModeSetting>* BluetoothMode() override;
  Setting<bool>* ShowCrosshairs() override;
  Setting<bool>* ShowTarget() override;
  Setting<bool>* CameraEnabled() override;
  Setting<bool>* SoundEnabled() override;
  Setting<bool>* SerialNumberValid() override;
  Setting<double>* AzimuthThreshold() override;
  Setting<double>* TiltThreshold() override;
  Setting<double>* RollThreshold() override;
  Setting<double>* AccelerometerXOffset() override;
  Setting<double>* AccelerometerYOffset() override;
  Setting<double>* AccelerometerZOffset() override;
  Setting<double>* AccelerometerXGain() override;
  Setting<double>* AccelerometerZGain() override;
  Setting<QString>* CalibrationDate() override;
  Setting<int>* SerialNumber() override;
  Setting<bool>* DaylightSavingsEnabled() override;
  Setting<bool>* AccelerometerCalibrated() override;
  Setting<int>* GNSSFileCRC() override;
  Setting<bool>* TiltIndicatorEnabled() override;
  Setting<bool>* RollIndicatorEnabled() override;
  Setting<bool>* TiltInversionEnabled() override;
  Setting<QString>* BluetoothDisplayName() override;
  Setting<bool>* RollPrecision() override;
  EnumeratedSetting<GeoidFormatSetting>* GeoidFormat() override;
  Setting<QString>* UserTechId() override;
  Setting<bool>* PathLengthThresholdEnabled() override;
  Setting<double>* PathLengthThreshold() override;
  ~PreferencesModel() override;

 private:
  struct Settings;
  const std::unique_ptr<Settings> settings_;
};
