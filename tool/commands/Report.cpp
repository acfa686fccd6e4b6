#include <QFileInfo>
#include <QHash>
#include <memory>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentCsv.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/formats/AlignmentTable.h"
#include "tool/formats/ReportPdf.h"
#include "tool/pair/Snapshot.h"

namespace {

/// Nothing if all sites and paths are asked for.
std::optional<Subject> SubjectOrAll(const Arguments& arguments) {
  const bool isOne =
      arguments.options.isSet(QStringLiteral("site")) || arguments.options.isSet(QStringLiteral("path"));
  const bool isAll = arguments.options.isSet(QStringLiteral("all"));
  if (isOne && isAll) throw WrongUsage(QStringLiteral("--all goes with neither --site nor --path"));
  if (!isOne && !isAll) throw WrongUsage(QStringLiteral("--site, --path or --all has to be given"));
  return isAll ? std::nullopt : std::optional(SubjectOf(arguments));
}

std::unique_ptr<AlignmentWriter> MakeWriter(const QString& format, const CsvForm& csv,
                                            const std::optional<Subject>& subject) {
  if (format == QLatin1String("json")) {
    return std::make_unique<AlignmentJsonWriter>(StandardOutput(), AlignmentJson::Uid::Without);
  }
  if (format == QLatin1String("table")) return std::make_unique<AlignmentTableWriter>(StandardOutput());
  const std::optional<Kind> kind = subject ? std::optional(subject->kind) : std::nullopt;
  return std::make_unique<AlignmentCsvWriter>(StandardOutput(), csv, AlignmentColumns::OfReport(kind));
}

/// Those of the site or path asked for, or of all that have any.
std::vector<Reports> ReadReports(const Snapshot& files, const std::optional<Subject>& subject,
                                 const AlignmentFilter& filter) {
  std::vector<Reports> all;
  if (subject) {
    all.push_back(files.ReadOne(subject->kind, subject->identifier));
    files.RequireComplete();
  } else {
    all = files.ReadAll();
  }
  std::vector<Reports> left;
  for (Reports& reports : all) {
    reports.alignments = filter.Apply(reports.alignments);
    if (!reports.alignments.empty()) left.push_back(std::move(reports));
  }
  return left;
}

void RequireWithPdf(const Arguments& arguments, bool isPdf) {
  if (isPdf && arguments.options.isSet(QStringLiteral("format"))) {
    throw WrongUsage(QStringLiteral("--format and --pdf exclude each other"));
  }
  for (const char* option : {"title", "time-zone"}) {
    if (!isPdf && arguments.options.isSet(QLatin1String(option))) {
      throw WrongUsage(QStringLiteral("--") + QLatin1String(option) +
                       QStringLiteral(" goes with --pdf alone"));
    }
  }
}

/// Qt 6.4 takes any word for a zone, as a rule of POSIX without an offset. Qt's own list lacks such as
/// Etc/UTC.
bool IsZone(const QByteArray& name) {
  return QTimeZone::isTimeZoneIdAvailable(name) ||
         QFileInfo(QStringLiteral("/usr/share/zoneinfo/") + QString::fromUtf8(name)).isFile();
}

ReportPdf::Head HeadOf(const Arguments& arguments) {
  ReportPdf::Head head;
  head.title = arguments.options.value(QStringLiteral("title"));
  const QByteArray zone = arguments.options.value(QStringLiteral("time-zone")).toUtf8();
  head.timeZone = QTimeZone(zone);
  if (!head.timeZone.isValid() || !IsZone(zone)) {
    throw WrongUsage(QStringLiteral("--time-zone must be the name of a time zone, such as Europe/Oslo"));
  }
  return head;
}

void AddInstrument(const Snapshot& files, ReportPdf::Head* head) {
  QHash<QString, QVariant> stored;
  for (const auto& column : files.Preferences()) stored.insert(column.first, column.second);
  if (stored.value(QStringLiteral("SerialNumberValid")).toLongLong() != 0) {
    head->serialNumber = stored.value(QStringLiteral("SerialNumber")).toString();
  }
  head->calibrationDate = stored.value(QStringLiteral("CalibrationDate")).toString();
  head->technician = stored.value(QStringLiteral("UserTechId")).toString();
}

int Run(const Arguments& arguments) {
  const std::optional<Subject> subject = SubjectOrAll(arguments);
  const bool isPdf = arguments.options.isSet(QStringLiteral("pdf"));
  RequireWithPdf(arguments, isPdf);
  const QString format =
      FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json"), QStringLiteral("csv")});
  const CsvForm csv = CsvFormOf(arguments, true);
  const AlignmentFilter filter = FilterOf(arguments);
  ReportPdf::Head head = HeadOf(arguments);
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  const std::vector<Reports> all = ReadReports(files, subject, filter);
  if (isPdf) {
    AddInstrument(files, &head);
    ReportPdf::Writer pages(arguments.options.value(QStringLiteral("pdf")), head);
    for (const Reports& reports : all)
      Console::Print(FileName::Shown(pages.Write(reports)) + QLatin1Char('\n'));
    return Status::Done;
  }
  const std::unique_ptr<AlignmentWriter> writer = MakeWriter(format, csv, subject);
  for (const Reports& reports : all) writer->Write(reports);
  writer->End();
  return Status::Done;
}

}  // namespace

Command ReportCommand() {
  return {
      "report",
      "Prints reports of a site, a path or all, or draws them on pages.",
      {"MAIN", "[THRESHOLDS]"},
      Together(
          {{SiteOption(), PathOption(),
            QCommandLineOption(QStringLiteral("all"), QStringLiteral("Every site and path."))},
           FilterOptions(),
           {ValueOption("format", "table (the default), json or csv.", "FORMAT", "table")},
           CsvOptions(),
           {ValueOption(
                "pdf",
                "Write PDF pages into this folder, a file for each site or path, and print their names.",
                "FOLDER"),
            ValueOption("title", "A line at the head of the pages.", "TEXT"),
            ValueOption("time-zone", "Times on the pages are of this zone (UTC by default).", "ID", "UTC")}}),
      false,
      Run};
}
