#pragma once

#include <sqlite3.h>

#include "tests/store/StoreVersions.h"
#include "tests/support/SqliteCalls.h"

// The helpers that every store inherits; a store of the current version stands for all. Its files do not
// exist yet.
class HelpersTest : public testing::Test {
 protected:
  template <typename Operation, typename... Arguments>
  auto Call(Operation operation, Arguments&&... arguments) {
    return std::invoke(operation, store_, std::forward<Arguments>(arguments)...);
  }

  static bool OpenFile(const QString& path, sqlite3** db, bool readOnly) {
    return Operations::OpenDatabase(path, db, readOnly);
  }
  sqlite3* OpenMain(bool readOnly) {
    using Open = sqlite3* (AlignmentDatabase::*)(bool);
    return Call(static_cast<Open>(&Operations::OpenDatabase), readOnly);
  }
  QString Main() const { return files_.Main(); }
  QString Thresholds() const { return files_.Thresholds(); }
  QStringList Lines() { return files_.Lines(); }

  StoreFiles files_;
  CurrentStore store_{files_.Main(), files_.Thresholds()};
};
