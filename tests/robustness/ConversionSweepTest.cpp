// Conversions under faults: every call to SQLite fails in turn, and every call below it. The file is either
// the old one, byte for byte, or the new one, whole.
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <memory>

#include "tests/robustness/FileFault.h"
#include "tests/robustness/GoldenTrace.h"
#include "tests/robustness/Sweep.h"
#include "tests/robustness/SweptConversion.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/ShimVfs.h"

namespace {

class ConversionSweep : public SweptConversion {
 protected:
  static void SetUpTestSuite() {
    tally_ = std::make_unique<Tally>("fault and I/O sweeps of the conversions");
  }
  static void TearDownTestSuite() { tally_.reset(); }

  void SetUp() override {
    SweptConversion::SetUp();
    SqliteCalls::Record();
    ShimVfs::Reset();
    ASSERT_TRUE(Run());
    calls_ = SweptCalls(SqliteCalls::TakeTrace());
    fileUse_ = FileUse::Taken();
    converted_ = LinesOf(scene_.Main());
    log_.TakeLines();
  }

  template <typename Arm>
  void Fail(Arm arm, bool logged) {
    scene_.Restore();
    SqliteCalls::Reset();
    ShimVfs::Reset();
    GuardAgainstSpinning();
    arm();
    const bool result = Run();
    EXPECT_TRUE(SqliteCalls::Fired() || ShimVfs::Fired());
    SqliteCalls::CloseLeaked();
    SqliteCalls::Reset();
    ShimVfs::Reset();
    ++tally_->failed;
    const QStringList lines = log_.TakeLines();
    const bool told = !lines.filter(QStringLiteral("SQL")).isEmpty() || !result;
    EXPECT_TRUE(told || !logged) << "nothing is logged";
    if (result) {
      ExpectConverted();
    } else {
      EXPECT_EQ(ReadFile(scene_.Main()), golden_.main) << "a failed conversion changed the file";
      EXPECT_EQ(QFile::exists(QLatin1String(scratchFile)) && GetParam().clearsAndNames, false);
      EXPECT_FALSE(lines.isEmpty() && GetParam().clearsAndNames) << "nothing is logged";
      EXPECT_TRUE(Run()) << "the next conversion fails";
      EXPECT_EQ(LinesOf(scene_.Main()), converted_);
    }
    log_.TakeLines();
    scene_.ExpectSound();
    EXPECT_EQ(CopiesBesideMain(), QStringList());
  }

  // What a swap across file systems makes under a name of its own, and takes away or renames.
  QStringList CopiesBesideMain() const {
    const QFileInfo main(scene_.Main());
    return main.dir().entryList({main.fileName() + QLatin1String(".converted-*")},
                                QDir::Files | QDir::Hidden);
  }

  // The new file, whole except for what need not succeed.
  void ExpectConverted() {
    const QString uncounted = QLatin1String(GetParam().uncounted);
    const auto counted = [&](const QStringList& lines) {
      QStringList kept;
      for (const QString& line : lines) {
        if (TableOf(line) != uncounted) kept.append(line);
      }
      return kept;
    };
    EXPECT_EQ(counted(LinesOf(scene_.Main())), counted(converted_));
  }

  static std::unique_ptr<Tally> tally_;
  ShimVfs shim_;
  QStringList calls_;
  FileUse fileUse_;
  QStringList converted_;
};

std::unique_ptr<Tally> ConversionSweep::tally_;

TEST_P(ConversionSweep, EveryCallFailsOnce) {
  ASSERT_FALSE(calls_.isEmpty());
  for (const int number : Swept(static_cast<int>(calls_.size()), 11)) {
    const QString call = calls_[number - 1];
    for (const int code : CodesOf(call)) {
      SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code) + ": " +
                   call.toStdString());
      // A failure to run or prepare is always logged; a failed step or bind is for the caller to log.
      const bool logged = !call.startsWith(QLatin1String("step")) && !call.startsWith(QLatin1String("bind"));
      Fail([&, code] { SqliteCalls::Arm(Fault("", code).At(number)); },
           logged && !call.startsWith(QLatin1String("close")));
    }
  }
}

TEST_P(ConversionSweep, EveryFileCallFailsOnce) {
  ForEachFileFault(fileUse_, 9, [&](auto arm) { Fail(arm, false); });
}

TEST_P(ConversionSweep, StorageIsFull) {
  EXPECT_GT(fileUse_.bytes, 0);
  ForEachFullStorage(fileUse_, 4096, [&](auto arm) { Fail(arm, false); });
}

// What the sweeps look for is seen where it is.
TEST_P(ConversionSweep, ACopyLeftBesideTheFileIsSeen) {
  WriteFile(scene_.Path(QStringLiteral("main.sqlite.converted-a1B2c3")), {});
  EXPECT_EQ(CopiesBesideMain(), QStringList{"main.sqlite.converted-a1B2c3"});
}

// Its calls and lines are those that are recorded, to the letter, even with each of its calls failing once.
TEST_P(ConversionSweep, TraceIsAsRecorded) {
  SqliteCalls::Reset();
  const auto run = [&] {
    scene_.Restore();
    return QString::fromLatin1(Run() ? "true" : "false");
  };
  const int from = GetParam().from;
  GoldenTraces golden(QStringLiteral("Convert%1to%2").arg(from).arg(from + 1));
  golden.Add(QStringLiteral("version %1").arg(from),
             TraceOf({run, {{scene_.Main(), QStringLiteral("MAIN")}}}));
  golden.ExpectAsRecorded();
}

INSTANTIATE_FOR_CONVERSIONS(ConversionSweep);

}  // namespace
