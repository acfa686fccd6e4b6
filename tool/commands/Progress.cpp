#include "tool/commands/Progress.h"

#include "tool/Console.h"

Progress::~Progress() {
  if (shown_) Console::Progress(QString());
}

void Progress::Saved(std::size_t count) {
  if (!Console::ErrorIsTerminal() || timer_.elapsed() < (shown_ ? next_ : 1000)) return;
  shown_ = true;
  next_ = timer_.elapsed() + 100;
  Console::Progress(QString::number(count) + QStringLiteral(" of ") + QString::number(total_) +
                    QStringLiteral(" alignments"));
}
