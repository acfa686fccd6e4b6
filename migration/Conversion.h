#pragma once

#include <QString>

#include "migration/ConversionStep.h"

struct sqlite3;

struct CopiedTable;

/// The one conversion procedure: builds a complete copy in the scratch file, checks it, and only then
/// replaces the main file with it. No step runs in a transaction, and none writes the main file; the scratch
/// file is attached for the length of a step.
class Conversion {
 public:
  explicit Conversion(const ConversionStep& step) : step_(step) {}

  bool Convert(const QString& path);

  static constexpr char scratchFolder[] = "/opt/tarnbeam/database";
  static constexpr char scratchPath[] = "/opt/tarnbeam/database/TemporaryDB.sqlite";

  // The steps, each on the main file's connection. Null is refused.
  static bool CreateTemporaryDatabase();
  static bool DeleteTemporaryDatabase();
  static bool AttachTemporaryDatabase(sqlite3* db);
  static bool DetachTemporaryDatabase(sqlite3* db);
  bool UpdateVersion(sqlite3* db) const;
  bool UpdateTable(sqlite3* db, const CopiedTable& table) const;
  static bool PerformIntegrityCheck(sqlite3* db);
  static bool PerformForeignKeyCheck(sqlite3* db);

 private:
  bool MakeCopy(sqlite3* db) const;
  bool UpdateAttachedTable(sqlite3* db, const CopiedTable& table) const;
  bool FailStep(const char* line) const;

  const ConversionStep& step_;
};
