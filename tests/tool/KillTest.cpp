// Runs that are killed leave both files as they were or as they were to be.
#include <QDir>
#include <QFile>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/KillSweep.h"

namespace {

// A pair in the middle of its life.
class KillTest : public KillSweep {
 protected:
  void SetUp() override {
    CreateFilesWith({SiteEntry("S", "1"), SiteEntry("S", "2"), PathEntry("P")});
    WriteJson("none.json", {});
    WriteJson("more.json", {SiteEntry("T"), PathEntry("P"), PathEntry("Q")});
    ASSERT_TRUE(QDir(Folder()).mkdir("source"));
    RunWell({"create", "source/m", "source/t"});
    RunWell({"import", "source/m", "source/t", "more.json"});
    Keep();
  }

  QString Seen() override { return RunWell({"export", "m", "t"}); }

  QStringList ChangeAgain() override {
    const QString seen = Seen();
    EXPECT_EQ(RunWell({"import", "m", "t", "none.json"}), "0 alignments saved, 0 of sites and 0 of paths\n");
    EXPECT_EQ(Seen(), seen);
    return {"in.json", "m", "more.json", "none.json", "source", "t"};
  }
};

TEST_P(KillTest, BothFilesAreBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(
    Tool, KillTest,
    testing::Values(Change{"Import", {"import", "m", "t", "more.json"}, 3},
                    Change{"Merge", {"merge", "m", "t", "source/m", "source/t"}, 3},
                    Change{"DeleteSite", {"delete", "m", "t", "--site", "S", "--yes"}, 3},
                    Change{"DeleteReport", {"delete", "m", "t", "--path", "P", "--index", "0", "--yes"}, 3}),
    NameOf);

// The journals of such files are of one file alone, so the change goes by journals of the other kind.
class KillInWalModeTest : public KillTest {
 protected:
  void SetUp() override {
    KillTest::SetUp();
    for (const char* file : {"m", "t"}) RunSql(Path(file), "PRAGMA journal_mode = WAL");
    Keep();
  }
};

TEST_P(KillInWalModeTest, BothFilesAreBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillInWalModeTest,
                         testing::Values(Change{"Import", {"import", "m", "t", "more.json"}, 9}), NameOf);

// Whole files take the place of others.
class KillRestoreTest : public KillTest {
 protected:
  void SetUp() override {
    KillTest::SetUp();
    RunWell({"backup", "source/m", "source/t", "b"});
  }
  QStringList ChangeAgain() override { return QStringList{"b"} + KillTest::ChangeAgain(); }
};

TEST_P(KillRestoreTest, BothFilesAreBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillRestoreTest,
                         testing::Values(Change{"Restore", {"restore", "b", "m", "t", "--yes"}, 3}), NameOf);

// What goes is a site without reports.
class KillRepairTest : public KillTest {
 protected:
  void SetUp() override {
    KillTest::SetUp();
    RunSql(Path("m"), "INSERT INTO Sites VALUES (7, 'nobody refers to it')");
    Keep();
  }
  QString Seen() override { return RunWell({"list", "m", "t"}); }
  // The copies of both files stay.
  QStringList ChangeAgain() override {
    QStringList files = KillTest::ChangeAgain() + FilesInFolder().filter("before-repair");
    files.sort();
    return files;
  }
};

TEST_P(KillRepairTest, BothFilesAreBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillRepairTest, testing::Values(Change{"Repair", {"repair", "m", "t"}, 3}),
                         NameOf);

// Before there are files. One that stands alone is completed by whoever runs it again.
class KillCreateTest : public KillSweep {
 protected:
  QString Seen() override {
    const Outcome outcome = Run({"export", "m", "t"});
    EXPECT_TRUE(outcome.status == 0 || outcome.err == "tarnbeam-db: m: no such file\n")
        << outcome.err.toStdString();
    return outcome.out;
  }

  QStringList ChangeAgain() override {
    const Outcome outcome = Run({"create", "m", "t"});
    EXPECT_TRUE(outcome.status == 0 || outcome.err == "tarnbeam-db: m and t exist already\n")
        << outcome.err.toStdString();
    EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\n");
    return {"m", "t"};
  }
};

TEST_P(KillCreateTest, BothFilesAreWholeOrNotThere) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillCreateTest, testing::Values(Change{"Create", {"create", "m", "t"}, 1}),
                         NameOf);

using KilledBackupTest = ToolTest;

// At its place the folder is whole or not there, and the next backup takes away what was left.
TEST_F(KilledBackupTest, FolderIsWholeOrAbsent) {
  CreateFilesWith({SiteEntry("S", "1"), PathEntry("P")});
  const QStringList words{"backup", "m", "t", "b"};
  int absent = 0;
  for (int number = 1;; ++number) {
    SCOPED_TRACE(number);
    Traced killed(Folder(), words);
    if (!killed.KillAt(number)) break;
    if (!FilesInFolder().contains("b")) {
      ++absent;
      RunWell(words);
    }
    EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
    RunWell({"restore", "b", "new", "newt"});
    EXPECT_EQ(ReadFile("new"), ReadFile("m"));
    for (const char* name : {"new", "newt"}) QFile::remove(Path(name));
    QDir(Path("b")).removeRecursively();
    if (HasFailure()) return;
  }
  EXPECT_GT(absent, 5);
}

}  // namespace
