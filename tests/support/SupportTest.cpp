// The tools that the other tests rely on are tested themselves: counting, failing, killing, dumping.
#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <cerrno>
#include <csignal>
#include <set>
#include <stdexcept>

#include "tests/support/ChildProcess.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/FileCalls.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/ShimVfs.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr int readWriteCreate = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

sqlite3* OpenFile(const QString& path) {
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open_v2(path.toLocal8Bit().constData(), &db, readWriteCreate, nullptr), SQLITE_OK);
  return db;
}

int Execute(sqlite3* db, const char* sql) { return sqlite3_exec(db, sql, nullptr, nullptr, nullptr); }

sqlite3_stmt* Prepare(sqlite3* db, const char* sql) {
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr), SQLITE_OK) << sql;
  return statement;
}

// A connection to a file with a table of one row (1, 'one').
class SqliteCallsTest : public testing::Test {
 protected:
  SqliteCallsTest() {
    RunSql(folder_.Main(), QStringLiteral("CREATE TABLE T (K INTEGER PRIMARY KEY, V TEXT);"
                                          "INSERT INTO T VALUES (1, 'one')"));
    db_ = OpenFile(folder_.Main());
    SqliteCalls::Reset();
  }
  ~SqliteCallsTest() override { SqliteCalls::CloseLeaked(); }

  TemporaryFolder folder_;
  sqlite3* db_ = nullptr;
};

TEST(LogCapture, KeepsWholeLinesInOrder) {
  LogCapture log;
  qDebug() << "SQL "
           << "Insert"
           << "failed with " << 5 << ":"
           << "locked";
  EXPECT_EQ(log.Lines().size(), 1);
  QMessageLogger(nullptr, 0, nullptr).debug() << "second";
  EXPECT_EQ(log.TakeLines(), (QStringList{"SQL  Insert failed with  5 : locked", "second"}));
  EXPECT_EQ(log.Lines(), QStringList());
}

TEST(LogCapture, NamesLinesThatAreNoPlainDebugLines) {
  LogCapture log;
  QMessageLogger(nullptr, 0, nullptr).debug() << "plain";
  EXPECT_EQ(log.Misfits(), QStringList());
  QMessageLogger("f.cpp", 7, "g").debug() << "placed";
  QMessageLogger(nullptr, 0, nullptr, "other").debug() << "categorised";
  QMessageLogger(nullptr, 0, nullptr).warning() << "warned";
  EXPECT_EQ(log.Misfits(), (QStringList{"type=0 category=default file=f.cpp line=7 function=g: placed",
                                        "type=0 category=other file= line=0 function=: categorised",
                                        "type=1 category=default file= line=0 function=: warned"}));
}

TEST(LogCapture, PutsBackTheHandlerBeforeIt) {
  LogCapture outer;
  {
    LogCapture inner;
    qDebug() << "inner";
    EXPECT_EQ(inner.Lines(), QStringList{"inner"});
  }
  qDebug() << "outer";
  EXPECT_EQ(outer.Lines(), QStringList{"outer"});
}

TEST_F(SqliteCallsTest, CountsAndRecordsCalls) {
  SqliteCalls::Record();
  sqlite3* const db = OpenFile(folder_.Path("other"));
  EXPECT_EQ(Execute(db, "CREATE TABLE A (I, J, D, X)"), SQLITE_OK);
  sqlite3_stmt* const insert = Prepare(db, "INSERT INTO A VALUES (?,?,?,?)");
  sqlite3_bind_int(insert, 1, 7);
  sqlite3_bind_int64(insert, 2, 5000000000);
  sqlite3_bind_double(insert, 3, 0.5);
  sqlite3_bind_text(insert, 4, "text", -1, SQLITE_TRANSIENT);
  EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
  sqlite3_reset(insert);
  sqlite3_clear_bindings(insert);
  sqlite3_finalize(insert);
  EXPECT_EQ(sqlite3_last_insert_rowid(db), 1);
  EXPECT_EQ(sqlite3_close(db), SQLITE_OK);

  const QString sql = " [INSERT INTO A VALUES (?,?,?,?)]";
  EXPECT_EQ(
      SqliteCalls::TakeTrace(),
      (QStringList{"open_v2 " + folder_.Path("other") + ", 6 = 0", "exec CREATE TABLE A (I, J, D, X) = 0",
                   "prepare_v2 INSERT INTO A VALUES (?,?,?,?) = 0", "bind_int 1, 7 = 0" + sql,
                   "bind_int64 2, 5000000000 = 0" + sql, "bind_double 3, 0.5 = 0" + sql,
                   "bind_text 4, 'text' = 0" + sql, "step = 101" + sql, "reset = 0" + sql,
                   "clear_bindings = 0" + sql, "finalize = 0" + sql, "last_insert_rowid = 1",
                   "close " + folder_.Path("other") + " = 0"}));
  EXPECT_EQ(SqliteCalls::Count("bind"), 4);
  EXPECT_EQ(SqliteCalls::Count("bind_int"), 1);
  EXPECT_EQ(SqliteCalls::Count("reset|finalize"), 2);
  EXPECT_EQ(SqliteCalls::Count(""), 9);
  EXPECT_FALSE(SqliteCalls::Fired());
}

TEST_F(SqliteCallsTest, RecordsWhatARowAnswers) {
  sqlite3_stmt* const select = Prepare(db_, "SELECT K, V FROM T");
  EXPECT_EQ(sqlite3_step(select), SQLITE_ROW);
  SqliteCalls::Record();
  EXPECT_EQ(sqlite3_column_int(select, 0), 1);
  EXPECT_EQ(sqlite3_column_double(select, 0), 1.0);
  EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(select, 1)), "one");
  EXPECT_EQ(SqliteCalls::TakeTrace(),
            (QStringList{"column_int 0 = 1 [SELECT K, V FROM T]", "column_double 0 = 1 [SELECT K, V FROM T]",
                         "column_text 1 = one [SELECT K, V FROM T]"}));
}

TEST_F(SqliteCallsTest, NthBindFailsWithItsCodeAndAFixedMessage) {
  sqlite3_stmt* const insert = Prepare(db_, "INSERT INTO T VALUES (?,?)");
  SqliteCalls::Arm(Fault("bind", SQLITE_BUSY).At(2));
  EXPECT_EQ(sqlite3_bind_int(insert, 1, 2), SQLITE_OK);
  EXPECT_FALSE(SqliteCalls::Fired());
  EXPECT_EQ(sqlite3_bind_text(insert, 2, "two", -1, SQLITE_TRANSIENT), SQLITE_BUSY);
  EXPECT_TRUE(SqliteCalls::Fired());
  EXPECT_STREQ(sqlite3_errmsg(db_), "database is locked");
  EXPECT_EQ(sqlite3_step(insert), SQLITE_DONE);
  EXPECT_STRNE(sqlite3_errmsg(db_), "database is locked");
  EXPECT_EQ(Rows(folder_.Main(), "SELECT * FROM T"), (QStringList{"1|'one'", "2|NULL"}));
}

TEST_F(SqliteCallsTest, FaultMeetsOnlyItsTextAndFile) {
  sqlite3* const other = OpenFile(folder_.Thresholds());
  SqliteCalls::Arm(Fault("exec", SQLITE_FULL).OnText("TABLE").OnFile("thresholds").Always());
  EXPECT_EQ(Execute(db_, "CREATE TABLE A (I)"), SQLITE_OK);
  EXPECT_EQ(Execute(other, "PRAGMA foreign_keys = ON"), SQLITE_OK);
  EXPECT_EQ(Execute(other, "CREATE TABLE A (I)"), SQLITE_FULL);
  EXPECT_EQ(Execute(other, "CREATE TABLE B (I)"), SQLITE_FULL);
  EXPECT_EQ(SqliteCalls::FiredCount(), 2);
}

TEST_F(SqliteCallsTest, FailingExecHandsOutAMessageUnlessToldNot) {
  SqliteCalls::Arm(Fault("exec", SQLITE_IOERR));
  SqliteCalls::Arm(Fault("exec", SQLITE_NOMEM).At(2).WithoutOutput());
  char* message = nullptr;
  EXPECT_EQ(sqlite3_exec(db_, "SELECT 1", nullptr, nullptr, &message), SQLITE_IOERR);
  EXPECT_STREQ(message, "disk I/O error");
  sqlite3_free(message);
  EXPECT_EQ(SqliteCalls::Count("free"), 1);
  EXPECT_EQ(sqlite3_exec(db_, "SELECT 1", nullptr, nullptr, &message), SQLITE_NOMEM);
  EXPECT_EQ(message, nullptr);
  EXPECT_STREQ(sqlite3_errmsg(db_), "out of memory");
}

TEST_F(SqliteCallsTest, PerformedCallTakesEffectAndReportsFailure) {
  SqliteCalls::Arm(Fault("exec", SQLITE_IOERR).Performed());
  EXPECT_EQ(Execute(db_, "DELETE FROM T"), SQLITE_IOERR);
  EXPECT_EQ(Rows(folder_.Main(), "SELECT * FROM T"), QStringList());
}

TEST_F(SqliteCallsTest, StepFollowsScriptedResultsAndThenTheEngine) {
  sqlite3_stmt* const select = Prepare(db_, "SELECT V FROM T");
  SqliteCalls::Arm(Fault("step", 0).Results({SQLITE_BUSY, SQLITE_BUSY, SQLITE_ROW}));
  std::vector<int> results;
  for (int i = 0; i < 5; ++i) results.push_back(sqlite3_step(select));
  EXPECT_EQ(results, (std::vector<int>{SQLITE_BUSY, SQLITE_BUSY, SQLITE_ROW, SQLITE_ROW, SQLITE_DONE}));
}

TEST_F(SqliteCallsTest, ColumnTextAnswersNullOnDemand) {
  sqlite3_stmt* const select = Prepare(db_, "SELECT V FROM T");
  EXPECT_EQ(sqlite3_step(select), SQLITE_ROW);
  SqliteCalls::Arm(Fault("column_text", 0));
  EXPECT_EQ(sqlite3_column_text(select, 0), nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(select, 0)), "one");
}

TEST_F(SqliteCallsTest, FailingPrepareLeavesNoStatement) {
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_CORRUPT));
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_CORRUPT).At(2).Performed());
  for (int i = 0; i < 2; ++i) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db_, "SELECT V FROM T", -1, &statement, nullptr), SQLITE_CORRUPT);
    EXPECT_EQ(statement, nullptr);
    EXPECT_STREQ(sqlite3_errmsg(db_), "database disk image is malformed");
  }
  EXPECT_EQ(SqliteCalls::LiveStatements(), 0);
}

TEST_F(SqliteCallsTest, FailingOpenStillGivesAHandleToAskAndClose) {
  SqliteCalls::Arm(Fault("open", SQLITE_CANTOPEN));
  sqlite3* db = nullptr;
  const QByteArray path = folder_.Path("never").toLocal8Bit();
  EXPECT_EQ(sqlite3_open_v2(path.constData(), &db, readWriteCreate, nullptr), SQLITE_CANTOPEN);
  ASSERT_NE(db, nullptr);
  EXPECT_STREQ(sqlite3_errmsg(db), "unable to open database file");
  EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
  EXPECT_FALSE(QFile::exists(folder_.Path("never")));

  SqliteCalls::Arm(Fault("open", SQLITE_NOMEM).WithoutOutput());
  EXPECT_EQ(sqlite3_open_v2(path.constData(), &db, readWriteCreate, nullptr), SQLITE_NOMEM);
  EXPECT_EQ(db, nullptr);
  EXPECT_STREQ(sqlite3_errmsg(db), "out of memory");
}

TEST_F(SqliteCallsTest, FailingCloseLeavesTheConnectionOpen) {
  SqliteCalls::Arm(Fault("close", SQLITE_BUSY));
  EXPECT_EQ(sqlite3_close(db_), SQLITE_BUSY);
  EXPECT_STREQ(sqlite3_errmsg(db_), "database is locked");
  EXPECT_EQ(SqliteCalls::OpenConnections(), 1);
  EXPECT_EQ(sqlite3_close(db_), SQLITE_OK);
  EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
}

// The engine's own refusal: a connection with a live statement stays open and is counted as such.
TEST_F(SqliteCallsTest, RefusedCloseIsAccountedFor) {
  sqlite3_stmt* const select = Prepare(db_, "SELECT V FROM T");
  EXPECT_EQ(sqlite3_close(db_), SQLITE_BUSY);
  EXPECT_EQ(SqliteCalls::OpenConnections(), 1);
  EXPECT_EQ(SqliteCalls::LiveStatements(), 1);
  EXPECT_EQ(sqlite3_finalize(select), SQLITE_OK);
  EXPECT_EQ(SqliteCalls::LiveStatements(), 0);
}

// What a store operation does, in small: goes on after failures as far as it can.
void OpenQueryAndClose(const QString& path) {
  sqlite3* db = nullptr;
  sqlite3_stmt* statement = nullptr;
  sqlite3_open_v2(path.toLocal8Bit().constData(), &db, readWriteCreate, nullptr);
  Execute(db, "PRAGMA foreign_keys = ON");
  sqlite3_prepare_v2(db, "SELECT ?", -1, &statement, nullptr);
  if (statement) {
    sqlite3_bind_int(statement, 1, 1);
    sqlite3_step(statement);
  }
  sqlite3_finalize(statement);
  sqlite3_close(db);
}

TEST(SqliteCalls, SweepMeetsEveryCallOnceAndEnds) {
  TemporaryFolder folder;
  QStringList failed;
  bool fired = true;
  while (fired) {
    SqliteCalls::Reset();
    SqliteCalls::Record();
    SqliteCalls::Arm(Fault("", SQLITE_FULL).At(static_cast<int>(failed.size()) + 1));
    OpenQueryAndClose(folder.Main());
    const QStringList failures = SqliteCalls::TakeTrace().filter(QRegularExpression(" = 13( |$)"));
    fired = SqliteCalls::Fired();
    ASSERT_EQ(failures.size(), fired ? 1 : 0) << failed.size();
    for (const QString& line : failures) failed.append(line.section(' ', 0, 0));
    SqliteCalls::CloseLeaked();
  }
  EXPECT_EQ(failed, (QStringList{"open_v2", "exec", "prepare_v2", "bind_int", "step", "close"}));
}

TEST(SqliteCalls, KillEndsTheProcess) {
  TemporaryFolder folder;
  RunSql(folder.Main(), "CREATE TABLE T (V)");
  EXPECT_EQ(RunInChild([&] {
              SqliteCalls::Arm(Fault::Kill("exec").At(2));
              sqlite3* const db = OpenFile(folder.Main());
              Execute(db, "INSERT INTO T VALUES (1)");
              Execute(db, "INSERT INTO T VALUES (2)");
            }),
            Fault::killedStatus);
  EXPECT_EQ(Rows(folder.Main(), "SELECT * FROM T"), QStringList{"1"});
}

TEST(SqliteLeakGuard, ComplainsUnlessAnnounced) {
  TemporaryFolder folder;
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "");
  sqlite3* const db = OpenFile(folder.Main());
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "connections left open");
  SqliteLeakGuard::ExpectLeaked(1, 0);
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "");
  Prepare(db, "SELECT 1");
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "statements left unfinalised");
  SqliteLeakGuard::ExpectLeaked(1, 1);  // and the end of this test agrees
}

// The program runs this test once more by itself, leaking, and has to fail then.
TEST(SqliteLeakGuard, FailsATestThatLeaksUnannounced) {
  const char* const leaks = "TARNBEAM_SUPPORT_TEST_LEAKS";
  if (qEnvironmentVariableIsSet(leaks)) {
    OpenFile(":memory:");
    return;
  }
  EXPECT_EQ(RunInChild([&] {
              qputenv(leaks, "1");
              const char* const filter = "--gtest_filter=SqliteLeakGuard.FailsATestThatLeaksUnannounced";
              execl("/proc/self/exe", "support_tests", filter, nullptr);
              _exit(127);
            }),
            1);
}

// In a run of the whole program it comes after the tests above: what they left open is gone.
TEST(SqliteLeakGuard, StartsEveryTestClean) {
  EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
  EXPECT_EQ(SqliteCalls::LiveStatements(), 0);
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "");
}

TEST(DatabaseDump, IsCanonical) {
  TemporaryFolder folder;
  RunSql(folder.Main(),
         "CREATE TABLE Zebra (K INTEGER PRIMARY KEY AUTOINCREMENT, R REAL, X TEXT, B BLOB);"
         "CREATE TABLE Apple (\n V INTEGER DEFAULT 3);"
         "CREATE INDEX ByText ON Zebra (X);"
         "CREATE TABLE Bare (U UNIQUE);"
         "INSERT INTO Zebra VALUES (9, 0.5, 'it''s' || char(10) || 'two', x'00ff');"
         "INSERT INTO Zebra VALUES (4, -2, NULL, NULL);"
         "INSERT INTO Apple DEFAULT VALUES");
  EXPECT_EQ(DumpDatabase(folder.Main()).toStdString(),
            "schema|Apple|CREATE TABLE Apple (\\n V INTEGER DEFAULT 3)\n"
            "schema|Bare|CREATE TABLE Bare (U UNIQUE)\n"
            "schema|ByText|CREATE INDEX ByText ON Zebra (X)\n"
            "schema|Zebra|CREATE TABLE Zebra (K INTEGER PRIMARY KEY AUTOINCREMENT, R REAL, X TEXT, B BLOB)\n"
            "schema|sqlite_sequence|CREATE TABLE sqlite_sequence(name,seq)\n"
            "Apple|1|3\n"
            "Zebra|4|4|-2.0|NULL|NULL\n"
            "Zebra|9|9|0.5|'it''s\\ntwo'|X'00FF'\n"
            "sqlite_sequence|'Zebra'|9\n");
}

TEST(DatabaseDump, QueriesAnswerRowsAndTypes) {
  TemporaryFolder folder;
  RunSql(folder.Main(),
         "CREATE TABLE T (K INTEGER PRIMARY KEY, R REAL); INSERT INTO T VALUES (1, 2), (2, NULL)");
  EXPECT_EQ(Rows(folder.Main(), "SELECT * FROM T ORDER BY K DESC"), (QStringList{"2|NULL", "1|2.0"}));
  EXPECT_EQ(TypeOf(folder.Main(), "SELECT R FROM T"), "real");
  EXPECT_EQ(TypeOf(folder.Main(), "SELECT R FROM T WHERE K = 2"), "null");
  EXPECT_EQ(IntegrityCheck(folder.Main()), "ok");
}

TEST(DatabaseDump, LoadsAFileOfStatements) {
  TemporaryFolder folder;
  QFile file(folder.Path("load.sql"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("CREATE TABLE T (V);\nINSERT INTO T VALUES ('\xc3\xa9');\n");
  file.close();
  LoadSqlFile(folder.Main(), file.fileName());
  EXPECT_EQ(Rows(folder.Main(), "SELECT V FROM T"), QStringList{QString::fromUtf8("'\xc3\xa9'")});
}

TEST(DatabaseDump, ForeignKeysAreEnforcedOnlyWhenAskedFor) {
  TemporaryFolder folder;
  RunSql(folder.Main(),
         "CREATE TABLE P (K INTEGER PRIMARY KEY); CREATE TABLE C (K INTEGER REFERENCES P(K));"
         "INSERT INTO C VALUES (8)");
  EXPECT_EQ(ForeignKeyCheck(folder.Main()), QStringList{"'C'|1|'P'|0"});
  static QString path;
  path = folder.Main();
  EXPECT_NONFATAL_FAILURE(RunSql(path, "INSERT INTO C VALUES (9)", true), "FOREIGN KEY constraint failed");
}

TEST(DatabaseDump, IsOutOfReachOfFaults) {
  TemporaryFolder folder;
  ShimVfs shim;
  ShimVfs::Arm(Fault("", SQLITE_IOERR).Always());
  SqliteCalls::Arm(Fault("", SQLITE_IOERR).Always());
  RunSql(folder.Main(), "CREATE TABLE T (V)");
  EXPECT_EQ(DumpDatabase(folder.Main()), "schema|T|CREATE TABLE T (V)\n");
  EXPECT_FALSE(SqliteCalls::Fired());
  EXPECT_FALSE(ShimVfs::Fired());
}

// One row more in a file that has the table already.
int InsertRow(const QString& path) {
  sqlite3* const db = OpenFile(path);
  const int result = Execute(db, "INSERT INTO T VALUES (randomblob(3000))");
  sqlite3_close(db);
  return result;
}

// Inserts a row in a child that `arm` has killed at its nth call, for each n until the insert succeeds;
// returns how many were killed.
template <typename Arm>
int KillEachInsert(const QString& path, Arm arm) {
  int killed = 0;
  int status = Fault::killedStatus;
  for (int n = 1; n < 50 && status == Fault::killedStatus; ++n) {
    status = RunInChild([&] {
      arm(n);
      EXPECT_EQ(InsertRow(path), SQLITE_OK);
    });
    if (status == Fault::killedStatus) ++killed;
    EXPECT_EQ(IntegrityCheck(path), "ok");
  }
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Rows(path, "SELECT count(*) FROM T"), QStringList{"1"});
  return killed;
}

class ShimVfsTest : public testing::Test {
 protected:
  ShimVfsTest() { RunSql(folder_.Main(), "CREATE TABLE T (V)"); }
  QStringList RowCount() const { return Rows(folder_.Main(), "SELECT count(*) FROM T"); }

  TemporaryFolder folder_;
  ShimVfs shim_;
};

TEST_F(ShimVfsTest, ForwardsAndCounts) {
  EXPECT_EQ(InsertRow(folder_.Main()), SQLITE_OK);
  EXPECT_EQ(RowCount(), QStringList{"1"});
  EXPECT_GT(ShimVfs::Count("write"), 1);
  EXPECT_GT(ShimVfs::Count("sync"), 0);
  EXPECT_EQ(ShimVfs::Count("delete"), 1);  // of the journal
  EXPECT_EQ(ShimVfs::Count("open"), 2);
  EXPECT_GT(ShimVfs::BytesWritten(), 3000);
  EXPECT_FALSE(ShimVfs::Fired());
}

TEST_F(ShimVfsTest, FailsExactlyTheNthCallOfAKind) {
  int failures = 0;
  for (int n = 1; n < 50; ++n) {
    ShimVfs::Reset();
    ShimVfs::Arm(Fault("write", SQLITE_IOERR_WRITE).At(n));
    const int result = InsertRow(folder_.Main());
    EXPECT_EQ(result, ShimVfs::Fired() ? SQLITE_IOERR : SQLITE_OK) << n;
    if (!ShimVfs::Fired()) break;
    EXPECT_GE(ShimVfs::Count("write"), n);
    ++failures;
  }
  EXPECT_GE(failures, 2);
  EXPECT_FALSE(ShimVfs::Fired());
  EXPECT_EQ(RowCount(), QStringList{"1"});
}

TEST_F(ShimVfsTest, FailsEveryKind) {
  const QMap<QByteArray, int> codes = {{"read", SQLITE_IOERR_READ},     {"write", SQLITE_IOERR_WRITE},
                                       {"sync", SQLITE_IOERR_FSYNC},    {"open", SQLITE_CANTOPEN},
                                       {"delete", SQLITE_IOERR_DELETE}, {"truncate", SQLITE_IOERR_TRUNCATE}};
  for (auto code = codes.begin(); code != codes.end(); ++code) {
    ShimVfs::Reset();
    ShimVfs::Arm(Fault(code.key(), code.value()).OnFile("main.sqlite").Always());
    sqlite3* db = nullptr;
    int result = sqlite3_open_v2(folder_.Main().toLocal8Bit().constData(), &db, readWriteCreate, nullptr);
    if (result == SQLITE_OK && code.key() == "truncate") Execute(db, "PRAGMA journal_mode = TRUNCATE");
    if (result == SQLITE_OK) result = Execute(db, "INSERT INTO T VALUES (1)");
    EXPECT_EQ(result, code.value() & 0xff) << code.key().constData();
    EXPECT_EQ(sqlite3_extended_errcode(db), code.value()) << code.key().constData();
    EXPECT_TRUE(ShimVfs::Fired()) << code.key().constData();
    ShimVfs::Reset();
    EXPECT_EQ(sqlite3_close(db), SQLITE_OK) << code.key().constData();
  }
}

TEST_F(ShimVfsTest, DiskIsFullAfterSoManyBytes) {
  ShimVfs::FullAfter(2000);
  EXPECT_EQ(InsertRow(folder_.Main()), SQLITE_FULL);
  EXPECT_TRUE(ShimVfs::Fired());
  ShimVfs::Reset();
  EXPECT_EQ(RowCount(), QStringList{"0"});
  ShimVfs::FullAfter(1000000);
  EXPECT_EQ(InsertRow(folder_.Main()), SQLITE_OK);
  EXPECT_FALSE(ShimVfs::Fired());
}

TEST_F(ShimVfsTest, KillSweepLeavesOldOrNewContent) {
  const auto arm = [](int n) { ShimVfs::Arm(Fault::Kill("write|sync|truncate|delete").At(n)); };
  EXPECT_GE(KillEachInsert(folder_.Main(), arm), 4);
}

TEST(FileCalls, FailsARenameMadeByQt) {
  TemporaryFolder folder;
  const QString from = folder.Path("from");
  const QString to = folder.Path("to");
  RunSql(from, "CREATE TABLE T (V)");
  // Qt copies where it cannot rename, so that is made to fail as well.
  FileCalls::Arm(Fault("rename|create", EIO).Always());
  EXPECT_FALSE(QFile::rename(from, to));
  EXPECT_TRUE(FileCalls::Fired());
  EXPECT_EQ(FileCalls::TakeTrace().filter("rename").value(0), "rename " + from + " -> " + to);
  FileCalls::Reset();
  EXPECT_FALSE(QFile::exists(to));
  EXPECT_TRUE(QFile::rename(from, to));
}

TEST(FileCalls, FailsOnlyTheNamedFileWithItsErrno) {
  TemporaryFolder folder;
  FileCalls::Arm(Fault("write", ENOSPC).OnFile("full").At(2).Always());
  const auto write = [&](const char* name) {
    const int descriptor = open(folder.Path(name).toLocal8Bit().constData(), O_CREAT | O_WRONLY, 0644);
    EXPECT_GE(descriptor, 0);
    for (int i = 0; i < 3; ++i) {
      errno = 0;
      const bool failed = ::write(descriptor, "x", 1) < 0;
      EXPECT_EQ(errno, failed ? ENOSPC : 0);
    }
    EXPECT_EQ(close(descriptor), 0);
    return QFile(folder.Path(name)).size();
  };
  EXPECT_EQ(write("free"), 3);
  EXPECT_EQ(write("full"), 1);
  EXPECT_EQ(FileCalls::Count("write"), 6);
  FileCalls::Reset();
  EXPECT_EQ(write("full2"), 3);
  EXPECT_EQ(FileCalls::Count("write"), 0);
}

TEST(FileCalls, SeesWhatSqliteAndQtDoToFiles) {
  TemporaryFolder folder;
  RunSql(folder.Main(), "CREATE TABLE T (V)");
  FileCalls::Record();
  RunSql(folder.Main(), "INSERT INTO T VALUES (1)");
  EXPECT_TRUE(QFile::remove(folder.Main()));
  EXPECT_GT(FileCalls::Count("write"), 1);
  EXPECT_GT(FileCalls::Count("sync"), 0);
  EXPECT_EQ(FileCalls::Count("unlink"), 2);
  const QStringList trace = FileCalls::TakeTrace();
  EXPECT_EQ(trace.filter(QRegularExpression("^unlink")),
            (QStringList{"unlink " + folder.Main() + "-journal", "unlink " + folder.Main()}));
}

TEST(FileCalls, OpenAndCloseFailOnlyWhereNamed) {
  TemporaryFolder folder;
  RunSql(folder.Main(), "CREATE TABLE T (V)");
  FileCalls::Arm(Fault("", EIO).Always());
  QFile file(folder.Main());
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  file.close();
  EXPECT_FALSE(FileCalls::Fired());
  FileCalls::Reset();
  FileCalls::Arm(Fault("open", EACCES));
  EXPECT_FALSE(file.open(QIODevice::ReadOnly));
  EXPECT_TRUE(FileCalls::Fired());
}

TEST(FileCalls, KillSweepOverAWholeTransaction) {
  TemporaryFolder folder;
  RunSql(folder.Main(), "CREATE TABLE T (V)");
  EXPECT_GE(KillEachInsert(folder.Main(), [](int n) { FileCalls::Arm(Fault::Kill("").At(n)); }), 5);
}

TEST(RunInChild, AnswersHowTheChildEnded) {
  EXPECT_EQ(RunInChild([] {}), 0);
  EXPECT_EQ(RunInChild([] { EXPECT_TRUE(false); }), 1);
  EXPECT_EQ(RunInChild([] { throw std::runtime_error("thrown"); }), 1);
  EXPECT_EQ(RunInChild([] { _exit(7); }), 7);
  EXPECT_EQ(RunInChild([] { raise(SIGKILL); }), 128 + SIGKILL);
}

TEST(TemporaryFolder, IsGoneAfterwards) {
  QString path;
  {
    TemporaryFolder folder;
    RunSql(folder.Main(), "CREATE TABLE T (V)");
    path = folder.Folder();
    EXPECT_TRUE(QFile::exists(path + "/main.sqlite"));
  }
  EXPECT_FALSE(QFile::exists(path));
}

// Takes samples as a store does and returns the numbers that it was handed.
struct TakingStore {
  static std::vector<double> Numbers(IGeolocation* location, IOrientation* measured, IHeight* height,
                                     const QDateTime& time, IMeasurementOptions* options) {
    return {location->LatitudeDegreesNorth(), location->LongitudeDegreesEast(),
            location->ElevationMeters(),      measured->AzimuthDegrees(),
            measured->TiltDegrees(),          measured->RollDegrees(),
            height->HeightInMeters(nullptr),  static_cast<double>(time.toSecsSinceEpoch()),
            options->AzimuthOffset(),         options->AzimuthThreshold(),
            options->TiltThreshold(),         options->RollThreshold(),
            options->PathLengthThreshold(),   static_cast<double>(options->RollPrecision())};
  }

  std::vector<double> SaveAlignmentReportData(ISiteInformation* site, IGeolocation* location,
                                              IOrientation* measured, IHeight* height, const QDateTime& time,
                                              IMeasurementOptions* options) {
    std::vector<double> numbers = Numbers(location, measured, height, time, options);
    const IOrientation* const target = site->TargetOrientation();
    numbers.insert(numbers.end(), {target->AzimuthDegrees(), target->TiltDegrees(), target->RollDegrees()});
    texts = QStringList{site->SiteIdentifier(), site->SectorName(), site->AntennaPosition(), options->Note()};
    return numbers;
  }

  std::vector<double> SavePathReportData(IPathInformation* path, IGeolocation* location, IOrientation* target,
                                         IOrientation* measured, IHeight* height, const QDateTime& time,
                                         IMeasurementOptions* options) {
    std::vector<double> numbers = Numbers(location, measured, height, time, options);
    const IGeolocation* const end = path->PathLocation();
    numbers.insert(numbers.end(),
                   {target->AzimuthDegrees(), target->TiltDegrees(), target->RollDegrees(),
                    end->LatitudeDegreesNorth(), end->LongitudeDegreesEast(), end->ElevationMeters()});
    texts = QStringList{path->PathIdentifier(), options->Note()};
    return numbers;
  }

  QStringList texts;
};

template <typename Sample>
void ExpectDistinctNumbers(int expected) {
  TakingStore store;
  const std::vector<double> first = Sample(0).Save(&store);
  const std::vector<double> second = Sample(1).Save(&store);
  ASSERT_EQ(first.size(), static_cast<std::size_t>(expected));
  EXPECT_EQ(std::set<double>(first.begin(), first.end()).size(), first.size());
  for (std::size_t i = 0; i < first.size(); ++i) EXPECT_NE(first[i], second[i]) << i;
}

TEST(SampleAlignments, HaveDistinctValues) {
  ExpectDistinctNumbers<SampleSiteAlignment>(17);
  ExpectDistinctNumbers<SamplePathAlignment>(20);
}

TEST(SampleAlignments, CarryTheTextsGiven) {
  TakingStore store;
  SampleSiteAlignment(4).Save(&store);
  EXPECT_EQ(store.texts, (QStringList{"Site 4", "Sector 4", "Position 4", "note 4"}));
  SampleSiteAlignment(5, "S", "A").Save(&store);
  EXPECT_EQ(store.texts, (QStringList{"S", "A", "Position 5", "note 5"}));
  SamplePathAlignment(6).Save(&store);
  EXPECT_EQ(store.texts, (QStringList{"Path 6", "note 6"}));
  SamplePathAlignment(7, "P").Save(&store);
  EXPECT_EQ(store.texts, (QStringList{"P", "note 7"}));
}

}  // namespace
