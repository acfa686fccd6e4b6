#pragma once

#include "schema/SchemaVersion4.h"

// clang-format off
#define PREFERENCES_TABLE_5 PREFERENCES_TABLE_4 ", RollPrecision INTEGER NOT NULL DEFAULT 0"
#define PREFERENCES_COLUMNS_5(gap) PREFERENCES_COLUMNS_3(gap) ", RollPrecision"
#define PREFERENCES_VALUES_5 PREFERENCES_VALUES_3 ",?"

#define ANTENNA_ALIGNMENT_COLUMNS_5 ANTENNA_ALIGNMENT_COLUMNS_4 "RollPrecision INTEGER NOT NULL DEFAULT 0, "
// clang-format on

namespace SiteReportColumn {
enum : int { RollPrecision = Note + 1 };
}

/// Site alignments and preferences gain the roll precision.
constexpr SchemaTexts SchemaVersion5() {
  SchemaTexts texts = SchemaVersion4();
  texts.antennaAlignment = ANTENNA_ALIGNMENT_COLUMNS_5 ANTENNA_ALIGNMENT_CORRECT_REFERENCES;
  texts.preferences = PREFERENCES_TABLE_5 ")";
  texts.antennaAlignmentCopy = texts.antennaAlignment;
  texts.insertAntennaAlignment =
      INSERT_ANTENNA_ALIGNMENT ", TiltInversionEnabled,Note,RollPrecision) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)";
  texts.selectSiteReports = SELECT_SITE_REPORTS_4 ", a.RollPrecision" FROM_SITE_REPORTS;
  texts.hasRollPrecision = true;
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_5(" "), PREFERENCES_VALUES_5);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_5(""));
  return texts;
}
