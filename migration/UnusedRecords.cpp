#include "migration/UnusedRecords.h"

#include <sqlite3.h>

#include <utility>

#include "core/DebugLog.h"
#include "core/Statement.h"
#include "migration/Conversion.h"

namespace {

/// The texts of one table's cleanup. Required behaviour: several name the wrong table, and four deletion
/// texts lack the colon.
struct CleanupTexts {
  const char* selectKeys;
  const char* selectLabel;
  const char* collectFailure;
  const char* count;
  const char* deleting;
  const char* deleteKey;
  const char* deleteLabel;
  const char* bindFailure;
};

constexpr CleanupTexts orientationTexts{
    "SELECT OrientationKey FROM TemporaryDB.Orientation",
    "Get orientation keys",
    "Failed to create orientation key collect statement",
    "Unused orientation keys vector length: ",
    "Deleting record with key",
    "DELETE FROM TemporaryDB.Orientation WHERE OrientationKey=?",
    "Orientation key delete",
    "SQL bind OrientationKey (record delete) failed with ",
};
constexpr CleanupTexts geolocationTexts{
    "SELECT GeolocationKey FROM TemporaryDB.Geolocation",
    "Get geolocation keys",
    "Failed to create geolocation key collection statement",
    "Unused geolocation keys vector length: ",
    "Deleting record with key: ",
    "DELETE FROM TemporaryDB.Geolocation WHERE GeolocationKey=?",
    "Geolocation key delete",
    "SQL bind GeolocationKey (geolocation record delete) failed with ",
};
constexpr CleanupTexts heightTexts{
    "SELECT HeightKey FROM TemporaryDB.Height",
    "Get height keys",
    "Failed to create height key collect statement",
    "Unused height record count: ",
    "Deleting record with key",
    "DELETE FROM TemporaryDB.Height WHERE HeightKey=?",
    "height key delete",
    "SQL bind OrientationKey (record delete) failed with ",
};
constexpr CleanupTexts siteTexts{
    "SELECT SiteKey FROM TemporaryDB.Sites",
    "Get site keys",
    "Failed to create height key collect statement",
    "Unused site record count: ",
    "Deleting record with key",
    "DELETE FROM TemporaryDB.Sites WHERE SiteKey=?",
    "height key delete",
    "SQL bind OrientationKey (record delete) failed with ",
};
constexpr CleanupTexts pathTexts{
    "SELECT PathKey FROM TemporaryDB.Paths",
    "Get path keys",
    "Failed to create height key collect statement",
    "Unused path record count: ",
    "Deleting record with key",
    "DELETE FROM TemporaryDB.Paths WHERE PathKey=?",
    "path key delete",
    "SQL bind OrientationKey (record delete) failed with ",
};

/// Appends each column of every row to the list given for it. False after six steps in all that yield neither
/// a row nor done: a file that cannot be read must not keep the instrument from starting. Rows in between do
/// not help, since after an error the engine begins again with the first row.
bool ReadKeys(Statement* statement, std::initializer_list<QVector<int>*> lists) {
  constexpr int mostFailed = 6;
  const auto append = [&] {
    int column = 0;
    for (QVector<int>* list : lists) list->append(statement->IntColumn(column++));
  };
  return statement->StepUntilDone(append, mostFailed) == SQLITE_DONE;
}

bool DeleteKey(sqlite3* db, const CleanupTexts& texts, int key) {
  Statement statement(db, texts.deleteKey, texts.deleteLabel);
  return statement.WideKey(key, texts.bindFailure).StepsWithinBound();
}

bool DeleteUnused(sqlite3* db, QVector<int>* referenced, const CleanupTexts& texts) {
  if (referenced == nullptr || db == nullptr) return false;
  Statement select(db, texts.selectKeys, texts.selectLabel);
  if (!select) {
    LogDebug(texts.collectFailure);
    return false;
  }
  QVector<int> keys;
  if (!ReadKeys(&select, {&keys})) return false;
  select.Finalize();
  QVector<int> unused;
  for (const int key : std::as_const(keys)) {
    if (!referenced->contains(key)) unused.append(key);
  }
  LogDebug(texts.count, unused.size());
  for (const int key : std::as_const(unused)) {
    LogDebug(texts.deleting, key);
    if (!DeleteKey(db, texts, key)) {
      LogDebug("Failed to delete a record, aborting");
      return false;
    }
  }
  return true;
}

/// The keys that alignments refer to. Only membership matters, so a key may occur many times.
struct ReferencedKeys {
  QVector<int> orientation;
  QVector<int> geolocation;
  QVector<int> height;
  QVector<int> site;
  QVector<int> path;
};

/// Reads the keys of both alignment tables. Required behaviour: false, with the scratch file left attached,
/// if the query for those of paths cannot be prepared. If the one for sites cannot, their keys are missing
/// and the first delete of a referenced row fails.
bool CollectReferencedKeys(sqlite3* db, ReferencedKeys* keys, bool* staysAttached) {
  Statement sites(db,
                  "SELECT TargetOrientationKey, LocationKey, MeasuredOrientationKey, SiteHeightKey, SiteKey "
                  "FROM TemporaryDB.AntennaAlignment",
                  "Get site keys");
  if (!sites) {
    LogDebug("SQlite site keys statement creation failed");
  } else if (!ReadKeys(&sites, {&keys->orientation, &keys->geolocation, &keys->orientation, &keys->height,
                                &keys->site})) {
    return false;
  }
  sites.Finalize();
  Statement paths(db,
                  "SELECT  TargetOrientationKey, LocationKey, MeasuredOrientationKey, PathLocationKey, "
                  "SiteHeightKey, PathKey FROM TemporaryDB.PathAlignment",
                  "Get path keys");
  if (!paths) {
    LogDebug("SQLite statement creation failed");
    *staysAttached = true;
    return false;
  }
  return ReadKeys(&paths, {&keys->orientation, &keys->geolocation, &keys->orientation, &keys->geolocation,
                           &keys->height, &keys->path});
}

}  // namespace

namespace UnusedRecords {

bool DeleteUnusedRecords(sqlite3* db) {
  if (db == nullptr) return false;
  Conversion::AttachTemporaryDatabase(db);
  ReferencedKeys keys;
  bool staysAttached = false;
  const bool deleted = CollectReferencedKeys(db, &keys, &staysAttached) &&
                       DeleteUnusedOrientationRecords(db, &keys.orientation) &&
                       DeleteUnusedGeolocationRecords(db, &keys.geolocation) &&
                       DeleteUnusedHeightRecords(db, &keys.height) &&
                       DeleteUnusedSiteRecords(db, &keys.site) && DeleteUnusedPathRecords(db, &keys.path);
  if (!staysAttached) Conversion::DetachTemporaryDatabase(db);
  return deleted;
}

bool DeleteUnusedOrientationRecords(sqlite3* db, QVector<int>* referenced) {
  return DeleteUnused(db, referenced, orientationTexts);
}
bool DeleteUnusedGeolocationRecords(sqlite3* db, QVector<int>* referenced) {
  return DeleteUnused(db, referenced, geolocationTexts);
}
bool DeleteUnusedHeightRecords(sqlite3* db, QVector<int>* referenced) {
  return DeleteUnused(db, referenced, heightTexts);
}
bool DeleteUnusedSiteRecords(sqlite3* db, QVector<int>* referenced) {
  return DeleteUnused(db, referenced, siteTexts);
}
bool DeleteUnusedPathRecords(sqlite3* db, QVector<int>* referenced) {
  return DeleteUnused(db, referenced, pathTexts);
}

}  // namespace UnusedRecords
