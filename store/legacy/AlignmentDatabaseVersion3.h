#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 3, the first with tilt inversion and the first that deletes what alignments
/// refer to.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion3 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion3* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion3* Create(QString main, QString thresholds);
  /// Always 3.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion3();
};
