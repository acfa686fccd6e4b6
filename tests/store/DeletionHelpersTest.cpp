// The helpers of the deletions on an open connection.
#include <sqlite3.h>

#include <QRegularExpression>
#include <QVector>

#include "tests/store/DeletionScene.h"
#include "tests/support/ChildProcess.h"

namespace {

class DeletionHelpersTest : public CreatedStoreTest {
 protected:
  DeletionHelpersTest() {
    RunSql(Main(), QStringLiteral("INSERT INTO Sites VALUES (1, 'one'), (4294967297, 'wide');"
                                  "INSERT INTO Paths VALUES (1, 'one'), (4294967297, 'wide');"
                                  "INSERT INTO Orientation VALUES (11,0,0,0), (12,0,0,0), (13,0,0,0);"
                                  "INSERT INTO Geolocation VALUES (21,0,0,0), (22,0,0,0);"
                                  "INSERT INTO Height VALUES (31,0,1), (32,0,1)"));
    SqliteCalls::Reset();
  }

  // Alignment rows with these keys, whatever they refer to.
  void InsertAlignments() {
    RunSql(Main(), QStringLiteral(
                       "INSERT INTO AntennaAlignment (AntennaAlignmentKey, SiteKey, SectorName, "
                       "AntennaPosition, AzimuthOffsetDegrees, TargetOrientationKey, LocationKey, "
                       "LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey) VALUES "
                       "(5, 1, '', '', 0, 101, 102, 0, 103, 104), (6, 1, '', '', 0, 201, 202, 0, -203, "
                       "4294967500), (7, 2, '', '', 0, 301, 302, 0, 303, 304);"
                       "INSERT INTO PathAlignment (PathAlignmentKey, PathKey, SectorName, AntennaPosition, "
                       "AzimuthOffset, PathLocationKey, TargetOrientationKey, LocationKey, LinuxTimeUTC, "
                       "MeasuredOrientationKey, SiteHeightKey) VALUES "
                       "(5, 1, '', '', 0, 101, 102, 103, 0, 104, 105), (6, 1, '', '', 0, 201, 202, 203, 0, "
                       "-204, 4294967501), (7, 2, '', '', 0, 301, 302, 303, 0, 304, 305)"));
  }

  // The calls of a kind that were recorded since.
  static QStringList Calls(const char* call) {
    return SqliteCalls::TakeTrace().filter(QRegularExpression(QStringLiteral("^%1 ").arg(call)));
  }
  QStringList Keys(const char* table, const char* column) {
    return Rows(Main(), QStringLiteral("SELECT %2 FROM %1 ORDER BY 1").arg(table, column));
  }

  bool DeleteKeys(sqlite3* db, QVector<int>* keys) {
    return Call(&Operations::GenericBatchKeyDelete, db, keys, "Orientation", "OrientationKey");
  }

  // Both look-ups of lists, and both of single keys, as one shape each.
  using Lookup = bool (AlignmentDatabaseStore::*)(sqlite3*, long long, QVector<int>*, QVector<int>*,
                                                  QVector<int>*);

  QVector<int> orientation_;
  QVector<int> geolocation_;
  QVector<int> height_;
};

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

// ---- the lists of keys of a site and of a path

struct ListLookup {
  const char* name;
  bool isSite;
  const char* sql;
  const char* label;
  QStringList nullLines;
  QStringList foundLines;
  QVector<int> orientation;
  QVector<int> geolocation;
  QVector<int> height;
};

const ListLookup listLookups[] = {
    {"site",
     true,
     "SELECT TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey FROM AntennaAlignment "
     "WHERE SiteKey=?",
     "Fetch Keys For Site",
     {"Null vector passed in for key site key retrieval"},
     {},
     {101, 103, 201, -203},
     {102, 202},
     {104, 204}},
    {"path",
     false,
     "SELECT TargetOrientationKey, MeasuredOrientationKey, PathLocationKey, LocationKey, SiteHeightKey FROM "
     "PathAlignment WHERE PathKey=?",
     "Fetch Keys For Path",
     {},
     {"Finding relevant path keys..."},
     {102, 104, 202, -204},
     {101, 103, 201, 203},
     {105, 205}},
};

class KeyListTest : public DeletionHelpersTest {
 protected:
  bool Find(const ListLookup& lookup, sqlite3* db, long long key) {
    return Find(lookup, db, key, &orientation_, &geolocation_, &height_);
  }
  bool Find(const ListLookup& lookup, sqlite3* db, long long key, QVector<int>* orientation,
            QVector<int>* geolocation, QVector<int>* height) {
    const Lookup find =
        lookup.isSite ? &Operations::GetAllRelatedSiteKeys : &Operations::GetAllRelatedPathKeys;
    return Call(find, db, key, orientation, geolocation, height);
  }
  void Clear() {
    orientation_.clear();
    geolocation_.clear();
    height_.clear();
  }
};

TEST_P(KeyListTest, NullIsRefused) {
  const ConnectionPointer db = OpenMain();
  for (const ListLookup& lookup : listLookups) {
    for (int index = 0; index < 4; ++index) {
      SqliteCalls::Reset();
      EXPECT_FALSE(Find(lookup, index == 0 ? nullptr : db.get(), 1, index == 1 ? nullptr : &orientation_,
                        index == 2 ? nullptr : &geolocation_, index == 3 ? nullptr : &height_));
      EXPECT_EQ(Lines(), lookup.nullLines) << lookup.name << index;
      EXPECT_EQ(SqliteCalls::Count(""), 0);
    }
  }
}

// Keys are 32 bits wide on the way in and out: the key bound is 1, the height read is 4294967500 - 2^32.
TEST_P(KeyListTest, KeysAreAppendedRowByRowIn32Bits) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  for (const ListLookup& lookup : listLookups) {
    SCOPED_TRACE(lookup.name);
    Clear();
    orientation_ << 9;
    geolocation_ << 8;
    height_ << 7;
    SqliteCalls::Record();
    EXPECT_TRUE(Find(lookup, db.get(), 4294967297));
    EXPECT_EQ(Calls("bind_int"), QStringList(QStringLiteral("bind_int 1, 1 = 0 [%1]").arg(lookup.sql)));
    EXPECT_EQ(Lines(), lookup.foundLines);
    EXPECT_EQ(orientation_, QVector<int>{9} + lookup.orientation);
    EXPECT_EQ(geolocation_, QVector<int>{8} + lookup.geolocation);
    EXPECT_EQ(height_, QVector<int>{7} + lookup.height);
  }
}

TEST_P(KeyListTest, OtherStepResultsAreSteppedOver) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  for (const ListLookup& lookup : listLookups) {
    Clear();
    SqliteCalls::Arm(Fault("step", SQLITE_BUSY)
                         .Results({SQLITE_BUSY, SQLITE_ERROR, SQLITE_OK, SQLITE_BUSY, SQLITE_BUSY,
                                   SQLITE_IOERR, SQLITE_MISUSE}));
    EXPECT_TRUE(Find(lookup, db.get(), 1));
    EXPECT_EQ(SqliteCalls::FiredCount(), 7);
    SqliteCalls::Reset();
    EXPECT_EQ(Lines(), lookup.foundLines);
    EXPECT_EQ(orientation_, lookup.orientation);
    EXPECT_EQ(height_, lookup.height);
  }
}

TEST_P(KeyListTest, AStatementThatCannotBePreparedFails) {
  const ConnectionPointer db = OpenMain();
  for (const ListLookup& lookup : listLookups) {
    SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).OnText(lookup.sql));
    EXPECT_FALSE(Find(lookup, db.get(), 1));
    EXPECT_EQ(
        Lines(),
        lookup.foundLines +
            QStringList(QStringLiteral("SQL prepare  %1  failed with  7 : out of memory").arg(lookup.label)));
    EXPECT_TRUE(orientation_.isEmpty());
  }
}

// Whatever finalises the statement a second time must not reach the engine.
TEST_P(KeyListTest, AFailedBindIsLoggedAndTheStatementFinalisedOnce) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  for (const ListLookup& lookup : listLookups) {
    SqliteCalls::Reset();
    SqliteCalls::Arm(Fault("bind_int", SQLITE_RANGE).OnText(lookup.sql));
    EXPECT_FALSE(Find(lookup, db.get(), 1));
    EXPECT_EQ(Lines(),
              lookup.foundLines + QStringList("SQL bind failed with  25 : column index out of range"));
    EXPECT_EQ(SqliteCalls::Count("finalize"), 1);
    EXPECT_EQ(SqliteCalls::Count("step"), 0);
    EXPECT_TRUE(orientation_.isEmpty());
  }
}

// ---- the keys of one alignment

class SingleKeysTest : public DeletionHelpersTest {
 protected:
  bool FindSite(sqlite3* db, long long key) {
    return Call(&Operations::GetSingleSiteMeasurementKeys, db, key, &keys_[0], &keys_[1], &keys_[2],
                &keys_[3]);
  }
  bool FindPath(sqlite3* db, long long key) {
    return Call(&Operations::GetSinglePathMeasurementKeys, db, key, &keys_[0], &keys_[1], &keys_[2],
                &keys_[3], &keys_[4]);
  }

  std::vector<long long> keys_{-1, -2, -3, -4, -5};
  const std::vector<long long> untouched_ = keys_;
};

TEST_P(SingleKeysTest, NullIsRefusedWithoutALine) {
  const ConnectionPointer db = OpenMain();
  SqliteCalls::Reset();
  const auto output = [&](int index, int null) { return index == null ? nullptr : &keys_[0]; };
  EXPECT_FALSE(FindSite(nullptr, 5));
  for (int null = 0; null < 4; ++null) {
    EXPECT_FALSE(Call(&Operations::GetSingleSiteMeasurementKeys, db.get(), 5, output(0, null),
                      output(1, null), output(2, null), output(3, null)));
  }
  EXPECT_FALSE(FindPath(nullptr, 5));
  for (int null = 0; null < 5; ++null) {
    EXPECT_FALSE(Call(&Operations::GetSinglePathMeasurementKeys, db.get(), 5, output(0, null),
                      output(1, null), output(2, null), output(3, null), output(4, null)));
  }
  EXPECT_EQ(SqliteCalls::Count(""), 0);
  EXPECT_EQ(keys_, untouched_);
}

TEST_P(SingleKeysTest, KeysComeInColumnOrderSignExtended) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  EXPECT_TRUE(FindSite(db.get(), 6 + 4294967296));  // only the low 32 bits are bound
  EXPECT_EQ(keys_, std::vector<long long>({201, -203, 202, 204, -5}));
  EXPECT_TRUE(FindPath(db.get(), 6 + 4294967296));
  EXPECT_EQ(keys_, std::vector<long long>({202, -204, 201, 203, 205}));
  EXPECT_EQ(Lines(), QStringList({"Finding keys for a specific path measurement", "Sqlite step rval:  100",
                                  "Sqlite step rval:  101"}));
}

TEST_P(SingleKeysTest, NoRowLeavesTheOutputsAlone) {
  const ConnectionPointer db = OpenMain();
  EXPECT_TRUE(FindSite(db.get(), 5));
  EXPECT_TRUE(FindPath(db.get(), 5));
  EXPECT_EQ(keys_, untouched_);
  EXPECT_EQ(Lines(), QStringList({"Finding keys for a specific path measurement", "Sqlite step rval:  101"}));
}

TEST_P(SingleKeysTest, OtherStepResultsAreSteppedOver) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(3));
  EXPECT_TRUE(FindSite(db.get(), 5));
  EXPECT_EQ(keys_, std::vector<long long>({101, 103, 102, 104, -5}));
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Results({SQLITE_BUSY, SQLITE_ERROR}));
  EXPECT_TRUE(FindPath(db.get(), 5));
  EXPECT_EQ(keys_, std::vector<long long>({102, 104, 101, 103, 105}));
  EXPECT_EQ(Lines(),
            QStringList({"Finding keys for a specific path measurement", "Sqlite step rval:  5",
                         "Sqlite step rval:  1", "Sqlite step rval:  100", "Sqlite step rval:  101"}));
}

TEST_P(SingleKeysTest, FailuresOfPreparingAndBinding) {
  InsertAlignments();
  const ConnectionPointer db = OpenMain();
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).Times(2));
  EXPECT_FALSE(FindSite(db.get(), 5));
  EXPECT_FALSE(FindPath(db.get(), 5));
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("bind_int", SQLITE_RANGE).Times(2));
  EXPECT_FALSE(FindSite(db.get(), 5));
  EXPECT_EQ(SqliteCalls::Count("finalize"), 1);
  EXPECT_FALSE(FindPath(db.get(), 5));
  EXPECT_EQ(SqliteCalls::Count("finalize"), 2);
  EXPECT_EQ(Lines(), QStringList({"SQL prepare  Fetch Keys For Site  failed with  7 : out of memory",
                                  "Finding keys for a specific path measurement",
                                  "SQL prepare  Fetch Keys For Path  failed with  7 : out of memory",
                                  "SQL bind failed with  25 : column index out of range",
                                  "Finding keys for a specific path measurement",
                                  "SQL bind failed with  25 : column index out of range"}));
  EXPECT_EQ(keys_, untouched_);
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
              Fault::KilledStatus);
    EXPECT_EQ(Keys(owner.table, owner.column), QStringList({"1", "4294967297"}));
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionHelpersTest);
INSTANTIATE_FOR_ALL_VERSIONS(KeyListTest);
INSTANTIATE_FOR_ALL_VERSIONS(SingleKeysTest);
INSTANTIATE_FOR_ALL_VERSIONS(OwnerDeleteTest);

}  // namespace
