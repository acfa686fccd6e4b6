#pragma once

#include <QByteArray>

#include "tests/support/Fault.h"

// A file layer between SQLite and the real one, the default as long as an object of it lives: forwards
// everything and makes reads and writes of files fail. Names: read, write, sync, truncate, open, delete; all
// take part in sweeps. Codes are SQLite's, such as SQLITE_IOERR_WRITE. Connections opened under it have to be
// closed before the object goes away.
class ShimVfs {
 public:
  ShimVfs();
  ~ShimVfs();
  ShimVfs(const ShimVfs&) = delete;
  ShimVfs& operator=(const ShimVfs&) = delete;

  static void Arm(const Fault& fault);
  // Every write that would bring the bytes written from now on above `bytes` reports SQLITE_FULL.
  static void FullAfter(long long bytes);
  // Disarms everything; counts are zero.
  static void Reset();
  static bool Fired();
  static int Count(const QByteArray& calls);
  static long long BytesWritten();
};
