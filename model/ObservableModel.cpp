#include "model/ObservableModel.h"

#include "model/IModelObserver.h"

ObservableModel::ObservableModel() = default;

ObservableModel::~ObservableModel() = default;

void ObservableModel::AddObserver(IModelObserver* observer) {
  if (observer != nullptr && !observers_.contains(observer)) {
    observers_.append(observer);
  }
}

void ObservableModel::RemoveObserver(IModelObserver* observer) { observers_.removeOne(observer); }

void ObservableModel::NotifyObserversOfChange() {
  const QVector<IModelObserver*> observersAtStart = observers_;
  for (IModelObserver* observer : observersAtStart) {
    if (observers_.contains(observer)) {
      observer->ModelChanged(this);
    }
  }
}
