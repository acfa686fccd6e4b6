#include "tool/AlignmentFields.h"

#include <QLocale>
#include <array>
#include <cmath>

namespace {

constexpr double MetersLowest = -1000;
constexpr double MetersHighest = 20000;

// Both conventions for azimuths, 0 to 360 and -180 to 180, are let in.
const std::vector<Field>& AllFields() {
  using A = Alignment;
  static const std::vector<Field> fields = {
      {"identifier", Field::Both, &A::identifier},
      {"sector", Field::SiteOnly, &A::sector},
      {"position", Field::SiteOnly, &A::position},
      {"time", Field::Both, &A::time},
      {"target.azimuth", Field::Both, &A::targetAzimuth, "°", -360, 360},
      {"target.tilt", Field::Both, &A::targetTilt, "°", -90, 90},
      {"target.roll", Field::Both, &A::targetRoll, "°", -180, 180},
      {"measured.azimuth", Field::Both, &A::measuredAzimuth, "°", -360, 360},
      {"measured.tilt", Field::Both, &A::measuredTilt, "°", -90, 90},
      {"measured.roll", Field::Both, &A::measuredRoll, "°", -180, 180},
      {"location.latitude", Field::Both, &A::latitude, "°N", -90, 90},
      {"location.longitude", Field::Both, &A::longitude, "°E", -180, 180},
      {"location.elevation", Field::Both, &A::elevation, "m", MetersLowest, MetersHighest},
      {"farEnd.latitude", Field::PathOnly, &A::farLatitude, "°N", -90, 90},
      {"farEnd.longitude", Field::PathOnly, &A::farLongitude, "°E", -180, 180},
      {"farEnd.elevation", Field::PathOnly, &A::farElevation, "m", MetersLowest, MetersHighest},
      {"height.value", Field::Both, &A::height, "m", MetersLowest, MetersHighest},
      {"height.source", Field::Both, &A::heightSource},
      {"options.azimuthOffset", Field::Both, &A::azimuthOffset, "°", -360, 360},
      {"options.tiltInversion", Field::Both, &A::tiltInversion},
      {"options.rollPrecision", Field::SiteOnly, &A::rollPrecision},
      {"options.note", Field::Both, &A::note},
      {"options.thresholds.azimuth", Field::Both, &A::azimuthThreshold, "°", 0, 180},
      {"options.thresholds.tilt", Field::Both, &A::tiltThreshold, "°", 0, 180},
      {"options.thresholds.roll", Field::SiteOnly, &A::rollThreshold, "°", 0, 180},
      // -1 is what an alignment without a stored threshold has. The files fix no unit.
      {"options.thresholds.pathLength", Field::PathOnly, &A::pathLengthThreshold, "", -1, 1e9}};
  return fields;
}

std::vector<Field> FieldsOutside(Field::Kinds otherKind) {
  std::vector<Field> fields;
  for (const Field& field : AllFields()) {
    if (field.kinds != otherKind) fields.push_back(field);
  }
  return fields;
}

constexpr std::array<const char*, 4> HeightSourceNames = {"unknown", "manual", "barometric", "gps"};

/// The decimal number with the fewest digits that narrows to `value`: 0.1, not 0.10000000149.
double ShortestDecimal(float value) {
  for (int digits = 1; digits <= std::numeric_limits<float>::max_digits10; ++digits) {
    const double candidate = QString::number(static_cast<double>(value), 'g', digits).toDouble();
    if (static_cast<float>(candidate) == value) return candidate;
  }
  return static_cast<double>(value);
}

QJsonValue ToJson(const QString& value) { return value; }
QJsonValue ToJson(const QDateTime& value) { return value.toUTC().toString(Qt::ISODate); }
QJsonValue ToJson(float value) { return ShortestDecimal(value); }
QJsonValue ToJson(double value) { return value; }
QJsonValue ToJson(bool value) { return value; }
QJsonValue ToJson(int value) { return value; }
QJsonValue ToJson(HeightSource value) {
  const auto number = static_cast<std::size_t>(value);
  if (number < HeightSourceNames.size()) return QLatin1String(HeightSourceNames.at(number));
  return static_cast<int>(value);
}

QString RangeText(const Field& field) {
  const auto text = [](double bound) { return QString::number(bound, 'f', QLocale::FloatingPointShortest); };
  return QStringLiteral("%1 to %2").arg(text(field.lowest), text(field.highest));
}

/// True for a number within the range. Neither NaN nor infinity is within any.
bool IsNumberInRange(const QJsonValue& value, const Field& field) {
  return value.isDouble() && value.toDouble() >= field.lowest && value.toDouble() <= field.highest;
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
  constexpr qint64 Last = std::numeric_limits<quint32>::max() - 1;
  if (time->toSecsSinceEpoch() < 0 || time->toSecsSinceEpoch() > Last) {
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
  for (std::size_t number = 0; number < HeightSourceNames.size(); ++number) {
    if (value.toString() == QLatin1String(HeightSourceNames.at(number))) {
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
  static const std::vector<Field> site = FieldsOutside(Field::PathOnly);
  static const std::vector<Field> path = FieldsOutside(Field::SiteOnly);
  return kind == Kind::Site ? site : path;
}

QString FieldText(const Alignment& alignment, const Field& field) {
  const QJsonValue value = FieldToJson(alignment, field);
  if (value.isString()) return value.toString();
  if (value.isBool()) return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
  return QString::number(value.toDouble(), 'f', QLocale::FloatingPointShortest);
}

QJsonValue FieldToJson(const Alignment& alignment, const Field& field) {
  return std::visit([&alignment](auto member) { return ToJson(alignment.*member); }, field.member);
}

QString FieldFromJson(const QJsonValue& value, const Field& field, Alignment* alignment) {
  return std::visit([&](auto member) { return FromJson(value, field, &(alignment->*member)); }, field.member);
}
