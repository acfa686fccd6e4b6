#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 1. It leaves the orientations, locations and heights of deleted alignments
/// behind, and keeps stepping a delete until it is done. No thresholds file: its path is kept and unused.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion1 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion1* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion1* Create(QString main, QString thresholds);
  /// Always 1.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion1();
};
