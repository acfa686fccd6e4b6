#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 2: deletes like version 1, but steps once.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion2 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion2* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion2* Create(QString main, QString thresholds);
  /// Always 2.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion2();
};
