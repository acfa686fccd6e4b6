#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/IAlignmentReportData.h"

class IPathInformation;

/// One finished alignment of a point-to-point path. Angles that count: azimuth and tilt.
class TARNBEAMDATABASE_EXPORT IPathAlignmentReportData : public IAlignmentReportData {
 public:
  IPathAlignmentReportData* Clone() const override = 0;

  /// The path with the position of its far end.
  virtual IPathInformation* GetPathInformation() const = 0;

  /// The orientation the antenna should have.
  virtual IOrientation* GetTargetOrientation() const = 0;

  /// Key of the alignment in the main file.
  virtual unsigned int PathAlignmentKey() const = 0;

  /// What was in force during the measurement.
  virtual IMeasurementOptions* GetMeasurementOptions() const = 0;

  ~IPathAlignmentReportData() override;
};
