#pragma once

#include "schema/SchemaVersion6.h"

#define PREFERENCES_TABLE_7 PREFERENCES_TABLE_6 ", UserTechId TEXT NOT NULL DEFAULT 'tbm001'"
#define PREFERENCES_COLUMNS_7(gap) PREFERENCES_COLUMNS_6(gap) ", UserTechId"
#define PREFERENCES_VALUES_7 PREFERENCES_VALUES_6 ",?"

namespace PathReportColumn {
enum : int { Note = TiltInversion + 1 };
}

/// Path alignments gain a note, preferences the technician's identifier; the alignments' thresholds move into
/// a file of their own (SchemaThresholds.h).
constexpr SchemaTexts SchemaVersion7() {
  SchemaTexts texts = SchemaVersion6();
  texts.pathAlignment = PATH_ALIGNMENT_COLUMNS
      "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, /* Flag tracking whether tilt inversio is enabled*/ "
      "Note TEXT NOT NULL DEFAULT '', /* user note note */ " PATH_ALIGNMENT_CORRECT_REFERENCES
      " ON DELETE CASCADE )";
  texts.pathAlignmentAddsColumn = false;
  texts.pathAlignmentCopy = texts.pathAlignment;
  texts.preferences = PREFERENCES_TABLE_7 ")";
  texts.insertPathAlignment =
      INSERT_PATH_ALIGNMENT ", TiltInversionEnabled, Note ) VALUES (?,?,?,?,?,?,?,?,?,?,?,?) ";
  texts.selectPathReports = SELECT_PATH_REPORTS_3 ",a.Note" FROM_PATH_REPORTS;
  texts.hasPathNote = true;
  texts.hasThresholdsFile = true;
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_7(" "), PREFERENCES_VALUES_7);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_7(""));
  return texts;
}
