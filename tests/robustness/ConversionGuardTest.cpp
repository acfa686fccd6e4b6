// What a guard makes of conversions under faults: nothing that differs from success goes unreported, no
// refusal is without a failure, and nothing stays open.
#include <sqlite3.h>

#include <cerrno>
#include <memory>

#include "core/OperationGuard.h"
#include "tests/robustness/EndlessView.h"
#include "tests/robustness/FileFault.h"
#include "tests/robustness/Sweep.h"
#include "tests/robustness/SweptConversion.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/FileCalls.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/support/ShimVfs.h"

namespace {

class ConversionGuard : public SweptConversion {
 protected:
  static void SetUpTestSuite() {
    tally_ = std::make_unique<Tally>("fault and I/O sweeps of the conversions under a guard");
  }
  static void TearDownTestSuite() { tally_.reset(); }

  void SetUp() override {
    SweptConversion::SetUp();
    RemoveScratchFile();
    ShimVfs::Reset();
    SqliteCalls::Record();
    FileCalls::Record();
    ASSERT_TRUE(Run());
    calls_ = SweptCalls(SqliteCalls::TakeTrace());
    ASSERT_FALSE(calls_.isEmpty());
    fileCalls_ = FileCalls::Count({});
    ASSERT_GT(fileCalls_, 0);
    fileUse_ = FileUse::Taken();
    Disarm();
    converted_ = LinesOf(scene_.Main());
  }

  static void Disarm() {
    SqliteCalls::Reset();
    FileCalls::Reset();
    ShimVfs::Reset();
  }

  struct Guarded {
    bool result;
    bool succeeded;
    bool loopEnded;
  };

  template <typename Arm>
  Guarded RunGuarded(Arm arm, const OperationGuard::Limits& limits = {}) {
    Disarm();
    const QStringList descriptors = OpenDescriptors();
    Guarded guarded;
    {
      const OperationGuard guard(limits);
      arm();
      guarded.result = Run();
      guarded.succeeded = guard.Succeeded();
      guarded.loopEnded = guard.LoopEnded();
    }
    EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_TRUE(guarded.result || !guarded.succeeded) << "false without a failure";
    log_.TakeLines();
    return guarded;
  }

  template <typename Arm>
  Guarded Fail(Arm arm) {
    scene_.Restore();
    const Guarded guarded = RunGuarded([&] {
      GuardAgainstSpinning();
      arm();
    });
    EXPECT_TRUE(SqliteCalls::Fired() || FileCalls::Fired() || ShimVfs::Fired());
    Disarm();
    ++tally_->failed;
    RunSql(scene_.Main(), QStringLiteral("BEGIN EXCLUSIVE; ROLLBACK"));
    const bool asOnSuccess = guarded.result && LinesOf(scene_.Main()) == converted_;
    EXPECT_TRUE(asOnSuccess || !guarded.succeeded) << "an untold difference";
    return guarded;
  }

  static std::unique_ptr<Tally> tally_;
  ShimVfs shim_;
  QStringList calls_;
  int fileCalls_ = 0;
  FileUse fileUse_;
  QStringList converted_;
};

std::unique_ptr<Tally> ConversionGuard::tally_;

TEST_P(ConversionGuard, SucceedsWhereNothingFails) {
  scene_.Restore();
  const Guarded guarded = RunGuarded([] {});
  EXPECT_TRUE(guarded.result);
  EXPECT_TRUE(guarded.succeeded);
  EXPECT_FALSE(guarded.loopEnded);
  EXPECT_EQ(LinesOf(scene_.Main()), converted_);
}

TEST_P(ConversionGuard, EveryFailedCallIsTold) {
  for (const int number : Swept(static_cast<int>(calls_.size()), 11)) {
    const QString call = calls_[number - 1];
    for (const int code : CodesOf(call)) {
      SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code) + ": " +
                   call.toStdString());
      EXPECT_FALSE(Fail([&] { SqliteCalls::Arm(Fault("", code).At(number)); }).succeeded);
    }
  }
}

// Those in which preferences or, in the last one, a column of the path alignments may be lost without a false
// result.
class ConversionThatMayLose : public ConversionGuard {};

TEST_P(ConversionThatMayLose, TheLossIsTold) {
  int lost = 0;
  for (int number = 1; number <= calls_.size(); ++number) {
    if (!calls_[number - 1].contains(QLatin1String(GetParam().uncounted))) continue;
    SCOPED_TRACE(calls_[number - 1].toStdString());
    const Guarded guarded = Fail([&] { SqliteCalls::Arm(Fault("", SQLITE_IOERR).At(number)); });
    EXPECT_FALSE(guarded.succeeded);
    if (guarded.result && LinesOf(scene_.Main()) != converted_) ++lost;
  }
  EXPECT_GT(lost, 0);
}

// Includes the library's own calls on the way to the swap, and those of the swap.
TEST_P(ConversionGuard, EveryFailedCallOfTheSystemIsTold) {
  for (const int number : Swept(fileCalls_, 13)) {
    for (const int code : {EIO, ENOSPC}) {
      SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code));
      Fail([&] { FileCalls::Arm(Fault("", code).At(number)); });
    }
  }
}

TEST_P(ConversionGuard, EveryFailedFileCallIsTold) {
  ForEachFileFault(fileUse_, 9, [&](auto arm) { Fail(arm); });
}

TEST_P(ConversionGuard, FullStorageIsTold) {
  EXPECT_GT(fileUse_.bytes, 0);
  ForEachFullStorage(fileUse_, 4096, [&](auto arm) { Fail(arm); });
}

TEST_P(ConversionGuard, EndsOnEndlessViews) {
  for (const EndlessView& view : EndlessView::All()) {
    for (const char* table : {"Sites", "Orientation", "PathAlignment"}) {
      SCOPED_TRACE(view.what + (" in the place of " + std::string(table)));
      scene_.Restore();
      view.Replace(scene_.Main(), QLatin1String(table));
      const QByteArray before = ReadFile(scene_.Main());
      // One that has its row ends by itself, on a slow machine, too.
      const Guarded guarded = RunGuarded([] {}, {0, view.hasFirstRow ? 60'000 : 30});
      EXPECT_FALSE(guarded.result);
      EXPECT_FALSE(guarded.succeeded);
      EXPECT_EQ(ReadFile(scene_.Main()), before);
      // A key that comes a second time is refused.
      EXPECT_EQ(guarded.loopEnded, !view.hasFirstRow);
      if (guarded.loopEnded) ++tally_->spun;
    }
  }
}

INSTANTIATE_FOR_CONVERSIONS(ConversionGuard);

std::vector<Conversion> WithUncounted() {
  std::vector<Conversion> conversions;
  for (const Conversion& conversion : Conversion::All()) {
    if (conversion.uncounted != nullptr) conversions.push_back(conversion);
  }
  return conversions;
}

INSTANTIATE_TEST_SUITE_P(All, ConversionThatMayLose, testing::ValuesIn(WithUncounted()), ConversionName);

}  // namespace
