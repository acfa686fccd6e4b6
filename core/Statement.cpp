#include "core/Statement.h"

#include <utility>

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

int Statement::BindInt(int value) {
  return bound_ ? Told(sqlite3_bind_int(statement_, ++position_, value)) : SQLITE_MISUSE;
}

bool Statement::BindsWideKey(long long key) {
  return bound_ && Told(sqlite3_bind_int64(statement_, ++position_, key)) == SQLITE_OK;
}

int Statement::StepWatched() {
  if (!bound_) return SQLITE_MISUSE;
  return TellFailed(Watch::TimeIsOver() ? SQLITE_INTERRUPT : sqlite3_step(statement_));
}

int Statement::TellFailed(int result) const {
  if (result != SQLITE_ROW && result != SQLITE_DONE) Watch::StepFailed(statement_, result);
  return result;
}

bool Statement::Run() { return Step() == SQLITE_DONE; }

bool Statement::StepsWithinBound() {
  constexpr int bound = 5;
  for (int count = 0; count < bound; ++count) {
    const int result = Step();
    if (result == SQLITE_DONE) return true;
    if (result != SQLITE_ROW && Watch::LoopMustEnd()) return false;
  }
  Step();
  return false;
}

bool Statement::Insert(long long* key) {
  if (!Run()) return false;
  *key = sqlite3_last_insert_rowid(db_);
  return true;
}

bool Statement::InsertOrLog(long long* key) {
  if (!bound_) return false;
  const int result = Step();
  if (result != SQLITE_DONE) {
    Sql::LogFailure("SQL last step failed with ", result, db_);
    return false;
  }
  *key = sqlite3_last_insert_rowid(db_);
  return true;
}

int Statement::IntColumn(int column) const { return sqlite3_column_int(statement_, column); }

double Statement::DoubleColumn(int column) const { return sqlite3_column_double(statement_, column); }

QString Statement::TextColumn(int column) const {
  const unsigned char* const text = sqlite3_column_text(statement_, column);
  // NULL has no text either; only the connection can tell it from one for which there was no memory.
  if (text == nullptr && statement_ != nullptr && Watch::IsOn() && sqlite3_errcode(db_) == SQLITE_NOMEM) {
    Watch::CallFailed(db_, SQLITE_NOMEM, "read", sqlite3_sql(statement_));
  }
  return QString::fromUtf8(reinterpret_cast<const char*>(text));
}

void Statement::Finalize() { Sql::Finalize(Release()); }

sqlite3_stmt* Statement::Release() {
  bound_ = false;
  return std::exchange(statement_, nullptr);
}

int Statement::Told(int bindResult) const {
  if (bindResult != SQLITE_OK) Watch::CallFailed(db_, bindResult, "bind", sqlite3_sql(statement_));
  return bindResult;
}

Statement& Statement::Settle(int result, const char* failureText, OnFailure onFailure) {
  if (Told(result) != SQLITE_OK) {
    Sql::LogFailure(failureText, result, db_);
    bound_ = onFailure == OnFailure::PassOver;
  }
  return *this;
}
