#pragma once

#include "TarnbeamDatabaseExport.h"

class ObservableModel;

/// Something that wants to know when a model changes.
class TARNBEAMDATABASE_EXPORT IModelObserver {
 public:
  /// Called synchronously, on the thread that made the change. `model` is the one that changed.
  /// The observer may add and remove observers, itself included, but must not destroy the model.
  virtual void ModelChanged(ObservableModel* model) = 0;

  virtual ~IModelObserver();
};
