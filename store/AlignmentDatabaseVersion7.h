#pragma once

#include "store/AlignmentDatabaseStore.h"

/// The store of schema version 7: sites and paths with their thresholds, in two files.
///
/// A main file of an older version has to be converted first (see AllConverters); GetDatabaseFileVersion()
/// reads the version. A store holds nothing but its two paths.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseVersion7 : public AlignmentDatabaseStore {
 public:
  using AlignmentDatabaseStore::AlignmentDatabaseStore;
  /// A store over existing files, the caller's to delete. Touches neither file.
  static AlignmentDatabaseVersion7* Open(QString main, QString thresholds);
  /// A store whose missing tables are created first, see CreateTables(): what is there stays. Returned even
  /// when that fails, which is logged.
  static AlignmentDatabaseVersion7* Create(QString main, QString thresholds);
  /// Always 7.
  unsigned int Version() override;
  virtual ~AlignmentDatabaseVersion7();
};
