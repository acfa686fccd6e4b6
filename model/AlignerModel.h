#pragma once

#include <memory>

#include "TarnbeamDatabaseExport.h"
#include "model/IAlignerModel.h"
#include "model/ObservableModel.h"

/// Input screen contents, both empty at first.
class TARNBEAMDATABASE_EXPORT AlignerModel : public IAlignerModel, public ObservableModel {
 public:
  AlignerModel();

  void AddObserver(IModelObserver* observer) override;
  void RemoveObserver(IModelObserver* observer) override;
  IPathInformation* CurrentPathInformation() override;
  bool HasCurrentPath() override;
  ISiteInformation* CurrentSiteInformation() override;
  bool HasCurrentSite() override;
  void SetCurrentSiteInformation(ISiteInformation* site) override;
  void ClearCurrentSite() override;
  void SetCurrentPathInformation(IPathInformation* path) override;
  void ClearCurrentPath() override;
  ~AlignerModel() override;

 private:
  template <typename Record>
  void Replace(std::unique_ptr<Record>& current, Record* replacement);

  std::unique_ptr<IPathInformation> currentPath_;
  std::unique_ptr<ISiteInformation> currentSite_;
};
