#include "tests/robustness/GoldenTrace.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QCryptographicHash>
#include <algorithm>

#include "tests/robustness/Scene.h"
#include "tests/robustness/Sweep.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SqliteCalls.h"

namespace {

// What one run came to.
struct TracedRun {
  QString result;
  QStringList calls;  // each with arguments and result
  QStringList lines;
};

QStringList Named(const QStringList& lines, const QMap<QString, QString>& names) {
  QStringList named = lines;
  for (auto entry = names.begin(); entry != names.end(); ++entry) {
    named.replaceInStrings(entry.key(), entry.value());
  }
  return named;
}

TracedRun Run(const TracedOperation& operation) {
  const LogCapture log;
  GuardAgainstSpinning();
  SqliteCalls::Record();
  const QString result = operation.run();
  SqliteCalls::CloseLeaked();
  const TracedRun run = {result, Named(SqliteCalls::TakeTrace(), operation.names),
                         Named(log.Lines(), operation.names)};
  SqliteCalls::Reset();
  return run;
}

// "bind_int 1, 7 = 0 [INSERT ...]" as "bind_int 1, 7 = 0 [2]".
QStringList WithNumberedTexts(const QStringList& calls) {
  const QString prepare = QStringLiteral("prepare_v2 ");
  QStringList texts;
  QStringList numbered;
  for (const QString& call : calls) {
    if (call.startsWith(prepare)) {
      const QString text = call.mid(prepare.size()).section(QStringLiteral(" = "), 0, -2);
      if (!texts.contains(text)) texts.append(text);
      numbered.append(QStringLiteral("[%1] %2").arg(texts.indexOf(text) + 1).arg(call));
      continue;
    }
    const auto bracket = call.endsWith(QLatin1Char(']')) ? call.indexOf(QStringLiteral(" [")) : -1;
    const auto text = bracket < 0 ? -1 : texts.indexOf(call.mid(bracket + 2).chopped(1));
    numbered.append(text < 0 ? call : call.left(bracket) + QStringLiteral(" [%1]").arg(text + 1));
  }
  return numbered;
}

QString Hash(const QStringList& lines) {
  const QByteArray bytes = lines.join(QLatin1Char('\n')).toUtf8();
  return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(10));
}

// One line, whatever the texts hold.
QString Line(const QString& text) {
  return QString(text).replace(QLatin1Char('\n'), QStringLiteral("\\n")) + QLatin1Char('\n');
}

// The lines, of which those that the run without fault begins with are only counted.
QString Logged(const QStringList& lines, const QStringList& clean = {}) {
  int same = 0;
  while (same < lines.size() && same < clean.size() && lines[same] == clean[same]) ++same;
  QString text = same > 0 ? QStringLiteral("| the first %1\n").arg(same) : QString();
  for (const QString& line : lines.mid(same)) text += Line(QStringLiteral("| ") + line);
  return text;
}

}  // namespace

QString TraceOf(const TracedOperation& operation) {
  const TracedRun clean = Run(operation);
  QString text = Line(QStringLiteral("result ") + clean.result) + Logged(clean.lines);
  for (const QString& call : WithNumberedTexts(clean.calls)) text += Line(call);

  const QStringList calls = SweptCalls(clean.calls);
  for (int number = 1; number <= calls.size(); ++number) {
    const QString& call = calls[number - 1];
    const QString title =
        QStringLiteral("fails %1 %2: ").arg(number).arg(call.section(QLatin1Char(' '), 0, 0));
    if (operation.endless(call)) {
      text += Line(title + QStringLiteral("no return"));
      continue;
    }
    SqliteCalls::Arm(Fault("", SQLITE_IOERR).At(number));
    const TracedRun failing = Run(operation);
    text += Line(title + failing.result + QLatin1Char(' ') + Hash(failing.calls)) +
            Logged(failing.lines, clean.lines);
  }
  return text;
}

void GoldenTraces::Add(const QString& title, const QString& trace) { sections_.push_back({title, trace}); }

QString GoldenTraces::Path() const {
  return QStringLiteral(TARNBEAM_GOLDEN_FOLDER "/traces/%1.txt").arg(name_);
}

QString GoldenTraces::Text() const {
  QString text;
  const Section* before = nullptr;
  for (const Section& section : sections_) {
    const bool same = before != nullptr && before->trace == section.trace;
    text += QStringLiteral("== ") + section.title + QLatin1Char('\n');
    text += same ? QStringLiteral("as ") + before->title + QLatin1Char('\n') : section.trace;
    before = &section;
  }
  return text;
}

void GoldenTraces::ExpectAsRecorded() const {
  if (qgetenv("TARNBEAM_REWRITE_TRACES") == "1") {
    WriteFile(Path(), Text().toUtf8());
    GTEST_SKIP() << Path().toStdString() << " is rewritten";
  }
  const QStringList recorded = QString::fromUtf8(ReadFile(Path())).split(QLatin1Char('\n'));
  const QStringList made = Text().split(QLatin1Char('\n'));
  QString section;
  for (int line = 0; line < std::max(recorded.size(), made.size()); ++line) {
    if (made.value(line).startsWith(QLatin1String("== "))) section = made[line];
    ASSERT_EQ(made.value(line), recorded.value(line))
        << name_.toStdString() << ".txt, line " << line + 1 << ", " << section.toStdString();
  }
}
