#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/pair/Deletion.h"
#include "tool/pair/Snapshot.h"

namespace {

constexpr int allReports = -1;
const QString question = QStringLiteral("Delete?");
const QString nothingDone = QStringLiteral("nothing was deleted");

int IndexOf(const Arguments& arguments) {
  if (!arguments.options.isSet(QStringLiteral("index"))) return allReports;
  bool isNumber = false;
  const int index = arguments.options.value(QStringLiteral("index")).toInt(&isNumber);
  if (!isNumber || index < 0) throw WrongUsage(QStringLiteral("--index must be a number from 0"));
  return index;
}

QString DescribeAll(const Reports& reports) {
  return ShownSubject(reports.kind, reports.identifier) + QStringLiteral(" and ") +
         Console::Counted(static_cast<qint64>(reports.alignments.size()), QStringLiteral("report"));
}

const Alignment& ReportAt(const Reports& reports, int index) {
  const auto count = static_cast<qint64>(reports.alignments.size());
  if (index < count) return reports.alignments.at(static_cast<std::size_t>(index));
  throw Failure(ShownSubject(reports.kind, reports.identifier) + QStringLiteral(" has ") +
                Console::Counted(count, QStringLiteral("report")) +
                QStringLiteral(", numbered from 0: there is none at ") + QString::number(index));
}

int Run(const Arguments& arguments) {
  const Subject subject = SubjectOf(arguments);
  const int index = IndexOf(arguments);
  const QString& mainName = arguments.operands.at(0);
  const QString& thresholdsName = arguments.operands.at(1);
  QString done;
  std::optional<Deletion> deletion;
  {
    const Snapshot files(mainName, thresholdsName, arguments.Waiting());
    files.Files().RequireBelonging();
    const Reports reports = files.ReadOne(subject.kind, subject.identifier);
    if (index == allReports) {
      const QString sectors = reports.kind == Kind::Site ? QStringLiteral(" in all its sectors") : QString();
      Confirm(arguments, DescribeAll(reports) + sectors + QStringLiteral(" will be deleted"), question,
              nothingDone);
      done = QStringLiteral("deleted ") + DescribeAll(reports);
      deletion.emplace(files, subject.kind, subject.identifier, std::nullopt);
    } else {
      const Alignment& report = ReportAt(reports, index);
      const QString shown = ShownSubject(reports.kind, reports.identifier);
      Confirm(arguments,
              QStringLiteral("1 report of ") + shown + QStringLiteral(" will be deleted: ") +
                  report.time.toUTC().toString(Qt::ISODate) + QStringLiteral(", of ") +
                  QString::number(reports.alignments.size()) + QStringLiteral(" that there are"),
              question, nothingDone);
      done = QStringLiteral("deleted report ") + QString::number(index) + QStringLiteral(" of ") + shown;
      deletion.emplace(files, subject.kind, subject.identifier, report.key);
    }
  }
  Edit edit(mainName, thresholdsName, arguments.Waiting());
  deletion->Perform(&edit);
  edit.Commit();
  Console::Print(done + QLatin1Char('\n'));
  return Status::Done;
}

}  // namespace

Command DeleteCommand() {
  return {"delete",
          "Deletes a site or path with all its reports, or one report.",
          {"MAIN", "THRESHOLDS"},
          {SiteOption(), PathOption(),
           ValueOption("index", "Only the report with this number in the table of 'report'.", "N"),
           QCommandLineOption(QStringLiteral("yes"), QStringLiteral("Do not ask."))},
          true,
          Run};
}
