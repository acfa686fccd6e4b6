#include "tests/support/FileCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <utility>

#include "tests/support/NextDefinition.h"
#include "tests/support/PowerCut.h"

namespace {

struct State {
  FaultPlan plan;
  QStringList trace;
};

// Null while calls are plainly forwarded: some come before main begins and after it ends.
State* active = nullptr;

State& Activated() {
  if (!active) active = new State;
  return *active;
}

QByteArray Target(const char* path) { return path; }

QByteArray Target(const char* from, const char* to) { return QByteArray(from) + " -> " + to; }

QByteArray Target(int descriptor) {
  char path[PATH_MAX];
  const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor);
  const ssize_t length = readlink(link.constData(), path, sizeof path);
  return length < 0 ? QByteArray() : QByteArray(path, static_cast<int>(length));
}

bool IsStandard(int descriptor) { return descriptor >= 0 && descriptor <= STDERR_FILENO; }

template <typename... Rest>
bool IsStandard(const char*, Rest...) {
  return false;
}

bool IsSwept(const QByteArray& name) {
  return name != "open" && name != "close" && name != "stat" && name != "read";
}

// Whether the call is to fail; errno is then set.
template <typename... On>
bool Fails(const char* name, On... on) {
  if (!active || IsStandard(on...)) return false;
  const int errnoBefore = errno;
  const QByteArray target = Target(on...);
  const bool swept = IsSwept(name);
  int code = errnoBefore;
  active->trace.append(QLatin1String(name) + QLatin1Char(' ') + QString::fromLocal8Bit(target));
  const bool fails = active->plan.Meet({name, swept, target, {}}, &code) != nullptr;
  if (!fails) PowerCut::Before(name, on...);
  errno = fails ? code : errnoBefore;
  return fails;
}

const char* OpenName(int flags) { return flags & (O_CREAT | O_TRUNC) ? "create" : "open"; }

bool TakesMode(int flags) { return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE; }

}  // namespace

void FileCalls::Arm(const Fault& fault) { Activated().plan.Arm(fault); }

void FileCalls::Record() { Activated(); }

void FileCalls::Reset() { delete std::exchange(active, nullptr); }

bool FileCalls::Fired() { return active && active->plan.Fired() > 0; }

int FileCalls::Count(const QByteArray& calls) { return active ? active->plan.Count(calls) : 0; }

QStringList FileCalls::TakeTrace() { return active ? std::exchange(active->trace, {}) : QStringList(); }

// Qt and SQLite are shared objects: their calls only come here when the definition is exported.
#define EXPORTED extern "C" __attribute__((visibility("default")))

// One definition: the name that tests know it by with what it works on, the result, and the function's own
// name, parameters, arguments, and whether it may throw.
#define FORWARD(on, result, function, parameters, arguments, exceptions) \
  EXPORTED result function parameters exceptions {                       \
    return Fails on ? result{-1} : NEXT_DEFINITION(function) arguments;  \
  }

#define FORWARD_OPEN(function, parameters, arguments)                               \
  EXPORTED int function parameters {                                                \
    va_list rest;                                                                   \
    va_start(rest, flags);                                                          \
    const mode_t mode = TakesMode(flags) ? va_arg(rest, mode_t) : 0;                \
    va_end(rest);                                                                   \
    return Fails(OpenName(flags), path) ? -1 : NEXT_DEFINITION(function) arguments; \
  }

FORWARD_OPEN(open, (const char* path, int flags, ...), (path, flags, mode))
FORWARD_OPEN(open64, (const char* path, int flags, ...), (path, flags, mode))
FORWARD_OPEN(openat, (int folder, const char* path, int flags, ...), (folder, path, flags, mode))
FORWARD_OPEN(openat64, (int folder, const char* path, int flags, ...), (folder, path, flags, mode))

FORWARD(("close", fd), int, close, (int fd), (fd), noexcept(false))
FORWARD(("create", path), int, mkostemp, (char* path, int flags), (path, flags), noexcept(false))
FORWARD(("create", path), int, mkostemp64, (char* path, int flags), (path, flags), noexcept(false))
FORWARD(("stat", path), int, stat, (const char* path, struct stat* status), (path, status), noexcept)
FORWARD(("stat", path), int, stat64, (const char* path, struct stat64* status), (path, status), noexcept)
FORWARD(("stat", fd), int, fstat, (int fd, struct stat* status), (fd, status), noexcept)
FORWARD(("stat", fd), int, fstat64, (int fd, struct stat64* status), (fd, status), noexcept)
FORWARD(("chmod", fd), int, fchmod, (int fd, mode_t mode), (fd, mode), noexcept)
FORWARD(("flock", fd), int, flock, (int fd, int operation), (fd, operation), noexcept)
FORWARD(("read", fd), ssize_t, read, (int fd, void* data, size_t size), (fd, data, size), noexcept(false))
FORWARD(("read", fd), ssize_t, pread, (int fd, void* data, size_t size, off_t at), (fd, data, size, at),
        noexcept(false))
FORWARD(("read", fd), ssize_t, pread64, (int fd, void* data, size_t size, off64_t at), (fd, data, size, at),
        noexcept(false))
FORWARD(("write", fd), ssize_t, write, (int fd, const void* data, size_t size), (fd, data, size),
        noexcept(false))
FORWARD(("write", fd), ssize_t, pwrite, (int fd, const void* data, size_t size, off_t at),
        (fd, data, size, at), noexcept(false))
FORWARD(("write", fd), ssize_t, pwrite64, (int fd, const void* data, size_t size, off64_t at),
        (fd, data, size, at), noexcept(false))
FORWARD(("sync", fd), int, fsync, (int fd), (fd), noexcept(false))
FORWARD(("sync", fd), int, fdatasync, (int fd), (fd), noexcept(false))
FORWARD(("truncate", fd), int, ftruncate, (int fd, off_t size), (fd, size), noexcept)
FORWARD(("truncate", fd), int, ftruncate64, (int fd, off64_t size), (fd, size), noexcept)
FORWARD(("rename", from, to), int, rename, (const char* from, const char* to), (from, to), noexcept)
FORWARD(("rename", from, to), int, renameat, (int fromFolder, const char* from, int toFolder, const char* to),
        (fromFolder, from, toFolder, to), noexcept)
FORWARD(("rename", from, to), int, renameat2,
        (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
        (fromFolder, from, toFolder, to, flags), noexcept)
FORWARD(("link", from, to), int, link, (const char* from, const char* to), (from, to), noexcept)
FORWARD(("link", from, to), int, linkat,
        (int fromFolder, const char* from, int toFolder, const char* to, int flags),
        (fromFolder, from, toFolder, to, flags), noexcept)
FORWARD(("unlink", path), int, unlink, (const char* path), (path), noexcept)
FORWARD(("unlink", path), int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags),
        noexcept)
FORWARD(("copy", to), ssize_t, sendfile, (int to, int from, off_t* at, size_t size), (to, from, at, size),
        noexcept)
FORWARD(("copy", to), ssize_t, sendfile64, (int to, int from, off64_t* at, size_t size), (to, from, at, size),
        noexcept)
FORWARD(("copy", to), ssize_t, copy_file_range,
        (int from, off64_t* fromAt, int to, off64_t* toAt, size_t size, unsigned flags),
        (from, fromAt, to, toAt, size, flags), noexcept(false))
