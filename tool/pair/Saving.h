#pragma once

#include <array>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/LibraryCall.h"
#include "tool/pair/PrivatePair.h"

/// Saves alignments through the library into private copies.
class Saving {
 public:
  explicit Saving(const PrivatePair& copies);
  /// Throws a Failure that begins with `what` unless all went well.
  void Save(const Alignment& alignment, const QString& what);
  /// Throws a Failure unless every row that the saves should have made is there, with the values that were to
  /// be saved: a trigger can remove one, or alter it, without anybody noticing.
  void RequireAllKept();

 private:
  static constexpr std::size_t tableCount = 7;
  using Counts = std::array<qint64, tableCount>;
  /// Where the rows of a kind end, in both files.
  struct Ends {
    qint64 alignments;
    qint64 thresholds;
  };
  Counts Count() const;
  Ends EndsOf(Kind kind) const;
  void RequireRows() const;
  void RequireValues(Kind kind, const Ends& before, const std::vector<Alignment>& saved) const;

  const PrivatePair& copies_;
  const std::shared_ptr<IAlignmentDatabase> store_;
  const Counts before_;
  const Ends sitesBefore_;
  const Ends pathsBefore_;
  std::vector<Alignment> sites_;
  std::vector<Alignment> paths_;
  LibraryCall call_;
};
