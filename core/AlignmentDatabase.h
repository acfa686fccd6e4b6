#pragma once

#include <QDateTime>
#include <QString>

#include "TarnbeamDatabaseExport.h"
#include "store/IAlignmentDatabaseInternal.h"

struct sqlite3;
struct sqlite3_stmt;

/// The base of every store: its two file paths, and the operations through which a store reaches SQLite.
///
/// No connection is kept between calls. An operation opens its own, works, and closes it. Failures are
/// reported by results and by one debug line each ("SQL " + description + " failed with " + code + ":" +
/// message, and the like); null arguments are refused without a line. Nothing is retried, and a lock held by
/// another connection fails at once.
class TARNBEAMDATABASE_EXPORT AlignmentDatabase : public IAlignmentDatabaseInternal {
 public:
  /// Touches no file.
  AlignmentDatabase(QString databasePath, QString secondDatabasePath);

  /// Reads the schema version that the main file at `path` carries. `*version` is written only if the result
  /// is true. A missing file is created empty, and an unreadable or empty version record gives false.
  static bool GetDatabaseFileVersion(QString path, unsigned int* version);

 protected:
  /// Opens a file with foreign keys enforced and temporary storage in memory; with `readOnly` false a missing
  /// file is created. On false a line has been logged, nothing is left open and `*db` must not be used.
  static bool OpenDatabase(QString path, sqlite3** db, bool readOnly);
  /// The main file's connection, or null. The caller closes it with CloseDatabase().
  sqlite3* OpenDatabase(bool readOnly);
  /// The thresholds file's connection, or null. The caller closes it with CloseDatabase().
  sqlite3* OpenSecondDatabase(bool readOnly);
  /// A connection with unfinalised statements refuses to close: that is logged, and it stays open.
  static void CloseDatabase(sqlite3* db);

  /// Runs statements without rows; `description` names them in the failure line.
  bool ExecuteNonQueryCommand(sqlite3* db, const char* sql, const char* description);
  /// Null on failure. The caller passes the statement to FinalizeStatement().
  sqlite3_stmt* PrepareStatement(sqlite3* db, const char* sql, const char* description);
  /// Null is ignored.
  static void FinalizeStatement(sqlite3_stmt* statement);

  /// A failure is logged with the description "Begin Transaction".
  bool BeginTransaction(sqlite3* db);
  /// Commits. A failure is logged with the description "End Transaction".
  bool EndTransaction(sqlite3* db);
  /// A failure is logged with the description "Roll Back".
  bool RollBack(sqlite3* db);

  /// Whole seconds since 1970-01-01T00:00:00 UTC; 4294967295 for a time that is invalid or out of range.
  unsigned int QDateToUnixUtc(QDateTime& time);
  /// The instant in local time.
  QDateTime UnixUtcToQDate(unsigned int seconds);

  /// Makes the version record unless it is there, and writes Version() into its only row. Whether that
  /// succeeded; a step that fails is not logged.
  bool InitializeVersionTable(sqlite3* db);

  /// The main file.
  const QString& DatabasePath() const { return databasePath_; }
  /// The thresholds file.
  const QString& SecondDatabasePath() const { return secondDatabasePath_; }

 private:
  QString databasePath_;
  QString secondDatabasePath_;
};
