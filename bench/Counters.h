#pragma once

#include <cstddef>

/// What an operation costs besides time. Allocations are those of malloc and the like, operator new and the
/// engine included; writes and syncs are counted at the system calls' wrappers.
struct Counters {
  long allocations;
  std::size_t peakBytes;
  long writes;
  long syncs;

  /// Starts from zero.
  static void Start();
  static Counters Stop();
};
