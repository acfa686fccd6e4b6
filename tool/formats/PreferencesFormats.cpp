#include "tool/formats/PreferencesFormats.h"

#include <QHash>

#include "model/PreferencesModel.h"

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
