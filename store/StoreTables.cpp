#include "store/StoreTables.h"

#include <sqlite3.h>

#include <QByteArray>
#include <algorithm>

#include "core/Sql.h"
#include "core/Statement.h"
#include "schema/SchemaThresholds.h"

namespace {

struct Table {
  const char* definition;
  const char* label;
  /// The name of a table whose definition goes on to add a column to it, else null.
  const char* altered = nullptr;
};

/// Looks for a table or a view: IF NOT EXISTS goes by both. False if that failed.
bool Find(sqlite3* db, const Table& table, bool* found) {
  Statement statement(
      db, "SELECT name FROM sqlite_master WHERE type IN ('table', 'view') AND name = ? COLLATE NOCASE",
      table.label);
  const int result = statement.Text(QString::fromLatin1(table.altered), "SQL bind failed with ").Step();
  *found = result == SQLITE_ROW;
  return result == SQLITE_ROW || result == SQLITE_DONE;
}

/// A definition that adds a column is executed only if the table is missing: on an existing one it would
/// fail, and the file would be removed.
bool Create(sqlite3* db, const Table& table) {
  bool isThere = false;
  if (table.altered != nullptr && !Find(db, table, &isThere)) return false;
  const QByteArray sql = QByteArray("CREATE TABLE IF NOT EXISTS ") + table.definition;
  return isThere || Sql::Execute(db, sql.constData(), table.label);
}

template <size_t count>
bool CreateAll(sqlite3* db, const Table (&tables)[count]) {
  return std::all_of(tables, tables + count, [db](const Table& table) { return Create(db, table); });
}

}  // namespace

namespace StoreTables {

bool CreateMain(sqlite3* db, const SchemaTexts& texts) {
  const Table tables[] = {
      {texts.sites, "Create Sites Table"},
      {texts.paths, "Create Path Table"},
      {texts.orientation, "Create Orientation Table"},
      {texts.geolocation, "Create Geolocation Table"},
      {texts.height, "Create Height Table"},
      {texts.antennaAlignment, "Create Antenna Alignment Table",
       texts.antennaAlignmentAddsColumn ? "AntennaAlignment" : nullptr},
      {texts.pathAlignment, "Create Path Alignment Table",
       texts.pathAlignmentAddsColumn ? "PathAlignment" : nullptr},
      {texts.preferences, "Create Preferences Table"},
      {texts.siteScreenContents, "Create Site Screen Contents Table"},
      {texts.pathScreenContents, "Create Path Screen Contents Table"},
  };
  return CreateAll(db, tables);
}

bool CreateThresholds(sqlite3* db) {
  constexpr Table tables[] = {
      {SchemaThresholds::preferencesPathLength, "Create Preferences with Path Length Table"},
      {SchemaThresholds::antennaAlignmentThresholds, "Create Antenna Thresholds Table"},
      {SchemaThresholds::pathAlignmentThresholds, "Create Path Thresholds Table"},
  };
  return CreateAll(db, tables);
}

}  // namespace StoreTables
