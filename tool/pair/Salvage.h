#pragma once

#include <QString>

#include "tool/pair/Deadline.h"

/// Reads what can be read of damaged files into new ones.
namespace Salvage {

struct Files {
  QString main;
  /// Empty for a main file of an earlier version, and where the thresholds file is lost.
  QString thresholds;
  QString newMain;
  QString newThresholds;
};

/// What was read and what was lost, in lines. The new pair stands then: of the current version, with every
/// alignment of which all rows could be read, under its key.
QString Run(const Files& files, const Deadline& deadline);

}  // namespace Salvage
