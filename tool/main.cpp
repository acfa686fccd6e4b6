// tarnbeam-db: makes, fills, reads, checks and migrates the library's database files.
#include <QtGlobal>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif
#include <algorithm>
#include <clocale>
#include <csignal>
#include <exception>
#include <iterator>
#include <memory>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Commands.h"
#include "tool/formats/ReportPdf.h"
#include "tool/pair/QuietVfs.h"

namespace {

/// The library writes texts, and opens files, in the local encoding, and reads texts back as UTF-8. The two
/// agree only in a UTF-8 locale, so in any other, such as the C locale of a service, UTF-8 is set.
void UseUtf8() {
  std::setlocale(LC_ALL, "");
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
  constexpr int utf8Mib = 106;
  if (QTextCodec::codecForLocale()->mibEnum() != utf8Mib) {
    QTextCodec::setCodecForLocale(QTextCodec::codecForMib(utf8Mib));
  }
#endif
}

/// The library's debug lines are for --verbose; nothing depends on them.
void ShowLine(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& line) {
  Console::Message(Console::Printable(line));
}

void HideLine(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& /*line*/) {}

QString Overview() {
  QString text = QStringLiteral("Usage: tarnbeam-db COMMAND [operands] [options]\n\nCommands:\n");
  for (const Command& command : AllCommands()) {
    text += QStringLiteral("  ") + Console::Padded(QLatin1String(command.name), 13) +
            QLatin1String(command.summary) + QLatin1Char('\n');
  }
  return text + QStringLiteral(
                    "\n'tarnbeam-db COMMAND --help' tells of one command, 'tarnbeam-db --version' of the "
                    "program.\nExit status: 0 done, 1 failed, 2 wrong usage, 3 a file is in use, "
                    "4 a file is damaged or of another kind.\n");
}

const Command& FindCommand(const QString& name) {
  const auto& commands = AllCommands();
  const auto found = std::find_if(commands.begin(), commands.end(), [&name](const Command& command) {
    return name == QLatin1String(command.name);
  });
  if (found == commands.end())
    throw WrongUsage(QStringLiteral("there is no command ") + Console::Printable(name));
  return *found;
}

void RequireOperands(const Command& command, const QStringList& operands) {
  std::vector<const char*> required;
  std::copy_if(command.operands.begin(), command.operands.end(), std::back_inserter(required),
               [](const char* operand) { return *operand != '[' && qstrcmp(operand, andSoOn) != 0; });
  const auto given = static_cast<std::size_t>(operands.size());
  if (given < required.size()) {
    throw WrongUsage(QStringLiteral("%1 is missing").arg(QLatin1String(required.at(given))));
  }
  if (given > command.operands.size() && qstrcmp(command.operands.back(), andSoOn) != 0) {
    throw WrongUsage(FileName::Shown(operands.last()) + QStringLiteral(" is one too many"));
  }
  // A variable of a script that was never set is no choice to leave a file out.
  const auto empty = operands.indexOf(QString());
  if (empty >= 0) throw WrongUsage(QStringLiteral("operand %1 is empty").arg(empty + 1));
}

QString HelpText(const Command& command, const QCommandLineParser& parser) {
  // The parser writes the path by which the program was called; the name is enough.
  QString text = parser.helpText();
  const auto end = text.indexOf(QLatin1Char('\n'));
  QString usage = QStringLiteral("Usage: tarnbeam-db %1").arg(QLatin1String(command.name));
  for (const char* operand : command.operands) usage += QLatin1Char(' ') + QLatin1String(operand);
  return usage + QStringLiteral(" [options]") + text.mid(end);
}

int RunCommand(const Command& command, const QStringList& words) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QLatin1String(command.summary));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                QStringLiteral("Show this help."));
  const QCommandLineOption verbose(QStringLiteral("verbose"),
                                   QStringLiteral("Show the library's debug lines."));
  parser.addOptions({help, verbose, WaitOption()});
  for (const QCommandLineOption& option : command.options) parser.addOption(option);
  if (!parser.parse(words)) throw WrongUsage(Console::Printable(parser.errorText()));
  if (parser.isSet(help)) {
    Console::Print(HelpText(command, parser));
    return Status::Done;
  }
  qInstallMessageHandler(parser.isSet(verbose) ? ShowLine : HideLine);
  RequireOperands(command, parser.positionalArguments());
  if (command.changes) Console::KeepPrinted();
  return command.run({parser.positionalArguments(), parser});
}

int Run(const QStringList& words) {
  const QString first = words.value(1);
  if (first.isEmpty()) throw WrongUsage(QStringLiteral("a command has to be given"));
  if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
    Console::Print(Overview());
    return Status::Done;
  }
  if (first == QLatin1String("--version") || first == QLatin1String("-v")) {
    Console::Print(QStringLiteral("tarnbeam-db " TARNBEAM_VERSION "\n"));
    return Status::Done;
  }
  return RunCommand(FindCommand(first), words.mid(1));
}

/// What a changing command has done is done, whether or not standard output takes it.
void FlushOrSay() {
  try {
    Console::Flush();
  } catch (const Failure& failure) {
    if (Console::Printed().isEmpty()) throw;
    Console::Message(QString::fromUtf8(failure.what()) + QStringLiteral("; this was done:\n") +
                     Console::Printed().trimmed());
  }
}

/// The exit status; what was thrown is on standard error.
int Report(const QStringList& words) {
  try {
    const int status = Run(words);
    FlushOrSay();
    return status;
  } catch (const WrongUsage& wrong) {
    Console::Message(QString::fromUtf8(wrong.what()) +
                     QStringLiteral("\nTry 'tarnbeam-db --help' or 'tarnbeam-db COMMAND --help'."));
    return Status::Misused;
  } catch (const Failure& failure) {
    Console::Message(QString::fromUtf8(failure.what()));
    return failure.ExitStatus();
  } catch (const std::exception& failure) {
    Console::Message(QString::fromUtf8(failure.what()));
    return Status::Failed;
  }
}

/// Not as Qt decodes them, which loses what is not text.
QStringList Words(int argc, char** argv) {
  QStringList words;
  for (int number = 0; number < argc; ++number) words.append(FileName::FromBytes(argv[number]));
  return words;
}

}  // namespace

int main(int argc, char** argv) {
  Console::OccupyStandardStreams();
  // A reader that goes away is told of by the exit status, and must not end a change half way.
  std::signal(SIGPIPE, SIG_IGN);
  UseUtf8();
  QuietVfs::Install();
  qInstallMessageHandler(HideLine);
  const QStringList words = Words(argc, argv);
  const std::unique_ptr<QCoreApplication> application = ReportPdf::MakeApplication(argc, argv);
  return Report(words);
}
