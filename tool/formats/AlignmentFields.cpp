#include "tool/formats/AlignmentFields.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr double metersLowest = -1000;
constexpr double metersHighest = 20000;

}  // namespace

// Both conventions for azimuths, 0 to 360 and -180 to 180, are accepted.
const std::vector<Field>& AllFields() {
  using A = Alignment;
  using F = Field;
  static const std::vector<Field> fields = {
      {"kind", F::Both, &A::kind, F::InUidAndOnMap},
      {"identifier", F::Both, &A::identifier, F::InUidAndOnMap},
      {"sector", F::SiteOnly, &A::sector, F::InUidAndOnMap},
      {"position", F::SiteOnly, &A::position, F::InUidAndOnMap},
      {"time", F::Both, &A::time, F::InUidAndOnMap},
      {"target.azimuth", F::Both, &A::targetAzimuth, F::InUid, "°", -360, 360},
      {"target.tilt", F::Both, &A::targetTilt, F::InUid, "°", -90, 90},
      {"target.roll", F::Both, &A::targetRoll, F::InUid, "°", -180, 180},
      {"measured.azimuth", F::Both, &A::measuredAzimuth, F::InUid, "°", -360, 360},
      {"measured.tilt", F::Both, &A::measuredTilt, F::InUid, "°", -90, 90},
      {"measured.roll", F::Both, &A::measuredRoll, F::InUid, "°", -180, 180},
      {"location.latitude", F::Both, &A::latitude, F::InUid, "°N", -90, 90},
      {"location.longitude", F::Both, &A::longitude, F::InUid, "°E", -180, 180},
      {"location.elevation", F::Both, &A::elevation, F::InUid, "m", metersLowest, metersHighest},
      {"farEnd.latitude", F::PathOnly, &A::farLatitude, F::InUid, "°N", -90, 90},
      {"farEnd.longitude", F::PathOnly, &A::farLongitude, F::InUid, "°E", -180, 180},
      {"farEnd.elevation", F::PathOnly, &A::farElevation, F::InUid, "m", metersLowest, metersHighest},
      {"height.value", F::Both, &A::height, F::InUid, "m", metersLowest, metersHighest},
      {"height.source", F::Both, &A::heightSource, F::InUid},
      {"options.azimuthOffset", F::Both, &A::azimuthOffset, F::InUid, "°", -360, 360},
      {"options.tiltInversion", F::Both, &A::tiltInversion, F::InUid},
      {"options.rollPrecision", F::SiteOnly, &A::rollPrecision, F::InUid},
      {"options.note", F::Both, &A::note, F::OnMap},
      {"options.thresholds.azimuth", F::Both, &A::azimuthThreshold, F::Plain, "°", 0, 180},
      {"options.thresholds.tilt", F::Both, &A::tiltThreshold, F::Plain, "°", 0, 180},
      {"options.thresholds.roll", F::SiteOnly, &A::rollThreshold, F::Plain, "°", 0, 180},
      // -1 is what an alignment without a stored threshold has. The files fix no unit.
      {"options.thresholds.pathLength", F::PathOnly, &A::pathLengthThreshold, F::Plain, "", -1, 1e9}};
  return fields;
}

namespace {

std::vector<Field> FieldsThatFit(Kind kind) {
  std::vector<Field> fields;
  for (const Field& field : AllFields()) {
    if (field.IsOf(kind)) fields.push_back(field);
  }
  return fields;
}

/// Members of one object stand together in the table.
void Grow(FieldGroup* group, const QStringList& name, const Field& field) {
  if (group->members.empty() || group->members.back().name != name.first()) {
    group->members.push_back({name.first(), nullptr, {}});
  }
  FieldGroup* member = &group->members.back();
  if (name.size() == 1) {
    member->field = &field;
  } else {
    Grow(member, name.mid(1), field);
  }
}

FieldGroup TreeOf(const std::vector<Field>& fields) {
  FieldGroup tree;
  for (const Field& field : fields) {
    Grow(&tree, QString::fromLatin1(field.name).split(QLatin1Char('.')), field);
  }
  return tree;
}

template <typename Number>
QByteArray Digits(Number value) {
  // Enough for the largest number there is, whose digits are all written.
  std::array<char, 400> text{};
  // A negative zero becomes a positive one: the files do not tell the two apart either.
  const auto [end, error] =
      std::to_chars(text.data(), text.data() + text.size(), value + 0, std::chars_format::fixed);
  return error == std::errc() ? QByteArray(text.data(), static_cast<int>(end - text.data())) : QByteArray();
}

constexpr std::array<const char*, 4> heightSourceNames = {"unknown", "manual", "barometric", "gps"};

QString ToText(Kind value) { return KindName(value); }
QString ToText(const QString& value) { return value; }
QString ToText(const QDateTime& value) { return TimeText(value); }
QString ToText(float value) { return Decimal(value); }
QString ToText(double value) { return Decimal(value); }
QString ToText(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }
QString ToText(int value) { return QString::number(value); }
QString ToText(HeightSource value) {
  const auto number = static_cast<std::size_t>(value);
  if (number < heightSourceNames.size()) return QLatin1String(heightSourceNames.at(number));
  return QString::number(static_cast<int>(value));
}

template <typename Value>
QJsonValue ToJson(const Value& value) {
  return ToText(value);
}
QJsonValue ToJson(float value) { return NumberToJson(value); }
QJsonValue ToJson(double value) { return value; }
QJsonValue ToJson(bool value) { return value; }
QJsonValue ToJson(int value) { return value; }
QJsonValue ToJson(HeightSource value) {
  const auto number = static_cast<std::size_t>(value);
  return number < heightSourceNames.size() ? QJsonValue(ToText(value)) : static_cast<int>(value);
}

QString RangeText(const Field& field) {
  return QStringLiteral("%1 to %2").arg(Decimal(field.lowest), Decimal(field.highest));
}

/// True for a number within the range. Neither NaN nor infinity is within any.
bool IsNumberInRange(const QJsonValue& value, const Field& field) {
  return value.isDouble() && value.toDouble() >= field.lowest && value.toDouble() <= field.highest;
}

QString FromJson(const QJsonValue& value, const Field& /*field*/, Kind* kind) {
  const QString name = value.toString();
  *kind = name == KindName(Kind::Path) ? Kind::Path : Kind::Site;
  return name == KindName(*kind) ? QString() : QStringLiteral("must be site or path");
}

QString FromJson(const QJsonValue& value, const Field& field, QString* text) {
  if (!value.isString()) return QStringLiteral("must be a text");
  *text = value.toString();
  if (*text != QString::fromUtf8(text->toUtf8().constData())) {
    return QStringLiteral("must not hold NUL or half a surrogate pair: the files cannot keep them");
  }
  if (text->isEmpty() && field.member == Field::Member(&Alignment::identifier)) {
    return QStringLiteral("must not be empty");
  }
  return {};
}

QString FromJson(const QJsonValue& value, const Field& /*field*/, QDateTime* time) {
  *time = QDateTime::fromString(value.toString(), Qt::ISODate);
  if (!time->isValid()) return QStringLiteral("must be a time such as 2024-05-14T09:12:33+02:00");
  if (time->timeSpec() == Qt::LocalTime) return QStringLiteral("must end with an offset from UTC or Z");
  if (time->time().msec() != 0) return QStringLiteral("must be a whole second");
  // Kept in 32 bits, and all of them set means no time.
  constexpr qint64 last = std::numeric_limits<quint32>::max() - 1;
  if (time->toSecsSinceEpoch() < 0 || time->toSecsSinceEpoch() > last) {
    return QStringLiteral("must lie from 1970-01-01T00:00:00Z to 2106-02-07T06:28:14Z");
  }
  return {};
}

QString FromJson(const QJsonValue& value, const Field& field, double* number) {
  if (!IsNumberInRange(value, field)) {
    return QStringLiteral("must be a number from %1").arg(RangeText(field));
  }
  *number = value.toDouble();
  return {};
}

QString FromJson(const QJsonValue& value, const Field& field, float* number) {
  double wide = 0;
  QString wrong = FromJson(value, field, &wide);
  *number = static_cast<float>(wide);
  return wrong;
}

QString FromJson(const QJsonValue& value, const Field& /*field*/, bool* flag) {
  *flag = value.toBool();
  return value.isBool() ? QString() : QStringLiteral("must be true or false");
}

QString FromJson(const QJsonValue& value, const Field& field, int* number) {
  if (!IsNumberInRange(value, field) || std::trunc(value.toDouble()) != value.toDouble()) {
    return QStringLiteral("must be a whole number from %1").arg(RangeText(field));
  }
  *number = static_cast<int>(value.toDouble());
  return {};
}

QString FromJson(const QJsonValue& value, const Field& field, HeightSource* source) {
  for (std::size_t number = 0; number < heightSourceNames.size(); ++number) {
    if (value.toString() == QLatin1String(heightSourceNames.at(number))) {
      *source = static_cast<HeightSource>(number);
      return {};
    }
  }
  int number = 0;
  if (!FromJson(value, field, &number).isEmpty()) {
    return QStringLiteral("must be unknown, manual, barometric, gps or a whole number");
  }
  *source = static_cast<HeightSource>(number);
  return {};
}

}  // namespace

const std::vector<Field>& FieldsOf(Kind kind) {
  static const std::vector<Field> site = FieldsThatFit(Kind::Site);
  static const std::vector<Field> path = FieldsThatFit(Kind::Path);
  return kind == Kind::Site ? site : path;
}

const FieldGroup& FieldTreeOf(Kind kind) {
  static const FieldGroup site = TreeOf(FieldsOf(Kind::Site));
  static const FieldGroup path = TreeOf(FieldsOf(Kind::Path));
  return kind == Kind::Site ? site : path;
}

QString Decimal(float value) { return QString::fromLatin1(Digits(value)); }
QString Decimal(double value) { return QString::fromLatin1(Digits(value)); }

QString TimeText(const QDateTime& time) { return time.toUTC().toString(Qt::ISODate); }

QString FieldText(const Alignment& alignment, const Field& field) {
  return std::visit([&alignment](auto member) { return ToText(alignment.*member); }, field.member);
}

QJsonValue FieldToJson(const Alignment& alignment, const Field& field) {
  return std::visit([&alignment](auto member) { return ToJson(alignment.*member); }, field.member);
}

QJsonValue NumberToJson(float value) { return Digits(value).toDouble(); }

QString FieldFromJson(const QJsonValue& value, const Field& field, Alignment* alignment) {
  return std::visit([&](auto member) { return FromJson(value, field, &(alignment->*member)); }, field.member);
}

QStringList DifferingFields(const Alignment& one, const Alignment& other) {
  QStringList names;
  for (const Field& field : AllFields()) {
    if (!field.IsOf(one.kind) && !field.IsOf(other.kind)) continue;
    const bool equal = std::visit([&](auto member) { return one.*member == other.*member; }, field.member);
    if (!equal) names.append(QString::fromLatin1(field.name));
  }
  return names;
}

QString NotFinite(const Alignment& alignment) {
  for (const Field& field : FieldsOf(alignment.kind)) {
    const QJsonValue value = FieldToJson(alignment, field);
    if (value.isDouble() && !std::isfinite(value.toDouble())) return QString::fromLatin1(field.name);
  }
  return {};
}
