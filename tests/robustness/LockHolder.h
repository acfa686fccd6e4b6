#pragma once

#include <sys/types.h>

#include <QString>

// A second process that holds a lock on a database file until it is told to let go.
class LockHolder {
 public:
  // Returns once the lock is held. `sql` takes it, such as "BEGIN IMMEDIATE".
  LockHolder(const QString& path, const char* sql);
  ~LockHolder();
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;

  // Returns once the lock is gone. A second call does nothing.
  void Release();

 private:
  [[noreturn]] void Hold(const QString& path, const char* sql);

  pid_t process_ = -1;
  int orders_[2] = {-1, -1};
  int answers_[2] = {-1, -1};
};
