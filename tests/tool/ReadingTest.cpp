// What reading does not do: write, wait for readers, trust what is damaged, stumble over names.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QProcess>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

class ReadingTest : public ToolTest {
 protected:
  void SetUp() override {
    CreateFilesWith({SiteEntry("S"), PathEntry("P")});
    QFile::remove(Path("in.json"));
    listed_ = RunWell({"list", "m", "t"});
  }

  // The folder and the files are as they were after each command that reads, and the command succeeded.
  void ExpectReadable() {
    const QStringList files = FilesInFolder();
    QList<QByteArray> contents;
    for (const QString& file : files) contents.append(ReadFile(file));
    EXPECT_EQ(RunUnprivileged({"list", "m", "t"}).out, listed_);
    for (const QStringList& words :
         {QStringList{"export", "m", "t"}, QStringList{"report", "m", "t", "--site", "S"},
          QStringList{"diff", "m", "t", "m", "t"}, QStringList{"check", "m", "t"},
          QStringList{"version", "m"}, QStringList{"preferences", "m", "t"}}) {
      const Outcome outcome = RunUnprivileged(words);
      EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
    }
    EXPECT_EQ(FilesInFolder(), files);
    for (int at = 0; at < files.size(); ++at) EXPECT_EQ(ReadFile(files.at(at)), contents.at(at)) << at;
  }

  QString listed_;
};

TEST_F(ReadingTest, WhileAnotherProgramReadsOrChanges) {
  {
    const Holder reader(Path("m"), "BEGIN; SELECT count(*) FROM Sites");
    ExpectReadable();
  }
  const Holder writer(Path("m"), "BEGIN IMMEDIATE; DELETE FROM Sites");
  ExpectReadable();
}

TEST_F(ReadingTest, WaitsOnlyForOneThatHasAFileExclusively) {
  const Holder holder(Path("m"), "BEGIN EXCLUSIVE");
  for (const char* command : {"list", "export", "check"}) {
    ExpectFailure({command, "m", "t", "--wait", "0"}, InUse("m"), 3);
  }
}

TEST_F(ReadingTest, InWalModeAndInAFolderThatCannotBeWritten) {
  RunSql(Path("m"), "PRAGMA journal_mode = WAL");
  ExpectReadable();
  const Holder writer(Path("m"), "INSERT INTO Sites VALUES (9, 'in the log')");
  listed_ = "kind  reports  identifier\nsite        1  S\nsite        0  in the log\npath        1  P\n";
  ExpectReadable();
  for (const char* file : {"m", "t"}) ASSERT_EQ(chmod(Path(file).toUtf8().constData(), 0444), 0);
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0555), 0);
  ExpectReadable();
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0755), 0);
}

TEST_F(ReadingTest, AFileInWalModeIsChangedAndStaysInIt) {
  RunSql(Path("m"), "PRAGMA journal_mode = WAL");
  WriteJson("in.json", {SiteEntry("T")});
  RunWell({"import", "m", "t", "in.json"});
  EXPECT_EQ(Rows(Path("m"), "PRAGMA journal_mode"), QStringList{"'wal'"});
  EXPECT_EQ(Rows(Path("m"), "SELECT SiteIdentifier FROM Sites"), (QStringList{"'S'", "'T'"}));
}

// Pages of both files are overwritten, one after the other: each command comes to an end, with 4 or, if the
// page was free or nothing is wrong with it now, with 0.
TEST_F(ReadingTest, DamagedPagesComeToAnEnd) {
  const QByteArray whole = ReadFile("m");
  const int pages = whole.size() / 4096;
  int damaged = 0;
  for (int page = 0; page < pages; ++page) {
    for (const char filling : {'\0', '\x55', '\xff'}) {
      WriteFile("m", whole);
      Overwrite("m", page * 4096 + (page == 0 ? 100 : 0), QByteArray(200, filling));
      const Outcome outcome = Run({page % 2 == 0 ? "export" : "list", "m", "t"});
      EXPECT_TRUE(outcome.status == 0 || outcome.status == 4) << page << ": " << outcome.err.toStdString();
      damaged += outcome.status == 4 ? 1 : 0;
    }
  }
  EXPECT_GT(damaged, pages);
}

TEST_F(ReadingTest, IdentifiersThatAreNoUtf8AreNotLost) {
  RunSql(Path("m"), "UPDATE Sites SET SiteIdentifier = CAST(x'53ff' AS TEXT)");
  EXPECT_EQ(RunWell({"export", "m", "t"}).count("\"sector\""), 1);
  EXPECT_TRUE(RunWell({"list", "m", "t"}).contains(QString("S") + QChar(QChar::ReplacementCharacter)));
}

// The library reads zeros in place of rows that are not there.
TEST_F(ReadingTest, AlignmentsThatAreNotWholeAreNotShown) {
  RunSql(Path("m"), "DELETE FROM Height WHERE HeightKey = 1");
  for (const QStringList& words :
       {QStringList{"export", "m", "t"}, QStringList{"report", "m", "t", "--all"},
        QStringList{"report", "m", "t", "--site", "S"}, QStringList{"list", "m", "t", "--format", "json"},
        QStringList{"map", "m", "t", "--format", "kml"}}) {
    ExpectFailure(words,
                  "m: 1 alignment without all the rows that belong to it; 'tarnbeam-db check' tells more", 4);
  }
  EXPECT_EQ(RunWell({"list", "m", "t"}), listed_);
  EXPECT_EQ(Run({"delete", "m", "t", "--site", "S", "--yes"}).status, 0);
  EXPECT_EQ(Run({"export", "m", "t"}).status, 0);
}

TEST_F(ReadingTest, AnglesThatAreTooLarge) {
  RunSql(Path("t"), "UPDATE AntennaAlignmentThresholds SET TiltThreshold = 1e39");
  for (const char* format : {"json", "csv"}) {
    ExpectFailure({"export", "m", "t", "--format", format},
                  "t: row 1 of AntennaAlignmentThresholds holds what is no finite number; 'tarnbeam-db "
                  "check' tells more",
                  4);
  }
}

TEST_F(ReadingTest, AFolderForTemporaryFilesThatIsNotThere) {
  const Outcome outcome = RunProgram(TARNBEAM_TOOL, {"list", "m", "t"}, {{"TMPDIR", "/none"}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: /none: cannot take temporary files (No such file or directory); TMPDIR can name "
            "another folder\n");
}

TEST_F(ReadingTest, ChangesNeedAFolderThatCanBeWritten) {
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0555), 0);
  const Outcome outcome = RunUnprivileged({"delete", "m", "t", "--site", "S", "--yes"});
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0755), 0);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: site S and 1 report in all its sectors will be deleted\n"
            "tarnbeam-db: m: cannot be changed: its folder cannot be written; both files are as they were\n");
  EXPECT_EQ(RunWell({"list", "m", "t"}), listed_);
}

TEST_F(ReadingTest, ThresholdsOfSomethingElseAreNotBelieved) {
  const QString exported = RunWell({"export", "m", "t"});
  RunSql(
      Path("t"),
      "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold) VALUES "
      "(1, 7, 99)");
  EXPECT_EQ(RunWell({"export", "m", "t"}), exported);
}

class NameTest : public ToolTest, public testing::WithParamInterface<const char*> {};

TEST_P(NameTest, MayBeAnything) {
  const QByteArray mainName(GetParam());
  WriteJson("in.json", {SiteEntry("S")});
  // Through the shell's words, which are bytes.
  const auto run = [&](const char* words) {
    qputenv("MAIN_FILE", mainName);
    QProcess process;
    process.setWorkingDirectory(Folder());
    process.start("sh", {"-c", QString("exec \"$0\" %1").arg(words), TARNBEAM_TOOL});
    EXPECT_TRUE(process.waitForFinished());
    qunsetenv("MAIN_FILE");
    return process.exitCode();
  };
  EXPECT_EQ(run("create -- \"$MAIN_FILE\" t"), 0);
  EXPECT_EQ(run("import -- \"$MAIN_FILE\" t in.json"), 0);
  EXPECT_EQ(run("export -- \"$MAIN_FILE\" t"), 0);
  EXPECT_EQ(run("check -- \"$MAIN_FILE\" t"), 0);
  EXPECT_EQ(run("diff -- \"$MAIN_FILE\" t \"$MAIN_FILE\" t"), 0);
  EXPECT_EQ(run("merge -- \"$MAIN_FILE\" t \"$MAIN_FILE\" t"), 0);
  EXPECT_EQ(run("delete --site S --yes -- \"$MAIN_FILE\" t"), 0);
  struct stat status {};
  EXPECT_EQ(stat((Folder().toUtf8() + '/' + mainName).constData(), &status), 0);
  // Qt neither lists nor removes a file whose name is not UTF-8.
  EXPECT_EQ(unlink((Folder().toUtf8() + '/' + mainName).constData()), 0);
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "t"}));
}

INSTANTIATE_TEST_SUITE_P(Files, NameTest,
                         testing::Values("with blanks", "%1", "file:m", "file:m?mode=ro",
                                         ":memory:", "line\nfeed", "no\xff\xfeutf8", "-m", "a?b*[c]"));

TEST_F(ReadingTest, StandardOutputThatIsClosed) {
  WriteJson("in.json", {SiteEntry("T")});
  const auto run = [this](const char* words) {
    QProcess process;
    process.setWorkingDirectory(Folder());
    process.start("sh", {"-c", QString("exec \"$0\" %1 >&-").arg(words), TARNBEAM_TOOL});
    EXPECT_TRUE(process.waitForFinished());
    return std::make_pair(process.exitCode(), QString::fromUtf8(process.readAllStandardError()));
  };
  EXPECT_EQ(run("list m t").first, 1);
  const auto changed = run("import m t in.json");
  EXPECT_EQ(changed.first, 0);
  EXPECT_TRUE(changed.second.contains("1 alignment saved, 1 of sites and 0 of paths"))
      << changed.second.toStdString();
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM Sites"), QStringList{"2"});
}

}  // namespace
