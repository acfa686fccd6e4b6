#include <QElapsedTimer>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/pair/Saving.h"

namespace {

/// Shows how far a long import has come: after one second, and ten times a second from then on.
class Progress {
 public:
  explicit Progress(std::size_t total) : total_(total) { timer_.start(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (shown_) Console::Progress(QString());
  }
  void Saved(std::size_t count) {
    if (!Console::ErrorIsTerminal() || timer_.elapsed() < (shown_ ? next_ : 1000)) return;
    shown_ = true;
    next_ = timer_.elapsed() + 100;
    Console::Progress(QString::number(count) + QStringLiteral(" of ") + QString::number(total_) +
                      QStringLiteral(" alignments"));
  }

 private:
  const std::size_t total_;
  QElapsedTimer timer_;
  bool shown_ = false;
  qint64 next_ = 0;
};

int Run(const Arguments& arguments) {
  const QString& source = arguments.operands.at(2);
  const std::vector<Alignment> alignments = AlignmentJson::ReadFile(source);
  Edit edit(arguments.operands.at(0), arguments.operands.at(1), arguments.Waiting());
  {
    Progress progress(alignments.size());
    Saving saving(&edit);
    std::size_t saved = 0;
    for (const Alignment& alignment : alignments) {
      saving.Save(alignment,
                  FileName::Shown(source) + QStringLiteral(": entry ") + QString::number(saved + 1));
      progress.Saved(++saved);
    }
    saving.RequireAllKept();
  }
  edit.Commit();
  qint64 sites = 0;
  for (const Alignment& alignment : alignments) sites += alignment.kind == Kind::Site ? 1 : 0;
  const auto total = static_cast<qint64>(alignments.size());
  Console::Print(Console::Counted(total, QStringLiteral("alignment")) + QStringLiteral(" saved, ") +
                 QString::number(sites) + QStringLiteral(" of sites and ") + QString::number(total - sites) +
                 QStringLiteral(" of paths\n"));
  return Status::Done;
}

}  // namespace

Command ImportCommand() {
  return {"import",
          "Saves alignments from a JSON file, all of them or, if anything goes wrong, none.",
          {"MAIN", "THRESHOLDS", "FILE.json"},
          {},
          true,
          Run};
}
