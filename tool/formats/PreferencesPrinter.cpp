#include "tool/formats/PreferencesPrinter.h"

#include <QLocale>

#include "model/IPreferencesModel.h"
#include "tool/Console.h"

namespace {

QString Text(bool value) { return value ? QStringLiteral("on") : QStringLiteral("off"); }
QString Text(int value) { return QString::number(value); }
QString Text(double value) { return QString::number(value, 'f', QLocale::FloatingPointShortest); }
QString Text(const QString& value) { return Console::Printable(value); }

template <typename T>
QString ValueOf(Setting<T>* setting) {
  return Text(setting->Value());
}

template <typename T>
QString ValueOf(EnumeratedSetting<T>* setting) {
  const T* value = setting->CurrentValue();
  return value == nullptr ? QString() : QStringLiteral("%1 (%2)").arg(value->Name()).arg(value->Key());
}

template <typename SettingType>
QString Line(const char* name, SettingType* setting, const char* unit = "") {
  const QString line = Console::Padded(QLatin1String(name), 28) + ValueOf(setting) + QString::fromUtf8(unit);
  return line.trimmed() + QLatin1Char('\n');
}

QString CalibrationLines(IPreferencesModel* model) {
  return Line("CalibrationDate", model->CalibrationDate()) +
         Line("AccelerometerCalibrated", model->AccelerometerCalibrated()) +
         Line("AccelerometerXOffset", model->AccelerometerXOffset()) +
         Line("AccelerometerYOffset", model->AccelerometerYOffset()) +
         Line("AccelerometerZOffset", model->AccelerometerZOffset()) +
         Line("AccelerometerXGain", model->AccelerometerXGain()) +
         Line("AccelerometerZGain", model->AccelerometerZGain()) +
         Line("SerialNumber", model->SerialNumber()) + Line("SerialNumberValid", model->SerialNumberValid()) +
         Line("GNSSFileCRC", model->GNSSFileCRC());
}

QString FormatLines(IPreferencesModel* model) {
  return Line("DistanceUnits", model->DistanceUnits()) + Line("DateFormat", model->DateFormat()) +
         Line("CoordinateFormat", model->CoordinateFormat()) + Line("DatumFormat", model->DatumFormat()) +
         Line("GeoidFormat", model->GeoidFormat()) + Line("HeightSource", model->HeightSource()) +
         Line("TimeZone", model->TimeZone()) +
         Line("DaylightSavingsEnabled", model->DaylightSavingsEnabled());
}

QString ThresholdLines(IPreferencesModel* model) {
  return Line("AzimuthThreshold", model->AzimuthThreshold(), " °") +
         Line("TiltThreshold", model->TiltThreshold(), " °") +
         Line("RollThreshold", model->RollThreshold(), " °") + Line("RollPrecision", model->RollPrecision()) +
         Line("PathLengthThresholdEnabled", model->PathLengthThresholdEnabled()) +
         Line("PathLengthThreshold", model->PathLengthThreshold());
}

QString InstrumentLines(IPreferencesModel* model) {
  return Line("AutoShutoffDelay", model->AutoShutoffDelay()) +
         Line("BluetoothEnabled", model->BluetoothMode()) +
         Line("BluetoothDisplayName", model->BluetoothDisplayName()) +
         Line("CameraEnabled", model->CameraEnabled()) + Line("SoundEnabled", model->SoundEnabled()) +
         Line("ShowCrosshairs", model->ShowCrosshairs()) + Line("ShowTarget", model->ShowTarget()) +
         Line("TiltIndicatorEnabled", model->TiltIndicatorEnabled()) +
         Line("RollIndicatorEnabled", model->RollIndicatorEnabled()) +
         Line("TiltInversionEnabled", model->TiltInversionEnabled()) +
         Line("UserTechId", model->UserTechId());
}

}  // namespace

// The azimuth offset is stored but never restored: the model's would be shown as if it were the file's.
QString PreferencesTable(IPreferencesModel* model) {
  return FormatLines(model) + ThresholdLines(model) + InstrumentLines(model) + CalibrationLines(model) +
         QStringLiteral("AzimuthOffset               (stored, but not read back)\n");
}
