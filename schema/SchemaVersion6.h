#pragma once

#include "schema/SchemaVersion5.h"

#define PREFERENCES_TABLE_6 PREFERENCES_TABLE_5 ", GeoidFormat INTEGER NOT NULL DEFAULT 0"
#define PREFERENCES_COLUMNS_6(gap) PREFERENCES_COLUMNS_5(gap) ", GeoidFormat"
#define PREFERENCES_VALUES_6 PREFERENCES_VALUES_5 ",?"

/// Preferences gain the geoid format. From this version on GPS heights have type 3; until then, type 1.
constexpr SchemaTexts SchemaVersion6() {
  SchemaTexts texts = SchemaVersion5();
  texts.preferences = PREFERENCES_TABLE_6 ")";
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_6(" "), PREFERENCES_VALUES_6);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_6(""));
  return texts;
}
