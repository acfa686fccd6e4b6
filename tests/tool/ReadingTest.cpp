// What reading does not do: write, wait for readers, trust what is damaged, stumble over names.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <memory>

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

  // All that only read, on the two files.
  static QList<QStringList> Readers() {
    return {{"list", "m", "t"},
            {"export", "m", "t"},
            {"report", "m", "t", "--site", "S"},
            {"map", "m", "t", "--format", "geojson"},
            {"diff", "m", "t", "m", "t"},
            {"check", "m", "t"},
            {"version", "m"},
            {"preferences", "m", "t"}};
  }

  // The folder and the files are as they were after each command that reads, and the command succeeded.
  void ExpectReadable() {
    const QStringList files = FilesInFolder();
    QList<QByteArray> contents;
    for (const QString& file : files) contents.append(ReadFile(file));
    EXPECT_EQ(RunUnprivileged({"list", "m", "t"}).out, listed_);
    for (const QStringList& words : Readers()) {
      const Outcome outcome = RunUnprivileged(words);
      EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
      EXPECT_EQ(outcome.err, QString());
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
  for (const QStringList& words : Readers()) {
    ExpectFailure(words + QStringList{"--wait", "0"}, InUse("m"), 3);
  }
}

TEST_F(ReadingTest, WaitsUntilAFileIsFree) {
  WriteJson("in.json", {SiteEntry("T")});
  for (const QStringList& words :
       {QStringList{"list", "m", "t"}, QStringList{"import", "m", "t", "in.json"}}) {
    auto holder = std::make_unique<Holder>(Path("t"), "BEGIN EXCLUSIVE");
    ExpectToWait(words + QStringList{"--wait", "60"}, [&holder] { holder.reset(); });
  }
  EXPECT_EQ(Rows(Path("m"), "SELECT SiteIdentifier FROM Sites"), (QStringList{"'S'", "'T'"}));
}

TEST_F(ReadingTest, WaitsTwoSecondsUnlessToldOtherwise) {
  const Holder holder(Path("m"), "BEGIN EXCLUSIVE");
  QElapsedTimer timer;
  timer.start();
  ExpectFailure({"list", "m", "t"}, InUse("m"), 3);
  EXPECT_GE(timer.elapsed(), 2000);
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

// Pages of the main file are overwritten, one after the other: each command comes to an end, with 4 or, if
// the page was free or nothing is wrong with it now, with 0.
TEST_F(ReadingTest, DamagedPagesComeToAnEnd) {
  const QByteArray whole = ReadFile("m");
  const int pages = static_cast<int>(whole.size() / 4096);
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
  EXPECT_EQ(RunWell({"list", "m", "t"}),
            QString("kind  reports  identifier\nsite        1  S\uFFFD\npath        1  P\n"));
}

// The library reads zeros in place of rows that are not there.
TEST_F(ReadingTest, AlignmentsThatAreNotWholeAreNotShown) {
  RunSql(Path("m"), "DELETE FROM Height WHERE HeightKey = 1");
  for (const QStringList& words :
       {QStringList{"export", "m", "t"}, QStringList{"report", "m", "t", "--all"},
        QStringList{"report", "m", "t", "--site", "S"}, QStringList{"list", "m", "t", "--format", "json"},
        QStringList{"map", "m", "t", "--format", "kml"}}) {
    ExpectFailure(words, "m: 1 alignment without all the rows that belong to it" + tellsMore, 4);
  }
  EXPECT_EQ(RunWell({"list", "m", "t"}), listed_);
  EXPECT_EQ(Run({"delete", "m", "t", "--site", "S", "--yes"}).status, 0);
  EXPECT_EQ(Run({"export", "m", "t"}).status, 0);
}

TEST_F(ReadingTest, AnglesThatAreTooLarge) {
  RunSql(Path("t"), "UPDATE AntennaAlignmentThresholds SET TiltThreshold = 1e39");
  for (const char* format : {"json", "csv"}) {
    ExpectFailure({"export", "m", "t", "--format", format},
                  "t: row 1 of AntennaAlignmentThresholds holds what is no finite number" + tellsMore, 4);
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
  // Through a variable of the environment, which holds bytes.
  qputenv("MAIN_FILE", mainName);
  const auto run = [this](const QString& words) {
    const Outcome outcome = RunInShell("exec \"$0\" " + words, {});
    EXPECT_EQ(outcome.status, 0) << words.toStdString() << ": " << outcome.err.toStdString();
    return outcome.out;
  };
  run("create -- \"$MAIN_FILE\" t");
  EXPECT_EQ(run("import -- \"$MAIN_FILE\" t in.json"), "1 alignment saved, 1 of sites and 0 of paths\n");
  run("export -- \"$MAIN_FILE\" t");
  run("check -- \"$MAIN_FILE\" t");
  EXPECT_EQ(run("diff -- \"$MAIN_FILE\" t \"$MAIN_FILE\" t"), "");
  EXPECT_EQ(run("merge -- \"$MAIN_FILE\" t \"$MAIN_FILE\" t"), "0 added, 1 already there, 0 conflicts\n");
  EXPECT_EQ(run("delete --site S --yes -- \"$MAIN_FILE\" t"), "deleted site S and 1 report\n");
  EXPECT_EQ(run("list -- \"$MAIN_FILE\" t"), "kind  reports  identifier\n");
  qunsetenv("MAIN_FILE");
  struct stat status {};
  EXPECT_EQ(stat((Folder().toUtf8() + '/' + mainName).constData(), &status), 0);
  // Qt neither lists nor removes a file whose name is not UTF-8.
  EXPECT_EQ(unlink((Folder().toUtf8() + '/' + mainName).constData()), 0);
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "t"}));
}

INSTANTIATE_TEST_SUITE_P(Files, NameTest,
                         testing::Values("with blanks", "%1", "file:m", "file:m?mode=ro",
                                         ":memory:", "line\nfeed",
                                         "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xA1\xff\x80", "-m", "a?b*[c]"));

// What is to be told where standard output does not take it.
const QString unwritable = QStringLiteral("tarnbeam-db: standard output cannot be written");

TEST_F(ReadingTest, WhatCannotBeToldIsAFailure) {
  RunWell({"create", "om", "ot"});
  QList<QStringList> commands = Readers();
  commands.append({"merge", "om", "ot", "m", "t", "--dry-run"});
  for (QStringList words : commands) {
    // Between equal pairs there would be nothing to tell.
    if (words.first() == "diff") words = QStringList{"diff", "m", "t", "om", "ot"};
    for (const char* output : {">&-", "> /dev/full"}) {
      const Outcome outcome = RunInShell(QString("exec \"$0\" \"$@\" ") + output, words);
      EXPECT_EQ(outcome.status, 1) << words.join(' ').toStdString() << output;
      EXPECT_EQ(outcome.err, unwritable + "\n");
    }
  }
}

TEST_F(ReadingTest, WhatWasDoneIsToldOnStandardErrorInstead) {
  WriteJson("in.json", {SiteEntry("T")});
  RunSql(Path("t"), "INSERT INTO PathAlignmentThresholds (PathAlignmentKey, PathKey) VALUES (6, 1)");
  struct Change {
    QStringList words;
    const char* done;
    QString announced;
  };
  for (const Change& change : std::initializer_list<Change>{
           {{"create", "nm", "nt"}, "created nm\ncreated nt", {}},
           {{"import", "nm", "nt", "in.json"}, "1 alignment saved, 1 of sites and 0 of paths", {}},
           {{"merge", "nm", "nt", "m", "t"}, "2 added, 0 already there, 0 conflicts", {}},
           {{"repair", "m", "t"},
            "copied to m.before-repair-1\ncopied to t.before-repair-1\n"
            "removed from t: 1 (thresholds without path alignment)",
            {}},
           {{"delete", "m", "t", "--path", "P", "--yes"},
            "deleted path P and 1 report",
            "tarnbeam-db: path P and 1 report will be deleted\n"}}) {
    const Outcome outcome = RunInShell("exec \"$0\" \"$@\" >&-", change.words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, change.announced + unwritable + "; this was done:\n" + change.done + "\n");
  }
  EXPECT_EQ(RunWell({"list", "nm", "nt"}),
            "kind  reports  identifier\nsite        1  T\nsite        1  S\npath        1  P\n");
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\nsite        1  S\n");
}

// No file takes the number of a stream that is not there, and with it what was meant for that stream.
TEST_F(ReadingTest, WithoutStreamsFilesAreChangedAsWithThem) {
  WriteJson("in.json", {SiteEntry("T")});
  for (const QStringList& words : {QStringList{"create", "nm", "nt"},
                                   {"import", "nm", "nt", "in.json"},
                                   {"merge", "nm", "nt", "m", "t"},
                                   {"delete", "nm", "nt", "--site", "T", "--yes"}}) {
    const Outcome outcome = RunInShell("exec \"$0\" \"$@\" <&- >&- 2>&-", words);
    EXPECT_EQ(outcome.status, 0) << words.first().toStdString();
  }
  EXPECT_EQ(RunWell({"export", "nm", "nt"}), RunWell({"export", "m", "t"}));
  RunWell({"check", "nm", "nt"});
}

}  // namespace
