#include "tool/Alignment.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>

#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "store/IAlignmentDatabase.h"
#include "tool/Console.h"

QString KindName(Kind kind) { return kind == Kind::Site ? QStringLiteral("site") : QStringLiteral("path"); }

QString ShownSubject(Kind kind, const QString& identifier) {
  return KindName(kind) + QLatin1Char(' ') + Console::Printable(identifier);
}

template <typename Record>
void Alignment::TakeCommon(const Record& record) {
  identifier = record.Identifier();
  time = record.GetMeasurementTime();
  const IOrientation& measured = *record.GetMeasuredOrientation();
  measuredAzimuth = measured.AzimuthDegrees();
  measuredTilt = measured.TiltDegrees();
  measuredRoll = measured.RollDegrees();
  const IGeolocation& location = *record.GetGeolocation();
  latitude = location.LatitudeDegreesNorth();
  longitude = location.LongitudeDegreesEast();
  elevation = location.ElevationMeters();
  height = record.GetHeight()->HeightInMeters(nullptr);
  heightSource = record.GetHeight()->HeightType();
  const IMeasurementOptions& options = *record.GetMeasurementOptions();
  azimuthOffset = options.AzimuthOffset();
  tiltInversion = options.TiltInversionEnabled();
  note = options.Note();
  rollPrecision = options.RollPrecision();
  azimuthThreshold = options.AzimuthThreshold();
  tiltThreshold = options.TiltThreshold();
  rollThreshold = options.RollThreshold();
  pathLengthThreshold = options.PathLengthThreshold();
  azimuthDeviation = record.AzimuthErrorDegrees();
  tiltDeviation = record.TiltErrorDegrees();
  rollDeviation = record.RollErrorDegrees();
}

Alignment::Alignment(const IAntennaAlignmentReportData& record) {
  TakeCommon(record);
  key = record.AntennaAlignmentKey();
  const ISiteInformation& site = *record.GetSiteInformation();
  sector = site.SectorName();
  position = site.AntennaPosition();
  targetAzimuth = site.TargetOrientation()->AzimuthDegrees();
  targetTilt = site.TargetOrientation()->TiltDegrees();
  targetRoll = site.TargetOrientation()->RollDegrees();
}

Alignment::Alignment(const IPathAlignmentReportData& record) : kind(Kind::Path) {
  TakeCommon(record);
  key = record.PathAlignmentKey();
  const IGeolocation& farEnd = *record.GetPathInformation()->PathLocation();
  farLatitude = farEnd.LatitudeDegreesNorth();
  farLongitude = farEnd.LongitudeDegreesEast();
  farElevation = farEnd.ElevationMeters();
  targetAzimuth = record.GetTargetOrientation()->AzimuthDegrees();
  targetTilt = record.GetTargetOrientation()->TiltDegrees();
  targetRoll = record.GetTargetOrientation()->RollDegrees();
}

QString VerdictName(Verdict verdict) {
  if (verdict == Verdict::None) return QStringLiteral("none");
  return verdict == Verdict::Pass ? QStringLiteral("pass") : QStringLiteral("fail");
}

QString VerdictWords(Verdict verdict) {
  return verdict == Verdict::None ? QStringLiteral("no threshold") : VerdictName(verdict);
}

Verdict Together(Verdict one, Verdict other) {
  if (one == Verdict::Fail || other == Verdict::Fail) return Verdict::Fail;
  return one == Verdict::Pass ? one : other;
}

namespace {

Judgement JudgeAngle(const char* angle, float target, float measured, float deviation, float threshold) {
  const Verdict verdict = !(threshold > 0)                    ? Verdict::None
                          : std::fabs(deviation) <= threshold ? Verdict::Pass
                                                              : Verdict::Fail;
  return {angle, target, measured, deviation, threshold, verdict};
}

}  // namespace

std::vector<Judgement> Judge(const Alignment& a) {
  std::vector<Judgement> angles = {
      JudgeAngle("azimuth", a.targetAzimuth, a.measuredAzimuth, a.azimuthDeviation, a.azimuthThreshold),
      JudgeAngle("tilt", a.targetTilt, a.measuredTilt, a.tiltDeviation, a.tiltThreshold)};
  if (a.kind == Kind::Site) {
    angles.push_back(JudgeAngle("roll", a.targetRoll, a.measuredRoll, a.rollDeviation, a.rollThreshold));
  }
  return angles;
}

Verdict VerdictOf(const Alignment& alignment) {
  Verdict verdict = Verdict::None;
  for (const Judgement& angle : Judge(alignment)) verdict = Together(verdict, angle.verdict);
  return verdict;
}

Antenna AntennaOf(const Alignment& alignment) { return {alignment.sector, alignment.position}; }

std::vector<Alignment> LatestOfEach(const std::vector<Alignment>& alignments) {
  std::map<Antenna, std::size_t> newest;
  for (std::size_t number = 0; number < alignments.size(); ++number) {
    const auto [place, isFirst] = newest.try_emplace(AntennaOf(alignments[number]), number);
    if (!isFirst && alignments[place->second].time <= alignments[number].time) place->second = number;
  }
  std::vector<std::size_t> numbers;
  numbers.reserve(newest.size());
  for (const auto& item : newest) numbers.push_back(item.second);
  std::sort(numbers.begin(), numbers.end());
  std::vector<Alignment> latest;
  latest.reserve(numbers.size());
  for (const std::size_t number : numbers) latest.push_back(alignments[number]);
  return latest;
}

bool Save(IAlignmentDatabase* store, const Alignment& a) {
  Geolocation location(a.latitude, a.longitude, a.elevation, GpsDatum::Wgs84, a.time, true);
  Orientation measured(a.measuredAzimuth, a.measuredTilt, a.measuredRoll);
  Height height(a.height, a.heightSource);
  MeasurementOptions options(a.azimuthOffset, a.tiltInversion, a.azimuthThreshold, a.tiltThreshold,
                             a.rollThreshold, a.pathLengthThreshold, a.note,
                             static_cast<unsigned long>(a.rollPrecision));
  // A save that failed before the alignment's own row returns a record with this key.
  constexpr unsigned int noKey = std::numeric_limits<unsigned int>::max();
  if (a.kind == Kind::Site) {
    SiteInformation site(a.identifier, a.sector, a.position, a.targetAzimuth, a.targetTilt, a.targetRoll);
    const std::unique_ptr<IAntennaAlignmentReportData> saved(
        store->SaveAlignmentReportData(&site, &location, &measured, &height, a.time, &options));
    return saved && saved->AntennaAlignmentKey() != noKey;
  }
  PathInformation path(a.identifier, a.farLatitude, a.farLongitude, a.farElevation);
  Orientation target(a.targetAzimuth, a.targetTilt, a.targetRoll);
  const std::unique_ptr<IPathAlignmentReportData> saved(
      store->SavePathReportData(&path, &location, &target, &measured, &height, a.time, &options));
  return saved && saved->PathAlignmentKey() != noKey;
}
