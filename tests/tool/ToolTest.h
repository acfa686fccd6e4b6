#pragma once

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "tests/support/PrintQt.h"
#include "tests/support/TemporaryFolder.h"

// What a run of the program left behind.
struct Outcome {
  int status = -1;
  QString out;
  QString err;
};

// Runs the program in a folder of the test's own, in the C locale and without a terminal. File names within
// that folder are given without it.
class ToolTest : public testing::Test {
 protected:
  ToolTest();
  // `terminalInput`, if not empty, is typed on a terminal that is then the standard input.
  Outcome Run(const QStringList& words, const QString& terminalInput = QString());
  // Expects success and silence on standard error, and answers standard output.
  QString RunWell(const QStringList& words);
  // Expects the exit status, nothing on standard output and these lines, after the program's name, on
  // standard error.
  void ExpectFailure(const QStringList& words, const QString& message, int status = 1);

  // Makes main and thresholds file, named m and t, and saves the entries.
  void CreateFiles();
  void CreateFilesWith(const QJsonArray& entries);

  QString Path(const QString& name) const { return folder_.Path(name); }
  void WriteFile(const QString& name, const QByteArray& content);
  void WriteJson(const QString& name, const QJsonArray& entries);
  QByteArray ReadFile(const QString& name);
  QStringList FilesInFolder() const;

 private:
  TemporaryFolder folder_;
};

// A right entry of either kind, whose values are all told apart.
QJsonObject SiteEntry(const QString& identifier = QStringLiteral("Åsgård"),
                      const QString& sector = QStringLiteral("Alpha"));
QJsonObject PathEntry(const QString& identifier = QStringLiteral("Żuławy"));

// The entry with another value, or none if the value is undefined, under the dotted name.
QJsonObject With(QJsonObject entry, const QString& name, const QJsonValue& value);
