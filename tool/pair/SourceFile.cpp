#include "tool/pair/SourceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"

namespace {

// Where SQLite has its locks in a database file, and in the index of a write-ahead log.
constexpr off_t pendingByte = 0x40000000;
constexpr off_t reservedByte = pendingByte + 1;
constexpr off_t sharedFirst = pendingByte + 2;
constexpr off_t sharedSize = 510;
constexpr off_t logCheckpointLock = 121;
constexpr off_t logFirstReaderLock = 124;

constexpr std::array<char, 8> journalMagic = {'\xd9', '\xd5', '\x05', '\xf9', '\x20', '\xa1', '\x63', '\xd7'};

bool ReadAt(int descriptor, off_t at, char* to, std::size_t size) {
  return pread(descriptor, to, size, at) == static_cast<ssize_t>(size);
}

quint32 BigEndian(const char* bytes) {
  quint32 number = 0;
  for (int at = 0; at < 4; ++at) number = number << 8 | static_cast<unsigned char>(bytes[at]);
  return number;
}

struct flock LockOf(short type, off_t from, off_t length) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = from;
  lock.l_len = length;
  return lock;
}

/// False while others have a lock that excludes it.
bool SetLock(int descriptor, struct flock lock, const QString& shown) {
  if (fcntl(descriptor, F_SETLK, &lock) == 0) return true;
  if (errno != EACCES && errno != EAGAIN) FailWithErrno(shown);
  return false;
}

/// All that SQLite locks of a database file.
struct flock ExclusiveLock() {
  return LockOf(F_WRLCK, pendingByte, sharedFirst + sharedSize - pendingByte);
}

}  // namespace

SourceFile::SourceFile(const QString& name, Needs needs) : shown_(FileName::Shown(name)) {
  path_ = ResolvedPath(name);
  // Without waiting for the other end, should it be a pipe.
  descriptor_ = open(path_.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor_ < 0) FailWithErrno(shown_);
  struct stat status {};
  if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor_);
    throw Failure(shown_ + QStringLiteral(": is not a file"));
  }
  std::array<char, 16> start{};
  if (needs == Needs::AnyFile) return;
  if (!ReadAt(descriptor_, 0, start.data(), start.size()) ||
      std::memcmp(start.data(), "SQLite format 3", start.size()) != 0) {
    close(descriptor_);
    throw Failure(shown_ + QStringLiteral(": is no database"), Status::Damaged);
  }
}

// Closing a file releases all locks that the process has on it.
SourceFile::~SourceFile() {
  if (logIndex_ >= 0) close(logIndex_);
  close(descriptor_);
}

bool SourceFile::IsSameFileAs(const SourceFile& other) const {
  struct stat mine {};
  struct stat others {};
  return fstat(descriptor_, &mine) == 0 && fstat(other.descriptor_, &others) == 0 &&
         mine.st_ino == others.st_ino && mine.st_dev == others.st_dev;
}

bool LockExclusively(int descriptor, const QString& shown) {
  return SetLock(descriptor, ExclusiveLock(), shown);
}

bool SourceFile::TryLock() {
  if (!SetLock(descriptor_, LockOf(F_RDLCK, pendingByte, 1), shown_)) return false;
  const bool locked = SetLock(descriptor_, LockOf(F_RDLCK, sharedFirst, sharedSize), shown_);
  SetLock(descriptor_, LockOf(F_UNLCK, pendingByte, 1), shown_);
  return locked;
}

bool SourceFile::IsLockedByOthers(const QByteArray& path) {
  const Descriptor file(path, O_RDONLY);
  struct flock lock = ExclusiveLock();
  return file.IsOpen() && fcntl(file.Number(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void SourceFile::Unlock() {
  if (logIndex_ >= 0) close(logIndex_);
  logIndex_ = -1;
  SetLock(descriptor_, LockOf(F_UNLCK, sharedFirst, sharedSize), shown_);
}

// The name stands at the journal's end, before its length, the sum of its characters and the magic.
QByteArray SourceFile::SuperJournal(int journal, off_t size) const {
  constexpr off_t tailSize = 16;
  std::array<char, tailSize> tail{};
  if (size < tailSize || !ReadAt(journal, size - tailSize, tail.data(), tail.size())) return {};
  if (std::memcmp(tail.data() + 8, journalMagic.data(), journalMagic.size()) != 0) return {};
  const quint32 length = BigEndian(tail.data());
  if (length == 0 || length > PATH_MAX || static_cast<off_t>(length) > size - tailSize) return {};
  QByteArray name(static_cast<int>(length), '\0');
  if (!ReadAt(journal, size - tailSize - static_cast<off_t>(length), name.data(), length)) return {};
  quint32 sum = BigEndian(tail.data() + 4);
  for (const char character : std::as_const(name)) sum -= static_cast<quint32>(character);
  return sum == 0 ? name : QByteArray();
}

// As SQLite decides: a journal counts if nobody is in the middle of the change and if the journal that it
// shares with another file, should there be one, still exists. Once that is gone the change was committed.
void SourceFile::LookAtJournal() {
  rollsBack_ = false;
  namesSuperJournal_ = false;
  struct flock reserved = LockOf(F_WRLCK, reservedByte, 1);
  if (fcntl(descriptor_, F_GETLK, &reserved) != 0) FailWithErrno(shown_);
  if (reserved.l_type != F_UNLCK) return;
  const QByteArray path = path_ + "-journal";
  const Descriptor journal(path, O_RDONLY);
  if (!journal.IsOpen()) {
    if (errno != ENOENT) FailWithErrno(path);
    return;
  }
  char first = 0;
  if (!ReadAt(journal.Number(), 0, &first, 1) || first == 0) return;
  const QByteArray super = SuperJournal(journal.Number(), SizeOf(journal.Number(), FileName::Shown(path)));
  namesSuperJournal_ = !super.isEmpty();
  rollsBack_ = !namesSuperJournal_ || FileExists(super);
}

// While these are held nobody moves the log into the file or starts it anew; what is added at its end
// meanwhile is a whole change or is ignored.
bool SourceFile::LockLog() {
  const QByteArray path = path_ + "-shm";
  logIndex_ = open(path.constData(), O_RDONLY | O_CLOEXEC);
  if (logIndex_ < 0) return true;
  for (const off_t byte : {logCheckpointLock, logFirstReaderLock}) {
    struct flock lock = LockOf(F_RDLCK, byte, 1);
    if (fcntl(logIndex_, F_SETLK, &lock) != 0) return false;
  }
  return true;
}

bool SourceFile::Copy(const QByteArray& target) {
  const QByteArray log = path_ + "-wal";
  const bool hasIndex = FileExists(path_ + "-shm");
  const bool locked = LockLog();
  const Stamp fileBefore(path_);
  const Stamp logBefore(log);
  CopyInto(descriptor_, shown_, target);
  unlink((target + "-journal").constData());
  unlink((target + "-wal").constData());
  if (rollsBack_) {
    CopyFile(path_ + "-journal", target + "-journal");
    if (namesSuperJournal_) {
      // It was decided here that the change is undone; the copy must not ask again.
      const Descriptor copy(target + "-journal", O_WRONLY);
      constexpr std::array<char, 8> nothing{};
      const qint64 end = SizeOf(copy.Number(), FileName::Shown(target));
      if (pwrite(copy.Number(), nothing.data(), nothing.size(), end - 8) != 8) FailWithErrno(target);
    }
  }
  if (!logBefore.there) return Stamp(log) == logBefore;
  CopyFile(log, target + "-wal");
  if (hasIndex && locked && logIndex_ >= 0) return true;
  return fileBefore == Stamp(path_) && logBefore == Stamp(log) && !FileExists(path_ + "-shm") == !hasIndex;
}

void FailAsBoth(const QString& shown) {
  throw Failure(shown + QStringLiteral(": cannot be main and thresholds file at once"));
}

namespace {

struct Copying {
  std::unique_ptr<SourceFile> file;
  QByteArray target;
};

/// The one that is in use; null if the copies are made.
const SourceFile* TryToCopy(const std::vector<Copying>& files) {
  const SourceFile* inUse = nullptr;
  for (const Copying& one : files) {
    if (inUse == nullptr && !one.file->TryLock()) inUse = one.file.get();
  }
  if (inUse == nullptr) {
    for (const Copying& one : files) one.file->LookAtJournal();
    for (const Copying& one : files) {
      if (inUse == nullptr && !one.file->Copy(one.target)) inUse = one.file.get();
    }
  }
  for (const Copying& one : files) one.file->Unlock();
  return inUse;
}

}  // namespace

void CopyTogether(const QString& mainName, const QByteArray& mainTarget, const QString& thresholdsName,
                  const QByteArray& thresholdsTarget, const Deadline& deadline, SourceFile::Needs needs) {
  std::vector<Copying> files;
  files.push_back({std::make_unique<SourceFile>(mainName, needs), mainTarget});
  if (!thresholdsName.isEmpty()) {
    files.push_back({std::make_unique<SourceFile>(thresholdsName, needs), thresholdsTarget});
    const SourceFile& mainFile = *files.front().file;
    if (mainFile.IsSameFileAs(*files.back().file)) FailAsBoth(mainFile.Shown());
  }
  while (const SourceFile* const inUse = TryToCopy(files)) {
    if (!deadline.Pause()) throw InUse(inUse->Shown());
  }
}
