#pragma once

#include <QString>
#include <map>
#include <memory>

#include "tool/pair/Deadline.h"
#include "tool/pair/PrivatePair.h"
#include "tool/pair/Sqlite.h"

/// A change to both files, or to a main file without thresholds file. Both stay locked exclusively from the
/// beginning to the end, the work is done on private copies, and then what differs is put into the files in
/// one transaction over both: SQLite's rollback journals see to it that a run that is killed, or a full disk,
/// leaves both as they were, for whoever opens them next. The files themselves, their modes, owners and links
/// stay what they are.
///
/// A file in WAL mode has a rollback journal meanwhile, since a change in that mode is of one file alone; a
/// run that is killed leaves it so.
class Edit {
 public:
  enum class Files {
    Pair,      ///< Both of the current version, checked, and belonging together.
    AsTheyAre  ///< Only sound; the rest is looked at by the caller.
  };

  /// Waits until the deadline for files in use. Removes what killed runs left.
  Edit(const QString& mainName, const QString& thresholdsName, const Deadline& deadline,
       Files files = Files::Pair);
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;
  ~Edit();

  /// The private copies.
  PrivatePair& Copies() { return copies_; }

  /// Checks the copies, puts what they hold into the files, and reads it back. A Failure before that leaves
  /// the files as they were.
  void Commit();

 private:
  /// A file as the transaction leaves it.
  struct Written {
    qint64 dataVersion = 0;
    /// Its indices fit its rows.
    bool isSound = false;
  };

  void FindFiles(const QString& mainName, const QString& thresholdsName);
  void Lock(const Deadline& deadline);
  bool TryLock();
  QString FindInUse() const;
  void SetRollbackJournal(const char* schema, bool* hasLog) const;
  void RequireWritable() const;
  void RemoveSharedJournal() const;
  void CopyLocked(const char* schema, const QByteArray& target) const;
  void LookAtCopies(Files files);
  void RequireEqual(const Sqlite& db) const;
  void RequireSound(const Sqlite& db) const;
  [[noreturn]] void FailAsNotTaken(const QByteArray& file) const;
  void ReadBack() const;
  void Unlock() const;
  template <typename Work>
  void ForBoth(Work work) const;

  PrivatePair copies_;
  QByteArray mainPath_;
  QByteArray thresholdsPath_;
  std::unique_ptr<Sqlite> db_;
  bool mainHasLog_ = false;
  bool thresholdsHaveLog_ = false;
  /// By "main" and "thresholds".
  std::map<QByteArray, Written> written_;
};
