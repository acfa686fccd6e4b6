// The power fails at every file call of the operations that write: what was not synced is lost or torn, names
// in a folder that was not synced are taken back.
#include <iterator>

#include "tests/robustness/Allowed.h"
#include "tests/robustness/SweptOperation.h"
#include "tests/support/FileCalls.h"
#include "tests/support/PowerCut.h"

namespace {

class PowerCutSweep : public SweptOperation<PowerCutSweep> {
 public:
  static constexpr char title[] = "power cuts in the stores";

 protected:
  void SetUp() override {
    RunClean();
    scene_.Restore();
    FileCalls::Record();
    EXPECT_TRUE(Runs());
    calls_ = FileCalls::Count({});
    FileCalls::Reset();
    ASSERT_GT(calls_, 0);
  }

  bool Runs() {
    const QString result = operation_.run(version_, scene_.Main(), scene_.Thresholds());
    SqliteCalls::CloseLeaked();
    return result == clean_.result;
  }

  void Cut(int number, const PowerCut::Loss& loss) {
    scene_.Restore();
    ASSERT_EQ(PowerCut::RunUntil(number, loss, [&] { return Runs(); }), Fault::killedStatus);
    ++GetTally().killed;
    scene_.ExpectSound();
    EXPECT_EQ(Allowed::Interrupted(scene_.MainChange(), scene_.ThresholdsChange(), clean_), QString());
  }

  int calls_ = 0;
};

// SQLite does not sync the folder after it has removed the journal, which is what commits: a cut soon after
// may take the whole operation back, in the main file and in the thresholds file.
TEST_P(PowerCutSweep, NothingIsHalfDone) {
  constexpr int kinds = std::size(PowerCut::losses);
  for (const int number : Swept(calls_, 4)) {
    for (int kind = 0; kind < kinds; ++kind) {
      if (!FullSweeps() && kind != number / 4 % kinds) continue;
      SCOPED_TRACE("call " + std::to_string(number) + ", loss " + std::to_string(kind));
      Cut(number, PowerCut::losses[kind]);
    }
  }
  for (const PowerCut::Loss& loss : PowerCut::losses) Cut(0, loss);
}

// If the removal of the journal stays, so does all that was done.
TEST_P(PowerCutSweep, WhatIsCommittedStays) {
  for (const PowerCut::Data data : {PowerCut::Data::Dropped, PowerCut::Data::Torn}) {
    Cut(0, {PowerCut::Names::Kept, data});
    EXPECT_EQ(scene_.MainChange(), clean_.main);
    EXPECT_EQ(scene_.ThresholdsChange(), clean_.thresholds);
  }
}

INSTANTIATE_FOR_OPERATIONS(PowerCutSweep, StoreOperation::Writing());

}  // namespace
