#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/pair/Backup.h"
#include "tool/pair/Replacement.h"

namespace {

const QString nothingDone = QStringLiteral("nothing was restored");

/// Asks about the files that are there; answers what they were when they were shown.
std::vector<Stamp> Ask(const Arguments& arguments, const QStringList& names, const QString& backup) {
  QStringList existing;
  std::vector<Stamp> stamps;
  for (const QString& name : names) {
    Replacement::FinishChange(name);
    stamps.emplace_back(FileName::ToBytes(name));
    if (stamps.back().there) existing.append(FileName::Shown(name));
  }
  if (!existing.isEmpty()) {
    Confirm(arguments,
            existing.join(QStringLiteral(" and ")) + QStringLiteral(" will be replaced by ") + backup,
            QStringLiteral("Replace?"), nothingDone);
  }
  return stamps;
}

void RequireUnchanged(const QStringList& names, const std::vector<Stamp>& shown) {
  for (std::size_t number = 0; number < shown.size(); ++number) {
    const QString& name = names.at(int(number));
    if (Stamp(FileName::ToBytes(name)) == shown.at(number)) continue;
    throw Failure(FileName::Shown(name) + QStringLiteral(": was changed meanwhile by another program; ") +
                  nothingDone);
  }
}

int Run(const Arguments& arguments) {
  const QString& folder = arguments.operands.first();
  const QStringList names = arguments.operands.mid(1);
  const Backup::Checked backup(folder, names.size() > 1);
  const QString what = Console::Counted(backup.Said().alignments, QStringLiteral("alignment")) +
                       QStringLiteral(" of version ") + QString::number(backup.Said().version) +
                       QStringLiteral(" from ") + FileName::Shown(folder) + QStringLiteral(" of ") +
                       backup.Said().time.toString(Qt::ISODate);
  const std::vector<Stamp> shown = Ask(arguments, names, what);
  Replacement files(names.first(), names.value(1), arguments.Waiting());
  if (!arguments.options.isSet(QStringLiteral("yes"))) RequireUnchanged(names, shown);
  files.Commit(backup.Files());
  Console::Print(QStringLiteral("restored ") + what + QLatin1Char('\n'));
  return Status::Done;
}

}  // namespace

Command RestoreCommand() {
  return {
      "restore",
      "Puts the files of a backup in their place, once every byte of it was checked.",
      {"FOLDER", "MAIN", "[THRESHOLDS]"},
      {QCommandLineOption(QStringLiteral("yes"), QStringLiteral("Do not ask before files are replaced."))},
      true,
      Run};
}
