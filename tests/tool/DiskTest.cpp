// Disks that are full: a command that does not come through leaves everything as it was.
#include <QFile>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/SmallDisk.h"

namespace {

class DiskTest : public SmallDisk {
 protected:
  void CreateAndKeepEntries() {
    QJsonArray entries;
    for (int number = 0; number < 30; ++number) {
      entries.append(SiteEntry("S", QString::number(number)));
      entries.append(PathEntry("P"));
    }
    CreateFilesWith({SiteEntry("S"), PathEntry("P")});
    WriteJson("in.json", entries);
  }
  int SizeOfBoth() { return int(ReadFile("m").size() + ReadFile("t").size()) / 1024; }
};

TEST_P(DiskTest, Import) {
  CreateAndKeepEntries();
  Sweep({"import", "m", "t", "../in.json"}, LimitsFiles() ? 4 : SizeOfBoth(), 16);
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\nsite       31  S\npath       31  P\n");
}

TEST_P(DiskTest, Delete) {
  CreateAndKeepEntries();
  RunWell({"import", "m", "t", "in.json"});
  Sweep({"delete", "m", "t", "--site", "S", "--yes"}, LimitsFiles() ? 4 : SizeOfBoth(), 12);
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\npath       31  P\n");
}

TEST_P(DiskTest, Create) {
  Sweep({"create", "m", "t"}, 4, 16);
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\n");
}

TEST_P(DiskTest, CreateOfTheThresholdsAlone) {
  CreateFiles();
  ASSERT_TRUE(QFile::remove(Path("t")));
  Sweep({"create", "m", "t"}, LimitsFiles() ? 4 : int(ReadFile("m").size()) / 1024, 4);
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\n");
}

#ifdef TARNBEAM_TOOL_DRAWS

TEST_P(DiskTest, Pages) {
  CreateFilesWith({SiteEntry("S")});
  QFile::remove(Path("in.json"));
  const int first = LimitsFiles() ? 4 : SizeOfBoth();
  Sweep({"report", "m", "t", "--site", "S", "--pdf", "."}, first, 4);
  EXPECT_TRUE(ReadFile("S-A-Report.pdf").trimmed().endsWith("%%EOF"));
  // The one that is there stays.
  const QByteArray page = ReadFile("S-A-Report.pdf");
  const Outcome outcome = RunWithRoom(first, {"report", "m", "t", "--site", "S", "--pdf", "."});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(ReadFile("S-A-Report.pdf"), page);
}

#endif

INSTANTIATE_TEST_SUITE_P(Shortage, DiskTest, testing::Values(Shortage::SmallFileSystem, Shortage::SmallFiles),
                         SmallDisk::NameOf);

}  // namespace
