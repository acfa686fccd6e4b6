#include "model/MeasurementOptions.h"

#include <utility>

IMeasurementOptions::~IMeasurementOptions() = default;

MeasurementOptions::MeasurementOptions(float azimuthOffset, bool tiltInversionEnabled, float azimuthThreshold,
                                       float tiltThreshold, float rollThreshold, float pathLengthThreshold,
                                       QString note, unsigned long rollPrecision)
    : azimuthOffset_(azimuthOffset),
      tiltInversionEnabled_(tiltInversionEnabled),
      azimuthThreshold_(azimuthThreshold),
      tiltThreshold_(tiltThreshold),
      rollThreshold_(rollThreshold),
      pathLengthThreshold_(pathLengthThreshold),
      note_(std::move(note)),
      rollPrecision_(rollPrecision) {}

MeasurementOptions::~MeasurementOptions() = default;

float MeasurementOptions::AzimuthOffset() const { return azimuthOffset_; }

bool MeasurementOptions::TiltInversionEnabled() const { return tiltInversionEnabled_; }

QString MeasurementOptions::Note() const { return note_; }

int MeasurementOptions::RollPrecision() const { return static_cast<int>(rollPrecision_); }

float MeasurementOptions::AzimuthThreshold() const { return azimuthThreshold_; }

float MeasurementOptions::TiltThreshold() const { return tiltThreshold_; }

float MeasurementOptions::RollThreshold() const { return rollThreshold_; }

float MeasurementOptions::PathLengthThreshold() const { return pathLengthThreshold_; }

MeasurementOptions* MeasurementOptions::Clone() const {
  return new MeasurementOptions(azimuthOffset_, tiltInversionEnabled_, azimuthThreshold_, tiltThreshold_,
                                rollThreshold_, pathLengthThreshold_, note_, rollPrecision_);
}
