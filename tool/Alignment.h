#pragma once

#include <QDateTime>
#include <QString>
#include <utility>
#include <vector>

#include "model/HeightSource.h"

class IAlignmentDatabase;
class IAntennaAlignmentReportData;
class IPathAlignmentReportData;

enum class Kind { Site, Path };

/// "site" or "path".
QString KindName(Kind kind);
/// "site S", as it can be shown on a line.
QString ShownSubject(Kind kind, const QString& identifier);

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

  /// Only of a stored alignment: its key, its number among all reports of its site or path, and measured
  /// minus target, the azimuth the shorter way round.
  unsigned int key = 0;
  int index = 0;
  float azimuthDeviation = 0;
  float tiltDeviation = 0;
  float rollDeviation = 0;

 private:
  template <typename Record>
  void TakeCommon(const Record& record);
};

/// All alignments of a site or path, or those of them that are asked for.
struct Reports {
  Kind kind = Kind::Site;
  QString identifier;
  /// Name of the PDF file for them.
  QString pdfName;
  std::vector<Alignment> alignments;
};

enum class Verdict { None, Pass, Fail };

/// "none", "pass" or "fail".
QString VerdictName(Verdict verdict);
/// The same for people: none is "no threshold".
QString VerdictWords(Verdict verdict);
/// Fail if one fails, else pass if one passes, else none.
Verdict Together(Verdict one, Verdict other);

/// One angle of an alignment against its threshold. A threshold of 0 means that nobody has set one.
struct Judgement {
  const char* angle;
  float target;
  float measured;
  float deviation;
  float threshold;
  Verdict verdict;
};

/// The angles that count for the kind of alignment: azimuth, tilt and, at a site, roll.
std::vector<Judgement> Judge(const Alignment& alignment);
/// The verdict on its angles together.
Verdict VerdictOf(const Alignment& alignment);

/// What sets one antenna apart from the others: sector and position at a site; a path has one.
using Antenna = std::pair<QString, QString>;
Antenna AntennaOf(const Alignment& alignment);
/// The newest measurement of each antenna of a site or path, in the order given; of several with the same
/// time the last one.
std::vector<Alignment> LatestOfEach(const std::vector<Alignment>& alignments);

/// Stores the alignment in both files; false when that did not succeed.
bool Save(IAlignmentDatabase* store, const Alignment& alignment);
