#include "model/Orientation.h"

IOrientation::~IOrientation() = default;

Orientation::Orientation(float azimuthDegrees, float tiltDegrees, float rollDegrees)
    : azimuthDegrees_(azimuthDegrees), tiltDegrees_(tiltDegrees), rollDegrees_(rollDegrees) {}

Orientation::~Orientation() = default;

float Orientation::AzimuthDegrees() const { return azimuthDegrees_; }

float Orientation::TiltDegrees() const { return tiltDegrees_; }

float Orientation::RollDegrees() const { return rollDegrees_; }

Orientation* Orientation::Clone() const {
  return new Orientation(azimuthDegrees_, tiltDegrees_, rollDegrees_);
}
