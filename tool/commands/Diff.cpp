#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentDiff.h"
#include "tool/pair/Operands.h"
#include "tool/pair/Snapshot.h"

namespace {

std::vector<PairNames> BothSides(const Arguments& arguments) {
  std::vector<PairNames> sides = PairsOf(arguments.operands, arguments.Waiting());
  if (sides.size() < 2) throw WrongUsage(QStringLiteral("OTHER_MAIN is missing"));
  if (sides.size() > 2) {
    throw WrongUsage(FileName::Shown(sides.back().mainName) + QStringLiteral(" is one too many"));
  }
  return sides;
}

std::vector<Alignment> Read(const PairNames& names, const Arguments& arguments) {
  return Snapshot(names.mainName, names.thresholdsName, arguments.Waiting()).ReadWhole();
}

int Run(const Arguments& arguments) {
  const QString format =
      FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json"), QStringLiteral("csv")});
  const CsvForm csv = CsvFormOf(arguments, false);
  const std::vector<PairNames> sides = BothSides(arguments);
  const std::vector<Alignment> first = Read(sides.front(), arguments);
  const std::vector<Alignment> second = Read(sides.back(), arguments);
  const AlignmentDiff diff(first, second);
  if (format == QLatin1String("table")) WriteDiffTable(diff, StandardOutput());
  if (format == QLatin1String("json")) WriteDiffJson(diff, StandardOutput());
  if (format == QLatin1String("csv")) WriteDiffCsv(diff, csv, StandardOutput());
  return Status::Done;
}

}  // namespace

Command DiffCommand() {
  return {"diff",
          "Tells in which alignments two pairs differ. Status 0 whether or not any does.",
          {"MAIN", "[THRESHOLDS]", "OTHER_MAIN", "[OTHER_THRESHOLDS]"},
          Together({{ValueOption("format", "table (the default), json or csv.", "FORMAT", "table")},
                    CsvOptions()}),
          false,
          Run};
}
