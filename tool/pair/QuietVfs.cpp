#include "tool/pair/QuietVfs.h"

#include <sqlite3.h>

#include "tool/pair/PrivateFolder.h"

namespace {

// SQLite keeps pointers to these for the life of the process.
sqlite3_vfs quiet{};
sqlite3_vfs* original = nullptr;
sqlite3_io_methods quietMethods{};
const sqlite3_io_methods* originalMethods = nullptr;

int DoNotSync(sqlite3_file* /*file*/, int /*flags*/) { return SQLITE_OK; }

int Open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  const int result = original->xOpen(vfs, name, file, flags, outFlags);
  if (result != SQLITE_OK || !PrivateFolder::Holds(name)) return result;
  if (originalMethods == nullptr) {
    originalMethods = file->pMethods;
    quietMethods = *originalMethods;
    quietMethods.xSync = DoNotSync;
  }
  // A file of another kind is synced like any other, which only takes longer.
  if (file->pMethods == originalMethods) file->pMethods = &quietMethods;
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
