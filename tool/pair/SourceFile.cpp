#include "tool/pair/SourceFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"

namespace {

// Where SQLite has its locks in a database file, and in the index of a write-ahead log.
constexpr off_t PendingByte = 0x40000000;
constexpr off_t ReservedByte = PendingByte + 1;
constexpr off_t SharedFirst = PendingByte + 2;
constexpr off_t SharedSize = 510;
constexpr off_t LogCheckpointLock = 121;
constexpr off_t LogFirstReaderLock = 124;

constexpr std::array<char, 8> JournalMagic = {'\xd9', '\xd5', '\x05', '\xf9', '\x20', '\xa1', '\x63', '\xd7'};

bool ReadAt(int descriptor, off_t at, char* to, std::size_t size) {
  return pread(descriptor, to, size, at) == static_cast<ssize_t>(size);
}

quint32 BigEndian(const char* bytes) {
  quint32 number = 0;
  for (int at = 0; at < 4; ++at) number = number << 8 | static_cast<unsigned char>(bytes[at]);
  return number;
}

bool Exists(const QByteArray& path) {
  struct stat status {};
  return stat(path.constData(), &status) == 0;
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

bool SourceFile::LockBytes(short type, off_t from, off_t length) const {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = from;
  lock.l_len = length;
  if (fcntl(descriptor_, F_SETLK, &lock) == 0) return true;
  if (errno != EACCES && errno != EAGAIN) FailWithErrno(shown_);
  return false;
}

bool LockExclusively(int descriptor, const QString& shown) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = PendingByte;
  lock.l_len = SharedFirst + SharedSize - PendingByte;
  if (fcntl(descriptor, F_SETLK, &lock) == 0) return true;
  if (errno != EACCES && errno != EAGAIN) FailWithErrno(shown);
  return false;
}

bool SourceFile::TryLock() {
  if (!LockBytes(F_RDLCK, PendingByte, 1)) return false;
  const bool locked = LockBytes(F_RDLCK, SharedFirst, SharedSize);
  LockBytes(F_UNLCK, PendingByte, 1);
  return locked;
}

bool SourceFile::IsLockedByOthers(const QByteArray& path) {
  const Descriptor file(path, O_RDONLY);
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = PendingByte;
  lock.l_len = SharedFirst + SharedSize - PendingByte;
  return file.IsOpen() && fcntl(file.Number(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void SourceFile::Unlock() {
  if (logIndex_ >= 0) close(logIndex_);
  logIndex_ = -1;
  LockBytes(F_UNLCK, SharedFirst, SharedSize);
}

// The name stands at the journal's end, before its length, the sum of its characters and the magic.
QByteArray SourceFile::SuperJournal(int journal, off_t size) const {
  constexpr off_t TailSize = 16;
  std::array<char, TailSize> tail{};
  if (size < TailSize || !ReadAt(journal, size - TailSize, tail.data(), tail.size())) return {};
  if (std::memcmp(tail.data() + 8, JournalMagic.data(), JournalMagic.size()) != 0) return {};
  const quint32 length = BigEndian(tail.data());
  if (length == 0 || length > PATH_MAX || static_cast<off_t>(length) > size - TailSize) return {};
  QByteArray name(static_cast<int>(length), '\0');
  if (!ReadAt(journal, size - TailSize - static_cast<off_t>(length), name.data(), length)) return {};
  quint32 sum = BigEndian(tail.data() + 4);
  for (const char character : qAsConst(name)) sum -= static_cast<quint32>(character);
  return sum == 0 ? name : QByteArray();
}

// As SQLite decides: a journal counts if nobody is in the middle of the change and if the journal that it
// shares with another file, should there be one, still exists. Once that is gone the change was committed.
void SourceFile::LookAtJournal() {
  rollsBack_ = false;
  namesSuperJournal_ = false;
  struct flock reserved {};
  reserved.l_type = F_WRLCK;
  reserved.l_whence = SEEK_SET;
  reserved.l_start = ReservedByte;
  reserved.l_len = 1;
  if (fcntl(descriptor_, F_GETLK, &reserved) != 0) FailWithErrno(shown_);
  if (reserved.l_type != F_UNLCK) return;
  const QByteArray path = path_ + "-journal";
  const Descriptor journal(path, O_RDONLY);
  if (!journal.IsOpen()) {
    if (errno != ENOENT) FailWithErrno(FileName::Shown(FileName::FromBytes(path)));
    return;
  }
  char first = 0;
  if (!ReadAt(journal.Number(), 0, &first, 1) || first == 0) return;
  const QByteArray super = SuperJournal(journal.Number(), SizeOf(journal.Number()));
  namesSuperJournal_ = !super.isEmpty();
  rollsBack_ = !namesSuperJournal_ || Exists(super);
}

// While these are held nobody moves the log into the file or starts it anew; what is added at its end
// meanwhile is a whole change or is ignored.
bool SourceFile::LockLog() {
  const QByteArray path = path_ + "-shm";
  logIndex_ = open(path.constData(), O_RDONLY | O_CLOEXEC);
  if (logIndex_ < 0) return true;
  for (const off_t byte : {LogCheckpointLock, LogFirstReaderLock}) {
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    if (fcntl(logIndex_, F_SETLK, &lock) != 0) return false;
  }
  return true;
}

bool SourceFile::Copy(const QByteArray& target) {
  const QByteArray log = path_ + "-wal";
  const bool hasIndex = Exists(path_ + "-shm");
  const bool locked = LockLog();
  const Stamp fileBefore(path_);
  const Stamp logBefore(log);
  const Descriptor to(target, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (!to.IsOpen()) FailWithErrno(target);
  CopyContent(descriptor_, shown_, to.Number(), target);
  unlink((target + "-journal").constData());
  unlink((target + "-wal").constData());
  if (rollsBack_) {
    CopyFile(path_ + "-journal", target + "-journal");
    if (namesSuperJournal_) {
      // It was decided here that the change is undone; the copy must not ask again.
      const Descriptor copy(target + "-journal", O_WRONLY);
      constexpr std::array<char, 8> Nothing{};
      if (pwrite(copy.Number(), Nothing.data(), Nothing.size(), SizeOf(copy.Number()) - 8) != 8) {
        FailWithErrno(FileName::Shown(FileName::FromBytes(target)));
      }
    }
  }
  if (!logBefore.there) return Stamp(log) == logBefore;
  CopyFile(log, target + "-wal");
  if (hasIndex && locked && logIndex_ >= 0) return true;
  return fileBefore == Stamp(path_) && logBefore == Stamp(log) && !Exists(path_ + "-shm") == !hasIndex;
}

void CopyTogether(SourceFile* mainFile, const QByteArray& mainTarget, SourceFile* thresholdsFile,
                  const QByteArray& thresholdsTarget, const Deadline& deadline) {
  struct {
    SourceFile* file;
    const QByteArray& target;
  } const both[] = {{mainFile, mainTarget}, {thresholdsFile, thresholdsTarget}};
  const SourceFile* inUse = nullptr;
  do {
    inUse = nullptr;
    for (const auto& one : both) {
      if (inUse == nullptr && one.file != nullptr && !one.file->TryLock()) inUse = one.file;
    }
    if (inUse == nullptr) {
      for (const auto& one : both) {
        if (one.file != nullptr) one.file->LookAtJournal();
      }
      for (const auto& one : both) {
        if (inUse == nullptr && one.file != nullptr && !one.file->Copy(one.target)) inUse = one.file;
      }
    }
    for (const auto& one : both) {
      if (one.file != nullptr) one.file->Unlock();
    }
  } while (inUse != nullptr && deadline.Pause());
  if (inUse != nullptr) throw InUse(inUse->Shown());
}
