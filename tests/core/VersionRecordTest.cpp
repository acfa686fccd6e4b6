// The version record of main files: written by every store, read by the probe.
#include <QFileInfo>

#include "tests/core/HelpersTest.h"

namespace {

const char insertVersion[] = "INSERT OR REPLACE INTO Version (rowID,VersionNumber) values (1,?)";
constexpr unsigned int untouched = 77;

class VersionRecordTest : public StoreVersionTest {
 protected:
  // Runs the operation on the main file, with `fault` armed from there on.
  bool Initialize(const Fault* fault = nullptr) {
    const StorePointer store = Open();
    sqlite3* db = nullptr;
    EXPECT_TRUE(Operations::OpenDatabase(Main(), &db, false));
    SqliteCalls::Reset();
    SqliteCalls::Record();
    if (fault != nullptr) SqliteCalls::Arm(*fault);
    const bool result = (store.get()->*&Operations::InitializeVersionTable)(db);
    trace_ = SqliteCalls::TakeTrace();
    Operations::CloseDatabase(db);
    return result;
  }
  QString Number() const { return QString::number(Version().number); }

  QStringList trace_;
};

TEST_P(VersionRecordTest, HoldsTheStoresVersion) {
  EXPECT_TRUE(Initialize());
  const QString sql = QStringLiteral(" [%1]").arg(insertVersion);
  EXPECT_EQ(trace_,
            (QStringList{"exec CREATE TABLE IF NOT EXISTS Version ( VersionNumber INTEGER NOT NULL) = 0",
                         QStringLiteral("prepare_v2 %1 = 0").arg(insertVersion),
                         "bind_int 1, " + Number() + " = 0" + sql, "step = 101" + sql, "reset = 0" + sql,
                         "clear_bindings = 0" + sql, "finalize = 0" + sql}));
  EXPECT_EQ(Rows(Main(), "SELECT RowID, VersionNumber FROM Version"), QStringList{"1|" + Number()});
}

TEST_P(VersionRecordTest, StaysOneRow) {
  RunSql(Main(), "CREATE TABLE Version ( VersionNumber INTEGER NOT NULL); INSERT INTO Version VALUES (99)");
  EXPECT_TRUE(Initialize());
  EXPECT_TRUE(Initialize());
  EXPECT_EQ(Rows(Main(), "SELECT RowID, VersionNumber FROM Version"), QStringList{"1|" + Number()});
}

TEST_P(VersionRecordTest, FailsWithEachOfItsCalls) {
  const struct {
    const char* call;
    QStringList lines;
    const char* notReached;
  } failures[] = {
      {"exec", {"SQL  CreateVersionTable  failed with  5 : database is locked"}, "prepare_v2"},
      {"prepare_v2", {"SQL prepare  Insert Version  failed with  5 : database is locked"}, "bind"},
      {"bind_int", {"SQL bind failed with  5  errmsg:  database is locked"}, "step"},
      {"step", {}, "none"},
  };
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.call);
    const Fault fault(failure.call, SQLITE_BUSY);
    EXPECT_FALSE(Initialize(&fault));
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    EXPECT_EQ(SqliteCalls::Count(failure.notReached), 0);
    EXPECT_EQ(Lines(), failure.lines);
    SqliteCalls::Reset();
  }
  EXPECT_EQ(Rows(Main(), "SELECT COUNT(*) FROM Version"), QStringList{"0"});
}

TEST_P(VersionRecordTest, IsReadFromACreatedFile) {
  const StorePointer store = Create();
  unsigned int version = untouched;
  EXPECT_TRUE(AlignmentDatabase::GetDatabaseFileVersion(Main(), &version));
  EXPECT_EQ(version, Version().number);
}

INSTANTIATE_FOR_ALL_VERSIONS(VersionRecordTest);

class VersionProbeTest : public HelpersTest {
 protected:
  // What a probe that has to fail logs; the caller's number has to survive it.
  QStringList Refused(const QString& path) {
    unsigned int version = untouched;
    EXPECT_FALSE(AlignmentDatabase::GetDatabaseFileVersion(path, &version));
    EXPECT_EQ(version, untouched);
    return Lines();
  }
};

TEST_F(VersionProbeTest, MakesTheseCalls) {
  RunSql(Main(), "CREATE TABLE Version (VersionNumber); INSERT INTO Version VALUES (12)");
  SqliteCalls::Record();
  unsigned int version = untouched;
  EXPECT_TRUE(AlignmentDatabase::GetDatabaseFileVersion(Main(), &version));
  EXPECT_EQ(version, 12U);
  const QString sql = " [SELECT VersionNumber FROM Version]";
  EXPECT_EQ(
      SqliteCalls::TakeTrace(),
      (QStringList{"open_v2 " + Main() + ", 6 = 0", "exec PRAGMA foreign_keys = ON; = 0",
                   "exec PRAGMA temp_store = MEMORY; = 0", "prepare_v2 SELECT VersionNumber FROM Version = 0",
                   "step = 100" + sql, "column_int 0 = 12" + sql, "reset = 0" + sql,
                   "clear_bindings = 0" + sql, "finalize = 0" + sql, "close " + Main() + " = 0"}));
}

TEST_F(VersionProbeTest, ReadsTheNumberAsUnsigned32Bits) {
  RunSql(Main(), "CREATE TABLE Version (VersionNumber); INSERT INTO Version VALUES (-1)");
  unsigned int version = untouched;
  EXPECT_TRUE(AlignmentDatabase::GetDatabaseFileVersion(Main(), &version));
  EXPECT_EQ(version, 4294967295U);
}

TEST_F(VersionProbeTest, RefusesANullPointerBeforeTouchingAnything) {
  EXPECT_FALSE(AlignmentDatabase::GetDatabaseFileVersion(Main(), nullptr));
  EXPECT_EQ(SqliteCalls::Count(""), 0);
  EXPECT_FALSE(QFile::exists(Main()));
}

TEST_F(VersionProbeTest, LeavesAnEmptyFileWhereThereWasNone) {
  EXPECT_EQ(Refused(Main()), QStringList{"sqlite3_prepare_v2 failed with  1 : no such table: Version"});
  EXPECT_TRUE(QFile::exists(Main()));
  EXPECT_EQ(QFileInfo(Main()).size(), 0);
}

TEST_F(VersionProbeTest, FindsNoVersionInAThresholdsFile) {
  const std::unique_ptr<CurrentStore> store(CurrentStore::Create(Main(), Thresholds()));
  EXPECT_EQ(Refused(Thresholds()), QStringList{"sqlite3_prepare_v2 failed with  1 : no such table: Version"});
}

TEST_F(VersionProbeTest, FindsNoVersionInAnEmptyRecord) {
  RunSql(Main(), "CREATE TABLE Version (VersionNumber)");
  EXPECT_EQ(Refused(Main()), QStringList());
}

TEST_F(VersionProbeTest, FailsWhereThereIsNoFolder) {
  EXPECT_EQ(Refused(files_.Folder().Path("missing/main.sqlite")),
            QStringList{"Can't open database: rval= 14 : unable to open database file"});
}

TEST_F(VersionProbeTest, FailsOnAFileThatIsNoDatabase) {
  QFile file(Main());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(QByteArray(4096, 'x'));
  file.close();
  EXPECT_EQ(Refused(Main()), QStringList{"sqlite3_prepare_v2 failed with  26 : file is not a database"});
}

TEST_F(VersionProbeTest, FailsSilentlyWithItsStep) {
  RunSql(Main(), "CREATE TABLE Version (VersionNumber); INSERT INTO Version VALUES (7)");
  for (const int code : {SQLITE_BUSY, SQLITE_IOERR, SQLITE_DONE}) {
    SqliteCalls::Arm(Fault("step", code));
    EXPECT_EQ(Refused(Main()), QStringList());
  }
  EXPECT_EQ(SqliteCalls::FiredCount(), 3);
}

}  // namespace
