#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "tests/robustness/StoreOperations.h"
#include "tests/robustness/Sweep.h"
#include "tests/support/LogCapture.h"

// One operation of one store, first without any fault.
class OperationTest : public testing::TestWithParam<VersionAndOperation> {
 protected:
  void RunClean() {
    clean_ = RunOn(scene_, operation_, version_);
    cleanLines_ = log_.TakeLines();
    ASSERT_TRUE(IsFullResult(clean_.result)) << clean_.result.toStdString();
    const bool changes = !clean_.main.IsNone();
    ASSERT_EQ(changes, operation_.kind != Kind::Reads);
  }

  // On the files as the fault has left them.
  void ExpectNextCallWorks() {
    log_.TakeLines();
    const Outcome next = RunOn(scene_, operation_, version_);
    EXPECT_TRUE(IsFullResult(next.result)) << next.result.toStdString();
    EXPECT_EQ(log_.TakeLines().filter(QStringLiteral("SQL")), QStringList());
  }

  const StoreVersion& version_ = std::get<StoreVersion>(GetParam());
  const StoreOperation& operation_ = std::get<StoreOperation>(GetParam());
  LogCapture log_;
  Scene scene_{StartOf(operation_, version_)};
  Outcome clean_;
  QStringList cleanLines_;
};

// Runs it again and again on fresh files. `Sweep` is the fixture itself; its `title` names it in the tally.
template <typename Sweep>
class SweptOperation : public OperationTest {
 protected:
  static void SetUpTestSuite() { tally_ = std::make_unique<Tally>(Sweep::title); }
  static void TearDownTestSuite() { tally_.reset(); }
  static Tally& GetTally() { return *tally_; }

  static std::unique_ptr<Tally> tally_;
};

template <typename Sweep>
std::unique_ptr<Tally> SweptOperation<Sweep>::tally_;
