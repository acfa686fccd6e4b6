#pragma once

#include <QByteArray>
#include <QStringList>

#include "tests/support/Fault.h"
#include "tests/support/PrintQt.h"

// The sqlite3_* functions that the library calls, as the test program defines them: each forwards to the
// engine, is counted, recorded on demand, and can be made to fail.
//
// Calls are named without "sqlite3_": open_v2, exec, prepare_v2, bind_int, bind_int64, bind_double,
// bind_text, step, close take part in sweeps (a Fault that names no call). column_text returns null, or the
// text that it is given, if it meets a fault. The others (free, reset, clear_bindings, finalize, column_int,
// column_double, last_insert_rowid, errcode, errmsg) are only counted and recorded. What the engine calls
// inside itself is not seen.
//
// A fault's text is looked for in the SQL text, its file in the path that the connection was opened with.
// After a call that was made to fail, sqlite3_errcode returns its code and sqlite3_errmsg
// sqlite3_errstr(code) until the next call of the same connection that takes part in sweeps.
//  - open_v2: a connection in memory stands in for the file, so that errmsg and close work; WithoutOutput
//    leaves the handle null, Performed opens the file itself.
//  - exec: the message is handed out where it was asked for; WithoutOutput leaves it null.
//  - prepare_v2: the statement is null, even if it was performed.
//  - close: the connection really stays open.
class SqliteCalls {
 public:
  SqliteCalls() = delete;

  static void Arm(const Fault& fault);
  // Disarms all faults, sets counts to zero and ends recording. Connections stay accounted for.
  static void Reset();
  // Whether, and how often, a call was made to fail since the last Reset.
  static bool Fired() { return FiredCount() > 0; }
  static int FiredCount();
  // Calls since the last Reset; empty: those that take part in sweeps.
  static int Count(const QByteArray& calls);

  // Records from now on, one line per call: name, arguments, " = ", result, and for a call on a statement its
  // SQL text in brackets. "bind_int 1, 7 = 0 [INSERT INTO Sites VALUES (?)]", "open_v2 main.sqlite, 6 = 0".
  static void Record();
  static QStringList TakeTrace();

  // Connections opened and not really closed, and statements prepared and not finalised.
  static int OpenConnections();
  static int LiveStatements();
  // Really finalises and closes all that is left.
  static void CloseLeaked();
};
