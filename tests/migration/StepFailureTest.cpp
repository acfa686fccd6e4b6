// Every step of a conversion fails once: the lines in order, the main file as it was, the scratch file gone
// or, in the earliest converter, left behind.
#include "migration/Conversion.h"
#include "schema/SchemaVersion1.h"
#include "tests/migration/ConversionTest.h"

namespace {

class StepFailureTest : public ConversionTest {
 protected:
  static QStringList AbortedStep(const QStringList& lines, const char* step) {
    return Aborted(Tested(), lines, step);
  }
  static bool IsLenientAboutPreferences() { return Tested().source <= 2; }
};
INSTANTIATE_TEST_SUITE_P(Converters, StepFailureTest, testing::ValuesIn(Converters()), NameOf);

TEST_P(StepFailureTest, MainFileCannotBeOpened) {
  // What an earlier run left behind is not touched: nothing happens before the file is open.
  RunSql(scratchPath, "CREATE TABLE Left (V)");
  const QByteArray left = ContentOf(scratchPath);
  const struct {
    Fault fault;
    const char* line;
  } cases[] = {
      {Fault("open_v2", SQLITE_CANTOPEN), "Can't open database: rval= 14 : unable to open database file"},
      {Failing("exec", "foreign_keys"), "SQL PRAGMA foreign_keys = ON failed"},
      {Failing("exec", "temp_store"), "SQL PRAGMA temp_store = MEMORY failed"},
  };
  for (const auto& [fault, line] : cases) {
    SCOPED_TRACE(line);
    const QByteArray before = ContentOf(Main());
    SqliteCalls::Arm(fault);
    const Converted converted = ConvertWithFault();
    EXPECT_FALSE(converted.result);
    QStringList lines{line};
    if (Tested().namesOpenFailure) lines.append("Failed database open? full path:  " + Main());
    EXPECT_EQ(converted.lines, lines);
    ExpectUntouched(before, true);
    EXPECT_EQ(ContentOf(scratchPath), left);
  }
}

TEST_P(StepFailureTest, FolderOfMainFileIsMissing) {
  const QString path = folder_.Path("missing/main.sqlite");
  QStringList lines{"Can't open database: rval= 14 : unable to open database file"};
  if (Tested().namesOpenFailure) lines.append("Failed database open? full path:  " + path);
  const Converted converted = Convert(Tested(), path);
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, lines);
  EXPECT_FALSE(QFile::exists(scratchPath));
}

TEST_P(StepFailureTest, ScratchFileCannotBeCreated) {
  const QByteArray before = ContentOf(Main());
  FileCalls::Arm(Fault("create", EACCES).OnFile("TemporaryDB.sqlite"));
  const Converted converted = ConvertWithFault();
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, AbortedStep({}, "CreateTemporaryDatabase"));
  ExpectUntouched(before, false);
}

// What is in the folder by then belongs to another conversion.
TEST_P(StepFailureTest, ScratchFolderCannotBeLocked) {
  const TemporaryFolder elsewhere(FolderOnOtherFileSystem());
  LoadGolden(Tested().source, elsewhere.Main());
  RunSql(scratchPath, "CREATE TABLE Left (V)");
  const QByteArray before = ContentOf(elsewhere.Main());
  const QByteArray left = ContentOf(scratchPath);
  const QByteArray folder = scratchFolder.toLocal8Bit();
  for (const Fault& fault : {Fault("open", ENOENT).OnFile(folder), Fault("open", EMFILE).OnFile(folder),
                             Fault("flock", ENOLCK).OnFile(folder)}) {
    FileCalls::Arm(fault);
    const Converted converted = ConvertWithFault(elsewhere.Main());
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(converted.lines, AbortedStep({}, "CreateTemporaryDatabase"));
    EXPECT_EQ(ContentOf(elsewhere.Main()), before);
    EXPECT_EQ(ContentOf(scratchPath), left);
  }
}

TEST_P(StepFailureTest, Version) {
  const char* const create = "CREATE TABLE IF NOT EXISTS TemporaryDB.Version";
  ExpectFailure(Failing("exec", create), AbortedStep({ExecuteFailed("Create Copy Version Table"),
                                                      "Unable to create new version table"},
                                                     "UpdateVersion"));
  const char* const insert = "INSERT OR REPLACE INTO TemporaryDB.Version";
  ExpectFailure(Failing("bind_int", insert), AbortedStep({}, "UpdateVersion"));
  ExpectFailure(Failing("step", insert), AbortedStep({}, "UpdateVersion"));
}

TEST_P(StepFailureTest, VersionIsNotStoredUnlessBound) {
  SqliteCalls::Arm(Failing("bind_int", "INSERT OR REPLACE INTO TemporaryDB.Version"));
  SqliteCalls::Record();
  EXPECT_FALSE(Convert(Tested(), Main()).result);
  EXPECT_EQ(SqliteCalls::Count("step"), 0);
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("DETACH").size(), 1);
}

// Nothing but the end of the connection detaches the file.
TEST_P(StepFailureTest, VersionStatementStaysAttachedWhenItCannotBePrepared) {
  SqliteCalls::Record();
  SqliteCalls::Arm(Failing("prepare_v2", "INSERT OR REPLACE INTO TemporaryDB.Version"));
  const QByteArray before = ContentOf(Main());
  const Converted converted = Convert(Tested(), Main());
  const QStringList calls = SqliteCalls::TakeTrace();
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, AbortedStep({PrepareFailed("Insert Version")}, "UpdateVersion"));
  EXPECT_EQ(calls.filter("ATTACH DATABASE '").size(), 1);
  EXPECT_EQ(calls.filter("DETACH"), QStringList());
  EXPECT_EQ(calls.last(), "close " + Main() + " = 0");
  ExpectUntouched(before, !Tested().removesScratch);
}

TEST_P(StepFailureTest, EveryTablesCreate) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    SCOPED_TRACE(texts.table);
    const QByteArray create = QByteArray("CREATE TABLE IF NOT EXISTS TemporaryDB.") + texts.table;
    ExpectFailure(Failing("exec", create.constData()),
                  AbortedStep(texts.CreateFailure(Tested()), texts.abort));
  }
}

TEST_P(StepFailureTest, EveryTablesCopy) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    if (IsLenientAboutPreferences() && texts.abort == QByteArray("UpdatePreferencesTable")) continue;
    SCOPED_TRACE(texts.table);
    const QByteArray copy = QByteArray("INSERT INTO TemporaryDB.") + texts.table;
    ExpectFailure(Failing("exec", copy.constData()), AbortedStep(texts.CopyFailure(Tested()), texts.abort));
  }
}

TEST_P(StepFailureTest, EveryChangeThatCounts) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    for (const AddedChange& change : ChangesOf(Tested(), texts.table)) {
      if (!change.counts) continue;
      SCOPED_TRACE(change.sql);
      QStringList lines{ExecuteFailed(change.label)};
      if (change.failureLine) lines.append(change.failureLine);
      ExpectFailure(Failing("exec", change.sql), AbortedStep(lines, texts.abort));
    }
  }
}

TEST_P(StepFailureTest, EveryAttach) {
  // The 12th is that of the clean-up, whose result is ignored.
  std::vector<QStringList> expected{AbortedStep({ExecuteFailed("Attach temporary db")}, "UpdateVersion")};
  for (const CopiedTableTexts& texts : CopiedTables()) {
    expected.push_back(AbortedStep({ExecuteFailed("Attach temporary db")}, texts.abort));
  }
  if (Tested().cleansUp) {
    expected.push_back(AbortedStep(
        {ExecuteFailed("Attach temporary db"),
         "SQL prepare  Get site keys  failed with  1 : no such table: TemporaryDB.AntennaAlignment",
         "SQlite site keys statement creation failed",
         "SQL prepare  Get path keys  failed with  1 : no such table: TemporaryDB.PathAlignment",
         "SQLite statement creation failed"},
        "DeleteUnusedRecords"));
  }
  for (const char* const check : {"Integrity check failed", "Foreign key check failed"}) {
    expected.push_back(CheckFailed(Tested(),
                                   PlainLines() + QStringList{ExecuteFailed("Attach temporary db"),
                                                              "Failed to attach temporary database"},
                                   check));
  }
  int number = 0;
  for (const QStringList& lines : expected) {
    SCOPED_TRACE(++number);
    ExpectFailure(Failing("exec", "ATTACH DATABASE '").At(number), lines);
  }
}

// The file was detached all the same, so the next step finds it as it should be.
TEST_P(StepFailureTest, DetachIsNotCounted) {
  const int detaches = Tested().cleansUp ? 14 : 13;
  for (int number = 1; number <= detaches; ++number) {
    SCOPED_TRACE(number);
    Load();
    QStringList lines = PlainLines();
    const QString line = ExecuteFailed("Detach temporary db");
    // The eleven steps before the clean-up log nothing.
    number <= 11 ? lines.prepend(line) : lines.append(line);
    ExpectSuccess(Failing("exec", "DETACH").At(number).Performed(), lines);
    ExpectDump(Main(), Expected());
  }
}

TEST_P(StepFailureTest, ScratchFileLeftAttachedStopsTheNextStep) {
  ExpectFailure(
      Failing("exec", "DETACH"),
      AbortedStep({ExecuteFailed("Detach temporary db"),
                   "SQL  Attach temporary db  failed with  1 : database TemporaryDB is already in use"},
                  "UpdateSitesTable"));
}

// A connection that refuses to close does not keep the copy from being swapped in.
TEST_P(StepFailureTest, CloseIsNotCounted) {
  SqliteCalls::Arm(Fault("close", SQLITE_BUSY));
  const Converted converted = ConvertWithFault();
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines, PlainLines() + QStringList{"sqlite3_close failed with  5 database is locked"});
  ExpectDump(Main(), Expected());
  SqliteLeakGuard::ExpectLeaked(1, 0);
}

// Logged after the line of the step and before the scratch file is removed.
TEST_P(StepFailureTest, CloseFailsAfterAFailedStep) {
  SqliteCalls::Arm(Fault("close", SQLITE_BUSY));
  SqliteCalls::Arm(Failing("exec", "ATTACH DATABASE '"));
  const Converted converted = ConvertWithFault();
  EXPECT_FALSE(converted.result);
  QStringList lines = AbortedStep({ExecuteFailed("Attach temporary db")}, "UpdateVersion");
  lines.insert(Tested().namesSteps ? 2 : 1, "sqlite3_close failed with  5 database is locked");
  EXPECT_EQ(converted.lines, lines);
  EXPECT_EQ(QFile::exists(scratchPath), !Tested().removesScratch);
  SqliteLeakGuard::ExpectLeaked(1, 0);
}

TEST_P(StepFailureTest, ScratchFileThatCannotBeRemovedStays) {
  const QByteArray before = ContentOf(Main());
  FileCalls::Arm(Fault("unlink", EACCES).OnFile("TemporaryDB.sqlite").Always());
  SqliteCalls::Arm(Failing("exec", "ATTACH DATABASE '"));
  const Converted converted = ConvertWithFault();
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, AbortedStep({ExecuteFailed("Attach temporary db")}, "UpdateVersion"));
  ExpectUntouched(before, true);
}

TEST(ConversionSteps, RefuseNullConnections) {
  const ConversionStep step{2, SchemaVersion1(), FailureHandling::ChecksNamed, UnusedRows::Stay, {}};
  const LogCapture log;
  EXPECT_FALSE(Conversion(step).UpdateVersion(nullptr));
  EXPECT_FALSE(Conversion::AttachTemporaryDatabase(nullptr));
  EXPECT_FALSE(Conversion::DetachTemporaryDatabase(nullptr));
  EXPECT_EQ(log.Lines(), QStringList());
  EXPECT_FALSE(Conversion::PerformIntegrityCheck(nullptr));
  EXPECT_FALSE(Conversion::PerformForeignKeyCheck(nullptr));
  EXPECT_EQ(log.Lines(),
            (QStringList{"Null db passed to integrity check", "Null db passed to foreign key check"}));
}

}  // namespace
