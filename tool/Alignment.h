#pragma once

#include <QDateTime>
#include <QString>
#include <vector>

#include "model/HeightSource.h"

class AlignmentDatabaseVersion7;
class IAntennaAlignmentReportData;
class IPathAlignmentReportData;

enum class Kind { Site, Path };

/// "site" or "path".
QString KindName(Kind kind);

/// One alignment with all that the files keep of it. Values that a kind does not have stay as they are here.
struct Alignment {
  Alignment() = default;
  explicit Alignment(const IAntennaAlignmentReportData& record);
  explicit Alignment(const IPathAlignmentReportData& record);

  Kind kind = Kind::Site;
  QString identifier;
  QString sector;
  QString position;
  QDateTime time;
  float targetAzimuth = 0;
  float targetTilt = 0;
  float targetRoll = 0;
  float measuredAzimuth = 0;
  float measuredTilt = 0;
  float measuredRoll = 0;
  double latitude = 0;
  double longitude = 0;
  double elevation = 0;
  double farLatitude = 0;
  double farLongitude = 0;
  double farElevation = 0;
  double height = 0;
  HeightSource heightSource = HeightSource::Unknown;
  float azimuthOffset = 0;
  bool tiltInversion = false;
  QString note;
  int rollPrecision = 0;
  float azimuthThreshold = 0;
  float tiltThreshold = 0;
  float rollThreshold = 0;
  float pathLengthThreshold = 0;

  /// Of a stored alignment alone: its key, and measured minus target, the azimuth by the shorter way round.
  unsigned int key = 0;
  float azimuthDeviation = 0;
  float tiltDeviation = 0;
  float rollDeviation = 0;

 private:
  template <typename Record>
  void TakeCommon(const Record& record);
};

/// One angle of an alignment against its threshold.
struct Judgement {
  const char* angle;
  float target;
  float measured;
  float deviation;
  float threshold;

  /// A threshold of 0 is none that anybody has set.
  bool HasThreshold() const { return threshold > 0; }
  bool Passes() const;
  /// "pass", "fail" or "no threshold".
  QString Verdict() const;
};

/// The angles that count for the kind of alignment: azimuth, tilt and, at a site, roll.
std::vector<Judgement> Judge(const Alignment& alignment);

/// Stores the alignment in both files; false when that did not succeed.
bool Save(AlignmentDatabaseVersion7* store, const Alignment& alignment);
