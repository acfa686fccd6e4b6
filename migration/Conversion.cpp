#include "migration/Conversion.h"

#include <fcntl.h>
#include <sqlite3.h>

#include <cerrno>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"
#include "migration/DatabaseFileSwap.h"
#include "migration/File.h"
#include "migration/UnusedRecords.h"

namespace {

constexpr char noScratchFile[] = "Aborting conversion, CreateTemporaryDatabase failed";
constexpr char noNewSites[] = "Unable to create new sites table";
constexpr char noNewPaths[] = "Unable to create new paths table";
constexpr char noPathContents[] = "Unable to copy paths table contents";

}  // namespace

/// How one table gets into the scratch file. Required behaviour: several texts name another table, and a
/// failed copy is named for some tables only, and from the conversion to `copyFailureSince` on.
struct CopiedTable {
  const char* name;
  const char* SchemaTexts::*definition;
  const char* createLabel;
  const char* copyLabel;
  const char* stepFailure;
  const char* createFailure = noNewSites;
  const char* copyFailure = nullptr;
  unsigned int copyFailureSince = 0;
};

namespace {

// Every table stands before those that refer to it, since foreign keys are enforced while rows are copied.
constexpr CopiedTable copiedTables[] = {
    {"Sites", &SchemaTexts::sites, "Create Sites Table", "Copy Sites Table",
     "Aborting conversion, UpdateSitesTable failed"},
    {"Paths", &SchemaTexts::paths, "Create Paths Table", "Copy Paths Table",
     "Aborting conversion, UpdatePathsTable failed"},
    {"Orientation", &SchemaTexts::orientation, "Create Orientation Table", "Copy Orientation Table",
     "Aborting conversion, UpdateOrientationTable failed"},
    {"Geolocation", &SchemaTexts::geolocation, "Create Geolocation Table", "Copy Geolocation Table",
     "Aborting conversion, UpdateGeolocationTable failed"},
    {"Height", &SchemaTexts::height, "Create Height Table", "Copy Height Table",
     "Aborting conversion, UpdateHeightTable failed", noNewSites, "Unable to copy height data", 6},
    {"AntennaAlignment", &SchemaTexts::antennaAlignmentCopy, "Create Antenna Alignment Table",
     "Copy Antenna Alignment Table", "Aborting conversion, UpdateAntennaAlignmentTabble failed", noNewSites,
     noNewPaths, 3},
    {"PathAlignment", &SchemaTexts::pathAlignmentCopy, "Create Path Alignment Table",
     "Copy Path Alignment Table", "Aborting conversion, UpdatePathAlignmentTable failed", noNewPaths,
     noPathContents, 3},
    {"Preferences", &SchemaTexts::preferences, "Create Preferences Table", "Copy Preferences Table",
     "Aborting conversion, UpdatePreferencesTable failed", noNewSites, noPathContents, 4},
    {"SiteScreenContents", &SchemaTexts::siteScreenContents, "Create Site Scren Contents Table",
     "Copy Site Scren Contents Table", "Aborting conversion, UpdateSiteScreenContentsTable failed"},
    {"PathScreenContents", &SchemaTexts::pathScreenContents, "Create Path Screen Contents Table",
     "Copy Path Screen Contents Table", "Aborting conversion, UpdatePathScreenContentsTable failed"},
};

/// Keeps the scratch file attached for a scope. A failed detach changes no result.
class Attached {
 public:
  explicit Attached(sqlite3* db) : db_(db), attached_(Conversion::AttachTemporaryDatabase(db)) {}
  ~Attached() {
    if (attached_) Conversion::DetachTemporaryDatabase(db_);
  }
  Attached(const Attached&) = delete;
  Attached& operator=(const Attached&) = delete;
  explicit operator bool() const { return attached_; }
  /// Leaves the scratch file attached until the connection closes.
  void Keep() { attached_ = false; }

 private:
  sqlite3* db_;
  bool attached_;
};

const TableChanges* ChangesOf(const ConversionStep& step, const char* table) {
  for (const TableChanges& changes : step.tables) {
    if (changes.table != nullptr && qstrcmp(changes.table, table) == 0) return &changes;
  }
  return nullptr;
}

/// Runs the table's changes, each only if the one before succeeded.
bool RunChanges(sqlite3* db, const TableChanges& table) {
  for (const Change& change : table.changes) {
    if (change.sql == nullptr) return true;
    if (!Sql::Execute(db, change.sql, change.label)) return false;
  }
  return true;
}

bool ChangeTable(sqlite3* db, const TableChanges& table, bool copied) {
  if (!RunChanges(db, table)) {
    LogIfAny(table.changeFailure);
    if (table.outcome == Outcome::ChangesCount) return false;
    if (table.outcome == Outcome::CopyOrChangesCount && !copied) return false;
  }
  return table.correct == nullptr || table.correct(db);
}

/// Limits the scratch folder, and with it the device, to one conversion at a time. The lock is on the folder
/// itself and goes with the process that holds it, so it is never left behind.
class ScratchFolder {
 public:
  ScratchFolder() : folder_(Conversion::scratchFolder, O_RDONLY | O_DIRECTORY) {
    locked_ = folder_ && folder_.Lock();
    isTaken_ = folder_ && !locked_ && errno == EWOULDBLOCK;
  }
  explicit operator bool() const { return locked_; }
  /// Whether another conversion holds the lock.
  bool IsTaken() const { return isTaken_; }

 private:
  File folder_;
  bool locked_;
  bool isTaken_;
};

struct CheckTexts {
  const char* nullFailure;
  const char* sql;
  const char* label;
};

/// Prepares one of the two checks on the attached scratch file and hands it to `passes`.
template <typename Passes>
bool PerformCheck(sqlite3* db, const CheckTexts& texts, Passes passes) {
  if (db == nullptr) {
    LogDebug(texts.nullFailure);
    return false;
  }
  const Attached scratch(db);
  if (!scratch) {
    LogDebug("Failed to attach temporary database");
    return false;
  }
  Statement check(db, texts.sql, texts.label);
  if (!check) {
    LogDebug("Statement returned as null, aborting...");
    return false;
  }
  return passes(&check);
}

}  // namespace

bool Conversion::Convert(const QString& path) {
  const LibraryCall call;
  if (DatabaseFileSwap::IsSameFile(path, scratchPath)) {
    LogDebug("The temporary database itself cannot be converted: ", path);
    return File::Fail(EINVAL, "convert the scratch file itself", path.toLocal8Bit());
  }
  Connection db(Sql::OpenForWriting(path));
  if (!db) {
    if (step_.failures == FailureHandling::AllNamed) LogDebug("Failed database open? full path: ", path);
    return false;
  }
  const ScratchFolder folder;
  if (folder.IsTaken()) {
    LogDebug("Another conversion is under way, this one does not begin: ", path);
    return false;
  }
  const bool copied = folder ? MakeCopy(db) : FailStep(noScratchFile);
  db.Close();
  if (copied) return DatabaseFileSwap::SwapDatabaseFiles(path, scratchPath);
  if (step_.failures == FailureHandling::AllNamed) LogDebug("Success false, deleting temp database");
  // Without the lock the file, if there is one, belongs to another conversion.
  if (folder && step_.failures != FailureHandling::ChecksNamed) DeleteTemporaryDatabase();
  return false;
}

bool Conversion::FailStep(const char* line) const {
  if (step_.failures != FailureHandling::ChecksNamed) LogDebug(line);
  return false;
}

bool Conversion::MakeCopy(sqlite3* db) const {
  if (!CreateTemporaryDatabase()) return FailStep(noScratchFile);
  if (!UpdateVersion(db)) return FailStep("Aborting conversion, UpdateVersion failed");
  for (const CopiedTable& table : copiedTables) {
    if (!UpdateTable(db, table)) return FailStep(table.stepFailure);
  }
  if (step_.unusedRows == UnusedRows::Go && !UnusedRecords::DeleteUnusedRecords(db)) {
    return FailStep("Aborting conversion, DeleteUnusedRecords failed");
  }
  if (!PerformIntegrityCheck(db)) {
    LogDebug("Integrity check failed");
    return false;
  }
  if (!PerformForeignKeyCheck(db)) {
    LogDebug("Foreign key check failed");
    return false;
  }
  return true;
}

// Works on the plain file: SQLite takes an empty file for an empty database, and discards a journal that an
// interrupted run left beside it. Emptied in any case, so that rows of a left-over file that could not be
// removed never get into the copy; but never through a link, whose target belongs to somebody else.
bool Conversion::CreateTemporaryDatabase() {
  File::Remove(scratchPath);
  return static_cast<bool>(File(scratchPath, O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
}

bool Conversion::DeleteTemporaryDatabase() {
  const File scratch(scratchPath, O_RDWR | O_CREAT | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  return File::Remove(scratchPath);
}

bool Conversion::AttachTemporaryDatabase(sqlite3* db) {
  return Sql::Execute(db, "ATTACH DATABASE '/opt/tarnbeam/database/TemporaryDB.sqlite' as TemporaryDB",
                      "Attach temporary db");
}

bool Conversion::DetachTemporaryDatabase(sqlite3* db) {
  return Sql::Execute(db, "DETACH DATABASE TemporaryDB", "Detach temporary db");
}

bool Conversion::UpdateVersion(sqlite3* db) const {
  Attached scratch(db);
  if (!scratch) return false;
  if (!Sql::Execute(db, "CREATE TABLE IF NOT EXISTS TemporaryDB.Version ( VersionNumber INTEGER NOT NULL)",
                    "Create Copy Version Table")) {
    LogDebug("Unable to create new version table");
    return false;
  }
  Statement insert(db, "INSERT OR REPLACE INTO TemporaryDB.Version (RowID,VersionNumber) values (1,?)",
                   "Insert Version");
  if (!insert) {
    // Required behaviour: it stays attached until the connection is closed, which comes next.
    scratch.Keep();
    return false;
  }
  return insert.BindInt(static_cast<int>(step_.targetVersion)) == SQLITE_OK && insert.Run();
}

bool Conversion::UpdateTable(sqlite3* db, const CopiedTable& table) const {
  const Attached scratch(db);
  return scratch && UpdateAttachedTable(db, table);
}

bool Conversion::UpdateAttachedTable(sqlite3* db, const CopiedTable& table) const {
  const QByteArray create =
      QByteArray("CREATE TABLE IF NOT EXISTS TemporaryDB.") + step_.source.*table.definition;
  if (!Sql::Execute(db, create.constData(), table.createLabel)) {
    // Required behaviour: the first conversion names sites where the later ones name paths.
    LogDebug(step_.failures == FailureHandling::ChecksNamed ? noNewSites : table.createFailure);
    return false;
  }
  const TableChanges* changes = ChangesOf(step_, table.name);
  const Outcome outcome = changes != nullptr ? changes->outcome : Outcome::CopyCounts;
  const QByteArray copy =
      QByteArray("INSERT INTO TemporaryDB.") + table.name + " SELECT * FROM main." + table.name;
  const bool copied = Sql::Execute(db, copy.constData(), table.copyLabel);
  if (!copied && (outcome == Outcome::ChangesCount || outcome == Outcome::CopyCounts)) {
    if (step_.targetVersion >= table.copyFailureSince) LogIfAny(table.copyFailure);
    return false;
  }
  return changes == nullptr || ChangeTable(db, *changes, copied);
}

// Required behaviour: one row "ok" is enough, whatever other rows say; no row at all fails.
bool Conversion::PerformIntegrityCheck(sqlite3* db) {
  constexpr CheckTexts texts{"Null db passed to integrity check", "PRAGMA TemporaryDB.integrity_check",
                             "Perform integrity check"};
  return PerformCheck(db, texts, [](Statement* check) {
    bool intact = false;
    while (check->Step() == SQLITE_ROW) {
      const QString text = check->TextColumn(0);
      if (text.isNull()) {
        LogDebug("Null string returned from statement evaluation");
        break;
      }
      if (text == QLatin1String("ok")) intact = true;
    }
    if (!intact) Watch::Failed(SQLITE_CORRUPT, QStringLiteral("The copy did not pass its integrity check"));
    return intact;
  });
}

bool Conversion::PerformForeignKeyCheck(sqlite3* db) {
  constexpr CheckTexts texts{"Null db passed to foreign key check", "PRAGMA TemporaryDB.foreign_key_check",
                             "Perform foreign key check"};
  return PerformCheck(db, texts, [](Statement* check) {
    if (check->Step() == SQLITE_DONE) return true;
    while (check->Step() == SQLITE_ROW) {
    }
    Watch::Failed(SQLITE_CONSTRAINT_FOREIGNKEY,
                  QStringLiteral("The copy did not pass its foreign key check"));
    return false;
  });
}
