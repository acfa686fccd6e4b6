#include "tool/pair/PrivateFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tool/Console.h"
#include "tool/FileName.h"

namespace {

constexpr const char* prefix = "/tarnbeam-db-";
constexpr std::array<const char*, 6> names = {"main",       "thresholds",      "read-main", "read-thresholds",
                                              "fresh-main", "fresh-thresholds"};
constexpr std::array<const char*, 4> suffixes = {"", "-journal", "-wal", "-shm"};
constexpr std::array<int, 3> endingSignals = {SIGINT, SIGTERM, SIGHUP};

// Where the one folder of this run is; the signal handler has nowhere else to look.
std::array<char, 4096> thisRuns{};

QByteArray TemporaryPlace() {
  const char* place = std::getenv("TMPDIR");
  return place != nullptr && *place != '\0' ? QByteArray(place) : QByteArray("/tmp");
}

/// Whether it is one of the copies, or what SQLite has beside one.
bool IsOfRun(const char* file) {
  for (const char* name : names) {
    const std::size_t length = std::strlen(name);
    if (std::strncmp(file, name, length) != 0) continue;
    const char* const rest = file + length;
    // The journal that two files share has something random in its name.
    if (std::strncmp(rest, "-mj", 3) == 0) return true;
    for (const char* suffix : suffixes) {
      if (std::strcmp(rest, suffix) == 0) return true;
    }
  }
  return false;
}

/// Only what a signal handler may call, as readdir() is not.
void Empty(int folder) {
  alignas(dirent64) std::array<char, 1 << 12> entries{};
  lseek(folder, 0, SEEK_SET);
  long size = 0;
  while ((size = syscall(SYS_getdents64, folder, entries.data(), entries.size())) > 0) {
    for (long at = 0; at < size;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(entries.data() + at);
      if (IsOfRun(entry->d_name)) unlinkat(folder, entry->d_name, 0);
      at += entry->d_reclen;
    }
  }
}

void Remove(const char* path) {
  const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (folder < 0) return;
  Empty(folder);
  close(folder);
  rmdir(path);
}

void RemoveAndEnd(int signal) {
  Remove(thisRuns.data());
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void WatchSignals() {
  for (const int signal : endingSignals) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = RemoveAndEnd;
    sigaction(signal, &action, nullptr);
  }
}

/// A folder belongs to its run as long as the run holds the lock.
bool LockFolder(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

bool IsStillThere(const QByteArray& path, int descriptor) {
  struct stat byPath {};
  struct stat byDescriptor {};
  return stat(path.constData(), &byPath) == 0 && fstat(descriptor, &byDescriptor) == 0 &&
         byPath.st_ino == byDescriptor.st_ino && byPath.st_dev == byDescriptor.st_dev;
}

void RemoveIfAbandoned(const QByteArray& path) {
  struct stat status {};
  if (lstat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid()) return;
  const int descriptor = open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return;
  if (LockFolder(descriptor)) {
    Empty(descriptor);
    rmdir(path.constData());
  }
  close(descriptor);
}

[[noreturn]] void Refuse(const QByteArray& place, int error) {
  throw Failure(FileName::Shown(place) + QStringLiteral(": cannot take temporary files (") +
                FileName::SystemError(error) + QStringLiteral("); TMPDIR can name another folder"));
}

}  // namespace

PrivateFolder::PrivateFolder() {
  const QByteArray place = TemporaryPlace();
  while (descriptor_ < 0) {
    path_ = place + prefix + "XXXXXX";
    if (path_.size() >= static_cast<int>(thisRuns.size())) Refuse(place, ENAMETOOLONG);
    if (mkdtemp(path_.data()) == nullptr) Refuse(place, errno);
    descriptor_ = open(path_.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool locked = descriptor_ >= 0 && LockFolder(descriptor_);
    if (locked && IsStillThere(path_, descriptor_)) continue;
    const int error = errno;
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
    // Another run that removes leftovers may have the folder, or have taken it away; then another one is
    // made.
    if (locked || error == EWOULDBLOCK || error == ENOENT) continue;
    rmdir(path_.constData());
    Refuse(place, error);
  }
  std::copy_n(path_.constData(), path_.size() + 1, thisRuns.begin());
  WatchSignals();
}

PrivateFolder::~PrivateFolder() {
  // By what is open: another descriptor may no longer be had.
  Empty(descriptor_);
  rmdir(path_.constData());
  close(descriptor_);
}

QByteArray PrivateFolder::Path(Name name) const {
  return path_ + '/' + names.at(static_cast<std::size_t>(name));
}

bool PrivateFolder::Holds(const char* path) {
  const std::size_t length = std::strlen(thisRuns.data());
  return path != nullptr && length > 0 && std::strncmp(path, thisRuns.data(), length) == 0 &&
         path[length] == '/';
}

void PrivateFolder::RemoveLeftovers() {
  const QByteArray place = TemporaryPlace();
  DIR* const folder = opendir(place.constData());
  if (folder == nullptr) return;
  while (const dirent* entry = readdir(folder)) {
    if (std::strncmp(entry->d_name, prefix + 1, std::strlen(prefix) - 1) != 0) continue;
    RemoveIfAbandoned(place + '/' + entry->d_name);
  }
  closedir(folder);
}
