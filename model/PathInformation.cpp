#include "model/PathInformation.h"

#include "model/Geolocation.h"

namespace {

std::unique_ptr<IGeolocation> FarEnd(double latitudeDegreesNorth, double longitudeDegreesEast,
                                     double elevationMeters) {
  return std::make_unique<Geolocation>(latitudeDegreesNorth, longitudeDegreesEast, elevationMeters,
                                       GpsDatum::Wgs84, QDateTime::currentDateTime(), true);
}

}  // namespace

IPathInformation::~IPathInformation() = default;

PathInformation::PathInformation(const QString& pathIdentifier, double latitudeDegreesNorth,
                                 double longitudeDegreesEast, double elevationMeters)
    : pathIdentifier_(pathIdentifier),
      pathLocation_(FarEnd(latitudeDegreesNorth, longitudeDegreesEast, elevationMeters)) {}

PathInformation::~PathInformation() = default;

PathInformation* PathInformation::Clone() const {
  return new PathInformation(pathIdentifier_, pathLocation_->LatitudeDegreesNorth(),
                             pathLocation_->LongitudeDegreesEast(), pathLocation_->ElevationMeters());
}

bool PathInformation::IsValid() const { return !pathIdentifier_.isEmpty(); }

void PathInformation::Clear() {
  pathIdentifier_.clear();
  pathLocation_ = FarEnd(0.0, 0.0, 0.0);
}

void PathInformation::SetPathIdentifier(const QString& pathIdentifier) { pathIdentifier_ = pathIdentifier; }

void PathInformation::SetPathLocation(double latitudeDegreesNorth, double longitudeDegreesEast,
                                      double elevationMeters) {
  pathLocation_ = FarEnd(latitudeDegreesNorth, longitudeDegreesEast, elevationMeters);
}

const QString& PathInformation::PathIdentifier() const { return pathIdentifier_; }

IGeolocation* PathInformation::PathLocation() const { return pathLocation_.get(); }
