#pragma once

#include <sqlite3.h>

#include <QString>
#include <stdexcept>

/// SQLite's C API by hand: just the calls. `Text` is the type in which texts are given and read:
/// `const char*` builds nothing at all, QString the values that the library builds.
template <typename TextType>
struct DriverCApi {
  using Text = TextType;

  static void Check(bool good, sqlite3* db) {
    if (!good) throw std::runtime_error(sqlite3_errmsg(db));
  }

  class Connection {
   public:
    explicit Connection(const char* path) {
      Check(sqlite3_open_v2(path, &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) == SQLITE_OK,
            db_);
      Execute("PRAGMA foreign_keys = ON;");
      Execute("PRAGMA temp_store = MEMORY;");
    }
    ~Connection() { sqlite3_close(db_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Execute(const char* sql) {
      Check(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK, db_);
    }
    sqlite3* Handle() const { return db_; }

   private:
    sqlite3* db_ = nullptr;
  };

  class Query {
   public:
    Query(Connection& connection, const char* sql) : db_(connection.Handle()) {
      Check(sqlite3_prepare_v2(db_, sql, -1, &statement_, nullptr) == SQLITE_OK, db_);
    }
    ~Query() {
      sqlite3_reset(statement_);
      sqlite3_clear_bindings(statement_);
      sqlite3_finalize(statement_);
    }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& Bind(int value) { return Bound(sqlite3_bind_int(statement_, ++position_, value)); }
    Query& Bind(double value) { return Bound(sqlite3_bind_double(statement_, ++position_, value)); }
    Query& Bind(const char* value) {
      return Bound(sqlite3_bind_text(statement_, ++position_, value, -1, SQLITE_TRANSIENT));
    }
    Query& Bind(const QString& value) { return Bind(value.toLocal8Bit().constData()); }
    /// True for a row, false when done.
    bool Step() {
      const int result = sqlite3_step(statement_);
      Check(result == SQLITE_ROW || result == SQLITE_DONE, db_);
      return result == SQLITE_ROW;
    }
    int LastKey() { return static_cast<int>(sqlite3_last_insert_rowid(db_)); }
    int Int(int column) { return sqlite3_column_int(statement_, column); }
    double Real(int column) { return sqlite3_column_double(statement_, column); }
    Text String(int column) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
      if constexpr (std::is_same_v<Text, QString>) {
        return QString::fromUtf8(text);
      } else {
        return text;
      }
    }

   private:
    Query& Bound(int result) {
      Check(result == SQLITE_OK, db_);
      return *this;
    }

    sqlite3* db_;
    sqlite3_stmt* statement_ = nullptr;
    int position_ = 0;
  };
};
