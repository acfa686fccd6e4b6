// Migration with the program.
#include <QFile>
#include <QRegularExpression>

#include "store/AllStores.h"
#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

class MigrateTest : public ToolTest {
 protected:
  void Load(int version) {
    LoadSqlFile(Path("m"), QString(TARNBEAM_GOLDEN_FOLDER "/version_%1.sql").arg(version));
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
  QString expected = "^copied to b\n";
  for (int version = from; version < static_cast<int>(CurrentSchemaVersion); ++version) {
    expected += QString("version %1 to %2: [0-9]+ ms\n").arg(version).arg(version + 1);
  }
  const QString out = RunWell({"migrate", "m", "--backup", "b"});
  EXPECT_TRUE(QRegularExpression(expected + "$").match(out).hasMatch()) << out.toStdString();
  QFile golden(QString(TARNBEAM_GOLDEN_FOLDER "/version_%1_as_%2.txt").arg(from).arg(CurrentSchemaVersion));
  ASSERT_TRUE(golden.open(QIODevice::ReadOnly));
  EXPECT_EQ(DumpDatabase(Path("m")), QString::fromUtf8(golden.readAll()));
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
  const QString first = RunWell({"merge", "into", "intot", "earlier"});
  EXPECT_TRUE(first.endsWith(" added, 0 already there, 0 conflicts\n")) << first.toStdString();
  EXPECT_EQ(RunWell({"merge", "into", "intot", "m", "t"}),
            QString("0 added, %1 already there, 0 conflicts\n").arg(first.section(' ', 0, 0)));
  EXPECT_EQ(RunWell({"diff", "into", "intot", "m", "t"}), "");
}

INSTANTIATE_TEST_SUITE_P(Version, MigrateFromTest, testing::Range(1, static_cast<int>(CurrentSchemaVersion)));

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

// The step from 1 to 2 succeeds; the one from 2 to 3 misses the names that its copies use.
TEST_F(MigrateTest, AStepThatFailsLeavesTheFileAsItWas) {
  Load(2);
  RunSql(Path("m"), "DELETE FROM Height WHERE HeightKey = 1");
  const QByteArray before = ReadFile("m");
  const Outcome outcome = Run({"migrate", "m"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(
      outcome.err.section('\n', 0, 0),
      "tarnbeam-db: m: version 2 to 3 could not be done; the file is as it was. Conversions work through "
      "/opt/tarnbeam/database/TemporaryDB.sqlite: that folder must exist and be writable.");
  EXPECT_TRUE(outcome.err.contains("FOREIGN KEY constraint failed")) << outcome.err.toStdString();
  ExpectUntouched(before, {"m"});
}

TEST_F(MigrateTest, ALaterStepThatFailsLeavesTheFileAsItWas) {
  Load(1);
  // A column that version 2 adds stops the second step, not the first.
  RunSql(Path("m"), "ALTER TABLE SiteScreenContents ADD Extra INTEGER");
  const QByteArray before = ReadFile("m");
  EXPECT_EQ(Run({"migrate", "m"}).status, 1);
  ExpectUntouched(before, {"m"});
}

TEST_F(MigrateTest, ALinkStaysALink) {
  Load(6);
  ASSERT_TRUE(QFile::link("m", Path("link")));
  RunWell({"migrate", "link"});
  EXPECT_EQ(QFile::symLinkTarget(Path("link")), Path("m"));
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
}

}  // namespace
