#pragma once

#include <QString>
#include <vector>

#include "tool/pair/PrivatePair.h"

/// Puts private copies right: indices, and rows that the rules of a check find and tell how to remove.
namespace Repair {

struct Deed {
  QString shownFile;
  /// What rows were removed by; empty where the indices were rebuilt.
  QString rule;
  qint64 rows = 0;
};

/// Throws a Failure (4) that names what helps where something else is wrong. What was done, or nothing; the
/// copies are closed afterwards, and right.
std::vector<Deed> Perform(PrivatePair* copies);

}  // namespace Repair
