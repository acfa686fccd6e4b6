#include "tests/tool/formats/Samples.h"

namespace {

Alignment SampleOf(Kind kind, const char* identifier) {
  Alignment a;
  a.kind = kind;
  a.identifier = QString::fromUtf8(identifier);
  a.time = Moment("2024-05-14T07:12:33Z");
  a.targetAzimuth = 0.5F;
  a.targetTilt = -2.25F;
  a.targetRoll = 0.125F;
  a.measuredAzimuth = 359.75F;
  a.measuredTilt = -2.1F;
  a.measuredRoll = 0.375F;
  a.latitude = 59.318742;
  a.longitude = 10.477905;
  a.elevation = 38.4;
  a.height = 31.5;
  a.heightSource = HeightSource::Gps;
  a.azimuthOffset = 90;
  a.tiltInversion = true;
  a.note = QStringLiteral("Grüße, \"Ole\"\nline 2");
  a.azimuthThreshold = 1.5F;
  a.tiltThreshold = 0.125F;
  a.key = 7;
  a.index = 3;
  a.azimuthDeviation = -0.75F;
  a.tiltDeviation = 0.15F;
  a.rollDeviation = 0.25F;
  return a;
}

}  // namespace

Alignment SampleSite() {
  Alignment a = SampleOf(Kind::Site, "Åsgård");
  a.sector = QStringLiteral("Alpha");
  a.position = QStringLiteral("Høyt");
  a.rollPrecision = 2;
  a.rollThreshold = 0;
  return a;
}

Alignment SamplePath() {
  Alignment a = SampleOf(Kind::Path, "Żuławy");
  a.farLatitude = 54.152287;
  a.farLongitude = 19.408831;
  a.farElevation = 27.75;
  a.pathLengthThreshold = 1000.5F;
  return a;
}

Reports ReportsOf(const std::vector<Alignment>& alignments) {
  Reports reports;
  reports.kind = alignments.front().kind;
  reports.identifier = alignments.front().identifier;
  reports.alignments = alignments;
  return reports;
}

QDateTime Moment(const char* text) { return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate); }
