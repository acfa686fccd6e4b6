#pragma once

#include <QString>

#include "tool/AlignmentFiles.h"

/// The forms in which the reports of a site or path are printed.
namespace ReportPrinter {

/// For people: a block a report, each value with its name and unit, each angle judged by its threshold.
QString Table(const Reports& reports);
/// For spreadsheets: a heading with names and units, a line a report (RFC 4180, but with plain line feeds).
QString Csv(const Reports& reports);

}  // namespace ReportPrinter
