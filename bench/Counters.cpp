#include "bench/Counters.h"

#include <dlfcn.h>
#include <malloc.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

// The program's own definitions are found before the C library's, even by the shared objects that it uses.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool counting = false;
Counters counters{};
long liveBytes = 0;

void Allocated(void* block) {
  if (!counting || block == nullptr) return;
  ++counters.allocations;
  liveBytes += static_cast<long>(malloc_usable_size(block));
  counters.peakBytes = std::max(counters.peakBytes, static_cast<std::size_t>(std::max(liveBytes, 0L)));
}

void Released(void* block) {
  if (counting && block != nullptr) liveBytes -= static_cast<long>(malloc_usable_size(block));
}

template <typename Function>
Function Next(Function, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

void Counters::Start() {
  counters = {};
  liveBytes = 0;
  counting = true;
}

Counters Counters::Stop() {
  counting = false;
  return counters;
}

extern "C" {

void* malloc(std::size_t size) {
  void* block = __libc_malloc(size);
  Allocated(block);
  return block;
}

void* calloc(std::size_t count, std::size_t size) {
  void* block = __libc_calloc(count, size);
  Allocated(block);
  return block;
}

void* realloc(void* block, std::size_t size) {
  Released(block);
  void* moved = __libc_realloc(block, size);
  Allocated(moved);
  return moved;
}

void free(void* block) {
  Released(block);
  __libc_free(block);
}

int fsync(int fd) {
  static const auto next = Next(fsync, "fsync");
  counters.syncs += counting ? 1 : 0;
  return next(fd);
}

int fdatasync(int fd) {
  static const auto next = Next(fdatasync, "fdatasync");
  counters.syncs += counting ? 1 : 0;
  return next(fd);
}

ssize_t write(int fd, const void* data, std::size_t size) {
  static const auto next = Next(write, "write");
  counters.writes += counting ? 1 : 0;
  return next(fd, data, size);
}

ssize_t pwrite64(int fd, const void* data, std::size_t size, off64_t offset) {
  static const auto next = Next(pwrite64, "pwrite64");
  counters.writes += counting ? 1 : 0;
  return next(fd, data, size, offset);
}

}  // extern "C"
