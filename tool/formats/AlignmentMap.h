#pragma once

#include <QIODevice>
#include <QJsonArray>
#include <QXmlStreamWriter>
#include <memory>

#include "tool/formats/AlignmentWriter.h"
#include "tool/formats/MapLine.h"

/// What is drawn for an alignment.
struct MapShape {
  /// instrument, target, measured or path.
  const char* role;
  /// For a place one part with one point; no part if it lies nowhere on Earth.
  MapLine line;
};

/// Where the instrument stood, rays of this length to the target azimuth and to the measured one and, for a
/// path, the line to its far end. What lies nowhere on Earth is left out, except the instrument itself.
std::vector<MapShape> ShapesOf(const Alignment& alignment, double rayMeters);

/// A GeoJSON FeatureCollection (RFC 7946).
class GeoJsonWriter : public AlignmentWriter {
 public:
  GeoJsonWriter(TextSink sink, double rayMeters);
  void Write(const Reports& reports) override;
  void End() override;

 private:
  const TextSink sink_;
  const double rayMeters_;
  bool isEmpty_ = true;
};

/// A KML 2.2 document with a folder for each site and path. Characters that XML cannot hold are replaced.
class KmlWriter : public AlignmentWriter {
 public:
  KmlWriter(TextSink sink, double rayMeters);
  ~KmlWriter() override;
  void Write(const Reports& reports) override;
  void End() override;

 private:
  void WriteStyles();
  void WritePlacemark(const Alignment& alignment, const MapShape& shape);
  void WriteData(const QString& name, const QString& value);
  void WriteGeometry(const MapLine& line);
  void WriteText(const char* element, const QString& text);

  const std::unique_ptr<QIODevice> device_;
  QXmlStreamWriter xml_;
  const double rayMeters_;
};
