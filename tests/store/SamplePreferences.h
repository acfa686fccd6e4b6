#pragma once

#include <QRegularExpression>
#include <QStringList>
#include <vector>

#include <gtest/gtest.h>

#include "model/PreferencesModel.h"

// Three values that no instrument would have: their keys are anything a database may hold.
template <typename T>
class KeyedSetting {
 public:
  explicit KeyedSetting(unsigned int key) : values_{T(key, "a"), T(key + 1, "b"), T(0, "none")} {}
  EnumeratedSetting<T>* Get() { return &setting_; }

 private:
  T values_[3];
  EnumeratedSetting<T> setting_{{&values_[0], &values_[1], &values_[2]}, &values_[2]};
};

// Preferences whose enumerated settings have two keys of their own each, the one below and the next; the
// current key is 0 at first.
class SamplePreferences : public PreferencesModel {
 public:
  EnumeratedSetting<DistanceUnitsSetting>* DistanceUnits() override { return distanceUnits_.Get(); }
  EnumeratedSetting<AzimuthOffsetSetting>* AzimuthOffset() override { return azimuthOffset_.Get(); }
  EnumeratedSetting<DateFormatSetting>* DateFormat() override { return dateFormat_.Get(); }
  EnumeratedSetting<CoordinateFormatSetting>* CoordinateFormat() override { return coordinateFormat_.Get(); }
  EnumeratedSetting<AutoShutOffDelaySetting>* AutoShutoffDelay() override { return autoShutoffDelay_.Get(); }
  EnumeratedSetting<DatumFormatSetting>* DatumFormat() override { return datumFormat_.Get(); }
  EnumeratedSetting<HeightSourceSetting>* HeightSource() override { return heightSource_.Get(); }
  EnumeratedSetting<TimeZoneSetting>* TimeZone() override { return timeZone_.Get(); }
  EnumeratedSetting<BluetoothModeSetting>* BluetoothMode() override { return bluetoothMode_.Get(); }
  EnumeratedSetting<GeoidFormatSetting>* GeoidFormat() override { return geoidFormat_.Get(); }

 private:
  KeyedSetting<DistanceUnitsSetting> distanceUnits_{101};
  KeyedSetting<AzimuthOffsetSetting> azimuthOffset_{102};
  KeyedSetting<DateFormatSetting> dateFormat_{103};
  KeyedSetting<CoordinateFormatSetting> coordinateFormat_{104};
  KeyedSetting<DatumFormatSetting> datumFormat_{105};
  KeyedSetting<HeightSourceSetting> heightSource_{106};
  KeyedSetting<AutoShutOffDelaySetting> autoShutoffDelay_{2147483646};  // and the largest int
  KeyedSetting<BluetoothModeSetting> bluetoothMode_{2147483648U};       // the smallest int
  KeyedSetting<TimeZoneSetting> timeZone_{4294967294U};                 // -2 and -1
  KeyedSetting<GeoidFormatSetting> geoidFormat_{133};
};

// What is known of one column of a preferences row.
struct PreferenceSample {
  const char* column;
  unsigned int firstVersion;
  const char* bindFailure;
  const char* bind;     // the engine's call
  const char* written;  // the value that is written when it is the sample's, as the database quotes it
  ObservableModel* (*setting)(IPreferencesModel*);
  void (*assign)(IPreferencesModel*);  // makes the sample's value the current one
};

template <auto accessor>
ObservableModel* SettingOf(IPreferencesModel* model) {
  return (model->*accessor)();
}

using Preferences = IPreferencesModel;

template <auto accessor, unsigned int key>
constexpr PreferenceSample Key(const char* column, unsigned int first, const char* failure,
                               const char* written) {
  return {column, first, failure, "bind_int", written, SettingOf<accessor>, [](Preferences* model) {
            EXPECT_TRUE((model->*accessor)()->AssignValueWithKey(key));
          }};
}
template <auto accessor>
constexpr PreferenceSample Flag(const char* column, unsigned int first, const char* failure) {
  return {column, first, failure, "bind_int", "1", SettingOf<accessor>, [](Preferences* model) {
            (model->*accessor)()->SetValue(true);
          }};
}
template <auto accessor, int value>
constexpr PreferenceSample Number(const char* column, unsigned int first, const char* failure,
                                  const char* written) {
  return {column, first, failure, "bind_int", written, SettingOf<accessor>, [](Preferences* model) {
            (model->*accessor)()->SetValue(value);
          }};
}
// Eighths, so that every value is exact in binary.
template <auto accessor, int eighths>
constexpr PreferenceSample Real(const char* column, unsigned int first, const char* failure,
                                const char* written) {
  return {column, first, failure, "bind_double", written, SettingOf<accessor>, [](Preferences* model) {
            (model->*accessor)()->SetValue(eighths / 8.0);
          }};
}
template <auto accessor, int number>
constexpr PreferenceSample Words(const char* column, unsigned int first, const char* failure,
                                 const char* written) {
  return {column, first, failure, "bind_text", written, SettingOf<accessor>, [](Preferences* model) {
            (model->*accessor)()->SetValue(QString::fromUtf8("Gerät №%1 ✓").arg(number));
          }};
}

// The row of the main file, in the order of its positions.
inline const std::vector<PreferenceSample>& MainSamples() {
  using P = Preferences;
  static const std::vector<PreferenceSample> samples = {
      Key<&P::DistanceUnits, 101>("DistanceUnits", 1, "SQL bind DistanceKey failed with ", "101"),
      Key<&P::AzimuthOffset, 102>("AzimuthOffset", 1, "SQL bind AzimuthOffsetKey failed with ", "102"),
      Key<&P::DateFormat, 103>("DateFormat", 1, "SQL bind DateFormatKey failed with ", "103"),
      Key<&P::CoordinateFormat, 104>("CoordinateFormat", 1, "SQL bind CoordinateFormatKey failed with ",
                                     "104"),
      Key<&P::DatumFormat, 105>("DatumFormat", 1, "SQL bind CoordinateFormatKey failed with ", "105"),
      Key<&P::HeightSource, 106>("HeightSource", 1, "SQL bind CoordinateFormatKey failed with ", "106"),
      Key<&P::AutoShutoffDelay, 2147483647>("AutoShutoffDelay", 1,
                                            "SQL bind AutoShutoffDelayKey failed with ", "2147483647"),
      Flag<&P::ShowCrosshairs>("ShowCrosshairs", 1, "SQL bind ShowCrosshairsKey failed with "),
      Flag<&P::ShowTarget>("ShowTarget", 1, "SQL bind ShowTargetKey failed with "),
      Flag<&P::CameraEnabled>("CameraEnabled", 1, "SQL bind CameraEnabledKey failed with "),
      Key<&P::BluetoothMode, 2147483648U>("BluetoothEnabled", 1, "SQL bind BluetoothEnabledKey failed with ",
                                          "-2147483648"),
      Real<&P::AzimuthThreshold, 12>("AzimuthThreshold", 1, "SQL bind AzimuthThreshold failed with ", "1.5"),
      Real<&P::TiltThreshold, -17>("TiltThreshold", 1, "SQL bind TiltThreshold failed with ", "-2.125"),
      Real<&P::RollThreshold, 31>("RollThreshold", 1, "SQL bind RollThreshold failed with ", "3.875"),
      Real<&P::AccelerometerXOffset, -34>("AccelerometerXOffset", 1,
                                          "SQL bind AccelerometerXOffset failed with ", "-4.25"),
      Real<&P::AccelerometerYOffset, 43>("AccelerometerYOffset", 1,
                                         "SQL bind AccelerometerYOffset failed with ", "5.375"),
      Words<&P::CalibrationDate, 17>("CalibrationDate", 1, "SQL bind Calibration Date failed with ",
                                     "'Gerät №17 ✓'"),
      Number<&P::SerialNumber, -2147483647 - 1>("SerialNumber", 1, "SQL bind Serial Number failed with ",
                                                "-2147483648"),
      Key<&P::TimeZone, 4294967295U>("TimeZone", 1, "SQL bind TimeZoneKey failed with ", "-1"),
      Flag<&P::SerialNumberValid>("SerialNumberValid", 1, "SQL bind SerialNumberValidKey failed with "),
      Flag<&P::SoundEnabled>("SoundEnabled", 1, "SQL bind Sound Enabled key failed with "),
      Real<&P::AccelerometerXGain, 52>("AccelerometerXGain", 1, "SQL bind AccelerometerXGain failed with ",
                                       "6.5"),
      Flag<&P::DaylightSavingsEnabled>("DaylightSavingsEnabled", 1,
                                       "SQL bind Daylight Savings Enabled key failed with "),
      Real<&P::AccelerometerZOffset, -61>("AccelerometerZOffset", 1,
                                          "SQL bind Accelerometer Z Offset failed with ", "-7.625"),
      Real<&P::AccelerometerZGain, 70>("AccelerometerZGain", 1, "SQL bind Accelerometer Z Gain failed with ",
                                       "8.75"),
      Flag<&P::AccelerometerCalibrated>("AccelerometerCalibrated", 2,
                                        "SQL bind Accelerometer calibration validity failed with "),
      Number<&P::GNSSFileCRC, -559038737>("GNSSFileCRC", 2, "SQL bind GNSS File CRC failed with ",
                                          "-559038737"),
      Flag<&P::TiltIndicatorEnabled>("TiltIndicatorEnabled", 2,
                                     "SQL bind tilt indicator enabled failed with "),
      Flag<&P::RollIndicatorEnabled>("RollIndicatorEnabled", 2,
                                     "SQL bind tilt indicator enabled failed with "),
      Flag<&P::TiltInversionEnabled>("TiltInversionEnabled", 3, "SQL bind TiltInversionEnabled failed with "),
      Words<&P::BluetoothDisplayName, 31>("BluetoothDisplayName", 3, "SQL bind SectorName failed with ",
                                          "'Gerät №31 ✓'"),
      Flag<&P::RollPrecision>("RollPrecision", 5, "SQL bind RollPrecision failed with "),
      Key<&P::GeoidFormat, 133>("GeoidFormat", 6, "SQL bind GeoidFormat failed with ", "133"),
      Words<&P::UserTechId, 34>("UserTechId", 7, "SQL bind User Tech ID failed with ", "'Gerät №34 ✓'"),
  };
  return samples;
}

// The columns that a version has.
inline std::vector<PreferenceSample> MainSamplesOf(unsigned int version) {
  std::vector<PreferenceSample> samples;
  for (const PreferenceSample& sample : MainSamples()) {
    if (sample.firstVersion <= version) samples.push_back(sample);
  }
  return samples;
}

// The row of the thresholds file.
inline const std::vector<PreferenceSample>& PathLengthSamples() {
  static const std::vector<PreferenceSample> samples = {
      Flag<&Preferences::PathLengthThresholdEnabled>("PathLengthThresholdEnabled", 7,
                                                     "SQL bind path length threshold enabled failed with "),
      Real<&Preferences::PathLengthThreshold, -79>("PathLengthThreshold", 7,
                                                   "SQL bind path length threshold failed with ", "-9.875"),
  };
  return samples;
}

inline bool IsFlag(const PreferenceSample& sample) { return QByteArray(sample.written) == "1"; }

// Every flag false, for the tests of one flag at a time.
inline void ClearFlags(IPreferencesModel* model) {
  for (Setting<bool>* flag :
       {model->ShowCrosshairs(), model->ShowTarget(), model->CameraEnabled(), model->SoundEnabled(),
        model->SerialNumberValid(), model->DaylightSavingsEnabled(), model->AccelerometerCalibrated(),
        model->TiltIndicatorEnabled(), model->RollIndicatorEnabled(), model->TiltInversionEnabled(),
        model->RollPrecision(), model->PathLengthThresholdEnabled()}) {
    flag->SetValue(false);
  }
}

inline void AssignSamples(IPreferencesModel* model) {
  for (const PreferenceSample& sample : MainSamples()) sample.assign(model);
  for (const PreferenceSample& sample : PathLengthSamples()) sample.assign(model);
}

inline QStringList ColumnsOf(const std::vector<PreferenceSample>& samples) {
  QStringList columns;
  for (const PreferenceSample& sample : samples) columns << sample.column;
  return columns;
}
inline QString WrittenBy(const std::vector<PreferenceSample>& samples) {
  QStringList values;
  for (const PreferenceSample& sample : samples) values << QString::fromUtf8(sample.written);
  return values.join('|');
}
