#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/commands/Progress.h"
#include "tool/formats/MergePlan.h"
#include "tool/pair/Edit.h"
#include "tool/pair/Operands.h"
#include "tool/pair/Saving.h"
#include "tool/pair/Snapshot.h"

namespace {

struct Source {
  QString shown;
  std::vector<Alignment> alignments;
};

/// All sources are read before the target is locked.
std::vector<Source> ReadSources(const Arguments& arguments) {
  std::vector<Source> sources;
  for (const PairNames& names : PairsOf(arguments.operands.mid(2), arguments.Waiting())) {
    const Snapshot files(names.mainName, names.thresholdsName, arguments.Waiting());
    // The thresholds of another pair would be silently lost.
    files.Files().RequireBelonging();
    sources.push_back({files.Files().ShownMain(), files.ReadWhole()});
  }
  return sources;
}

QString ConflictLine(const Source& source, const Alignment& alignment, const MergePlan::Step& step) {
  return QStringLiteral("conflict: ") + ShownMatch(alignment) + QStringLiteral(" of ") + source.shown +
         QStringLiteral(" differs in ") + step.conflict.join(QStringLiteral(", ")) +
         (step.isAdded ? QStringLiteral(" from one that is there; both are kept\n")
                       : QStringLiteral(" from the one that is there, which stays\n"));
}

struct Merged {
  /// What is to be printed about it.
  QString lines;
  bool changes;
};

Merged MergeInto(const PrivatePair& target, const std::vector<Source>& sources) {
  MergePlan plan(Snapshot::ReadAllOf(target));
  std::size_t total = 0;
  for (const Source& source : sources) total += source.alignments.size();
  Progress progress(total);
  Saving saving(target);
  QString lines;
  std::size_t done = 0;
  for (const Source& source : sources) {
    for (const Alignment& alignment : source.alignments) {
      const MergePlan::Step step = plan.Take(alignment);
      if (!step.conflict.isEmpty()) lines += ConflictLine(source, alignment, step);
      if (step.isAdded) saving.Save(alignment, source.shown + QStringLiteral(": ") + ShownMatch(alignment));
      progress.Saved(++done);
    }
  }
  saving.RequireAllKept();
  lines += QStringLiteral("%1 added, %2 already there, %3 conflicts\n")
               .arg(plan.Added())
               .arg(plan.There())
               .arg(plan.Conflicts());
  return {lines, plan.Added() > 0};
}

int Run(const Arguments& arguments) {
  const std::vector<Source> sources = ReadSources(arguments);
  const QString& mainName = arguments.operands.at(0);
  const QString& thresholdsName = arguments.operands.at(1);
  if (arguments.options.isSet(QStringLiteral("dry-run"))) {
    Snapshot target(mainName, thresholdsName, arguments.Waiting(), Snapshot::Look::AsItIs);
    target.Files().RequireCurrentPair();
    Console::Print(MergeInto(target.Files(), sources).lines);
    // Nothing was done that would have to be repeated elsewhere.
    Console::Flush();
    return Status::Done;
  }
  Edit edit(mainName, thresholdsName, arguments.Waiting());
  const Merged merged = MergeInto(edit.Copies(), sources);
  if (merged.changes) edit.Commit();
  Console::Print(merged.lines);
  return Status::Done;
}

}  // namespace

Command MergeCommand() {
  return {
      "merge",
      "Adds the alignments of other pairs that are not there yet, of all or, if anything goes wrong, none.",
      {"MAIN", "THRESHOLDS", "SOURCE_MAIN", "[SOURCE_THRESHOLDS]", andSoOn},
      {QCommandLineOption(QStringLiteral("dry-run"), QStringLiteral("Say the same, and change nothing."))},
      true,
      Run};
}
