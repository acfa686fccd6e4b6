#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"
#include "model/IMeasurementOptions.h"

/// Fixed measurement options.
class TARNBEAMDATABASE_EXPORT MeasurementOptions : public IMeasurementOptions {
 public:
  /// In the order of the accessors, except for the note. Path length -1: none.
  MeasurementOptions(float azimuthOffset, bool tiltInversionEnabled, float azimuthThreshold,
                     float tiltThreshold, float rollThreshold, float pathLengthThreshold, QString note,
                     unsigned long rollPrecision);

  float AzimuthOffset() const override;
  bool TiltInversionEnabled() const override;
  QString Note() const override;
  int RollPrecision() const override;
  float AzimuthThreshold() const override;
  float TiltThreshold() const override;
  float RollThreshold() const override;
  float PathLengthThreshold() const override;
  MeasurementOptions* Clone() const override;
  ~MeasurementOptions() override;

 private:
  const float azimuthOffset_;
  const bool tiltInversionEnabled_;
  const float azimuthThreshold_;
  const float tiltThreshold_;
  const float rollThreshold_;
  const float pathLengthThreshold_;
  const QString note_;
  const unsigned long rollPrecision_;
};
