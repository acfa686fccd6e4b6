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
  /// Unit in which distances and heights are shown.
  virtual EnumeratedSetting<DistanceUnitsSetting>* DistanceUnits() = 0;

  /// Saved with the preferences but never restored.
  virtual EnumeratedSetting<AzimuthOffsetSetting>* AzimuthOffset() = 0;
  /// Form in which dates are shown.
  virtual EnumeratedSetting<DateFormatSetting>* DateFormat() = 0;
  /// Form in which coordinates are shown.
  virtual EnumeratedSetting<CoordinateFormatSetting>* CoordinateFormat() = 0;
  /// Delay until the instrument switches itself off.
  virtual EnumeratedSetting<AutoShutOffDelaySetting>* AutoShutoffDelay() = 0;
  /// Geodetic datum of coordinates.
  virtual EnumeratedSetting<DatumFormatSetting>* DatumFormat() = 0;
  /// Where heights come from.
  virtual EnumeratedSetting<HeightSourceSetting>* HeightSource() = 0;
  /// Time zone in which times are shown.
  virtual EnumeratedSetting<TimeZoneSetting>* TimeZone() = 0;
  /// Whether and how Bluetooth is used.
  virtual EnumeratedSetting<BluetoothModeSetting>* BluetoothMode() = 0;
  /// Whether crosshairs are drawn.
  virtual Setting<bool>* ShowCrosshairs() = 0;
  /// Whether the target is drawn.
  virtual Setting<bool>* ShowTarget() = 0;
  /// Whether the camera is used.
  virtual Setting<bool>* CameraEnabled() = 0;
  /// Whether sounds are made.
  virtual Setting<bool>* SoundEnabled() = 0;
  /// Whether the serial number has been set.
  virtual Setting<bool>* SerialNumberValid() = 0;

  /// Degrees.
  virtual Setting<double>* AzimuthThreshold() = 0;

  /// Degrees.
  virtual Setting<double>* TiltThreshold() = 0;

  /// Degrees.
  virtual Setting<double>* RollThreshold() = 0;

  /// Calibration value of the accelerometer.
  virtual Setting<double>* AccelerometerXOffset() = 0;
  /// As for the x axis.
  virtual Setting<double>* AccelerometerYOffset() = 0;
  /// As for the x axis.
  virtual Setting<double>* AccelerometerZOffset() = 0;
  /// Calibration value of the accelerometer.
  virtual Setting<double>* AccelerometerXGain() = 0;
  /// As for the x axis.
  virtual Setting<double>* AccelerometerZGain() = 0;

  /// When the instrument was calibrated, as text.
  virtual Setting<QString>* CalibrationDate() = 0;

  /// Serial number of the instrument.
  virtual Setting<int>* SerialNumber() = 0;
  /// Whether daylight saving time is in force.
  virtual Setting<bool>* DaylightSavingsEnabled() = 0;
  /// Whether the calibration values are real ones.
  virtual Setting<bool>* AccelerometerCalibrated() = 0;

  /// Checksum of the satellite receiver file last loaded.
  virtual Setting<int>* GNSSFileCRC() = 0;
  /// Whether the tilt indicator is shown.
  virtual Setting<bool>* TiltIndicatorEnabled() = 0;
  /// Whether the roll indicator is shown.
  virtual Setting<bool>* RollIndicatorEnabled() = 0;
  /// Whether tilt inversion is in force.
  virtual Setting<bool>* TiltInversionEnabled() = 0;
  /// Name shown to Bluetooth peers.
  virtual Setting<QString>* BluetoothDisplayName() = 0;

  /// Whether roll is shown with the higher precision.
  virtual Setting<bool>* RollPrecision() = 0;
  /// Geoid that heights refer to.
  virtual EnumeratedSetting<GeoidFormatSetting>* GeoidFormat() = 0;

  /// Identification of the technician.
  virtual Setting<QString>* UserTechId() = 0;
  /// Whether path lengths are checked.
  virtual Setting<bool>* PathLengthThresholdEnabled() = 0;

  /// In force only while it is enabled; in the application's unit, which the files do not fix.
  virtual Setting<double>* PathLengthThreshold() = 0;

  virtual ~IPreferencesModel();
};
