#pragma once

#include <QString>

struct sqlite3;
struct sqlite3_stmt;
class Watcher;

/// What the library tells the guards of its thread, see OperationGuard. Without a guard every function here
/// is one look at a pointer.
namespace Watch {

/// The innermost guard of this thread, or null. Initialised in the header, so that reading it is a plain
/// load.
inline thread_local Watcher* innermost = nullptr;

inline bool IsOn() { return innermost != nullptr; }

/// Tells of a failure: `code` is SQLite's extended result code, or the errno of a file call.
void Failed(int code, const QString& text);

/// Tells of a SQLite call that answered `result`, right after it: the code and the message are the
/// connection's, where they belong to that result. `subject` is the text or path that `call` was about.
void CallFailed(sqlite3* db, int result, const char* call, const char* subject);

/// Tells of a step that reported neither row nor done, and counts it.
void StepFailed(sqlite3_stmt* statement, int result);

/// Whether a loop that would repeat a failed step has to end now.
bool LoopMustEnd();

/// How often that was so on this thread. For operations that must not go by an incomplete answer.
int LoopsEnded();

/// Whether the call under way has reached a guard's time limit.
bool TimeIsOver();

/// Lets a connection that was just opened be interrupted at the time limit.
void Opened(sqlite3* db);

/// Tells of a statement that an operation is required to leave open.
void LeftOpen(sqlite3_stmt* statement);

/// Hands over a connection that refused to close with `result`. That statements were left open on it as
/// required is no failure; anything else is.
void CloseRefused(sqlite3* db, int result);

}  // namespace Watch

/// The length of one call into the library, from which the time limit counts. Stands first in every public
/// operation; one inside another changes nothing.
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
