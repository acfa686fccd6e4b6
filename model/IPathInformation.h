#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"

class IGeolocation;

/// A point-to-point path and the position of its far end. The order of the virtual operations is
/// binary interface.
class TARNBEAMDATABASE_EXPORT IPathInformation {
 public:
  /// A copy, owned by the caller.
  virtual IPathInformation* Clone() const = 0;

  /// Whether the path has an identifier.
  virtual bool IsValid() const = 0;

  /// Empties the identifier and puts the far end at latitude, longitude and elevation 0.
  virtual void Clear() = 0;

  /// The name by which the path is found.
  virtual void SetPathIdentifier(const QString& pathIdentifier) = 0;

  /// Degrees north, degrees east, metres.
  virtual void SetPathLocation(double latitudeDegreesNorth, double longitudeDegreesEast,
                               double elevationMeters) = 0;

  /// The name by which the path is found.
  virtual const QString& PathIdentifier() const = 0;

  /// The far end of the path. Owned by the path; replaced by `SetPathLocation` and `Clear`.
  virtual IGeolocation* PathLocation() const = 0;

  virtual ~IPathInformation();

  /// The far end under the name it has on the input screen: the position aimed at.
  IGeolocation* TargetGeolocation() const { return PathLocation(); }
};
