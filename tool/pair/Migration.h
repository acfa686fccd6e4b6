#pragma once

#include <QString>

#include "tool/pair/Deadline.h"

/// Brings a main file to the current version.
namespace Migration {

struct Choices {
  /// Where the file is copied first; empty: nowhere.
  QString backup;
  /// Whether to go on without what the steps cannot carry over.
  bool acceptLosses = false;
};

/// Prints each step with its duration once all is done. Either the file ends at the current version or it
/// stays as it was. If a thresholds name is given and there is no such file, it is made.
void Run(const QString& mainName, const QString& thresholdsName, const Choices& choices,
         const Deadline& deadline);

}  // namespace Migration
