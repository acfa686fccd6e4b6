#pragma once

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>

#include "tests/support/PrintQt.h"
#include "tests/support/TemporaryFolder.h"

class QProcess;
struct sqlite3;

// What a run of the program left behind.
struct Outcome {
  int status = -1;
  QString out;
  QString err;
};

// Another program at work on a file until it goes out of scope.
class Holder {
 public:
  Holder(const QString& path, const char* sql);
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder();

 private:
  sqlite3* db_ = nullptr;
};

// What the program says about a file that another one has in use.
QString InUse(const QString& file);
// What it adds where a file is damaged.
const QString tellsMore = QStringLiteral("; 'tarnbeam-db check' tells more");
// What it says of files that belong to different pairs.
const QString noPair =
    QStringLiteral(": are no pair: every thresholds row names another site or path than its alignment");
// The milliseconds after which a run of the program counts as one that does not come to its end.
constexpr int patience = 60'000;
// What wrong usage ends with.
const QString hint = QStringLiteral("\nTry 'tarnbeam-db --help' or 'tarnbeam-db COMMAND --help'.");

// Runs the program in a folder of the test's own, in the C locale and without a terminal. File names within
// that folder are given without it.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  // `terminalInput`, if not empty, is typed on a terminal that is then the standard input.
  Outcome Run(const QStringList& words, const QString& terminalInput = QString());
  // Another program, such as one that calls this one; with these variables of the environment besides.
  Outcome RunProgram(const QString& program, const QStringList& words,
                     const QMap<QString, QString>& variables = {});
  // The same by an ordinary user, for whom permissions count.
  Outcome RunUnprivileged(const QStringList& words);
  // The program as "$0" with its words as "$@" in a line of a shell, which may limit it or close its output.
  Outcome RunInShell(const QString& line, const QStringList& words);
  // With standard error on a terminal, and a clock that each look at it finds so many milliseconds later.
  Outcome RunOnTerminal(const QStringList& words, int clockStep);
  // No file may grow beyond so many blocks of 512 bytes, as on a full disk.
  Outcome RunWithFileLimit(int blocks, const QStringList& words);
  // Its calls on files in a folder fail as FailingCalls.cpp has it; whether it came to that.
  Outcome RunFailing(const QStringList& words, const char* kind, const QString& folder, int number,
                     const QMap<QString, QString>& variables = {});
  bool HasFailed() const;
  // Does something while the program waits for an answer on its terminal, and then answers yes.
  Outcome RunWhileAsked(const QStringList& words, const std::function<void()>& meanwhile);
  // The program has to wait for what another one holds until that is released, and then to succeed.
  void ExpectToWait(const QStringList& words, const std::function<void()>& release);
  // Expects success and silence on standard error, and returns standard output.
  QString RunWell(const QStringList& words);
  // Expects the exit status, nothing on standard output and these lines, after the program's name, on
  // standard error.
  void ExpectFailure(const QStringList& words, const QString& message, int status = 1);
  // The same for a damaged file, of which SQLite says in words of its own what is wrong.
  void ExpectDamaged(const QStringList& words, const QString& file, const QString& help = tellsMore);

  // Makes main and thresholds file, named m and t, and saves the entries.
  void CreateFiles();
  void CreateFilesWith(const QJsonArray& entries);
  // The main file of an earlier version that the tests of all rooms share.
  void LoadEarlier(const QString& name, int version);

  QString Path(const QString& name) const { return folder_.Path(name); }
  QString Folder() const { return folder_.Folder(); }
  void WriteFile(const QString& name, const QByteArray& content);
  void WriteJson(const QString& name, const QJsonArray& entries);
  QByteArray ReadFile(const QString& name);
  QStringList FilesInFolder() const;
  // The number, from 0, of the first page of a table; and what replaces bytes in a file.
  int PageOf(const QString& file, const QString& table) const;
  void Overwrite(const QString& name, qint64 at, const QByteArray& bytes);

 private:
  void Prepare(QProcess* process) const;
  static Outcome Finish(QProcess* process);

  TemporaryFolder folder_;
};

// A valid entry of either kind; no two of its values are alike.
QJsonObject SiteEntry(const QString& identifier = QStringLiteral("Åsgård"),
                      const QString& sector = QStringLiteral("Alpha"));
QJsonObject PathEntry(const QString& identifier = QStringLiteral("Żuławy"));

// The entry with another value, or none if the value is undefined, under the dotted name.
QJsonObject With(QJsonObject entry, const QString& name, const QJsonValue& value);
