#include "store/StoreDeletion.h"

#include <sqlite3.h>

#include "core/DebugLog.h"
#include "core/Statement.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/RecordDeletion.h"
#include "store/StoreRows.h"

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

  RecordDeletion::KeyLists Lists() { return {&orientation, &geolocation, &height}; }

  bool DeleteRecords(sqlite3* db) { return RecordDeletion::DeleteAssociated(db, Lists()); }

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

/// One step of a delete of alignment rows; in version 1 as many as it takes until it is done, with a line for
/// each one that was not. Required behaviour: the line says the opposite of what happened.
int StepAlignmentDelete(const StoreIdentity& store, Statement* statement) {
  if (store.deletion != Deletion::AlignmentsAloneUntilDone) return statement->Step();
  return statement->StepUntilDone([] {},
                                  [](int result) {
                                    if (result != SQLITE_DONE) LogDebug("SQLITE_DONE!");
                                  });
}

/// Steps a delete until it yields no more rows. Required behaviour: if it was not bound or does not end in
/// done, it is left open.
bool RunOrLeaveOpen(const StoreIdentity& store, Statement* statement) {
  int result = SQLITE_ROW;
  while (statement->Bound() && result == SQLITE_ROW) result = StepAlignmentDelete(store, statement);
  if (result != SQLITE_DONE) statement->LeaveOpen();
  return result == SQLITE_DONE;
}

// ---- every report of a site

bool DeleteSiteRowsInTransaction(sqlite3* db, const StoreIdentity& store, const QString& siteIdentifier,
                                 long long* siteKey) {
  AssociatedKeys keys;
  const bool associated = store.deletion == Deletion::WithAssociatedRecords;
  if (!StoreRows::FindSite(db, siteIdentifier, siteKey)) {
    LogDebug("Failed to get key for site");
    return false;
  }
  if (associated) {
    if (!RecordDeletion::FindSiteKeys(db, *siteKey, keys.Lists())) {
      LogDebug("Failed to retrieve relevant keys for this site");
      return false;
    }
    keys.Log();
  }
  // Required behaviour: a delete that cannot be prepared does not stop the rest.
  Statement alignments(db, "DELETE FROM AntennaAlignment WHERE SiteKey = ?", "Fetch Report Data for Site");
  if (alignments) {
    alignments.WideKey(*siteKey, "SQL bind SiteKey (site delete) failed with ");
    if (!RunOrLeaveOpen(store, &alignments)) return false;
    alignments.Finalize();
  }
  return RecordDeletion::DeleteSite(db, siteKey) && (!associated || keys.DeleteRecords(db));
}

bool DeleteSiteRows(const StoreIdentity& store, const QString& siteIdentifier, long long* siteKey) {
  const Connection db(store.OpenMain());
  if (!db || !Sql::Begin(db)) return false;
  return Sql::Finish(db, DeleteSiteRowsInTransaction(db, store, siteIdentifier, siteKey));
}

/// Required behaviour: true if the thresholds were deleted or their delete could not be prepared, whatever
/// became of the main file.
bool DeleteSiteThresholds(const StoreIdentity& store, long long siteKey, bool result) {
  const Connection db(store.OpenThresholds());
  if (!db || !Sql::Begin(db)) return result;
  Statement statement(db, "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ?",
                      "Fetch Report Thresholds Data for Site");
  if (!statement) {
    result = true;
  } else {
    statement.WideKey(siteKey, "SQL bind SiteKey (site delete) failed with ");
    if (RunOrLeaveOpen(store, &statement)) result = true;
    statement.Finalize();
  }
  return Sql::Finish(db, result);
}

// ---- every report of a path

void DeletePathRowsInTransaction(sqlite3* db, const StoreIdentity& store, const QString& pathIdentifier,
                                 long long* pathKey) {
  AssociatedKeys keys;
  const bool associated = store.deletion == Deletion::WithAssociatedRecords;
  if (!StoreRows::FindPath(db, pathIdentifier, pathKey)) return;
  if (store.deletion == Deletion::AlignmentsAloneUntilDone) LogDebug("The path key is ", *pathKey);
  if (associated) {
    if (!RecordDeletion::FindPathKeys(db, *pathKey, keys.Lists())) {
      LogDebug("Failed to retrieve relevant keys for this path");
    }
    keys.Log();
  }
  // Required behaviour: as for a site, a delete that cannot be prepared does not stop the rest; label and
  // failure text are the site's.
  Statement alignments(db, "DELETE FROM PathAlignment WHERE PathKey = ?", "Fetch Report Data for Site");
  if (alignments) {
    alignments.WideKey(*pathKey, "SQL bind SiteKey (site delete) failed with ");
    if (!RunOrLeaveOpen(store, &alignments)) return;
    alignments.Finalize();
  }
  if (RecordDeletion::DeletePath(db, pathKey) && associated && !keys.DeleteRecords(db)) {
    LogDebug("Deleting of associated records failed");
  }
}

// Required behaviour: never rolled back. What was done before a failure is kept.
void DeletePathRows(const StoreIdentity& store, const QString& pathIdentifier, long long* pathKey) {
  const Connection db(store.OpenMain());
  if (!db || !Sql::Begin(db)) return;
  DeletePathRowsInTransaction(db, store, pathIdentifier, pathKey);
  Sql::End(db);
}

void DeletePathThresholds(const StoreIdentity& store, long long pathKey) {
  const Connection db(store.OpenThresholds());
  if (!db || !Sql::Begin(db)) return;
  Statement statement(db, "DELETE FROM PathAlignmentThresholds WHERE PathKey = ?",
                      "Fetch Report Data for Site");
  statement.WideKey(pathKey, "SQL bind PathKey (path delete) failed with ");
  RunOrLeaveOpen(store, &statement);
  statement.Finalize();
  Sql::End(db);
}

// ---- one report

/// Lines that are logged for a site's report only; null: none.
struct SingleDeletionLines {
  const char* noOwner;
  const char* noKeys;
  const char* notStepped;
  const char* notDeleted;
  const char* committing;
  const char* rollingBack;
};

/// How deleting one report of a site differs from deleting one of a path.
struct SingleDeletion {
  const char* sql;
  const char* label;
  const char* thresholdsSql;
  const char* thresholdsLabel;
  const char* ownerBindFailure;
  const char* reportBindFailure;
  bool (*findOwner)(sqlite3* db, const QString& identifier, long long* key);
  bool (*findKeys)(sqlite3* db, long long reportKey, AssociatedKeys* keys);
  /// Whether the thresholds are looked for under the report's key, not under 0.
  bool deletesThresholds;
  SingleDeletionLines lines;
};

bool FindSiteAlignmentKeys(sqlite3* db, long long reportKey, AssociatedKeys* keys) {
  long long target = 0;
  long long measured = 0;
  long long location = 0;
  long long height = 0;
  if (!RecordDeletion::FindSiteAlignmentKeys(db, reportKey, {&target, &measured, &location, &height})) {
    return false;
  }
  keys->Add({measured, target}, {location}, height);
  return true;
}

bool FindPathAlignmentKeys(sqlite3* db, long long reportKey, AssociatedKeys* keys) {
  long long target = 0;
  long long measured = 0;
  long long farEnd = 0;
  long long location = 0;
  long long height = 0;
  if (!RecordDeletion::FindPathAlignmentKeys(db, reportKey,
                                             {&target, &measured, &farEnd, &location, &height})) {
    return false;
  }
  keys->Add({target, measured}, {farEnd, location}, height);
  return true;
}

constexpr SingleDeletion SiteReportDeletion() {
  SingleDeletion deletion{};
  deletion.sql = "DELETE FROM AntennaAlignment WHERE SiteKey = ? AND AntennaAlignmentKey = ?";
  deletion.label = "Delete site by and id and index";
  deletion.thresholdsSql =
      "DELETE FROM AntennaAlignmentThresholds WHERE SiteIdentifier = ? AND AntennaAlignmentKey = ?";
  deletion.thresholdsLabel = "Delete site thresholds by and id and index";
  deletion.ownerBindFailure = "failed to bind site key";
  deletion.reportBindFailure = "failed to bind antenna alignment key";
  deletion.findOwner = StoreRows::FindSite;
  deletion.findKeys = FindSiteAlignmentKeys;
  // Required behaviour: no alignment has the key 0, so the report's row stays in the thresholds file.
  deletion.deletesThresholds = false;
  deletion.lines.noOwner = "Couldn't get ID for site identifier";
  deletion.lines.noKeys = "Couldn't get keys for site measurement";
  deletion.lines.notStepped = "Failed to execute SQLITE step, code: ";
  deletion.lines.notDeleted = "Couldn't delete associated records";
  deletion.lines.committing = "Ending transaction";
  deletion.lines.rollingBack = "Rolling back transaction";
  return deletion;
}

constexpr SingleDeletion PathReportDeletion() {
  SingleDeletion deletion{};
  deletion.sql = "DELETE FROM PathAlignment WHERE PathKey = ? AND PathAlignmentKey = ?";
  deletion.label = "Delete path by id and index";
  deletion.thresholdsSql = "DELETE FROM PathAlignmentThresholds WHERE PathKey = ? AND PathAlignmentKey = ?";
  deletion.thresholdsLabel = "Delete path by id and index";
  deletion.ownerBindFailure = "failed to bind path key";
  deletion.reportBindFailure = "Failed to bind path report key";
  deletion.findOwner = StoreRows::FindPath;
  deletion.findKeys = FindPathAlignmentKeys;
  deletion.deletesThresholds = true;
  return deletion;
}

long long KeyOf(const IAntennaAlignmentReportData& report) { return report.AntennaAlignmentKey(); }
long long KeyOf(const IPathAlignmentReportData& report) { return report.PathAlignmentKey(); }

bool Finish(sqlite3* db, const SingleDeletionLines& lines, bool commit) {
  LogIfAny(commit ? lines.committing : lines.rollingBack);
  return Sql::Finish(db, commit);
}

/// Binds owner and report and runs the delete. Required behaviour: a failed step leaves the statement open, a
/// failed bind does not.
bool RunSingleDelete(const StoreIdentity& store, Statement* statement, const SingleDeletion& deletion,
                     long long ownerKey, long long reportKey) {
  if (!statement->BindsWideKey(ownerKey)) {
    LogDebug(deletion.ownerBindFailure);
    return false;
  }
  if (!statement->BindsWideKey(reportKey)) {
    LogDebug(deletion.reportBindFailure);
    return false;
  }
  const int result = StepAlignmentDelete(store, statement);
  if (result == SQLITE_DONE) return true;
  if (deletion.lines.notStepped != nullptr) LogDebug(deletion.lines.notStepped, result);
  statement->LeaveOpen();
  return false;
}

bool DeleteReportRows(sqlite3* db, const StoreIdentity& store, const SingleDeletion& deletion,
                      const QString& identifier, long long reportKey, long long* ownerKey) {
  AssociatedKeys keys;
  const bool associated = store.deletion == Deletion::WithAssociatedRecords;
  if (!deletion.findOwner(db, identifier, ownerKey)) {
    LogIfAny(deletion.lines.noOwner);
    return false;
  }
  if (associated && !deletion.findKeys(db, reportKey, &keys)) {
    LogIfAny(deletion.lines.noKeys);
    return false;
  }
  // Required behaviour: a delete that cannot be prepared does not stop the rest.
  Statement alignment(db, deletion.sql, deletion.label);
  if (alignment && !RunSingleDelete(store, &alignment, deletion, *ownerKey, reportKey)) return false;
  alignment.Finalize();
  if (associated && !keys.DeleteRecords(db)) {
    LogIfAny(deletion.lines.notDeleted);
    return false;
  }
  return true;
}

/// `result` is the main file's. Required behaviour: also true if the thresholds were deleted or their delete
/// could not be prepared.
bool DeleteReportThresholds(const StoreIdentity& store, const SingleDeletion& deletion, long long reportKey,
                            long long ownerKey, bool result) {
  const Connection db(store.OpenThresholds());
  if (!db || !Sql::Begin(db)) return result;
  Statement statement(db, deletion.thresholdsSql, deletion.thresholdsLabel);
  const long long key = deletion.deletesThresholds ? reportKey : 0;
  if (!statement || RunSingleDelete(store, &statement, deletion, ownerKey, key)) result = true;
  statement.Finalize();
  return Finish(db, deletion.lines, result);
}

/// Both files for the report at `index`. Its key is read only after the attempt to begin the main file's
/// transaction. A negative index is out of range like one past the end.
template <typename Record>
bool DeleteOneReport(const StoreIdentity& store, const SingleDeletion& deletion, const QString& identifier,
                     const QVector<Record*>* reports, int index) {
  if (reports == nullptr || index < 0 || index >= reports->size()) return false;
  Connection db(store.OpenMain());
  if (!db) return false;
  bool result = false;
  long long ownerKey = 0;
  const bool begun = Sql::Begin(db);
  const long long reportKey = KeyOf(*reports->at(index));
  if (begun) {
    result =
        Finish(db, deletion.lines, DeleteReportRows(db, store, deletion, identifier, reportKey, &ownerKey));
  }
  db.Close();
  if (!store.texts.hasThresholdsFile) return result;
  return DeleteReportThresholds(store, deletion, reportKey, ownerKey, result);
}

}  // namespace

namespace StoreDeletion {

bool DeleteSite(const StoreIdentity& store, const QString& siteIdentifier) {
  long long siteKey = 0;
  const bool result = DeleteSiteRows(store, siteIdentifier, &siteKey);
  return store.texts.hasThresholdsFile ? DeleteSiteThresholds(store, siteKey, result) : result;
}

bool DeletePath(const StoreIdentity& store, const QString& pathIdentifier) {
  long long pathKey = 0;
  DeletePathRows(store, pathIdentifier, &pathKey);
  if (store.texts.hasThresholdsFile) DeletePathThresholds(store, pathKey);
  return true;
}

bool DeleteSiteReport(const StoreIdentity& store, const QString& siteIdentifier,
                      const AntennaAlignmentPdfReportData* reports, int index) {
  static constexpr SingleDeletion deletion = SiteReportDeletion();
  return reports != nullptr &&
         DeleteOneReport(store, deletion, siteIdentifier, reports->AlignmentData(), index);
}

bool DeletePathReport(const StoreIdentity& store, const QString& pathIdentifier,
                      const PathAlignmentPdfReportData* reports, int index) {
  static constexpr SingleDeletion deletion = PathReportDeletion();
  return reports != nullptr && DeleteOneReport(store, deletion, pathIdentifier, reports->PathData(), index);
}

}  // namespace StoreDeletion
