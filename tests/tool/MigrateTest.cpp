// Migration with the program.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include "store/AllStores.h"
#include "tests/support/DatabaseDump.h"
#include "tests/tool/KillSweep.h"
#include "tests/tool/SmallDisk.h"

namespace {

class MigrateTest : public ToolTest {
 protected:
  void Load(int version) { LoadEarlier("m", version); }

  // What an untouched file of the version is converted to.
  static QString Converted(int version) {
    QFile golden(
        QString(TARNBEAM_GOLDEN_FOLDER "/version_%1_as_%2.txt").arg(version).arg(currentSchemaVersion));
    EXPECT_TRUE(golden.open(QIODevice::ReadOnly));
    return QString::fromUtf8(golden.readAll());
  }

  void ExpectUntouched(const QByteArray& before, const QStringList& files) {
    EXPECT_EQ(ReadFile("m"), before);
    EXPECT_EQ(FilesInFolder(), files);
  }
};

class MigrateFromTest : public MigrateTest, public testing::WithParamInterface<int> {};

TEST_P(MigrateFromTest, BringsTheFileToTheCurrentVersion) {
  const int from = GetParam();
  Load(from);
  const QByteArray before = ReadFile("m");
  ASSERT_TRUE(QFile::setPermissions(Path("m"), QFile::ReadOwner | QFile::WriteOwner));
  QString expected = "copied to b\n";
  for (int version = from; version < static_cast<int>(currentSchemaVersion); ++version) {
    expected += QString("version %1 to %2: [0-9]+ ms\n").arg(version).arg(version + 1);
  }
  const QString out = RunWell({"migrate", "m", "--backup", "b"});
  EXPECT_TRUE(QRegularExpression(QRegularExpression::anchoredPattern(expected)).match(out).hasMatch())
      << out.toStdString();
  EXPECT_EQ(DumpDatabase(Path("m")), Converted(from));
  EXPECT_EQ(ReadFile("b"), before);
  EXPECT_EQ(QFile::permissions(Path("m")) & (QFile::ReadGroup | QFile::ReadOther), 0);
  EXPECT_EQ(FilesInFolder(), (QStringList{"b", "m"}));
}

// An earlier file and what it is converted to hold the same.
TEST_P(MigrateFromTest, MergedBeforeAndAfterItIsTheSame) {
  Load(GetParam());
  ASSERT_TRUE(QFile::copy(Path("m"), Path("earlier")));
  RunWell({"migrate", "m", "t"});
  EXPECT_EQ(RunWell({"diff", "earlier", "m", "t"}), "");
  RunWell({"create", "into", "intot"});
  // Five of sites, three of paths.
  EXPECT_EQ(RunWell({"merge", "into", "intot", "earlier"}), "8 added, 0 already there, 0 conflicts\n");
  EXPECT_EQ(RunWell({"merge", "into", "intot", "m", "t"}), "0 added, 8 already there, 0 conflicts\n");
  EXPECT_EQ(RunWell({"diff", "into", "intot", "m", "t"}), "");
}

INSTANTIATE_TEST_SUITE_P(Version, MigrateFromTest, testing::Range(1, static_cast<int>(currentSchemaVersion)));

TEST_F(MigrateTest, ACurrentFileIsLeftAlone) {
  CreateFilesWith({SiteEntry()});
  const QByteArray before = ReadFile("m");
  EXPECT_EQ(RunWell({"migrate", "m", "--backup", "b"}), "m is of version 7 already\n");
  ExpectUntouched(before, {"in.json", "m", "t"});
}

TEST_F(MigrateTest, RefusesWhatItCannotMigrate) {
  Load(6);
  ExpectFailure({"migrate", "none"}, "none: no such file");
  WriteFile("text", "text");
  ExpectFailure({"migrate", "text"}, "text: is no database", 4);
  EXPECT_EQ(ReadFile("text"), "text");
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 0");
  ExpectFailure({"migrate", "m"}, "m: is of version 0, which this program does not know (1 to 7)", 4);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 8");
  ExpectFailure({"migrate", "m"}, "m: is of version 8, newer than this program knows (7)", 4);
  EXPECT_EQ(FilesInFolder(), (QStringList{"m", "text"}));
}

TEST_F(MigrateTest, AnExistingBackupIsNotOverwritten) {
  Load(5);
  const QByteArray before = ReadFile("m");
  WriteFile("b", "precious");
  ExpectFailure({"migrate", "m", "--backup", "b"}, "b: File exists");
  EXPECT_EQ(ReadFile("b"), "precious");
  ExpectUntouched(before, {"b", "m"});
}

// A row of the file's own contradicts the references that the step enforces.
TEST_F(MigrateTest, AStepThatFailsLeavesTheFileAsItWas) {
  Load(2);
  RunSql(Path("m"), "DELETE FROM Height WHERE HeightKey = 1");
  const QByteArray before = ReadFile("m");
  const Outcome outcome = Run({"migrate", "m"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(
      outcome.err,
      "tarnbeam-db: m: version 2 to 3 could not be done; the file is as it was. Conversions work through "
      "/opt/tarnbeam/database/TemporaryDB.sqlite: that folder must exist and be writable.\n"
      "  library: execute INSERT INTO TemporaryDB.AntennaAlignment SELECT * FROM main.AntennaAlignment: "
      "FOREIGN KEY constraint failed\n");
  ExpectUntouched(before, {"m"});
}

constexpr const char* scratchFolder = "/opt/tarnbeam/database";

// Of thousands of writes in the folder that conversions work through, some fail: in the first step and in
// later ones.
TEST_F(MigrateTest, AnyStepThatFailsLeavesTheFileAsItWas) {
  Load(1);
  const QByteArray before = ReadFile("m");
  const QString converted = Converted(1);
  const int step = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1 ? 29 : 401;
  const QRegularExpression named(
      "^tarnbeam-db: m: version ([1-6]) to [2-7] (could not be done; the file is as it was|would lose "
      "something; "
      "nothing was changed)\\. ");
  QMap<QString, int> failed;
  for (int number = 1;; number += step) {
    SCOPED_TRACE(number);
    WriteFile("m", before);
    const Outcome outcome = RunFailing({"migrate", "m"}, "write", scratchFolder, number);
    if (!HasFailed()) break;
    if (outcome.status == 0) {
      EXPECT_EQ(DumpDatabase(Path("m")), converted);
    } else {
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.out, QString());
      ExpectUntouched(before, {"m", "mark"});
      const QRegularExpressionMatch match = named.match(outcome.err);
      EXPECT_TRUE(match.hasMatch()) << outcome.err.toStdString();
      ++failed[match.captured(1)];
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(failed.value("1"), 0);
  EXPECT_GT(failed.size(), 3);
}

TEST_F(MigrateTest, ALinkStaysALink) {
  Load(6);
  ASSERT_TRUE(QFile::link("m", Path("link")));
  RunWell({"migrate", "link"});
  EXPECT_EQ(QFile::symLinkTarget(Path("link")), Path("m"));
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
}

TEST_F(MigrateTest, ThresholdsAreMadeWhereTheyAreMissing) {
  Load(5);
  EXPECT_EQ(RunWell({"migrate", "m", "t"}).replace(QRegularExpression(": [0-9]+ ms\n"), "\n"),
            "version 5 to 6\nversion 6 to 7\ncreated t\n");
  RunWell({"create", "new", "newt"});
  EXPECT_EQ(ReadFile("t"), ReadFile("newt"));
  // What a migration leaves is nothing to warn of.
  EXPECT_EQ(RunWell({"check", "m", "t", "--strict"}).split('\n').filter(QRegularExpression("^(?!ok )")),
            (QStringList{"note     defaults and references of converted files in m: 1 (PathAlignment)",
                         "note     site alignments without thresholds in t: 5 (1, 2, 3, 5, 7)",
                         "note     path alignments without thresholds in t: 3 (1, 2, 4)", ""}));
  // Once more, with a file that is there and is to stay.
  RunSql(Path("t"), "INSERT INTO PreferencesPathLength VALUES (1, 5)");
  const QByteArray thresholds = ReadFile("t");
  EXPECT_EQ(RunWell({"migrate", "m", "t"}), "m is of version 7 already\n");
  EXPECT_EQ(ReadFile("t"), thresholds);
  ASSERT_TRUE(QFile::remove(Path("t")));
  EXPECT_EQ(RunWell({"migrate", "m", "t"}), "m is of version 7 already\ncreated t\n");
}

TEST_F(MigrateTest, WhatIsNoThresholdsFileIsRefused) {
  Load(5);
  const QByteArray before = ReadFile("m");
  WriteFile("t", "text");
  ExpectFailure({"migrate", "m", "t"}, "t: is no database", 4);
  LoadEarlier("other", 5);
  ExpectFailure({"migrate", "m", "other"}, "other: is no thresholds file", 4);
  ExpectUntouched(before, {"m", "other", "t"});
}

// What no step can carry over: objects and columns of the user's own, and a column that a later version has
// too.
TEST_F(MigrateTest, LossesAreNamedAndAccepted) {
  Load(4);
  RunSql(Path("m"),
         "CREATE TABLE Extra (x); CREATE VIEW Seen AS SELECT * FROM Sites; CREATE INDEX i ON Sites(SiteKey); "
         "CREATE TRIGGER g AFTER INSERT ON Extra BEGIN SELECT 1; END; ALTER TABLE Height ADD Own TEXT");
  const QByteArray before = ReadFile("m");
  ExpectFailure({"migrate", "m", "--backup", "b"},
                "m: the conversion would lose trigger g, view Seen, index i, table Extra, column Height.Own; "
                "nothing was changed. --accept-losses goes on without");
  ExpectUntouched(before, {"m"});
  RunWell({"migrate", "m", "--accept-losses"});
  EXPECT_EQ(DumpDatabase(Path("m")), Converted(4));
}

// The step from 2 to 3 reports success all the same.
TEST_F(MigrateTest, ALossOfPreferencesIsNamedAndAccepted) {
  Load(2);
  RunSql(Path("m"),
         "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = replace(sql, 'SoundEnabled INTEGER NOT "
         "NULL', 'SoundEnabled INTEGER') WHERE name = 'Preferences'; PRAGMA writable_schema = RESET; UPDATE "
         "Preferences SET SoundEnabled = NULL");
  const QByteArray before = ReadFile("m");
  ExpectFailure(
      {"migrate", "m"},
      "m: version 2 to 3 would lose something; nothing was changed. --accept-losses goes on without\n"
      "  library: execute INSERT INTO TemporaryDB.Preferences SELECT * FROM main.Preferences: NOT "
      "NULL constraint failed: Preferences.SoundEnabled");
  ExpectUntouched(before, {"m"});
  RunWell({"migrate", "m", "--accept-losses"});
  EXPECT_EQ(Rows(Path("m"), "SELECT count(*) FROM Preferences"), QStringList{"0"});
  QStringList kept = Converted(2).split('\n');
  for (const QString& line : kept.filter(QRegularExpression("^Preferences\\|"))) kept.removeOne(line);
  EXPECT_EQ(DumpDatabase(Path("m")).split('\n'), kept);
}

// Conversions on a device are done one at a time.
TEST_F(MigrateTest, AnotherConversionIsWaitedFor) {
  Load(6);
  const QByteArray before = ReadFile("m");
  const int folder = open(scratchFolder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  ExpectFailure(
      {"migrate", "m", "--wait", "0"},
      "m: another conversion is under way, and /opt/tarnbeam/database serves one at a time; try again, or "
      "wait longer with --wait SECONDS",
      3);
  ExpectUntouched(before, {"m"});
  ExpectToWait({"migrate", "m", "--wait", "60"}, [folder] { close(folder); });
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
}

// Each file ends with its own rows, however the two take turns.
TEST_F(MigrateTest, TwoAtOnceKeepTheirFilesApart) {
  QStringList expected;
  for (const char* name : {"one", "other"}) {
    LoadEarlier(name, 1);
    RunSql(Path(name), QString("UPDATE Sites SET SiteIdentifier = '%1 ' || SiteIdentifier").arg(name));
    expected.append(Rows(Path(name),
                         "SELECT SiteIdentifier FROM Sites WHERE SiteKey IN (SELECT SiteKey FROM "
                         "AntennaAlignment) ORDER BY 1")
                        .join(','));
  }
  for (int round = 0; round < 4; ++round) {
    QProcess both[2];
    for (int at : {0, 1}) {
      const QString copy = QString("copy%1").arg(at);
      QFile::remove(Path(copy));
      ASSERT_TRUE(QFile::copy(Path(at == 0 ? "one" : "other"), Path(copy)));
      both[at].setWorkingDirectory(Folder());
      both[at].start(TARNBEAM_TOOL, {"migrate", copy, "--wait", "60"});
    }
    for (int at : {0, 1}) {
      ASSERT_TRUE(both[at].waitForFinished(patience));
      EXPECT_EQ(both[at].exitCode(), 0) << both[at].readAllStandardError().toStdString();
      const QString copy = Path(QString("copy%1").arg(at));
      EXPECT_EQ(Rows(copy, "SELECT SiteIdentifier FROM Sites ORDER BY 1").join(','), expected.at(at));
      EXPECT_EQ(Rows(copy, "SELECT VersionNumber FROM Version"), QStringList{"7"});
    }
  }
}

TEST_F(MigrateTest, AFileInUseIsNotConverted) {
  Load(6);
  const QByteArray before = ReadFile("m");
  for (const char* work : {"BEGIN; SELECT count(*) FROM Sites", "BEGIN IMMEDIATE; DELETE FROM Sites"}) {
    const Holder holder(Path("m"), work);
    ExpectFailure({"migrate", "m", "--wait", "0"}, InUse("m"), 3);
  }
  EXPECT_EQ(ReadFile("m"), before);
}

class MigrateOnSmallDiskTest : public SmallDisk {};

TEST_P(MigrateOnSmallDiskTest, TheFileStaysAsItWas) {
  LoadEarlier("m", 5);
  Sweep({"migrate", "m", "t"}, LimitsFiles() ? 4 : int(ReadFile("m").size()) / 1024, 16);
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
  EXPECT_EQ(Run({"check", "m", "t"}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Shortage, MigrateOnSmallDiskTest,
                         testing::Values(Shortage::SmallFileSystem, Shortage::SmallFiles), SmallDisk::NameOf);

// Killed while it changes the folder of the file.
class KillMigrateTest : public KillSweep {
 protected:
  void SetUp() override {
    LoadEarlier("m", 6);
    Keep();
  }

  // Main and thresholds file are no transaction here: the one is made first, and is of no use without the
  // other.
  QString Seen() override {
    const QString version = RunWell({"version", "m"});
    return version + (version == "7\n" ? RunWell({"export", "m", "t"}) : RunWell({"export", "m"}));
  }

  QStringList ChangeAgain() override {
    RunWell({"migrate", "m", "t"});
    return {"m", "t"};
  }
};

TEST_P(KillMigrateTest, TheFileIsBeforeOrAfter) { Sweep(); }

INSTANTIATE_TEST_SUITE_P(Tool, KillMigrateTest, testing::Values(Change{"Migrate", {"migrate", "m", "t"}, 9}),
                         NameOf);

}  // namespace
