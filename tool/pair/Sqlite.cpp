#include "tool/pair/Sqlite.h"

#include <sqlite3.h>

#include "tool/Console.h"

namespace {

[[noreturn]] void ThrowFor(int code, const QString& shown, const char* message) {
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      throw InUse(shown);
    case SQLITE_CORRUPT:
      throw Damage(shown, QStringLiteral("is damaged (") + QString::fromUtf8(message) + QLatin1Char(')'));
    case SQLITE_NOTADB:
      throw Failure(shown + QStringLiteral(": is no database"), Status::Damaged);
    case SQLITE_READONLY:
      throw Failure(shown + (code == SQLITE_READONLY_DIRECTORY
                                 ? QStringLiteral(": cannot be changed: its folder cannot be written")
                                 : QStringLiteral(": cannot be written")));
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
      // The statements are right, so it is the file's tables, or what they hold, that is wrong.
      throw Damage(shown, QString::fromUtf8(message));
    default:
      throw Failure(shown + QStringLiteral(": ") + QString::fromUtf8(message));
  }
}

}  // namespace

void Sqlite::Closer::operator()(sqlite3* db) const { sqlite3_close_v2(db); }
void Sqlite::Rows::Finalizer::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Sqlite::Sqlite(const QByteArray& path, QString shown) : shown_(std::move(shown)) {
  sqlite3* db = nullptr;
  const int result =
      sqlite3_open_v2(path.constData(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  db_.reset(db);
  if (result != SQLITE_OK) Throw(result);
  sqlite3_extended_result_codes(db, 1);
  // The program's own statements go by the rows alone, whatever a file has its triggers and keys do.
  sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_ENABLE_FKEY, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

void Sqlite::Throw(int code) const { ThrowFor(code, shown_, sqlite3_errmsg(db_.get())); }

Sqlite::Rows Sqlite::Select(const QByteArray& sql) const {
  sqlite3_stmt* statement = nullptr;
  const int result =
      sqlite3_prepare_v2(db_.get(), sql.constData(), static_cast<int>(sql.size()), &statement, nullptr);
  Rows rows(this, statement);
  if (result != SQLITE_OK) Throw(result);
  return rows;
}

void Sqlite::Execute(const QByteArray& sql) const {
  const int result = sqlite3_exec(db_.get(), sql.constData(), nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) Throw(result);
}

qint64 Sqlite::Number(const QByteArray& sql) const {
  Rows rows = Select(sql);
  return rows.Next() ? rows.Int(0) : 0;
}

void Sqlite::Attach(const QByteArray& path, const char* name) const {
  Select(QByteArray("ATTACH ? AS ") + name).Bind(1, path).Next();
}

bool Sqlite::Rows::Next() {
  const int result = sqlite3_step(statement_.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) db_->Throw(result);
  return result == SQLITE_ROW;
}

int Sqlite::Rows::Columns() const { return sqlite3_column_count(statement_.get()); }

qint64 Sqlite::Rows::Int(int column) const { return sqlite3_column_int64(statement_.get(), column); }

double Sqlite::Rows::Real(int column) const { return sqlite3_column_double(statement_.get(), column); }

QByteArray Sqlite::Rows::Bytes(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  return {bytes, sqlite3_column_bytes(statement_.get(), column)};
}

QString Sqlite::Rows::Text(int column) const { return QString::fromUtf8(Bytes(column)); }

bool Sqlite::Rows::IsNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

Sqlite::Rows& Sqlite::Rows::Bind(int number, qint64 value) {
  const int result = sqlite3_bind_int64(statement_.get(), number, value);
  if (result != SQLITE_OK) db_->Throw(result);
  return *this;
}

Sqlite::Rows& Sqlite::Rows::Bind(int number, const QByteArray& text) {
  const int result = sqlite3_bind_text(statement_.get(), number, text.constData(),
                                       static_cast<int>(text.size()), SQLITE_TRANSIENT);
  if (result != SQLITE_OK) db_->Throw(result);
  return *this;
}

Sqlite::Rows& Sqlite::Rows::Bind(int number, double value) {
  const int result = sqlite3_bind_double(statement_.get(), number, value);
  if (result != SQLITE_OK) db_->Throw(result);
  return *this;
}

void Sqlite::Rows::Restart() {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

QByteArray Quoted(const QByteArray& name) {
  QByteArray quoted = name;
  quoted.replace('"', "\"\"");
  return '"' + quoted + '"';
}
