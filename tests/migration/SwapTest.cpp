// How the finished copy takes the main file's place, on the scratch file's file system and on another one.
#include <fcntl.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QRegularExpression>
#include <cerrno>
#include <cstring>

#include "tests/migration/ConversionTest.h"
#include "tests/support/ShimVfs.h"

namespace {

constexpr char beside[] = "main.sqlite.converted-";

// Past the interposed calls, so that a fault's action may use it.
void SetMode(const char* path, mode_t mode) {
  EXPECT_EQ(syscall(SYS_fchmodat, AT_FDCWD, path, mode), 0) << path;
}

mode_t ModeOf(const QString& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.toLocal8Bit().constData(), &status), 0) << path.toStdString();
  return status.st_mode & 07777U;
}

class SwapTest : public ConversionTest {
 protected:
  using ConversionTest::ConversionTest;

  QString Folder() const { return QFileInfo(Main()).canonicalPath(); }

  // The swept file calls of a conversion from the first one of the swap on, with several writes in a row as
  // one.
  QStringList SwapCalls() {
    FileCalls::Record();
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    QStringList calls = FileCalls::TakeTrace().filter(QRegularExpression("^(?!(open|close|stat|read) )"));
    FileCalls::Reset();
    calls.replaceInStrings(QRegularExpression("[.]converted-\\w{6}"), ".converted-XXXXXX");
    calls = calls.mid(calls.indexOf("chmod " + scratchPath));
    calls.removeDuplicates();
    return calls;
  }

  // The fault meets the last call that works on exactly this file; earlier ones are SQLite's.
  Fault AtLast(Fault fault, const QByteArray& call, const QString& file) {
    FileCalls::Record();
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    const QStringList calls = FileCalls::TakeTrace().filter(QRegularExpression('^' + call + ' '));
    FileCalls::Reset();
    Load();
    const auto last = calls.lastIndexOf(call + ' ' + file);
    EXPECT_GE(last, 0) << "never met: " << call.constData() << ' ' << file.toStdString();
    return fault.OnFile(file.toLocal8Bit()).At(static_cast<int>(calls.mid(0, last + 1).filter(file).size()));
  }
  void FailLast(const QByteArray& call, const QString& file, int error) {
    FileCalls::Arm(AtLast(Fault(call, error), call, file));
  }

  // These bits and no others, whether a reader may write or not.
  void ExpectModesKept() {
    for (const mode_t mode : {0444, 0400, 0460, 0644, 0640, 0600, 0777}) {
      SCOPED_TRACE(testing::Message() << std::oct << mode);
      Load();
      SetMode(Main().toLocal8Bit().constData(), mode);
      const Converted converted = Convert(Tested(), Main());
      EXPECT_TRUE(converted.result);
      EXPECT_EQ(converted.lines, PlainLines());
      EXPECT_EQ(ModeOf(Main()), mode);
      ExpectDump(Main(), Expected());
    }
  }

  // The swap's one line and no other; its failure is told to guards.
  void ExpectSwapFailed(int error) {
    const auto [converted, codes] = ConvertWatched(Tested(), Main());
    EXPECT_EQ(codes, QVector<int>{error});
    FileCalls::Reset();
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(
        converted.lines,
        PlainLines() +
            QStringList{QStringLiteral("Unable to replace the database file, it stays as it was:  %1 : %2")
                            .arg(Main(), std::strerror(error))});
  }

  // The same under the armed fault, which must be met; the main file is the old one, and there is no copy.
  void ExpectSwapFailure(int error) {
    ExpectSwapFailed(error);
    ExpectUntouched(loaded_, false);
    EXPECT_TRUE(Convert(Tested(), Main()).result) << "nothing fails any more";
    ExpectDump(Main(), Expected());
  }
};

// The main file on another file system than the scratch file.
class CrossingSwapTest : public SwapTest {
 protected:
  CrossingSwapTest() : SwapTest(FolderOnOtherFileSystem()) {
    EXPECT_NE(FileSystemOf(folder_.Folder()), FileSystemOf(scratchFolder));
  }
};

INSTANTIATE_TEST_SUITE_P(Converters, SwapTest, testing::ValuesIn(Converters()), NameOf);
INSTANTIATE_TEST_SUITE_P(Converters, CrossingSwapTest, testing::ValuesIn(Converters()), NameOf);

TEST_P(SwapTest, SyncsTheCopyRenamesItAndSyncsTheFolder) {
  ASSERT_EQ(FileSystemOf(folder_.Folder()), FileSystemOf(scratchFolder));
  EXPECT_EQ(SwapCalls(), (QStringList{"chmod " + scratchPath, "sync " + scratchPath,
                                      "rename " + scratchPath + " -> " + Main(), "sync " + Folder()}));
}

TEST_P(SwapTest, EveryFileCallFails) {
  const struct {
    const char* call;
    QString file;
    int error;
  } calls[] = {
      {"stat", Main() + "-wal", EACCES}, {"open", Folder(), EACCES},    {"open", Main(), ENFILE},
      {"stat", Main(), ENOMEM},          {"open", scratchPath, EMFILE}, {"chmod", scratchPath, EPERM},
      {"stat", scratchPath, EOVERFLOW},  {"sync", scratchPath, EIO},
  };
  for (const auto& [call, file, error] : calls) {
    SCOPED_TRACE(testing::Message() << call << ' ' << file.toStdString());
    FailLast(call, file, error);
    ExpectSwapFailure(error);
    Load();
  }
  FileCalls::Arm(Fault("rename", EACCES));
  ExpectSwapFailure(EACCES);
}

TEST_P(SwapTest, KeepsThePermissions) { ExpectModesKept(); }

TEST_P(SwapTest, PermissionsDoNotHold) {
  const auto takeAway = [] { SetMode("/opt/tarnbeam/database/TemporaryDB.sqlite", 0200); };
  FileCalls::Arm(AtLast(Fault::Before("stat", takeAway), "stat", scratchPath));
  ExpectSwapFailed(EPERM);
}

TEST_P(SwapTest, ScratchFileIsNobodyElsesToRead) {
  const mode_t before = umask(0);
  mode_t mode = 0;
  SqliteCalls::Arm(Fault::Before("exec", [&] { mode = ModeOf(scratchPath); }).OnText("TemporaryDB.Version"));
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  umask(before);
  EXPECT_EQ(mode, 0600U);
}

// A main file with a write-ahead log, and a connection to it that has just written.
class LoggedFile {
 public:
  explicit LoggedFile(const QString& path) {
    RunSql(path, "PRAGMA journal_mode = WAL");
    EXPECT_EQ(sqlite3_open_v2(path.toLocal8Bit().constData(), &db_, SQLITE_OPEN_READWRITE, nullptr),
              SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db_, "UPDATE Sites SET SiteIdentifier = 'written last' WHERE SiteKey = 1", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
  }
  ~LoggedFile() { sqlite3_close(db_); }
  LoggedFile(const LoggedFile&) = delete;
  LoggedFile& operator=(const LoggedFile&) = delete;
  // Leaves the log as an interrupted program does.
  void KeepLog() { sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); }

 private:
  sqlite3* db_ = nullptr;
};

const char* const lastWritten = "SELECT SiteIdentifier FROM Sites WHERE SiteKey = 1";

TEST_P(SwapTest, AnotherConnectionKeepsTheWriteAheadLog) {
  {
    const LoggedFile held(Main());
    const QByteArray before = ContentOf(Main());
    ExpectSwapFailed(EBUSY);
    EXPECT_EQ(ContentOf(Main()), before);
    EXPECT_FALSE(QFile::exists(scratchPath));
    EXPECT_EQ(Rows(Main(), lastWritten), QStringList{"'written last'"});
  }
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  EXPECT_EQ(Rows(Main(), lastWritten), QStringList{"'written last'"});
}

TEST_P(SwapTest, WriteAheadLogCannotBeMovedIntoTheFile) {
  LoggedFile(Main()).KeepLog();
  {
    const ShimVfs vfs;
    ShimVfs::Arm(Fault("write", SQLITE_IOERR_WRITE).OnFile("main.sqlite").Always());
    ExpectSwapFailed(EBUSY);
    EXPECT_TRUE(ShimVfs::Fired());
  }
  EXPECT_FALSE(QFile::exists(scratchPath));
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  EXPECT_EQ(Rows(Main(), lastWritten), QStringList{"'written last'"});
}

// The new file is at the path by then, and the result says so.
TEST_P(SwapTest, FolderCannotBeSynced) {
  FailLast("sync", Folder(), EIO);
  const auto [converted, codes] = ConvertWatched(Tested(), Main());
  FileCalls::Reset();
  EXPECT_EQ(codes, QVector<int>{EIO});
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines,
            PlainLines() + QStringList{"Unable to sync the folder of the database file:  " + Main()});
  ExpectDump(Main(), Expected());
}

TEST_P(CrossingSwapTest, CopiesBesideTheMainFileFirst) {
  const QString copy = Folder() + '/' + beside + "XXXXXX";
  EXPECT_EQ(
      SwapCalls(),
      (QStringList{"chmod " + scratchPath, "sync " + scratchPath, "rename " + scratchPath + " -> " + Main(),
                   "create " + copy, "write " + copy, "chmod " + copy, "sync " + copy,
                   "rename " + copy + " -> " + Main(), "unlink " + scratchPath, "sync " + Folder()}));
}

// Whatever lies beside the main file belongs to the user.
TEST_P(CrossingSwapTest, LeavesOtherFilesAlone) {
  const QStringList others{"main.sqlite.converted", "main.sqlite.converted-", "main.sqlite.converted-XXXXXX",
                           "main.sqlite.converted-abc123"};
  for (const QString& name : others) RunSql(folder_.Path(name), "CREATE TABLE Kept (V)");
  const QByteArray content = ContentOf(folder_.Path(others[0]));
  const auto expectKept = [&] {
    for (const QString& name : others)
      EXPECT_EQ(ContentOf(folder_.Path(name)), content) << name.toStdString();
    EXPECT_EQ(QDir(folder_.Folder()).entryList(QDir::Files | QDir::Hidden).size(), 1 + others.size());
  };
  FileCalls::Arm(Fault("rename", EACCES).At(2));
  ExpectSwapFailed(EACCES);
  expectKept();
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines, PlainLines());
  ExpectDump(Main(), Expected());
  EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
  expectKept();
}

TEST_P(CrossingSwapTest, KeepsThePermissions) { ExpectModesKept(); }

TEST_P(CrossingSwapTest, PermissionsDoNotHold) {
  const QByteArray pattern = Main().toLocal8Bit() + ".converted-*";
  const auto takeAway = [&] {
    glob_t found;
    ASSERT_EQ(glob(pattern.constData(), 0, nullptr, &found), 0);
    SetMode(found.gl_pathv[0], 0200);
    globfree(&found);
  };
  FileCalls::Arm(Fault::Before("stat", takeAway).OnFile(beside));
  ExpectSwapFailed(EPERM);
  ExpectUntouched(loaded_, false);
}

TEST_P(CrossingSwapTest, AllTheWay) {
  EXPECT_TRUE(ConvertToCurrent(Tested().source, Main()));
  ExpectDump(Main(), GoldenDump(Tested().source, 7));
}

TEST_P(CrossingSwapTest, MoreThanOneBlock) {
  RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET SectorName = '%1' WHERE RowID = 1")
                     .arg(QString(300000, QLatin1Char('s'))));
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  EXPECT_EQ(Rows(Main(), "SELECT length(SectorName) FROM AntennaAlignment WHERE RowID = 1"),
            QStringList{"300000"});
  EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
}

TEST_P(CrossingSwapTest, EveryFileCallFails) {
  const struct {
    Fault fault;
    int error;
  } cases[] = {
      {Fault("create", EACCES).OnFile(beside), EACCES},
      {Fault("write", ENOSPC).OnFile(beside), ENOSPC},
      {Fault("chmod", EPERM).OnFile(beside), EPERM},
      {Fault("stat", ENOMEM).OnFile(beside), ENOMEM},
      {Fault("sync", EIO).OnFile(beside), EIO},
      {Fault("stat", EOVERFLOW).OnFile(beside).At(2), EOVERFLOW},
      {Fault("rename", EACCES).At(2), EACCES},
      {AtLast(Fault("read", EIO), "read", scratchPath), EIO},
  };
  for (const auto& [fault, error] : cases) {
    SCOPED_TRACE(&fault - &cases[0].fault);
    Load();
    FileCalls::Arm(fault);
    ExpectSwapFailure(error);
  }
}

TEST_P(CrossingSwapTest, DiskIsFullInTheMiddle) {
  RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET SectorName = '%1' WHERE RowID = 1")
                     .arg(QString(300000, QLatin1Char('s'))));
  const QByteArray before = ContentOf(Main());
  FileCalls::Arm(Fault("write", ENOSPC).OnFile(beside).At(2));
  EXPECT_FALSE(ConvertWithFault().result);
  ExpectUntouched(before, false);
}

// The new file is at the path; the next conversion removes what is left.
TEST_P(CrossingSwapTest, ScratchFileCannotBeRemovedAfterwards) {
  FileCalls::Arm(AtLast(Fault("unlink", EIO), "unlink", scratchPath));
  const auto [converted, codes] = ConvertWatched(Tested(), Main());
  FileCalls::Reset();
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(codes, QVector<int>{EIO});
  EXPECT_TRUE(QFile::exists(scratchPath));
  ExpectDump(Main(), Expected());
}

}  // namespace
