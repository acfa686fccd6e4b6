#pragma once

#include <sqlite3.h>

// A way in which a call below SQLite fails, and how many numbers its shortened sweep leaves out.
struct FileFault {
  const char* call;
  int code;
  int stride;
};

constexpr FileFault fileFaults[] = {
    {"read", SQLITE_IOERR_READ, 4},     {"write", SQLITE_IOERR_WRITE, 6},       {"write", SQLITE_FULL, 7},
    {"sync", SQLITE_IOERR_FSYNC, 3},    {"truncate", SQLITE_IOERR_TRUNCATE, 3}, {"open", SQLITE_CANTOPEN, 3},
    {"delete", SQLITE_IOERR_DELETE, 3},
};
