#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"
#include "model/AutoShutOffDelaySetting.h"
#include "model/AzimuthOffsetSetting.h"
#include "model/BluetoothModeSetting.h"
#include "model/CoordinateFormatSetting.h"
#include "model/DateFormatSetting.h"
#include "model/DatumFormatSetting.h"
#include "model/DistanceUnitsSetting.h"
#include "model/EnumeratedSetting.h"
#include "model/GeoidFormatSetting.h"
#include "model/HeightSourceSetting.h"
#include "model/Setting.h"
#include "model/TimeZoneSetting.h"

/// The user's preferences and the calibration values of the instrument, one setting each. The model
/// owns the settings. The order of the virtual operations is binary interface.
class TARNBEAMDATABASE_EXPORT IPreferencesModel {
 public:
  virtual EnumeratedSetting<DistanceUnitsSetting>* DistanceUnits() = 0;

  /// Saved with the preferences but never restored.
  virtual EnumeratedSetting<AzimuthOffsetSetting>* AzimuthOffset() = 0;
  virtual EnumeratedSetting<DateFormatSetting>* DateFormat() = 0;
  virtual EnumeratedSetting<CoordinateFormatSetting>* CoordinateFormat() = 0;
  virtual EnumeratedSetting<AutoShutOffDelaySetting>* AutoShutoffDelay() = 0;
  virtual EnumeratedSetting<DatumFormatSetting>* DatumFormat() = 0;
  virtual EnumeratedSetting<HeightSourceSetting>* HeightSource() = 0;
  virtual EnumeratedSetting<TimeZoneSetting>* TimeZone() = 0;
  virtual EnumeratedSetting<BluetoothModeSetting>* BluetoothMode() = 0;
  virtual Setting<bool>* ShowCrosshairs() = 0;
  virtual Setting<bool>* ShowTarget() = 0;
  virtual Setting<bool>* CameraEnabled() = 0;
  virtual Setting<bool>* SoundEnabled() = 0;
  virtual Setting<bool>* SerialNumberValid() = 0;

  /// Degrees.
  virtual Setting<double>* AzimuthThreshold() = 0;

  /// Degrees.
  virtual Setting<double>* TiltThreshold() = 0;

  /// Degrees.
  virtual Setting<double>* RollThreshold() = 0;

  /// Calibration values of the accelerometer: offsets and gains by axis.
  virtual Setting<double>* AccelerometerXOffset() = 0;
  virtual Setting<double>* AccelerometerYOffset() = 0;
  virtual Setting<double>* AccelerometerZOffset() = 0;
  virtual Setting<double>* AccelerometerXGain() = 0;
  virtual Setting<double>* AccelerometerZGain() = 0;

  /// When the instrument was calibrated, as text.
  virtual Setting<QString>* CalibrationDate() = 0;

  /// Serial number of the instrument.
  virtual Setting<int>* SerialNumber() = 0;
  virtual Setting<bool>* DaylightSavingsEnabled() = 0;
  virtual Setting<bool>* AccelerometerCalibrated() = 0;

  /// Checksum of the satellite receiver file last loaded.
  virtual Setting<int>* GNSSFileCRC() = 0;
  virtual Setting<bool>* TiltIndicatorEnabled() = 0;
  virtual Setting<bool>* RollIndicatorEnabled() = 0;
  virtual Setting<bool>* TiltInversionEnabled() = 0;
  virtual Setting<QString>* BluetoothDisplayName() = 0;

  /// Whether roll is shown with the higher precision.
  virtual Setting<bool>* RollPrecision() = 0;
  virtual EnumeratedSetting<GeoidFormatSetting>* GeoidFormat() = 0;

  /// Identification of the technician.
  virtual Setting<QString>* UserTechId() = 0;
  virtual Setting<bool>* PathLengthThresholdEnabled() = 0;

  /// In force only while it is enabled.
  virtual Setting<double>* PathLengthThreshold() = 0;

  virtual ~IPreferencesModel();
};
