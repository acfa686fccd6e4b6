#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QString>
#include <QTemporaryDir>

#include "tests/support/PrintQt.h"

// A folder of the test's own, removed with everything in it when it goes out of scope.
class TemporaryFolder {
 public:
  TemporaryFolder() : TemporaryFolder(QDir::tempPath()) {}
  explicit TemporaryFolder(const QString& parent) : folder_(parent + QStringLiteral("/test-")) {
    EXPECT_TRUE(folder_.isValid()) << folder_.errorString().toStdString();
  }

  QString Path(const QString& name) const { return folder_.filePath(name); }
  QString Folder() const { return folder_.path(); }
  QString Main() const { return Path(QStringLiteral("main.sqlite")); }
  QString Thresholds() const { return Path(QStringLiteral("thresholds.sqlite")); }

 private:
  QTemporaryDir folder_;
};
