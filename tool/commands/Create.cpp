#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/pair/Creation.h"

namespace {

int Run(const Arguments& arguments) {
  QString lines;
  for (const QString& created :
       CreateMissing(arguments.operands.at(0), arguments.operands.at(1), arguments.Waiting())) {
    lines += QStringLiteral("created ") + created + QLatin1Char('\n');
  }
  Console::Print(lines);
  return Status::Done;
}

}  // namespace

Command CreateCommand() {
  return {
      "create", "Makes the two files, or the one of them that is missing.", {"MAIN", "THRESHOLDS"}, {}, true,
      Run};
}
