#pragma once

/// What the watchdog has met since the process started.
struct WatchdogCounts {
  long long inputs = 0;
  /// Loops that step a statement until it is done, over one that never gets there.
  long long endlessLoops = 0;
  /// Queries that answer rows without end, as those over a recursive view do.
  long long endlessRows = 0;
  /// Inputs whose statements were interrupted because they calculated without end.
  long long interrupted = 0;
  /// Connections that the library has left open.
  long long leftOpen = 0;
};

/// Keeps hostile files from holding a process up, by definitions of sqlite3_open_v2, sqlite3_step and
/// sqlite3_close that stand in front of the engine's. The library steps some statements until they are done,
/// whatever they report; that is required of it and no finding. After `failureLimit` failed steps of a
/// statement the watchdog reports it as done, which ends the loop as a file that recovers would, and counts.
class Watchdog {
 public:
  Watchdog() = delete;

  static constexpr int failureLimit = 50;
  static constexpr int rowLimit = 5000;

  /// A new input: it may calculate anew.
  static void Begin();
  /// Finalises and closes what the library has left open.
  static void CloseLeftOpen();
  static const WatchdogCounts& Counts();
};
