#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/Contender.h"
#include "bench/Content.h"

namespace Contenders {
constexpr char library[] = "library";
constexpr char guarded[] = "library+guard";
constexpr char floor[] = "floor";
constexpr char floorWithValues[] = "floor+Qt values";
constexpr char floorByHash[] = "floor, search by hash";
constexpr char qtSql[] = "Qt SQL";
constexpr char sqliteCpp[] = "SQLiteCpp";
}  // namespace Contenders

/// One row of the table: what is done, to which files, and how often in a row.
struct Operation {
  std::string name;
  /// What the operation grows with: rows, records or alignments; -1 if it does not grow.
  int size;
  Content content;
  /// Runs on the same files, one after the other; 1 for those that need fresh files every time.
  int runs;
  /// Does it for the nth time (from 0) on these files; false on failure.
  std::function<bool(Contender& contender, int nth)> run;
  std::vector<const char*> contenders;

  /// "save site alignment/1000"
  std::string Title() const;
};

/// The largest sizes that are wanted. Conversions have a limit of their own: they grow quadratically.
struct Limits {
  int size;
  int conversionSize;
};

std::vector<Operation> Operations(const Limits& limits);
