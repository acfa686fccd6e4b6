// What a guard makes of the faults: nothing that differs from success goes unreported, every loop ends, and
// nothing stays open after it.
#include <sqlite3.h>

#include <QRegularExpression>

#include "core/OperationGuard.h"
#include "tests/robustness/EndlessView.h"
#include "tests/robustness/FileFault.h"
#include "tests/robustness/SweptOperation.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/support/ShimVfs.h"

namespace {

class GuardSweep : public SweptOperation<GuardSweep> {
 public:
  static constexpr char title[] = "fault and I/O sweeps of the stores under a guard";

 protected:
  void SetUp() override {
    SqliteCalls::Record();
    ShimVfs::Reset();
    RunClean();
    calls_ = SweptCalls(SqliteCalls::TakeTrace());
    ASSERT_FALSE(calls_.isEmpty());
    fileUse_ = FileUse::Taken();
    SqliteCalls::Reset();
  }

  struct Guarded {
    Outcome outcome;
    bool succeeded;
    bool loopEnded;
    int steps;
  };

  // The operation on the scene's files under a guard that is gone afterwards, and has left nothing open.
  template <typename Arm>
  Guarded RunGuarded(Arm arm, const OperationGuard::Limits& limits = {}) {
    SqliteCalls::Reset();
    ShimVfs::Reset();
    const QStringList descriptors = OpenDescriptors();
    Guarded guarded;
    {
      const OperationGuard guard(limits);
      GuardAgainstSpinning();
      arm();
      guarded.outcome.result = operation_.run(version_, scene_.Main(), scene_.Thresholds());
      guarded.succeeded = guard.Succeeded();
      guarded.loopEnded = guard.LoopEnded();
      guarded.steps = SqliteCalls::Count("step");
    }
    log_.TakeLines();
    EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    return guarded;
  }

  template <typename Arm>
  Guarded Fail(Arm arm, const OperationGuard::Limits& limits = {}) {
    scene_.Restore();
    Guarded guarded = RunGuarded(arm, limits);
    EXPECT_TRUE(SqliteCalls::Fired() || ShimVfs::Fired());
    SqliteCalls::Reset();
    ShimVfs::Reset();
    ++GetTally().failed;
    if (guarded.loopEnded) ++GetTally().spun;
    ExpectWritableByOthers();
    scene_.ExpectSound();
    Outcome& outcome = guarded.outcome;
    outcome.main = scene_.MainChange();
    outcome.thresholds = scene_.ThresholdsChange();
    const bool asOnSuccess = outcome.result == clean_.result && outcome.main == clean_.main &&
                             outcome.thresholds == clean_.thresholds;
    EXPECT_TRUE(asOnSuccess || !guarded.succeeded)
        << outcome.result.toStdString() << testing::PrintToString(outcome.main)
        << testing::PrintToString(outcome.thresholds);
    return guarded;
  }

  void ExpectWritableByOthers() const {
    for (const QString& path : {scene_.Main(), scene_.Thresholds()}) {
      if (QFile::exists(path)) RunSql(path, QStringLiteral("BEGIN EXCLUSIVE; ROLLBACK"));
    }
  }

  ShimVfs shim_;
  QStringList calls_;
  FileUse fileUse_;
};

TEST_P(GuardSweep, SucceedsWhereNothingFails) {
  scene_.Restore();
  const Guarded guarded = RunGuarded([] {});
  EXPECT_TRUE(guarded.succeeded);
  EXPECT_FALSE(guarded.loopEnded);
  EXPECT_EQ(guarded.outcome.result, clean_.result);
  EXPECT_EQ(scene_.MainChange(), clean_.main);
  EXPECT_EQ(scene_.ThresholdsChange(), clean_.thresholds);
}

TEST_P(GuardSweep, EveryFailedCallIsTold) {
  for (const int number : Swept(static_cast<int>(calls_.size()), 7)) {
    const QString call = calls_[number - 1];
    for (const int code : CodesOf(call)) {
      SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code) + ": " +
                   call.toStdString());
      const Guarded guarded = Fail([&] { SqliteCalls::Arm(Fault("", code).At(number)); });
      // A connection that is refused even on success, since path retrieval leaves its statement open, is no
      // failure.
      const bool refusedAnyway =
          call.startsWith(QLatin1String("close")) && !call.endsWith(QLatin1String("= 0"));
      EXPECT_EQ(guarded.succeeded, refusedAnyway);
      EXPECT_EQ(guarded.loopEnded, operation_.NeverReturnsWithout(call));
    }
  }
}

// From some step on every step fails: once the limit is reached, each loop ends at its next step.
TEST_P(GuardSweep, LoopsEndWithinTheLimit) {
  constexpr int limit = 5;
  const int steps = static_cast<int>(calls_.filter(QRegularExpression(QStringLiteral("^step"))).size());
  EXPECT_GT(steps, 0);
  for (const int number : Swept(steps, 5)) {
    SCOPED_TRACE("from step " + std::to_string(number) + " on");
    const Guarded guarded =
        Fail([&] { SqliteCalls::Arm(Fault("step", SQLITE_BUSY).At(number).Always()); }, {limit, 0});
    EXPECT_FALSE(guarded.succeeded);
    EXPECT_LE(guarded.steps, steps + limit);
  }
}

TEST_P(GuardSweep, EveryFailedFileCallIsTold) {
  ForEachFileFault(fileUse_, 1, [&](auto arm) { Fail(arm); });
}

TEST_P(GuardSweep, FullStorageIsTold) {
  EXPECT_EQ(fileUse_.bytes > 0, operation_.kind != Kind::Reads);
  ForEachFullStorage(fileUse_, 512, [&](auto arm) { Fail(arm); });
}

INSTANTIATE_FOR_OPERATIONS(GuardSweep, StoreOperation::All());

// Those that read tables whose place a view can take: they look up names, and list or delete alignments.
std::vector<StoreOperation> LookingUp() {
  std::vector<StoreOperation> operations;
  for (const StoreOperation& operation : StoreOperation::OnFiles()) {
    const QString name = QLatin1String(operation.name);
    const bool looksUp =
        name.contains(QRegularExpression(QStringLiteral("Reports|Identifiers|Delete|Known")));
    if (looksUp) operations.push_back(operation);
  }
  return operations;
}

// One table of the main file is a view, of rows without end or of rows that take for ever to be calculated.
class GuardOnEndlessViews : public GuardSweep {};

TEST_P(GuardOnEndlessViews, CallsEnd) {
  // A look-up is content with the first row.
  const bool readsAll = !QByteArray(operation_.name).contains("Known");
  for (const EndlessView& view : EndlessView::All()) {
    const bool isEndless = readsAll || !view.hasFirstRow;
    // One that has its row ends by itself, on a slow machine, too.
    const int milliseconds = isEndless ? 30 : 60'000;
    int ended = 0;
    for (const char* table : {"Sites", "Paths", "AntennaAlignment", "PathAlignment"}) {
      SCOPED_TRACE(view.what + (" in the place of " + std::string(table)));
      scene_.Restore();
      view.Replace(scene_.Main(), QLatin1String(table));
      const Guarded guarded = RunGuarded([] { SqliteCalls::Reset(); }, {0, milliseconds});
      EXPECT_FALSE(guarded.loopEnded && guarded.succeeded);
      ExpectWritableByOthers();
      if (guarded.loopEnded) ++ended;
    }
    EXPECT_EQ(ended > 0, isEndless) << view.what;
    GetTally().spun += ended;
  }
}

INSTANTIATE_FOR_OPERATIONS(GuardOnEndlessViews, LookingUp());

}  // namespace
