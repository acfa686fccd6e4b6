#pragma once

#include <vector>

/// A point on a map, degrees.
struct MapPoint {
  double longitude;
  double latitude;
};

/// A line on a map, in one part or, where it crosses the antimeridian or a pole, in several. No point has
/// more than 7 decimals, about a centimetre.
using MapLine = std::vector<std::vector<MapPoint>>;

/// Geodesics on WGS 84. Latitudes lie from -90 to 90; longitudes may be any.
namespace Geodesics {

struct Course {
  double bearingDegrees;
  double distanceMeters;
};

/// From here to there, along the shortest way; the bearing from north, clockwise, from 0 to 360.
Course Between(const MapPoint& here, const MapPoint& there);

/// The shortest way. Long ones have points in between, so that they are drawn where they run.
MapLine LineBetween(const MapPoint& here, const MapPoint& there);
/// A way that starts with this bearing.
MapLine Ray(const MapPoint& start, double bearingDegrees, double meters);

/// The point with its longitude brought to -180 to 180.
MapPoint OnMap(const MapPoint& point);

}  // namespace Geodesics
