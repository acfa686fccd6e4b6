#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "tool/pair/Deadline.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFile.h"
#include "tool/pair/PrivatePair.h"

/// Puts whole files into the place of others, whatever those hold: where an edit goes by tables and rows,
/// this goes by bytes, so it also takes the place of files that are damaged. Both are locked as SQLite locks
/// them, and before a byte is changed all that they held stands in rollback journals of SQLite's own form,
/// which name one that both share. So a run that is killed leaves both as they were for whoever opens them
/// next, and with the shared journal's name gone both are as they were to be. The files themselves, their
/// modes, owners and links stay what they are.
class Replacement {
 public:
  /// Locks those that exist, and waits until the deadline for those in use. Removes what killed runs left.
  /// Without thresholds file the second name is empty.
  Replacement(const QString& mainName, const QString& thresholdsName, const Deadline& deadline);
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;
  ~Replacement();

  /// Has SQLite finish, or undo, a change that was cut off, where there is one.
  static void FinishChange(const QString& name);

  /// What the locked files hold.
  void CopyTo(const QByteArray& mainPath, const QByteArray& thresholdsPath) const;
  /// Puts the content of closed private copies there, and reads it back. A Failure before that leaves the
  /// files as they were; one that did not exist is placed before the others are changed.
  void Commit(const PrivatePair& contents);

 private:
  struct Target {
    QString name;
    QString shown;
    bool exists = false;
    QByteArray path;
    std::unique_ptr<Descriptor> file;
    QByteArray content;
    std::unique_ptr<NewFile> fresh;
  };

  void Open(const QString& name);
  void Lock(const Deadline& deadline);
  bool TryLock(QString* inUse);
  void WriteJournals();
  static void Write(const Target& target);
  void PlaceNewFiles();
  void Settle() const;
  void Undo();
  void RemoveLeftovers() const;

  /// Main file, then thresholds file.
  std::vector<Target> targets_;
  QByteArray superJournal_;
};
