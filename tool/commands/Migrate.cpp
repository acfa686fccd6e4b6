#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/pair/Migration.h"

namespace {

int Run(const Arguments& arguments) {
  Migration::Choices choices;
  const QString backup = QStringLiteral("backup");
  choices.backup = arguments.options.value(backup);
  if (arguments.options.isSet(backup) && choices.backup.isEmpty()) {
    throw WrongUsage(QStringLiteral("--backup must name a file"));
  }
  choices.acceptLosses = arguments.options.isSet(QStringLiteral("accept-losses"));
  Migration::Run(arguments.operands.at(0), arguments.operands.value(1), choices, arguments.Waiting());
  return Status::Done;
}

}  // namespace

Command MigrateCommand() {
  return {"migrate",
          "Brings a main file of an earlier version to the current one, and makes its thresholds file.",
          {"MAIN", "[THRESHOLDS]"},
          {ValueOption("backup", "Copy the file here first.", "FILE"),
           QCommandLineOption(QStringLiteral("accept-losses"),
                              QStringLiteral("Go on without what the conversion cannot carry over."))},
          true,
          Run};
}
