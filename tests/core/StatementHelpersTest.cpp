// Executing, preparing and finalising statements; transactions.
#include "tests/core/HelpersTest.h"

namespace {

class StatementHelpersTest : public HelpersTest {
 protected:
  StatementHelpersTest() {
    Execute("CREATE TABLE T (A INTEGER)", "Create");
    SqliteCalls::Reset();
  }

  bool Execute(const char* sql, const char* description) {
    return Call(&Operations::ExecuteNonQueryCommand, db_.get(), sql, description);
  }
  sqlite3_stmt* Prepare(const char* sql, const char* description) {
    return Call(&Operations::PrepareStatement, db_.get(), sql, description);
  }

  ConnectionPointer db_{OpenMain(false), &Operations::CloseDatabase};
};

TEST_F(StatementHelpersTest, ExecutesSeveralStatements) {
  EXPECT_TRUE(Execute("INSERT INTO T VALUES (1); INSERT INTO T VALUES (2)", "Insert"));
  EXPECT_EQ(Rows(Main(), "SELECT A FROM T"), (QStringList{"1", "2"}));
}

TEST_F(StatementHelpersTest, ExecutesNothingOfNull) {
  EXPECT_FALSE(Call(&Operations::ExecuteNonQueryCommand, nullptr, "SELECT 1", "Select"));
  EXPECT_FALSE(Execute(nullptr, "Select"));
  EXPECT_FALSE(Execute("SELECT 1", nullptr));
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_F(StatementHelpersTest, LogsAFailedStatementAndReleasesItsMessage) {
  EXPECT_FALSE(Execute("INSERT INTO T VALUES (1); garbage; INSERT INTO T VALUES (2)", "Some Label"));
  EXPECT_EQ(Lines(), QStringList{"SQL  Some Label  failed with  1 : near \"garbage\": syntax error"});
  EXPECT_EQ(SqliteCalls::Count("free"), 1);
  EXPECT_EQ(Rows(Main(), "SELECT A FROM T"), QStringList{"1"});
}

TEST_F(StatementHelpersTest, LogsTheConnectionsMessageWhereThereIsNoOther) {
  SqliteCalls::Arm(Fault("exec", SQLITE_IOERR).WithoutOutput());
  EXPECT_FALSE(Execute("SELECT 1", "Some Label"));
  EXPECT_EQ(Lines(), QStringList{"SQL  Some Label  failed with  10 : disk I/O error"});
  EXPECT_EQ(SqliteCalls::Count("errmsg"), 1);
}

// The message that came with the failure counts, not what the connection says by then.
TEST_F(StatementHelpersTest, PrefersTheMessageOfTheStatement) {
  EXPECT_FALSE(Execute("INSERT INTO Missing VALUES (1)", "Some Label"));
  EXPECT_EQ(Lines(), QStringList{"SQL  Some Label  failed with  1 : no such table: Missing"});
  EXPECT_EQ(SqliteCalls::Count("errmsg"), 0);
}

TEST_F(StatementHelpersTest, DecodesMessagesAsUtf8) {
  EXPECT_FALSE(Execute("SELECT * FROM \"Gr\u00f6\u00dfe\"", "Some Label"));
  EXPECT_EQ(Lines(), QStringList{QString::fromUtf8("SQL  Some Label  failed with  1 : no such table: "
                                                   "Gr\u00f6\u00dfe")});
}

TEST_F(StatementHelpersTest, FailsAtOnceOnALock) {
  sqlite3* other = nullptr;
  ASSERT_TRUE(OpenFile(Main(), &other, false));
  EXPECT_TRUE(Call(&Operations::ExecuteNonQueryCommand, other, "BEGIN IMMEDIATE", "Lock"));
  EXPECT_FALSE(Execute("INSERT INTO T VALUES (1)", "Insert"));
  EXPECT_EQ(Lines(), QStringList{"SQL  Insert  failed with  5 : database is locked"});
  Operations::CloseDatabase(other);
}

TEST_F(StatementHelpersTest, PreparesAndFinalises) {
  SqliteCalls::Record();
  sqlite3_stmt* const statement = Prepare("SELECT A FROM T", "Select");
  EXPECT_NE(statement, nullptr);
  Operations::FinalizeStatement(statement);
  const QString sql = " [SELECT A FROM T]";
  EXPECT_EQ(SqliteCalls::TakeTrace(), (QStringList{"prepare_v2 SELECT A FROM T = 0", "reset = 0" + sql,
                                                   "clear_bindings = 0" + sql, "finalize = 0" + sql}));
}

TEST_F(StatementHelpersTest, PreparesNothingOfNull) {
  EXPECT_EQ(Call(&Operations::PrepareStatement, nullptr, "SELECT 1", "Select"), nullptr);
  EXPECT_EQ(Prepare(nullptr, "Select"), nullptr);
  EXPECT_EQ(Prepare("SELECT 1", nullptr), nullptr);
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_F(StatementHelpersTest, LogsAFailedPrepare) {
  EXPECT_EQ(Prepare("SELECT A FROM Missing", "Some Label"), nullptr);
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_BUSY));
  EXPECT_EQ(Prepare("SELECT A FROM T", "Other"), nullptr);
  EXPECT_EQ(Lines(), (QStringList{"SQL prepare  Some Label  failed with  1 : no such table: Missing",
                                  "SQL prepare  Other  failed with  5 : database is locked"}));
}

TEST_F(StatementHelpersTest, FinalisesNothingOfNull) {
  Operations::FinalizeStatement(nullptr);
  EXPECT_EQ(SqliteCalls::Count("reset|clear_bindings|finalize"), 0);
}

TEST_F(StatementHelpersTest, CommitsATransaction) {
  SqliteCalls::Record();
  EXPECT_TRUE(Call(&Operations::BeginTransaction, db_.get()));
  EXPECT_TRUE(Execute("INSERT INTO T VALUES (1)", "Insert"));
  EXPECT_TRUE(Call(&Operations::EndTransaction, db_.get()));
  EXPECT_EQ(SqliteCalls::TakeTrace(),
            (QStringList{"exec BEGIN TRANSACTION; = 0", "exec INSERT INTO T VALUES (1) = 0",
                         "exec END TRANSACTION; = 0"}));
  EXPECT_EQ(Rows(Main(), "SELECT A FROM T"), QStringList{"1"});
}

TEST_F(StatementHelpersTest, RollsATransactionBack) {
  EXPECT_TRUE(Call(&Operations::BeginTransaction, db_.get()));
  EXPECT_TRUE(Execute("INSERT INTO T VALUES (1)", "Insert"));
  SqliteCalls::Record();
  EXPECT_TRUE(Call(&Operations::RollBack, db_.get()));
  EXPECT_EQ(SqliteCalls::TakeTrace(), QStringList{"exec ROLLBACK; = 0"});
  EXPECT_EQ(Rows(Main(), "SELECT A FROM T"), QStringList());
}

TEST_F(StatementHelpersTest, LogsTransactionsOutOfPlace) {
  EXPECT_FALSE(Call(&Operations::EndTransaction, db_.get()));
  EXPECT_FALSE(Call(&Operations::RollBack, db_.get()));
  EXPECT_TRUE(Call(&Operations::BeginTransaction, db_.get()));
  EXPECT_FALSE(Call(&Operations::BeginTransaction, db_.get()));
  EXPECT_EQ(Lines(),
            (QStringList{"SQL  End Transaction  failed with  1 : cannot commit - no transaction is active",
                         "SQL  Roll Back  failed with  1 : cannot rollback - no transaction is active",
                         "SQL  Begin Transaction  failed with  1 : cannot start a transaction within a "
                         "transaction"}));
}

TEST_F(StatementHelpersTest, AFailureInATransactionDoesNotEndIt) {
  EXPECT_TRUE(Call(&Operations::BeginTransaction, db_.get()));
  EXPECT_TRUE(Execute("INSERT INTO T VALUES (1)", "Insert"));
  EXPECT_FALSE(Execute("INSERT INTO Missing VALUES (1)", "Insert"));
  EXPECT_TRUE(Call(&Operations::EndTransaction, db_.get()));
  EXPECT_EQ(Lines(), QStringList{"SQL  Insert  failed with  1 : no such table: Missing"});
  EXPECT_EQ(Rows(Main(), "SELECT A FROM T"), QStringList{"1"});
}

}  // namespace
