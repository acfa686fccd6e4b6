#pragma once

#include <QVector>

#include "store/StoreIdentity.h"

class AntennaAlignmentPdfReportData;
class PathAlignmentPdfReportData;

/// What IAlignmentDatabase reads of alignments: the identifiers, and the reports of a site or a path.
namespace StoreRetrieval {

QVector<QString> SiteIdentifiers(const StoreIdentity& store);
QVector<QString> PathIdentifiers(const StoreIdentity& store);
AntennaAlignmentPdfReportData* SiteReports(const StoreIdentity& store, const QString& siteIdentifier);
PathAlignmentPdfReportData* PathReports(const StoreIdentity& store, const QString& pathIdentifier);

}  // namespace StoreRetrieval
