#include "tool/pair/Backup.h"

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"

namespace {

int Run(const Arguments& arguments) {
  const QString& folder = arguments.operands.last();
  const QString thresholds = arguments.operands.size() > 2 ? arguments.operands.at(1) : QString();
  Backup::Make(arguments.operands.first(), thresholds, folder, arguments.Waiting(),
               [&folder](const Backup::Summary& summary) {
                 Console::Print(QStringLiteral("backed up ") +
                                Console::Counted(summary.alignments, QStringLiteral("alignment")) +
                                QStringLiteral(" of version ") + QString::number(summary.version) +
                                QStringLiteral(" to ") + FileName::Shown(folder) + QLatin1Char('\n'));
                 Console::Flush();
               });
  return Status::Done;
}

}  // namespace

Command BackupCommand() {
  return {"backup",
          "Copies the files as they are at one moment into a new folder, with a manifest to check them by.",
          {"MAIN", "[THRESHOLDS]", "FOLDER"},
          {},
          true,
          Run};
}
