// Loaded into the program before libc: one of its calls on files fails, once or from then on.
//   FAILING_KIND     read, write or open: which calls are counted; lose: writes, which seem to succeed;
//                    move: those to a place that has to be free, which not every file system knows
//   FAILING_NUMBER   the one of them that fails, from 1 on
//   FAILING_LASTS    if it is there: all from that one on
//   FAILING_FOLDER   whose files are counted, including those of folders in it
//   FAILING_MARK     a file that is made when it has come to that
//   FAILING_COMMAND  if it is there: run by a shell then, and the call does not fail
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tests/support/NextDefinition.h"

namespace {

const char* Variable(const char* name) {
  const char* value = getenv(name);
  return value != nullptr ? value : "";
}

bool IsInFolder(const char* path) {
  const char* folder = Variable("FAILING_FOLDER");
  return *folder != '\0' && std::strncmp(path, folder, std::strlen(folder)) == 0;
}

bool IsInFolder(int descriptor) {
  std::array<char, 64> link{};
  std::array<char, PATH_MAX> path{};
  snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
  return readlink(link.data(), path.data(), path.size() - 1) > 0 && IsInFolder(path.data());
}

// Of calls by name and of those by descriptor together.
bool IsItsTurn(const char* kind) {
  static int calls = 0;
  const int late = ++calls - std::atoi(Variable("FAILING_NUMBER"));
  if (late < 0 || (late > 0 && getenv("FAILING_LASTS") == nullptr)) return false;
  close(NEXT_DEFINITION(open)(Variable("FAILING_MARK"), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  if (const char* command = getenv("FAILING_COMMAND")) return std::system(command) < 0;
  errno = std::strcmp(kind, "open") == 0 ? EMFILE : std::strcmp(kind, "move") == 0 ? EINVAL : EIO;
  return true;
}

template <typename File>
bool Fails(const char* kind, File file) {
  return std::strcmp(Variable("FAILING_KIND"), kind) == 0 && IsInFolder(file) && IsItsTurn(kind);
}

mode_t ModeOf(int flags, va_list rest) { return (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0; }

}  // namespace

// One definition: kind, file, the result, and the function's own name, parameters, arguments, and whether it
// may throw.
#define FORWARD(kind, file, result, function, parameters, arguments, exceptions)            \
  extern "C" __attribute__((visibility("default"))) result function parameters exceptions { \
    return Fails(kind, file) ? result{-1} : NEXT_DEFINITION(function) arguments;            \
  }

FORWARD("read", fd, ssize_t, read, (int fd, void* data, size_t size), (fd, data, size), noexcept(false))
FORWARD("read", fd, ssize_t, pread, (int fd, void* data, size_t size, off_t at), (fd, data, size, at),
        noexcept(false))
FORWARD("read", fd, ssize_t, pread64, (int fd, void* data, size_t size, off64_t at), (fd, data, size, at),
        noexcept(false))
FORWARD("write", fd, int, fsync, (int fd), (fd), noexcept(false))
FORWARD("write", fd, int, fdatasync, (int fd), (fd), noexcept(false))
FORWARD("write", fd, int, ftruncate64, (int fd, off64_t size), (fd, size), noexcept)
FORWARD("write", fd, int, fchmod, (int fd, mode_t mode), (fd, mode), noexcept)
FORWARD("write", path, int, unlink, (const char* path), (path), noexcept)

extern "C" __attribute__((visibility("default"))) int renameat2(int fromFolder, const char* from,
                                                                int toFolder, const char* to,
                                                                unsigned flags) noexcept {
  if (Fails("write", to) || Fails("move", to)) return -1;
  return NEXT_DEFINITION(renameat2)(fromFolder, from, toFolder, to, flags);
}

#define FORWARD_WRITE(function, parameters, arguments)                                            \
  extern "C" __attribute__((visibility("default"))) ssize_t function parameters noexcept(false) { \
    if (Fails("lose", fd)) return static_cast<ssize_t>(size);                                     \
    return Fails("write", fd) ? ssize_t{-1} : NEXT_DEFINITION(function) arguments;                \
  }

FORWARD_WRITE(write, (int fd, const void* data, size_t size), (fd, data, size))
FORWARD_WRITE(pwrite64, (int fd, const void* data, size_t size, off64_t at), (fd, data, size, at))

#define FORWARD_OPEN(function)                                                                       \
  extern "C" __attribute__((visibility("default"))) int function(const char* path, int flags, ...) { \
    va_list rest;                                                                                    \
    va_start(rest, flags);                                                                           \
    const mode_t mode = ModeOf(flags, rest);                                                         \
    va_end(rest);                                                                                    \
    return Fails("open", path) ? -1 : NEXT_DEFINITION(function)(path, flags, mode);                  \
  }

FORWARD_OPEN(open)
FORWARD_OPEN(open64)
