#include "fuzz/Watchdog.h"

#include <sqlite3.h>

#include <set>

#include "tests/support/NextDefinition.h"

namespace {

// The engine asks every so many instructions of its machine whether to go on.
constexpr int instructionsPerQuestion = 1000;
constexpr int questionsPerInput = 300;
// What keeps one value from taking up all memory.
constexpr int longestValue = 1 << 20;

struct State {
  WatchdogCounts counts;
  std::set<sqlite3*> connections;
  int questions = 0;
  sqlite3_stmt* stepped = nullptr;
  int failures = 0;
  int rows = 0;
};

State& Watched() {
  static State state;
  return state;
}

int IsOverdue(void*) {
  State& state = Watched();
  ++state.questions;
  if (state.questions == questionsPerInput + 1) ++state.counts.interrupted;
  return state.questions > questionsPerInput ? 1 : 0;
}

// Failures are counted over rows in between: a statement that failed starts over when it is stepped again,
// and answers the rows in front of the damage once more.
int Judge(sqlite3_stmt* statement, int result) {
  State& state = Watched();
  if (state.stepped != statement || result == SQLITE_DONE) state.failures = state.rows = 0;
  state.stepped = statement;
  if (result == SQLITE_DONE) return result;
  int& count = result == SQLITE_ROW ? state.rows : state.failures;
  if (++count < (result == SQLITE_ROW ? Watchdog::rowLimit : Watchdog::failureLimit)) return result;
  ++(result == SQLITE_ROW ? state.counts.endlessRows : state.counts.endlessLoops);
  state.stepped = nullptr;
  return SQLITE_DONE;
}

}  // namespace

void Watchdog::Begin() {
  ++Watched().counts.inputs;
  Watched().questions = 0;
}

void Watchdog::CloseLeftOpen() {
  State& state = Watched();
  state.counts.leftOpen += static_cast<long long>(state.connections.size());
  for (sqlite3* db : state.connections) {
    while (sqlite3_stmt* statement = sqlite3_next_stmt(db, nullptr)) sqlite3_finalize(statement);
    NEXT_DEFINITION(sqlite3_close)(db);
  }
  state.connections.clear();
  state.stepped = nullptr;
}

const WatchdogCounts& Watchdog::Counts() { return Watched().counts; }

extern "C" {

int sqlite3_open_v2(const char* path, sqlite3** db, int flags, const char* vfs) {
  const int result = NEXT_DEFINITION(sqlite3_open_v2)(path, db, flags, vfs);
  if (*db != nullptr) {
    Watched().connections.insert(*db);
    sqlite3_progress_handler(*db, instructionsPerQuestion, IsOverdue, nullptr);
    sqlite3_limit(*db, SQLITE_LIMIT_LENGTH, longestValue);
  }
  return result;
}

int sqlite3_step(sqlite3_stmt* statement) {
  return Judge(statement, NEXT_DEFINITION(sqlite3_step)(statement));
}

int sqlite3_close(sqlite3* db) {
  const int result = NEXT_DEFINITION(sqlite3_close)(db);
  if (result == SQLITE_OK) Watched().connections.erase(db);
  return result;
}

}  // extern "C"
