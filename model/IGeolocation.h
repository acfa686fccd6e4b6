#pragma once

#include <QDateTime>

#include "TarnbeamDatabaseExport.h"
#include "model/GpsDatum.h"

/// A geographic position. The order of the virtual operations is binary interface.
class TARNBEAMDATABASE_EXPORT IGeolocation {
 public:
  /// The datum that latitude and longitude refer to.
  virtual GpsDatum Datum() const = 0;

  /// When the position was taken.
  virtual QDateTime FixTime() const = 0;

  /// Whether the position can be relied on.
  virtual bool IsValid() const = 0;

  /// Degrees, north positive.
  virtual double LatitudeDegreesNorth() const = 0;

  /// Degrees, east positive.
  virtual double LongitudeDegreesEast() const = 0;

  /// Metres.
  virtual double ElevationMeters() const = 0;

  /// A copy, owned by the caller.
  virtual IGeolocation* Clone() const = 0;

  virtual ~IGeolocation();
};
