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
/// stays as it was. With a thresholds name that file is made where there is none.
void Run(const QString& mainName, const QString& thresholdsName, const Choices& choices,
         const Deadline& deadline);

}  // namespace Migration
