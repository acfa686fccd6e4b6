#pragma once

#include <optional>
#include <vector>

#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentWriter.h"
#include "tool/formats/Csv.h"

/// The columns of alignments in CSV.
class AlignmentColumns {
 public:
  /// For people: which report it is, and units in the header.
  static AlignmentColumns OfReport(std::optional<Kind> kind);
  /// For programs: plain names, and the uid.
  static AlignmentColumns OfExport();

  void AddHeader(CsvLine* line) const;
  void AddCells(const Alignment& alignment, CsvLine* line) const;

 private:
  /// `kind`: that of all the alignments, which then need no columns of the other.
  AlignmentColumns(bool forPeople, std::optional<Kind> kind);

  const bool forPeople_;
  const std::vector<Field> fields_;
};

/// One line per alignment.
class AlignmentCsvWriter : public AlignmentWriter {
 public:
  AlignmentCsvWriter(TextSink sink, const CsvForm& form, const AlignmentColumns& columns);
  void Write(const Reports& reports) override;

 private:
  const TextSink sink_;
  const CsvForm form_;
  const AlignmentColumns columns_;
};
