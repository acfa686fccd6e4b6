// Deleting reports. Each operation changes the main file first and then, whatever came of that, the
// thresholds file: two connections one after the other, two transactions.
#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <memory>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/AlignmentDatabaseStore.h"
#include "store/StoreDescription.h"

namespace {

/// The keys of what deleted alignments referred to, 32 bits each, duplicates kept.
struct AssociatedKeys {
  QVector<int> orientation;
  QVector<int> geolocation;
  QVector<int> height;

  void Add(std::initializer_list<long long> orientations, std::initializer_list<long long> geolocations,
           long long heightKey) {
    for (const long long key : orientations) orientation << static_cast<int>(key);
    for (const long long key : geolocations) geolocation << static_cast<int>(key);
    height << static_cast<int>(heightKey);
  }

  void Log() const {
    LogList("OrientationKeys: ", orientation);
    LogList("GeolocationKeys: ", geolocation);
    LogList("HeightKeys: ", height);
  }

 private:
  static void LogList(const char* title, const QVector<int>& keys) {
    LogDebug(title);
    QString line;
    for (const int key : keys) line += QString::number(key) + QLatin1Char(' ');
    LogDebug(line);
  }
};

/// Steps until the statement is done, calling `row` for every row and `stepped` for every result; any other
/// result is stepped over without end.
template <typename Row, typename Stepped>
void StepAll(Statement* statement, Row row, Stepped stepped) {
  int result = SQLITE_OK;
  while (result != SQLITE_DONE) {
    result = statement->Step();
    if (result == SQLITE_ROW) row();
    stepped(result);
  }
}

template <typename Row>
void StepAll(Statement* statement, Row row) {
  StepAll(statement, row, [](int) {});
}

// A statement that cannot be prepared counts as success, a failed bind leaves it open, and the steps have
// no bound: all three are required.
bool DeleteRowByKey(sqlite3* db, const long long* key, const char* sql, const char* bindFailure) {
  if (db == nullptr || key == nullptr) return false;
  Statement statement(db, sql, "Delete site");
  if (!statement) return true;
  if (!statement.WideKey(*key, bindFailure).Bound()) {
    statement.LeaveOpen();
    return false;
  }
  StepAll(&statement, [] {});
  return true;
}

/// A negative index is out of range like one past the end.
template <typename Records>
bool IsIndexOf(int index, const Records* records) {
  return records != nullptr && index >= 0 && index < records->size();
}

}  // namespace

bool AlignmentDatabaseStore::DeleteSiteByKey(sqlite3* db, long long* siteKey) {
  return DeleteRowByKey(db, siteKey, "DELETE FROM Sites WHERE SiteKey = ?",
                        "SQL bind SiteKey (key delete) failed with ");
}

bool AlignmentDatabaseStore::DeletePathByKey(sqlite3* db, long long* pathKey) {
  return DeleteRowByKey(db, pathKey, "DELETE FROM Paths WHERE PathKey = ?",
                        "SQL bind PathKey (key delete) failed with ");
}

bool AlignmentDatabaseStore::GetSingleSiteMeasurementKeys(sqlite3* db, long long alignmentKey,
                                                          long long* targetOrientationKey,
                                                          long long* measuredOrientationKey,
                                                          long long* locationKey, long long* siteHeightKey) {
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
  if (!statement || !statement.Key(alignmentKey, "SQL bind failed with ").Bound()) return false;
  StepAll(&statement, [&] {
    int column = 0;
    for (long long* key : keys) *key = statement.IntColumn(column++);
  });
  return true;
}

bool AlignmentDatabaseStore::GetSinglePathMeasurementKeys(sqlite3* db, long long alignmentKey,
                                                          long long* targetOrientationKey,
                                                          long long* measuredOrientationKey,
                                                          long long* pathLocationKey, long long* locationKey,
                                                          long long* siteHeightKey) {
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
  if (!statement || !statement.Key(alignmentKey, "SQL bind failed with ").Bound()) return false;
  const auto readKeys = [&] {
    int column = 0;
    for (long long* key : keys) *key = statement.IntColumn(column++);
  };
  StepAll(&statement, readKeys, [](int result) { LogDebug("Sqlite step rval: ", result); });
  return true;
}

bool AlignmentDatabaseStore::GetAllRelatedSiteKeys(sqlite3* db, long long siteKey,
                                                   QVector<int>* orientationKeys,
                                                   QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    LogDebug("Null vector passed in for key site key retrieval");
    return false;
  }
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM "
                      "AntennaAlignment WHERE SiteKey=?",
                      "Fetch Keys For Site");
  if (!statement || !statement.Key(siteKey, "SQL bind failed with ").Bound()) return false;
  StepAll(&statement, [&] {
    *orientationKeys << statement.IntColumn(0) << statement.IntColumn(1);
    *geolocationKeys << statement.IntColumn(2);
    *heightKeys << statement.IntColumn(3);
  });
  return true;
}

bool AlignmentDatabaseStore::GetAllRelatedPathKeys(sqlite3* db, long long pathKey,
                                                   QVector<int>* orientationKeys,
                                                   QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    return false;
  }
  LogDebug("Finding relevant path keys...");
  Statement statement(db,
                      "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, "
                      "SiteHeightKey FROM PathAlignment WHERE PathKey=?",
                      "Fetch Keys For Path");
  if (!statement || !statement.Key(pathKey, "SQL bind failed with ").Bound()) return false;
  StepAll(&statement, [&] {
    *orientationKeys << statement.IntColumn(0) << statement.IntColumn(1);
    *geolocationKeys << statement.IntColumn(2) << statement.IntColumn(3);
    *heightKeys << statement.IntColumn(4);
  });
  return true;
}

bool AlignmentDatabaseStore::GenericBatchKeyDelete(sqlite3* db, QVector<int>* keys, const char* table,
                                                   const char* column) {
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

bool AlignmentDatabaseStore::DeleteAssociatedRecordsByKeys(sqlite3* db, QVector<int>* orientationKeys,
                                                           QVector<int>* geolocationKeys,
                                                           QVector<int>* heightKeys) {
  if (db == nullptr || orientationKeys == nullptr || geolocationKeys == nullptr || heightKeys == nullptr) {
    LogDebug("Null vector passed in for record deletion");
    return false;
  }
  const struct {
    QVector<int>* keys;
    const char* table;
    const char* column;
    const char* failureLine;
  } lists[] = {
      {orientationKeys, "Orientation", "OrientationKey", "Failed to delete orientation keys"},
      {geolocationKeys, "Geolocation", "GeolocationKey", "Failed to delete geolocation keys"},
      {heightKeys, "Height", "HeightKey", "Failed to delete height keys"},
  };
  for (const auto& list : lists) {
    if (!GenericBatchKeyDelete(db, list.keys, list.table, list.column)) {
      LogDebug(list.failureLine);
      return false;
    }
  }
  return true;
}

/// One step of a delete of alignment rows; in version 1 as many as it takes until it is done, with a line
/// for every one that was not. The line says the opposite of what happened, and stays.
int AlignmentDatabaseStore::StepAlignmentDelete(Statement* statement) {
  int result = statement->Step();
  if (Description().deletion != Deletion::AlignmentsAloneUntilDone) return result;
  while (result != SQLITE_DONE) {
    LogDebug("SQLITE_DONE!");
    result = statement->Step();
  }
  return result;
}

/// Steps a delete over its rows. One that was not bound or does not end in done is left open.
bool AlignmentDatabaseStore::RunOrLeaveOpen(Statement* statement) {
  int result = SQLITE_ROW;
  while (statement->Bound() && result == SQLITE_ROW) result = StepAlignmentDelete(statement);
  if (result != SQLITE_DONE) statement->LeaveOpen();
  return result == SQLITE_DONE;
}

// ---- every report of a site

bool AlignmentDatabaseStore::DeleteReportsBySiteAndSector(QString& siteIdentifier, QString& /*sectorName*/) {
  long long siteKey = 0;
  const bool result = DeleteSiteRows(siteIdentifier, &siteKey);
  return Description().hasThresholdsFile ? DeleteSiteThresholds(siteKey, result) : result;
}

bool AlignmentDatabaseStore::DeleteSiteRows(QString& siteIdentifier, long long* siteKey) {
  const Connection db(OpenDatabase(false));
  if (!db || !BeginTransaction(db)) return false;
  if (!DeleteSiteRowsInTransaction(db, siteIdentifier, siteKey)) {
    RollBack(db);
    return false;
  }
  EndTransaction(db);
  return true;
}

bool AlignmentDatabaseStore::DeleteSiteRowsInTransaction(sqlite3* db, QString& siteIdentifier,
                                                         long long* siteKey) {
  AssociatedKeys keys;
  const bool associated = Description().DeletesAssociatedRecords();
  if (!GetIDForSiteIdentifier(db, siteIdentifier, siteKey)) {
    LogDebug("Failed to get key for site");
    return false;
  }
  if (associated) {
    if (!GetAllRelatedSiteKeys(db, *siteKey, &keys.orientation, &keys.geolocation, &keys.height)) {
      LogDebug("Failed to retrieve relevant keys for this site");
      return false;
    }
    keys.Log();
  }
  // A delete that cannot be prepared does not stop the rest.
  Statement alignments(db, "DELETE FROM AntennaAlignment WHERE SiteKey = ?", "Fetch Report Data for Site");
  if (alignments) {
    alignments.WideKey(*siteKey, "SQL bind SiteKey (site delete) failed with ");
    if (!RunOrLeaveOpen(&alignments)) return false;
    alignments.Finalize();
  }
  return DeleteSiteByKey(db, siteKey) &&
         (!associated ||
          DeleteAssociatedRecordsByKeys(db, &keys.orientation, &keys.geolocation, &keys.height));
}

/// True once the thresholds were deleted or could not be asked for, whatever became of the main file.
bool AlignmentDatabaseStore::DeleteSiteThresholds(long long siteKey, bool result) {
  const Connection db(OpenSecondDatabase(false));
  if (!db || !BeginTransaction(db)) return result;
  Statement statement(db, "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ?",
                      "Fetch Report Thresholds Data for Site");
  if (!statement) {
    result = true;
  } else {
    statement.WideKey(siteKey, "SQL bind SiteKey (site delete) failed with ");
    if (RunOrLeaveOpen(&statement)) result = true;
    statement.Finalize();
  }
  if (result) {
    EndTransaction(db);
  } else {
    RollBack(db);
  }
  return result;
}

// ---- every report of a path

bool AlignmentDatabaseStore::DeleteReportsByPath(QString& pathIdentifier) {
  long long pathKey = 0;
  DeletePathRows(pathIdentifier, &pathKey);
  if (Description().hasThresholdsFile) DeletePathThresholds(pathKey);
  return true;
}

// Never rolled back: what was done before a failure is kept.
void AlignmentDatabaseStore::DeletePathRows(QString& pathIdentifier, long long* pathKey) {
  const Connection db(OpenDatabase(false));
  if (!db || !BeginTransaction(db)) return;
  DeletePathRowsInTransaction(db, pathIdentifier, pathKey);
  EndTransaction(db);
}

void AlignmentDatabaseStore::DeletePathRowsInTransaction(sqlite3* db, QString& pathIdentifier,
                                                         long long* pathKey) {
  AssociatedKeys keys;
  const bool associated = Description().DeletesAssociatedRecords();
  if (!GetIDForPathIdentifier(db, pathIdentifier, pathKey)) return;
  if (Description().deletion == Deletion::AlignmentsAloneUntilDone) LogDebug("The path key is ", *pathKey);
  if (associated) {
    if (!GetAllRelatedPathKeys(db, *pathKey, &keys.orientation, &keys.geolocation, &keys.height)) {
      LogDebug("Failed to retrieve relevant keys for this path");
    }
    keys.Log();
  }
  Statement alignments(db, "DELETE FROM PathAlignment WHERE PathKey = ?", "Fetch Report Data for Site");
  if (alignments) {
    // The text names the site on purpose: the path shares it.
    alignments.WideKey(*pathKey, "SQL bind SiteKey (site delete) failed with ");
    if (!RunOrLeaveOpen(&alignments)) return;
    alignments.Finalize();
  }
  if (DeletePathByKey(db, pathKey) && associated &&
      !DeleteAssociatedRecordsByKeys(db, &keys.orientation, &keys.geolocation, &keys.height)) {
    LogDebug("Deleting of associated records failed");
  }
}

void AlignmentDatabaseStore::DeletePathThresholds(long long pathKey) {
  const Connection db(OpenSecondDatabase(false));
  if (!db || !BeginTransaction(db)) return;
  Statement statement(db, "DELETE FROM PathAlignmentThresholds WHERE PathKey = ?",
                      "Fetch Report Data for Site");
  if (statement) {
    statement.WideKey(pathKey, "SQL bind PathKey (path delete) failed with ");
    RunOrLeaveOpen(&statement);
    statement.Finalize();
  }
  EndTransaction(db);
}

// ---- one report

/// The texts in which deleting one report of a site differs from one of a path; null: nothing is logged.
struct AlignmentDatabaseStore::SingleDeletion {
  const char* sql;
  const char* label;
  const char* thresholdsSql;
  const char* thresholdsLabel;
  const char* ownerBindFailure;
  const char* reportBindFailure;
  const char* stepFailure;
  const char* findFailure;
  const char* collectFailure;
  const char* associatedFailure;
  const char* committing;
  const char* rollingBack;
};

void AlignmentDatabaseStore::FinishTransaction(sqlite3* db, const SingleDeletion& texts, bool commit) {
  LogIfAny(commit ? texts.committing : texts.rollingBack);
  if (commit) {
    EndTransaction(db);
  } else {
    RollBack(db);
  }
}

/// Binds owner and report and runs the delete. A failed step leaves the statement open, a failed bind not.
bool AlignmentDatabaseStore::RunSingleDelete(Statement* statement, const SingleDeletion& texts,
                                             long long ownerKey, long long reportKey) {
  if (!statement->BindsWideKey(ownerKey)) {
    LogDebug(texts.ownerBindFailure);
    return false;
  }
  if (!statement->BindsWideKey(reportKey)) {
    LogDebug(texts.reportBindFailure);
    return false;
  }
  const int result = StepAlignmentDelete(statement);
  if (result == SQLITE_DONE) return true;
  if (texts.stepFailure != nullptr) LogDebug(texts.stepFailure, result);
  statement->LeaveOpen();
  return false;
}

template <typename FindKey, typename Collect>
bool AlignmentDatabaseStore::DeleteReportRows(sqlite3* db, const SingleDeletion& texts, long long* ownerKey,
                                              long long reportKey, FindKey findKey, Collect collect) {
  AssociatedKeys keys;
  const bool associated = Description().DeletesAssociatedRecords();
  if (!findKey(db, ownerKey)) {
    LogIfAny(texts.findFailure);
    return false;
  }
  if (associated && !collect(db, &keys)) {
    LogIfAny(texts.collectFailure);
    return false;
  }
  Statement alignment(db, texts.sql, texts.label);
  if (alignment && !RunSingleDelete(&alignment, texts, *ownerKey, reportKey)) return false;
  alignment.Finalize();
  if (associated && !DeleteAssociatedRecordsByKeys(db, &keys.orientation, &keys.geolocation, &keys.height)) {
    LogIfAny(texts.associatedFailure);
    return false;
  }
  return true;
}

/// Both phases for one report. `thresholdsKey` is what the thresholds are looked for under.
template <typename FindKey, typename Collect>
bool AlignmentDatabaseStore::DeleteOneReport(const SingleDeletion& texts, long long reportKey,
                                             long long thresholdsKey, FindKey findKey, Collect collect) {
  bool result = false;
  long long ownerKey = 0;
  Connection main(OpenDatabase(false));
  if (!main) return false;
  if (BeginTransaction(main)) {
    result = DeleteReportRows(main, texts, &ownerKey, reportKey, findKey, collect);
    FinishTransaction(main, texts, result);
  }
  main.Close();
  if (!Description().hasThresholdsFile) return result;

  const Connection thresholds(OpenSecondDatabase(false));
  if (!thresholds || !BeginTransaction(thresholds)) return result;
  Statement statement(thresholds, texts.thresholdsSql, texts.thresholdsLabel);
  if (!statement || RunSingleDelete(&statement, texts, ownerKey, thresholdsKey)) result = true;
  statement.Finalize();
  FinishTransaction(thresholds, texts, result);
  return result;
}

bool AlignmentDatabaseStore::DeleteReportsBySiteAndIndex(QString& siteIdentifier, int index) {
  static constexpr SingleDeletion texts{
      "DELETE FROM AntennaAlignment WHERE SiteKey = ? AND AntennaAlignmentKey = ?",
      "Delete site by and id and index",
      "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ? AND AntennaAlignmentKey = ?",
      "Delete site thresholds by and id and index",
      "failed to bind site key",
      "failed to bind antenna alignment key",
      "Failed to execute SQLITE step, code: ",
      "Couldn't get ID for site identifier",
      "Couldn't get keys for site measurement",
      "Couldn't delete associated records",
      "Ending transaction",
      "Rolling back transaction",
  };
  const std::unique_ptr<AntennaAlignmentPdfReportData> reports(GetAlignmentReportDataForSite(siteIdentifier));
  if (!reports || !IsIndexOf(index, reports->AlignmentData())) return false;
  const long long reportKey = reports->AlignmentData()->at(index)->AntennaAlignmentKey();
  const auto findKey = [&](sqlite3* db, long long* key) {
    return GetIDForSiteIdentifier(db, siteIdentifier, key);
  };
  const auto collect = [&](sqlite3* db, AssociatedKeys* keys) {
    long long target = 0;
    long long measured = 0;
    long long location = 0;
    long long height = 0;
    if (!GetSingleSiteMeasurementKeys(db, reportKey, &target, &measured, &location, &height)) return false;
    keys->Add({measured, target}, {location}, height);
    return true;
  };
  // The thresholds are looked for under key 0, which no alignment has: the report's row stays in the
  // thresholds file. This is required.
  constexpr long long thresholdsKey = 0;
  return DeleteOneReport(texts, reportKey, thresholdsKey, findKey, collect);
}

bool AlignmentDatabaseStore::DeleteReportsByPathAndIndex(QString& pathIdentifier, int index) {
  static constexpr SingleDeletion texts{
      "DELETE FROM PathAlignment WHERE PathKey = ? AND PathAlignmentKey = ?",
      "Delete path by id and index",
      "DELETE FROM PathAlignmentThresholds WHERE PathKey = ? AND PathAlignmentKey = ?",
      "Delete path by id and index",
      "failed to bind path key",
      "Failed to bind path report key",
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
      nullptr,
  };
  const std::unique_ptr<PathAlignmentPdfReportData> reports(
      GetPathAlignmentReportDataForSite(pathIdentifier));
  if (!reports || !IsIndexOf(index, reports->PathData())) return false;
  const long long reportKey = reports->PathData()->at(index)->PathAlignmentKey();
  const auto findKey = [&](sqlite3* db, long long* key) {
    return GetIDForPathIdentifier(db, pathIdentifier, key);
  };
  const auto collect = [&](sqlite3* db, AssociatedKeys* keys) {
    long long target = 0;
    long long measured = 0;
    long long farEnd = 0;
    long long location = 0;
    long long height = 0;
    if (!GetSinglePathMeasurementKeys(db, reportKey, &target, &measured, &farEnd, &location, &height)) {
      return false;
    }
    keys->Add({target, measured}, {farEnd, location}, height);
    return true;
  };
  return DeleteOneReport(texts, reportKey, reportKey, findKey, collect);
}
