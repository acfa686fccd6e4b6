#pragma once

#include "TarnbeamDatabaseExport.h"

/// Orientation of an antenna, angles in degrees. The order of the virtual operations is binary
/// interface.
class TARNBEAMDATABASE_EXPORT IOrientation {
 public:
  /// Bearing of the antenna.
  virtual float AzimuthDegrees() const = 0;
  /// Inclination of the antenna.
  virtual float TiltDegrees() const = 0;
  /// Rotation of the antenna about its axis.
  virtual float RollDegrees() const = 0;

  /// A copy, owned by the caller.
  virtual IOrientation* Clone() const = 0;

  virtual ~IOrientation();
};
