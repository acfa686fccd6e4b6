// Every call that an operation of a store makes to SQLite fails in turn, once, with every code it may return.
#include <sqlite3.h>

#include <utility>

#include "tests/robustness/SweptOperation.h"
#include "tests/support/ChildProcess.h"

namespace {

class FaultSweep : public SweptOperation<FaultSweep> {
 public:
  static constexpr char title[] = "fault sweep of the stores";

 protected:
  void SetUp() override {
    SqliteCalls::Record();
    RunClean();
    calls_ = SweptCalls(SqliteCalls::TakeTrace());
    ASSERT_FALSE(calls_.isEmpty());
  }

  // The operation on fresh files with its call `number` failing.
  Outcome RunFailing(int number, int code) {
    scene_.Restore();
    SqliteCalls::Reset();
    SqliteCalls::Arm(Fault("", code).At(number));
    GuardAgainstSpinning();
    const QString result = operation_.run(version_, scene_.Main(), scene_.Thresholds());
    EXPECT_TRUE(SqliteCalls::Fired());
    ExpectConnections(calls_[number - 1]);
    SqliteCalls::CloseLeaked();
    SqliteCalls::Reset();
    ++GetTally().failed;
    return {result, scene_.MainChange(), scene_.ThresholdsChange()};
  }

  // No connection stays open except those of path reports, one that refused to close, and one whose statement
  // failed where it is left unfinalised.
  void ExpectConnections(const QString& failed) {
    int most = operation_.connectionsLeft;
    if (failed.startsWith(QLatin1String("close"))) ++most;
    const bool inStatement =
        failed.startsWith(QLatin1String("bind")) || failed.startsWith(QLatin1String("step"));
    if (inStatement && operation_.leavesStatements) ++most;
    EXPECT_LE(SqliteCalls::OpenConnections(), most);
  }

  // Every failure writes a line that is not there without it, except the failure of a step.
  void ExpectLine(const QString& failed) {
    QStringList lines = log_.TakeLines();
    for (const QString& line : std::as_const(cleanLines_)) lines.removeOne(line);
    const bool logged = !lines.isEmpty() || failed.startsWith(QLatin1String("step"));
    EXPECT_TRUE(logged) << "nothing is logged";
    EXPECT_EQ(log_.Misfits(), QStringList());
  }

  void FailCall(int number, int code) {
    const QString call = calls_[number - 1];
    SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code) + ": " +
                 call.toStdString());
    const Outcome outcome = RunFailing(number, code);
    ExpectLine(call);
    const QString complaint = operation_.complaint(outcome, clean_, FaultLevel::Calls);
    EXPECT_EQ(complaint, QString()) << outcome.result.toStdString();
    scene_.ExpectSound();
    ExpectNextCallWorks();
  }

  // Without this statement the one that follows can never be done: the call does not return. The process that
  // is kept busy by it is ended, and the files are as they were.
  void SpinOnCall(int number) {
    scene_.Restore();
    const int status = RunInChild([&] {
      SqliteCalls::Reset();
      SqliteCalls::Arm(Fault("", SQLITE_NOMEM).At(number));
      EndWhenSpinning();
      operation_.run(version_, scene_.Main(), scene_.Thresholds());
    });
    EXPECT_EQ(status, Fault::killedStatus);
    ++GetTally().failed;
    ++GetTally().spun;
    scene_.ExpectSound();
    EXPECT_TRUE(scene_.MainChange().IsNone());
    EXPECT_TRUE(scene_.ThresholdsChange().IsNone());
    ExpectNextCallWorks();
  }

  QStringList calls_;
};

TEST_P(FaultSweep, EveryCallFailsOnce) {
  for (const int number : Swept(static_cast<int>(calls_.size()), 7)) {
    if (operation_.NeverReturnsWithout(calls_[number - 1])) {
      SpinOnCall(number);
      continue;
    }
    for (const int code : CodesOf(calls_[number - 1])) FailCall(number, code);
  }
}

INSTANTIATE_FOR_OPERATIONS(FaultSweep, StoreOperation::All());

}  // namespace
