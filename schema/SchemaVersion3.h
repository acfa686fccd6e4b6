#pragma once

#include "schema/SchemaVersion2.h"

// clang-format off
#define PREFERENCES_TABLE_3                                                 \
  PREFERENCES_TABLE_2 ", TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, " \
  "BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam'"
#define PREFERENCES_COLUMNS_3(gap) PREFERENCES_COLUMNS_2(gap) ", TiltInversionEnabled, BluetoothDisplayName"
#define PREFERENCES_VALUES_3 PREFERENCES_VALUES_2 ",?,?"

#define ANTENNA_ALIGNMENT_COLUMNS_3 \
  ANTENNA_ALIGNMENT_COLUMNS "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0, "
#define SELECT_SITE_REPORTS_3 SELECT_SITE_REPORTS ", a.TiltInversionEnabled"
#define SELECT_PATH_REPORTS_3 SELECT_PATH_REPORTS ", a.TiltInversionEnabled"
// clang-format on

namespace SiteReportColumn {
enum : int { TiltInversion = HeightType + 1 };
}
namespace PathReportColumn {
enum : int { TiltInversion = HeightType + 1 };
}

/// Alignments and preferences gain tilt inversion, preferences the Bluetooth name; foreign keys are
/// corrected. New files get the alignments' column by ALTER TABLE in the same text. Required behaviour: a
/// conversion's copy names the column itself and lacks the cascade of the path's height.
constexpr SchemaTexts SchemaVersion3() {
  SchemaTexts texts = SchemaVersion2();
  texts.antennaAlignment = ANTENNA_ALIGNMENT_COLUMNS ANTENNA_ALIGNMENT_CORRECT_REFERENCES
      " ALTER TABLE AntennaAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0";
  texts.pathAlignment = PATH_ALIGNMENT_COLUMNS PATH_ALIGNMENT_CORRECT_REFERENCES
      " ON DELETE CASCADE ); ALTER TABLE PathAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0";
  texts.antennaAlignmentAddsColumn = true;
  texts.pathAlignmentAddsColumn = true;
  texts.preferences = PREFERENCES_TABLE_3 ")";
  texts.antennaAlignmentCopy = ANTENNA_ALIGNMENT_COLUMNS_3 ANTENNA_ALIGNMENT_CORRECT_REFERENCES;
  texts.pathAlignmentCopy =
      PATH_ALIGNMENT_COLUMNS "TiltInversionEnabled INTEGER NOT NULL, " PATH_ALIGNMENT_CORRECT_REFERENCES " )";
  texts.insertAntennaAlignment =
      INSERT_ANTENNA_ALIGNMENT ", TiltInversionEnabled) VALUES (?,?,?,?,?,?,?,?,?,?)";
  texts.insertPathAlignment =
      INSERT_PATH_ALIGNMENT ", TiltInversionEnabled ) VALUES (?,?,?,?,?,?,?,?,?,?,?) ";
  texts.selectSiteReports = SELECT_SITE_REPORTS_3 FROM_SITE_REPORTS;
  texts.selectPathReports = SELECT_PATH_REPORTS_3 FROM_PATH_REPORTS;
  texts.hasTiltInversion = true;
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_3(" "), PREFERENCES_VALUES_3);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_3(""));
  return texts;
}
