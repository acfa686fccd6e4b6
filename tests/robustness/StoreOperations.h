#pragma once

#include <QString>
#include <ostream>
#include <tuple>
#include <vector>

#include "tests/robustness/Scene.h"
#include "tests/store/StoreVersions.h"

// What came of one call of a store: its result in words, and what it changed in the two files.
struct Outcome {
  QString result;
  Change main;
  Change thresholds;
};

// Where the faults strike. A call that fails is not made at all. A fault below the engine may make it roll a
// transaction back by itself, and what is stepped again after that is committed row by row.
enum class FaultLevel { Calls, Files };

// Creating starts from no files at all, reading and writing from files with alignments of two sites and two
// paths, preferences and screens.
enum class Kind { Creates, Reads, Writes };

// One operation of the stores, with the outcomes that it may have when something fails on the way.
struct StoreOperation {
  const char* name;
  Kind kind;
  QString (*run)(const StoreVersion& version, const QString& main, const QString& thresholds);
  // Empty if `outcome` is one of those that the operation may have, else what is wrong with it. `clean` is
  // the outcome without any fault.
  QString (*complaint)(const Outcome& outcome, const Outcome& clean, FaultLevel level);
  // Connections that it never closes, and whether it may leave one more open where a statement fails.
  int connectionsLeft = 0;
  bool leavesStatements = false;
  // Whether a fault may keep it stepping a statement without end: it is then run in a process of its own.
  bool maySpin = false;
  // A prepare whose failure always makes it loop without end; null: none.
  const char* spinsWithout = nullptr;

  // Whether it loops without end once this call of a trace, which succeeded there, has failed.
  bool NeverReturnsWithout(const QString& call) const;

  static const std::vector<StoreOperation>& All();
  static std::vector<StoreOperation> Writing();
  // Those that start from files: all except creating.
  static std::vector<StoreOperation> OnFiles();
};

// Files for the operation to start from, as the version's own store leaves them.
Contents StartOf(const StoreOperation& operation, const StoreVersion& version);

// Runs the operation on the scene's files as they are.
Outcome RunOn(const Scene& scene, const StoreOperation& operation, const StoreVersion& version);

// Whether the result is that of a call that did all that was asked of it.
bool IsFullResult(const QString& result);

using VersionAndOperation = std::tuple<StoreVersion, StoreOperation>;

inline void PrintTo(const StoreOperation& operation, std::ostream* out) { *out << operation.name; }

std::string VersionAndOperationName(const testing::TestParamInfo<VersionAndOperation>& info);

// Runs the tests of a fixture over every version and these operations.
#define INSTANTIATE_FOR_OPERATIONS(fixture, operations)                                                      \
  INSTANTIATE_TEST_SUITE_P(                                                                                  \
      All, fixture, testing::Combine(testing::ValuesIn(StoreVersion::All()), testing::ValuesIn(operations)), \
      VersionAndOperationName)
