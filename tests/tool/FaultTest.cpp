// Disks that fail once, and pages that are damaged: never is a wrong result told as a right one, and every
// command comes to its end.
#include <QDir>
#include <QFile>
#include <random>
#include <set>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

bool AreAllWanted() { return qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1; }

class FaultTest : public ToolTest {
 protected:
  // Both files in a folder of their own, whose files are those that fail; what the program copies of them
  // lies beside it.
  void SetUp() override {
    QJsonArray entries;
    for (int number = 0; number < 40; ++number) {
      entries.append(SiteEntry(QString("S%1").arg(number % 4), QString::number(number)));
      entries.append(PathEntry(QString("P%1").arg(number % 3)));
    }
    WriteJson("in.json", entries);
    for (const char* folder : {"files", "copies"}) ASSERT_TRUE(QDir(Folder()).mkdir(folder));
    RunWell({"create", mainName, thresholdsName});
    RunWell({"import", mainName, thresholdsName, "in.json"});
    main_ = ReadFile(mainName);
    thresholds_ = ReadFile(thresholdsName);
  }

  static QList<QStringList> Changes() {
    return {{"import", mainName, thresholdsName, "in.json"},
            {"delete", mainName, thresholdsName, "--site", "S1", "--yes"}};
  }

  void Restore() {
    QDir(Path("files")).removeRecursively();
    QDir(Folder()).mkdir("files");
    WriteFile(mainName, main_);
    WriteFile(thresholdsName, thresholds_);
  }

  Outcome RunFailing(const QStringList& words, const char* kind, const QString& folder, int number) {
    return ToolTest::RunFailing(words, kind, Path(folder), number, {{"TMPDIR", Path("copies")}});
  }

  static constexpr const char* mainName = "files/m";
  static constexpr const char* thresholdsName = "files/t";
  QByteArray main_;
  QByteArray thresholds_;
};

TEST_F(FaultTest, AReadThatFailsIsNoShorterAnswer) {
  const QList<QStringList> commands{{"export", mainName, thresholdsName},
                                    {"list", mainName, thresholdsName},
                                    {"report", mainName, thresholdsName, "--all", "--format", "csv"},
                                    {"check", mainName, thresholdsName}};
  for (const QStringList& words : commands) {
    const QString right = RunWell(words);
    for (const char* folder : {"files", "copies"}) {
      int told = 0;
      for (int number = 1;; number += AreAllWanted() ? 1 : 17) {
        SCOPED_TRACE(QString("%1, read %2 in %3").arg(words.first()).arg(number).arg(folder).toStdString());
        const Outcome outcome = RunFailing(words, "read", folder, number);
        if (!HasFailed()) break;
        if (outcome.status == 0) {
          EXPECT_EQ(outcome.out, right);
        } else {
          ++told;
          // What `check` cannot read it shows among its findings.
          EXPECT_TRUE(!outcome.err.isEmpty() || (words.first() == "check" && outcome.out != right));
        }
        if (HasFailure()) return;
      }
      EXPECT_GT(told, 0) << words.first().toStdString() << ' ' << folder;
    }
  }
}

TEST_F(FaultTest, AReadThatFailsChangesNothingOrIsToldToComeAfterTheChange) {
  const QStringList words{"import", mainName, thresholdsName, "in.json"};
  const QString before = RunWell({"export", mainName, thresholdsName});
  RunWell(words);
  const QString after = RunWell({"export", mainName, thresholdsName});
  QMap<QString, int> told;
  for (int number = 1;; number += AreAllWanted() || number < 15 ? 1 : 9) {
    SCOPED_TRACE(number);
    Restore();
    const Outcome outcome = RunFailing(words, "read", "files", number);
    if (!HasFailed()) break;
    ++told[outcome.err];
    // With 1 the files are as they were.
    const bool isToldLate =
        outcome.status == 4 && outcome.err.endsWith("; the change was made, but could not be read back\n");
    EXPECT_TRUE(isToldLate || !outcome.err.contains("was made")) << outcome.err.toStdString();
    EXPECT_EQ(RunWell({"export", mainName, thresholdsName}),
              isToldLate || outcome.status == 0 ? after : before)
        << outcome.err.toStdString();
    if (HasFailure()) return;
  }
  for (const char* message :
       {"files/m: cannot be read: disk I/O error", "files/t: cannot be read: disk I/O error",
        "files/m: does not take what is written to it; the change was made, but could not "
        "be read back"}) {
    EXPECT_GT(told.value(QString("tarnbeam-db: %1\n").arg(message)), 0) << message;
  }
}

TEST_F(FaultTest, AWriteThatFailsChangesAllOrNothing) {
  const QString before = RunWell({"export", mainName, thresholdsName});
  for (const QStringList& words : Changes()) {
    Restore();
    ASSERT_EQ(Run(words).status, 0);
    const QString after = RunWell({"export", mainName, thresholdsName});
    for (const char* folder : {"files", "copies"}) {
      int told = 0;
      // Between the two files the disk is asked for most in the end.
      for (int number = 1;; number += AreAllWanted() ? 1 : *folder == 'f' ? 11 : 701) {
        SCOPED_TRACE(QString("%1, write %2 in %3").arg(words.first()).arg(number).arg(folder).toStdString());
        Restore();
        const Outcome outcome = RunFailing(words, "write", folder, number);
        if (!HasFailed()) break;
        told += outcome.status != 0 ? 1 : 0;
        EXPECT_TRUE(outcome.status == 0 || (outcome.status == 1 && outcome.out.isEmpty())) << outcome.status;
        EXPECT_EQ(RunWell({"export", mainName, thresholdsName}), outcome.status == 0 ? after : before)
            << outcome.err.toStdString();
        if (HasFailure()) return;
      }
      EXPECT_GT(told, 0) << words.first().toStdString() << ' ' << folder;
    }
  }
}

TEST_F(FaultTest, FileSystemsThatKnowNoMoveToAFreePlace) {
  const QString exported = RunWell({"export", mainName, thresholdsName});
  for (const QStringList& words :
       {QStringList{"create", "files/nm", "files/nt"},
        QStringList{"backup", mainName, thresholdsName, "files/b"},
        QStringList{"salvage", mainName, thresholdsName, "files/sm", "files/st"}}) {
    const Outcome outcome =
        ToolTest::RunFailing(words, "move", "files", 1, {{"TMPDIR", Path("copies")}, {"FAILING_LASTS", "1"}});
    EXPECT_TRUE(HasFailed());
    EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
  }
  EXPECT_EQ(QDir(Path("files")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
            (QStringList{"b", "m", "nm", "nt", "sm", "st", "t"}));
  EXPECT_EQ(RunWell({"export", "files/nm", "files/nt"}), "[\n]\n");
  EXPECT_EQ(RunWell({"export", "files/b/main.sqlite", "files/b/thresholds.sqlite"}), exported);
  EXPECT_EQ(RunWell({"export", "files/sm", "files/st"}), exported);
}

// What a disk loses nobody can bring back, but that it was lost is seen when it is read again.
TEST_F(FaultTest, AWriteThatIsLostIsNoSuccess) {
  const QString clean = RunWell({"check", mainName, thresholdsName});
  for (const QStringList& words : Changes()) {
    Restore();
    ASSERT_EQ(Run(words).status, 0);
    const QString after = RunWell({"export", mainName, thresholdsName});
    const QByteArray mainAfter = ReadFile(mainName);
    const QByteArray thresholdsAfter = ReadFile(thresholdsName);
    int told = 0;
    // Of rows and of indices pages are written in the end.
    for (int number = 1;; number += AreAllWanted() || number > 30 ? 1 : 10) {
      SCOPED_TRACE(QString("%1, write %2").arg(words.first()).arg(number).toStdString());
      Restore();
      const Outcome outcome = RunFailing(words, "lose", "files", number);
      if (!HasFailed()) break;
      if (outcome.status != 0) {
        ++told;
        EXPECT_EQ(outcome.out, QString());
        EXPECT_FALSE(outcome.err.isEmpty());
      } else if (ReadFile(mainName) != mainAfter || ReadFile(thresholdsName) != thresholdsAfter) {
        // What was lost may be told nowhere else, such as how often the file was changed.
        EXPECT_EQ(RunWell({"export", mainName, thresholdsName}), after);
        EXPECT_EQ(RunWell({"check", mainName, thresholdsName}), clean);
      }
    }
    EXPECT_GT(told, 0) << words.first().toStdString();
  }
}

// Another program that comes at any moment gets its turn, or is told that the files are in use; what either
// of them says was done is there.
class NeighbourTest : public FaultTest, public testing::WithParamInterface<bool> {};

TEST_P(NeighbourTest, MayComeAtAnyMoment) {
  const bool isLog = GetParam();
  WriteJson("other.json", {SiteEntry("other")});
  const QString other =
      QString("unset LD_PRELOAD; %1 import %2 %3 other.json --wait 0 >/dev/null 2>&1; echo $? >>said")
          .arg(TARNBEAM_TOOL, mainName, thresholdsName);
  QMap<QByteArray, int> said;
  for (int number = 1;; ++number) {
    SCOPED_TRACE(number);
    Restore();
    if (isLog) RunSql(Path(mainName), "PRAGMA journal_mode = WAL");
    QFile::remove(Path("said"));
    const Outcome outcome =
        ToolTest::RunFailing({"delete", mainName, thresholdsName, "--site", "S1", "--yes"}, "open",
                             Path("files"), number, {{"TMPDIR", Path("copies")}, {"FAILING_COMMAND", other}});
    if (!HasFailed()) break;
    EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
    const QByteArray status = ReadFile("said").trimmed();
    ++said[status];
    const QString listed = RunWell({"list", mainName, thresholdsName});
    EXPECT_EQ(listed.count(" S1\n"), 0);
    EXPECT_EQ(listed.count(" other\n"), status == "0" ? 1 : 0);
    if (HasFailure()) return;
  }
  EXPECT_EQ(said.keys(), (QList<QByteArray>{"0", "3"}));
}

INSTANTIATE_TEST_SUITE_P(WithoutAndWithALog, NeighbourTest, testing::Bool());

// A card that has come to its end.
TEST_F(FaultTest, ADiskThatGoesOnFailingIsAFailure) {
  RunWell({"backup", mainName, thresholdsName, "backup"});
  ASSERT_TRUE(QDir().rename(Path("backup"), Path("files/b")));
  const QString before = RunWell({"export", mainName, thresholdsName});
  for (const QStringList& words :
       {QStringList{"export", mainName, thresholdsName}, QStringList{"check", mainName, thresholdsName},
        QStringList{"import", mainName, thresholdsName, "in.json"},
        QStringList{"delete", mainName, thresholdsName, "--site", "S1", "--yes"},
        QStringList{"backup", mainName, thresholdsName, "files/b2"},
        QStringList{"restore", "files/b", "files/m2", "files/t2"}}) {
    int failed = 0;
    for (const char* kind : {"read", "write"}) {
      for (const char* folder : {"files", "copies"}) {
        for (const int number : {1, 3, 9}) {
          SCOPED_TRACE(
              QString("%1, %2 %3 in %4").arg(words.first(), kind).arg(number).arg(folder).toStdString());
          const Outcome outcome = ToolTest::RunFailing(words, kind, Path(folder), number,
                                                       {{"TMPDIR", Path("copies")}, {"FAILING_LASTS", "1"}});
          if (!HasFailed()) break;
          ++failed;
          EXPECT_NE(outcome.status, 0);
          // For whoever can read and write again.
          EXPECT_EQ(RunWell({"export", mainName, thresholdsName}), before);
          if (HasFailure()) return;
        }
      }
    }
    EXPECT_GT(failed, 5);
  }
}

// Wherever it fails: the journal that both files share goes, too.
TEST_F(FaultTest, AFailedDeletionLeavesNoSharedJournal) {
  int told = 0;
  for (int number = 1;; ++number) {
    SCOPED_TRACE(number);
    Restore();
    const Outcome outcome =
        RunFailing({"delete", mainName, thresholdsName, "--site", "S1", "--yes"}, "write", "files", number);
    if (!HasFailed()) break;
    told += outcome.status != 0 ? 1 : 0;
    EXPECT_EQ(QDir(Path("files")).entryList({"*-mj*"}), QStringList());
    if (HasFailure()) return;
  }
  EXPECT_GT(told, 3);
}

// SQLite adds up the characters of the shared journal's name with their signs, so here the sum is negative. A
// disk that goes on failing leaves the journals as they are at each moment.
TEST_F(FaultTest, JournalsInAFolderWithAForeignName) {
  const QString folder(60, QChar(0x17C));
  ASSERT_TRUE(QDir(Folder()).mkdir(folder));
  const QString mainFile = folder + "/m";
  const QString thresholds = folder + "/t";
  const QStringList words{"delete", mainFile, thresholds, "--site", "S1", "--yes"};
  const auto restore = [&] {
    for (const QString& left : QDir(Path(folder)).entryList(QDir::Files))
      QFile::remove(Path(folder + '/' + left));
    WriteFile(mainFile, main_);
    WriteFile(thresholds, thresholds_);
  };
  restore();
  const QString before = RunWell({"export", mainFile, thresholds});
  ASSERT_EQ(Run(words).status, 0);
  const QString after = RunWell({"export", mainFile, thresholds});
  std::set<QString> seen;
  for (int number = 1;; number += AreAllWanted() ? 1 : 2) {
    SCOPED_TRACE(number);
    restore();
    ToolTest::RunFailing(words, "write", Path(folder), number,
                         {{"TMPDIR", Path("copies")}, {"FAILING_LASTS", "1"}});
    if (!HasFailed()) break;
    const QString now = RunWell({"export", mainFile, thresholds});
    EXPECT_TRUE(now == before || now == after);
    seen.insert(now);
    if (HasFailure()) return;
  }
  EXPECT_EQ(seen, (std::set<QString>{before, after}));
}

TEST_F(FaultTest, NewFilesStandWholeOrNotAtAll) {
  for (const QStringList& words : {QStringList{"create", "files/m2", "files/t2"},
                                   QStringList{"salvage", mainName, thresholdsName, "files/m2", "files/t2"},
                                   QStringList{"backup", mainName, thresholdsName, "files/b"}}) {
    int told = 0;
    for (int number = 1;; ++number) {
      SCOPED_TRACE(QString("%1, write %2").arg(words.first()).arg(number).toStdString());
      Restore();
      // Calls on the folder itself count, too.
      const Outcome outcome =
          ToolTest::RunFailing(words, "write", Path("files"), number,
                               {{"TMPDIR", Path("copies")}, {"FAILING_FOLDER", Path("files")}});
      if (!HasFailed()) break;
      ++told;
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(QDir(Path("files")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                (QStringList{"m", "t"}));
      if (HasFailure()) return;
    }
    EXPECT_GT(told, 3) << words.first().toStdString();
  }
}

// What the damage leaves readable may be another value: that is not for a program to know.
TEST_F(FaultTest, DamagedPagesAreToldOrHarmless) {
  const QList<QStringList> commands{{"list", mainName, thresholdsName},
                                    {"export", mainName, thresholdsName},
                                    {"report", mainName, thresholdsName, "--all", "--format", "json"},
                                    {"map", mainName, thresholdsName, "--format", "geojson"},
                                    {"check", mainName, thresholdsName},
                                    {"preferences", mainName, thresholdsName},
                                    {"version", mainName},
                                    {"import", mainName, thresholdsName, "none.json"},
                                    {"delete", mainName, thresholdsName, "--site", "S1", "--yes"}};
  WriteJson("none.json", {});
  std::mt19937 chance(7);
  const auto below = [&](qsizetype limit) {
    return static_cast<int>(chance() % static_cast<unsigned>(limit));
  };
  int damaged = 0;
  for (int round = 0; round < (AreAllWanted() ? 400 : 24); ++round) {
    SCOPED_TRACE(round);
    Restore();
    const QString name = round % 3 == 0 ? thresholdsName : mainName;
    const QByteArray whole = ReadFile(name);
    QByteArray bytes(1 + below(300), '\0');
    for (char& byte : bytes) byte = static_cast<char>(chance());
    // Not the version's own page: what a file of another version does is looked at elsewhere.
    int at = 0;
    do {
      at = below(whole.size() - bytes.size());
    } while (name == mainName && (at + bytes.size()) / 4096 >= PageOf(mainName, "Version") &&
             at / 4096 <= PageOf(mainName, "Version"));
    Overwrite(name, at, bytes);
    const QByteArray mainFile = ReadFile(mainName);
    const QByteArray thresholds = ReadFile(thresholdsName);
    // A few commands of each file that is damaged; all in the long form.
    for (int number = 0; number < commands.size(); ++number) {
      const QStringList& words = commands.at(number);
      const bool changes = words.first() == "import" || words.first() == "delete";
      if (!AreAllWanted() && (number + round) % 3 != 0) continue;
      const Outcome outcome = Run(words);
      const bool unknown = outcome.status == 1 &&
                           outcome.err == QString("tarnbeam-db: %1: there is no site S1\n").arg(mainName);
      EXPECT_TRUE(outcome.status == 0 || outcome.status == 4 || unknown)
          << words.first().toStdString() << ": " << outcome.status << ' ' << outcome.err.toStdString();
      damaged += outcome.status == 4 ? 1 : 0;
      if (changes && outcome.status == 0) break;
      EXPECT_EQ(ReadFile(mainName), mainFile);
      EXPECT_EQ(ReadFile(thresholdsName), thresholds);
      EXPECT_EQ(QDir(Path("files")).entryList(QDir::Files | QDir::Hidden), (QStringList{"m", "t"}));
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(damaged, 10);
}

}  // namespace
