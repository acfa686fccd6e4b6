#pragma once

#include <QStringList>
#include <vector>

#include "tool/formats/AlignmentWriter.h"
#include "tool/formats/Csv.h"

/// One measurement as it is on either side.
struct ChangedAlignment {
  Alignment first;
  Alignment second;
  /// Names of the fields in which the two differ.
  QStringList fields;
};

/// How two sets of alignments differ. What is on both sides is matched by kind, identifier, sector, position
/// and time; of several that agree in these, equal ones first, the rest in order.
struct AlignmentDiff {
  AlignmentDiff(const std::vector<Alignment>& first, const std::vector<Alignment>& second);

  std::vector<Alignment> onlyInFirst;
  std::vector<Alignment> onlyInSecond;
  std::vector<ChangedAlignment> changed;
};

/// One JSON object of three arrays.
void WriteDiffJson(const AlignmentDiff& diff, const TextSink& sink);
/// The columns of an export after one that names the side.
void WriteDiffCsv(const AlignmentDiff& diff, const CsvForm& form, const TextSink& sink);
/// A line for each alignment, and for each of its fields that differs.
void WriteDiffTable(const AlignmentDiff& diff, const TextSink& sink);
