#pragma once

#include <QVector>
#include <initializer_list>

struct sqlite3;

/// Deleting single rows, and what alignments refer to, each on an open connection. Keys are appended to the
/// lists. Failures are logged and give false.
namespace RecordDeletion {

bool DeleteSite(sqlite3* db, const long long* siteKey);
bool DeletePath(sqlite3* db, const long long* pathKey);

// From the row of one alignment. Without such a row the keys are left as they were.
bool FindSiteAlignmentKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                           long long* measuredOrientationKey, long long* locationKey,
                           long long* siteHeightKey);
bool FindPathAlignmentKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                           long long* measuredOrientationKey, long long* pathLocationKey,
                           long long* locationKey, long long* siteHeightKey);

// From the rows of all alignments of a site or a path.
bool FindSiteKeys(sqlite3* db, long long siteKey, QVector<int>* orientationKeys,
                  QVector<int>* geolocationKeys, QVector<int>* heightKeys);
bool FindPathKeys(sqlite3* db, long long pathKey, QVector<int>* orientationKeys,
                  QVector<int>* geolocationKeys, QVector<int>* heightKeys);

bool DeleteByKeys(sqlite3* db, const QVector<int>* keys, const char* table, const char* column);
bool DeleteAssociated(sqlite3* db, const QVector<int>* orientationKeys, const QVector<int>* geolocationKeys,
                      const QVector<int>* heightKeys);

}  // namespace RecordDeletion
