#include "model/AlignerModel.h"

#include "model/IPathInformation.h"
#include "model/ISiteInformation.h"

IAlignerModel::~IAlignerModel() = default;

AlignerModel::AlignerModel() = default;

AlignerModel::~AlignerModel() = default;

void AlignerModel::AddObserver(IModelObserver* observer) { ObservableModel::AddObserver(observer); }

void AlignerModel::RemoveObserver(IModelObserver* observer) { ObservableModel::RemoveObserver(observer); }

IPathInformation* AlignerModel::CurrentPathInformation() { return currentPath_.get(); }

bool AlignerModel::HasCurrentPath() { return currentPath_ != nullptr; }

ISiteInformation* AlignerModel::CurrentSiteInformation() { return currentSite_.get(); }

bool AlignerModel::HasCurrentSite() { return currentSite_ != nullptr; }

void AlignerModel::SetCurrentSiteInformation(ISiteInformation* site) { Replace(currentSite_, site); }

void AlignerModel::ClearCurrentSite() { SetCurrentSiteInformation(nullptr); }

void AlignerModel::SetCurrentPathInformation(IPathInformation* path) { Replace(currentPath_, path); }

void AlignerModel::ClearCurrentPath() { SetCurrentPathInformation(nullptr); }

template <typename Record>
void AlignerModel::Replace(std::unique_ptr<Record>& current, Record* replacement) {
  // The record that is already current is kept as it is. It may have been edited in place, so observers are
  // told all the same.
  if (current.get() != replacement) {
    current.reset(replacement);
  }
  NotifyObserversOfChange();
}
