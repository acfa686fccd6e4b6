#pragma once

#include "schema/SchemaVersion6.h"

/// The current version. Path alignments gain a note, preferences the technician's identifier; the
/// alignments' thresholds move into a file of their own (SchemaThresholds.h).
constexpr SchemaTexts SchemaVersion7() {
  SchemaTexts texts = SchemaVersion6();
  texts.pathAlignment = PATH_ALIGNMENT_COLUMNS
      "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, /* Flag tracking whether tilt inversio is enabled*/ "
      "Note TEXT NOT NULL DEFAULT '', /* user note note */ " PATH_ALIGNMENT_CORRECT_REFERENCES
      " ON DELETE CASCADE )";
  texts.preferences = PREFERENCES_TABLE_6 ", UserTechId TEXT NOT NULL DEFAULT 'tbm001')";
  texts.insertPathAlignment =
      INSERT_PATH_ALIGNMENT ", TiltInversionEnabled, Note ) VALUES (?,?,?,?,?,?,?,?,?,?,?,?) ";
  texts.selectPathReports = SELECT_PATH_REPORTS_3 ",a.Note" FROM_PATH_REPORTS;
  texts.savePreferences =
      SAVE_PREFERENCES(PREFERENCES_COLUMNS_6(" ") ", UserTechId", PREFERENCES_VALUES_6 ",?");
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_6("") ", UserTechId");
  return texts;
}
