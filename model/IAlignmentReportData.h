#pragma once

#include <QDateTime>
#include <QString>

#include "TarnbeamDatabaseExport.h"

class IGeolocation;
class IHeight;
class IMeasurementOptions;
class IOrientation;

/// What the records of site and of path alignments have in common. The order of the virtual operations is
/// binary interface. Objects handed out remain the record's or, where it borrows them, their owner's.
class TARNBEAMDATABASE_EXPORT IAlignmentReportData {
 public:
  /// A copy with copies of all its objects, which it owns. It is itself owned by the caller.
  virtual IAlignmentReportData* Clone() const = 0;

  /// Whether the record holds every object that a complete measurement has.
  virtual bool IsValid() const = 0;

  /// Identifier of the site or path; empty if the record has none.
  virtual QString Identifier() const = 0;

  /// What the user noted down; empty without measurement options.
  virtual QString Note() const = 0;

  /// Measured minus target, degrees; the azimuth the shorter way round. Not-a-number if target or measurement
  /// is missing.
  virtual float AzimuthErrorDegrees() const = 0;
  /// As for the azimuth.
  virtual float TiltErrorDegrees() const = 0;
  /// As for the azimuth.
  virtual float RollErrorDegrees() const = 0;

  /// Whether the deviation is at most the threshold. False where anything needed is missing.
  virtual bool IsAzimuthWithinThreshold() const = 0;
  /// As for the azimuth.
  virtual bool IsTiltWithinThreshold() const = 0;

  /// Whether every angle that counts for this kind of alignment is within its threshold.
  virtual bool IsWithinThresholds() const = 0;

  virtual ~IAlignmentReportData();

  /// Where the instrument stood.
  virtual IGeolocation* GetGeolocation() const = 0;

  /// The orientation that the antenna had.
  virtual IOrientation* GetMeasuredOrientation() const = 0;
  /// The height of the antenna.
  virtual IHeight* GetHeight() const = 0;
  /// When the alignment was measured, to the second.
  virtual QDateTime GetMeasurementTime() const = 0;
};
