#include "migration/File.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "core/Watch.h"

namespace {

// All of a file's mode but its type.
constexpr mode_t modeBits = 07777;

bool Done(bool succeeded, const char* call, const QByteArray& path) {
  return succeeded || File::Fail(errno, call, path);
}

bool WriteAll(int descriptor, const char* data, ssize_t size, const QByteArray& path) {
  while (size > 0) {
    const ssize_t written = write(descriptor, data, static_cast<size_t>(size));
    if (written < 0) return File::Fail(errno, "write", path);
    if (written == 0) return File::Fail(ENOSPC, "write", path);
    data += written;
    size -= written;
  }
  return true;
}

}  // namespace

File::File(const QByteArray& path, int flags, mode_t mode)
    : File(open(path.constData(), flags | O_CLOEXEC, mode), path, "open") {}

File::File(int descriptor, const QByteArray& path, const char* call) : descriptor_(descriptor), path_(path) {
  Done(descriptor >= 0, call, path);
}

File File::MakeNew(const QByteArray& start) {
  QByteArray path = start + "XXXXXX";
  const int descriptor = mkostemp(path.data(), O_CLOEXEC);
  return {descriptor, path, "make"};
}

File::~File() {
  const int error = errno;
  if (descriptor_ >= 0) Done(close(descriptor_) == 0, "close", path_);
  errno = error;
}

bool File::Stat(struct stat* status) const { return Done(fstat(descriptor_, status) == 0, "look at", path_); }

bool File::SetMode(mode_t mode) const {
  struct stat status {};
  if (!Done(fchmod(descriptor_, mode & modeBits) == 0, "set the mode of", path_) || !Stat(&status))
    return false;
  return (status.st_mode & modeBits) == (mode & modeBits) || Fail(EPERM, "keep the mode of", path_);
}

bool File::Sync() const { return Done(fsync(descriptor_) == 0, "sync", path_); }

bool File::Lock() const { return Done(flock(descriptor_, LOCK_EX | LOCK_NB) == 0, "lock", path_); }

bool File::Append(const File& source) const {
  constexpr size_t blockSize = 1 << 16;
  const auto block = std::make_unique<char[]>(blockSize);
  for (;;) {
    const ssize_t size = read(source.descriptor_, block.get(), blockSize);
    if (size <= 0) return Done(size == 0, "read", source.path_);
    if (!WriteAll(descriptor_, block.get(), size, path_)) return false;
  }
}

bool File::Exists(const QByteArray& path, struct stat* status) {
  if (stat(path.constData(), status) == 0) return true;
  return errno != ENOENT && Fail(errno, "look at", path);
}

bool File::Rename(const QByteArray& from, const QByteArray& to, int tolerated) {
  if (std::rename(from.constData(), to.constData()) == 0) return true;
  return errno != tolerated && Fail(errno, "rename", from);
}

bool File::Remove(const QByteArray& path) {
  return Done(unlink(path.constData()) == 0 || errno == ENOENT, "remove", path);
}

QByteArray File::Resolved(const QByteArray& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.constData(), nullptr), &std::free);
  Done(resolved != nullptr, "follow", path);
  return resolved.get();
}

bool File::Fail(int error, const char* what, const QByteArray& path) {
  if (Watch::IsOn()) {
    Watch::Failed(error, QStringLiteral("%1 %2: %3")
                             .arg(QLatin1String(what), QString::fromLocal8Bit(path),
                                  QString::fromLocal8Bit(std::strerror(error))));
  }
  errno = error;
  return false;
}
