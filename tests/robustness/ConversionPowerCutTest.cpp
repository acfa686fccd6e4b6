// The power fails at every file call of a conversion, and after its end: what was not synced is lost or torn,
// names in folders that were not synced are taken back. The old file or the new one is there, whole.
#include <sys/stat.h>

#include <QFile>
#include <iterator>
#include <memory>

#include "tests/robustness/Sweep.h"
#include "tests/robustness/SweptConversion.h"
#include "tests/support/FileCalls.h"
#include "tests/support/PowerCut.h"

namespace {

dev_t FileSystemOf(const QString& path) {
  struct stat info = {};
  EXPECT_EQ(stat(QFile::encodeName(path).constData(), &info), 0);
  return info.st_dev;
}

class ConversionPowerCut : public SweptConversion {
 protected:
  using SweptConversion::SweptConversion;

  static void SetUpTestSuite() { tally_ = std::make_unique<Tally>("power cuts in conversions"); }
  static void TearDownTestSuite() { tally_.reset(); }

  void SetUp() override {
    SweptConversion::SetUp();
    RemoveScratchFile();
    FileCalls::Record();
    ASSERT_TRUE(Run());
    calls_ = FileCalls::Count({});
    ASSERT_GT(calls_, 0);
    FileCalls::Reset();
    newLines_ = LinesOf(scene_.Main());
    scene_.Restore();
    oldLines_ = LinesOf(scene_.Main());
  }

  // What is at the path after the cut. With 0 Run() gets that far only if it succeeded.
  QStringList LinesAfter(int number, const PowerCut::Loss& loss, const QByteArray& ignoredSyncs = {}) {
    scene_.Restore();
    RemoveScratchFile();
    EXPECT_EQ(PowerCut::RunUntil(
                  number, loss, [&] { return Run(); }, ignoredSyncs),
              Fault::killedStatus);
    ++tally_->killed;
    return LinesOf(scene_.Main());
  }

  // The new file after the end, and the old or the new one before.
  void ExpectWhole() {
    constexpr int kinds = std::size(PowerCut::losses);
    for (const int number : Swept(calls_, 9)) {
      for (int kind = 0; kind < kinds; ++kind) {
        // Towards the end, where the files are swapped, nothing is left out.
        if (!FullSweeps() && number < calls_ - 6 && kind != number % kinds) continue;
        SCOPED_TRACE("call " + std::to_string(number) + ", loss " + std::to_string(kind));
        const QStringList lines = LinesAfter(number, PowerCut::losses[kind]);
        ASSERT_TRUE(lines == oldLines_ || lines == newLines_) << testing::PrintToString(lines);
        scene_.ExpectSound();
        if (lines == newLines_) continue;
        EXPECT_TRUE(Run()) << "the next conversion fails";
        EXPECT_EQ(LinesOf(scene_.Main()), newLines_);
      }
    }
    for (const PowerCut::Loss& loss : PowerCut::losses) EXPECT_EQ(LinesAfter(0, loss), newLines_);
  }

  static std::unique_ptr<Tally> tally_;
  int calls_ = 0;
  QStringList oldLines_;
  QStringList newLines_;
};

std::unique_ptr<Tally> ConversionPowerCut::tally_;

TEST_P(ConversionPowerCut, OldOrNewFile) { ExpectWhole(); }

// With one of the two syncs of the swap taken away the new file is not safe, and the cut shows it.
TEST_P(ConversionPowerCut, ShowsAMissingSyncOfTheFile) {
  const PowerCut::Loss loss = {PowerCut::Names::Kept, PowerCut::Data::Dropped};
  EXPECT_NE(LinesAfter(0, loss, "TemporaryDB.sqlite"), newLines_);
}

TEST_P(ConversionPowerCut, ShowsAMissingSyncOfTheFolder) {
  const PowerCut::Loss loss = {PowerCut::Names::Undone, PowerCut::Data::Dropped};
  EXPECT_EQ(LinesAfter(0, loss, "/sweep-"), oldLines_);
}

INSTANTIATE_FOR_CONVERSIONS(ConversionPowerCut);

// The same where the new file is copied beside the main one, since the scratch file lies on another file
// system.
class ConversionPowerCutAcrossFileSystems : public ConversionPowerCut {
 protected:
  ConversionPowerCutAcrossFileSystems() : ConversionPowerCut(QStringLiteral("/dev/shm")) {}
};

TEST_P(ConversionPowerCutAcrossFileSystems, OldOrNewFile) {
  ASSERT_NE(FileSystemOf(scene_.Main()), FileSystemOf(QLatin1String(scratchFolder)));
  ExpectWhole();
}

INSTANTIATE_FOR_CONVERSIONS(ConversionPowerCutAcrossFileSystems);

}  // namespace
