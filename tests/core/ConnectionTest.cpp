// Opening and closing connections.
#include <QFileInfo>

#include "tests/core/HelpersTest.h"
#include "tests/support/LocalEncoding.h"

namespace {

class ConnectionTest : public HelpersTest {
 protected:
  // An address that no connection has, to see whether a handle is written.
  static sqlite3* Untouched() {
    static char byte;
    return reinterpret_cast<sqlite3*>(&byte);
  }

  static int Setting(sqlite3* db, const char* pragma) {
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, pragma, -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    const int value = sqlite3_column_int(statement, 0);
    sqlite3_finalize(statement);
    return value;
  }
};

TEST_F(ConnectionTest, OpensForWritingAndCreatesAnEmptyFile) {
  SqliteCalls::Record();
  sqlite3* db = nullptr;
  EXPECT_TRUE(OpenFile(Main(), &db, false));
  EXPECT_EQ(SqliteCalls::TakeTrace(),
            (QStringList{"open_v2 " + Main() + ", 6 = 0", "exec PRAGMA foreign_keys = ON; = 0",
                         "exec PRAGMA temp_store = MEMORY; = 0"}));
  EXPECT_TRUE(QFile::exists(Main()));
  EXPECT_EQ(QFileInfo(Main()).size(), 0);
  EXPECT_EQ(Setting(db, "PRAGMA foreign_keys"), 1);
  EXPECT_EQ(Setting(db, "PRAGMA temp_store"), 2);
  EXPECT_EQ(Setting(db, "PRAGMA busy_timeout"), 0);
  SqliteCalls::TakeTrace();
  Operations::CloseDatabase(db);
  EXPECT_EQ(SqliteCalls::TakeTrace(), QStringList{"close " + Main() + " = 0"});
}

TEST_F(ConnectionTest, OpensForReading) {
  RunSql(Main(), "CREATE TABLE T (A)");
  SqliteCalls::Record();
  sqlite3* db = nullptr;
  EXPECT_TRUE(OpenFile(Main(), &db, true));
  EXPECT_EQ(SqliteCalls::TakeTrace().value(0), "open_v2 " + Main() + ", 1 = 0");
  EXPECT_FALSE(Call(&Operations::ExecuteNonQueryCommand, db, "CREATE TABLE U (A)", "Create U"));
  EXPECT_EQ(Lines(), QStringList{"SQL  Create U  failed with  8 : attempt to write a readonly database"});
  Operations::CloseDatabase(db);
}

TEST_F(ConnectionTest, RefusesANullHandlePointer) {
  EXPECT_FALSE(OpenFile(Main(), nullptr, false));
  EXPECT_EQ(SqliteCalls::Count("open_v2|exec|close"), 0);
  EXPECT_FALSE(QFile::exists(Main()));
}

TEST_F(ConnectionTest, FailsWhereThereIsNoFolder) {
  const QString path = files_.Folder().Path("missing/main.sqlite");
  sqlite3* db = Untouched();
  EXPECT_FALSE(OpenFile(path, &db, false));
  EXPECT_EQ(db, nullptr);
  EXPECT_EQ(Lines(), QStringList{"Can't open database: rval= 14 : unable to open database file"});
  EXPECT_EQ(SqliteCalls::Count("close"), 1);
}

TEST_F(ConnectionTest, FailsToReadAMissingFile) {
  sqlite3* db = Untouched();
  EXPECT_FALSE(OpenFile(Main(), &db, true));
  EXPECT_EQ(db, nullptr);
  EXPECT_EQ(Lines(), QStringList{"Can't open database: rval= 14 : unable to open database file"});
  EXPECT_FALSE(QFile::exists(Main()));
}

TEST_F(ConnectionTest, FailsWithoutAnyHandle) {
  SqliteCalls::Arm(Fault("open_v2", SQLITE_NOMEM).WithoutOutput());
  sqlite3* db = Untouched();
  EXPECT_FALSE(OpenFile(Main(), &db, false));
  EXPECT_EQ(db, nullptr);
  EXPECT_EQ(Lines(), QStringList{"Can't open database: rval= 7 : out of memory"});
}

// The handle keeps its value although its connection is closed: callers go by the result.
TEST_F(ConnectionTest, ClosesWhenAPragmaFails) {
  const QStringList lines = {"SQL PRAGMA foreign_keys = ON failed", "SQL PRAGMA temp_store = MEMORY failed"};
  for (int pragma = 1; pragma <= 2; ++pragma) {
    SqliteCalls::Reset();
    SqliteCalls::Arm(Fault("exec", SQLITE_NOMEM).At(pragma));
    sqlite3* db = nullptr;
    EXPECT_FALSE(OpenFile(Main(), &db, false));
    EXPECT_EQ(Lines(), QStringList{lines[pragma - 1]});
    EXPECT_NE(db, nullptr);
    EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
    EXPECT_EQ(SqliteCalls::Count("exec"), pragma);
  }
}

TEST_F(ConnectionTest, OpensTheStoresOwnFiles) {
  SqliteCalls::Record();
  const ConnectionPointer main(OpenMain(false), &Operations::CloseDatabase);
  const ConnectionPointer thresholds(Call(&Operations::OpenSecondDatabase, false),
                                     &Operations::CloseDatabase);
  const ConnectionPointer mainToRead(OpenMain(true), &Operations::CloseDatabase);
  const ConnectionPointer thresholdsToRead(Call(&Operations::OpenSecondDatabase, true),
                                           &Operations::CloseDatabase);
  EXPECT_TRUE(main && thresholds && mainToRead && thresholdsToRead);
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("open_v2"),
            (QStringList{"open_v2 " + Main() + ", 6 = 0", "open_v2 " + Thresholds() + ", 6 = 0",
                         "open_v2 " + Main() + ", 1 = 0", "open_v2 " + Thresholds() + ", 1 = 0"}));
}

TEST_F(ConnectionTest, AnswersNullWhereAStoresFileDoesNotOpen) {
  EXPECT_EQ(OpenMain(true), nullptr);
  EXPECT_EQ(Call(&Operations::OpenSecondDatabase, true), nullptr);
  // A pragma's failure leaves a handle behind that is not to be passed on.
  SqliteCalls::Arm(Fault("exec", SQLITE_NOMEM).At(1));
  EXPECT_EQ(OpenMain(false), nullptr);
  SqliteCalls::Arm(Fault("exec", SQLITE_NOMEM).At(2));
  EXPECT_EQ(Call(&Operations::OpenSecondDatabase, false), nullptr);
  const QString cannotOpen = "Can't open database: rval= 14 : unable to open database file";
  EXPECT_EQ(Lines(), (QStringList{cannotOpen, cannotOpen, "SQL PRAGMA foreign_keys = ON failed",
                                  "SQL PRAGMA temp_store = MEMORY failed"}));
}

TEST_F(ConnectionTest, PathsAreWrittenInTheLocalEncoding) {
  const LocalEncoding latin1("ISO-8859-1");
  SqliteCalls::Arm(Fault("open_v2", SQLITE_CANTOPEN)
                       .OnFile(LocalEncoding::varies ? "/M\xfcnchen.sqlite" : "/M\xc3\xbcnchen.sqlite"));
  sqlite3* db = nullptr;
  EXPECT_FALSE(OpenFile(files_.Folder().Path(QStringLiteral("M\u00fcnchen.sqlite")), &db, false));
  EXPECT_TRUE(SqliteCalls::Fired());
  EXPECT_EQ(Lines(), QStringList{"Can't open database: rval= 14 : unable to open database file"});
}

TEST_F(ConnectionTest, IgnoresANullConnectionToClose) {
  Operations::CloseDatabase(nullptr);
  EXPECT_EQ(SqliteCalls::Count("close"), 0);
}

TEST_F(ConnectionTest, LogsARefusedCloseAndLeavesTheConnectionOpen) {
  sqlite3* const db = OpenMain(false);
  sqlite3_stmt* const statement = Call(&Operations::PrepareStatement, db, "SELECT 1", "Select");
  Operations::CloseDatabase(db);
  EXPECT_EQ(Lines(), QStringList{"sqlite3_close failed with  5 unable to close due to unfinalized statements "
                                 "or unfinished backups"});
  EXPECT_EQ(SqliteCalls::OpenConnections(), 1);
  EXPECT_EQ(SqliteCalls::Count("close"), 1);
  Operations::FinalizeStatement(statement);
  Operations::CloseDatabase(db);
}

}  // namespace
