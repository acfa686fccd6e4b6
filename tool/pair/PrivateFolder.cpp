#include "tool/pair/PrivateFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
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

constexpr const char* Prefix = "/tarnbeam-db-";
constexpr std::array<const char*, 6> Names = {"main",       "thresholds",      "read-main", "read-thresholds",
                                              "fresh-main", "fresh-thresholds"};
constexpr std::array<const char*, 4> Suffixes = {"", "-journal", "-wal", "-shm"};
constexpr std::array<int, 4> EndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// Where the one folder of this run is; the signal handler has nowhere else to look.
std::array<char, 4096> thisRuns{};

QByteArray TemporaryPlace() {
  const char* place = std::getenv("TMPDIR");
  return place != nullptr && *place != '\0' ? QByteArray(place) : QByteArray("/tmp");
}

/// Only what a signal handler may call.
void Empty(int folder) {
  for (const char* name : Names) {
    for (const char* suffix : Suffixes) {
      std::array<char, 64> file{};
      const auto end = std::copy_n(name, std::strlen(name), file.begin());
      std::copy_n(suffix, std::strlen(suffix), end);
      unlinkat(folder, file.data(), 0);
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
  for (const int signal : EndingSignals) {
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

}  // namespace

PrivateFolder::PrivateFolder() {
  const QByteArray place = TemporaryPlace();
  // Another run that removes leftovers may take the folder away before it is locked; then another one is
  // made.
  while (descriptor_ < 0) {
    path_ = place + Prefix + "XXXXXX";
    if (path_.size() >= static_cast<int>(thisRuns.size()) || mkdtemp(path_.data()) == nullptr) {
      throw Failure(FileName::Shown(FileName::FromBytes(place)) +
                    QStringLiteral(": cannot take temporary files (") + FileName::SystemError(errno) +
                    QStringLiteral("); TMPDIR can name another folder"));
    }
    descriptor_ = open(path_.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor_ >= 0 && !(LockFolder(descriptor_) && IsStillThere(path_, descriptor_))) {
      close(descriptor_);
      descriptor_ = -1;
    }
  }
  std::copy_n(path_.constData(), path_.size() + 1, thisRuns.begin());
  WatchSignals();
}

PrivateFolder::~PrivateFolder() {
  Remove(path_.constData());
  close(descriptor_);
}

QByteArray PrivateFolder::Path(Name name) const {
  return path_ + '/' + Names.at(static_cast<std::size_t>(name));
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
    if (std::strncmp(entry->d_name, Prefix + 1, std::strlen(Prefix) - 1) != 0) continue;
    RemoveIfAbandoned(place + '/' + entry->d_name);
  }
  closedir(folder);
}
