#pragma once

#include "core/OperationGuard.h"

struct sqlite3;
struct sqlite3_stmt;

/// What one guard knows. The guards of a thread form a chain, the innermost first.
class Watcher {
 public:
  explicit Watcher(const OperationGuard::Limits& given);
  ~Watcher();
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void Record(const OperationGuard::Failure& failure);
  void CloseRefusedConnections();
  void Reset();

  /// Each returns whether the limit is reached, and notes it if so.
  bool FailedStepsReached();
  bool TimeReached(qint64 milliseconds);

  const OperationGuard::Limits limits;
  Watcher* outer;
  QVector<OperationGuard::Failure> failures;
  int failedSteps = 0;
  bool loopEnded = false;
  QVector<sqlite3*> refused;
  /// Statements that an operation was required to leave open.
  QVector<sqlite3_stmt*> leftOpen;
};
