#include "store/RecordDeletion.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "core/DebugLog.h"
#include "core/Statement.h"

namespace {

// Required behaviour: a statement that cannot be prepared counts as success, a failed bind leaves it open,
// and the steps have no bound.
bool DeleteRowByKey(sqlite3* db, const long long* key, const char* sql, const char* bindFailure) {
  if (db == nullptr || key == nullptr) return false;
  Statement statement(db, sql, "Delete site");
  if (!statement) return true;
  if (!statement.WideKey(*key, bindFailure).Bound()) {
    statement.LeaveOpen();
    return false;
  }
  return statement.StepUntilDone([] {}) == SQLITE_DONE;
}

/// `read` sees each row, `stepped` each step's result.
template <typename Read, typename Stepped>
bool ReadRows(Statement* statement, long long key, Read read, Stepped stepped) {
  statement->Key(key, "SQL bind failed with ");
  return statement->StepUntilDone(read, stepped) == SQLITE_DONE;
}

void Silent(int /*result*/) {}

template <size_t Count>
bool NoneIsNull(const std::array<long long*, Count>& keys) {
  return std::find(keys.begin(), keys.end(), nullptr) == keys.end();
}

/// The keys, in the order of the row's columns.
template <size_t Count>
void ReadColumns(const Statement& row, const std::array<long long*, Count>& keys) {
  int column = 0;
  for (long long* key : keys) *key = row.IntColumn(column++);
}

}  // namespace

namespace RecordDeletion {

bool DeleteSite(sqlite3* db, const long long* siteKey) {
  return DeleteRowByKey(db, siteKey, "DELETE FROM Sites WHERE SiteKey = ?",
                        "SQL bind SiteKey (key delete) failed with ");
}

bool DeletePath(sqlite3* db, const long long* pathKey) {
  return DeleteRowByKey(db, pathKey, "DELETE FROM Paths WHERE PathKey = ?",
                        "SQL bind PathKey (key delete) failed with ");
}

bool FindSiteAlignmentKeys(sqlite3* db, long long alignmentKey, const std::array<long long*, 4>& keys) {
  if (db == nullptr || !NoneIsNull(keys)) return false;
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
                      "AntennaAlignment WHERE AntennaAlignmentKey=?",
                      "Fetch Keys For Site");
  return ReadRows(
      &statement, alignmentKey, [&] { ReadColumns(statement, keys); }, Silent);
}

bool FindPathAlignmentKeys(sqlite3* db, long long alignmentKey, const std::array<long long*, 5>& keys) {
  if (db == nullptr || !NoneIsNull(keys)) return false;
  LogDebug("Finding keys for a specific path measurement");
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, "
                      "SiteHeightKey FROM PathAlignment WHERE PathAlignmentKey=?",
                      "Fetch Keys For Path");
  return ReadRows(
      &statement, alignmentKey, [&] { ReadColumns(statement, keys); },
      [](int result) { LogDebug("Sqlite step rval: ", result); });
}

bool FindSiteKeys(sqlite3* db, long long siteKey, const KeyLists& lists) {
  if (db == nullptr || !lists.Complete()) {
    LogDebug("Null vector passed in for key site key retrieval");
    return false;
  }
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
                      "AntennaAlignment WHERE SiteKey=?",
                      "Fetch Keys For Site");
  const auto read = [&] {
    *lists.orientations << statement.IntColumn(0) << statement.IntColumn(1);
    *lists.geolocations << statement.IntColumn(2);
    *lists.heights << statement.IntColumn(3);
  };
  return ReadRows(&statement, siteKey, read, Silent);
}

bool FindPathKeys(sqlite3* db, long long pathKey, const KeyLists& lists) {
  if (db == nullptr || !lists.Complete()) return false;
  LogDebug("Finding relevant path keys...");
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, "
                      "SiteHeightKey FROM PathAlignment WHERE PathKey=?",
                      "Fetch Keys For Path");
  const auto read = [&] {
    *lists.orientations << statement.IntColumn(0) << statement.IntColumn(1);
    *lists.geolocations << statement.IntColumn(2) << statement.IntColumn(3);
    *lists.heights << statement.IntColumn(4);
  };
  return ReadRows(&statement, pathKey, read, Silent);
}

bool DeleteByKeys(sqlite3* db, const QVector<int>* keys, const char* table, const char* column) {
  if (keys == nullptr || db == nullptr || column == nullptr || table == nullptr) return false;
  std::array<char, 1024> sql{};
  std::snprintf(sql.data(), sql.size(), "DELETE FROM %s WHERE %s=?", table, column);
  for (const int key : *keys) {
    Statement statement(db, sql.data(), "Generic record delete");
    if (!statement) return false;
    if (!statement.BindsWideKey(key)) {
      LogDebug("SQL bind ", column, " in table ", table);
      return false;
    }
    if (!statement.StepsWithinBound()) return false;
  }
  return true;
}

bool DeleteAssociated(sqlite3* db, const KeyLists& lists) {
  if (db == nullptr || !lists.Complete()) {
    LogDebug("Null vector passed in for record deletion");
    return false;
  }
  const struct {
    const QVector<int>* keys;
    const char* table;
    const char* column;
    const char* failureLine;
  } deletions[] = {
      {lists.orientations, "Orientation", "OrientationKey", "Failed to delete orientation keys"},
      {lists.geolocations, "Geolocation", "GeolocationKey", "Failed to delete geolocation keys"},
      {lists.heights, "Height", "HeightKey", "Failed to delete height keys"},
  };
  for (const auto& deletion : deletions) {
    if (!DeleteByKeys(db, deletion.keys, deletion.table, deletion.column)) {
      LogDebug(deletion.failureLine);
      return false;
    }
  }
  return true;
}

}  // namespace RecordDeletion
