// The class through which every statement of the library runs.
#include "core/Statement.h"

#include <gtest/gtest.h>

#include "core/Connection.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr auto passOver = Statement::OnFailure::PassOver;
constexpr char insertText[] = "INSERT INTO T VALUES (?,?,?,?)";

class StatementTest : public testing::Test {
 protected:
  StatementTest() {
    Sql::Execute(db_, "CREATE TABLE T (A INTEGER, B REAL, C TEXT, D INTEGER)", "Create");
    Sql::Execute(db_, "CREATE TABLE Three (A INTEGER PRIMARY KEY)", "Create");
    Sql::Execute(db_, "INSERT INTO Three VALUES (1),(2),(3)", "Insert");
    SqliteCalls::Reset();
  }
  ~StatementTest() override {
    SqliteCalls::Reset();
    SqliteCalls::CloseLeaked();
  }

  QString Value(const char* sql) {
    Statement select(db_, sql, "Select");
    return select.Step() == SQLITE_ROW ? select.TextColumn(0) : QStringLiteral("no row");
  }

  TemporaryFolder folder_;
  LogCapture log_;
  Connection db_{Sql::OpenForWriting(folder_.Main())};
};

TEST_F(StatementTest, BindsInTheOrderOfTheCalls) {
  SqliteCalls::Record();
  Statement insert(db_, insertText, "Insert");
  insert.Int(-5, "A").Double(1.5, "B").Text(QStringLiteral("text"), "C").WideKey(1LL << 40, "D");
  EXPECT_TRUE(insert.Bound());
  EXPECT_TRUE(insert.Run());
  const QString sql = " [INSERT INTO T VALUES (?,?,?,?)]";
  EXPECT_EQ(SqliteCalls::TakeTrace(),
            (QStringList{"prepare_v2 INSERT INTO T VALUES (?,?,?,?) = 0", "bind_int 1, -5 = 0" + sql,
                         "bind_double 2, 1.5 = 0" + sql, "bind_text 3, 'text' = 0" + sql,
                         "bind_int64 4, 1099511627776 = 0" + sql, "step = 101" + sql}));
}

TEST_F(StatementTest, BindsAKeyInItsLow32Bits) {
  Statement insert(db_, "INSERT INTO T (A) VALUES (?)", "Insert");
  EXPECT_TRUE(insert.Key((1LL << 32) + 7, "A").Run());
  EXPECT_EQ(Value("SELECT A FROM T"), "7");
}

TEST_F(StatementTest, ABindThatFailsMakesItInert) {
  SqliteCalls::Arm(Fault("bind_double", SQLITE_NOMEM));
  Statement insert(db_, insertText, "Insert");
  insert.Int(1, "SQL bind A failed with ").Double(2.0, "SQL bind B failed with ").Text("c", "C");
  EXPECT_FALSE(insert.Bound());
  EXPECT_TRUE(insert);
  EXPECT_FALSE(insert.Run());
  EXPECT_EQ(insert.Step(), SQLITE_MISUSE);
  EXPECT_EQ(SqliteCalls::Count("bind_text|step"), 0);
  EXPECT_EQ(log_.Lines(), QStringList{"SQL bind B failed with  7 : out of memory"});
}

TEST_F(StatementTest, PassesABindOver) {
  SqliteCalls::Arm(Fault("bind_int", SQLITE_NOMEM));
  Statement insert(db_, "INSERT INTO T (A, B) VALUES (?,?)", "Insert");
  EXPECT_TRUE(insert.Int(1, "SQL bind A failed with ", passOver).Double(2.5, "B").Run());
  EXPECT_EQ(log_.Lines(), QStringList{"SQL bind A failed with  7 : out of memory"});
  EXPECT_EQ(Value("SELECT coalesce(A,'null')||','||B FROM T"), "null,2.5");
}

TEST_F(StatementTest, BindsWithoutALine) {
  Statement insert(db_, "INSERT INTO T (A, D) VALUES (?,?)", "Insert");
  EXPECT_EQ(insert.BindInt(3), SQLITE_OK);
  EXPECT_TRUE(insert.BindsWideKey(1LL << 40));
  EXPECT_EQ(insert.BindInt(5), SQLITE_RANGE) << "there is no third parameter";
  EXPECT_FALSE(insert.BindsWideKey(6));
  EXPECT_TRUE(insert.Bound());
  EXPECT_TRUE(insert.Run());
  EXPECT_EQ(Value("SELECT A||','||D FROM T"), "3,1099511627776");
  EXPECT_EQ(log_.Lines(), QStringList());
}

// Whatever is asked of the statement, it asks nothing more of SQLite and logs nothing.
void ExpectInert(Statement* statement) {
  SqliteCalls::Reset();
  long long key = 42;
  EXPECT_FALSE(statement->Int(1, "A").Double(2.0, "B").Text("c", "C").Key(4, "D").WideKey(5, "E").Bound());
  EXPECT_EQ(statement->BindInt(1), SQLITE_MISUSE);
  EXPECT_FALSE(statement->BindsWideKey(1));
  EXPECT_EQ(statement->Step(), SQLITE_MISUSE);
  EXPECT_FALSE(statement->Run());
  EXPECT_FALSE(statement->StepsWithinBound());
  EXPECT_FALSE(statement->Insert(&key));
  EXPECT_FALSE(statement->InsertOrLog(&key));
  EXPECT_EQ(key, 42);
  const auto fail = [] { ADD_FAILURE() << "neither row nor step"; };
  EXPECT_EQ(statement->StepUntilDone(fail, [&](int /*result*/) { fail(); }), SQLITE_MISUSE);
  statement->LeaveOpen();
  statement->Finalize();
  EXPECT_EQ(SqliteCalls::Count(""), 0);
  EXPECT_EQ(SqliteCalls::Count("finalize|reset|last_insert_rowid"), 0);
  EXPECT_EQ(statement->IntColumn(0), 0);
  EXPECT_EQ(statement->DoubleColumn(0), 0.0);
  EXPECT_TRUE(statement->TextColumn(0).isNull());
}

TEST_F(StatementTest, IsInertWhenItCouldNotBePrepared) {
  Statement statement(db_, "SELECT A FROM Missing", "Some Label");
  EXPECT_FALSE(statement);
  EXPECT_FALSE(statement.Bound());
  ExpectInert(&statement);
  EXPECT_EQ(log_.Lines(), QStringList{"SQL prepare  Some Label  failed with  1 : no such table: Missing"});
}

TEST_F(StatementTest, IsInertWithoutAConnection) {
  Statement statement(nullptr, "SELECT 1", "Some Label");
  ExpectInert(&statement);
  EXPECT_EQ(log_.Lines(), QStringList());
}

TEST_F(StatementTest, IsInertOfATextWithoutAStatement) {
  Statement statement(db_, "  ", "Some Label");
  ExpectInert(&statement);
  EXPECT_EQ(log_.Lines(), QStringList());
}

TEST_F(StatementTest, IsInertOnceFinalised) {
  Statement statement(db_, "SELECT A FROM Three", "Some Label");
  EXPECT_EQ(statement.Step(), SQLITE_ROW);
  statement.Finalize();
  EXPECT_EQ(SqliteCalls::LiveStatements(), 0);
  EXPECT_FALSE(statement);
  ExpectInert(&statement);
}

TEST_F(StatementTest, LeftOpenItOutlivesItsScope) {
  {
    Statement statement(db_, "SELECT A FROM Three", "Some Label");
    statement.LeaveOpen();
    ExpectInert(&statement);
  }
  EXPECT_EQ(SqliteCalls::LiveStatements(), 1);
}

TEST_F(StatementTest, IsFinalisedAtTheEndOfItsScope) {
  {
    const Statement statement(db_, "SELECT A FROM Three", "Some Label");
    SqliteCalls::Record();
  }
  const QString sql = " [SELECT A FROM Three]";
  EXPECT_EQ(SqliteCalls::TakeTrace(),
            (QStringList{"reset = 0" + sql, "clear_bindings = 0" + sql, "finalize = 0" + sql}));
}

TEST_F(StatementTest, RunsOneStep) {
  Statement select(db_, "SELECT A FROM Three", "Select");
  EXPECT_FALSE(select.Run()) << "a row is not done";
  EXPECT_EQ(SqliteCalls::Count("step"), 1);
}

TEST_F(StatementTest, StepsUntilDone) {
  Statement select(db_, "SELECT A FROM Three", "Select");
  QStringList events;
  const auto row = [&] { events << "row " + QString::number(select.IntColumn(0)); };
  const auto stepped = [&](int result) { events << QString::number(result); };
  EXPECT_EQ(select.StepUntilDone(row, stepped), SQLITE_DONE);
  EXPECT_EQ(events, (QStringList{"row 1", "100", "row 2", "100", "row 3", "100", "101"}));
}

// Required behaviour: a failure does not end it, and is not a row.
TEST_F(StatementTest, StepsOnAfterFailures) {
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).At(2).Times(100));
  Statement select(db_, "SELECT A FROM Three", "Select");
  int rows = 0;
  EXPECT_EQ(select.StepUntilDone([&] { ++rows; }), SQLITE_DONE);
  EXPECT_EQ(rows, 3);
  EXPECT_EQ(SqliteCalls::Count("step"), 104);
  EXPECT_EQ(log_.Lines(), QStringList());
}

TEST_F(StatementTest, StepsUntilSoManyHaveFailedInAll) {
  SqliteCalls::Arm(
      Fault("step", SQLITE_OK).Results({SQLITE_BUSY, SQLITE_ROW, SQLITE_BUSY, SQLITE_ROW, SQLITE_IOERR}));
  Statement select(db_, "SELECT A FROM Three", "Select");
  EXPECT_EQ(select.StepUntilDone([] {}, 3), SQLITE_IOERR);
  EXPECT_EQ(SqliteCalls::Count("step"), 5);
}

TEST_F(StatementTest, AFifthStepIsWithinTheBound) {
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(4));
  Statement remove(db_, "DELETE FROM Three", "Delete");
  EXPECT_TRUE(remove.StepsWithinBound());
  EXPECT_EQ(SqliteCalls::Count("step"), 5);
}

// Required behaviour: the sixth step is made, and counts as a failure although it is done.
TEST_F(StatementTest, ASixthStepIsBeyondTheBound) {
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(5));
  Statement remove(db_, "DELETE FROM Three", "Delete");
  EXPECT_FALSE(remove.StepsWithinBound());
  EXPECT_EQ(SqliteCalls::Count("step"), 6);
  EXPECT_EQ(Value("SELECT count(*) FROM Three"), "0");
}

TEST_F(StatementTest, AnInsertTellsItsKey) {
  long long key = 0;
  Statement insert(db_, "INSERT INTO Three VALUES (?)", "Insert");
  EXPECT_TRUE(insert.Int(77, "A").Insert(&key));
  EXPECT_EQ(key, 77);
  Statement logging(db_, "INSERT INTO Three VALUES (?)", "Insert");
  EXPECT_TRUE(logging.Int(78, "A").InsertOrLog(&key));
  EXPECT_EQ(key, 78);
}

TEST_F(StatementTest, AFailedInsertLeavesTheKeyAlone) {
  long long key = 42;
  Statement insert(db_, "INSERT INTO Three VALUES (?)", "Insert");
  EXPECT_FALSE(insert.Int(1, "A").Insert(&key));
  EXPECT_EQ(log_.Lines(), QStringList());
  Statement logging(db_, "INSERT INTO Three VALUES (?)", "Insert");
  EXPECT_FALSE(logging.Int(1, "A").InsertOrLog(&key));
  EXPECT_EQ(log_.Lines(), QStringList{"SQL last step failed with  19 : UNIQUE constraint failed: Three.A"});
  EXPECT_EQ(key, 42);
}

TEST_F(StatementTest, ReadsColumns) {
  Statement select(db_, "SELECT 7, 1.25, 'Gr\u00f6\u00dfe', NULL", "Select");
  EXPECT_EQ(select.Step(), SQLITE_ROW);
  EXPECT_EQ(select.IntColumn(0), 7);
  EXPECT_EQ(select.DoubleColumn(1), 1.25);
  EXPECT_EQ(select.FloatColumn(1), 1.25F);
  EXPECT_EQ(select.TextColumn(2), QString::fromUtf8("Gr\u00f6\u00dfe"));
  EXPECT_TRUE(select.TextColumn(3).isNull());
}

}  // namespace
