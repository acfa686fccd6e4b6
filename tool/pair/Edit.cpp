#include "tool/pair/Edit.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/Leftovers.h"
#include "tool/pair/RowChanges.h"
#include "tool/pair/SourceFile.h"

namespace {

QByteArray JournalMode(const Sqlite& db, const QByteArray& pragma) {
  Sqlite::Rows mode = db.Select(pragma);
  return mode.Next() ? mode.Bytes(0) : QByteArray();
}

constexpr int readBackSeconds = 10;

/// The file as the connection has opened it. If it were opened in any other way, closing it would release the
/// connection's locks.
sqlite3_file* FileOf(const Sqlite& db, const char* schema) {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(db.Handle(), schema, SQLITE_FCNTL_FILE_POINTER, &file);
  return file;
}

/// Rows and indices agree.
bool IsSound(const Sqlite& db, const QByteArray& schema) {
  Sqlite::Rows findings = db.Select("PRAGMA " + schema + ".integrity_check(1)");
  return findings.Next() && findings.Bytes(0) == "ok";
}

/// A number that is another one as soon as another connection than this has changed the file.
qint64 DataVersion(const Sqlite& db, const QByteArray& schema) {
  return db.Number("PRAGMA " + schema + ".data_version");
}

}  // namespace

Edit::Edit(const QString& mainName, const QString& thresholdsName, const Deadline& deadline, Files files)
    : copies_(FileName::Shown(mainName),
              thresholdsName.isEmpty() ? QString() : FileName::Shown(thresholdsName)) {
  PrivateFolder::RemoveLeftovers();
  FindFiles(mainName, thresholdsName);
  try {
    Lock(deadline);
    RequireWritable();
    // The journal of a file that was in WAL mode until now is this connection's own, in use and empty.
    if (!mainHasLog_) Leftovers::RemoveBegunJournal(mainPath_);
    if (copies_.HasThresholds() && !thresholdsHaveLog_) Leftovers::RemoveBegunJournal(thresholdsPath_);
    Leftovers::Remove(mainPath_, thresholdsPath_);
    CopyLocked("main", copies_.MainPath());
    if (copies_.HasThresholds()) CopyLocked("thresholds", copies_.ThresholdsPath());
    LookAtCopies(files);
  } catch (...) {
    Unlock();
    throw;
  }
}

Edit::~Edit() { Unlock(); }

// Each is closed before SQLite opens it: closing releases all locks that the process has on a file.
void Edit::FindFiles(const QString& mainName, const QString& thresholdsName) {
  const SourceFile mainFile(mainName);
  mainPath_ = mainFile.Path();
  if (!copies_.HasThresholds()) return;
  const SourceFile thresholdsFile(thresholdsName);
  thresholdsPath_ = thresholdsFile.Path();
  if (mainFile.IsSameFileAs(thresholdsFile)) FailAsBoth(mainFile.Shown());
}

void Edit::Lock(const Deadline& deadline) {
  db_ = std::make_unique<Sqlite>(mainPath_, copies_.ShownMain());
  // Keys, triggers and conditions take effect on the copies.
  db_->Execute("PRAGMA ignore_check_constraints = ON");
  while (!TryLock()) {
    if (!deadline.Pause()) throw InUse(FindInUse());
  }
}

bool Edit::TryLock() {
  try {
    const bool attached = sqlite3_db_filename(db_->Handle(), "thresholds") != nullptr;
    if (copies_.HasThresholds() && !attached) db_->Attach(thresholdsPath_, "thresholds");
    SetRollbackJournal("main", &mainHasLog_);
    db_->Execute("PRAGMA main.synchronous = EXTRA");
    if (copies_.HasThresholds()) {
      SetRollbackJournal("thresholds", &thresholdsHaveLog_);
      db_->Execute("PRAGMA thresholds.synchronous = EXTRA");
    }
    db_->Execute("BEGIN EXCLUSIVE");
    return true;
  } catch (const InUse&) {
    return false;
  }
}

/// Which of the two files it was that could not be locked. Asked once nothing more is to be locked.
QString Edit::FindInUse() const {
  const bool both = copies_.HasThresholds();
  return both && !SourceFile::IsLockedByOthers(mainPath_) ? copies_.ShownThresholds() : copies_.ShownMain();
}

// The lock that goes with exclusive mode is kept until a transaction ends, so nobody can come in between.
void Edit::SetRollbackJournal(const char* schema, bool* hasLog) const {
  const QByteArray pragma = QByteArray("PRAGMA ") + schema + '.';
  if (JournalMode(*db_, pragma + "journal_mode") != "wal") return;
  db_->Execute(pragma + "locking_mode = EXCLUSIVE");
  const QByteArray mode = JournalMode(*db_, pragma + "journal_mode = DELETE");
  db_->Execute(pragma + "locking_mode = NORMAL");
  if (mode != "delete") throw InUse(QString());
  *hasLog = true;
}

void Edit::RequireWritable() const {
  for (const char* schema : {"main", "thresholds"}) {
    if (sqlite3_db_readonly(db_->Handle(), schema) != 1) continue;
    throw Failure((qstrcmp(schema, "main") == 0 ? copies_.ShownMain() : copies_.ShownThresholds()) +
                  QStringLiteral(": cannot be written; both files are as they were"));
  }
}

void Edit::CopyLocked(const char* schema, const QByteArray& target) const {
  sqlite3_file* const file = FileOf(*db_, schema);
  sqlite3_int64 size = 0;
  int result = file->pMethods->xFileSize(file, &size);
  const Descriptor copy(target, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (!copy.IsOpen()) FailWithErrno(target);
  constexpr sqlite3_int64 blockSize = 1 << 20;
  QByteArray block(int(blockSize), Qt::Uninitialized);
  for (sqlite3_int64 at = 0; result == SQLITE_OK && at < size; at += blockSize) {
    const int count = int(std::min(blockSize, size - at));
    result = file->pMethods->xRead(file, block.data(), count, at);
    if (result == SQLITE_OK) WriteAll(copy.Number(), block.constData(), count, target);
  }
  if (result == SQLITE_OK) return;
  throw Failure((qstrcmp(schema, "main") == 0 ? copies_.ShownMain() : copies_.ShownThresholds()) +
                QStringLiteral(": cannot be read: ") + QString::fromUtf8(sqlite3_errstr(result)));
}

void Edit::LookAtCopies(Files files) {
  if (files == Files::AsTheyAre) {
    copies_.Open();
  } else {
    copies_.RequireCurrentPair();
  }
}

void Edit::Commit() {
  try {
    copies_.RequireSoundCopies();
    db_->Attach(copies_.MainPath(), "wanted_main");
    if (copies_.HasThresholds()) db_->Attach(copies_.ThresholdsPath(), "wanted_thresholds");
    ForBoth(
        [this](const QByteArray& wanted, const QByteArray& file) { RowChanges::Apply(*db_, wanted, file); });
    RequireEqual(*db_);
    ForBoth([this](const QByteArray& /*wanted*/, const QByteArray& file) {
      written_[file] = {DataVersion(*db_, file), IsSound(*db_, file)};
    });
    db_->Execute("COMMIT");
  } catch (const Failure& failure) {
    RemoveSharedJournal();
    throw Failure(QString::fromUtf8(failure.what()) + QStringLiteral("; both files are as they were"),
                  failure.ExitStatus());
  }
  Unlock();
  try {
    ReadBack();
  } catch (const Failure& failure) {
    throw Failure(QString::fromUtf8(failure.what()) +
                      QStringLiteral("; the change was made, but could not be read back"),
                  Status::Damaged);
  }
}

/// SQLite leaves the journal that both files share where a commit fails. Removed under the lock alone, since
/// another program may have just begun one.
void Edit::RemoveSharedJournal() const {
  sqlite3* const db = db_->Handle();
  sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
  if (sqlite3_exec(db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) == SQLITE_OK)
    Leftovers::Remove(mainPath_, thresholdsPath_);
}

template <typename Work>
void Edit::ForBoth(Work work) const {
  work("wanted_main", "main");
  if (copies_.HasThresholds()) work("wanted_thresholds", "thresholds");
}

void Edit::RequireEqual(const Sqlite& db) const {
  ForBoth([&](const QByteArray& wanted, const QByteArray& file) {
    if (!RowChanges::AreEqual(db, wanted, file)) FailAsNotTaken(file);
  });
}

/// Indices that were wrong before the change are not its own.
void Edit::RequireSound(const Sqlite& db) const {
  ForBoth([&](const QByteArray& /*wanted*/, const QByteArray& file) {
    if (written_.at(file).isSound && !IsSound(db, file)) FailAsNotTaken(file);
  });
}

void Edit::FailAsNotTaken(const QByteArray& file) const {
  throw Failure((file == "main" ? copies_.ShownMain() : copies_.ShownThresholds()) +
                QStringLiteral(": does not take what is written to it"));
}

/// Over a connection of its own, so that the files are read and not what the first one has cached.
void Edit::ReadBack() const {
  const Deadline patience(readBackSeconds);
  for (;;) {
    try {
      const Sqlite db(mainPath_, copies_.ShownMain());
      if (copies_.HasThresholds()) db.Attach(thresholdsPath_, "thresholds");
      db.Attach(copies_.MainPath(), "wanted_main");
      if (copies_.HasThresholds()) db.Attach(copies_.ThresholdsPath(), "wanted_thresholds");
      db.Execute("BEGIN");
      bool othersCameIn = false;
      ForBoth([&](const QByteArray& /*wanted*/, const QByteArray& file) {
        db.Number("SELECT count(*) FROM " + file + ".sqlite_schema");
        if (DataVersion(*db_, file) != written_.at(file).dataVersion) othersCameIn = true;
      });
      RequireSound(db);
      // What another program has made of the rows since is not judged.
      if (!othersCameIn) RequireEqual(db);
      return;
    } catch (const InUse&) {
      if (patience.Pause()) continue;
      Console::Message(
          copies_.ShownMain() +
          QStringLiteral(": was changed, but is in use by another program and was not read back"));
      return;
    }
  }
}

void Edit::Unlock() const {
  if (db_ == nullptr) return;
  sqlite3* const db = db_->Handle();
  if (sqlite3_get_autocommit(db) == 0) sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
  // If another program is quicker, the file keeps its rollback journal.
  if (mainHasLog_) sqlite3_exec(db, "PRAGMA main.journal_mode = WAL", nullptr, nullptr, nullptr);
  if (thresholdsHaveLog_) sqlite3_exec(db, "PRAGMA thresholds.journal_mode = WAL", nullptr, nullptr, nullptr);
}
