// Conversions under faults: every call to SQLite fails in turn, and every call below it. The file is either
// the old one, byte for byte, or the new one, whole.
#include <sqlite3.h>

#include <QFile>
#include <QFileInfo>
#include <memory>

#include "migration/AlignmentDatabaseConverter1to2.h"
#include "migration/AlignmentDatabaseConverter2to3.h"
#include "migration/AlignmentDatabaseConverter3to4.h"
#include "migration/AlignmentDatabaseConverter4to5.h"
#include "migration/AlignmentDatabaseConverter5to6.h"
#include "migration/AlignmentDatabaseConverter6to7.h"
#include "tests/robustness/FileFault.h"
#include "tests/robustness/Scene.h"
#include "tests/robustness/Sweep.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ShimVfs.h"

namespace {

constexpr char scratchFolder[] = "/opt/tarnbeam/database";
constexpr char scratchFile[] = "/opt/tarnbeam/database/TemporaryDB.sqlite";

struct Conversion {
  int from;
  bool (*convert)(QString& path);
  // The table whose copy or changes may fail without failing the conversion; null: none.
  const char* uncounted;
  // Whether a failed conversion clears its scratch file away and names the step that failed.
  bool clearsAndNames;
};

template <typename Converter>
bool Convert(QString& path) {
  return Converter().Convert(path);
}

const Conversion conversions[] = {
    {1, &Convert<AlignmentDatabaseConverter1to2>, "Preferences", false},
    {2, &Convert<AlignmentDatabaseConverter2to3>, "Preferences", true},
    {3, &Convert<AlignmentDatabaseConverter3to4>, nullptr, true},
    {4, &Convert<AlignmentDatabaseConverter4to5>, nullptr, true},
    {5, &Convert<AlignmentDatabaseConverter5to6>, nullptr, true},
    {6, &Convert<AlignmentDatabaseConverter6to7>, "PathAlignment", true},
};

void PrintTo(const Conversion& conversion, std::ostream* out) {
  *out << conversion.from << " to " << conversion.from + 1;
}

class ConversionSweep : public testing::TestWithParam<Conversion> {
 protected:
  static void SetUpTestSuite() {
    tally_ = std::make_unique<Tally>("fault and I/O sweeps of the conversions");
  }
  static void TearDownTestSuite() { tally_.reset(); }

  static Contents Golden() {
    const Scene scene{Contents()};
    LoadSqlFile(scene.Main(), QStringLiteral(TARNBEAM_GOLDEN_FOLDER "/version_%1.sql").arg(GetParam().from));
    return {ReadFile(scene.Main()), {}};
  }

  void SetUp() override {
    ASSERT_TRUE(QFileInfo(QLatin1String(scratchFolder)).isDir()) << scratchFolder << " is missing";
    SqliteCalls::Record();
    ShimVfs::Reset();
    ASSERT_TRUE(Run());
    calls_ = SweptCalls(SqliteCalls::TakeTrace());
    for (const FileFault& fault : fileFaults) counts_.push_back(ShimVfs::Count(fault.call));
    bytes_ = ShimVfs::BytesWritten();
    converted_ = LinesOf(scene_.Main());
    log_.TakeLines();
  }

  bool Run() {
    QString path = scene_.Main();
    return GetParam().convert(path);
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
    EXPECT_FALSE(QFile::exists(scene_.Main() + QLatin1String(".converted")));
  }

  // The new file, whole but for what need not succeed.
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
  const Contents golden_ = Golden();
  Scene scene_{golden_, QLatin1String(scratchFolder)};
  LogCapture log_;
  ShimVfs shim_;
  QStringList calls_;
  std::vector<int> counts_;
  long long bytes_ = 0;
  QStringList converted_;
};

std::unique_ptr<Tally> ConversionSweep::tally_;

TEST_P(ConversionSweep, EveryCallFailsOnce) {
  ASSERT_FALSE(calls_.isEmpty());
  for (const int number : Swept(calls_.size(), 11)) {
    const QString call = calls_[number - 1];
    for (const int code : CodesOf(call)) {
      SCOPED_TRACE("call " + std::to_string(number) + " fails with " + std::to_string(code) + ": " +
                   call.toStdString());
      // What fails to be run or prepared is always logged; a step and a bind are the caller's to tell.
      const bool logged = !call.startsWith(QLatin1String("step")) && !call.startsWith(QLatin1String("bind"));
      Fail([&, code] { SqliteCalls::Arm(Fault("", code).At(number)); },
           logged && !call.startsWith(QLatin1String("close")));
    }
  }
}

TEST_P(ConversionSweep, EveryFileCallFailsOnce) {
  std::size_t counted = 0;
  for (const FileFault& fault : fileFaults) {
    for (const int number : Swept(counts_[counted++], 9 * fault.stride)) {
      SCOPED_TRACE(fault.call + (" " + std::to_string(number)) + " fails with " + std::to_string(fault.code));
      Fail([&] { ShimVfs::Arm(Fault(fault.call, fault.code).At(number)); }, false);
    }
  }
}

TEST_P(ConversionSweep, StorageIsFull) {
  constexpr int step = 4096;
  const int capacities = static_cast<int>((bytes_ + step - 1) / step);
  for (const int number : Swept(capacities, 16)) {
    const long long capacity = static_cast<long long>(number - 1) * step;
    SCOPED_TRACE("full after " + std::to_string(capacity) + " bytes");
    Fail([&] { ShimVfs::FullAfter(capacity); }, false);
  }
}

std::string ConversionName(const testing::TestParamInfo<Conversion>& info) {
  return "Version" + std::to_string(info.param.from) + "To" + std::to_string(info.param.from + 1);
}

INSTANTIATE_TEST_SUITE_P(All, ConversionSweep, testing::ValuesIn(conversions), ConversionName);

}  // namespace
