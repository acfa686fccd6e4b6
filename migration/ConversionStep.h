#pragma once

#include "schema/SchemaTexts.h"

struct sqlite3;

/// A statement that changes a copied table. Further ones of a table run only while they succeed.
struct Change {
  const char* sql;
  const char* label;
};

/// What the outcome of a table's copy and changes means for its step.
enum class Outcome {
  /// Copy and changes must succeed.
  ChangesCount,
  /// The copy must succeed; the changes need not.
  CopyCounts,
  /// Neither need succeed.
  NothingCounts,
  /// Either the copy or all changes must succeed.
  CopyOrChangesCount,
};

/// What happens to one table after it was copied.
struct TableChanges {
  const char* table;
  Outcome outcome;
  Change changes[4];
  /// Logged when a change fails; null: nothing.
  const char* changeFailure = nullptr;
  /// A change that no statement can express, run last; null: none.
  bool (*correct)(sqlite3* db) = nullptr;
};

/// How failures are reported and cleaned up after. It grew over the versions, and each step keeps its own.
enum class FailureHandling {
  /// Only failed checks are named, and the scratch file is left behind.
  ChecksNamed,
  /// Every failed step is named, and the scratch file is removed.
  StepsNamed,
  /// As before, with a line for a main file that cannot be opened and one before the scratch file is removed.
  AllNamed,
};

/// Whether rows that no alignment refers to are removed from the copy.
enum class UnusedRows { Stay, Go };

/// All that defines one conversion: where it starts, where it ends, and what it changes on the way. A table
/// that is not named is copied as it is.
struct ConversionStep {
  unsigned int targetVersion;
  SchemaTexts source;
  FailureHandling failures;
  UnusedRows unusedRows;
  TableChanges tables[3];
};
