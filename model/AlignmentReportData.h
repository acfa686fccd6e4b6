#pragma once

#include <QDateTime>
#include <QString>

#include "TarnbeamDatabaseExport.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"

/// What both kinds of report records have in common. `Interface` is that of the record.
template <typename Interface>
class TARNBEAMDATABASE_EXPORT AlignmentReportData : public Interface {
 public:
  AlignmentReportData(const AlignmentReportData&) = delete;
  AlignmentReportData& operator=(const AlignmentReportData&) = delete;

  /// From now on the record owns every object it was constructed with, and frees them when it is
  /// destroyed. They must have been allocated with `new`, and none of them may be given twice.
  /// Without this call the record borrows them.
  void TakeOwnership();

  /// @copydoc IAlignmentReportData::IsValid
  bool IsValid() const override;
  /// @copydoc IAlignmentReportData::Note
  QString Note() const override;
  /// @copydoc IAlignmentReportData::AzimuthErrorDegrees
  float AzimuthErrorDegrees() const override;
  /// @copydoc IAlignmentReportData::TiltErrorDegrees
  float TiltErrorDegrees() const override;
  /// @copydoc IAlignmentReportData::RollErrorDegrees
  float RollErrorDegrees() const override;
  /// @copydoc IAlignmentReportData::IsAzimuthWithinThreshold
  bool IsAzimuthWithinThreshold() const override;
  /// @copydoc IAlignmentReportData::IsTiltWithinThreshold
  bool IsTiltWithinThreshold() const override;
  /// @copydoc IAlignmentReportData::GetGeolocation
  IGeolocation* GetGeolocation() const override;
  /// @copydoc IAlignmentReportData::GetMeasuredOrientation
  IOrientation* GetMeasuredOrientation() const override;
  /// @copydoc IAlignmentReportData::GetHeight
  IHeight* GetHeight() const override;
  /// @copydoc IAlignmentReportData::GetMeasurementTime
  QDateTime GetMeasurementTime() const override;
  /// What was in force during the measurement.
  IMeasurementOptions* GetMeasurementOptions() const override;

 protected:
  /// Borrows all objects. Any of them may be null.
  AlignmentReportData(IGeolocation* geolocation, IOrientation* measuredOrientation, IHeight* height,
                      QDateTime measurementTime, IMeasurementOptions* measurementOptions);
  ~AlignmentReportData() override;

  /// Whether TakeOwnership() was called.
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
