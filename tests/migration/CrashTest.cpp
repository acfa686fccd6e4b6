// A conversion is killed at every call in turn: the old or the new file stands at the path, whole, and the
// next conversion works with whatever else was left behind.
#include <functional>
#include <tuple>

#include "tests/migration/ConversionTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ShimVfs.h"

namespace {

// Where the process is killed.
struct Layer {
  const char* name;
  void (*arm)(const Fault& fault);
  int (*count)(const QByteArray& calls);
};
constexpr Layer layers[] = {
    {"SqliteCalls", &SqliteCalls::Arm, &SqliteCalls::Count},
    {"FileCalls", &FileCalls::Arm, &FileCalls::Count},
    {"SqliteFileCalls", &ShimVfs::Arm, &ShimVfs::Count},
};

using Crash = std::tuple<Converter, Layer, bool>;  // whether the swap crosses file systems

class CrashTest : public testing::TestWithParam<Crash> {
 protected:
  CrashTest() : folder_(std::get<2>(GetParam()) ? FolderOnOtherFileSystem() : scratchFolder) {
    QFile::remove(scratchPath);
    LoadGolden(Tested().source, folder_.Main());
    content_ = ContentOf(folder_.Main());
    oldDump_ = DumpDatabase(folder_.Main());
    newDump_ = GoldenDump(Tested().source, Tested().source + 1);
  }
  ~CrashTest() override {
    for (const char* const suffix : {"", "-journal"}) QFile::remove(scratchPath + suffix);
  }

  static const Converter& Tested() { return std::get<0>(GetParam()); }
  static const Layer& KilledIn() { return std::get<1>(GetParam()); }

  void Load() {
    QFile file(folder_.Main());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(content_), content_.size());
  }

  int CountCalls() {
    const ShimVfs vfs;
    FileCalls::Record();
    SqliteCalls::Reset();
    EXPECT_TRUE(Convert(Tested(), folder_.Main()).result);
    const int calls = KilledIn().count({});
    FileCalls::Reset();
    return calls;
  }

  // What the next start of the program finds, and what it makes of it.
  void ExpectWhole(int number) {
    SCOPED_TRACE(number);
    const QString dump = DumpDatabase(folder_.Main());
    const bool replaced = dump == newDump_;
    ASSERT_TRUE(replaced || dump == oldDump_) << "neither the old nor the new file:\n" << dump.toStdString();
    ++(replaced ? newFiles_ : oldFiles_);
    EXPECT_EQ(IntegrityCheck(folder_.Main()), QString("ok"));
    if (replaced && Tested().source == 6) return;
    const Converted again = Convert(ConverterFrom(Tested().source + (replaced ? 1 : 0)), folder_.Main());
    ASSERT_TRUE(again.result) << testing::PrintToString(again.lines);
    if (!replaced) ExpectDump(folder_.Main(), newDump_);
    EXPECT_EQ(IntegrityCheck(folder_.Main()), QString("ok"));
  }

  TemporaryFolder folder_;
  QByteArray content_;
  QString oldDump_;
  QString newDump_;
  int oldFiles_ = 0;
  int newFiles_ = 0;
};

std::string NameOfCrash(const testing::TestParamInfo<Crash>& info) {
  const auto& [converter, layer, crossing] = info.param;
  return "From" + std::to_string(converter.source) + layer.name + (crossing ? "Crossing" : "");
}

INSTANTIATE_TEST_SUITE_P(Converters, CrashTest,
                         testing::Combine(testing::ValuesIn(Converters()), testing::ValuesIn(layers),
                                          testing::Bool()),
                         NameOfCrash);

// Every call with TARNBEAM_FULL_SWEEPS=1, else every 17th and all of the last ones, which are those of the
// swap.
TEST_P(CrashTest, OldOrNewFile) {
  const int calls = CountCalls();
  ASSERT_GT(calls, 20);
  const bool all = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1;
  for (int number = 1; number <= calls; ++number) {
    if (!all && number % (calls / 15) != 1 && number <= calls - 9) continue;
    Load();
    ASSERT_EQ(RunInChild([&] {
                const ShimVfs vfs;
                KilledIn().arm(Fault::Kill({}).At(number));
                Convert(Tested(), folder_.Main());
              }),
              Fault::killedStatus)
        << "at " << number << " of " << calls;
    ExpectWhole(number);
    if (HasFatalFailure()) return;
  }
  RecordProperty("killed", oldFiles_ + newFiles_);
  EXPECT_GT(oldFiles_, 0);
  // Only the calls of the swap come after SQLite is done with the files.
  EXPECT_EQ(newFiles_ > 0, QByteArray(KilledIn().name) == "FileCalls") << newFiles_;
}

}  // namespace
