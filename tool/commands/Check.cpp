#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/pair/FileCheck.h"
#include "tool/pair/Snapshot.h"

namespace {

QString SeverityName(Finding::Severity severity) {
  switch (severity) {
    case Finding::Severity::Note:
      return QStringLiteral("note");
    case Finding::Severity::Warning:
      return QStringLiteral("warning");
    case Finding::Severity::Error:
      return QStringLiteral("error");
    case Finding::Severity::Skipped:
      return QStringLiteral("skipped");
    case Finding::Severity::None:
      break;
  }
  return QStringLiteral("ok");
}

QString Line(const Finding& finding) {
  QString severity = SeverityName(finding.severity);
  if (finding.severity == Finding::Severity::Warning || finding.severity == Finding::Severity::Error) {
    severity = severity.toUpper();
  }
  QString line = Console::Padded(severity, 9) + finding.rule + QStringLiteral(" in ") + finding.shownFile +
                 QStringLiteral(": ");
  if (finding.severity == Finding::Severity::None) return line + QStringLiteral("none\n");
  QStringList keys = finding.keys;
  if (finding.count > keys.size()) keys.append(QStringLiteral("..."));
  return line + QString::number(finding.count) + QStringLiteral(" (") +
         Console::Printable(keys.join(QStringLiteral(", "))) + QStringLiteral(")\n");
}

QString Table(const FileCheck& check) {
  QString lines;
  for (const Finding& finding : check.Findings()) lines += Line(finding);
  return lines;
}

QString Json(const FileCheck& check) {
  QJsonArray findings;
  for (const Finding& finding : check.Findings()) {
    if (finding.severity < Finding::Severity::Note) continue;
    findings.append(QJsonObject{
        {QStringLiteral("file"), finding.inMain ? QStringLiteral("main") : QStringLiteral("thresholds")},
        {QStringLiteral("rule"), finding.rule},
        {QStringLiteral("severity"), SeverityName(finding.severity)},
        {QStringLiteral("count"), finding.count},
        {QStringLiteral("keys"), QJsonArray::fromStringList(finding.keys)}});
  }
  const QJsonObject document{{QStringLiteral("version"), check.Version()},
                             {QStringLiteral("findings"), findings}};
  return QString::fromUtf8(QJsonDocument(document).toJson());
}

int Run(const Arguments& arguments) {
  const QString format = FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json")});
  Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting(),
                 Snapshot::Look::AsItIs);
  const FileCheck check(&files.Files());
  files.Files().RequireOperandsOf(check.Version());
  Console::Print(format == QLatin1String("json") ? Json(check) : Table(check));
  const bool strict = arguments.options.isSet(QStringLiteral("strict"));
  const auto bad = strict ? Finding::Severity::Warning : Finding::Severity::Error;
  return check.Worst() >= bad ? Status::Damaged : Status::Done;
}

}  // namespace

Command CheckCommand() {
  return {"check",
          "Looks both files over, changing neither. Files before version 7 have no thresholds file.",
          {"MAIN", "[THRESHOLDS]"},
          {ValueOption("format", "table (the default) or json.", "FORMAT", "table"),
           QCommandLineOption(QStringLiteral("strict"), QStringLiteral("Exit status 4 for warnings too."))},
          false,
          Run};
}
