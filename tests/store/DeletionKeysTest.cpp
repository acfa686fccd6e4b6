// Looking up the keys that deletions need.
#include <sqlite3.h>

#include "tests/store/DeletionHelpers.h"

namespace {

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

INSTANTIATE_FOR_ALL_VERSIONS(KeyListTest);
INSTANTIATE_FOR_ALL_VERSIONS(SingleKeysTest);

}  // namespace
