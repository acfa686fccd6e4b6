#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <vector>

/// What was found by one rule in one of the files.
struct Finding {
  enum class Severity {
    None,
    Skipped,  ///< Not looked at, since the file is damaged or has not its tables.
    Note,     ///< What normal work leaves.
    Warning,
    Error
  };
  bool inMain = true;
  QString shownFile;
  QString rule;
  Severity severity = Severity::None;
  qint64 count = 0;
  /// What it is about, the first of them.
  QStringList keys;
};

/// Rules about rows of sound files that belong together, or do not: what a check looks for, and what a repair
/// takes away.
struct CheckRule {
  const char* name;
  Finding::Severity severity;
  /// A query for the keys of rows that are not as they have to be.
  QByteArray find;
  /// Deletes them; empty where nobody can tell what would be right.
  QByteArray remove;
};

namespace CheckRules {

/// Over a main file.
std::vector<CheckRule> OfMain();
/// Over a main file with the thresholds file attached. Conversions leave alignments without thresholds.
std::vector<CheckRule> OfPair(bool isConverted);

}  // namespace CheckRules
