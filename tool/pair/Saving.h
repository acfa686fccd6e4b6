#pragma once

#include <array>

#include "tool/Alignment.h"
#include "tool/pair/LibraryCall.h"
#include "tool/pair/PrivatePair.h"

/// Saves alignments through the library into private copies.
class Saving {
 public:
  explicit Saving(const PrivatePair& copies);
  /// Throws a Failure that begins with `what` unless all went well.
  void Save(const Alignment& alignment, const QString& what);
  /// Throws a Failure unless every row that the saves should have made is there: a trigger can remove one
  /// without anybody noticing.
  void RequireAllKept();

 private:
  static constexpr std::size_t TableCount = 7;
  using Counts = std::array<qint64, TableCount>;
  Counts Count() const;

  const PrivatePair& copies_;
  const std::shared_ptr<IAlignmentDatabase> store_;
  const Counts before_;
  qint64 sites_ = 0;
  qint64 paths_ = 0;
  LibraryCall call_;
};
