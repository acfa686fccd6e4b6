#include "tests/support/ShimVfs.h"

#include <sqlite3.h>

namespace {

struct State {
  FaultPlan plan;
  long long written = 0;
  long long capacity = -1;  // none
  bool filled = false;
};

State& Shim() {
  static State state;
  return state;
}

sqlite3_vfs* real = nullptr;
sqlite3_vfs shim;

// SQLite provides the memory of a file: this, and the real file behind it.
struct ShimFile {
  sqlite3_file base;
  const char* path;  // SQLite keeps it while the file is open

  sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

ShimFile* Own(sqlite3_file* file) { return reinterpret_cast<ShimFile*>(file); }

template <typename Forward>
int Faulty(const char* name, const char* path, Forward forward) {
  int result = SQLITE_OK;
  const Fault* const fault = Shim().plan.Meet({name, true, path, {}}, &result);
  if (!fault) return forward();
  if (fault->IsPerformed()) forward();
  return result;
}

template <auto Method, typename... Arguments>
auto Forward(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* const behind = Own(file)->Real();
  return (behind->pMethods->*Method)(behind, arguments...);
}

int Read(sqlite3_file* file, void* data, int size, sqlite3_int64 at) {
  return Faulty("read", Own(file)->path,
                [&] { return Forward<&sqlite3_io_methods::xRead>(file, data, size, at); });
}

int Write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at) {
  return Faulty("write", Own(file)->path, [&]() -> int {
    State& state = Shim();
    if (state.capacity >= 0 && state.written + size > state.capacity) {
      state.filled = true;
      return SQLITE_FULL;
    }
    state.written += size;
    return Forward<&sqlite3_io_methods::xWrite>(file, data, size, at);
  });
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  return Faulty("truncate", Own(file)->path,
                [&] { return Forward<&sqlite3_io_methods::xTruncate>(file, size); });
}

int Sync(sqlite3_file* file, int flags) {
  return Faulty("sync", Own(file)->path, [&] { return Forward<&sqlite3_io_methods::xSync>(file, flags); });
}

// Version 2 of the method table: no memory-mapped pages, so every page goes through Read and Write.
const sqlite3_io_methods methods = {
    2,
    &Forward<&sqlite3_io_methods::xClose>,
    &Read,
    &Write,
    &Truncate,
    &Sync,
    &Forward<&sqlite3_io_methods::xFileSize, sqlite3_int64*>,
    &Forward<&sqlite3_io_methods::xLock, int>,
    &Forward<&sqlite3_io_methods::xUnlock, int>,
    &Forward<&sqlite3_io_methods::xCheckReservedLock, int*>,
    &Forward<&sqlite3_io_methods::xFileControl, int, void*>,
    &Forward<&sqlite3_io_methods::xSectorSize>,
    &Forward<&sqlite3_io_methods::xDeviceCharacteristics>,
    &Forward<&sqlite3_io_methods::xShmMap, int, int, int, void volatile**>,
    &Forward<&sqlite3_io_methods::xShmLock, int, int, int>,
    &Forward<&sqlite3_io_methods::xShmBarrier>,
    &Forward<&sqlite3_io_methods::xShmUnmap, int>,
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs*, const char* path, sqlite3_file* file, int flags, int* outFlags) {
  ShimFile* const own = Own(file);
  own->base.pMethods = nullptr;  // no close after a failed open
  own->path = path;
  return Faulty("open", path, [&] {
    const int result = real->xOpen(real, path, own->Real(), flags, outFlags);
    if (own->Real()->pMethods) own->base.pMethods = &methods;
    return result;
  });
}

int Delete(sqlite3_vfs*, const char* path, int syncFolder) {
  return Faulty("delete", path, [&] { return real->xDelete(real, path, syncFolder); });
}

}  // namespace

ShimVfs::ShimVfs() {
  real = sqlite3_vfs_find("unix");
  // What is not replaced works on the copy as well: the real layer keeps no state of its own in it.
  shim = *real;
  shim.zName = "shim";
  shim.pNext = nullptr;
  shim.szOsFile += static_cast<int>(sizeof(ShimFile));
  shim.xOpen = &Open;
  shim.xDelete = &Delete;
  sqlite3_vfs_register(&shim, 1);
}

ShimVfs::~ShimVfs() {
  sqlite3_vfs_unregister(&shim);
  sqlite3_vfs_register(real, 1);
  Reset();
}

void ShimVfs::Arm(const Fault& fault) { Shim().plan.Arm(fault); }

void ShimVfs::FullAfter(long long bytes) { Shim().capacity = Shim().written + bytes; }

void ShimVfs::Reset() { Shim() = State(); }

bool ShimVfs::Fired() { return Shim().plan.Fired() > 0 || Shim().filled; }

int ShimVfs::Count(const QByteArray& calls) { return Shim().plan.Count(calls); }

long long ShimVfs::BytesWritten() { return Shim().written; }
