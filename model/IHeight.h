#pragma once

#include <QDateTime>

#include "TarnbeamDatabaseExport.h"
#include "model/HeightSource.h"

class IModelObserver;

/// Height of an antenna, as entered or measured. The order of the virtual operations is binary
/// interface.
class TARNBEAMDATABASE_EXPORT IHeight {
 public:
  /// Observers hear of every change; they are not owned.
  virtual void AddObserver(IModelObserver* observer) = 0;
  /// An observer that is not there is ignored.
  virtual void RemoveObserver(IModelObserver* observer) = 0;
  /// Tells every observer, in the order in which they were added.
  virtual void NotifyObserversOfChange() = 0;

  /// A copy without observers, owned by the caller.
  virtual IHeight* Clone() const = 0;

  /// Whether the height can be relied on.
  virtual bool IsValid() const = 0;

  /// Keeps the value but marks it as one not to be relied on.
  virtual void Invalidate() = 0;

  /// Setting the height makes it valid again; setting its type alone does not.
  virtual void SetHeight(double meters, HeightSource type) = 0;
  /// Keeps the type.
  virtual void SetHeightInMeters(double meters) = 0;
  /// International feet. Keeps the type.
  virtual void SetHeightInFeet(double feet) = 0;
  /// Keeps the value.
  virtual void SetHeightType(HeightSource type) = 0;

  /// International feet. Writes whether the height is valid through `valid` unless that is null.
  virtual double HeightInFeet(bool* valid) const = 0;

  /// Whether the type is that of GPS heights.
  virtual bool IsFromGps() const = 0;

  /// When the height was measured or entered; an invalid time if that is not known.
  virtual QDateTime MeasurementTime() const = 0;
  /// An invalid time if it is not known.
  virtual void SetMeasurementTime(const QDateTime& time) = 0;

  /// Expected error in metres, one standard deviation; 0 if it is not known.
  virtual double UncertaintyInMeters() const = 0;
  /// One standard deviation.
  virtual void SetUncertaintyInMeters(double meters) = 0;

  /// How the height was obtained.
  virtual HeightSource HeightType() const = 0;

  /// Metres. Writes whether the height is valid through `valid` unless that is null.
  virtual double HeightInMeters(bool* valid) const = 0;

  virtual ~IHeight();
};
