#pragma once

#include <QString>
#include <stdexcept>

/// Ends a command with exit status 1; the text goes to standard error.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const QString& message) : std::runtime_error(message.toStdString()) {}
};

/// Ends a command with exit status 2, for arguments that make no sense.
class WrongUsage : public std::runtime_error {
 public:
  explicit WrongUsage(const QString& message) : std::runtime_error(message.toStdString()) {}
};

namespace Console {

/// Writes a result to standard output, as it is.
void Print(const QString& text);
/// Writes a line, after the program's name, to standard error.
void Message(const QString& text);
/// Asks on standard error and reads the answer from standard input; only y and yes mean yes.
bool Confirm(const QString& question);
/// Whether standard input, or standard error, is a terminal.
bool CanAsk();
bool ErrorIsTerminal();
/// Replaces the line that stands on the terminal; an empty text takes it away.
void Progress(const QString& text);
/// Throws a Failure if what was printed did not reach standard output (a full disk, a closed pipe).
void Flush();

/// Text from a file as it can be shown on a line: control characters stand as \n, \t or \x1b.
QString Printable(const QString& text);
/// `text` followed by blanks up to `width`.
QString Padded(const QString& text, int width);
/// "1 report", "2 reports".
QString Counted(qint64 count, const QString& noun);

}  // namespace Console
