#pragma once

#include <QString>
#include <QVector>
#include <memory>

#include "TarnbeamDatabaseExport.h"

class Watcher;

/// Watches the library's calls on the thread that created it, for as long as it lives.
///
/// The operations report what they are required to report, and some failures show in no result: a commit that
/// fails changes none, a step that fails is repeated for as long as it fails, and a connection with a
/// statement left open is never closed. A guard reports the first, ends the second and closes the third:
///
///     OperationGuard guard;
///     std::unique_ptr<IAntennaAlignmentReportData> record(store->SaveAlignmentReportData(...));
///     if (record == nullptr || !guard.Succeeded()) {
///       for (const OperationGuard::Failure& failure : guard.Failures()) qWarning() << failure.text;
///     }
///
/// Guards nest: each records what fails while it lives, the smallest limit holds, and the innermost one takes
/// the refused connections. Without a guard nothing is watched, and nothing differs from what the operations
/// promise. A guard is neither copied nor used from another thread: make one on each thread that calls the
/// library, and end it there.
class TARNBEAMDATABASE_EXPORT OperationGuard {
 public:
  /// 0: no limit.
  struct Limits {
    /// After this many failed steps, counted over the guard's life or since Reset(), every loop that repeats
    /// a failed step ends at its next failure. Loops with a smaller bound of their own keep it.
    int failedSteps = 50;
    /// A call that has run for longer is interrupted, even inside a query without end. Counted from the start
    /// of each call of an operation, on connections that are opened while the guard lives.
    int milliseconds = 0;
  };

  /// A call that failed.
  struct Failure {
    /// SQLite's extended result code, or the errno of a file call.
    int code;
    /// What was asked for, and why it failed. For people to read; the wording may change.
    QString text;
  };

  /// With the default limits.
  OperationGuard();
  /// With these limits.
  explicit OperationGuard(const Limits& limits);
  /// Closes the refused connections.
  ~OperationGuard();
  OperationGuard(const OperationGuard&) = delete;
  OperationGuard& operator=(const OperationGuard&) = delete;

  /// Whether no call to SQLite and no file call of a conversion has failed since the guard was made or reset.
  /// A call that was repeated and then succeeded counts as failed. A false or empty result may still be a
  /// success: that something is not there is an answer.
  bool Succeeded() const;
  /// The failures in order, at most the first 1000.
  const QVector<Failure>& Failures() const;
  /// Whether one of this guard's limits ended a loop or interrupted a call, which returned what it had.
  bool LoopEnded() const;

  /// Connections that refused to close because the operation is required to leave statements open. They
  /// belong to the guard, and hold descriptors and perhaps a lock until they are closed.
  int RefusedConnections() const;
  /// Finalises their statements and closes them; what was not committed is rolled back.
  void CloseRefusedConnections();

  /// Forgets the failures and the counts, for the next call. Refused connections stay with the guard.
  void Reset();

 private:
  std::unique_ptr<Watcher> watcher_;
};
