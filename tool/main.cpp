// tarnbeam-db: makes, fills, reads, checks and migrates the library's database files.
#include <sys/resource.h>

#include <QTextCodec>
#include <algorithm>
#include <clocale>
#include <exception>
#include <memory>

#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/LibraryLog.h"
#include "tool/ReportPdf.h"

namespace {

constexpr int Done = 0;
constexpr int Failed = 1;
constexpr int Misused = 2;

/// The library writes texts, and opens files, by the local encoding, and reads texts back as UTF-8. The two
/// agree in a UTF-8 locale alone, so in any other, the C locale of a service for one, UTF-8 is set.
void UseUtf8() {
  std::setlocale(LC_ALL, "");
  constexpr int Utf8Mib = 106;
  if (QTextCodec::codecForLocale()->mibEnum() != Utf8Mib) {
    QTextCodec::setCodecForLocale(QTextCodec::codecForMib(Utf8Mib));
  }
}

/// Reading the reports of a path leaves its connections open, so many paths need many descriptors.
void AllowManyOpenFiles() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
}

QString Overview() {
  QString text = QStringLiteral("Usage: tarnbeam-db COMMAND [operands] [options]\n\nCommands:\n");
  for (const Command& command : AllCommands()) {
    text += QStringLiteral("  ") + Console::Padded(QLatin1String(command.name), 13) +
            QLatin1String(command.summary) + QLatin1Char('\n');
  }
  return text + QStringLiteral(
                    "\n'tarnbeam-db COMMAND --help' tells of one command, 'tarnbeam-db --version' of the "
                    "program.\nExit status: 0 done, 1 failed, 2 wrong usage.\n");
}

const Command& FindCommand(const QString& name) {
  const auto& commands = AllCommands();
  const auto found = std::find_if(commands.begin(), commands.end(), [&name](const Command& command) {
    return name == QLatin1String(command.name);
  });
  if (found == commands.end()) throw WrongUsage(QStringLiteral("there is no command %1").arg(name));
  return *found;
}

void RequireOperands(const Command& command, const QStringList& operands) {
  const auto required = std::count_if(command.operands.begin(), command.operands.end(),
                                      [](const char* operand) { return *operand != '['; });
  if (operands.size() < required) {
    throw WrongUsage(QStringLiteral("%1 is missing")
                         .arg(QLatin1String(command.operands.at(static_cast<std::size_t>(operands.size())))));
  }
  if (operands.size() > static_cast<int>(command.operands.size())) {
    throw WrongUsage(QStringLiteral("%1 is one too many").arg(operands.last()));
  }
}

QString HelpText(const Command& command, const QCommandLineParser& parser) {
  // The parser writes the path by which the program was called; the name is enough.
  QString text = parser.helpText();
  const int end = text.indexOf(QLatin1Char('\n'));
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
  parser.addOptions({help, verbose});
  for (const QCommandLineOption& option : command.options) parser.addOption(option);
  if (!parser.parse(words)) throw WrongUsage(parser.errorText());
  if (parser.isSet(help)) {
    Console::Print(HelpText(command, parser));
    return Done;
  }
  LibraryLog::SetVerbose(parser.isSet(verbose));
  RequireOperands(command, parser.positionalArguments());
  return command.run({parser.positionalArguments(), parser});
}

int Run(const QStringList& words) {
  const QString first = words.value(1);
  if (first.isEmpty()) throw WrongUsage(QStringLiteral("a command has to be given"));
  if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
    Console::Print(Overview());
    return Done;
  }
  if (first == QLatin1String("--version") || first == QLatin1String("-v")) {
    Console::Print(QStringLiteral("tarnbeam-db " TARNBEAM_VERSION "\n"));
    return Done;
  }
  return RunCommand(FindCommand(first), words.mid(1));
}

/// The exit status; what was thrown is on standard error.
int Report(const QStringList& words) {
  try {
    const int status = Run(words);
    Console::Flush();
    return status;
  } catch (const WrongUsage& wrong) {
    Console::Message(QString::fromUtf8(wrong.what()) +
                     QStringLiteral("\nTry 'tarnbeam-db --help' or 'tarnbeam-db COMMAND --help'."));
    return Misused;
  } catch (const std::exception& failure) {
    Console::Message(QString::fromUtf8(failure.what()));
    return Failed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  UseUtf8();
  AllowManyOpenFiles();
  LibraryLog::Install();
  const std::unique_ptr<QCoreApplication> application = ReportPdf::MakeApplication(argc, argv);
  return Report(QCoreApplication::arguments());
}
