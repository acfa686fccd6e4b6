#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/AlignmentReportData.h"

/// Record of a path alignment. It borrows the objects it is constructed with until `TakeOwnership` is
/// called; any of them may be null.
class TARNBEAMDATABASE_EXPORT PathAlignmentReportData : public AlignmentReportData<IPathAlignmentReportData> {
 public:
  /// The measured orientation stands before the height, the target orientation after it.
  PathAlignmentReportData(unsigned int pathAlignmentKey, IPathInformation* pathInformation,
                          IGeolocation* geolocation, IOrientation* measuredOrientation, IHeight* height,
                          IOrientation* targetOrientation, QDateTime measurementTime,
                          IMeasurementOptions* measurementOptions);

  PathAlignmentReportData* Clone() const override;
  QString Identifier() const override;
  bool IsWithinThresholds() const override;
  IPathInformation* GetPathInformation() const override;
  IOrientation* GetTargetOrientation() const override;
  unsigned int PathAlignmentKey() const override;
  ~PathAlignmentReportData() override;

 private:
  const unsigned int pathAlignmentKey_;
  IPathInformation* const pathInformation_;
  IOrientation* const targetOrientation_;
};
