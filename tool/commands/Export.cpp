#include <memory>

#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentCsv.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/pair/Snapshot.h"

namespace {

std::unique_ptr<AlignmentWriter> MakeWriter(const QString& format, const CsvForm& csv) {
  constexpr auto WithUid = AlignmentJson::Uid::With;
  if (format == QLatin1String("json"))
    return std::make_unique<AlignmentJsonWriter>(StandardOutput(), WithUid);
  if (format == QLatin1String("ndjson"))
    return std::make_unique<AlignmentLinesWriter>(StandardOutput(), WithUid);
  return std::make_unique<AlignmentCsvWriter>(StandardOutput(), csv, AlignmentColumns::OfExport());
}

int Run(const Arguments& arguments) {
  const QString format =
      FormatOf(arguments, {QStringLiteral("json"), QStringLiteral("ndjson"), QStringLiteral("csv")});
  const CsvForm csv = CsvFormOf(arguments, false);
  const AlignmentFilter filter = FilterOf(arguments);
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  // Read before anything is printed: of damaged files not even a header.
  std::vector<Reports> all = files.ReadAll();
  const std::unique_ptr<AlignmentWriter> writer = MakeWriter(format, csv);
  for (Reports& reports : all) {
    reports.alignments = filter.Apply(reports.alignments);
    writer->Write(reports);
  }
  writer->End();
  return Status::Done;
}

}  // namespace

Command ExportCommand() {
  return {"export",
          "Prints alignments for programs; as JSON, what 'import' reads.",
          {"MAIN", "[THRESHOLDS]"},
          Together({FilterOptions(),
                    {ValueOption("format", "json (the default), ndjson or csv.", "FORMAT", "json")},
                    CsvOptions()}),
          false,
          Run};
}
