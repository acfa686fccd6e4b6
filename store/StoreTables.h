#pragma once

#include "core/DebugLog.h"
#include "schema/SchemaTexts.h"

struct sqlite3;

/// Creating the tables of a store's files. Tables and rows that are there stay as they are.
namespace StoreTables {

// On an open connection, in the order of the tables, stopping at the first failure, which is logged.
bool CreateMain(sqlite3* db, const SchemaTexts& texts);
bool CreateThresholds(sqlite3* db);

/// What Create() of a concrete store returns. Required behaviour: a failure adds a line, and the store is
/// returned all the same.
template <typename Store>
Store* CreatedFor(Store* store) {
  if (!store->CreateTables()) LogDebug("Unable to create database tables");
  return store;
}

}  // namespace StoreTables
