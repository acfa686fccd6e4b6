// Runs that are killed leave both files as they were or as they were to be.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <random>

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

  QString Seen() override {
    // Whoever may not read a file may not read its journal either.
    for (const char* file : {"m", "t"}) {
      const QFile::Permissions ofFile = QFile::permissions(Path(file));
      for (const QString& left : QDir(Folder()).entryList({QString(file) + "-*"})) {
        EXPECT_EQ(QFile::permissions(Path(left)) & ~ofFile, QFile::Permissions()) << left.toStdString();
      }
    }
    return RunWell({"export", "m", "t"});
  }

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

// Whole files take the place of others, of which the last page counts, too.
class KillRestoreTest : public KillTest {
 protected:
  void SetUp() override {
    KillTest::SetUp();
    RunSql(Path("m"), "UPDATE AntennaAlignment SET Note = printf('%*c', 9000, 'x')");
    Keep();
    RunWell({"backup", "source/m", "source/t", "b"});
  }
  QStringList ChangeAgain() override { return QStringList{"b"} + KillTest::ChangeAgain(); }
};

TEST_P(KillRestoreTest, BothFilesAreBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillRestoreTest,
                         testing::Values(Change{"Restore", {"restore", "b", "m", "t", "--yes"}, 9}), NameOf);

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

INSTANTIATE_TEST_SUITE_P(Tool, KillRepairTest, testing::Values(Change{"Repair", {"repair", "m", "t"}, 9}),
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
    if (!killed.KillAt(number)) {
      EXPECT_EQ(killed.ExitStatus(), 0);
      break;
    }
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

// Large files are changed by thousands of calls, so a run is killed at moments by chance.
class KillLargeTest : public ToolTest {
 protected:
  static constexpr int before = 20000;
  static constexpr int added = 100;

  void SetUp() override {
    CreateFilesWith({SiteEntry("S")});
    const QString numbers =
        QString("WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < %1) ").arg(before);
    for (const char* rows :
         {"INSERT INTO Sites SELECT i, 'Site ' || i FROM n", "INSERT INTO Height SELECT i, i, 1 FROM n",
          "INSERT INTO Geolocation SELECT i, 1, 2, 3 FROM n",
          "INSERT INTO Orientation SELECT 2 * i + j, 1, 2, 3 FROM n, (SELECT 0 AS j UNION SELECT 1)",
          "INSERT INTO AntennaAlignment SELECT i, i, 'Sector', 'Position', 0, 2 * i, i, i, 2 * i + 1, i, 0, "
          "'note', 0 FROM n"}) {
      RunSql(Path("m"), numbers + rows);
    }
    RunSql(Path("t"), numbers + "INSERT INTO AntennaAlignmentThresholds SELECT i, i, i, 1, 1, 1 FROM n");
    QJsonArray entries;
    for (int number = 0; number < added; ++number) entries.append(SiteEntry("new", QString::number(number)));
    WriteJson("more.json", entries);
  }

  int Count(const char* file, const char* table) const {
    return Rows(Path(file), QString("SELECT count(*) FROM %1").arg(table)).value(0).toInt();
  }

  void ExpectBeforeOrAfter() {
    const bool isNew = RunWell({"list", "m", "t"}).endsWith("\nsite      100  new\n");
    EXPECT_EQ(Run({"check", "m", "t"}).status, 0);
    for (const char* file : {"m", "t"}) EXPECT_EQ(IntegrityCheck(Path(file)), QString("ok"));
    const int expected = isNew ? before + added : before;
    EXPECT_EQ(Count("m", "AntennaAlignment"), expected);
    EXPECT_EQ(Count("m", "Orientation"), 2 * expected);
    EXPECT_EQ(Count("t", "AntennaAlignmentThresholds"), expected);
  }
};

TEST_F(KillLargeTest, ImportAtAnyMoment) {
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  const QStringList words{"import", "m", "t", "more.json"};
  QElapsedTimer timer;
  timer.start();
  RunWell(words);
  const auto whole = static_cast<double>(timer.elapsed());
  std::mt19937 chance(5);
  int killed = 0;
  const int kills = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1 ? 100 : 5;
  for (int kill = 0; kill < kills; ++kill) {
    for (const char* left : {"m-journal", "t-journal"}) QFile::remove(Path(left));
    WriteFile("m", mainFile);
    WriteFile("t", thresholds);
    QProcess process;
    process.setWorkingDirectory(Folder());
    process.start(TARNBEAM_TOOL, words);
    // One in each part of the time that a whole run took.
    const double part = kill + static_cast<double>(chance() % 1000) / 1000;
    process.waitForFinished(static_cast<int>(part * whole / kills));
    process.kill();
    process.waitForFinished(patience);
    killed += process.exitStatus() == QProcess::CrashExit ? 1 : 0;
    ExpectBeforeOrAfter();
  }
  EXPECT_GT(killed, 0);
}

}  // namespace
