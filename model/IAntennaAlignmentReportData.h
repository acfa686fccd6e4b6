#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/IAlignmentReportData.h"

class ISiteInformation;

/// One finished alignment of a sector antenna. Angles that count: azimuth, tilt and roll.
class TARNBEAMDATABASE_EXPORT IAntennaAlignmentReportData : public IAlignmentReportData {
 public:
  IAntennaAlignmentReportData* Clone() const override = 0;

  /// The site with the target orientation.
  virtual ISiteInformation* GetSiteInformation() const = 0;

  /// Key of the alignment in the main file.
  virtual unsigned int AntennaAlignmentKey() const = 0;

  /// What was in force during the measurement.
  virtual IMeasurementOptions* GetMeasurementOptions() const = 0;

  ~IAntennaAlignmentReportData() override;
};
