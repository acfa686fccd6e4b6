#include "core/Watcher.h"

#include <sqlite3.h>

#include <utility>

#include "core/Watch.h"

Watcher::Watcher(const OperationGuard::Limits& given) : limits(given), outer(Watch::innermost) {
  Watch::innermost = this;
}

/// Guards need not end in the reverse order of their creation.
Watcher::~Watcher() {
  CloseRefusedConnections();
  Watcher** link = &Watch::innermost;
  while (*link != nullptr && *link != this) link = &(*link)->outer;
  if (*link == this) *link = outer;
}

void Watcher::Record(const OperationGuard::Failure& failure) {
  constexpr int most = 1000;
  if (failures.size() < most) failures.append(failure);
}

void Watcher::CloseRefusedConnections() {
  for (sqlite3* db : std::exchange(refused, {})) {
    while (sqlite3_stmt* statement = sqlite3_next_stmt(db, nullptr)) sqlite3_finalize(statement);
    const int result = sqlite3_close(db);
    if (result == SQLITE_OK) continue;
    Watch::CallFailed(db, result, "close", sqlite3_db_filename(db, "main"));
    refused.append(db);
  }
}

void Watcher::Reset() {
  failures.clear();
  failedSteps = 0;
  loopEnded = false;
}

bool Watcher::FailedStepsReached() {
  if (limits.failedSteps <= 0 || failedSteps < limits.failedSteps) return false;
  loopEnded = true;
  return true;
}

bool Watcher::TimeReached(qint64 milliseconds) {
  if (limits.milliseconds <= 0 || milliseconds < limits.milliseconds) return false;
  loopEnded = true;
  return true;
}
