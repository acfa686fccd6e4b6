#include "core/Watch.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>

#include "core/Watcher.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Call {
  bool underWay;
  Clock::time_point start;
};
thread_local Call call{};
thread_local int loopsEnded = 0;

// How many instructions of SQLite's machine pass between two looks at the clock: some tens of microseconds.
constexpr int instructionsBetweenLooks = 1000;

template <typename Function>
void ForEachWatcher(Function function) {
  for (Watcher* watcher = Watch::innermost; watcher != nullptr; watcher = watcher->outer) function(watcher);
}

/// Every guard is asked, so that each notes that its limit is reached.
template <typename Predicate>
bool AnyWatcher(Predicate predicate) {
  bool any = false;
  ForEachWatcher([&](Watcher* watcher) { any |= predicate(watcher); });
  return any;
}

bool HasTimeLimit(const Watcher* watcher) { return watcher->limits.milliseconds > 0; }

/// The guard may end while the connection lives, so the handler looks up the guards of its thread each time.
int InterruptWhenOver(void* /*unused*/) { return Watch::TimeIsOver() ? 1 : 0; }

/// Whether every statement that keeps the connection open was left open as required. They are forgotten.
bool OnlyLeftOpen(sqlite3* db, QVector<sqlite3_stmt*>* leftOpen) {
  sqlite3_stmt* statement = sqlite3_next_stmt(db, nullptr);
  if (statement == nullptr) return false;
  for (; statement != nullptr; statement = sqlite3_next_stmt(db, statement)) {
    if (!leftOpen->removeOne(statement)) return false;
  }
  return true;
}

}  // namespace

namespace Watch {

void Failed(int code, const QString& text) {
  ForEachWatcher([&](Watcher* watcher) { watcher->Record({code, text}); });
}

void CallFailed(sqlite3* db, int result, const char* call, const char* subject) {
  if (!IsOn()) return;
  constexpr int primary = 0xff;
  const int extended = db != nullptr ? sqlite3_extended_errcode(db) : SQLITE_OK;
  const bool told = (extended & primary) == (result & primary);
  const char* const message = told ? sqlite3_errmsg(db) : sqlite3_errstr(result);
  Failed(told && result <= primary ? extended : result,
         QStringLiteral("%1 %2: %3")
             .arg(QLatin1String(call), QString::fromUtf8(subject), QString::fromUtf8(message)));
}

void StepFailed(sqlite3_stmt* statement, int result) {
  if (!IsOn()) return;
  ForEachWatcher([](Watcher* watcher) { ++watcher->failedSteps; });
  CallFailed(sqlite3_db_handle(statement), result, "step", sqlite3_sql(statement));
}

bool LoopMustEnd() {
  const bool reached = AnyWatcher([](Watcher* watcher) { return watcher->FailedStepsReached(); });
  const bool ends = TimeIsOver() || reached;
  if (ends) ++loopsEnded;
  return ends;
}

int LoopsEnded() { return loopsEnded; }

bool TimeIsOver() {
  if (!call.underWay || !AnyWatcher(HasTimeLimit)) return false;
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - call.start);
  return AnyWatcher([&](Watcher* watcher) { return watcher->TimeReached(elapsed.count()); });
}

void Opened(sqlite3* db) {
  if (!AnyWatcher(HasTimeLimit)) return;
  sqlite3_progress_handler(db, instructionsBetweenLooks, InterruptWhenOver, nullptr);
}

void LeftOpen(sqlite3_stmt* statement) {
  if (IsOn() && statement != nullptr) innermost->leftOpen.append(statement);
}

void CloseRefused(sqlite3* db, int result) {
  if (!IsOn()) return;
  if (!OnlyLeftOpen(db, &innermost->leftOpen)) {
    CallFailed(db, result, "close", sqlite3_db_filename(db, "main"));
  }
  innermost->refused.append(db);
}

}  // namespace Watch

bool LibraryCall::Begin() {
  if (call.underWay) return false;
  call = {true, Clock::now()};
  return true;
}

void LibraryCall::End() { call.underWay = false; }
