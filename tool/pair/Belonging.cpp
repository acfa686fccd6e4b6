#include "tool/pair/Belonging.h"

namespace Belonging {

const Tables& Of(Kind kind) {
  static constexpr Tables site{Kind::Site,
                               "Sites",
                               "SiteKey",
                               "SiteIdentifier",
                               "AntennaAlignment",
                               "AntennaAlignmentKey",
                               "AntennaAlignmentThresholds",
                               "SiteIdentifier"};
  static constexpr Tables path{Kind::Path,
                               "Paths",
                               "PathKey",
                               "PathIdentifier",
                               "PathAlignment",
                               "PathAlignmentKey",
                               "PathAlignmentThresholds",
                               "PathKey"};
  return kind == Kind::Site ? site : path;
}

std::vector<Reference> ReferencesOf(Kind kind) {
  const Tables& tables = Of(kind);
  std::vector<Reference> references{{tables.ownerKey, tables.owners, tables.ownerKey},
                                    {"TargetOrientationKey", "Orientation", "OrientationKey"},
                                    {"MeasuredOrientationKey", "Orientation", "OrientationKey"},
                                    {"LocationKey", "Geolocation", "GeolocationKey"},
                                    {"SiteHeightKey", "Height", "HeightKey"}};
  if (kind == Kind::Path) references.push_back({"PathLocationKey", "Geolocation", "GeolocationKey"});
  return references;
}

QByteArray Joined(Kind kind, const QByteArray& columns) {
  const Tables& tables = Of(kind);
  return "SELECT " + columns + " FROM thresholds." + tables.thresholds + " t JOIN main." + tables.alignments +
         " a ON a." + tables.alignmentKey + " = t." + tables.alignmentKey + " WHERE ";
}

QByteArray Disagree(Kind kind) {
  const Tables& tables = Of(kind);
  return QByteArray("t.") + tables.thresholdsOwner + " IS NOT a." + tables.ownerKey;
}

bool IsPair(const Sqlite& db) {
  qint64 agreeing = 0;
  qint64 disagreeing = 0;
  for (const Kind kind : {Kind::Site, Kind::Path}) {
    disagreeing += db.Number(Joined(kind, "count(*)") + Disagree(kind));
    agreeing += db.Number(Joined(kind, "count(*)") + "NOT (" + Disagree(kind) + ')');
  }
  return disagreeing == 0 || agreeing > 0;
}

}  // namespace Belonging
