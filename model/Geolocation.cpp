#include "model/Geolocation.h"

#include <utility>

IGeolocation::~IGeolocation() = default;

Geolocation::Geolocation(double latitudeDegreesNorth, double longitudeDegreesEast, double elevationMeters,
                         GpsDatum datum, QDateTime fixTime, bool valid)
    : latitudeDegreesNorth_(latitudeDegreesNorth),
      longitudeDegreesEast_(longitudeDegreesEast),
      elevationMeters_(elevationMeters),
      datum_(datum),
      fixTime_(std::move(fixTime)),
      valid_(valid) {}

Geolocation::~Geolocation() = default;

GpsDatum Geolocation::Datum() const { return datum_; }

QDateTime Geolocation::FixTime() const { return fixTime_; }

bool Geolocation::IsValid() const { return valid_; }

double Geolocation::LatitudeDegreesNorth() const { return latitudeDegreesNorth_; }

double Geolocation::LongitudeDegreesEast() const { return longitudeDegreesEast_; }

double Geolocation::ElevationMeters() const { return elevationMeters_; }

Geolocation* Geolocation::Clone() const {
  return new Geolocation(latitudeDegreesNorth_, longitudeDegreesEast_, elevationMeters_, datum_, fixTime_,
                         valid_);
}
