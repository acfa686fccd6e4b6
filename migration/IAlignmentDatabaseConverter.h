#pragma once

#include <QString>

/// Brings a main database file forward by one schema version.
///
/// A converter keeps no state. It is destroyed through its own class, and only one runs at a time on a
/// device: all work through the same scratch file, /opt/tarnbeam/database/TemporaryDB.sqlite, whose folder
/// must exist and is locked meanwhile. No store may hold the main file open. The thresholds file is never
/// touched.
class IAlignmentDatabaseConverter {
 public:
  /// Converts the file at `path`, which must have the version that the converter starts from: ask
  /// AlignmentDatabase::GetDatabaseFileVersion() first.
  ///
  /// True when the file has been replaced by its converted, checked and synced copy in one atomic step; its
  /// permissions are the same. On false the file is as it was (a missing one may be there now, empty), and
  /// debug lines say why. While another conversion is under way, of whatever file, this one does not begin.
  /// Rows that no alignment refers to are gone after every conversion but the first; what the schema does not
  /// name is not copied.
  virtual bool Convert(QString& path) = 0;
};
