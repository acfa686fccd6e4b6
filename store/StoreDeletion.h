#pragma once

#include "store/StoreIdentity.h"

class AntennaAlignmentPdfReportData;
class PathAlignmentPdfReportData;

/// The deletions of IAlignmentDatabase. Each changes the main file first and then, whatever came of that, the
/// thresholds file: two connections one after the other, two transactions.
namespace StoreDeletion {

bool DeleteSite(const StoreIdentity& store, const QString& siteIdentifier);
bool DeletePath(const StoreIdentity& store, const QString& pathIdentifier);

// Delete the report at `index` of `reports`, which may be null and stay the caller's.
bool DeleteSiteReport(const StoreIdentity& store, const QString& siteIdentifier,
                      const AntennaAlignmentPdfReportData* reports, int index);
bool DeletePathReport(const StoreIdentity& store, const QString& pathIdentifier,
                      const PathAlignmentPdfReportData* reports, int index);

}  // namespace StoreDeletion
