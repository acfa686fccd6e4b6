#include "tests/robustness/LockHolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/ChildProcess.h"

LockHolder::LockHolder(const QString& path, const char* sql) {
  EXPECT_EQ(pipe(orders_), 0);
  EXPECT_EQ(pipe(answers_), 0);
  fflush(nullptr);
  process_ = fork();
  if (process_ == 0) Hold(path, sql);
  close(orders_[0]);
  close(answers_[1]);
  char held = 'n';
  EXPECT_EQ(read(answers_[0], &held, 1), 1);
  EXPECT_EQ(held, 'y') << sql;
}

LockHolder::~LockHolder() {
  Release();
  close(answers_[0]);
}

void LockHolder::Release() {
  if (process_ < 0) return;
  close(orders_[1]);
  char closed = 'n';
  EXPECT_EQ(read(answers_[0], &closed, 1), 1);
  EXPECT_EQ(closed, 'y');
  EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
  process_ = -1;
}

// The end of the pipe is the order to let go: a test that dies gives it as well.
void LockHolder::Hold(const QString& path, const char* sql) {
  close(orders_[1]);
  close(answers_[0]);
  sqlite3* db = nullptr;
  const bool locked =
      sqlite3_open_v2(path.toUtf8().constData(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
      sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
  char signal = locked ? 'y' : 'n';
  bool heard = write(answers_[1], &signal, 1) == 1;
  heard = heard && read(orders_[0], &signal, 1) == 0;
  signal = sqlite3_close(db) == SQLITE_OK ? 'y' : 'n';
  heard = heard && write(answers_[1], &signal, 1) == 1;
  LeaveProcess(heard ? 0 : 1);
}
