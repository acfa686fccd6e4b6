// Preferences: row 1 of the main file's Preferences, and of the thresholds file's PreferencesPathLength.
#include <sqlite3.h>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"
#include "store/AlignmentDatabaseStore.h"
#include "store/PreferenceColumns.h"
#include "store/StoreDescription.h"

bool AlignmentDatabaseStore::SavePreferences(IPreferencesModel* model) {
  if (model == nullptr) return false;
  const StoreDescription& store = Description();
  return SavePreferencesRow(model) && (!store.hasThresholdsFile || SavePathLengthRow(model));
}

bool AlignmentDatabaseStore::SavePreferencesRow(IPreferencesModel* model) {
  const Connection db(OpenDatabase(false));
  if (!db) return false;
  Statement row(db, Description().texts.savePreferences, "Save Preferences");
  return row && PreferenceColumns::OfMainRow(Version()).Save(&row, model) && row.Run();
}

/// Once the file is open the result is true, whatever becomes of the row; this is required.
bool AlignmentDatabaseStore::SavePathLengthRow(IPreferencesModel* model) {
  const Connection db(OpenSecondDatabase(false));
  if (!db) return false;
  Statement row(db,
                "INSERT OR REPLACE INTO PreferencesPathLength (RowID, PathLengthThresholdEnabled, "
                "PathLengthThreshold ) VALUES (1,?,?)",
                "Save Preferences Thresholds");
  if (row && PreferenceColumns::OfPathLengthRow().Save(&row, model)) row.Step();
  return true;
}

bool AlignmentDatabaseStore::RestorePreferences(IPreferencesModel* model) {
  if (model == nullptr) return false;
  const StoreDescription& store = Description();
  return RestorePreferencesRow(model) && (!store.hasThresholdsFile || RestorePathLengthRow(model));
}

// The observers are notified while the transaction is still open.
bool AlignmentDatabaseStore::RestorePreferencesRow(IPreferencesModel* model) {
  const Connection db(OpenDatabase(false));
  if (!db) {
    LogDebug("Failed to open database in RestorePreferences");
    return false;
  }
  if (!BeginTransaction(db)) return false;
  Statement row(db, Description().texts.restorePreferences, "Restore preferences");
  if (!row) LogDebug("Failed to prepare statement in prefernces statement");
  if (!row || row.Step() != SQLITE_ROW) {
    row.Finalize();
    RollBack(db);
    return false;
  }
  PreferenceColumns::OfMainRow(Version()).Restore(row, model);
  row.Finalize();
  EndTransaction(db);
  return true;
}

bool AlignmentDatabaseStore::RestorePathLengthRow(IPreferencesModel* model) {
  const Connection db(OpenSecondDatabase(false));
  if (!db) {
    LogDebug("Failed to open database in RestorePreferenceThresholds");
    return false;
  }
  if (!BeginTransaction(db)) return true;
  Statement row(db,
                "SELECT PathLengthThresholdEnabled, PathLengthThreshold FROM PreferencesPathLength WHERE "
                "(RowID=1)",
                "Restore preferences threshold");
  if (!row) LogDebug("Failed to prepare statement in prefernces threshold statement");
  if (row && row.Step() == SQLITE_ROW) PreferenceColumns::OfPathLengthRow().Restore(row, model);
  row.Finalize();
  EndTransaction(db);
  return true;
}
