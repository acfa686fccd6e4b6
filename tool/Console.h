#pragma once

#include <QByteArray>
#include <QString>
#include <stdexcept>

/// What the program ends with.
namespace Status {

enum : int { Done = 0, Failed = 1, Misused = 2, InUse = 3, Damaged = 4 };

}  // namespace Status

/// Ends a command; the text goes to standard error.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const QString& message, int status = Status::Failed)
      : std::runtime_error(message.toStdString()), status_(status) {}
  int ExitStatus() const { return status_; }

 private:
  int status_;
};

/// A file that another program kept in use for longer than the wait.
class InUse : public Failure {
 public:
  explicit InUse(const QString& shownFile)
      : Failure(shownFile + QStringLiteral(": is in use by another program; try again, or wait longer with "
                                           "--wait SECONDS"),
                Status::InUse) {}
};

/// A file that is damaged, or not what it has to be.
class Damage : public Failure {
 public:
  Damage(const QString& shownFile, const QString& reason)
      : Failure(
            shownFile + QStringLiteral(": ") + reason + QStringLiteral("; 'tarnbeam-db check' tells more"),
            Status::Damaged),
        reason_(reason) {}
  const QString& Reason() const { return reason_; }

 private:
  QString reason_;
};

/// Ends a command with exit status 2, for arguments that make no sense.
class WrongUsage : public std::runtime_error {
 public:
  explicit WrongUsage(const QString& message) : std::runtime_error(message.toStdString()) {}
};

namespace Console {

/// Opens those of standard input, output and error that are closed, so that no file of the user's takes their
/// place. Reading from and writing to these fails.
void OccupyStandardStreams();
/// Writes a result to standard output, as it is.
void Print(const QString& text);
/// The same for what is UTF-8 already; it is not kept.
void PrintBytes(const QByteArray& bytes);
/// Writes a line, after the program's name, to standard error.
void Message(const QString& text);
/// Asks on standard error and reads the answer from standard input; only y and yes mean yes.
bool Confirm(const QString& question);
/// Whether standard input, or standard error, is a terminal.
bool CanAsk();
bool ErrorIsTerminal();
/// Replaces the current line of the terminal; an empty text clears it.
void Progress(const QString& text);
/// From now on what is printed is kept, so that it can be repeated elsewhere.
void KeepPrinted();
const QString& Printed();
/// Throws a Failure if what was printed did not reach standard output (a full disk, a closed pipe).
void Flush();

/// Text from a file as it can be shown on a line: control characters stand as \n, \t or \x1b.
QString Printable(const QString& text);
/// `text` followed by blanks up to `width`.
QString Padded(const QString& text, int width);
/// "1 report", "2 reports".
QString Counted(qint64 count, const QString& noun);

}  // namespace Console
