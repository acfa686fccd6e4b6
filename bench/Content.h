#pragma once

#include <string>

/// What the files of an operation hold before it runs.
struct Content {
  /// Schema version; 0: no files at all. The thresholds file is there from version 7 on.
  int version = 7;
  /// Alignments of "Site 1", and then of others, `perSite` each.
  int firstSite = 0;
  int others = 0;
  int perSite = 100;
  int paths = 0;
  /// Rows that no alignment refers to, in each table that can have such rows.
  int orphans = 0;

  /// Puts fresh files with this content at the contenders' paths.
  void Install() const;
};

/// "table=rows" of every table of both files, to tell whether contenders did the same.
std::string RowCounts();
