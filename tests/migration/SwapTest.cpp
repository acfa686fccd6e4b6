// How the finished copy takes the main file's place, on the scratch file's file system and on another one.
#include <cerrno>
#include <cstring>

#include "tests/migration/ConversionTest.h"

namespace {

class SwapTest : public ConversionTest {
 protected:
  using ConversionTest::ConversionTest;

  QString Folder() const { return QFileInfo(Main()).canonicalPath(); }
  QString Beside() const { return Main() + QStringLiteral(".converted"); }

  // Swept file calls of a conversion from the last sync of the scratch file on, writes in a row as one.
  QStringList SwapCalls() {
    FileCalls::Record();
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    QStringList calls = FileCalls::TakeTrace().filter(QRegExp("^(?!open |close )"));
    FileCalls::Reset();
    calls = calls.mid(calls.lastIndexOf("sync " + scratchPath));
    calls.removeDuplicates();
    return calls;
  }

  // Makes the last call fail that works on exactly this file; earlier ones are SQLite's.
  void FailLast(const QByteArray& call, const QString& file, int error) {
    FileCalls::Record();
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    const QStringList calls = FileCalls::TakeTrace().filter(QRegExp('^' + call + ' '));
    FileCalls::Reset();
    Load();
    const int last = calls.lastIndexOf(call + ' ' + file);
    ASSERT_GE(last, 0) << "never met: " << call.constData() << ' ' << file.toStdString();
    FileCalls::Arm(
        Fault(call, error).OnFile(file.toLocal8Bit()).At(calls.mid(0, last + 1).filter(file).size()));
  }

  // Under the armed fault: one line, the old main file, and no copy.
  void ExpectSwapFailure(int error) {
    const Converted converted = ConvertWithFault();
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(
        converted.lines,
        PlainLines() +
            QStringList{QStringLiteral("Unable to replace the database file, it stays as it was:  %1 : %2")
                            .arg(Main(), std::strerror(error))});
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
  EXPECT_EQ(SwapCalls(), (QStringList{"sync " + scratchPath, "rename " + scratchPath + " -> " + Main(),
                                      "sync " + Folder()}));
}

TEST_P(SwapTest, CopyCannotBeSynced) {
  FailLast("sync", scratchPath, EIO);
  ExpectSwapFailure(EIO);
}

TEST_P(SwapTest, CopyCannotBeOpened) {
  FailLast("open", scratchPath, EMFILE);
  ExpectSwapFailure(EMFILE);
}

TEST_P(SwapTest, CopyCannotBeRenamed) {
  FileCalls::Arm(Fault("rename", EACCES));
  ExpectSwapFailure(EACCES);
}

TEST_P(SwapTest, FolderCannotBeOpened) {
  FailLast("open", Folder(), EACCES);
  ExpectSwapFailure(EACCES);
}

// The new file stands at the path by then, which is what the result says.
TEST_P(SwapTest, FolderCannotBeSynced) {
  FailLast("sync", Folder(), EIO);
  const Converted converted = ConvertWithFault();
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines,
            PlainLines() + QStringList{"Unable to sync the folder of the database file:  " + Main()});
  ExpectDump(Main(), Expected());
}

TEST_P(CrossingSwapTest, CopiesBesideTheMainFileFirst) {
  EXPECT_EQ(SwapCalls(), (QStringList{"sync " + scratchPath, "rename " + scratchPath + " -> " + Main(),
                                      "create " + Beside(), "write " + Beside(), "sync " + Beside(),
                                      "rename " + Beside() + " -> " + Main(), "unlink " + scratchPath,
                                      "sync " + Folder()}));
}

TEST_P(CrossingSwapTest, Replaces) {
  const QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup;
  QFile::setPermissions(Main(), permissions);
  // Left by an interrupted run, and longer than what takes its place.
  QFile left(Beside());
  ASSERT_TRUE(left.open(QIODevice::WriteOnly));
  left.write(QByteArray(1 << 20, 'x'));
  left.close();
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines, PlainLines());
  ExpectDump(Main(), Expected());
  EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
  const QFile::Permissions users = QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
  EXPECT_EQ(QFile::permissions(Main()) & ~users, permissions);
  ExpectUntouched(ContentOf(Main()), false);
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

TEST_P(CrossingSwapTest, DiskIsFull) {
  FileCalls::Arm(Fault("write", ENOSPC).OnFile(".converted"));
  ExpectSwapFailure(ENOSPC);
}

TEST_P(CrossingSwapTest, DiskIsFullInTheMiddle) {
  RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET SectorName = '%1' WHERE RowID = 1")
                     .arg(QString(300000, QLatin1Char('s'))));
  const QByteArray before = ContentOf(Main());
  FileCalls::Arm(Fault("write", ENOSPC).OnFile(".converted").At(2));
  EXPECT_FALSE(ConvertWithFault().result);
  ExpectUntouched(before, false);
}

TEST_P(CrossingSwapTest, FileBesideCannotBeCreated) {
  FileCalls::Arm(Fault("create", EACCES).OnFile(".converted"));
  ExpectSwapFailure(EACCES);
}

TEST_P(CrossingSwapTest, FileBesideCannotBeSynced) {
  FileCalls::Arm(Fault("sync", EIO).OnFile(".converted"));
  ExpectSwapFailure(EIO);
}

TEST_P(CrossingSwapTest, FileBesideCannotBeRenamed) {
  FileCalls::Arm(Fault("rename", EACCES).At(2));
  ExpectSwapFailure(EACCES);
}

}  // namespace
