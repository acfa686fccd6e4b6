#pragma once

#include "TarnbeamDatabaseExport.h"

class IModelObserver;
class IPathInformation;
class ISiteInformation;

/// The contents of the two input screens: the path and the site being entered. The order of the
/// virtual operations is binary interface.
class TARNBEAMDATABASE_EXPORT IAlignerModel {
 public:
  /// Observers hear of every change of a current record; they are not owned.
  virtual void AddObserver(IModelObserver* observer) = 0;
  /// An observer that is not there is ignored.
  virtual void RemoveObserver(IModelObserver* observer) = 0;

  /// The path being entered, owned by the model; null when there is none.
  virtual IPathInformation* CurrentPathInformation() = 0;

  /// Whether a path is being entered.
  virtual bool HasCurrentPath() = 0;

  /// The site being entered, owned by the model; null when there is none.
  virtual ISiteInformation* CurrentSiteInformation() = 0;

  /// Whether a site is being entered.
  virtual bool HasCurrentSite() = 0;

  /// Takes ownership of `site` and releases the record it replaces. Null empties the screen.
  virtual void SetCurrentSiteInformation(ISiteInformation* site) = 0;

  /// Releases the current site.
  virtual void ClearCurrentSite() = 0;

  /// Takes ownership of `path` and releases the record it replaces. Null empties the screen.
  virtual void SetCurrentPathInformation(IPathInformation* path) = 0;

  /// Releases the current path.
  virtual void ClearCurrentPath() = 0;

  virtual ~IAlignerModel();
};
