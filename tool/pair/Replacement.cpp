#include "tool/pair/Replacement.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QRandomGenerator>
#include <QtEndian>
#include <array>
#include <cerrno>
#include <utility>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Leftovers.h"
#include "tool/pair/SourceFile.h"
#include "tool/pair/Sqlite.h"

namespace {

// Of a rollback journal as SQLite documents it. Its pages need not be those of the database, so they are the
// smallest, which every length of a file is a multiple of, or nearly.
constexpr char journalMagic[] = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
constexpr int pageSize = 512;
constexpr qint64 pendingByte = 0x40000000;
constexpr qint64 pendingPage = pendingByte / pageSize + 1;

QByteArray BigEndian(quint32 number) {
  QByteArray bytes(4, '\0');
  qToBigEndian(number, bytes.data());
  return bytes;
}

/// What SQLite adds up of a page, so that one that was half written is told.
quint32 Checksum(quint32 nonce, const QByteArray& page) {
  constexpr int stride = 200;
  for (int at = pageSize - stride; at > 0; at -= stride) nonce += static_cast<unsigned char>(page.at(at));
  return nonce;
}

QByteArray JournalOf(const QByteArray& path) { return path + "-journal"; }

/// Whoever may open the file has to be able to undo the change.
void GiveModeOf(int file, int journal, const QByteArray& name) {
  struct stat status {};
  if (fstat(file, &status) != 0) FailWithErrno(name);
  if (fchown(journal, status.st_uid, status.st_gid) != 0 && errno != EPERM) FailWithErrno(name);
  if (fchmod(journal, status.st_mode & 0777) != 0) FailWithErrno(name);
}

/// One for each page of the file; answers how many.
quint32 WriteRecords(int file, qint64 pages, quint32 nonce, int journal, const QByteArray& name) {
  constexpr int enoughToWrite = 1 << 20;
  quint32 records = 0;
  QByteArray block;
  for (qint64 page = 1; page <= pages; ++page) {
    if (page == pendingPage) continue;
    std::array<char, pageSize> content{};
    if (pread(file, content.data(), content.size(), (page - 1) * pageSize) < 0) FailWithErrno(name);
    const QByteArray bytes(content.data(), pageSize);
    block += BigEndian(quint32(page)) + bytes + BigEndian(Checksum(nonce, bytes));
    ++records;
    if (block.size() < enoughToWrite && page != pages) continue;
    WriteAll(journal, block.constData(), block.size(), name);
    block.clear();
  }
  return records;
}

QByteArray SuperJournalRecord(const QByteArray& superJournal) {
  if (superJournal.isEmpty()) return {};
  quint32 sum = 0;
  for (const char character : superJournal) sum += static_cast<quint32>(character);
  return BigEndian(quint32(pendingPage)) + superJournal + BigEndian(quint32(superJournal.size())) +
         BigEndian(sum) + QByteArray(journalMagic, 8);
}

/// Writes what the file holds into a journal beside it. Its head comes last: until it stands the journal
/// counts for nothing.
void WriteJournal(const QByteArray& path, int file, const QByteArray& superJournal) {
  const QByteArray name = JournalOf(path);
  const Descriptor journal(name, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (!journal.IsOpen()) FailWithErrno(name);
  GiveModeOf(file, journal.Number(), name);
  const quint32 nonce = QRandomGenerator::system()->generate();
  const qint64 pages = (SizeOf(file, FileName::Shown(path)) + pageSize - 1) / pageSize;
  WriteAll(journal.Number(), QByteArray(pageSize, '\0').constData(), pageSize, name);
  const quint32 records = WriteRecords(file, pages, nonce, journal.Number(), name);
  const QByteArray last = SuperJournalRecord(superJournal);
  WriteAll(journal.Number(), last.constData(), last.size(), name);
  if (fsync(journal.Number()) != 0) FailWithErrno(name);
  const QByteArray head = QByteArray(journalMagic, 8) + BigEndian(records) + BigEndian(nonce) +
                          BigEndian(quint32(pages)) + BigEndian(pageSize) + BigEndian(pageSize);
  if (pwrite(journal.Number(), head.constData(), std::size_t(head.size()), 0) != head.size() ||
      fsync(journal.Number()) != 0) {
    FailWithErrno(name);
  }
}

bool HoldsSomething(const QByteArray& path) {
  char first = 0;
  const Descriptor file(path, O_RDONLY);
  return file.IsOpen() && pread(file.Number(), &first, 1, 0) == 1 && first != 0;
}

/// Whether a change of another program's is still to be brought to its end or undone.
bool HasUnfinished(const QByteArray& path) {
  return HoldsSomething(JournalOf(path)) || HoldsSomething(path + "-wal");
}

/// SQLite brings it to its end, or undoes it, as soon as it opens the file. False while others have it.
bool Finish(const QByteArray& path, const QString& shown) {
  try {
    Sqlite(path, shown).Number("SELECT count(*) FROM sqlite_schema");
  } catch (const InUse&) {
    return false;
  } catch (const Failure&) {
    // That a file is damaged is found after its journal was applied.
    if (HasUnfinished(path)) throw;
  }
  return true;
}

}  // namespace

Replacement::Replacement(const QString& mainName, const QString& thresholdsName, const Deadline& deadline) {
  PrivateFolder::RemoveLeftovers();
  for (const QString& name : {mainName, thresholdsName}) {
    if (!name.isEmpty()) Open(name);
  }
  Lock(deadline);
  RemoveLeftovers();
}

Replacement::~Replacement() = default;

void Replacement::FinishChange(const QString& name) {
  if (!FileExists(name)) return;
  const QByteArray path = ResolvedPath(name);
  if (HasUnfinished(path)) Finish(path, FileName::Shown(name));
}

void Replacement::Open(const QString& name) {
  Target target;
  target.name = name;
  target.shown = FileName::Shown(name);
  target.exists = FileExists(name);
  target.path = target.exists ? ResolvedPath(name) : FileName::ToBytes(name);
  for (const Target& other : targets_) {
    if (!(target.exists && other.exists ? Stamp(target.path) == Stamp(other.path)
                                        : target.path == other.path))
      continue;
    FailAsBoth(other.shown);
  }
  if (!target.exists && HasUnfinished(target.path)) {
    throw Failure(
        target.shown +
        QStringLiteral(": is not there, but a journal (-journal or -wal) of a file with that name is; it "
                       "would be applied to a new one, so move it away first"));
  }
  struct stat status {};
  if (target.exists && (stat(target.path.constData(), &status) != 0 || !S_ISREG(status.st_mode))) {
    throw Failure(target.shown + QStringLiteral(": is not a file"));
  }
  targets_.push_back(std::move(target));
}

void Replacement::Lock(const Deadline& deadline) {
  QString inUse;
  while (!TryLock(&inUse)) {
    for (Target& target : targets_) target.file.reset();
    if (!deadline.Pause()) throw InUse(inUse);
  }
}

bool Replacement::TryLock(QString* inUse) {
  for (Target& target : targets_) {
    if (!target.exists) continue;
    *inUse = target.shown;
    if (HasUnfinished(target.path) && !Finish(target.path, target.shown)) return false;
    target.file = std::make_unique<Descriptor>(target.path, O_RDWR);
    if (!target.file->IsOpen()) {
      throw Failure(target.shown + QStringLiteral(": ") + FileName::SystemError(errno) +
                    QStringLiteral("; both files are as they were"));
    }
    if (!LockExclusively(target.file->Number(), target.shown)) return false;
    if (HasUnfinished(target.path)) return false;
  }
  return true;
}

void Replacement::CopyTo(const QByteArray& mainPath, const QByteArray& thresholdsPath) const {
  for (const Target& target : targets_) {
    const QByteArray& path = &target == &targets_.front() ? mainPath : thresholdsPath;
    if (!target.exists) throw Failure(target.shown + QStringLiteral(": no such file"));
    CopyInto(target.file->Number(), target.shown, path);
  }
}

void Replacement::Commit(const PrivatePair& contents) {
  try {
    for (Target& target : targets_) {
      target.content = &target == &targets_.front() ? contents.MainPath() : contents.ThresholdsPath();
      if (!target.exists) target.fresh = std::make_unique<NewFile>(target.content, target.name);
    }
    WriteJournals();
    for (const Target& target : targets_) {
      if (target.exists) Write(target);
    }
    PlaceNewFiles();
    Settle();
  } catch (const Failure& failure) {
    Undo();
    throw Failure(QString::fromUtf8(failure.what()) + QStringLiteral("; both files are as they were"),
                  failure.ExitStatus());
  }
}

void Replacement::WriteJournals() {
  const bool both = targets_.size() > 1 && targets_.front().exists && targets_.back().exists;
  if (both) {
    superJournal_ = Leftovers::NewSuperJournal(targets_.front().path);
    const Descriptor file(superJournal_, O_WRONLY | O_CREAT | O_EXCL, 0600);
    if (!file.IsOpen()) FailWithErrno(superJournal_);
    GiveModeOf(targets_.front().file->Number(), file.Number(), superJournal_);
    QByteArray names;
    for (const Target& target : targets_) names += JournalOf(target.path) + '\0';
    WriteAll(file.Number(), names.constData(), names.size(), superJournal_);
    if (fsync(file.Number()) != 0) FailWithErrno(superJournal_);
  }
  for (const Target& target : targets_) {
    if (!target.exists) continue;
    WriteJournal(target.path, target.file->Number(), superJournal_);
    Sync(FolderOf(target.path));
  }
}

void Replacement::Write(const Target& target) {
  const int file = target.file->Number();
  const Descriptor content(target.content, O_RDONLY);
  if (!content.IsOpen() || lseek(file, 0, SEEK_SET) != 0) FailWithErrno(target.content);
  CopyContent(content.Number(), target.shown, file, target.path);
  if (ftruncate(file, SizeOf(content.Number(), target.shown)) != 0 || fsync(file) != 0)
    FailWithErrno(target.path);
  if (Sha256(file, target.shown) == Sha256(content.Number(), target.shown)) return;
  throw Failure(target.shown + QStringLiteral(": does not take what is written to it"));
}

// The thresholds file first: in the main file alone an alignment would stand without its thresholds.
void Replacement::PlaceNewFiles() {
  for (auto target = targets_.rbegin(); target != targets_.rend(); ++target) {
    if (target->fresh) target->fresh->Place();
  }
}

/// What was written counts from the moment on that the first of these names is gone.
void Replacement::Settle() const {
  QList<QByteArray> journals;
  if (!superJournal_.isEmpty()) journals.append(superJournal_);
  for (const Target& target : targets_) {
    if (target.exists) journals.append(JournalOf(target.path));
  }
  for (const QByteArray& journal : std::as_const(journals)) {
    const bool removed = unlink(journal.constData()) == 0;
    if (journal != journals.first()) continue;
    if (!removed) FailWithErrno(journal);
    try {
      Sync(FolderOf(journal));
    } catch (const Failure& failure) {
      Console::Message(QString::fromUtf8(failure.what()) +
                       QStringLiteral("; a power cut may bring back what was replaced"));
    }
  }
}

void Replacement::RemoveLeftovers() const {
  for (const Target& target : targets_) Leftovers::RemoveBegunJournal(target.path);
  Leftovers::Remove(targets_.front().path, targets_.size() > 1 ? targets_.back().path : QByteArray());
}

void Replacement::Undo() {
  for (Target& target : targets_) {
    if (target.fresh) target.fresh->TakeBack();
    target.file.reset();
  }
  for (const Target& target : targets_) {
    if (!target.exists || !HasUnfinished(target.path)) continue;
    try {
      Finish(target.path, target.shown);
    } catch (const Failure&) {
      // Whoever opens the file next undoes it.
    }
  }
  RemoveLeftovers();
}
