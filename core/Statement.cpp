#include "core/Statement.h"

#include <sqlite3.h>

#include "core/Sql.h"

Statement::Statement(sqlite3* db, const char* sql, const char* label)
    : db_(db), statement_(Sql::Prepare(db, sql, label)) {}

Statement& Statement::Int(int value, const char* failureText, OnFailure onFailure) {
  if (!bound_) return *this;
  return Settle(sqlite3_bind_int(statement_, ++position_, value), failureText, onFailure);
}

Statement& Statement::Double(double value, const char* failureText, OnFailure onFailure) {
  if (!bound_) return *this;
  return Settle(sqlite3_bind_double(statement_, ++position_, value), failureText, onFailure);
}

Statement& Statement::Text(const QString& value, const char* failureText) {
  if (!bound_) return *this;
  const int result =
      sqlite3_bind_text(statement_, ++position_, value.toLocal8Bit().constData(), -1, SQLITE_TRANSIENT);
  return Settle(result, failureText, OnFailure::Stop);
}

Statement& Statement::Key(long long key, const char* failureText, OnFailure onFailure) {
  return Int(static_cast<int>(key), failureText, onFailure);
}

Statement& Statement::WideKey(long long key, const char* failureText) {
  if (!bound_) return *this;
  return Settle(sqlite3_bind_int64(statement_, ++position_, key), failureText, OnFailure::Stop);
}

bool Statement::BindsInt(int value) { return sqlite3_bind_int(statement_, ++position_, value) == SQLITE_OK; }

bool Statement::BindsWideKey(long long key) {
  return sqlite3_bind_int64(statement_, ++position_, key) == SQLITE_OK;
}

int Statement::Step() { return sqlite3_step(statement_); }

bool Statement::Run() { return bound_ && Step() == SQLITE_DONE; }

bool Statement::StepsWithinBound() {
  constexpr int bound = 5;
  for (int count = 0; count < bound; ++count) {
    if (Step() == SQLITE_DONE) return true;
  }
  Step();
  return false;
}

bool Statement::Insert(long long* key) {
  if (!Run()) return false;
  *key = sqlite3_last_insert_rowid(db_);
  return true;
}

int Statement::IntColumn(int column) const { return sqlite3_column_int(statement_, column); }

double Statement::DoubleColumn(int column) const { return sqlite3_column_double(statement_, column); }

QString Statement::TextColumn(int column) const {
  return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement_, column)));
}

void Statement::Finalize() {
  Sql::Finalize(statement_);
  statement_ = nullptr;
}

Statement& Statement::Settle(int result, const char* failureText, OnFailure onFailure) {
  if (result != SQLITE_OK) {
    Sql::LogFailure(failureText, result, db_);
    bound_ = onFailure == OnFailure::PassOver;
  }
  return *this;
}
