#pragma once

#include <QString>

#include "core/Connection.h"
#include "store/StoreDescription.h"

class AlignmentDatabaseStore;

/// All that a store is: its two files, and what its version makes of them. The procedures work on this.
struct StoreIdentity {
  /// Refers to the store's paths, so it must not outlive the store.
  static StoreIdentity Of(AlignmentDatabaseStore* store);

  /// Null on failure, which is logged. The caller closes the connection.
  sqlite3* OpenMain() const { return Sql::OpenForWriting(mainPath); }
  sqlite3* OpenThresholds() const { return Sql::OpenForWriting(thresholdsPath); }

  const QString& mainPath;
  const QString& thresholdsPath;
  unsigned int version;
  const SchemaTexts& texts;
  Deletion deletion;
};
