#pragma once

#include <QDateTime>
#include <QString>

struct sqlite3;
struct sqlite3_stmt;

/// The one way to SQLite: every connection, statement and failure line of the library comes from here.
/// Nothing is kept between calls, nothing is retried, and no busy handler is installed.
namespace Sql {

/// Opens `path` with foreign keys enforced and temporary storage in memory. False on failure, with one line
/// logged; the connection is then closed, and `*db` must not be used.
bool Open(const QString& path, sqlite3** db, bool readOnly);

/// Opens `path` for reading and writing, creating it if missing. Null on failure.
sqlite3* OpenForWriting(const QString& path);

/// Closes `db` if it is not null. A connection with live statements refuses to close: that is logged, and it
/// stays open.
void Close(sqlite3* db);

/// Runs one or several statements that return no rows. `description` names them in the failure line.
bool Execute(sqlite3* db, const char* sql, const char* description);

// Transactions, of SQLite's deferred kind; End() commits. A failure is logged under "Begin Transaction",
// "End Transaction" and "Roll Back".
bool Begin(sqlite3* db);
bool End(sqlite3* db);
bool RollBack(sqlite3* db);
/// End() if `commit` says so, else RollBack(); returns `commit`, whatever became of either.
bool Finish(sqlite3* db, bool commit);

/// Null on failure, which is logged. The caller owns the statement.
sqlite3_stmt* Prepare(sqlite3* db, const char* sql, const char* description);

/// The same for a caller that logs a line of its own: returns SQLite's result; `*statement` is null on
/// failure.
int TryPrepare(sqlite3* db, const char* sql, sqlite3_stmt** statement);

/// Resets, unbinds and finalises; null is ignored.
void Finalize(sqlite3_stmt* statement);

/// Logs `text`, `code`, ":" and the connection's error message.
void LogFailure(const char* text, int code, sqlite3* db);

/// Whole seconds since 1970 in UTC; 4294967295 for a time that is invalid or out of range.
unsigned int ToUnixUtc(const QDateTime& time);

/// The instant in local time.
QDateTime FromUnixUtc(unsigned int seconds);

}  // namespace Sql
