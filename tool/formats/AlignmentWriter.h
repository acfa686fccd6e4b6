#pragma once

#include <QByteArray>
#include <functional>

#include "tool/Alignment.h"

/// Where finished text goes, piece by piece.
using TextSink = std::function<void(const QByteArray&)>;

/// Writes alignments in one of the formats. The text is handed on as it is made, so that it takes no memory,
/// however much there is of it.
class AlignmentWriter {
 public:
  AlignmentWriter() = default;
  AlignmentWriter(const AlignmentWriter&) = delete;
  AlignmentWriter& operator=(const AlignmentWriter&) = delete;
  virtual ~AlignmentWriter() = default;

  /// The reports of one site or path after the other. Throws a Failure for what the format cannot hold.
  virtual void Write(const Reports& reports) = 0;
  /// After the last of them.
  virtual void End() {}
};
