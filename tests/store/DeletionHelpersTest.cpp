// Deleting rows by their keys on an open connection.
#include <sqlite3.h>

#include "tests/store/DeletionHelpers.h"
#include "tests/support/ChildProcess.h"

namespace {

TEST_P(DeletionHelpersTest, BatchDeleteRefusesNullWithoutALine) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11};
  SqliteCalls::Reset();
  EXPECT_FALSE(Call(&Operations::GenericBatchKeyDelete, nullptr, &keys, "Orientation", "OrientationKey"));
  EXPECT_FALSE(Call(&Operations::GenericBatchKeyDelete, db.get(), nullptr, "Orientation", "OrientationKey"));
  EXPECT_FALSE(Call(&Operations::GenericBatchKeyDelete, db.get(), &keys, nullptr, "OrientationKey"));
  EXPECT_FALSE(Call(&Operations::GenericBatchKeyDelete, db.get(), &keys, "Orientation", nullptr));
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(DeletionHelpersTest, BatchDeleteOfAnEmptyListDoesNotTouchTheDatabase) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys;
  SqliteCalls::Reset();
  EXPECT_TRUE(Call(&Operations::GenericBatchKeyDelete, db.get(), &keys, "No table", "No column"));
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(DeletionHelpersTest, BatchDeletePreparesBindsAndStepsOncePerKeyInOrder) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{13, -5, 11, 13};  // one that is not there, and one twice
  SqliteCalls::Reset();
  SqliteCalls::Record();
  EXPECT_TRUE(DeleteKeys(db.get(), &keys));
  const QString sql = QStringLiteral(" [DELETE FROM Orientation WHERE OrientationKey=?]");
  EXPECT_EQ(Calls("bind_int64"), QStringList({"bind_int64 1, 13 = 0" + sql, "bind_int64 1, -5 = 0" + sql,
                                              "bind_int64 1, 11 = 0" + sql, "bind_int64 1, 13 = 0" + sql}));
  EXPECT_EQ(SqliteCalls::Count("prepare_v2"), 4);
  EXPECT_EQ(SqliteCalls::Count("step"), 4);
  EXPECT_EQ(SqliteCalls::Count("finalize"), 4);
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList("12"));
}

TEST_P(DeletionHelpersTest, BatchDeleteStopsAtAStatementThatCannotBePrepared) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11, 12, 13};
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).At(2));
  EXPECT_FALSE(DeleteKeys(db.get(), &keys));
  EXPECT_EQ(Lines(), QStringList("SQL prepare  Generic record delete  failed with  7 : out of memory"));
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList({"12", "13"}));
}

TEST_P(DeletionHelpersTest, BatchDeleteStopsAtAKeyThatCannotBeBound) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11, 12, 13};
  SqliteCalls::Arm(Fault("bind_int64", SQLITE_MISUSE).At(2));
  EXPECT_FALSE(DeleteKeys(db.get(), &keys));
  EXPECT_EQ(Lines(), QStringList("SQL bind  OrientationKey  in table  Orientation"));
  EXPECT_EQ(SqliteCalls::Count("step"), 1);
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList({"12", "13"}));
}

TEST_P(DeletionHelpersTest, BatchDeleteAcceptsDoneFromTheFifthStep) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11, 12};
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Results({SQLITE_BUSY, SQLITE_ROW, SQLITE_OK, SQLITE_IOERR}));
  EXPECT_TRUE(DeleteKeys(db.get(), &keys));
  EXPECT_EQ(SqliteCalls::Count("step"), 6);  // five for the first key, one for the second
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList("13"));
}

TEST_P(DeletionHelpersTest, BatchDeleteCountsDoneFromTheSixthStepAsAFailure) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11, 12};
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(5));
  EXPECT_FALSE(DeleteKeys(db.get(), &keys));
  EXPECT_EQ(SqliteCalls::Count("step"), 6);
  EXPECT_EQ(SqliteCalls::Count("finalize"), 1);
  // The sixth step has deleted the row all the same; the next key is not tried.
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList({"12", "13"}));
}

TEST_P(DeletionHelpersTest, BatchDeleteGivesUpAfterSixSteps) {
  const ConnectionPointer db = OpenMain();
  QVector<int> keys{11};
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Always());
  EXPECT_FALSE(DeleteKeys(db.get(), &keys));
  EXPECT_EQ(SqliteCalls::Count("step"), 6);
}

TEST_P(DeletionHelpersTest, AssociatedRecordsRefuseNullWithALine) {
  const ConnectionPointer db = OpenMain();
  sqlite3* const connections[] = {nullptr, db.get(), db.get(), db.get()};
  for (int index = 0; index < 4; ++index) {
    SqliteCalls::Reset();
    EXPECT_FALSE(Call(&Operations::DeleteAssociatedRecordsByKeys, connections[index],
                      index == 1 ? nullptr : &orientation_, index == 2 ? nullptr : &geolocation_,
                      index == 3 ? nullptr : &height_));
    EXPECT_EQ(Lines(), QStringList("Null vector passed in for record deletion"));
    EXPECT_EQ(SqliteCalls::Count(""), 0);
  }
}

TEST_P(DeletionHelpersTest, AssociatedRecordsGoOrientationsFirstHeightsLast) {
  const ConnectionPointer db = OpenMain();
  orientation_ << 11 << 12;
  geolocation_ << 21;
  height_ << 31;
  SqliteCalls::Record();
  EXPECT_TRUE(
      Call(&Operations::DeleteAssociatedRecordsByKeys, db.get(), &orientation_, &geolocation_, &height_));
  EXPECT_EQ(Calls("bind_int64"),
            QStringList({"bind_int64 1, 11 = 0 [DELETE FROM Orientation WHERE OrientationKey=?]",
                         "bind_int64 1, 12 = 0 [DELETE FROM Orientation WHERE OrientationKey=?]",
                         "bind_int64 1, 21 = 0 [DELETE FROM Geolocation WHERE GeolocationKey=?]",
                         "bind_int64 1, 31 = 0 [DELETE FROM Height WHERE HeightKey=?]"}));
  EXPECT_EQ(Keys("Orientation", "OrientationKey"), QStringList("13"));
  EXPECT_EQ(Keys("Geolocation", "GeolocationKey"), QStringList("22"));
  EXPECT_EQ(Keys("Height", "HeightKey"), QStringList("32"));
}

TEST_P(DeletionHelpersTest, AssociatedRecordsStopAtTheListThatFails) {
  const struct {
    const char* table;
    const char* line;
    QStringList left;
  } failures[] = {
      {"Orientation", "Failed to delete orientation keys", {"11,12,13", "21,22", "31,32"}},
      {"Geolocation", "Failed to delete geolocation keys", {"12,13", "21,22", "31,32"}},
      {"Height", "Failed to delete height keys", {"12,13", "22", "31,32"}},
  };
  orientation_ << 11;
  geolocation_ << 21;
  height_ << 31;
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.table);
    const ConnectionPointer db = OpenMain();
    RunSql(Main(), QStringLiteral("INSERT OR IGNORE INTO Orientation VALUES (11,0,0,0);"
                                  "INSERT OR IGNORE INTO Geolocation VALUES (21,0,0,0)"));
    SqliteCalls::Arm(Fault("step", SQLITE_FULL).Always().OnText(QByteArray("DELETE FROM ") + failure.table));
    EXPECT_FALSE(
        Call(&Operations::DeleteAssociatedRecordsByKeys, db.get(), &orientation_, &geolocation_, &height_));
    SqliteCalls::Reset();
    EXPECT_EQ(Lines(), QStringList(failure.line));
    EXPECT_EQ(Rows(Main(),
                   "SELECT group_concat(OrientationKey) FROM Orientation UNION ALL SELECT "
                   "group_concat(GeolocationKey) FROM Geolocation UNION ALL SELECT "
                   "group_concat(HeightKey) FROM Height")
                  .replaceInStrings("'", ""),
              failure.left);
  }
}

// ---- the row of the site or path itself

struct OwnerDelete {
  const char* table;
  const char* column;
  bool (AlignmentDatabaseStore::*remove)(sqlite3*, long long*);
  const char* bindFailure;
};

const OwnerDelete ownerDeletes[] = {
    {"Sites", "SiteKey", &Operations::DeleteSiteByKey,
     "SQL bind SiteKey (key delete) failed with  21 : bad parameter or other API misuse"},
    {"Paths", "PathKey", &Operations::DeletePathByKey,
     "SQL bind PathKey (key delete) failed with  21 : bad parameter or other API misuse"},
};

class OwnerDeleteTest : public DeletionHelpersTest {};

TEST_P(OwnerDeleteTest, NullIsRefusedWithoutALine) {
  const ConnectionPointer db = OpenMain();
  long long key = 1;
  SqliteCalls::Reset();
  for (const OwnerDelete& owner : ownerDeletes) {
    EXPECT_FALSE(Call(owner.remove, nullptr, &key));
    EXPECT_FALSE(Call(owner.remove, db.get(), nullptr));
  }
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(OwnerDeleteTest, TheKeyIsBoundInAll64Bits) {
  const ConnectionPointer db = OpenMain();
  long long key = 4294967297;
  for (const OwnerDelete& owner : ownerDeletes) {
    EXPECT_TRUE(Call(owner.remove, db.get(), &key));
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList("1"));
  }
}

TEST_P(OwnerDeleteTest, AStatementThatCannotBePreparedCountsAsSuccess) {
  const ConnectionPointer db = OpenMain();
  long long key = 1;
  for (const OwnerDelete& owner : ownerDeletes) {
    SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).OnText(owner.table));
    EXPECT_TRUE(Call(owner.remove, db.get(), &key));
    EXPECT_EQ(Lines(), QStringList("SQL prepare  Delete site  failed with  7 : out of memory"));
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList({"1", "4294967297"}));
  }
}

TEST_P(OwnerDeleteTest, AFailedBindLeavesTheStatementOpen) {
  ConnectionPointer db = OpenMain();
  long long key = 1;
  for (const OwnerDelete& owner : ownerDeletes) {
    SqliteCalls::Arm(Fault("bind_int64", SQLITE_MISUSE).OnText(owner.table));
    EXPECT_FALSE(Call(owner.remove, db.get(), &key));
    EXPECT_EQ(Lines(), QStringList(owner.bindFailure));
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList({"1", "4294967297"}));
  }
  db.reset();
  EXPECT_EQ(Lines(), QStringList(CloseFailure()));
  SqliteLeakGuard::ExpectLeaked(1, 2);
}

TEST_P(OwnerDeleteTest, StepsAreRepeatedUntilOneReportsDone) {
  const ConnectionPointer db = OpenMain();
  long long key = 1;
  for (const OwnerDelete& owner : ownerDeletes) {
    SqliteCalls::Reset();
    SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(50));
    EXPECT_TRUE(Call(owner.remove, db.get(), &key));
    EXPECT_EQ(SqliteCalls::Count("step"), 51);
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList("4294967297"));
  }
}

// A row that is still referred to cannot be deleted, and the steps have no bound: the call never returns.
TEST_P(OwnerDeleteTest, ARowThatIsReferredToIsSteppedWithoutEnd) {
  InsertAlignments();
  for (const OwnerDelete& owner : ownerDeletes) {
    EXPECT_EQ(RunInChild([&] {
                const ConnectionPointer db = OpenMain();
                long long key = 1;
                SqliteCalls::Arm(Fault::Kill("step").At(500));
                Call(owner.remove, db.get(), &key);
              }),
              Fault::killedStatus);
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList({"1", "4294967297"}));
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionHelpersTest);
INSTANTIATE_FOR_ALL_VERSIONS(OwnerDeleteTest);

}  // namespace
