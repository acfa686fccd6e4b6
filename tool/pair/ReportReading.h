#pragma once

#include <map>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/PrivatePair.h"

/// Alignments out of private copies, through the library.
namespace ReportReading {

/// Reads all of a kind, or those of the site or path with that key alone, by the key of their site or path.
/// Within one they are in the library's order, those that are equal in that by their keys; their index counts
/// them. Their identifiers are left to the caller.
std::map<qint64, std::vector<Alignment>> Read(const PrivatePair& files, Kind kind, const qint64* onlyOwner);

/// Throws a Failure (4) where one of the alignments' values is no finite number.
void RequireNumbers(const PrivatePair& files);

/// The name of the PDF file for a site or path.
QString PdfName(Kind kind, const QString& identifier);

}  // namespace ReportReading
