// The two checks of the copy.
#include "tests/migration/ConversionTest.h"

namespace {

class CheckTest : public ConversionTest {
 protected:
  static QStringList Failed(const QStringList& lines, const char* check) {
    return CheckFailed(Tested(), PlainLines() + lines, check);
  }
};
INSTANTIATE_TEST_SUITE_P(Converters, CheckTest, testing::ValuesIn(Converters()), NameOf);

constexpr char integrityCheck[] = "integrity_check";
constexpr char foreignKeyCheck[] = "foreign_key_check";
constexpr char integrityFailed[] = "Integrity check failed";
constexpr char foreignKeysFailed[] = "Foreign key check failed";

TEST_P(CheckTest, StatementCannotBePrepared) {
  ExpectFailure(Failing("prepare_v2", integrityCheck),
                Failed({PrepareFailed("Perform integrity check"), "Statement returned as null, aborting..."},
                       integrityFailed));
  ExpectFailure(Failing("prepare_v2", foreignKeyCheck), Failed({PrepareFailed("Perform foreign key check"),
                                                                "Statement returned as null, aborting..."},
                                                               foreignKeysFailed));
}

TEST_P(CheckTest, IntegrityWithoutRows) {
  ExpectFailure(Fault("step", SQLITE_DONE).OnText(integrityCheck), Failed({}, integrityFailed));
  ExpectFailure(Failing("step", integrityCheck), Failed({}, integrityFailed));
}

TEST_P(CheckTest, IntegrityWithNullText) {
  ExpectFailure(Fault("column_text", 0).OnText(integrityCheck),
                Failed({"Null string returned from statement evaluation"}, integrityFailed));
}

TEST_P(CheckTest, NullTextEndsTheReading) {
  SqliteCalls::Record();
  SqliteCalls::Arm(Fault("column_text", 0).OnText(integrityCheck));
  EXPECT_FALSE(Convert(Tested(), Main()).result);
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("step = ").filter(integrityCheck).size(), 1);
}

// Rows: a text each, or null for none. Only one "ok" is required.
TEST_P(CheckTest, IntegrityRows) {
  const struct {
    std::vector<QByteArray> texts;
    bool passes;
  } cases[] = {
      {{"ok"}, true},
      {{"row 1 missing from index"}, false},
      {{"row 1 missing from index", "row 2 missing from index"}, false},
      {{"ok", "row 1 missing from index"}, true},
      {{"row 1 missing from index", "ok"}, true},
      {{"OK"}, false},
      {{"ok "}, false},
      {{" ok"}, false},
      {{""}, false},
  };
  for (const auto& [texts, passes] : cases) {
    SCOPED_TRACE(testing::PrintToString(texts));
    Load();
    std::vector<int> steps(texts.size(), SQLITE_ROW);
    steps.push_back(SQLITE_DONE);
    SqliteCalls::Arm(Fault("step", 0).OnText(integrityCheck).Results(steps));
    SqliteCalls::Arm(Fault("column_text", 0).OnText(integrityCheck).Texts(texts));
    passes ? ExpectSuccess(PlainLines()) : ExpectFailure(Failed({}, integrityFailed));
  }
}

TEST_P(CheckTest, NullTextAfterOkPasses) {
  SqliteCalls::Arm(Fault("step", SQLITE_ROW).OnText(integrityCheck).At(2));
  SqliteCalls::Arm(Fault("column_text", 0).OnText(integrityCheck).At(2));
  ExpectSuccess(PlainLines() + QStringList{"Null string returned from statement evaluation"});
  ExpectDump(Main(), Expected());
}

TEST_P(CheckTest, ForeignKeyRows) {
  const struct {
    std::vector<int> steps;
    int calls;
  } cases[] = {{{SQLITE_ROW, SQLITE_DONE}, 2},
               {{SQLITE_ROW, SQLITE_ROW, SQLITE_ROW, SQLITE_DONE}, 4},
               {{SQLITE_IOERR, SQLITE_DONE}, 2},
               {{SQLITE_IOERR, SQLITE_ROW, SQLITE_IOERR}, 3}};
  for (const auto& [steps, calls] : cases) {
    SCOPED_TRACE(testing::PrintToString(steps));
    ExpectFailure(Fault("step", 0).OnText(foreignKeyCheck).Results(steps), Failed({}, foreignKeysFailed));
    SqliteCalls::Record();
    SqliteCalls::Arm(Fault("step", 0).OnText(foreignKeyCheck).Results(steps));
    EXPECT_FALSE(Convert(Tested(), Main()).result);
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("step = ").filter(foreignKeyCheck).size(), calls);
    SqliteCalls::Reset();
  }
}

}  // namespace
