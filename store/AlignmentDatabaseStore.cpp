#include "store/AlignmentDatabaseStore.h"

#include <sqlite3.h>

#include <QFile>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"
#include "schema/SchemaThresholds.h"
#include "store/StoreDescription.h"

namespace {

struct Table {
  const char* definition;
  const char* label;
};

/// Creates the tables in their order, stopping at the first failure.
template <size_t count>
bool CreateAll(sqlite3* db, const Table (&tables)[count]) {
  for (const Table& table : tables) {
    const QByteArray sql = QByteArray("CREATE TABLE IF NOT EXISTS ") + table.definition;
    if (!Sql::Execute(db, sql.constData(), table.label)) return false;
  }
  return true;
}

bool CreateThresholdTables(sqlite3* db) {
  const Table tables[] = {
      {SchemaThresholds::preferencesPathLength, "Create Preferences with Path Length Table"},
      {SchemaThresholds::antennaAlignmentThresholds, "Create Antenna Thresholds Table"},
      {SchemaThresholds::pathAlignmentThresholds, "Create Path Thresholds Table"},
  };
  return CreateAll(db, tables);
}

}  // namespace

const StoreDescription& AlignmentDatabaseStore::Description() { return StoreDescription::Of(Version()); }

void AlignmentDatabaseStore::CreateTablesOrLog() {
  if (!CreateTables()) LogDebug("Unable to create database tables");
}

bool AlignmentDatabaseStore::CreateTables() {
  Connection main(OpenDatabase(false));
  if (!main) return false;
  const bool mainCreated = CreateMainTables(main);
  main.Close();
  if (!mainCreated) QFile::remove(DatabasePath());
  if (!Description().hasThresholdsFile) return mainCreated;

  Connection thresholds(OpenSecondDatabase(false));
  if (!thresholds) return false;
  const bool thresholdsCreated = CreateThresholdTables(thresholds);
  thresholds.Close();
  if (!thresholdsCreated) QFile::remove(SecondDatabasePath());
  return mainCreated && thresholdsCreated;
}

bool AlignmentDatabaseStore::CreateMainTables(sqlite3* db) {
  const SchemaTexts& texts = Description().texts;
  const Table tables[] = {
      {texts.sites, "Create Sites Table"},
      {texts.paths, "Create Path Table"},
      {texts.orientation, "Create Orientation Table"},
      {texts.geolocation, "Create Geolocation Table"},
      {texts.height, "Create Height Table"},
      {texts.antennaAlignment, "Create Antenna Alignment Table"},
      {texts.pathAlignment, "Create Path Alignment Table"},
      {texts.preferences, "Create Preferences Table"},
      {texts.siteScreenContents, "Create Site Screen Contents Table"},
      {texts.pathScreenContents, "Create Path Screen Contents Table"},
  };
  return InitializeVersionTable(db) && CreateAll(db, tables);
}

void AlignmentDatabaseStore::Close() {}

QVector<QString> AlignmentDatabaseStore::GetSiteIdentifiers() {
  return Identifiers("SELECT SiteIdentifier FROM Sites");
}

QVector<QString> AlignmentDatabaseStore::GetPathIdentifiers() {
  return Identifiers("SELECT PathIdentifier FROM Paths");
}

// Only "done" ends the loop: a step that keeps failing keeps the call from returning, as it always has.
// Sites and paths share the label.
QVector<QString> AlignmentDatabaseStore::Identifiers(const char* sql) {
  QVector<QString> identifiers;
  const Connection db(OpenDatabase(false));
  if (!db) return identifiers;
  Statement statement(db, sql, "Fetch Report Data for Site");
  if (!statement) return identifiers;
  for (int result = statement.Step(); result != SQLITE_DONE; result = statement.Step()) {
    if (result == SQLITE_ROW) identifiers.append(statement.TextColumn(0));
  }
  return identifiers;
}
