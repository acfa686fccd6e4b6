#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/IOrientation.h"

/// Orientation with fixed angles, in degrees.
class TARNBEAMDATABASE_EXPORT Orientation : public IOrientation {
 public:
  /// Degrees.
  Orientation(float azimuthDegrees, float tiltDegrees, float rollDegrees);

  float AzimuthDegrees() const override;
  float TiltDegrees() const override;
  float RollDegrees() const override;
  Orientation* Clone() const override;
  ~Orientation() override;

 private:
  const float azimuthDegrees_;
  const float tiltDegrees_;
  const float rollDegrees_;
};
