#include "tool/pair/Salvage.h"

#include "tool/Console.h"
#include "tool/commands/Options.h"

namespace {

int Run(const Arguments& arguments) {
  QStringList names = arguments.operands;
  Salvage::Files files;
  files.newThresholds = names.takeLast();
  files.newMain = names.takeLast();
  files.main = names.first();
  files.thresholds = names.value(1);
  Console::Print(Salvage::Run(files, arguments.Waiting()));
  return Status::Done;
}

}  // namespace

Command SalvageCommand() {
  return {"salvage",
          "Reads what can be read of damaged files into a new pair, and tells what was lost.",
          {"MAIN", "[THRESHOLDS]", "NEW_MAIN", "NEW_THRESHOLDS"},
          {},
          true,
          Run};
}
