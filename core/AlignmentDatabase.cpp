#include "core/AlignmentDatabase.h"

#include <sqlite3.h>

#include <utility>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Sql.h"

AlignmentDatabase::AlignmentDatabase(QString databasePath, QString secondDatabasePath)
    : databasePath_(std::move(databasePath)), secondDatabasePath_(std::move(secondDatabasePath)) {}

bool AlignmentDatabase::GetDatabaseFileVersion(QString path, unsigned int* version) {
  if (version == nullptr) return false;
  const Connection db(Sql::OpenForWriting(path));
  if (!db) return false;
  sqlite3_stmt* statement = nullptr;
  const int prepared = sqlite3_prepare_v2(db, "SELECT VersionNumber FROM Version", -1, &statement, nullptr);
  bool found = false;
  if (prepared != SQLITE_OK) {
    Sql::LogFailure("sqlite3_prepare_v2 failed with ", prepared, db);
  } else if (sqlite3_step(statement) == SQLITE_ROW) {
    *version = static_cast<unsigned int>(sqlite3_column_int(statement, 0));
    found = true;
  }
  Sql::Finalize(statement);
  return found;
}

bool AlignmentDatabase::OpenDatabase(QString path, sqlite3** db, bool readOnly) {
  return Sql::Open(path, db, readOnly);
}

sqlite3* AlignmentDatabase::OpenDatabase(bool readOnly) {
  sqlite3* db = nullptr;
  return Sql::Open(databasePath_, &db, readOnly) ? db : nullptr;
}

sqlite3* AlignmentDatabase::OpenSecondDatabase(bool readOnly) {
  sqlite3* db = nullptr;
  return Sql::Open(secondDatabasePath_, &db, readOnly) ? db : nullptr;
}

void AlignmentDatabase::CloseDatabase(sqlite3* db) { Sql::Close(db); }

bool AlignmentDatabase::ExecuteNonQueryCommand(sqlite3* db, const char* sql, const char* description) {
  return Sql::Execute(db, sql, description);
}

sqlite3_stmt* AlignmentDatabase::PrepareStatement(sqlite3* db, const char* sql, const char* description) {
  return Sql::Prepare(db, sql, description);
}

void AlignmentDatabase::FinalizeStatement(sqlite3_stmt* statement) { Sql::Finalize(statement); }

bool AlignmentDatabase::BeginTransaction(sqlite3* db) {
  return ExecuteNonQueryCommand(db, "BEGIN TRANSACTION;", "Begin Transaction");
}

bool AlignmentDatabase::EndTransaction(sqlite3* db) {
  return ExecuteNonQueryCommand(db, "END TRANSACTION;", "End Transaction");
}

bool AlignmentDatabase::RollBack(sqlite3* db) { return ExecuteNonQueryCommand(db, "ROLLBACK;", "Roll Back"); }

unsigned int AlignmentDatabase::QDateToUnixUtc(QDateTime& time) { return Sql::ToUnixUtc(time); }

QDateTime AlignmentDatabase::UnixUtcToQDate(unsigned int seconds) { return Sql::FromUnixUtc(seconds); }

bool AlignmentDatabase::InitializeVersionTable(sqlite3* db) {
  if (!ExecuteNonQueryCommand(db, "CREATE TABLE IF NOT EXISTS Version ( VersionNumber INTEGER NOT NULL)",
                              "CreateVersionTable")) {
    return false;
  }
  sqlite3_stmt* statement = PrepareStatement(
      db, "INSERT OR REPLACE INTO Version (rowID,VersionNumber) values (1,?)", "Insert Version");
  if (statement == nullptr) return false;
  const int bound = sqlite3_bind_int(statement, 1, static_cast<int>(Version()));
  bool stored = false;
  if (bound != SQLITE_OK) {
    LogDebug("SQL bind failed with ", bound, " errmsg: ", sqlite3_errmsg(db));
  } else {
    stored = sqlite3_step(statement) == SQLITE_DONE;
  }
  FinalizeStatement(statement);
  return stored;
}
