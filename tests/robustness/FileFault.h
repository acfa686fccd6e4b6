#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

#include "tests/robustness/Sweep.h"
#include "tests/support/ShimVfs.h"

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

// What one run without a fault does to files.
struct FileUse {
  std::vector<int> counts;  // of the calls, in the order of fileFaults
  long long bytes = 0;      // written

  // What has been done since ShimVfs::Reset().
  static FileUse Taken() {
    FileUse use;
    for (const FileFault& fault : fileFaults) use.counts.push_back(ShimVfs::Count(fault.call));
    use.bytes = ShimVfs::BytesWritten();
    return use;
  }
};

// Calls `fail` with an arming function for every file call that is to fail; the shortened sweep leaves out
// `sparser` times as many numbers as the fault says.
template <typename Fail>
void ForEachFileFault(const FileUse& use, int sparser, Fail fail) {
  EXPECT_GT(std::accumulate(use.counts.begin(), use.counts.end(), 0), 0) << "no call can fail";
  std::size_t counted = 0;
  for (const FileFault& fault : fileFaults) {
    for (const int number : Swept(use.counts[counted++], sparser * fault.stride)) {
      SCOPED_TRACE(fault.call + (" " + std::to_string(number)) + " fails with " + std::to_string(fault.code));
      fail([&] { ShimVfs::Arm(Fault(fault.call, fault.code).At(number)); });
    }
  }
}

// The same for storage that is full after none, one, two ... blocks of `step` bytes; what only reads fills
// none.
template <typename Fail>
void ForEachFullStorage(const FileUse& use, int step, Fail fail) {
  const int capacities = static_cast<int>((use.bytes + step - 1) / step);
  for (const int number : Swept(capacities, 16)) {
    const long long capacity = static_cast<long long>(number - 1) * step;
    SCOPED_TRACE("full after " + std::to_string(capacity) + " bytes");
    fail([&] { ShimVfs::FullAfter(capacity); });
  }
}
