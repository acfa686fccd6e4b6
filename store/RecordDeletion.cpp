#include "store/RecordDeletion.h"

#include <sqlite3.h>

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

bool FindSiteAlignmentKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                           long long* measuredOrientationKey, long long* locationKey,
                           long long* siteHeightKey) {
  const std::array<long long*, 4> keys{targetOrientationKey, measuredOrientationKey, locationKey,
                                       siteHeightKey};
  for (const long long* key : keys) {
    if (key == nullptr) return false;
  }
  if (db == nullptr) return false;
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
                      "AntennaAlignment WHERE AntennaAlignmentKey=?",
                      "Fetch Keys For Site");
  statement.Key(alignmentKey, "SQL bind failed with ");
  const int result = statement.StepUntilDone([&] {
    int column = 0;
    for (long long* key : keys) *key = statement.IntColumn(column++);
  });
  return result == SQLITE_DONE;
}

bool FindPathAlignmentKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                           long long* measuredOrientationKey, long long* pathLocationKey,
                           long long* locationKey, long long* siteHeightKey) {
  const std::array<long long*, 5> keys{targetOrientationKey, measuredOrientationKey, pathLocationKey,
                                       locationKey, siteHeightKey};
  for (const long long* key : keys) {
    if (key == nullptr) return false;
  }
  if (db == nullptr) return false;
  LogDebug("Finding keys for a specific path measurement");
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, "
                      "SiteHeightKey FROM PathAlignment WHERE PathAlignmentKey=?",
                      "Fetch Keys For Path");
  statement.Key(alignmentKey, "SQL bind failed with ");
  const auto readKeys = [&] {
    int column = 0;
    for (long long* key : keys) *key = statement.IntColumn(column++);
  };
  return statement.StepUntilDone(readKeys, [](int result) { LogDebug("Sqlite step rval: ", result); }) ==
         SQLITE_DONE;
}

bool FindSiteKeys(sqlite3* db, long long siteKey, QVector<int>* orientationKeys,
                  QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    LogDebug("Null vector passed in for key site key retrieval");
    return false;
  }
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
                      "AntennaAlignment WHERE SiteKey=?",
                      "Fetch Keys For Site");
  statement.Key(siteKey, "SQL bind failed with ");
  const int result = statement.StepUntilDone([&] {
    *orientationKeys << statement.IntColumn(0) << statement.IntColumn(1);
    *geolocationKeys << statement.IntColumn(2);
    *heightKeys << statement.IntColumn(3);
  });
  return result == SQLITE_DONE;
}

bool FindPathKeys(sqlite3* db, long long pathKey, QVector<int>* orientationKeys,
                  QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    return false;
  }
  LogDebug("Finding relevant path keys...");
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, "
                      "SiteHeightKey FROM PathAlignment WHERE PathKey=?",
                      "Fetch Keys For Path");
  statement.Key(pathKey, "SQL bind failed with ");
  const int result = statement.StepUntilDone([&] {
    *orientationKeys << statement.IntColumn(0) << statement.IntColumn(1);
    *geolocationKeys << statement.IntColumn(2) << statement.IntColumn(3);
    *heightKeys << statement.IntColumn(4);
  });
  return result == SQLITE_DONE;
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

bool DeleteAssociated(sqlite3* db, const QVector<int>* orientationKeys, const QVector<int>* geolocationKeys,
                      const QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    LogDebug("Null vector passed in for record deletion");
    return false;
  }
  const struct {
    const QVector<int>* keys;
    const char* table;
    const char* column;
    const char* failureLine;
  } lists[] = {
      {orientationKeys, "Orientation", "OrientationKey", "Failed to delete orientation keys"},
      {geolocationKeys, "Geolocation", "GeolocationKey", "Failed to delete geolocation keys"},
      {heightKeys, "Height", "HeightKey", "Failed to delete height keys"},
  };
  for (const auto& list : lists) {
    if (!DeleteByKeys(db, list.keys, list.table, list.column)) {
      LogDebug(list.failureLine);
      return false;
    }
  }
  return true;
}

}  // namespace RecordDeletion
