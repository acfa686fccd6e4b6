#include "tool/commands/Commands.h"

#include "tool/Console.h"
#include "tool/commands/Options.h"

namespace {

constexpr int LongestWait = 86'400;

}  // namespace

Deadline Arguments::Waiting() const {
  bool isNumber = false;
  const int seconds = options.value(QStringLiteral("wait")).toInt(&isNumber);
  if (!isNumber || seconds < 0 || seconds > LongestWait) {
    throw WrongUsage(QStringLiteral("--wait must be a whole number of seconds, at most ") +
                     QString::number(LongestWait));
  }
  return Deadline(seconds);
}

QCommandLineOption WaitOption() {
  return ValueOption("wait", "Wait so long for files that another program has in use (2 by default).",
                     "SECONDS", "2");
}

const std::vector<Command>& AllCommands() {
  static const std::vector<Command> commands = {
      CreateCommand(),      ImportCommand(),  ListCommand(),    ReportCommand(), DeleteCommand(),
      MapCommand(),         VersionCommand(), MigrateCommand(), CheckCommand(),  ExportCommand(),
      PreferencesCommand(), BackupCommand(),  RestoreCommand(), RepairCommand(), SalvageCommand(),
      MergeCommand(),       DiffCommand()};
  return commands;
}
