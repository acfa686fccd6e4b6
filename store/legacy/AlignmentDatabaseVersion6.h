#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 6: preferences have a geoid format.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion6 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion6* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion6* Create(QString main, QString thresholds);
  /// Always 6.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion6();
};
