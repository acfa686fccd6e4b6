#include "tool/commands/Options.h"

#include <algorithm>

#include "tool/Console.h"

QCommandLineOption ValueOption(const char* name, const char* description, const char* valueName,
                               const char* byDefault) {
  return {QString::fromUtf8(name), QString::fromUtf8(description), QString::fromUtf8(valueName),
          QString::fromUtf8(byDefault)};
}

QCommandLineOption SiteOption() { return ValueOption("site", "The site with this identifier.", "ID"); }

QCommandLineOption PathOption() { return ValueOption("path", "The path with this identifier.", "ID"); }

Subject SubjectOf(const Arguments& arguments) {
  const bool site = arguments.options.isSet(QStringLiteral("site"));
  if (site == arguments.options.isSet(QStringLiteral("path"))) {
    throw WrongUsage(QStringLiteral("either --site or --path has to be given"));
  }
  const Kind kind = site ? Kind::Site : Kind::Path;
  return {kind, arguments.options.value(KindName(kind))};
}

QString FormatOf(const Arguments& arguments, const QStringList& allowed) {
  QString format = arguments.options.value(QStringLiteral("format"));
  if (!allowed.contains(format)) {
    throw WrongUsage(QStringLiteral("--format must be ") +
                     QStringList(allowed.mid(0, allowed.size() - 1)).join(QStringLiteral(", ")) +
                     QStringLiteral(" or ") + allowed.last());
  }
  return format;
}

std::vector<QCommandLineOption> FilterOptions() {
  return {ValueOption(
              "since",
              "Measured then or later: a date, or a date and time (ISO 8601, UTC unless it has an offset).",
              "TIME"),
          ValueOption("until", "Measured before that; a date alone includes that day.", "TIME"),
          ValueOption("sector", "Of this sector; paths have none.", "NAME"),
          QCommandLineOption(QStringLiteral("latest"),
                             QStringLiteral("Of what is left, the newest measurement of each antenna.")),
          QCommandLineOption(QStringLiteral("failed"),
                             QStringLiteral("Of what is left, what is beyond a threshold."))};
}

namespace {

std::optional<QDateTime> MomentOf(const Arguments& arguments, const char* option, bool pastDate) {
  const QString name = QString::fromLatin1(option);
  if (!arguments.options.isSet(name)) return {};
  std::optional<QDateTime> moment = ReadMoment(arguments.options.value(name), pastDate);
  if (!moment) {
    throw WrongUsage(QStringLiteral("--") + name +
                     QStringLiteral(" must be a date such as 2024-05-14, or a date and time such as "
                                    "2024-05-14T09:12:33+02:00"));
  }
  return moment;
}

}  // namespace

AlignmentFilter FilterOf(const Arguments& arguments) {
  AlignmentFilter filter;
  filter.since = MomentOf(arguments, "since", false);
  filter.until = MomentOf(arguments, "until", true);
  if (arguments.options.isSet(QStringLiteral("sector"))) {
    filter.sector = arguments.options.value(QStringLiteral("sector"));
  }
  filter.latest = arguments.options.isSet(QStringLiteral("latest"));
  filter.failed = arguments.options.isSet(QStringLiteral("failed"));
  return filter;
}

bool HasFilter(const Arguments& arguments) {
  const std::vector<QCommandLineOption> options = FilterOptions();
  return std::any_of(options.begin(), options.end(), [&arguments](const QCommandLineOption& option) {
    return arguments.options.isSet(option);
  });
}

std::vector<QCommandLineOption> CsvOptions() {
  return {
      ValueOption("separator", "Between the cells of csv (a comma by default).", "CHAR", ","),
      QCommandLineOption(QStringLiteral("bom"),
                         QStringLiteral("Begin csv with a byte-order mark, as some spreadsheets want it."))};
}

CsvForm CsvFormOf(const Arguments& arguments, bool guardsFormulas) {
  const bool isCsv = arguments.options.value(QStringLiteral("format")) == QLatin1String("csv");
  for (const char* option : {"separator", "bom"}) {
    if (!isCsv && arguments.options.isSet(QLatin1String(option))) {
      throw WrongUsage(QStringLiteral("--") + QLatin1String(option) +
                       QStringLiteral(" goes with --format csv alone"));
    }
  }
  const QString separator = arguments.options.value(QStringLiteral("separator"));
  if (separator.size() != 1 || QStringLiteral("\"\r\n").contains(separator) ||
      separator.at(0).isSurrogate()) {
    throw WrongUsage(QStringLiteral("--separator must be one character, and no quote or line end"));
  }
  return {separator.at(0), arguments.options.isSet(QStringLiteral("bom")), guardsFormulas};
}

std::vector<QCommandLineOption> Together(std::initializer_list<std::vector<QCommandLineOption>> options) {
  std::vector<QCommandLineOption> all;
  for (const std::vector<QCommandLineOption>& some : options) all.insert(all.end(), some.begin(), some.end());
  return all;
}

void Confirm(const Arguments& arguments, const QString& what, const QString& question,
             const QString& nothingDone) {
  Console::Message(what);
  if (arguments.options.isSet(QStringLiteral("yes"))) return;
  if (!Console::CanAsk()) {
    throw Failure(nothingDone + QStringLiteral(": without a terminal to ask on, --yes has to be given"));
  }
  if (!Console::Confirm(question)) throw Failure(nothingDone);
}

TextSink StandardOutput() { return Console::PrintBytes; }
