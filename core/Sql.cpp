#include "core/Sql.h"

#include <sqlite3.h>

#include <limits>

#include "core/DebugLog.h"
#include "core/Watch.h"

namespace {

/// Closes a connection that could not be made ready for use. A refusal to close is not logged.
void Discard(sqlite3* db) {
  const int result = sqlite3_close(db);
  if (result != SQLITE_OK) Watch::CloseRefused(db, result);
}

// Required behaviour: a pragma that fails closes the connection but leaves the handle's value. Callers go by
// the result alone.
bool SetPragma(sqlite3* db, const char* sql, const char* failureLine) {
  const int result = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
  if (result == SQLITE_OK) return true;
  Watch::CallFailed(db, result, "execute", sql);
  LogDebug(failureLine);
  Discard(db);
  return false;
}

}  // namespace

namespace Sql {

bool Open(const QString& path, sqlite3** db, bool readOnly) {
  if (db == nullptr) return false;
  *db = nullptr;
  const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  const int result = sqlite3_open_v2(path.toLocal8Bit().constData(), db, flags, nullptr);
  if (result != SQLITE_OK) {
    Watch::CallFailed(*db, result, "open", path.toUtf8().constData());
    LogFailure("Can't open database: rval=", result, *db);
    Discard(*db);
    *db = nullptr;
    return false;
  }
  Watch::Opened(*db);
  return SetPragma(*db, "PRAGMA foreign_keys = ON;", "SQL PRAGMA foreign_keys = ON failed") &&
         SetPragma(*db, "PRAGMA temp_store = MEMORY;", "SQL PRAGMA temp_store = MEMORY failed");
}

sqlite3* OpenForWriting(const QString& path) {
  sqlite3* db = nullptr;
  return Open(path, &db, false) ? db : nullptr;
}

void Close(sqlite3* db) {
  if (db == nullptr) return;
  const int result = sqlite3_close(db);
  if (result == SQLITE_OK) return;
  LogDebug("sqlite3_close failed with ", result, sqlite3_errmsg(db));
  Watch::CloseRefused(db, result);
}

bool Execute(sqlite3* db, const char* sql, const char* description) {
  if (db == nullptr || sql == nullptr || description == nullptr) return false;
  const LibraryCall call;
  char* message = nullptr;
  const int result = sqlite3_exec(db, sql, nullptr, nullptr, &message);
  if (result == SQLITE_OK) return true;
  Watch::CallFailed(db, result, "execute", sql);
  LogDebug("SQL ", description, " failed with ", result, ":",
           message != nullptr ? message : sqlite3_errmsg(db));
  sqlite3_free(message);
  return false;
}

bool Begin(sqlite3* db) { return Execute(db, "BEGIN TRANSACTION;", "Begin Transaction"); }

bool End(sqlite3* db) { return Execute(db, "END TRANSACTION;", "End Transaction"); }

bool RollBack(sqlite3* db) { return Execute(db, "ROLLBACK;", "Roll Back"); }

bool Finish(sqlite3* db, bool commit) {
  if (commit) {
    End(db);
  } else {
    RollBack(db);
  }
  return commit;
}

sqlite3_stmt* Prepare(sqlite3* db, const char* sql, const char* description) {
  if (db == nullptr || sql == nullptr || description == nullptr) return nullptr;
  sqlite3_stmt* statement = nullptr;
  const int result = TryPrepare(db, sql, &statement);
  if (result == SQLITE_OK) return statement;
  LogDebug("SQL prepare ", description, " failed with ", result, ":", sqlite3_errmsg(db));
  return nullptr;
}

int TryPrepare(sqlite3* db, const char* sql, sqlite3_stmt** statement) {
  const int result = sqlite3_prepare_v2(db, sql, -1, statement, nullptr);
  // A text that holds no statement yields none either, and is of as little use to the caller.
  if (*statement == nullptr) {
    Watch::CallFailed(db, result != SQLITE_OK ? result : SQLITE_MISUSE, "prepare", sql);
  }
  return result;
}

void Finalize(sqlite3_stmt* statement) {
  if (statement == nullptr) return;
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
  sqlite3_finalize(statement);
}

void LogFailure(const char* text, int code, sqlite3* db) { LogDebug(text, code, ":", sqlite3_errmsg(db)); }

unsigned int ToUnixUtc(const QDateTime& time) {
  constexpr qint64 none = std::numeric_limits<unsigned int>::max();
  // Truncated towards zero: but for its very beginning, the last second before 1970 counts as the first of
  // 1970.
  const qint64 seconds = time.toMSecsSinceEpoch() / 1000;
  return static_cast<unsigned int>(time.isValid() && seconds >= 0 && seconds < none ? seconds : none);
}

QDateTime FromUnixUtc(unsigned int seconds) { return QDateTime::fromSecsSinceEpoch(seconds); }

}  // namespace Sql
