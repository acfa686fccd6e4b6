#pragma once

#include <sqlite3.h>

#include <QString>

#include "core/Watch.h"

/// One prepared statement, finalised when its scope ends.
///
/// Values are bound in the order of the calls, so that a row writer reads like the table of its columns.
/// A bind that fails is logged as its text, the result code, ":" and the error message; unless it is
/// marked to be passed over, the statement is inert from then on.
///
/// An inert statement asks nothing more of SQLite: binds do nothing, Bound(), Run() and the inserts are
/// false, and Step() returns SQLITE_MISUSE. A statement that could not be prepared, was finalised or was left
/// open is inert as well; its columns read as 0 and empty.
class Statement {
 public:
  enum class OnFailure { Stop, PassOver };

  /// Prepares `sql`; false when it failed, which is logged under `label`.
  Statement(sqlite3* db, const char* sql, const char* label);
  /// Takes over a statement that was prepared, or null.
  Statement(sqlite3* db, sqlite3_stmt* prepared) : db_(db), statement_(prepared) {}
  ~Statement() { Finalize(); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  explicit operator bool() const { return statement_ != nullptr; }

  Statement& Int(int value, const char* failureText, OnFailure onFailure = OnFailure::Stop);
  Statement& Double(double value, const char* failureText, OnFailure onFailure = OnFailure::Stop);
  Statement& Text(const QString& value, const char* failureText);
  /// A key in the low 32 bits, as most statements bind it.
  Statement& Key(long long key, const char* failureText, OnFailure onFailure = OnFailure::Stop);
  /// A key in all 64 bits.
  Statement& WideKey(long long key, const char* failureText);
  // The caller logs a failure of these.
  int BindInt(int value);
  bool BindsWideKey(long long key);

  bool Bound() const { return bound_; }
  /// Inline, since reading reports is little more than steps.
  int Step() {
    if (!bound_ || call_.IsWatched()) return StepWatched();
    const int result = sqlite3_step(statement_);
    return result == SQLITE_ROW ? result : TellFailed(result);
  }
  /// Whether every value was bound and one step then reported done.
  bool Run();
  /// Whether one of five steps reports done. Required behaviour: when none does, a sixth is made and counts
  /// as a failure whatever it reports. A guard's limit may end it earlier, as a failure.
  bool StepsWithinBound();
  /// Steps until the statement is done, calling `row()` for every row and then `stepped(result)` for every
  /// result, and returns the last result. With `mostFailed` given, that many steps that yield neither a row
  /// nor done end it, even with rows in between.
  ///
  /// Required behaviour: only "done" ends it. A step that fails is repeated for as long as it fails, unless a
  /// guard's limit ends it: then the last result is that of a failed step.
  template <typename Row, typename Stepped>
  int StepUntilDone(Row row, Stepped stepped, int mostFailed = 0);
  template <typename Row>
  int StepUntilDone(Row row, int mostFailed = 0) {
    return StepUntilDone(
        row, [](int /*result*/) {}, mostFailed);
  }
  /// Run(), and the new row's key on success.
  bool Insert(long long* key);
  /// Insert(), with a line for a step that fails.
  bool InsertOrLog(long long* key);

  int IntColumn(int column) const;
  double DoubleColumn(int column) const;
  float FloatColumn(int column) const { return static_cast<float>(DoubleColumn(column)); }
  /// Decoded as UTF-8; empty for NULL and for a text that cannot be read.
  QString TextColumn(int column) const;

  /// Finalises now. A second call is harmless.
  void Finalize();
  /// Leaves the statement open for good: its connection will refuse to close. For the paths where the
  /// stores are required to.
  void LeaveOpen() { Watch::LeftOpen(Release()); }

 private:
  int StepWatched();
  int TellFailed(int result) const;
  int Told(int bindResult) const;
  Statement& Settle(int result, const char* failureText, OnFailure onFailure);
  sqlite3_stmt* Release();

  const LibraryCall call_;
  sqlite3* db_;
  sqlite3_stmt* statement_;
  int position_ = 0;
  bool bound_ = statement_ != nullptr;
};

template <typename Row, typename Stepped>
int Statement::StepUntilDone(Row row, Stepped stepped, int mostFailed) {
  int result = Step();
  for (int failed = 0; bound_; result = Step()) {
    if (result == SQLITE_ROW) row();
    stepped(result);
    if (result == SQLITE_DONE) break;
    if (result != SQLITE_ROW && (++failed == mostFailed || Watch::LoopMustEnd())) break;
  }
  return result;
}
