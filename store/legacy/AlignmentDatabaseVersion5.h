#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 5: site alignments have a roll precision.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion5 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion5* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion5* Create(QString main, QString thresholds);
  /// Always 5.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion5();
};
