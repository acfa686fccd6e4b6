#pragma once

#include <QVector>

struct sqlite3;

/// Removes from the scratch copy every site, path, orientation, location and height that no alignment
/// refers to.
namespace UnusedRecords {

/// False when a key could not be read or a row not deleted; the whole copy is discarded then.
///
/// The membership test is a linear search and every row gets a statement of its own: quadratic in the rows,
/// paid once per conversion.
bool DeleteUnusedRecords(sqlite3* db);

// One table each: deletes the rows whose key is not in `referenced`. The scratch file must be attached.
bool DeleteUnusedOrientationRecords(sqlite3* db, QVector<int>* referenced);
bool DeleteUnusedGeolocationRecords(sqlite3* db, QVector<int>* referenced);
bool DeleteUnusedHeightRecords(sqlite3* db, QVector<int>* referenced);
bool DeleteUnusedSiteRecords(sqlite3* db, QVector<int>* referenced);
bool DeleteUnusedPathRecords(sqlite3* db, QVector<int>* referenced);

}  // namespace UnusedRecords
