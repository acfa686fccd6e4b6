#pragma once

#include <QVector>

#include "TarnbeamDatabaseExport.h"

class IModelObserver;

/// A model that tells its observers when it has changed. It owns none of them; an observer has to be
/// removed before it is destroyed.
class TARNBEAMDATABASE_EXPORT ObservableModel {
 public:
  ObservableModel();
  ObservableModel(const ObservableModel&) = delete;
  ObservableModel& operator=(const ObservableModel&) = delete;

  /// Adds an observer. Null, or an observer that is already there, changes nothing.
  void AddObserver(IModelObserver* observer);

  /// Removes an observer. One that is not there is ignored.
  void RemoveObserver(IModelObserver* observer);

  /// Calls every observer in the order in which they were added. An observer removed meanwhile is not
  /// called any more, one added meanwhile is called from the next change on.
  virtual void NotifyObserversOfChange();

  virtual ~ObservableModel();

 private:
  QVector<IModelObserver*> observers_;
};
