#include "tests/support/SqliteLeakGuard.h"

#include <gtest/gtest.h>

#include "tests/support/FileCalls.h"
#include "tests/support/ShimVfs.h"
#include "tests/support/SqliteCalls.h"

namespace {

int expectedConnections = 0;
int expectedStatements = 0;

class Listener : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo&) override {
    EXPECT_STREQ(SqliteLeakGuard::Complaint(), "")
        << SqliteCalls::OpenConnections() << " connections and " << SqliteCalls::LiveStatements()
        << " statements are left open, announced were " << expectedConnections << " and "
        << expectedStatements;
    SqliteLeakGuard::ExpectLeaked(0, 0);
    SqliteCalls::CloseLeaked();
    SqliteCalls::Reset();
    FileCalls::Reset();
    ShimVfs::Reset();
  }
};

}  // namespace

void SqliteLeakGuard::Install() { testing::UnitTest::GetInstance()->listeners().Append(new Listener); }

void SqliteLeakGuard::ExpectLeaked(int connections, int statements) {
  expectedConnections = connections;
  expectedStatements = statements;
}

const char* SqliteLeakGuard::Complaint() {
  if (SqliteCalls::OpenConnections() != expectedConnections) return "connections left open";
  if (SqliteCalls::LiveStatements() != expectedStatements) return "statements left unfinalised";
  return "";
}
