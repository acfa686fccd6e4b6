#pragma once

#include <QStringList>
#include <vector>

#include "tool/pair/Deadline.h"
#include "tool/pair/Sqlite.h"

/// A main file, and the thresholds file that goes with it; empty if there is none.
struct PairNames {
  QString mainName;
  QString thresholdsName;
};

/// Whether a database has all tables of a thresholds file, or with `AnyTable` one of them, and is no main
/// file.
enum class Has { AllTables, AnyTable };
bool IsThresholdsFile(const Sqlite& db, Has has);

/// Which files belong together if any main file may come without a thresholds file: what they hold shows it,
/// and a thresholds file goes with the main file before it. Throws WrongUsage for one without such a main
/// file.
std::vector<PairNames> PairsOf(const QStringList& names, const Deadline& deadline);
