#include "tests/robustness/Sweep.h"

#include <sqlite3.h>

std::vector<int> CodesOf(const QString& call) {
  if (call.startsWith(QLatin1String("bind_"))) return {SQLITE_NOMEM};
  if (call.startsWith(QLatin1String("close"))) return {SQLITE_BUSY};
  if (call.startsWith(QLatin1String("open_v2"))) return {SQLITE_CANTOPEN, SQLITE_NOMEM};
  if (call.startsWith(QLatin1String("prepare_v2"))) {
    return {SQLITE_BUSY, SQLITE_IOERR, SQLITE_CORRUPT, SQLITE_NOMEM};
  }
  return {SQLITE_BUSY, SQLITE_IOERR, SQLITE_FULL, SQLITE_CORRUPT, SQLITE_NOMEM};
}
