#pragma once

#include "store/StoreIdentity.h"

class IPreferencesModel;

/// Preferences: row 1 of the main file's Preferences, and of the thresholds file's PreferencesPathLength.
namespace StorePreferences {

// The operations of IAlignmentDatabase.
bool Save(const StoreIdentity& store, IPreferencesModel* model);
bool Restore(const StoreIdentity& store, IPreferencesModel* model);

}  // namespace StorePreferences
