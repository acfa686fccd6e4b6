#include "store/PreferenceColumns.h"

#include "core/Statement.h"
#include "model/IPreferencesModel.h"

namespace {

using Row = Statement;
using Model = IPreferencesModel;

void Bind(Row* row, bool value, const char* failure) { row->Int(value ? 1 : 0, failure); }
void Bind(Row* row, int value, const char* failure) { row->Int(value, failure); }
void Bind(Row* row, double value, const char* failure) { row->Double(value, failure); }
void Bind(Row* row, const QString& value, const char* failure) { row->Text(value, failure); }

template <typename T>
void Save(Row* row, const Setting<T>* setting, const char* failure) {
  Bind(row, setting->Value(), failure);
}
// A setting without a current value is saved as key 0.
template <typename T>
void Save(Row* row, const EnumeratedSetting<T>* setting, const char* failure) {
  const T* current = setting->CurrentValue();
  Bind(row, current != nullptr ? static_cast<int>(current->Key()) : 0, failure);
}

void Restore(const Row& row, int column, Setting<bool>* setting) {
  setting->SetValue(row.IntColumn(column) != 0);
}
void Restore(const Row& row, int column, Setting<int>* setting) { setting->SetValue(row.IntColumn(column)); }
void Restore(const Row& row, int column, Setting<double>* setting) {
  setting->SetValue(row.DoubleColumn(column));
}
void Restore(const Row& row, int column, Setting<QString>* setting) {
  setting->SetValue(row.TextColumn(column));
}
// A key that matches no allowed value leaves the setting as it was.
template <typename T>
void Restore(const Row& row, int column, EnumeratedSetting<T>* setting) {
  setting->AssignValueWithKey(static_cast<unsigned int>(row.IntColumn(column)));
}

template <auto accessor>
void SaveFrom(Row* row, Model* model, const char* failure) {
  Save(row, (model->*accessor)(), failure);
}
template <auto accessor>
void RestoreInto(const Row& row, int column, Model* model) {
  Restore(row, column, (model->*accessor)());
}

template <auto accessor>
constexpr PreferenceColumn Column(const char* name, unsigned int firstVersion, const char* bindFailure) {
  return {name, firstVersion, bindFailure, SaveFrom<accessor>, RestoreInto<accessor>};
}
template <auto accessor>
constexpr PreferenceColumn SavedOnly(const char* name, unsigned int firstVersion, const char* bindFailure) {
  return {name, firstVersion, bindFailure, SaveFrom<accessor>, nullptr};
}

// Required behaviour: several failure texts serve more than one column, and some name another one; the
// azimuth offset is saved but never restored.
constexpr PreferenceColumn mainRow[] = {
    Column<&Model::DistanceUnits>("DistanceUnits", 1, "SQL bind DistanceKey failed with "),
    SavedOnly<&Model::AzimuthOffset>("AzimuthOffset", 1, "SQL bind AzimuthOffsetKey failed with "),
    Column<&Model::DateFormat>("DateFormat", 1, "SQL bind DateFormatKey failed with "),
    Column<&Model::CoordinateFormat>("CoordinateFormat", 1, "SQL bind CoordinateFormatKey failed with "),
    Column<&Model::DatumFormat>("DatumFormat", 1, "SQL bind CoordinateFormatKey failed with "),
    Column<&Model::HeightSource>("HeightSource", 1, "SQL bind CoordinateFormatKey failed with "),
    Column<&Model::AutoShutoffDelay>("AutoShutoffDelay", 1, "SQL bind AutoShutoffDelayKey failed with "),
    Column<&Model::ShowCrosshairs>("ShowCrosshairs", 1, "SQL bind ShowCrosshairsKey failed with "),
    Column<&Model::ShowTarget>("ShowTarget", 1, "SQL bind ShowTargetKey failed with "),
    Column<&Model::CameraEnabled>("CameraEnabled", 1, "SQL bind CameraEnabledKey failed with "),
    Column<&Model::BluetoothMode>("BluetoothEnabled", 1, "SQL bind BluetoothEnabledKey failed with "),
    Column<&Model::AzimuthThreshold>("AzimuthThreshold", 1, "SQL bind AzimuthThreshold failed with "),
    Column<&Model::TiltThreshold>("TiltThreshold", 1, "SQL bind TiltThreshold failed with "),
    Column<&Model::RollThreshold>("RollThreshold", 1, "SQL bind RollThreshold failed with "),
    Column<&Model::AccelerometerXOffset>("AccelerometerXOffset", 1,
                                         "SQL bind AccelerometerXOffset failed with "),
    Column<&Model::AccelerometerYOffset>("AccelerometerYOffset", 1,
                                         "SQL bind AccelerometerYOffset failed with "),
    Column<&Model::CalibrationDate>("CalibrationDate", 1, "SQL bind Calibration Date failed with "),
    Column<&Model::SerialNumber>("SerialNumber", 1, "SQL bind Serial Number failed with "),
    Column<&Model::TimeZone>("TimeZone", 1, "SQL bind TimeZoneKey failed with "),
    Column<&Model::SerialNumberValid>("SerialNumberValid", 1, "SQL bind SerialNumberValidKey failed with "),
    Column<&Model::SoundEnabled>("SoundEnabled", 1, "SQL bind Sound Enabled key failed with "),
    Column<&Model::AccelerometerXGain>("AccelerometerXGain", 1, "SQL bind AccelerometerXGain failed with "),
    Column<&Model::DaylightSavingsEnabled>("DaylightSavingsEnabled", 1,
                                           "SQL bind Daylight Savings Enabled key failed with "),
    Column<&Model::AccelerometerZOffset>("AccelerometerZOffset", 1,
                                         "SQL bind Accelerometer Z Offset failed with "),
    Column<&Model::AccelerometerZGain>("AccelerometerZGain", 1, "SQL bind Accelerometer Z Gain failed with "),
    Column<&Model::AccelerometerCalibrated>("AccelerometerCalibrated", 2,
                                            "SQL bind Accelerometer calibration validity failed with "),
    Column<&Model::GNSSFileCRC>("GNSSFileCRC", 2, "SQL bind GNSS File CRC failed with "),
    Column<&Model::TiltIndicatorEnabled>("TiltIndicatorEnabled", 2,
                                         "SQL bind tilt indicator enabled failed with "),
    Column<&Model::RollIndicatorEnabled>("RollIndicatorEnabled", 2,
                                         "SQL bind tilt indicator enabled failed with "),
    Column<&Model::TiltInversionEnabled>("TiltInversionEnabled", 3,
                                         "SQL bind TiltInversionEnabled failed with "),
    Column<&Model::BluetoothDisplayName>("BluetoothDisplayName", 3, "SQL bind SectorName failed with "),
    Column<&Model::RollPrecision>("RollPrecision", 5, "SQL bind RollPrecision failed with "),
    Column<&Model::GeoidFormat>("GeoidFormat", 6, "SQL bind GeoidFormat failed with "),
    Column<&Model::UserTechId>("UserTechId", 7, "SQL bind User Tech ID failed with "),
};

constexpr PreferenceColumn pathLengthRow[] = {
    Column<&Model::PathLengthThresholdEnabled>("PathLengthThresholdEnabled", 7,
                                               "SQL bind path length threshold enabled failed with "),
    Column<&Model::PathLengthThreshold>("PathLengthThreshold", 7,
                                        "SQL bind path length threshold failed with "),
};

}  // namespace

PreferenceColumns PreferenceColumns::OfMainRow(unsigned int version) {
  int count = 0;
  for (const PreferenceColumn& column : mainRow) count += column.firstVersion <= version ? 1 : 0;
  return {mainRow, count};
}

PreferenceColumns PreferenceColumns::OfPathLengthRow() { return {pathLengthRow, 2}; }

bool PreferenceColumns::Save(Statement* row, IPreferencesModel* model) const {
  for (int index = 0; index < count && row->Bound(); ++index) {
    first[index].save(row, model, first[index].bindFailure);
  }
  return row->Bound();
}

void PreferenceColumns::Restore(const Statement& row, IPreferencesModel* model) const {
  for (int index = 0; index < count; ++index) {
    if (first[index].restore != nullptr) first[index].restore(row, index, model);
  }
}
