// The power cut itself: what is synced stays, what is not goes as was asked for.
#include "tests/support/PowerCut.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <cstdio>

#include "tests/support/DatabaseDump.h"
#include "tests/support/Fault.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using Data = PowerCut::Data;
using Names = PowerCut::Names;

class PowerCutTest : public testing::Test {
 protected:
  void Write(const QByteArray& bytes, bool synced) const {
    const int file = open(Path("file").constData(), O_WRONLY | O_CREAT, 0640);
    EXPECT_EQ(write(file, bytes.constData(), static_cast<size_t>(bytes.size())), bytes.size());
    if (synced) {
      EXPECT_EQ(fsync(file), 0);
    }
    close(file);
  }

  void SyncFolder() const {
    const int folder = open(QFile::encodeName(folder_.Folder()).constData(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(fsync(folder), 0);
    close(folder);
  }

  // Renames "other" over "file".
  void Replace() const { EXPECT_EQ(rename(Path("other").constData(), Path("file").constData()), 0); }

  static void Cut(const PowerCut::Loss& loss, const std::function<void()>& work,
                  const QByteArray& ignored = {}) {
    EXPECT_EQ(PowerCut::RunUntil(
                  0, loss,
                  [&] {
                    work();
                    return true;
                  },
                  ignored),
              Fault::killedStatus);
  }

  QByteArray Path(const char* name) const { return QFile::encodeName(folder_.Path(QLatin1String(name))); }
  bool Exists(const char* name) const { return QFile::exists(folder_.Path(QLatin1String(name))); }
  QByteArray Contents(const char* name) const {
    QFile file(folder_.Path(QLatin1String(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  TemporaryFolder folder_;
};

TEST_F(PowerCutTest, SyncedContentsStay) {
  Write("old", true);
  for (const PowerCut::Loss& loss : PowerCut::losses) {
    Cut(loss, [&] { Write("new", true); });
    EXPECT_EQ(Contents("file"), "new");
  }
}

TEST_F(PowerCutTest, ContentsAreDroppedUnlessSynced) {
  Write("old", true);
  Cut({Names::Kept, Data::Dropped}, [&] {
    Write("synced", true);
    Write("unsynced", false);
  });
  EXPECT_EQ(Contents("file"), "synced");
  Cut({Names::Kept, Data::Kept}, [&] { Write("unsynced", false); });
  EXPECT_EQ(Contents("file"), "unsynced");
}

TEST_F(PowerCutTest, ContentsAreTorn) {
  Write(QByteArray(1500, 'a'), true);
  Cut({Names::Kept, Data::Torn}, [&] { Write(QByteArray(2000, 'b'), false); });
  EXPECT_EQ(Contents("file"),
            QByteArray(256, 'b') + QByteArray(768, 'a') + QByteArray(512, 'b') + QByteArray(464, '\0'));
}

TEST_F(PowerCutTest, NewNameGoesUnlessItsFolderIsSynced) {
  Cut({Names::Undone, Data::Kept}, [&] { Write("new", true); });
  EXPECT_FALSE(Exists("file"));
  Cut({Names::Kept, Data::Dropped}, [&] { Write("new", false); });
  EXPECT_EQ(Contents("file"), "");
  Cut({Names::Undone, Data::Dropped}, [&] {
    Write("new", true);
    SyncFolder();
  });
  EXPECT_EQ(Contents("file"), "new");
}

TEST_F(PowerCutTest, RemovedNameComesBackUnlessItsFolderIsSynced) {
  Write("old", true);
  const auto remove = [&] { EXPECT_EQ(unlink(Path("file").constData()), 0); };
  Cut({Names::Undone, Data::Dropped}, remove);
  EXPECT_EQ(Contents("file"), "old");
  Cut({Names::Undone, Data::Dropped}, [&] {
    remove();
    SyncFolder();
  });
  EXPECT_FALSE(Exists("file"));
}

TEST_F(PowerCutTest, ReplacementIsTakenBackUnlessItsFolderIsSynced) {
  Write("new", true);
  ASSERT_EQ(rename(Path("file").constData(), Path("other").constData()), 0);
  Write("old", true);
  Cut({Names::Undone, Data::Dropped}, [&] { Replace(); });
  EXPECT_EQ(Contents("file"), "old");
  EXPECT_EQ(Contents("other"), "new");
  EXPECT_EQ(QFile::permissions(folder_.Path(QStringLiteral("file"))) & QFile::ReadGroup, QFile::ReadGroup);
  Cut({Names::Undone, Data::Dropped}, [&] {
    Replace();
    SyncFolder();
  });
  EXPECT_EQ(Contents("file"), "new");
  EXPECT_FALSE(Exists("other"));
}

TEST_F(PowerCutTest, RefusedRenameChangesNothing) {
  Write("old", true);
  Cut({Names::Undone, Data::Dropped},
      [&] { EXPECT_NE(rename(Path("missing").constData(), Path("file").constData()), 0); });
  EXPECT_EQ(Contents("file"), "old");
  EXPECT_FALSE(Exists("missing"));
}

TEST_F(PowerCutTest, GoesBeforeTheGivenCall) {
  Write("old", true);
  // Its calls: create, write, sync.
  const PowerCut::Loss loss = {Names::Kept, Data::Kept};
  const auto work = [&] {
    Write("new", true);
    return true;
  };
  EXPECT_EQ(PowerCut::RunUntil(2, loss, work), Fault::killedStatus);
  EXPECT_EQ(Contents("file"), "old");
  EXPECT_EQ(PowerCut::RunUntil(3, loss, work), Fault::killedStatus);
  EXPECT_EQ(Contents("file"), "new");
  EXPECT_EQ(PowerCut::RunUntil(4, loss, work), 0);
}

// SQLite's own syncs are seen: a committed row is there. With one sync taken away it is not.
TEST_F(PowerCutTest, CommittedRowNeedsItsSync) {
  const QString path = folder_.Path(QStringLiteral("rows.sqlite"));
  RunSql(path, QStringLiteral("CREATE TABLE t (x); INSERT INTO t VALUES (1)"));
  const auto update = [&](int value) { RunSql(path, QStringLiteral("UPDATE t SET x = %1").arg(value)); };
  const PowerCut::Loss loss = {Names::Kept, Data::Dropped};
  Cut(loss, [&] { update(2); });
  EXPECT_EQ(Rows(path, QStringLiteral("SELECT x FROM t")), QStringList("2"));
  Cut(
      loss, [&] { update(3); }, "rows.sqlite");
  EXPECT_EQ(Rows(path, QStringLiteral("SELECT x FROM t")), QStringList("2"));
}

}  // namespace
