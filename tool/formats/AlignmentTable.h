#pragma once

#include "tool/formats/AlignmentWriter.h"

/// For people: a block per report, each value with its name and unit, each angle judged by its threshold.
class AlignmentTableWriter : public AlignmentWriter {
 public:
  explicit AlignmentTableWriter(TextSink sink) : sink_(std::move(sink)) {}
  void Write(const Reports& reports) override;

 private:
  const TextSink sink_;
  bool isFirst_ = true;
};
