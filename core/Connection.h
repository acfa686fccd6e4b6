#pragma once

#include "core/Sql.h"

/// Closes a connection when its scope ends, or earlier with Close().
class Connection {
 public:
  explicit Connection(sqlite3* db) : db_(db) {}
  ~Connection() { Close(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  explicit operator bool() const { return db_ != nullptr; }
  operator sqlite3*() const { return db_; }

  void Close() {
    Sql::Close(db_);
    db_ = nullptr;
  }

 private:
  sqlite3* db_;
};
