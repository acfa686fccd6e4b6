#include "tool/formats/MapLine.h"

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/GeodesicLine.hpp>
#include <GeographicLib/Math.hpp>
#include <cmath>

namespace {

using GeographicLib::Geodesic;
using GeographicLib::GeodesicLine;

double Rounded(double degrees) { return std::round(degrees * 1e7) / 1e7; }

/// The points of a geodesic, so close that straight lines between them will do on a map. Longitudes go on
/// beyond 180 degrees where the line does.
class Tracer {
 public:
  explicit Tracer(const GeodesicLine& line) : line_(line), points_{At(0)} {}

  std::vector<MapPoint> Trace() {
    Trace(0, points_.front(), line_.Distance(), At(line_.Distance()));
    return points_;
  }

 private:
  MapPoint At(double meters) const {
    MapPoint point{};
    double unused = 0;
    line_.GenPosition(false, meters, Geodesic::LATITUDE | Geodesic::LONGITUDE | Geodesic::LONG_UNROLL,
                      point.latitude, point.longitude, unused, unused, unused, unused, unused, unused);
    return point;
  }

  void Trace(double from, const MapPoint& begin, double to, const MapPoint& end) {
    constexpr double longestMeters = 50'000;
    constexpr double widestDegrees = 1;
    // At a pole the longitude leaps, however short the step.
    constexpr double shortestMeters = 1;
    const bool isFine =
        to - from <= longestMeters && std::fabs(end.longitude - begin.longitude) <= widestDegrees;
    if (isFine || to - from <= shortestMeters) {
      points_.push_back(end);
      return;
    }
    const double middle = (from + to) / 2;
    const MapPoint point = At(middle);
    Trace(from, begin, middle, point);
    Trace(middle, point, to, end);
  }

  const GeodesicLine line_;
  std::vector<MapPoint> points_;
};

/// Cuts a line whose longitudes go on beyond 180 degrees into parts that lie between -180 and 180.
class Cutter {
 public:
  MapLine Cut(const std::vector<MapPoint>& points) {
    MapPoint last = points.front();
    Add(last);
    for (auto point = points.begin() + 1; point != points.end(); ++point) {
      Step(last, *point);
      last = *point;
    }
    EndPart();
    // A line without length is still a line.
    if (line_.empty()) line_.push_back({part_.front(), part_.front()});
    return line_;
  }

 private:
  void Step(const MapPoint& from, const MapPoint& to) {
    // What is closer to the antimeridian than this is on it.
    constexpr double touching = 1e-9;
    constexpr double leap = 90;
    if (std::fabs(to.longitude - from.longitude) > leap) {
      const double pole = std::copysign(90.0, to.latitude);
      Add({from.longitude, pole});
      EndPart();
      shift_ = to.longitude - GeographicLib::Math::AngNormalize(to.longitude);
      StartPart({to.longitude, pole});
    } else if (std::fabs(to.longitude - shift_) > 180 + touching) {
      const double edge = std::copysign(180.0, to.longitude - shift_);
      const double part = (edge + shift_ - from.longitude) / (to.longitude - from.longitude);
      const MapPoint crossing{edge + shift_, from.latitude + part * (to.latitude - from.latitude)};
      Add(crossing);
      EndPart();
      shift_ += 2 * edge;
      StartPart(crossing);
    }
    Add(to);
  }

  void StartPart(const MapPoint& point) {
    part_.clear();
    Add(point);
  }

  void Add(const MapPoint& point) {
    const MapPoint rounded{Rounded(point.longitude - shift_), Rounded(point.latitude)};
    const bool isRepeated = !part_.empty() && part_.back().longitude == rounded.longitude &&
                            part_.back().latitude == rounded.latitude;
    if (!isRepeated) part_.push_back(rounded);
  }

  void EndPart() {
    if (part_.size() > 1) line_.push_back(part_);
  }

  double shift_ = 0;
  std::vector<MapPoint> part_;
  MapLine line_;
};

MapLine Traced(const GeodesicLine& line) { return Cutter().Cut(Tracer(line).Trace()); }

double Normal(double longitude) { return GeographicLib::Math::AngNormalize(longitude); }

}  // namespace

namespace Geodesics {

Course Between(const MapPoint& here, const MapPoint& there) {
  Course course{};
  double unused = 0;
  Geodesic::WGS84().Inverse(here.latitude, here.longitude, there.latitude, there.longitude,
                            course.distanceMeters, course.bearingDegrees, unused);
  if (course.bearingDegrees < 0) course.bearingDegrees += 360;
  return course;
}

MapLine LineBetween(const MapPoint& here, const MapPoint& there) {
  return Traced(Geodesic::WGS84().InverseLine(here.latitude, Normal(here.longitude), there.latitude,
                                              Normal(there.longitude)));
}

MapLine Ray(const MapPoint& start, double bearingDegrees, double meters) {
  return Traced(
      Geodesic::WGS84().DirectLine(start.latitude, Normal(start.longitude), bearingDegrees, meters));
}

MapPoint OnMap(const MapPoint& point) { return {Rounded(Normal(point.longitude)), Rounded(point.latitude)}; }

}  // namespace Geodesics
