// Runs that are killed leave both files as they were or as they were to be.
#include <QDir>

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

}  // namespace
