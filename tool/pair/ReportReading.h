#pragma once

#include <map>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/PrivatePair.h"

/// Reads alignments from private copies, through the library.
namespace ReportReading {

/// Reads all alignments of a kind, or only those of the site or path with that key, by the key of their site
/// or path. Within one they are in the library's order, and those equal in that by their keys; their index
/// counts them. Their identifiers are left to the caller.
std::map<qint64, std::vector<Alignment>> Read(const PrivatePair& files, Kind kind, const qint64* onlyOwner);

/// Throws a Failure (4) if one of the alignments' values, or of the preferences', is not a finite number.
void RequireNumbers(const PrivatePair& files);
void RequirePreferences(const PrivatePair& files);

/// Throws the same if an alignment names a row that is not there: the library reads zeros in its place.
void RequireComplete(const PrivatePair& files);

/// The name of the PDF file for a site or path.
QString PdfName(Kind kind, const QString& identifier);

}  // namespace ReportReading
