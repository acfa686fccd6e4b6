#pragma once

#include "tests/tool/ToolTest.h"

// What keeps the program from writing.
enum class Shortage {
  // A file system in memory with so much room. Where user namespaces are not allowed, the other.
  SmallFileSystem,
  // No file may grow beyond that.
  SmallFiles
};

// Runs of the program in folders that have no room left, with more and more of it until the run comes
// through.
class SmallDisk : public ToolTest, public testing::WithParamInterface<Shortage> {
 public:
  static std::string NameOf(const testing::TestParamInfo<Shortage>& test);

 protected:
  // Whether it is files that may not grow, as it is asked for or all that is possible.
  static bool LimitsFiles();

  // The program with the files m and t, where they are there, in a folder with `kilobytes` of room, those of
  // the two included. Files outside it are named by "../".
  Outcome RunWithRoom(int kilobytes, const QStringList& words);

  // From the first size on, until the command comes through: before that both files, and whatever else is
  // there, stay as they are, byte by byte.
  void Sweep(const QStringList& words, int first, int step);
};
