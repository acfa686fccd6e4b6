// What happens below SQLite: reads, writes, syncs, truncations, openings and deletions of files that fail in
// turn, storage that is full, and a process that ends before any of them.
#include "tests/robustness/Allowed.h"
#include "tests/robustness/FileFault.h"
#include "tests/robustness/SweptOperation.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ShimVfs.h"

namespace {

template <typename Sweep>
class FileSweep : public SweptOperation<Sweep> {
 protected:
  // The operation on fresh files in a process of its own, after `arm`. Its exit status; the result that it
  // came to, if any. Where it comes through, what was armed has struck or has not.
  template <typename Arm>
  int RunApart(Arm arm, bool strikes, QString* result) {
    const QString answer = this->scene_.Path(QStringLiteral("result"));
    WriteFile(answer, QByteArray());
    this->scene_.Restore();
    const int status = RunInChild([&] {
      arm();
      const QString answered =
          this->operation_.run(this->version_, this->scene_.Main(), this->scene_.Thresholds());
      EXPECT_EQ(ShimVfs::Fired(), strikes);
      WriteFile(answer, answered.toUtf8());
    });
    *result = QString::fromUtf8(ReadFile(answer));
    return status;
  }

  ShimVfs shim_;
};

class IoSweep : public FileSweep<IoSweep> {
 public:
  static constexpr char title[] = "I/O sweep of the stores";

 protected:
  void SetUp() override {
    ShimVfs::Reset();
    RunClean();
    fileUse_ = FileUse::Taken();
  }

  // False when the operation met one of its endless loops and had to be ended.
  template <typename Arm>
  bool Run(Arm arm, QString* result) {
    if (operation_.maySpin) {
      const int status = RunApart(
          [&] {
            EndWhenSpinning();
            arm();
          },
          true, result);
      EXPECT_TRUE(status == 0 || status == Fault::killedStatus) << status;
      return status == 0;
    }
    scene_.Restore();
    SqliteCalls::Reset();
    ShimVfs::Reset();
    GuardAgainstSpinning();
    arm();
    *result = operation_.run(version_, scene_.Main(), scene_.Thresholds());
    EXPECT_TRUE(ShimVfs::Fired());
    EXPECT_LE(SqliteCalls::OpenConnections(),
              operation_.connectionsLeft + (operation_.leavesStatements ? 1 : 0));
    SqliteCalls::CloseLeaked();
    ShimVfs::Reset();
    SqliteCalls::Reset();
    return true;
  }

  template <typename Arm>
  void Fail(Arm arm) {
    QString result;
    ++GetTally().failed;
    const bool returned = Run(arm, &result);
    if (!returned) ++GetTally().spun;
    scene_.ExpectSound();
    // A loop that was ended counts as one that was left: all that it may have done is looked at.
    const Outcome outcome = {returned ? result : QStringLiteral("true"), scene_.MainChange(),
                             scene_.ThresholdsChange()};
    EXPECT_EQ(operation_.complaint(outcome, clean_, FaultLevel::Files), QString()) << result.toStdString();
    ExpectNextCallWorks();
  }

  FileUse fileUse_;
};

TEST_P(IoSweep, EveryFileCallFailsOnce) {
  ForEachFileFault(fileUse_, 1, [&](auto arm) { Fail(arm); });
}

// The storage stays full until the call returns or is found to repeat itself without end.
TEST_P(IoSweep, StorageIsFull) {
  EXPECT_EQ(fileUse_.bytes > 0, operation_.kind != Kind::Reads);
  ForEachFullStorage(fileUse_, 512, [&](auto arm) { Fail(arm); });
}

INSTANTIATE_FOR_OPERATIONS(IoSweep, StoreOperation::All());

class CrashSweep : public FileSweep<CrashSweep> {
 public:
  static constexpr char title[] = "crash sweep of the stores";

 protected:
  static constexpr char calls_[] = "write|sync|truncate|delete";

  void SetUp() override {
    ShimVfs::Reset();
    RunClean();
    count_ = ShimVfs::Count(calls_);
    ASSERT_GT(count_, 0);
  }

  int count_ = 0;
};

TEST_P(CrashSweep, EndsBeforeEveryFileCall) {
  for (const int number : Swept(count_, 4)) {
    SCOPED_TRACE("ended at file call " + std::to_string(number));
    QString result;
    ASSERT_EQ(RunApart([&] { ShimVfs::Arm(Fault::Kill(calls_).At(number)); }, true, &result),
              Fault::killedStatus);
    ++GetTally().killed;
    scene_.ExpectSound();
    EXPECT_EQ(Allowed::Interrupted(scene_.MainChange(), scene_.ThresholdsChange(), clean_), QString());
    ExpectNextCallWorks();
  }
}

// One call more than there are: nothing ends it.
TEST_P(CrashSweep, ComesThroughPastTheLastCall) {
  QString result;
  ASSERT_EQ(RunApart([&] { ShimVfs::Arm(Fault::Kill(calls_).At(count_ + 1)); }, false, &result), 0);
  EXPECT_EQ(result, clean_.result);
  EXPECT_EQ(scene_.MainChange(), clean_.main);
  EXPECT_EQ(scene_.ThresholdsChange(), clean_.thresholds);
}

INSTANTIATE_FOR_OPERATIONS(CrashSweep, StoreOperation::Writing());

}  // namespace
