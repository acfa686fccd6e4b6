#pragma once

#include <QByteArray>
#include <QStringList>

#include "tests/support/Fault.h"
#include "tests/support/PrintQt.h"

// The libc calls that work on files, as the test program defines them for itself, for Qt and for SQLite: each
// forwards and, once a fault is armed or counting is on, can be made to fail with an errno or to end the
// process. Several libc functions share one name:
//   create (open that may create or empty a file, mkostemp), write (also pwrite), sync (fsync, fdatasync),
//   rename, unlink, truncate, copy (copy_file_range, sendfile), link, chmod (fchmod), flock — these take part
//   in sweeps;
//   open (of what is there), close, stat (fstat), read (also pread) — only where named, since they change
//   nothing.
// A fault's file is looked for in the path that the call names or that its descriptor stands for (for a
// rename: in "old -> new"). Standard input, output and error are never touched. Not seen: calls inside libc
// itself, such as the writing of FILE streams.
class FileCalls {
 public:
  FileCalls() = delete;

  static void Arm(const Fault& fault);
  // Counts and records from now on, without any fault.
  static void Record();
  // Back to plain forwarding; counts are zero.
  static void Reset();
  static bool Fired();
  static int Count(const QByteArray& calls);
  // One line per call: name, blank, path.
  static QStringList TakeTrace();
};
