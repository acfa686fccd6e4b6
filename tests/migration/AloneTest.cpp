// Conversions that are started while another one is under way.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "tests/migration/ConversionTest.h"
#include "tests/support/ChildProcess.h"

namespace {

QStringList Refusal(const QString& path) {
  return {"Another conversion is under way, this one does not begin:  " + path};
}

class AloneTest : public ConversionTest {};
INSTANTIATE_TEST_SUITE_P(Converters, AloneTest, testing::ValuesIn(Converters()), NameOf);

TEST_P(AloneTest, DoesNotBeginWhileAnotherIsUnderWay) {
  RunSql(scratchPath, "CREATE TABLE OfTheOther (V)");
  const QByteArray scratch = ContentOf(scratchPath);
  const int folder = open(scratchFolder.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  const Converted converted = Convert(Tested(), Main());
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, Refusal(Main()));
  ExpectUntouched(loaded_, true);
  EXPECT_EQ(ContentOf(scratchPath), scratch);
  ASSERT_EQ(flock(folder, LOCK_UN), 0);
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  EXPECT_EQ(flock(folder, LOCK_EX | LOCK_NB), 0) << "still locked after the conversion";
  close(folder);
  ExpectDump(Main(), Expected());
}

// The lock comes after the main file and before the scratch file, and goes when all is done.
TEST_P(AloneTest, LocksFromBeforeTheScratchFileUntilTheSwapIsDone) {
  FileCalls::Record();
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  const QStringList calls = FileCalls::TakeTrace();
  FileCalls::Reset();
  const auto locked = calls.indexOf("flock " + scratchFolder);
  EXPECT_EQ(calls.count("flock " + scratchFolder), 1);
  EXPECT_LT(calls.indexOf("create " + Main()), locked);
  EXPECT_GE(calls.indexOf("create " + Main()), 0);
  EXPECT_GT(calls.indexOf("unlink " + scratchPath), locked);
  EXPECT_GT(calls.indexOf("create " + scratchPath), locked);
  EXPECT_EQ(calls.last(), "close " + scratchFolder);
}

TEST_P(AloneTest, LocksUntilAFailedCopyIsRemoved) {
  FileCalls::Record();
  SqliteCalls::Arm(Failing("prepare_v2", "integrity_check"));
  EXPECT_FALSE(Convert(Tested(), Main()).result);
  EXPECT_EQ(FileCalls::TakeTrace().last(), "close " + scratchFolder);
  FileCalls::Reset();
}

constexpr int refused = 3;

// Converts as soon as `start` is at its end; exits with 0 if it did, with `refused` if it did not begin.
pid_t StartConversion(const Converter& converter, const QString& path, const int (&start)[2]) {
  return StartChild([&] {
    close(start[1]);
    char none = 0;
    EXPECT_EQ(read(start[0], &none, 1), 0);
    const Converted converted = Convert(converter, path);
    if (!converted.result && converted.lines == Refusal(path)) LeaveProcess(refused);
    EXPECT_TRUE(converted.result) << testing::PrintToString(converted.lines);
  });
}

// One file of a pair, which its data tell from the other.
struct OneOfTwo {
  OneOfTwo(const Converter& converter, const QString& path, const QString& site)
      : converter_(converter), path_(path) {
    Load(site);
    EXPECT_TRUE(Convert(converter, path).result);
    converted_ = DumpDatabase(path);
    Load(site);
  }
  void Load(const QString& site) {
    LoadGolden(converter_.source, path_);
    RunSql(path_, QStringLiteral("UPDATE Sites SET SiteIdentifier = '%1' WHERE SiteKey = 1").arg(site));
    content_ = ContentOf(path_);
  }
  // Its own data, converted or not as the child said; converted in any case afterwards.
  void ExpectOwnData(int status) {
    if (status == refused) {
      EXPECT_EQ(ContentOf(path_), content_);
      EXPECT_TRUE(Convert(converter_, path_).result);
    } else {
      EXPECT_EQ(status, 0);
    }
    ExpectDump(path_, converted_);
  }

  const Converter& converter_;
  QString path_;
  QByteArray content_;
  QString converted_;
};

TEST_P(AloneTest, PairsStartedAtOnce) {
  int begun = 0;
  for (int pair = 0; pair < 10; ++pair) {
    SCOPED_TRACE(pair);
    OneOfTwo one(Tested(), Main(), "of the first");
    OneOfTwo two(Tested(), folder_.Path("other.sqlite"), "of the second");
    ASSERT_NE(one.converted_, two.converted_);
    int start[2];
    ASSERT_EQ(pipe(start), 0);
    const pid_t first = StartConversion(Tested(), one.path_, start);
    const pid_t second = StartConversion(Tested(), two.path_, start);
    close(start[0]);
    close(start[1]);
    const int statuses[] = {WaitForChild(first), WaitForChild(second)};
    EXPECT_TRUE(statuses[0] == 0 || statuses[1] == 0) << "neither began";
    for (const int status : statuses) begun += status == 0 ? 1 : 0;
    one.ExpectOwnData(statuses[0]);
    two.ExpectOwnData(statuses[1]);
  }
  RecordProperty("begun", begun);
}

}  // namespace
