#include "store/StorePreferences.h"

#include <sqlite3.h>

#include "core/DebugLog.h"
#include "core/Statement.h"
#include "store/PreferenceColumns.h"

namespace {

bool SaveMainRow(const StoreIdentity& store, IPreferencesModel* model) {
  const Connection db(store.OpenMain());
  if (!db) return false;
  Statement row(db, store.texts.savePreferences, "Save Preferences");
  return PreferenceColumns::OfMainRow(store.version).Save(&row, model) && row.Run();
}

/// Required behaviour: once the file is open the result is true, whatever becomes of the row.
bool SavePathLengthRow(const StoreIdentity& store, IPreferencesModel* model) {
  const Connection db(store.OpenThresholds());
  if (!db) return false;
  Statement row(db,
                "INSERT OR REPLACE INTO PreferencesPathLength (RowID, PathLengthThresholdEnabled, "
                "PathLengthThreshold ) VALUES (1,?,?)",
                "Save Preferences Thresholds");
  if (PreferenceColumns::OfPathLengthRow().Save(&row, model)) row.Step();
  return true;
}

// The observers are notified while the transaction is still open.
bool RestoreMainRow(const StoreIdentity& store, IPreferencesModel* model) {
  const Connection db(store.OpenMain());
  if (!db) {
    LogDebug("Failed to open database in RestorePreferences");
    return false;
  }
  if (!Sql::Begin(db)) return false;
  Statement row(db, store.texts.restorePreferences, "Restore preferences");
  if (!row) LogDebug("Failed to prepare statement in prefernces statement");
  const bool found = row.Step() == SQLITE_ROW;
  if (found) PreferenceColumns::OfMainRow(store.version).Restore(row, model);
  row.Finalize();
  return Sql::Finish(db, found);
}

bool RestorePathLengthRow(const StoreIdentity& store, IPreferencesModel* model) {
  const Connection db(store.OpenThresholds());
  if (!db) {
    LogDebug("Failed to open database in RestorePreferenceThresholds");
    return false;
  }
  if (!Sql::Begin(db)) return true;
  Statement row(db,
                "SELECT PathLengthThresholdEnabled, PathLengthThreshold FROM PreferencesPathLength WHERE "
                "(RowID=1)",
                "Restore preferences threshold");
  if (!row) LogDebug("Failed to prepare statement in prefernces threshold statement");
  if (row.Step() == SQLITE_ROW) PreferenceColumns::OfPathLengthRow().Restore(row, model);
  row.Finalize();
  Sql::End(db);
  return true;
}

}  // namespace

namespace StorePreferences {

bool Save(const StoreIdentity& store, IPreferencesModel* model) {
  if (model == nullptr || !SaveMainRow(store, model)) return false;
  return !store.texts.hasThresholdsFile || SavePathLengthRow(store, model);
}

bool Restore(const StoreIdentity& store, IPreferencesModel* model) {
  if (model == nullptr || !RestoreMainRow(store, model)) return false;
  return !store.texts.hasThresholdsFile || RestorePathLengthRow(store, model);
}

}  // namespace StorePreferences
