#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <QString>

/// SQLiteCpp; texts become the Qt values that the others build.
struct DriverSqliteCpp {
  using Text = QString;

  class Connection {
   public:
    explicit Connection(const char* path) : db_(path, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE) {
      Execute("PRAGMA foreign_keys = ON;");
      Execute("PRAGMA temp_store = MEMORY;");
    }
    void Execute(const char* sql) { db_.exec(sql); }
    SQLite::Database& Handle() { return db_; }

   private:
    SQLite::Database db_;
  };

  class Query {
   public:
    Query(Connection& connection, const char* sql)
        : db_(connection.Handle()), statement_(connection.Handle(), sql) {}
    Query& Bind(int value) {
      statement_.bind(++position_, value);
      return *this;
    }
    Query& Bind(double value) {
      statement_.bind(++position_, value);
      return *this;
    }
    Query& Bind(const QString& value) {
      statement_.bind(++position_, value.toLocal8Bit().constData());
      return *this;
    }
    /// True for a row, false when done.
    bool Step() { return statement_.executeStep(); }
    int LastKey() { return static_cast<int>(db_.getLastInsertRowid()); }
    int Int(int column) { return statement_.getColumn(column).getInt(); }
    double Real(int column) { return statement_.getColumn(column).getDouble(); }
    Text String(int column) { return QString::fromUtf8(statement_.getColumn(column).getText()); }

   private:
    SQLite::Database& db_;
    SQLite::Statement statement_;
    int position_ = 0;
  };
};
