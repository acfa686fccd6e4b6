#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"

/// What was in force while an alignment was measured: offset, inversion, note, thresholds. The order
/// of the virtual operations is binary interface.
class TARNBEAMDATABASE_EXPORT IMeasurementOptions {
 public:
  /// Offset applied to the measured azimuth, degrees.
  virtual float AzimuthOffset() const = 0;

  /// Whether tilt inversion was in force.
  virtual bool TiltInversionEnabled() const = 0;

  /// What the user noted down.
  virtual QString Note() const = 0;

  /// The roll precision setting.
  virtual int RollPrecision() const = 0;

  /// Largest accepted deviations from the target, degrees.
  virtual float AzimuthThreshold() const = 0;
  /// As for the azimuth.
  virtual float TiltThreshold() const = 0;

  /// Degrees; site alignments.
  virtual float RollThreshold() const = 0;

  /// Path alignments; in the application's unit, which the files do not fix. -1: none.
  virtual float PathLengthThreshold() const = 0;

  /// A copy, owned by the caller.
  virtual IMeasurementOptions* Clone() const = 0;

  virtual ~IMeasurementOptions();
};
