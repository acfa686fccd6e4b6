#include "tool/Console.h"

#include <fcntl.h>
#include <unistd.h>

#include <QTextStream>
#include <cstdio>

namespace {

void Write(std::FILE* stream, const QByteArray& bytes) {
  std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
}

void Write(std::FILE* stream, const QString& text) { Write(stream, text.toUtf8()); }

struct Kept {
  bool keeps = false;
  QString text;
};

Kept& KeptText() {
  static Kept kept;
  return kept;
}

}  // namespace

namespace Console {

void OccupyStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // open() takes the lowest number that is free.
    if (fcntl(descriptor, F_GETFD) < 0) open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void Print(const QString& text) {
  if (KeptText().keeps) KeptText().text += text;
  Write(stdout, text);
}

void PrintBytes(const QByteArray& bytes) { Write(stdout, bytes); }

void KeepPrinted() { KeptText().keeps = true; }

const QString& Printed() { return KeptText().text; }

void Message(const QString& text) {
  Write(stderr, QStringLiteral("tarnbeam-db: ") + text + QLatin1Char('\n'));
}

bool Confirm(const QString& question) {
  Write(stderr, question + QStringLiteral(" [y/N] "));
  QTextStream input(stdin);
  const QString answer = input.readLine().trimmed().toLower();
  return answer == QLatin1String("y") || answer == QLatin1String("yes");
}

bool CanAsk() { return isatty(STDIN_FILENO) == 1; }

bool ErrorIsTerminal() { return isatty(STDERR_FILENO) == 1; }

void Progress(const QString& text) { Write(stderr, QStringLiteral("\r\x1b[K") + text); }

void Flush() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    throw Failure(QStringLiteral("standard output cannot be written"));
  }
}

QString Printable(const QString& text) {
  QString shown;
  for (const QChar character : text) {
    if (character == QLatin1Char('\n')) {
      shown += QLatin1String("\\n");
    } else if (character == QLatin1Char('\t')) {
      shown += QLatin1String("\\t");
    } else if (character.category() == QChar::Other_Control) {
      shown += QStringLiteral("\\x%1").arg(character.unicode(), 2, 16, QLatin1Char('0'));
    } else {
      shown += character;
    }
  }
  return shown;
}

QString Padded(const QString& text, int width) { return text.leftJustified(width, QLatin1Char(' ')); }

QString Counted(qint64 count, const QString& noun) {
  return QStringLiteral("%1 %2%3").arg(QString::number(count), noun,
                                       count == 1 ? QString() : QStringLiteral("s"));
}

}  // namespace Console
