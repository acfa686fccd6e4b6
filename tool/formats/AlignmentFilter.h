#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

#include "tool/Alignment.h"

/// Which alignments are asked for; all of them unless something is set.
struct AlignmentFilter {
  /// Measured at this moment or later, and before that one.
  std::optional<QDateTime> since;
  std::optional<QDateTime> until;
  /// Paths have no sector.
  std::optional<QString> sector;
  /// Of what is left so far, the newest measurement of each antenna; of these, those that fail.
  bool latest = false;
  bool failed = false;

  /// Those of a site or path that are asked for, in the order given.
  std::vector<Alignment> Apply(const std::vector<Alignment>& alignments) const;
};

/// Reads a date, or a date and time (ISO 8601, UTC unless it has an offset): the moment at which it begins,
/// or null. `pastDate`: a date alone stands for the moment at which it ends.
std::optional<QDateTime> ReadMoment(const QString& text, bool pastDate = false);
