#include "core/AlignmentDatabase.h"

#include <utility>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"

AlignmentDatabase::AlignmentDatabase(QString databasePath, QString secondDatabasePath)
    : databasePath_(std::move(databasePath)), secondDatabasePath_(std::move(secondDatabasePath)) {}

bool AlignmentDatabase::GetDatabaseFileVersion(QString path, unsigned int* version) {
  if (version == nullptr) return false;
  const LibraryCall call;
  // Required behaviour: opened for writing, so that a missing file is created empty.
  const Connection db(Sql::OpenForWriting(path));
  if (!db) return false;
  sqlite3_stmt* prepared = nullptr;
  const int result = Sql::TryPrepare(db, "SELECT VersionNumber FROM Version", &prepared);
  if (result != SQLITE_OK) Sql::LogFailure("sqlite3_prepare_v2 failed with ", result, db);
  Statement row(db, prepared);
  if (row.Step() != SQLITE_ROW) return false;
  *version = static_cast<unsigned int>(row.IntColumn(0));
  return true;
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

bool AlignmentDatabase::BeginTransaction(sqlite3* db) { return Sql::Begin(db); }

bool AlignmentDatabase::EndTransaction(sqlite3* db) { return Sql::End(db); }

bool AlignmentDatabase::RollBack(sqlite3* db) { return Sql::RollBack(db); }

unsigned int AlignmentDatabase::QDateToUnixUtc(QDateTime& time) { return Sql::ToUnixUtc(time); }

QDateTime AlignmentDatabase::UnixUtcToQDate(unsigned int seconds) { return Sql::FromUnixUtc(seconds); }

bool AlignmentDatabase::InitializeVersionTable(sqlite3* db) {
  if (!ExecuteNonQueryCommand(db, "CREATE TABLE IF NOT EXISTS Version ( VersionNumber INTEGER NOT NULL)",
                              "CreateVersionTable")) {
    return false;
  }
  Statement insert(db, "INSERT OR REPLACE INTO Version (rowID,VersionNumber) values (1,?)", "Insert Version");
  if (!insert) return false;
  const int bound = insert.BindInt(static_cast<int>(Version()));
  if (bound != SQLITE_OK) {
    LogDebug("SQL bind failed with ", bound, " errmsg: ", sqlite3_errmsg(db));
    return false;
  }
  return insert.Run();
}
