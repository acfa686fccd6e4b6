#pragma once

#include <QDateTime>

#include "store/StoreIdentity.h"

class IAntennaAlignmentReportData;
class IGeolocation;
class IHeight;
class IMeasurementOptions;
class IOrientation;
class IPathAlignmentReportData;
class IPathInformation;
class ISiteInformation;

/// The saves of IAlignmentDatabase.
namespace StoreSaving {

/// What is to be saved; it stays the caller's. A site's target orientation is asked of the site.
struct SiteMeasurement {
  ISiteInformation* site;
  IGeolocation* location;
  IOrientation* measured;
  IHeight* height;
  const QDateTime& time;
  IMeasurementOptions* options;
};
struct PathMeasurement {
  IPathInformation* path;
  IGeolocation* location;
  IOrientation* target;
  IOrientation* measured;
  IHeight* height;
  const QDateTime& time;
  IMeasurementOptions* options;
};

IAntennaAlignmentReportData* Save(const StoreIdentity& store, const SiteMeasurement& saved);
IPathAlignmentReportData* Save(const StoreIdentity& store, const PathMeasurement& saved);

}  // namespace StoreSaving
