#pragma once

#include <QString>

#include "core/OperationGuard.h"
#include "tool/Console.h"

/// A stretch of library calls that is watched: what goes wrong in it is reported, and it comes to an end.
class LibraryCall {
 public:
  LibraryCall() : guard_({failedSteps, milliseconds}) {}

  /// Throws a Failure with the message, and what the library met, unless all went well so far.
  void RequireSuccess(bool result, const QString& message);
  /// Whether this error of the system, and nothing else, is what went wrong.
  bool MetOnly(int systemError) const;

 private:
  static constexpr int failedSteps = 5;
  /// For each call. Files have been checked before, so this is for what nobody thought of.
  static constexpr int milliseconds = 120'000;

  OperationGuard guard_;
};
