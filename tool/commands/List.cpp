#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/formats/ListFormats.h"
#include "tool/pair/Snapshot.h"

namespace {

/// Times and verdicts are left out unless asked for: they need the alignments, which take time to read.
std::vector<ListEntry> Entries(const Snapshot& files, const std::optional<AlignmentFilter>& filter,
                               bool withVerdicts) {
  std::vector<ListEntry> entries;
  if (!withVerdicts && !filter) {
    for (const Snapshot::Summary& summary : files.Summaries()) {
      entries.push_back({summary.kind, summary.identifier, summary.reports, QDateTime(), Verdict::None});
    }
    return entries;
  }
  for (Reports& reports : files.ReadAll()) {
    if (filter) reports.alignments = filter->Apply(reports.alignments);
    if (!reports.alignments.empty() || !filter) entries.push_back(EntryOf(reports));
  }
  return entries;
}

void PrintTable(const std::vector<ListEntry>& entries) {
  Console::Print(QStringLiteral("kind  reports  identifier\n"));
  for (const ListEntry& entry : entries) {
    Console::Print(KindName(entry.kind) + QStringLiteral("  ") +
                   QString::number(entry.reports).rightJustified(7) + QStringLiteral("  ") +
                   Console::Printable(entry.identifier) + QLatin1Char('\n'));
  }
}

void PrintJson(const std::vector<ListEntry>& entries) {
  JsonArrayText array(StandardOutput());
  for (const ListEntry& entry : entries) array.Add(ListObject(entry));
  array.End();
}

void PrintCsv(const std::vector<ListEntry>& entries, const CsvForm& form) {
  const TextSink sink = StandardOutput();
  sink(ListCsvHeader(form));
  for (const ListEntry& entry : entries) sink(ListCsvLine(entry, form));
}

int Run(const Arguments& arguments) {
  const QString format =
      FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json"), QStringLiteral("csv")});
  const CsvForm csv = CsvFormOf(arguments, true);
  std::optional<AlignmentFilter> filter;
  if (HasFilter(arguments)) filter = FilterOf(arguments);
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  const bool isTable = format == QLatin1String("table");
  const std::vector<ListEntry> entries = Entries(files, filter, !isTable);
  if (isTable) PrintTable(entries);
  if (format == QLatin1String("json")) PrintJson(entries);
  if (format == QLatin1String("csv")) PrintCsv(entries, csv);
  return Status::Done;
}

}  // namespace

Command ListCommand() {
  return {"list",
          "Lists sites and paths with their number of reports.",
          {"MAIN", "[THRESHOLDS]"},
          Together({FilterOptions(),
                    {ValueOption("format", "table (the default), json or csv.", "FORMAT", "table")},
                    CsvOptions()}),
          false,
          Run};
}
