#include "tool/formats/AlignmentMap.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <cmath>

#include "tool/formats/AlignmentFields.h"

namespace {

bool IsOnEarth(const MapPoint& point) {
  return std::fabs(point.latitude) <= 90 && std::isfinite(point.longitude);
}

}  // namespace

std::vector<MapShape> ShapesOf(const Alignment& a, double rayMeters) {
  const MapPoint here{a.longitude, a.latitude};
  if (!IsOnEarth(here)) return {{"instrument", {}}};
  std::vector<MapShape> shapes{
      {"instrument", {{Geodesics::OnMap(here)}}},
      {"target", Geodesics::Ray(here, static_cast<double>(a.targetAzimuth), rayMeters)},
      {"measured", Geodesics::Ray(here, static_cast<double>(a.measuredAzimuth), rayMeters)}};
  const MapPoint farEnd{a.farLongitude, a.farLatitude};
  if (a.kind == Kind::Path && IsOnEarth(farEnd)) {
    shapes.push_back({"path", Geodesics::LineBetween(here, farEnd)});
  }
  return shapes;
}

namespace {

QString MapName(const Field& field) { return QString::fromLatin1(field.name).section(QLatin1Char('.'), -1); }

QJsonArray ToJson(const MapPoint& point) { return {point.longitude, point.latitude}; }

QJsonArray ToJson(const std::vector<MapPoint>& points) {
  QJsonArray array;
  for (const MapPoint& point : points) array.append(ToJson(point));
  return array;
}

QJsonArray ToJson(const MapLine& line) {
  QJsonArray array;
  for (const std::vector<MapPoint>& part : line) array.append(ToJson(part));
  return array;
}

QJsonObject Geometry(const char* type, const QJsonArray& coordinates) {
  return {{QStringLiteral("type"), QLatin1String(type)}, {QStringLiteral("coordinates"), coordinates}};
}

QJsonValue GeometryOf(const MapLine& line) {
  if (line.empty()) return QJsonValue::Null;
  if (line.size() > 1) return Geometry("MultiLineString", ToJson(line));
  const std::vector<MapPoint>& part = line.front();
  return part.size() == 1 ? Geometry("Point", ToJson(part.front())) : Geometry("LineString", ToJson(part));
}

QJsonObject FeatureOf(const Alignment& alignment, const MapShape& shape) {
  QJsonObject properties{{QStringLiteral("role"), QLatin1String(shape.role)},
                         {QStringLiteral("verdict"), VerdictName(VerdictOf(alignment))}};
  for (const Field& field : AllFields()) {
    if ((field.uses & Field::OnMap) == 0) continue;
    properties.insert(MapName(field),
                      field.IsOf(alignment.kind) ? FieldToJson(alignment, field) : QJsonValue::Null);
  }
  return {{QStringLiteral("type"), QStringLiteral("Feature")},
          {QStringLiteral("geometry"), GeometryOf(shape.line)},
          {QStringLiteral("properties"), properties}};
}

/// Hands on what is written to it.
class SinkDevice : public QIODevice {
 public:
  explicit SinkDevice(TextSink sink) : sink_(std::move(sink)) { open(QIODevice::WriteOnly); }

 protected:
  qint64 readData(char* /*data*/, qint64 /*length*/) override { return -1; }
  qint64 writeData(const char* data, qint64 length) override {
    sink_(QByteArray(data, static_cast<int>(length)));
    return length;
  }

 private:
  const TextSink sink_;
};

bool IsHalfASurrogatePair(const QString& text, int place) {
  const QChar character = text.at(place);
  if (character.isHighSurrogate()) return place + 1 == text.size() || !text.at(place + 1).isLowSurrogate();
  return character.isLowSurrogate() && (place == 0 || !text.at(place - 1).isHighSurrogate());
}

/// With replacement characters for those that XML 1.0 cannot hold.
QString XmlText(const QString& text) {
  QString held = text;
  for (int place = 0; place < text.size(); ++place) {
    const ushort code = text.at(place).unicode();
    const bool isBlank = code == '\t' || code == '\n' || code == '\r';
    if ((code < 0x20 && !isBlank) || code >= 0xFFFE || IsHalfASurrogatePair(text, place)) {
      held[place] = QChar::ReplacementCharacter;
    }
  }
  return held;
}

struct KmlColor {
  Verdict verdict;
  /// Opacity, blue, green, red.
  const char* color;
};

constexpr KmlColor colors[] = {
    {Verdict::Pass, "ff487f1a"}, {Verdict::Fail, "ff2626be"}, {Verdict::None, "ff808080"}};

/// The target is the thinner line.
QString StyleName(Verdict verdict, bool isTarget) {
  return VerdictName(verdict) + (isTarget ? QStringLiteral("-target") : QString());
}

QString PlacemarkName(const Alignment& alignment, const char* role) {
  const QString antenna = alignment.kind == Kind::Site
                              ? alignment.sector + QLatin1Char(' ') + alignment.position
                              : alignment.identifier;
  return qstrcmp(role, "instrument") == 0 ? antenna : antenna + QStringLiteral(": ") + QLatin1String(role);
}

}  // namespace

GeoJsonWriter::GeoJsonWriter(TextSink sink, double rayMeters)
    : sink_(std::move(sink)), rayMeters_(rayMeters) {
  sink_(R"({"type":"FeatureCollection","features":[)");
}

void GeoJsonWriter::Write(const Reports& reports) {
  for (const Alignment& alignment : reports.alignments) {
    for (const MapShape& shape : ShapesOf(alignment, rayMeters_)) {
      const QByteArray feature = QJsonDocument(FeatureOf(alignment, shape)).toJson(QJsonDocument::Compact);
      sink_((isEmpty_ ? "\n" : ",\n") + feature);
      isEmpty_ = false;
    }
  }
}

void GeoJsonWriter::End() { sink_("\n]}\n"); }

KmlWriter::KmlWriter(TextSink sink, double rayMeters)
    : device_(std::make_unique<SinkDevice>(std::move(sink))), xml_(device_.get()), rayMeters_(rayMeters) {
  xml_.setAutoFormatting(true);
  xml_.setAutoFormattingIndent(1);
  xml_.writeStartDocument();
  xml_.writeStartElement(QStringLiteral("kml"));
  xml_.writeDefaultNamespace(QStringLiteral("http://www.opengis.net/kml/2.2"));
  xml_.writeStartElement(QStringLiteral("Document"));
  WriteText("name", QStringLiteral("Antenna alignments"));
  WriteStyles();
}

KmlWriter::~KmlWriter() = default;

void KmlWriter::Write(const Reports& reports) {
  xml_.writeStartElement(QStringLiteral("Folder"));
  WriteText("name", reports.identifier);
  for (const Alignment& alignment : reports.alignments) {
    for (const MapShape& shape : ShapesOf(alignment, rayMeters_)) WritePlacemark(alignment, shape);
  }
  xml_.writeEndElement();
}

void KmlWriter::End() { xml_.writeEndDocument(); }

void KmlWriter::WriteStyles() {
  for (const KmlColor& color : colors) {
    for (const bool isTarget : {false, true}) {
      xml_.writeStartElement(QStringLiteral("Style"));
      xml_.writeAttribute(QStringLiteral("id"), StyleName(color.verdict, isTarget));
      xml_.writeStartElement(QStringLiteral("IconStyle"));
      WriteText("color", QLatin1String(color.color));
      xml_.writeEndElement();
      xml_.writeStartElement(QStringLiteral("LineStyle"));
      WriteText("color", QLatin1String(color.color));
      WriteText("width", isTarget ? QStringLiteral("1.5") : QStringLiteral("4"));
      xml_.writeEndElement();
      xml_.writeEndElement();
    }
  }
}

void KmlWriter::WritePlacemark(const Alignment& alignment, const MapShape& shape) {
  const Verdict verdict = VerdictOf(alignment);
  xml_.writeStartElement(QStringLiteral("Placemark"));
  WriteText("name", PlacemarkName(alignment, shape.role));
  WriteText("styleUrl", QLatin1Char('#') + StyleName(verdict, qstrcmp(shape.role, "target") == 0));
  xml_.writeStartElement(QStringLiteral("ExtendedData"));
  WriteData(QStringLiteral("role"), QLatin1String(shape.role));
  for (const Field& field : AllFields()) {
    if ((field.uses & Field::OnMap) == 0) continue;
    WriteData(MapName(field), field.IsOf(alignment.kind) ? FieldText(alignment, field) : QString());
  }
  WriteData(QStringLiteral("verdict"), VerdictName(verdict));
  xml_.writeEndElement();
  if (shape.line.size() > 1) xml_.writeStartElement(QStringLiteral("MultiGeometry"));
  WriteGeometry(shape.line);
  if (shape.line.size() > 1) xml_.writeEndElement();
  xml_.writeEndElement();
}

void KmlWriter::WriteData(const QString& name, const QString& value) {
  xml_.writeStartElement(QStringLiteral("Data"));
  xml_.writeAttribute(QStringLiteral("name"), name);
  WriteText("value", value);
  xml_.writeEndElement();
}

void KmlWriter::WriteGeometry(const MapLine& line) {
  for (const std::vector<MapPoint>& part : line) {
    QStringList coordinates;
    for (const MapPoint& point : part) {
      coordinates.append(Decimal(point.longitude) + QLatin1Char(',') + Decimal(point.latitude));
    }
    xml_.writeStartElement(part.size() == 1 ? QStringLiteral("Point") : QStringLiteral("LineString"));
    // Without this a line would run through the ground.
    if (part.size() > 1) WriteText("tessellate", QStringLiteral("1"));
    WriteText("coordinates", coordinates.join(QLatin1Char(' ')));
    xml_.writeEndElement();
  }
}

void KmlWriter::WriteText(const char* element, const QString& text) {
  xml_.writeTextElement(QLatin1String(element), XmlText(text));
}
