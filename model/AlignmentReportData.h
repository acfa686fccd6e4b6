#pragma once

#include <QDateTime>
#include <QString>

#include "TarnbeamDatabaseExport.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"

/// What both kinds of report records do alike. `Interface` is the one of the record.
template <typename Interface>
class TARNBEAMDATABASE_EXPORT AlignmentReportData : public Interface {
 public:
  AlignmentReportData(const AlignmentReportData&) = delete;
  AlignmentReportData& operator=(const AlignmentReportData&) = delete;

  /// From now on the record owns every object it was constructed with, and frees them when it is
  /// destroyed. They must have been allocated with `new`, and none of them may be given twice.
  /// Without this call the record borrows them.
  void TakeOwnership();

  bool IsValid() const override;
  QString Note() const override;
  float AzimuthErrorDegrees() const override;
  float TiltErrorDegrees() const override;
  float RollErrorDegrees() const override;
  bool IsAzimuthWithinThreshold() const override;
  bool IsTiltWithinThreshold() const override;
  IGeolocation* GetGeolocation() const override;
  IOrientation* GetMeasuredOrientation() const override;
  IHeight* GetHeight() const override;
  QDateTime GetMeasurementTime() const override;
  IMeasurementOptions* GetMeasurementOptions() const override;

 protected:
  AlignmentReportData(IGeolocation* geolocation, IOrientation* measuredOrientation, IHeight* height,
                      QDateTime measurementTime, IMeasurementOptions* measurementOptions);
  ~AlignmentReportData() override;

  bool OwnsObjects() const { return ownsObjects_; }

 private:
  IGeolocation* const geolocation_;
  IOrientation* const measuredOrientation_;
  IHeight* const height_;
  const QDateTime measurementTime_;
  IMeasurementOptions* const measurementOptions_;
  bool ownsObjects_ = false;
};

extern template class AlignmentReportData<IAntennaAlignmentReportData>;
extern template class AlignmentReportData<IPathAlignmentReportData>;
