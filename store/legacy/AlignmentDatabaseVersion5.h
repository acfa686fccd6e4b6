#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 5: site alignments have a roll precision. Create() is for new files only, as
/// in version 3: it removes a file that already has its tables. Use Open() for existing files.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion5 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion5* Open(QString main, QString thresholds);
  /// A store whose tables are created first. Returned even when that fails, which is logged.
  static AlignmentDatabaseVersion5* Create(QString main, QString thresholds);
  /// Always 5.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion5();
};
