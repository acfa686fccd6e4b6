#include "tool/LibraryLog.h"

#include <algorithm>
#include <array>

#include "tool/Console.h"

namespace {

// A message handler has nowhere else to put what it hears.
struct State {
  QStringList lines;
  bool verbose = false;
};

State& Kept() {
  static State state;
  return state;
}

constexpr int KeptLines = 30;

void Handle(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& line) {
  State& kept = Kept();
  if (kept.verbose) Console::Message(line);
  kept.lines.append(line);
  if (kept.lines.size() > KeptLines) kept.lines.removeFirst();
}

bool TellsOfFailure(const QString& line) {
  static constexpr std::array<const char*, 5> Words = {"fail", "can't", "couldn't", "unable", "null "};
  return std::any_of(Words.begin(), Words.end(), [&line](const char* word) {
    return line.contains(QLatin1String(word), Qt::CaseInsensitive);
  });
}

}  // namespace

namespace LibraryLog {

void Install() { qInstallMessageHandler(Handle); }

void SetVerbose(bool verbose) { Kept().verbose = verbose; }

void Clear() { Kept().lines.clear(); }

QStringList Failures(int refusedCloses) {
  QStringList failures;
  for (const QString& line : Kept().lines) {
    if (refusedCloses > 0 && line.startsWith(QLatin1String("sqlite3_close failed"))) {
      --refusedCloses;
    } else if (TellsOfFailure(line)) {
      failures.append(line);
    }
  }
  return failures;
}

void Fail(const QString& message) {
  QString text = message;
  for (const QString& line : Kept().lines) text += QStringLiteral("\n  library: ") + line;
  throw Failure(text);
}

void FailOnFailures(const QString& message, int refusedCloses) {
  if (!Failures(refusedCloses).isEmpty()) Fail(message);
}

}  // namespace LibraryLog
