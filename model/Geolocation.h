#pragma once

#include <QDateTime>

#include "TarnbeamDatabaseExport.h"
#include "model/IGeolocation.h"

/// A fixed geographic position.
class TARNBEAMDATABASE_EXPORT Geolocation : public IGeolocation {
 public:
  /// Latitude in degrees north, longitude in degrees east, elevation in metres.
  Geolocation(double latitudeDegreesNorth, double longitudeDegreesEast, double elevationMeters,
              GpsDatum datum, QDateTime fixTime, bool valid);

  GpsDatum Datum() const override;
  QDateTime FixTime() const override;
  bool IsValid() const override;
  double LatitudeDegreesNorth() const override;
  double LongitudeDegreesEast() const override;
  double ElevationMeters() const override;
  Geolocation* Clone() const override;
  ~Geolocation() override;

 private:
  const double latitudeDegreesNorth_;
  const double longitudeDegreesEast_;
  const double elevationMeters_;
  const GpsDatum datum_;
  const QDateTime fixTime_;
  const bool valid_;
};
