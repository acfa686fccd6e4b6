#pragma once

#include <QString>

struct sqlite3;
struct sqlite3_stmt;

/// One prepared statement, finalised when its scope ends.
///
/// Values are bound in the order of the calls, so that a row writer reads like the table of its columns.
/// A bind that fails is logged as its text, the result code, ":" and the error message; unless it is
/// marked to be passed over, nothing further is bound and Bound() is false.
class Statement {
 public:
  enum class OnFailure { Stop, PassOver };

  /// Prepares `sql`; false when it failed, which is logged under `label`.
  Statement(sqlite3* db, const char* sql, const char* label);
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
  // A failure of these is the caller's to log.
  bool BindsInt(int value);
  bool BindsWideKey(long long key);

  bool Bound() const { return bound_; }
  int Step();
  /// Whether every value was bound and one step then reported done.
  bool Run();
  /// Whether one of five steps reports done. When none does, a sixth is made and counts as a failure
  /// whatever it reports; the bound is meant.
  bool StepsWithinBound();
  /// Run(), and the new row's key on success.
  bool Insert(long long* key);

  int IntColumn(int column) const;
  double DoubleColumn(int column) const;
  float FloatColumn(int column) const { return static_cast<float>(DoubleColumn(column)); }
  /// Decoded as UTF-8; empty for NULL.
  QString TextColumn(int column) const;

  /// Finalises now. A second call is harmless.
  void Finalize();
  /// Leaves the statement open for good: its connection will refuse to close. For the paths where the
  /// stores are required to.
  void LeaveOpen() { statement_ = nullptr; }

 private:
  Statement& Settle(int result, const char* failureText, OnFailure onFailure);

  sqlite3* db_;
  sqlite3_stmt* statement_;
  int position_ = 0;
  bool bound_ = true;
};
