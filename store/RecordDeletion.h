#pragma once

#include <QVector>
#include <array>

struct sqlite3;

/// Deleting single rows, and what alignments refer to, each on an open connection. Keys are appended to the
/// lists. Null is refused; binds and prepares that fail are logged and, except for DeleteSite() and
/// DeletePath(), give false.
namespace RecordDeletion {

// A delete that cannot be prepared counts as done, one that fails is repeated without end, and a failed bind
// leaves the statement open.
bool DeleteSite(sqlite3* db, const long long* siteKey);
bool DeletePath(sqlite3* db, const long long* pathKey);

// From the row of one alignment: target and measured orientation, far end (paths), location, height.
// Without such a row the keys are left as they were.
bool FindSiteAlignmentKeys(sqlite3* db, long long alignmentKey, const std::array<long long*, 4>& keys);
bool FindPathAlignmentKeys(sqlite3* db, long long alignmentKey, const std::array<long long*, 5>& keys);

/// They stay the caller's. A function that is given a null list refuses.
struct KeyLists {
  QVector<int>* orientations;
  QVector<int>* geolocations;
  QVector<int>* heights;

  bool Complete() const { return orientations != nullptr && geolocations != nullptr && heights != nullptr; }
};

// From the rows of all alignments of a site or a path.
bool FindSiteKeys(sqlite3* db, long long siteKey, const KeyLists& lists);
bool FindPathKeys(sqlite3* db, long long pathKey, const KeyLists& lists);

bool DeleteByKeys(sqlite3* db, const QVector<int>* keys, const char* table, const char* column);
bool DeleteAssociated(sqlite3* db, const KeyLists& lists);

}  // namespace RecordDeletion
