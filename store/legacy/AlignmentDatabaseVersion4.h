#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 4: site alignments have a note.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion4 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion4* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion4* Create(QString main, QString thresholds);
  /// Always 4.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion4();
};
