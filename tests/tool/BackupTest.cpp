// Backups, and putting them in place again.
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

// The time of a backup.
QString Time(const QByteArray& manifest) {
  return QJsonDocument::fromJson(manifest).object()["time"].toString();
}

class BackupTest : public ToolTest {
 protected:
  void CreatePair() {
    CreateFilesWith({SiteEntry("S", "1"), SiteEntry("S", "2"), PathEntry("P")});
    RunSql(Path("m"), "PRAGMA user_version = 17");
  }

  void BackUp() {
    EXPECT_EQ(RunWell({"backup", "m", "t", "b"}), "backed up 3 alignments of version 7 to b\n");
  }

  // What is said of the backup of three alignments.
  QString Shown() { return "3 alignments of version 7 from b of " + Time(ReadFile("b/manifest.json")); }
  // What is said before files are replaced by it.
  QString Announced(const QString& files = "m and t") {
    return "tarnbeam-db: " + files + " will be replaced by " + Shown() + "\n";
  }

  void ExpectAsBackedUp(const QString& mainFile = "m", const QString& thresholds = "t") {
    EXPECT_EQ(ReadFile(mainFile), ReadFile("b/main.sqlite"));
    EXPECT_EQ(ReadFile(thresholds), ReadFile("b/thresholds.sqlite"));
  }

  // Two more alignments than the backup has.
  void Change() {
    WriteJson("more.json", {SiteEntry("T"), PathEntry("Q")});
    RunWell({"import", "m", "t", "more.json"});
  }
};

TEST_F(BackupTest, IsWhatTheFilesAre) {
  CreatePair();
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  BackUp();
  EXPECT_EQ(QDir(Path("b")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name),
            (QStringList{"main.sqlite", "manifest.json", "thresholds.sqlite"}));
  EXPECT_EQ(ReadFile("b/main.sqlite"), mainFile);
  EXPECT_EQ(ReadFile("b/thresholds.sqlite"), thresholds);
  EXPECT_EQ(ReadFile("m"), mainFile);
  EXPECT_EQ(ReadFile("t"), thresholds);
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
}

// The digests are those that sha256sum prints.
TEST_F(BackupTest, TheManifestTellsOfTheFiles) {
  CreatePair();
  const QDateTime before = QDateTime::currentDateTimeUtc();
  BackUp();
  const QDateTime after = QDateTime::currentDateTimeUtc();
  QJsonObject manifest = QJsonDocument::fromJson(ReadFile("b/manifest.json")).object();
  for (const QString name : {"main", "thresholds"}) {
    QProcess process;
    process.start("sha256sum", {Path("b/" + name + ".sqlite")});
    ASSERT_TRUE(process.waitForFinished(patience));
    EXPECT_EQ(manifest.take(name).toObject(),
              (QJsonObject{{"size", QFile(Path("b/" + name + ".sqlite")).size()},
                           {"sha256", QString::fromLatin1(process.readAllStandardOutput().left(64))}}));
  }
  const QString time = manifest.take("time").toString();
  EXPECT_TRUE(time.endsWith('Z')) << time.toStdString();
  const QDateTime moment = QDateTime::fromString(time, Qt::ISODate);
  // Whole seconds.
  EXPECT_TRUE(moment >= before.addSecs(-1) && moment <= after) << time.toStdString();
  EXPECT_EQ(manifest.take("digest").toString().size(), 64);
  EXPECT_EQ(manifest, (QJsonObject{{"version", 7}, {"alignments", 3}, {"programVersion", TARNBEAM_VERSION}}));
}

TEST_F(BackupTest, RestoredIsByteForByteTheSame) {
  CreatePair();
  BackUp();
  EXPECT_EQ(RunWell({"restore", "b", "new", "newt"}), "restored " + Shown() + "\n");
  ExpectAsBackedUp("new", "newt");
  Change();
  const Outcome outcome = Run({"restore", "b", "m", "t", "--yes"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, Announced());
  ExpectAsBackedUp();
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "more.json", "new", "newt", "t"}));
}

TEST_F(BackupTest, EarlierVersionsHaveAMainFileAlone) {
  for (int version = 1; version <= 6; ++version) {
    const QString name = QString("v%1").arg(version);
    LoadEarlier(name, version);
    RunWell({"backup", name, name + ".b"});
    RunWell({"restore", name + ".b", name + ".new"});
    EXPECT_EQ(ReadFile(name + ".new"), ReadFile(name));
  }
  ExpectFailure({"restore", "v6.b", "m", "t"}, "v6.b: holds a main file alone: leave THRESHOLDS out" + hint,
                2);
}

TEST_F(BackupTest, HalfAPairIsRefused) {
  CreatePair();
  BackUp();
  ExpectFailure({"restore", "b", "m"}, "b: holds a pair, so THRESHOLDS has to be given" + hint, 2);
  ExpectFailure({"backup", "m", "b2"}, "m: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  QFile::remove(Path("b/thresholds.sqlite"));
  ExpectFailure({"restore", "b", "new", "newt"}, "b/thresholds.sqlite: No such file or directory");
  QFile::remove(Path("b/manifest.json"));
  ExpectFailure({"restore", "b", "new", "newt"}, "b/manifest.json: No such file or directory");
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
}

TEST_F(BackupTest, WhatIsNoPairIsNotBackedUp) {
  CreatePair();
  RunSql(Path("t"),
         "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = 9; UPDATE PathAlignmentThresholds SET "
         "PathKey = 9");
  ExpectFailure({"backup", "m", "t", "b"}, "m and t" + noPair, 4);
  Overwrite("m", PageOf("m", "Height") * 4096, QByteArray(64, '\x55'));
  ExpectDamaged({"backup", "m", "t", "b"}, "m");
  ExpectFailure({"backup", "none", "t", "b"}, "none: no such file");
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "t"}));
}

TEST_F(BackupTest, TheFolderMustNotExist) {
  CreatePair();
  for (const char* name : {"m", "./", "in.json"}) {
    ExpectFailure({"backup", "m", "t", name}, QString(name) + ": exists already");
  }
  ASSERT_TRUE(QDir(Folder()).mkdir("empty"));
  ExpectFailure({"backup", "m", "t", "empty/"}, "empty/: exists already");
  ExpectFailure({"backup", "m", "t", "no/b"}, "no/b: No such file or directory");
  EXPECT_EQ(RunWell({"backup", "m", "t", "new/"}), "backed up 3 alignments of version 7 to new/\n");
  EXPECT_EQ(FilesInFolder(), (QStringList{"empty", "in.json", "m", "new", "t"}));
}

// Bytes all over the three files; with TARNBEAM_FULL_SWEEPS=1 every one of the manifest's and a thousand
// others.
TEST_F(BackupTest, AChangedByteIsRefused) {
  CreatePair();
  BackUp();
  const bool all = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1;
  for (const QString file : {"b/main.sqlite", "b/thresholds.sqlite", "b/manifest.json"}) {
    const QByteArray right = ReadFile(file);
    const int status = file.endsWith("json") ? 1 : 4;
    const QString reason = status == 1 ? "is not as 'tarnbeam-db backup' wrote it"
                                       : "is not what was backed up: its size or SHA-256 differs";
    const auto expectRefused = [&] {
      ExpectFailure({"restore", "b", "new", "newt"}, file + ": " + reason + "; nothing was restored", status);
    };
    const int step = all ? (status == 1 ? 1 : 97) : (status == 1 ? 23 : 5 * 997);
    for (int at = 0; at < right.size(); at += step) {
      SCOPED_TRACE(file.toStdString() + " " + std::to_string(at));
      Overwrite(file, at, QByteArray(1, char(right.at(at) ^ (1 << at % 8))));
      expectRefused();
      Overwrite(file, at, right.mid(at, 1));
      if (HasFailure()) return;
    }
    WriteFile(file, right + '\n');
    expectRefused();
    WriteFile(file, right.left(right.size() - 1));
    expectRefused();
    WriteFile(file, right);
  }
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
  RunWell({"restore", "b", "new", "newt"});
}

TEST_F(BackupTest, RestoringAsksFirst) {
  CreatePair();
  BackUp();
  Change();
  const QByteArray before = ReadFile("m");
  const QString shown = Announced();
  Outcome outcome = Run({"restore", "b", "m", "t"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, shown +
                             "tarnbeam-db: nothing was restored: without a terminal to ask on, --yes has to "
                             "be given\n");
  outcome = Run({"restore", "b", "m", "t"}, "n\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, shown + "Replace? [y/N] tarnbeam-db: nothing was restored\n");
  EXPECT_EQ(ReadFile("m"), before);
  outcome = RunWhileAsked({"restore", "b", "m", "t"},
                          [this] { RunSql(Path("t"), "DELETE FROM PathAlignmentThresholds"); });
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            shown +
                "Replace? [y/N] tarnbeam-db: t: was changed meanwhile by another program; nothing "
                "was restored\n");
  EXPECT_EQ(ReadFile("m"), before);
  EXPECT_EQ(Run({"restore", "b", "m", "t"}, "y\n").status, 0);
  ExpectAsBackedUp();
}

TEST_F(BackupTest, RestoringTakesThePlaceOfWhateverIsThere) {
  CreatePair();
  BackUp();
  const QByteArray garbage(9000, '\x55');
  for (const QByteArray& before :
       {QByteArray(), garbage, ReadFile("m").left(5000), QByteArray(1 << 20, 'x')}) {
    for (const char* name : {"m", "t"}) {
      WriteFile(name, before);
      EXPECT_EQ(Run({"restore", "b", "m", "t", "--yes"}).status, 0);
      ExpectAsBackedUp();
    }
  }
  QFile::remove(Path("m"));
  EXPECT_EQ(Run({"restore", "b", "m", "t", "--yes"}).status, 0);
  ExpectAsBackedUp();
  QFile::remove(Path("t"));
  EXPECT_EQ(Run({"restore", "b", "m", "t", "--yes"}).status, 0);
  ExpectAsBackedUp();
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
}

// Some programs leave the journal of a change that is done, with a head of zeros.
TEST_F(BackupTest, AJournalOfWhatIsDoneIsInNobodysWay) {
  CreatePair();
  BackUp();
  for (const char* name : {"m-journal", "t-journal", "new-journal"}) WriteFile(name, QByteArray(600, '\0'));
  EXPECT_EQ(Run({"restore", "b", "m", "t", "--yes", "--wait", "0"}).status, 0);
  ExpectAsBackedUp();
  RunWell({"restore", "b", "new", "newt"});
  EXPECT_EQ(RunWell({"export", "new", "newt"}), RunWell({"export", "m", "t"}));
}

// Who may give a file to somebody else does so here: it stays theirs.
TEST_F(BackupTest, RestoringKeepsModesOwnersAndLinks) {
  CreatePair();
  BackUp();
  Change();
  const QByteArray path = Path("m").toUtf8();
  constexpr unsigned int other = 1;
  RecordProperty("OfAnotherOwner", chown(path.constData(), other, other) == 0 ? "yes" : "no");
  ASSERT_EQ(chmod(path.constData(), 0640), 0);
  struct stat before {};
  ASSERT_EQ(stat(path.constData(), &before), 0);
  ASSERT_TRUE(QFile::link("m", Path("link")));
  EXPECT_EQ(Run({"restore", "b", "link", "t", "--yes"}).status, 0);
  EXPECT_EQ(QFile::symLinkTarget(Path("link")), Path("m"));
  struct stat status {};
  ASSERT_EQ(stat(path.constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
  EXPECT_EQ(status.st_uid, before.st_uid);
  EXPECT_EQ(status.st_gid, before.st_gid);
  ExpectAsBackedUp();
}

TEST_F(BackupTest, RestoringRefuses) {
  CreatePair();
  BackUp();
  const QByteArray before = ReadFile("m");
  ExpectFailure({"restore", "none", "m", "t"}, "none/manifest.json: No such file or directory");
  ExpectFailure({"restore", "b", "new", "new"}, "new: cannot be main and thresholds file at once");
  ExpectFailure({"restore", "b", "no/m", "newt"},
                "no/m: No such file or directory; both files are as they were");
  WriteFile("new-wal", "left");
  ExpectFailure(
      {"restore", "b", "new", "newt"},
      "new: is not there, but a journal (-journal or -wal) of a file with that name is; it would be "
      "applied to a new one, so move it away first");
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "new-wal", "t"}));
  const Outcome outcome = Run({"restore", "b", "m", "./m", "--yes"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            Announced("m and ./m") + "tarnbeam-db: m: cannot be main and thresholds file at once\n");
  EXPECT_EQ(ReadFile("m"), before);
}

// Reading one would never come to an end.
TEST_F(BackupTest, APipeIsNoPart) {
  CreatePair();
  BackUp();
  for (const char* name : {"b/manifest.json", "b/main.sqlite", "b/thresholds.sqlite"}) {
    const QByteArray part = ReadFile(name);
    ASSERT_TRUE(QFile::remove(Path(name)));
    ASSERT_EQ(mkfifo(Path(name).toUtf8().constData(), 0600), 0);
    ExpectFailure({"restore", "b", "new", "newt"}, QString("%1: is not a file").arg(name));
    ASSERT_TRUE(QFile::remove(Path(name)));
    WriteFile(name, part);
  }
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "t"}));
}

TEST_F(BackupTest, FilesInUse) {
  CreatePair();
  BackUp();
  for (const char* file : {"m", "t"}) {
    for (const char* use : {"BEGIN EXCLUSIVE", "BEGIN; SELECT * FROM sqlite_schema"}) {
      const bool onlyReads = QString(use).contains("SELECT");
      const Holder holder(Path(file), use);
      const Outcome outcome = Run({"restore", "b", "m", "t", "--yes", "--wait", "0"});
      EXPECT_EQ(outcome.status, 3) << use;
      EXPECT_EQ(outcome.err, Announced() + "tarnbeam-db: " + InUse(file) + "\n");
      const QString folder = QString(file) + (onlyReads ? "read" : "held");
      EXPECT_EQ(Run({"backup", "m", "t", folder, "--wait", "0"}).status, onlyReads ? 0 : 3) << use;
      EXPECT_EQ(QDir(Path(folder)).exists(), onlyReads);
    }
  }
}

// Of a file with a log, the log belongs to it.
TEST_F(BackupTest, FilesWithALog) {
  CreatePair();
  RunSql(Path("m"), "PRAGMA journal_mode = WAL");
  const QString before = RunWell({"export", "m", "t"});
  {
    const Holder holder(Path("m"),
                        "PRAGMA wal_autocheckpoint = 0; UPDATE AntennaAlignment SET Note = 'in the log'");
    BackUp();
    const Outcome outcome = Run({"restore", "b", "m", "t", "--yes", "--wait", "0"});
    EXPECT_EQ(outcome.status, 3);
    const QString exported = RunWell({"export", "b/main.sqlite", "b/thresholds.sqlite"});
    EXPECT_EQ(exported, RunWell({"export", "m", "t"}));
    EXPECT_NE(exported, before);
  }
  EXPECT_EQ(Run({"restore", "b", "m", "t", "--yes"}).status, 0);
  ExpectAsBackedUp();
}

TEST_F(BackupTest, ReadOnlyPlaces) {
  CreatePair();
  ASSERT_TRUE(QDir(Folder()).mkdir("ro"));
  ASSERT_TRUE(QFile::rename(Path("m"), Path("ro/m")) && QFile::rename(Path("t"), Path("ro/t")));
  for (const char* name : {"ro/m", "ro/t"}) ASSERT_EQ(chmod(Path(name).toUtf8().constData(), 0444), 0);
  ASSERT_EQ(chmod(Path("ro").toUtf8().constData(), 0555), 0);
  EXPECT_EQ(RunUnprivileged({"backup", "ro/m", "ro/t", "b"}).status, 0);
  Outcome outcome = RunUnprivileged({"backup", "ro/m", "ro/t", "ro/b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: ro/b: Permission denied\n");
  outcome = RunUnprivileged({"restore", "b", "ro/m", "ro/t", "--yes"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, Announced("ro/m and ro/t") +
                             "tarnbeam-db: ro/m: Permission denied; both files are as they were\n");
  ASSERT_EQ(chmod(Path("ro").toUtf8().constData(), 0755), 0);
  EXPECT_EQ(QDir(Path("ro")).entryList(QDir::Files), (QStringList{"m", "t"}));
}

TEST_F(BackupTest, NamesMayBeAnything) {
  CreatePair();
  for (const QString name : {" ", ":memory:", "file:x?mode=ro", "%1", "a\nb", "*?[", "Å'\""}) {
    RunWell({"backup", "m", "t", name});
    RunWell({"restore", name, name + ".m", name + ".t"});
    EXPECT_EQ(Run({"restore", name, name + ".m", name + ".t", "--yes"}).status, 0);
  }
  EXPECT_EQ(FilesInFolder().size(), 3 + 7 * 3);
}

TEST_F(BackupTest, OnAFullDiskThereIsAllOrNothing) {
  CreatePair();
  BackUp();
  Change();
  const QByteArray mainFile = ReadFile("m");
  const QByteArray thresholds = ReadFile("t");
  int failed = 0;
  for (const int blocks : {0, 8, 40, 90, 120, 136, 150, 170, 2000}) {
    SCOPED_TRACE(blocks);
    const bool isEnough = blocks == 2000;
    const int status = RunWithFileLimit(blocks, {"backup", "m", "t", "again"}).status;
    EXPECT_EQ(status == 0, QDir(Path("again")).exists());
    EXPECT_TRUE(status == 0 || (status == 1 && !isEnough)) << status;
    if (status == 0) RunWell({"restore", "again", "new", "newt"});
    for (const char* name :
         {"again/main.sqlite", "again/thresholds.sqlite", "again/manifest.json", "new", "newt"}) {
      QFile::remove(Path(name));
    }
    QDir(Folder()).rmdir("again");
    const Outcome restored = RunWithFileLimit(blocks, {"restore", "b", "m", "t", "--yes"});
    if (restored.status == 0) {
      ExpectAsBackedUp();
    } else {
      ++failed;
      EXPECT_EQ(restored.status, 1) << restored.err.toStdString();
      EXPECT_FALSE(isEnough);
      EXPECT_EQ(ReadFile("m"), mainFile);
      EXPECT_EQ(ReadFile("t"), thresholds);
    }
    EXPECT_EQ(FilesInFolder(), (QStringList{"b", "in.json", "m", "more.json", "t"}));
    WriteFile("m", mainFile);
    WriteFile("t", thresholds);
  }
  EXPECT_GT(failed, 3);
}

TEST_F(BackupTest, NobodyListens) {
  CreatePair();
  const Outcome outcome = RunInShell("exec \"$0\" \"$@\" > /dev/full", {"backup", "m", "t", "b"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: standard output cannot be written\n");
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "t"}));
}

}  // namespace
