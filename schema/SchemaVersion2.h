#pragma once

#include "schema/SchemaVersion1.h"

// clang-format off
#define PREFERENCES_TABLE_2                                                                             \
  PREFERENCES_TABLE_1 ", AccelerometerCalibrated INTEGER NOT NULL, GNSSFileCRC INTEGER NOT NULL DEFAULT 0, " \
  "TiltIndicatorEnabled INTEGER NOT NULL DEFAULT 1, RollIndicatorEnabled INTEGER NOT NULL DEFAULT 1"
// clang-format on
// Required behaviour: saving and restoring differ by the blank before TiltIndicatorEnabled.
// clang-format off
#define PREFERENCES_COLUMNS_2(gap) \
  PREFERENCES_COLUMNS_1 ", AccelerometerCalibrated, GNSSFileCRC," gap "TiltIndicatorEnabled, " \
                        "RollIndicatorEnabled"
#define PREFERENCES_VALUES_2 PREFERENCES_VALUES_1 ",?,?,?,?"

#define ANTENNA_ALIGNMENT_CORRECT_REFERENCES \
  ANTENNA_ALIGNMENT_REFERENCES ", FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey) );"
#define PATH_ALIGNMENT_CORRECT_REFERENCES                                         \
  "FOREIGN KEY(PathKey) REFERENCES Paths(PathKey), "                              \
  "FOREIGN KEY(LocationKey) REFERENCES Geolocation(GeolocationKey), "             \
  "FOREIGN KEY(PathLocationKey) REFERENCES Geolocation(GeolocationKey), "         \
  "FOREIGN KEY(TargetOrientationKey) REFERENCES Orientation(OrientationKey), "    \
  "FOREIGN KEY(MeasuredOrientationKey) REFERENCES Orientation(OrientationKey), "  \
  "FOREIGN KEY(SiteHeightKey) REFERENCES Height(HeightKey)"
// clang-format on

/// Preferences gain the calibration flag, the GNSS file's checksum and the two indicator switches.
/// The conversion away from this version is the one that corrects the alignments' foreign keys.
constexpr SchemaTexts SchemaVersion2() {
  SchemaTexts texts = SchemaVersion1();
  texts.preferences = PREFERENCES_TABLE_2 ")";
  texts.antennaAlignmentCopy = ANTENNA_ALIGNMENT_COLUMNS ANTENNA_ALIGNMENT_CORRECT_REFERENCES;
  texts.pathAlignmentCopy = PATH_ALIGNMENT_COLUMNS PATH_ALIGNMENT_CORRECT_REFERENCES " ON DELETE CASCADE )";
  texts.savePreferences = SAVE_PREFERENCES(PREFERENCES_COLUMNS_2(" "), PREFERENCES_VALUES_2);
  texts.restorePreferences = RESTORE_PREFERENCES(PREFERENCES_COLUMNS_2(""));
  return texts;
}
