// What a guard is told of conversions besides the calls to SQLite. The swap's own tests cover its failures.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "tests/migration/ConversionTest.h"

namespace {

class GuardTest : public ConversionTest {
 protected:
  using ConversionTest::ConversionTest;

  void ExpectTold(bool result, const QVector<int>& codes) { ExpectTold(Main(), result, codes); }
  static void ExpectTold(const QString& path, bool result, const QVector<int>& codes) {
    const Watched watched = ConvertWatched(Tested(), path);
    SqliteCalls::Reset();
    FileCalls::Reset();
    EXPECT_EQ(watched.converted.result, result);
    EXPECT_EQ(watched.codes, codes);
  }
};

class CrossingGuardTest : public GuardTest {
 protected:
  CrossingGuardTest() : GuardTest(FolderOnOtherFileSystem()) {}
};

INSTANTIATE_TEST_SUITE_P(Converters, GuardTest, testing::ValuesIn(Converters()), NameOf);
INSTANTIATE_TEST_SUITE_P(Converters, CrossingGuardTest, testing::ValuesIn(Converters()), NameOf);

TEST_P(GuardTest, NothingIsToldOfASuccess) { ExpectTold(true, {}); }

// A rename that is refused because it leads to another file system is no failure.
TEST_P(CrossingGuardTest, NothingIsToldOfASuccess) { ExpectTold(true, {}); }

TEST_P(GuardTest, ScratchFolderThatCannotBeLocked) {
  const TemporaryFolder elsewhere(FolderOnOtherFileSystem());
  LoadGolden(Tested().source, elsewhere.Main());
  const QByteArray folder = scratchFolder.toLocal8Bit();
  FileCalls::Arm(Fault("open", ENOENT).OnFile(folder));
  ExpectTold(elsewhere.Main(), false, {ENOENT});
  FileCalls::Arm(Fault("flock", ENOLCK).OnFile(folder));
  ExpectTold(elsewhere.Main(), false, {ENOLCK});
}

TEST_P(GuardTest, AnotherConversionUnderWay) {
  const int folder = open(scratchFolder.toLocal8Bit().constData(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  ExpectTold(false, {EWOULDBLOCK});
  close(folder);
}

TEST_P(GuardTest, ScratchFileItself) { ExpectTold(scratchPath, false, {EINVAL}); }

TEST_P(GuardTest, ScratchFileThatCannotBeMade) {
  FileCalls::Arm(Fault("create", EACCES).OnFile("TemporaryDB.sqlite"));
  ExpectTold(false, {EACCES});
}

// Reported although the conversion does all that it should.
TEST_P(GuardTest, FailuresThatAreOvercome) {
  RunSql(scratchPath, "CREATE TABLE Left (V)");
  FileCalls::Arm(Fault("unlink", EACCES).OnFile("TemporaryDB.sqlite"));
  ExpectTold(true, {EACCES});
  Load();
  FileCalls::Arm(Fault("close", EIO).OnFile("TemporaryDB.sqlite"));
  ExpectTold(true, {EIO});
}

TEST_P(GuardTest, ChecksThatDoNotPass) {
  SqliteCalls::Arm(Fault("column_text", 0).OnText("integrity_check").Texts({"row 1 missing"}));
  ExpectTold(false, {SQLITE_CORRUPT});
  SqliteCalls::Arm(Fault("step", SQLITE_ROW).OnText("foreign_key_check"));
  ExpectTold(false, {SQLITE_CONSTRAINT_FOREIGNKEY});
}

}  // namespace
