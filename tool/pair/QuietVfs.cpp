#include "tool/pair/QuietVfs.h"

#include <sqlite3.h>

#include <array>

#include "tool/pair/PrivateFolder.h"

namespace {

// SQLite keeps pointers to these for the life of the process.
sqlite3_vfs quiet{};
sqlite3_vfs* original = nullptr;
/// The methods of one kind of file, with and without syncs. Databases are of one kind, journals of another.
struct Methods {
  const sqlite3_io_methods* loud = nullptr;
  sqlite3_io_methods quiet{};
};
std::array<Methods, 4> kinds;

int DoNotSync(sqlite3_file* /*file*/, int /*flags*/) { return SQLITE_OK; }

/// Those without syncs; if there are more kinds than expected, files are synced, which only takes longer.
const sqlite3_io_methods* QuietOf(const sqlite3_io_methods* methods) {
  for (Methods& kind : kinds) {
    if (kind.loud == nullptr) {
      kind.loud = methods;
      kind.quiet = *methods;
      kind.quiet.xSync = DoNotSync;
    }
    if (kind.loud == methods) return &kind.quiet;
  }
  return methods;
}

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  const int result = original->xOpen(vfs, name, file, flags, outFlags);
  if (result == SQLITE_OK && PrivateFolder::Holds(name)) file->pMethods = QuietOf(file->pMethods);
  return result;
}

int Delete(sqlite3_vfs* vfs, const char* name, int syncFolder) {
  return original->xDelete(vfs, name, PrivateFolder::Holds(name) ? 0 : syncFolder);
}

}  // namespace

namespace QuietVfs {

void Install() {
  sqlite3_config(SQLITE_CONFIG_URI, 0);
  original = sqlite3_vfs_find(nullptr);
  if (original == nullptr) return;
  quiet = *original;
  quiet.zName = "tarnbeam-quiet";
  quiet.xOpen = Open;
  quiet.xDelete = Delete;
  sqlite3_vfs_register(&quiet, 1);
}

}  // namespace QuietVfs
