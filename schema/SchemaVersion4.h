#pragma once

#include "schema/SchemaVersion3.h"

// No store names Language, so it keeps its default.
#define PREFERENCES_TABLE_4 PREFERENCES_TABLE_3 ", Language INTEGER NOT NULL DEFAULT 0"

#define ANTENNA_ALIGNMENT_COLUMNS_4 ANTENNA_ALIGNMENT_COLUMNS_3 "Note TEXT NOT NULL DEFAULT '', "
#define SELECT_SITE_REPORTS_4 SELECT_SITE_REPORTS_3 ",a.Note"

namespace SiteReportColumn {
enum : int { Note = TiltInversion + 1 };
}

/// Site alignments gain a note, preferences the language.
constexpr SchemaTexts SchemaVersion4() {
  SchemaTexts texts = SchemaVersion3();
  texts.antennaAlignment = ANTENNA_ALIGNMENT_COLUMNS_4 ANTENNA_ALIGNMENT_CORRECT_REFERENCES;
  texts.antennaAlignmentAddsColumn = false;
  texts.preferences = PREFERENCES_TABLE_4 ")";
  texts.antennaAlignmentCopy = texts.antennaAlignment;
  texts.insertAntennaAlignment =
      INSERT_ANTENNA_ALIGNMENT ", TiltInversionEnabled,Note) VALUES (?,?,?,?,?,?,?,?,?,?,?)";
  texts.selectSiteReports = SELECT_SITE_REPORTS_4 FROM_SITE_REPORTS;
  texts.hasSiteNote = true;
  return texts;
}
