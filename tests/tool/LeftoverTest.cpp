// What other programs left beside the files when they ended in the middle of their work, and files on two
// file systems.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include "tests/support/ChildProcess.h"
#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

// A program that runs statements on a file and ends without closing it.
void LeaveAfter(const QString& path, const char* sql) {
  EXPECT_EQ(RunInChild([&] {
              sqlite3* db = nullptr;
              EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
              EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
              LeaveProcess(0);
            }),
            0);
}

// So little memory that changed pages reach the file before they are committed.
const char* const halfAChange =
    "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN; UPDATE Orientation SET TiltDegrees = 1; UPDATE "
    "Sites SET SiteIdentifier = 'gone ' || SiteKey; DELETE FROM AntennaAlignment; UPDATE Geolocation SET "
    "ElevationMeters = 1; UPDATE Height SET HeightInMeters = 1; DELETE FROM Paths";

class LeftoverTest : public ToolTest {
 protected:
  void SetUp() override {
    CreateFilesWith({SiteEntry("S", "1"), SiteEntry("S", "2"), PathEntry("P")});
    exported_ = RunWell({"export", "m", "t"});
    WriteJson("more.json", {SiteEntry("T")});
  }

  // Reading commands read what SQLite would, and touch nothing.
  void ExpectRead() {
    const QStringList files = FilesInFolder();
    QList<QByteArray> contents;
    for (const QString& file : files) contents.append(ReadFile(file));
    EXPECT_EQ(RunWell({"export", "m", "t"}), exported_);
    EXPECT_EQ(Run({"check", "m", "t"}).status, 0);
    EXPECT_EQ(FilesInFolder(), files);
    for (int at = 0; at < files.size(); ++at) EXPECT_EQ(ReadFile(files.at(at)), contents.at(at)) << at;
  }

  // A changing command takes it up, and leaves nothing.
  void ExpectChanged() {
    RunWell({"import", "m", "t", "more.json"});
    EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "more.json", "t"}));
    EXPECT_EQ(Run({"check", "m", "t"}).status, 0);
    EXPECT_EQ(Run({"delete", "m", "t", "--site", "T", "--yes"}).status, 0);
    EXPECT_EQ(RunWell({"export", "m", "t"}), exported_);
  }

  QString exported_;
};

TEST_F(LeftoverTest, AHotJournalIsUndone) {
  const QByteArray before = ReadFile("m");
  LeaveAfter(Path("m"), halfAChange);
  ASSERT_NE(ReadFile("m"), before);
  ASSERT_TRUE(QFile::exists(Path("m-journal")));
  ExpectRead();
  ExpectChanged();
}

TEST_F(LeftoverTest, AHotJournalOfTheThresholdsIsUndone) {
  const QByteArray before = ReadFile("t");
  LeaveAfter(Path("t"),
             "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN; UPDATE AntennaAlignmentThresholds SET "
             "AzimuthThreshold = 9; UPDATE PathAlignmentThresholds SET AzimuthThreshold = 9; INSERT INTO "
             "PreferencesPathLength VALUES (1, 1); UPDATE AntennaAlignmentThresholds SET TiltThreshold = 9");
  ASSERT_NE(ReadFile("t"), before);
  ASSERT_TRUE(QFile::exists(Path("t-journal")));
  ExpectRead();
  ExpectChanged();
}

TEST_F(LeftoverTest, AJournalThatWasOnlyBegunIsPassedOver) {
  WriteFile("m-journal", QByteArray(512, '\0'));
  ExpectRead();
  ExpectChanged();
}

TEST_F(LeftoverTest, AWriteAheadLogIsPartOfTheFile) {
  LeaveAfter(Path("m"), "PRAGMA journal_mode = WAL; UPDATE Sites SET SiteIdentifier = 'in the log'");
  ASSERT_TRUE(QFile::exists(Path("m-wal")));
  exported_.replace("\"identifier\": \"S\"", "\"identifier\": \"in the log\"");
  // The uid counts the identifier.
  const auto withoutUids = [](const QString& text) {
    QStringList lines = text.split('\n');
    return lines.filter(QRegularExpression("^(?!.*\"uid\")")).join('\n');
  };
  EXPECT_EQ(withoutUids(RunWell({"export", "m", "t"})), withoutUids(exported_));
  exported_ = RunWell({"export", "m", "t"});
  ExpectRead();
  ExpectChanged();
}

// A crash of the machine can leave a frame that was never written whole.
TEST_F(LeftoverTest, ALogThatIsCutOffCountsAsFarAsItIsWhole) {
  LeaveAfter(
      Path("m"),
      "PRAGMA journal_mode = WAL; UPDATE Sites SET SiteIdentifier = 'S' || SiteIdentifier; UPDATE "
      "Sites SET SiteIdentifier = substr(SiteIdentifier, 2); UPDATE Sites SET SiteIdentifier = 'lost'");
  QFile log(Path("m-wal"));
  ASSERT_GT(log.size(), 100);
  ASSERT_TRUE(log.resize(log.size() - 100));
  ASSERT_TRUE(QFile::remove(Path("m-shm")));
  ExpectRead();
  ExpectChanged();
}

// A run that was killed while SQLite changed two of its private copies together.
TEST_F(LeftoverTest, PrivateCopiesGoWithTheirJournals) {
  ASSERT_TRUE(QDir(Folder()).mkpath("tmp/tarnbeam-db-abcdef") &&
              QDir(Folder()).mkpath("tmp/tarnbeam-db-backup"));
  for (const char* name : {"main", "read-main-journal", "read-main-mj0123456AB"}) {
    WriteFile(QString("tmp/tarnbeam-db-abcdef/") + name, "x");
  }
  WriteFile("tmp/tarnbeam-db-backup/main.sqlite", "of somebody's own");
  EXPECT_EQ(RunProgram(TARNBEAM_TOOL, {"import", "m", "t", "more.json"}, {{"TMPDIR", Path("tmp")}}).status,
            0);
  EXPECT_EQ(QDir(Path("tmp")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList{"tarnbeam-db-backup"});
  EXPECT_EQ(ReadFile("tmp/tarnbeam-db-backup/main.sqlite"), "of somebody's own");
}

// Begun by a run that is at work, and by one that was killed.
TEST_F(LeftoverTest, ABackupThatIsBeingMadeStays) {
  ASSERT_TRUE(QDir(Folder()).mkdir("b.creating-abcdef"));
  const int folder = open(Path("b.creating-abcdef").toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(folder, LOCK_EX | LOCK_NB), 0);
  RunWell({"backup", "m", "t", "b"});
  EXPECT_TRUE(QDir(Path("b.creating-abcdef")).exists());
  ASSERT_EQ(close(folder), 0);
  ASSERT_TRUE(QDir(Path("b")).removeRecursively());
  RunWell({"backup", "m", "t", "b"});
  EXPECT_FALSE(QDir(Path("b.creating-abcdef")).exists());
}

// Whoever opened them as files would wait for somebody at their other end.
TEST_F(LeftoverTest, PipesWithNamesOfFilesThatAreBeingMade) {
  for (const char* name : {"nm", "b"}) {
    ASSERT_EQ(mkfifo((Path(name) + ".creating-abcdef").toUtf8().constData(), 0600), 0);
  }
  RunWell({"create", "nm", "nt"});
  RunWell({"backup", "nm", "nt", "b"});
}

// Nobody has the file in use.
TEST_F(LeftoverTest, AJournalThatCannotBeTakenAwayIsAFailure) {
  ASSERT_TRUE(QDir(Folder()).mkdir("ro"));
  for (const char* name : {"m", "t"}) ASSERT_TRUE(QFile::rename(Path(name), Path(QString("ro/") + name)));
  LeaveAfter(Path("ro/m"), halfAChange);
  ASSERT_TRUE(QFile::setPermissions(Path("ro"), QFile::ReadOwner | QFile::ExeOwner));
  const Outcome outcome = RunUnprivileged({"repair", "ro/m", "ro/t", "--wait", "0"});
  ASSERT_TRUE(QFile::setPermissions(Path("ro"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: ro/m: disk I/O error\n");
  EXPECT_EQ(RunWell({"export", "ro/m", "ro/t"}), exported_);
}

// On two file systems nothing can be moved from one place to the other.
TEST_F(LeftoverTest, FilesOnTwoFileSystems) {
  struct stat here {};
  ASSERT_EQ(stat(Folder().toUtf8().constData(), &here), 0);
  QString other;
  for (const QString& place : {QString("/dev/shm"), QString("/tmp"), QString(TARNBEAM_BUILD_FOLDER)}) {
    struct stat there {};
    if (stat(place.toUtf8().constData(), &there) == 0 && there.st_dev != here.st_dev) other = place;
  }
  ASSERT_NE(other, QString()) << "one file system is all there is";
  const TemporaryFolder folder(other);
  const QString thresholds = folder.Path("t2");
  EXPECT_EQ(RunWell({"create", "m2", thresholds}), "created m2\ncreated " + thresholds + "\n");
  RunWell({"import", "m2", thresholds, "in.json"});
  EXPECT_EQ(RunWell({"export", "m2", thresholds}), exported_);
  RunWell({"import", "m2", thresholds, "more.json"});
  EXPECT_EQ(Run({"delete", "m2", thresholds, "--site", "T", "--yes"}).status, 0);
  EXPECT_EQ(RunWell({"export", "m2", thresholds}), exported_);
  EXPECT_EQ(Run({"check", "m2", thresholds, "--strict"}).status, 0);
  EXPECT_EQ(QDir(folder.Folder()).entryList(QDir::Files | QDir::Hidden), QStringList{"t2"});
  const Holder holder(thresholds, "BEGIN IMMEDIATE");
  const QByteArray before = ReadFile("m2");
  ExpectFailure({"import", "m2", thresholds, "more.json", "--wait", "0"}, InUse(thresholds), 3);
  EXPECT_EQ(ReadFile("m2"), before);
}

}  // namespace
