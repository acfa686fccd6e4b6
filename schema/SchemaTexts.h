#pragma once

/// The SQL texts in which any schema version differs from another.
///
/// A table is given as its name with its column list, without "CREATE TABLE", so that the same text
/// serves the main file and the scratch copy of a conversion. The texts are part of the file format:
/// SQLite keeps them verbatim, comments and misspellings included.
struct SchemaTexts {
  const char* sites;
  const char* paths;
  const char* orientation;
  const char* geolocation;
  const char* height;
  const char* antennaAlignment;
  const char* pathAlignment;
  const char* preferences;
  const char* siteScreenContents;
  const char* pathScreenContents;

  /// The alignment tables as the conversion away from this version creates them in its scratch copy.
  const char* antennaAlignmentCopy;
  const char* pathAlignmentCopy;

  const char* insertAntennaAlignment;
  const char* insertPathAlignment;
  const char* selectSiteReports;
  const char* selectPathReports;
  const char* savePreferences;
  const char* restorePreferences;

  /// Which of the columns that some versions lack are named in the alignments' texts.
  bool hasTiltInversion;
  bool hasSiteNote;
  bool hasRollPrecision;
  bool hasPathNote;

  /// Whether the table's text goes on to add a column to it, which fails on a table that has the column.
  bool antennaAlignmentAddsColumn;
  bool pathAlignmentAddsColumn;

  /// Whether the alignments' thresholds have a file of their own, with the texts of SchemaThresholds.
  bool hasThresholdsFile;
};
