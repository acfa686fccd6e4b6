#include "core/Sql.h"

#include <sqlite3.h>

#include "core/DebugLog.h"

namespace {

// A pragma's failure closes the connection, yet leaves the handle's value: callers go by the result alone.
bool SetPragma(sqlite3* db, const char* sql, const char* failureLine) {
  if (sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  LogDebug(failureLine);
  sqlite3_close(db);
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
    LogFailure("Can't open database: rval=", result, *db);
    sqlite3_close(*db);
    *db = nullptr;
    return false;
  }
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
  if (result != SQLITE_OK) LogDebug("sqlite3_close failed with ", result, sqlite3_errmsg(db));
}

bool Execute(sqlite3* db, const char* sql, const char* description) {
  if (db == nullptr || sql == nullptr || description == nullptr) return false;
  char* message = nullptr;
  const int result = sqlite3_exec(db, sql, nullptr, nullptr, &message);
  if (result == SQLITE_OK) return true;
  LogDebug("SQL ", description, " failed with ", result, ":",
           message != nullptr ? message : sqlite3_errmsg(db));
  sqlite3_free(message);
  return false;
}

sqlite3_stmt* Prepare(sqlite3* db, const char* sql, const char* description) {
  if (db == nullptr || sql == nullptr || description == nullptr) return nullptr;
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v2(db, sql, -1, &statement, nullptr);
  if (result == SQLITE_OK) return statement;
  LogDebug("SQL prepare ", description, " failed with ", result, ":", sqlite3_errmsg(db));
  return nullptr;
}

void Finalize(sqlite3_stmt* statement) {
  if (statement == nullptr) return;
  sqlite3_reset(statement);
  sqlite3_clear_bindings(statement);
  sqlite3_finalize(statement);
}

void LogFailure(const char* text, int code, sqlite3* db) { LogDebug(text, code, ":", sqlite3_errmsg(db)); }

unsigned int ToUnixUtc(const QDateTime& time) { return time.toTimeSpec(Qt::UTC).toTime_t(); }

QDateTime FromUnixUtc(unsigned int seconds) { return QDateTime::fromTime_t(seconds); }

}  // namespace Sql
