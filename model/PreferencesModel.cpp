#include "model/PreferencesModel.h"

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace {

struct KeyAndName {
  unsigned int key;
  const char* name;
};

/// An enumerated setting together with the values it allows.
template <typename T>
class OwnedSetting {
 public:
  /// The value at `defaultIndex` is the current one at first.
  OwnedSetting(std::initializer_list<KeyAndName> values, std::size_t defaultIndex = 0)
      : values_(Values(values)), setting_(Pointers(values_), values_[defaultIndex].get()) {}

  EnumeratedSetting<T>* Get() { return &setting_; }

 private:
  using ValueList = std::vector<std::unique_ptr<T>>;

  static ValueList Values(std::initializer_list<KeyAndName> values) {
    ValueList owned;
    for (const KeyAndName& value : values) {
      owned.push_back(std::make_unique<T>(value.key, QString::fromLatin1(value.name)));
    }
    return owned;
  }

  static QVector<T*> Pointers(const ValueList& values) {
    QVector<T*> pointers;
    for (const std::unique_ptr<T>& value : values) {
      pointers.append(value.get());
    }
    return pointers;
  }

  const ValueList values_;
  EnumeratedSetting<T> setting_;
};

}  // namespace

struct PreferencesModel::Settings {
  OwnedSetting<DistanceUnitsSetting> distanceUnits{{{0, "Meters"}, {1, "Feet"}}};
  OwnedSetting<AzimuthOffsetSetting> azimuthOffset{
      {{0, "None"}, {1, "90 degrees"}, {2, "180 degrees"}, {3, "270 degrees"}}};
  OwnedSetting<DateFormatSetting> dateFormat{{{0, "MM/DD/YYYY"}, {1, "DD/MM/YYYY"}, {2, "YYYY-MM-DD"}}};
  OwnedSetting<CoordinateFormatSetting> coordinateFormat{
      {{0, "Decimal degrees"}, {1, "Degrees, minutes"}, {2, "Degrees, minutes, seconds"}}};
  OwnedSetting<AutoShutOffDelaySetting> autoShutoffDelay{
      {{0, "Never"}, {1, "15 minutes"}, {2, "30 minutes"}, {3, "60 minutes"}}, 1};
  OwnedSetting<DatumFormatSetting> datumFormat{{{0, "WGS 84"}, {1, "NAD 83"}, {2, "NAD 27"}}};
  OwnedSetting<HeightSourceSetting> heightSource{{{1, "Manual"}, {2, "Barometric"}, {3, "GPS"}}};
  OwnedSetting<TimeZoneSetting> timeZone{
      {{0, "UTC-12"},  {1, "UTC-11"},  {2, "UTC-10"}, {3, "UTC-9"},  {4, "UTC-8"},   {5, "UTC-7"},
       {6, "UTC-6"},   {7, "UTC-5"},   {8, "UTC-4"},  {9, "UTC-3"},  {10, "UTC-2"},  {11, "UTC-1"},
       {12, "UTC"},    {13, "UTC+1"},  {14, "UTC+2"}, {15, "UTC+3"}, {16, "UTC+4"},  {17, "UTC+5"},
       {18, "UTC+6"},  {19, "UTC+7"},  {20, "UTC+8"}, {21, "UTC+9"}, {22, "UTC+10"}, {23, "UTC+11"},
       {24, "UTC+12"}, {25, "UTC+13"}, {26, "UTC+14"}},
      12};
  OwnedSetting<BluetoothModeSetting> bluetoothMode{{{0, "Off"}, {1, "On"}, {2, "Discoverable"}}};
  Setting<bool> showCrosshairs{true};
  Setting<bool> showTarget{true};
  Setting<bool> cameraEnabled{true};
  Setting<bool> soundEnabled{true};
  Setting<bool> serialNumberValid{false};
  Setting<double> azimuthThreshold{2.0};
  Setting<double> tiltThreshold{0.5};
  Setting<double> rollThreshold{1.0};
  Setting<double> accelerometerXOffset{0.0};
  Setting<double> accelerometerYOffset{0.0};
  Setting<double> accelerometerZOffset{0.0};
  Setting<double> accelerometerXGain{1.0};
  Setting<double> accelerometerZGain{1.0};
  Setting<QString> calibrationDate{QString()};
  Setting<int> serialNumber{0};
  Setting<bool> daylightSavingsEnabled{false};
  Setting<bool> accelerometerCalibrated{false};
  Setting<int> gnssFileCrc{0};
  Setting<bool> tiltIndicatorEnabled{true};
  Setting<bool> rollIndicatorEnabled{true};
  Setting<bool> tiltInversionEnabled{false};
  Setting<QString> bluetoothDisplayName{QStringLiteral("Tarnbeam")};
  Setting<bool> rollPrecision{false};
  OwnedSetting<GeoidFormatSetting> geoidFormat{{{0, "EGM96"}, {1, "EGM2008"}}};
  Setting<QString> userTechId{QStringLiteral("tbm001")};
  Setting<bool> pathLengthThresholdEnabled{false};
  Setting<double> pathLengthThreshold{1000.0};
};

IPreferencesModel::~IPreferencesModel() = default;

PreferencesModel::PreferencesModel() : settings_(std::make_unique<Settings>()) {}

PreferencesModel::~PreferencesModel() = default;

EnumeratedSetting<DistanceUnitsSetting>* PreferencesModel::DistanceUnits() {
  return settings_->distanceUnits.Get();
}

EnumeratedSetting<AzimuthOffsetSetting>* PreferencesModel::AzimuthOffset() {
  return settings_->azimuthOffset.Get();
}

EnumeratedSetting<DateFormatSetting>* PreferencesModel::DateFormat() { return settings_->dateFormat.Get(); }

EnumeratedSetting<CoordinateFormatSetting>* PreferencesModel::CoordinateFormat() {
  return settings_->coordinateFormat.Get();
}

EnumeratedSetting<AutoShutOffDelaySetting>* PreferencesModel::AutoShutoffDelay() {
  return settings_->autoShutoffDelay.Get();
}

EnumeratedSetting<DatumFormatSetting>* PreferencesModel::DatumFormat() {
  return settings_->datumFormat.Get();
}

EnumeratedSetting<HeightSourceSetting>* PreferencesModel::HeightSource() {
  return settings_->heightSource.Get();
}

EnumeratedSetting<TimeZoneSetting>* PreferencesModel::TimeZone() { return settings_->timeZone.Get(); }

EnumeratedSetting<BluetoothModeSetting>* PreferencesModel::BluetoothMode() {
  return settings_->bluetoothMode.Get();
}

Setting<bool>* PreferencesModel::ShowCrosshairs() { return &settings_->showCrosshairs; }

Setting<bool>* PreferencesModel::ShowTarget() { return &settings_->showTarget; }

Setting<bool>* PreferencesModel::CameraEnabled() { return &settings_->cameraEnabled; }

Setting<bool>* PreferencesModel::SoundEnabled() { return &settings_->soundEnabled; }

Setting<bool>* PreferencesModel::SerialNumberValid() { return &settings_->serialNumberValid; }

Setting<double>* PreferencesModel::AzimuthThreshold() { return &settings_->azimuthThreshold; }

Setting<double>* PreferencesModel::TiltThreshold() { return &settings_->tiltThreshold; }

Setting<double>* PreferencesModel::RollThreshold() { return &settings_->rollThreshold; }

Setting<double>* PreferencesModel::AccelerometerXOffset() { return &settings_->accelerometerXOffset; }

Setting<double>* PreferencesModel::AccelerometerYOffset() { return &settings_->accelerometerYOffset; }

Setting<double>* PreferencesModel::AccelerometerZOffset() { return &settings_->accelerometerZOffset; }

Setting<double>* PreferencesModel::AccelerometerXGain() { return &settings_->accelerometerXGain; }

Setting<double>* PreferencesModel::AccelerometerZGain() { return &settings_->accelerometerZGain; }

Setting<QString>* PreferencesModel::CalibrationDate() { return &settings_->calibrationDate; }

Setting<int>* PreferencesModel::SerialNumber() { return &settings_->serialNumber; }

Setting<bool>* PreferencesModel::DaylightSavingsEnabled() { return &settings_->daylightSavingsEnabled; }

Setting<bool>* PreferencesModel::AccelerometerCalibrated() { return &settings_->accelerometerCalibrated; }

Setting<int>* PreferencesModel::GNSSFileCRC() { return &settings_->gnssFileCrc; }

Setting<bool>* PreferencesModel::TiltIndicatorEnabled() { return &settings_->tiltIndicatorEnabled; }

Setting<bool>* PreferencesModel::RollIndicatorEnabled() { return &settings_->rollIndicatorEnabled; }

Setting<bool>* PreferencesModel::TiltInversionEnabled() { return &settings_->tiltInversionEnabled; }

Setting<QString>* PreferencesModel::BluetoothDisplayName() { return &settings_->bluetoothDisplayName; }

Setting<bool>* PreferencesModel::RollPrecision() { return &settings_->rollPrecision; }

EnumeratedSetting<GeoidFormatSetting>* PreferencesModel::GeoidFormat() {
  return settings_->geoidFormat.Get();
}

Setting<QString>* PreferencesModel::UserTechId() { return &settings_->userTechId; }

Setting<bool>* PreferencesModel::PathLengthThresholdEnabled() {
  return &settings_->pathLengthThresholdEnabled;
}

Setting<double>* PreferencesModel::PathLengthThreshold() { return &settings_->pathLengthThreshold; }
