#pragma once

#include <sys/stat.h>

#include <QByteArray>
#include <QString>

#include "tool/pair/Deadline.h"

/// A database file of the user's while it is copied. It is opened for reading only, under the shared locks
/// that SQLite itself takes, so nothing is ever written to it or beside it. A journal or write-ahead log that
/// goes with it is copied too, for SQLite to apply to the copy.
class SourceFile {
 public:
  enum class Needs {
    Database,  ///< It begins as a database does.
    AnyFile    ///< What a damaged one begins with does not matter.
  };
  /// Throws a Failure if there is no file, if it is not a database, or if it cannot be read.
  explicit SourceFile(const QString& name, Needs needs = Needs::Database);
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;
  ~SourceFile();

  const QString& Shown() const { return shown_; }
  /// Absolute, links resolved: journals stand beside it.
  const QByteArray& Path() const { return path_; }
  bool IsSameFileAs(const SourceFile& other) const;

  /// False while another program has the file locked exclusively.
  bool TryLock();
  void Unlock();

  /// Whether another program has any lock on the file. Releases those that this one has.
  static bool IsLockedByOthers(const QByteArray& path);

  /// Whether the change that a journal beside the file belongs to is still to be undone. Asked of all files
  /// under their locks, before one of them is copied.
  void LookAtJournal();

  /// Copies all that belongs to the file. False if a program that writes to the write-ahead log came in
  /// between: then the copy has to be made again.
  bool Copy(const QByteArray& target);

 private:
  QByteArray SuperJournal(int journal, off_t size) const;
  bool LockLog();

  QString shown_;
  QByteArray path_;
  int descriptor_ = -1;
  int logIndex_ = -1;
  bool rollsBack_ = false;
  bool namesSuperJournal_ = false;
};

/// Takes every lock that SQLite has on a database file, so nobody reads or writes it; false while others do.
/// It goes when the process closes the file, by whatever descriptor.
bool LockExclusively(int descriptor, const QString& shown);

/// Throws the Failure for one file that was given as both.
[[noreturn]] void FailAsBoth(const QString& shown);

/// Copies of a main file and, unless its name is empty, of a thresholds file that show one moment.
void CopyTogether(const QString& mainName, const QByteArray& mainTarget, const QString& thresholdsName,
                  const QByteArray& thresholdsTarget, const Deadline& deadline,
                  SourceFile::Needs needs = SourceFile::Needs::Database);
