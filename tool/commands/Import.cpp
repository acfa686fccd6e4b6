#include <QSet>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/commands/Progress.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/formats/AlignmentUid.h"
#include "tool/pair/Edit.h"
#include "tool/pair/Saving.h"
#include "tool/pair/Snapshot.h"

namespace {

/// Which of the alignments are saved: all, or those whose uid neither the files nor an earlier alignment
/// has.
class Choice {
 public:
  Choice(const PrivatePair& files, bool skipsExisting) : skipsExisting_(skipsExisting) {
    if (!skipsExisting) return;
    for (const Reports& reports : Snapshot::ReadAllOf(files)) {
      for (const Alignment& alignment : reports.alignments) there_.insert(AlignmentUid(alignment));
    }
  }
  bool Takes(const Alignment& alignment) {
    if (!skipsExisting_) return true;
    const auto before = there_.size();
    there_.insert(AlignmentUid(alignment));
    return there_.size() > before;
  }

 private:
  const bool skipsExisting_;
  QSet<QString> there_;
};

struct Saved {
  qint64 sites = 0;
  qint64 paths = 0;
  qint64 skipped = 0;
};

Saved SaveAll(const std::vector<Alignment>& alignments, const QString& shownSource, bool skipsExisting,
              const PrivatePair& copies) {
  Saved saved;
  Choice choice(copies, skipsExisting);
  Progress progress(alignments.size());
  Saving saving(copies);
  std::size_t entry = 0;
  for (const Alignment& alignment : alignments) {
    ++entry;
    if (choice.Takes(alignment)) {
      saving.Save(alignment, shownSource + QStringLiteral(": entry ") + QString::number(entry));
      ++(alignment.kind == Kind::Site ? saved.sites : saved.paths);
    } else {
      ++saved.skipped;
    }
    progress.Saved(entry);
  }
  saving.RequireAllKept();
  return saved;
}

int Run(const Arguments& arguments) {
  const QString& source = arguments.operands.at(2);
  const bool skipsExisting = arguments.options.isSet(QStringLiteral("skip-existing"));
  const std::vector<Alignment> alignments = AlignmentJson::ReadFile(source);
  Edit edit(arguments.operands.at(0), arguments.operands.at(1), arguments.Waiting());
  const Saved saved = SaveAll(alignments, FileName::Shown(source), skipsExisting, edit.Copies());
  edit.Commit();
  Console::Print(Console::Counted(saved.sites + saved.paths, QStringLiteral("alignment")) +
                 QStringLiteral(" saved, ") + QString::number(saved.sites) +
                 QStringLiteral(" of sites and ") + QString::number(saved.paths) +
                 QStringLiteral(" of paths\n"));
  if (skipsExisting) {
    Console::Print(Console::Counted(saved.skipped, QStringLiteral("alignment")) +
                   QStringLiteral(" left out, already there\n"));
  }
  return Status::Done;
}

}  // namespace

Command ImportCommand() {
  return {"import",
          "Saves alignments from a JSON file, all of them or, if anything goes wrong, none.",
          {"MAIN", "THRESHOLDS", "FILE.json"},
          {QCommandLineOption(QStringLiteral("skip-existing"),
                              QStringLiteral("Leave out alignments that are there already."))},
          true,
          Run};
}
