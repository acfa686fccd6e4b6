#include "tool/formats/PreferencesFormats.h"

#include <QHash>
#include <QLocale>

#include "model/PreferencesModel.h"
#include "tool/Console.h"

namespace {

using Names = QHash<qlonglong, QString>;

template <typename Value>
Names NamesOf(const EnumeratedSetting<Value>* setting) {
  Names names;
  for (const Value* value : setting->AllowedValues()) names.insert(value->Key(), value->Name());
  return names;
}

/// By the column that holds the key.
QHash<QString, Names> SettingNames() {
  PreferencesModel model;
  return {{QStringLiteral("DistanceUnits"), NamesOf(model.DistanceUnits())},
          {QStringLiteral("AzimuthOffset"), NamesOf(model.AzimuthOffset())},
          {QStringLiteral("DateFormat"), NamesOf(model.DateFormat())},
          {QStringLiteral("CoordinateFormat"), NamesOf(model.CoordinateFormat())},
          {QStringLiteral("DatumFormat"), NamesOf(model.DatumFormat())},
          {QStringLiteral("HeightSource"), NamesOf(model.HeightSource())},
          {QStringLiteral("AutoShutoffDelay"), NamesOf(model.AutoShutoffDelay())},
          {QStringLiteral("BluetoothEnabled"), NamesOf(model.BluetoothMode())},
          {QStringLiteral("TimeZone"), NamesOf(model.TimeZone())},
          {QStringLiteral("GeoidFormat"), NamesOf(model.GeoidFormat())}};
}

struct TableLine {
  const char* column;
  enum { Plain, Switch, Degrees } shows = Plain;
};

using Shows = TableLine;

/// All but the language, which no instrument reads or writes, and the azimuth offset.
constexpr TableLine tableLines[] = {
    // Formats.
    {"DistanceUnits"},
    {"DateFormat"},
    {"CoordinateFormat"},
    {"DatumFormat"},
    {"GeoidFormat"},
    {"HeightSource"},
    {"TimeZone"},
    {"DaylightSavingsEnabled", Shows::Switch},
    // Thresholds.
    {"AzimuthThreshold", Shows::Degrees},
    {"TiltThreshold", Shows::Degrees},
    {"RollThreshold", Shows::Degrees},
    {"RollPrecision", Shows::Switch},
    {"PathLengthThresholdEnabled", Shows::Switch},
    {"PathLengthThreshold"},
    // The instrument.
    {"AutoShutoffDelay"},
    {"BluetoothEnabled"},
    {"BluetoothDisplayName"},
    {"CameraEnabled", Shows::Switch},
    {"SoundEnabled", Shows::Switch},
    {"ShowCrosshairs", Shows::Switch},
    {"ShowTarget", Shows::Switch},
    {"TiltIndicatorEnabled", Shows::Switch},
    {"RollIndicatorEnabled", Shows::Switch},
    {"TiltInversionEnabled", Shows::Switch},
    {"UserTechId"},
    // Its calibration.
    {"CalibrationDate"},
    {"AccelerometerCalibrated", Shows::Switch},
    {"AccelerometerXOffset"},
    {"AccelerometerYOffset"},
    {"AccelerometerZOffset"},
    {"AccelerometerXGain"},
    {"AccelerometerZGain"},
    {"SerialNumber"},
    {"SerialNumberValid", Shows::Switch},
    {"GNSSFileCRC"}};

bool IsReal(const QVariant& value) { return value.userType() == QMetaType::Double; }

QString ValueText(const TableLine& line, const QVariant& value) {
  if (line.shows == Shows::Switch)
    return value.toDouble() != 0 ? QStringLiteral("on") : QStringLiteral("off");
  const QString text = IsReal(value) ? QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest)
                                     : Console::Printable(value.toString());
  return line.shows == Shows::Degrees ? text + QStringLiteral(" °") : text;
}

QString Line(const char* column, const QString& value) {
  return (Console::Padded(QLatin1String(column), 28) + value).trimmed() + QLatin1Char('\n');
}

}  // namespace

QJsonObject PreferencesObject(const PreferencesRow& row) {
  const QHash<QString, Names> settings = SettingNames();
  QJsonObject object;
  for (const auto& column : row) {
    QJsonObject entry{{QStringLiteral("value"), QJsonValue::fromVariant(column.second)}};
    const auto names = settings.constFind(column.first);
    if (names != settings.constEnd()) {
      const auto name = names->constFind(column.second.toLongLong());
      entry.insert(QStringLiteral("name"), name == names->constEnd() ? QJsonValue::Null : QJsonValue(*name));
    }
    object.insert(column.first, entry);
  }
  return object;
}

QString PreferencesTable(const PreferencesRow& row) {
  const QHash<QString, Names> settings = SettingNames();
  QHash<QString, QVariant> stored;
  for (const auto& column : row) stored.insert(column.first, column.second);
  QString lines;
  for (const TableLine& line : tableLines) {
    const auto value = stored.constFind(QLatin1String(line.column));
    if (value == stored.constEnd()) continue;
    QString text = ValueText(line, *value);
    const auto names = settings.constFind(value.key());
    if (names != settings.constEnd()) {
      text =
          QStringLiteral("%1 (%2)").arg(names->value(value->toLongLong(), QStringLiteral("unknown")), text);
    }
    lines += Line(line.column, text);
  }
  const QString azimuthOffset = QStringLiteral("AzimuthOffset");
  if (stored.contains(azimuthOffset))
    lines += Line("AzimuthOffset", QStringLiteral("(stored, but not read back)"));
  return lines;
}
