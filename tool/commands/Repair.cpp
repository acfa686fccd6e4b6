#include "tool/pair/Repair.h"

#include <memory>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/Replacement.h"
#include "tool/pair/Snapshot.h"

namespace {

QString Line(const Repair::Deed& deed, bool isDone) {
  if (deed.rule.isEmpty()) {
    return (isDone ? QStringLiteral("rebuilt the indices of ")
                   : QStringLiteral("would rebuild the indices of ")) +
           deed.shownFile + QLatin1Char('\n');
  }
  return (isDone ? QStringLiteral("removed from ") : QStringLiteral("would remove from ")) + deed.shownFile +
         QStringLiteral(": ") + QString::number(deed.rows) + QStringLiteral(" (") + deed.rule +
         QStringLiteral(")\n");
}

QString Lines(const std::vector<Repair::Deed>& deeds, const PrivatePair& files, bool isDone) {
  if (deeds.empty()) {
    return QStringLiteral("nothing to repair in ") + files.ShownMain() + QStringLiteral(" and ") +
           files.ShownThresholds() + QLatin1Char('\n');
  }
  QString lines;
  for (const Repair::Deed& deed : deeds) lines += Line(deed, isDone);
  return lines;
}

/// Copies of both files beside them, under names that are free.
class Copies {
 public:
  Copies(const PrivatePair& originals, const QString& mainName, const QString& thresholdsName) {
    QString suffix;
    int number = 0;
    do {
      suffix = QStringLiteral(".before-repair-") + QString::number(++number);
    } while (FileExists(mainName + suffix) || FileExists(thresholdsName + suffix));
    files_.push_back(std::make_unique<NewFile>(originals.FreshMainPath(), mainName + suffix));
    files_.push_back(std::make_unique<NewFile>(originals.FreshThresholdsPath(), thresholdsName + suffix));
  }
  QString Place() {
    QString lines;
    for (const auto& file : files_) {
      file->Place();
      lines += QStringLiteral("copied to ") + file->Shown() + QLatin1Char('\n');
    }
    return lines;
  }
  void TakeBack() {
    for (const auto& file : files_) file->TakeBack();
  }

 private:
  std::vector<std::unique_ptr<NewFile>> files_;
};

void DryRun(const QString& mainName, const QString& thresholdsName, const Deadline& deadline) {
  Snapshot files(mainName, thresholdsName, deadline, Snapshot::Look::AsItIs);
  Console::Print(Lines(Repair::Perform(&files.Files()), files.Files(), false));
  // Nothing was done that would have to be repeated elsewhere.
  Console::Flush();
}

void RunOn(const QString& mainName, const QString& thresholdsName, const Deadline& deadline) {
  for (const QString& name : {mainName, thresholdsName}) {
    if (!FileExists(name)) throw Failure(FileName::Shown(name) + QStringLiteral(": no such file"));
  }
  PrivatePair files(FileName::Shown(mainName), FileName::Shown(thresholdsName));
  Replacement replacement(mainName, thresholdsName, deadline);
  replacement.CopyTo(files.MainPath(), files.ThresholdsPath());
  const std::vector<Repair::Deed> deeds = Repair::Perform(&files);
  QString lines;
  if (!deeds.empty()) {
    replacement.CopyTo(files.FreshMainPath(), files.FreshThresholdsPath());
    Copies copies(files, mainName, thresholdsName);
    try {
      lines = copies.Place();
      replacement.Commit(files);
    } catch (...) {
      copies.TakeBack();
      throw;
    }
  }
  Console::Print(lines + Lines(deeds, files, true));
}

int Run(const Arguments& arguments) {
  const bool isDry = arguments.options.isSet(QStringLiteral("dry-run"));
  (isDry ? DryRun : RunOn)(arguments.operands.at(0), arguments.operands.at(1), arguments.Waiting());
  return Status::Done;
}

}  // namespace

Command RepairCommand() {
  return {"repair",
          "Removes rows that belong to nothing and rebuilds damaged indices, after copying both files.",
          {"MAIN", "THRESHOLDS"},
          {QCommandLineOption(QStringLiteral("dry-run"),
                              QStringLiteral("Say what would be done, and do nothing."))},
          true,
          Run};
}
