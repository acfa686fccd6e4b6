#pragma once

#include <QVector>

#include "model/IModelObserver.h"

/// Remembers the models whose changes it was told about.
class CountingObserver : public IModelObserver {
 public:
  void ModelChanged(ObservableModel* model) override { changed.append(model); }

  using Models = QVector<ObservableModel*>;
  Models changed;
};
