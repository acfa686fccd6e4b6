#pragma once

#include <QString>

struct sqlite3;
struct sqlite3_stmt;
class Watcher;

/// What the library reports to the guards of its thread, see OperationGuard. Without a guard every function
/// here costs one look at a pointer.
namespace Watch {

/// The innermost guard of this thread, or null. Initialised in the header, so that reading it is a plain
/// load.
inline thread_local Watcher* innermost = nullptr;

inline bool IsOn() { return innermost != nullptr; }

/// Reports a failure: `code` is SQLite's extended result code, or the errno of a file call.
void Failed(int code, const QString& text);

/// Reports a SQLite call that returned `result`; called right after it. Code and message are the connection's
/// if they belong to that result. `subject` is the text or path that `call` was about.
void CallFailed(sqlite3* db, int result, const char* call, const char* subject);

/// Reports a step that yielded neither a row nor done, and counts it.
void StepFailed(sqlite3_stmt* statement, int result);

/// Whether a loop that would repeat a failed step has to end now.
bool LoopMustEnd();

/// How often that was the case on this thread. For operations that must not act on an incomplete result.
int LoopsEnded();

/// Whether the call under way has reached a guard's time limit.
bool TimeIsOver();

/// Lets a connection that was just opened be interrupted at the time limit.
void Opened(sqlite3* db);

/// Reports a statement that an operation is required to leave open.
void LeftOpen(sqlite3_stmt* statement);

/// Hands over a connection that refused to close with `result`. Statements left open on it as required are no
/// failure; anything else is.
void CloseRefused(sqlite3* db, int result);

}  // namespace Watch

/// The span of one call into the library; the time limit counts from its start. Stands first in every public
/// operation; inside another one it changes nothing.
class LibraryCall {
 public:
  LibraryCall() : watched_(Watch::IsOn()), outermost_(watched_ && Begin()) {}
  ~LibraryCall() {
    if (outermost_) End();
  }
  LibraryCall(const LibraryCall&) = delete;
  LibraryCall& operator=(const LibraryCall&) = delete;

  /// Whether a guard lived when the call began.
  bool IsWatched() const { return watched_; }

 private:
  static bool Begin();
  static void End();

  const bool watched_;
  const bool outermost_;
};
