// The operations that write or look up one row each, called on their own.
#include <sqlite3.h>

#include "tests/store/SavedRows.h"
#include "tests/support/SqliteCalls.h"

namespace {

constexpr long long untouched = 77;
constexpr long long above32Bits = 4294967296;  // its low 32 bits are 0

class RowWritersTest : public CreatedStoreTest {
 protected:
  RowWritersTest() { SqliteCalls::Reset(); }

  bool SaveSite(QString identifier) {
    return Call(&Operations::SaveSiteIdentifier, db_.get(), identifier, &key_);
  }
  bool SavePath(QString identifier) {
    return Call(&Operations::SavePathIdentifier, db_.get(), identifier, &key_);
  }
  bool FindSite(QString identifier) {
    return Call(&Operations::GetIDForSiteIdentifier, db_.get(), identifier, &key_);
  }
  bool FindPath(QString identifier) {
    return Call(&Operations::GetIDForPathIdentifier, db_.get(), identifier, &key_);
  }

  ConnectionPointer db_ = OpenMain();
  SampleSiteAlignment site_{2};
  SamplePathAlignment path_{2};
  QString text_ = "text";
  long long key_ = untouched;
};

TEST_P(RowWritersTest, RefuseNullsWithoutALine) {
  sqlite3* const db = db_.get();
  long long* const none = nullptr;
  EXPECT_FALSE(Call(&Operations::GetIDForSiteIdentifier, nullptr, text_, &key_));
  EXPECT_FALSE(Call(&Operations::GetIDForSiteIdentifier, db, text_, none));
  EXPECT_FALSE(Call(&Operations::GetIDForPathIdentifier, nullptr, text_, &key_));
  EXPECT_FALSE(Call(&Operations::GetIDForPathIdentifier, db, text_, none));
  EXPECT_FALSE(Call(&Operations::SaveSiteIdentifier, nullptr, text_, &key_));
  EXPECT_FALSE(Call(&Operations::SaveSiteIdentifier, db, text_, none));
  EXPECT_FALSE(Call(&Operations::SavePathIdentifier, nullptr, text_, &key_));
  EXPECT_FALSE(Call(&Operations::SavePathIdentifier, db, text_, none));
  EXPECT_FALSE(Call(&Operations::SaveOrientation, nullptr, &site_.measured, &key_));
  EXPECT_FALSE(Call(&Operations::SaveOrientation, db, nullptr, &key_));
  EXPECT_FALSE(Call(&Operations::SaveOrientation, db, &site_.measured, none));
  EXPECT_FALSE(Call(&Operations::SaveGeolocation, nullptr, &site_.location, &key_));
  EXPECT_FALSE(Call(&Operations::SaveGeolocation, db, nullptr, &key_));
  EXPECT_FALSE(Call(&Operations::SaveGeolocation, db, &site_.location, none));
  EXPECT_FALSE(Call(&Operations::SaveHeight, nullptr, &site_.height, &key_));
  EXPECT_FALSE(Call(&Operations::SaveHeight, db, nullptr, &key_));
  EXPECT_FALSE(Call(&Operations::SaveHeight, db, &site_.height, none));
  EXPECT_FALSE(Call(&Operations::SaveAntennaAlignment, nullptr, 1, text_, text_, 0.0F, 1, 2, 3, 4, site_.time,
                    &key_, true, text_, 0));
  EXPECT_FALSE(Call(&Operations::SaveAntennaAlignment, db, 1, text_, text_, 0.0F, 1, 2, 3, 4, site_.time,
                    none, true, text_, 0));
  EXPECT_FALSE(
      Call(&Operations::SavePathAlignment, nullptr, 1, 0.0F, 1, 2, 3, 4, 5, site_.time, &key_, true, text_));
  EXPECT_FALSE(
      Call(&Operations::SavePathAlignment, db, 1, 0.0F, 1, 2, 3, 4, 5, site_.time, none, true, text_));
  EXPECT_FALSE(Call(&Operations::SaveAntennaAlignmentThresholds, nullptr, 1, &key_, 1, 0.0, 0.0, 0.0));
  EXPECT_FALSE(Call(&Operations::SaveAntennaAlignmentThresholds, db, 0, &key_, 1, 0.0, 0.0, 0.0));
  EXPECT_FALSE(Call(&Operations::SavePathAlignmentThresholds, nullptr, 1, &key_, 1, 0.0F, 0.0F, 0.0F));
  EXPECT_FALSE(Call(&Operations::SavePathAlignmentThresholds, db, 0, &key_, 1, 0.0F, 0.0F, 0.0F));
  EXPECT_EQ(key_, untouched);
  EXPECT_EQ(SqliteCalls::Count(""), 0);
}

TEST_P(RowWritersTest, AnUnknownIdentifierIsFoundAsZero) {
  EXPECT_TRUE(FindSite("nowhere"));
  EXPECT_EQ(key_, 0);
  key_ = untouched;
  EXPECT_TRUE(FindPath("nowhere"));
  EXPECT_EQ(key_, 0);
}

TEST_P(RowWritersTest, IdentifiersAreFoundExactly) {
  EXPECT_TRUE(SaveSite("A") && SaveSite("B"));
  EXPECT_TRUE(FindSite("B"));
  EXPECT_EQ(key_, 2);
  EXPECT_TRUE(FindSite("b"));
  EXPECT_EQ(key_, 0);
  EXPECT_TRUE(SavePath("A"));
  EXPECT_TRUE(FindPath("A"));
  EXPECT_EQ(key_, 1);
}

TEST_P(RowWritersTest, ALookUpThatFailsLeavesMinusOne) {
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_BUSY));
  SqliteCalls::Arm(Fault("bind_text", SQLITE_NOMEM));
  EXPECT_FALSE(FindSite("A"));
  EXPECT_EQ(key_, -1);
  key_ = untouched;
  EXPECT_FALSE(FindPath("A"));
  EXPECT_EQ(key_, -1);
  EXPECT_EQ(Lines(),
            (QStringList{"SQL prepare  Select SiteKey for Site Identifier  failed with  5 : database is "
                         "locked",
                         "SQL bind failed with  7 : out of memory"}));
}

TEST_P(RowWritersTest, KeysAreReadIn32Bits) {
  RunSql(Main(),
         "INSERT INTO Sites VALUES (4294967303, 'A'), (2147483648, 'B');"
         "INSERT INTO Paths VALUES (4294967304, 'A');");
  EXPECT_TRUE(FindSite("A"));
  EXPECT_EQ(key_, 7);
  EXPECT_TRUE(FindPath("A"));
  EXPECT_EQ(key_, 8);
  EXPECT_TRUE(FindSite("B"));
  EXPECT_EQ(key_, -2147483648LL);
}

// A key below 1 counts as none, and then the identifier cannot be inserted a second time.
TEST_P(RowWritersTest, ASiteWithANegativeKeyIsNotReused) {
  RunSql(Main(), "INSERT INTO Sites VALUES (-5, 'A'); INSERT INTO Paths VALUES (1, 'P');");
  EXPECT_FALSE(SaveSite("A"));
  EXPECT_EQ(key_, 0);
  EXPECT_TRUE(SavePath("P"));
  EXPECT_EQ(key_, 1);
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Sites"), QStringList{"-5|'A'"});
}

// The key is whatever the connection inserted last, even if nothing was inserted now.
TEST_P(RowWritersTest, AFailedInsertOfAnIdentifierAnswersTheLastRow) {
  SampleSiteAlignment sample(1);
  for (int count = 0; count < 3; ++count) {
    EXPECT_TRUE(Call(&Operations::SaveOrientation, db_.get(), &sample.measured, &key_));
  }
  EXPECT_EQ(key_, 3);
  for (const char* call : {"bind_text", "step"}) {
    SqliteCalls::Arm(Fault(call, SQLITE_NOMEM).OnText("INSERT").Times(2));
    key_ = untouched;
    EXPECT_FALSE(SaveSite("A"));
    EXPECT_EQ(key_, 3);
    key_ = untouched;
    EXPECT_FALSE(SavePath("A"));
    EXPECT_EQ(key_, 3);
  }
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).OnText("INSERT"));
  EXPECT_FALSE(SaveSite("A"));
  EXPECT_EQ(key_, 0);
  const QString bind = "SQL bind failed with  7 : out of memory";
  EXPECT_EQ(Lines(),
            (QStringList{bind, bind, "SQL prepare  Insert Site Identifier  failed with  7 : out of memory"}));
}

TEST_P(RowWritersTest, NewKeysAreReadIn64Bits) {
  RunSql(Main(),
         "INSERT INTO sqlite_sequence VALUES ('Orientation', 5000000000), ('Geolocation', 6000000000), "
         "('Height', 7000000000), ('Sites', 8000000000);");
  EXPECT_TRUE(Call(&Operations::SaveOrientation, db_.get(), &site_.measured, &key_));
  EXPECT_EQ(key_, 5000000001);
  EXPECT_TRUE(Call(&Operations::SaveGeolocation, db_.get(), &site_.location, &key_));
  EXPECT_EQ(key_, 6000000001);
  EXPECT_TRUE(Call(&Operations::SaveHeight, db_.get(), &site_.height, &key_));
  EXPECT_EQ(key_, 7000000001);
  EXPECT_TRUE(SaveSite("A"));
  EXPECT_EQ(key_, 8000000001);
}

TEST_P(RowWritersTest, AnInsertThatFailsLeavesTheKey) {
  SqliteCalls::Arm(Fault("step", SQLITE_IOERR).Times(3));
  EXPECT_FALSE(Call(&Operations::SaveOrientation, db_.get(), &site_.measured, &key_));
  EXPECT_FALSE(Call(&Operations::SaveGeolocation, db_.get(), &site_.location, &key_));
  EXPECT_FALSE(Call(&Operations::SaveHeight, db_.get(), &site_.height, &key_));
  // Nothing that it refers to exists.
  EXPECT_FALSE(Call(&Operations::SaveAntennaAlignment, db_.get(), 1, text_, text_, 0.0F, 1, 2, 3, 4,
                    site_.time, &key_, true, text_, 0));
  EXPECT_FALSE(Call(&Operations::SavePathAlignment, db_.get(), 1, 0.0F, 1, 2, 3, 4, 5, site_.time, &key_,
                    true, text_));
  EXPECT_EQ(key_, untouched);
  EXPECT_EQ(Lines(), QStringList{"SQL last step failed with  19 : FOREIGN KEY constraint failed"});
}

TEST_P(RowWritersTest, AlignmentsTakeTheLow32BitsOfEveryKey) {
  EXPECT_TRUE(Call(&Operations::ExecuteNonQueryCommand, db_.get(), "PRAGMA foreign_keys = OFF", "Test"));
  QString sector = "S";
  QString position = "P";
  EXPECT_TRUE(Call(&Operations::SaveAntennaAlignment, db_.get(), above32Bits + 1, sector, position, 0.5F,
                   above32Bits + 2, above32Bits + 3, above32Bits + 4, above32Bits + 5, site_.time, &key_,
                   true, QString("note 2"), 12));
  EXPECT_EQ(key_, 1);
  EXPECT_TRUE(Call(&Operations::SavePathAlignment, db_.get(), above32Bits + 1, 0.5F, above32Bits + 2,
                   above32Bits + 3, above32Bits + 4, above32Bits + 5, above32Bits - 1, path_.time, &key_,
                   true, QString("note 2")));
  EXPECT_EQ(
      SavedRows(Main()),
      (QStringList{
          "AntennaAlignment|1|1|1|'S'|'P'|0.5|2|4|1500000002|3|5" + SiteColumnsOfSample2(Version()),
          "PathAlignment|1|1|1|'ZZZ'|'ZZZ'|0.5|2|3|5|1500000002|4|-1" + PathColumnsOfSample2(Version())}));
}

INSTANTIATE_FOR_ALL_VERSIONS(RowWritersTest);

class ThresholdWritersTest : public CreatedStoreTest {
 protected:
  ConnectionPointer db_ = OpenThresholds();
  long long key_ = untouched;
};

TEST_P(ThresholdWritersTest, TakeTheLow32BitsOfEveryKey) {
  EXPECT_TRUE(Call(&Operations::SaveAntennaAlignmentThresholds, db_.get(), above32Bits + 1, &key_,
                   above32Bits + 2, 0.5, 1.5, 2.5));
  EXPECT_EQ(key_, 1);
  EXPECT_TRUE(Call(&Operations::SaveAntennaAlignmentThresholds, db_.get(), -1, &key_, -1, 0.5, 1.5, 2.5));
  EXPECT_EQ(key_, 2);
  EXPECT_TRUE(Call(&Operations::SavePathAlignmentThresholds, db_.get(), above32Bits - 1, &key_,
                   above32Bits + 2, 0.5F, 1.5F, 2.5F));
  EXPECT_EQ(key_, 1);
  // The low bits are zero, the key is not.
  EXPECT_TRUE(
      Call(&Operations::SavePathAlignmentThresholds, db_.get(), above32Bits, &key_, 3, 0.5F, 1.5F, 2.5F));
  EXPECT_EQ(SavedRows(Thresholds()), (QStringList{"AntennaAlignmentThresholds|1|1|1|2|0.5|1.5|2.5",
                                                  "AntennaAlignmentThresholds|2|2|-1|-1|0.5|1.5|2.5",
                                                  "PathAlignmentThresholds|1|1|-1|2|0.5|1.5|2.5",
                                                  "PathAlignmentThresholds|2|2|0|3|0.5|1.5|2.5"}));
}

// A site's thresholds arrive as doubles, a path's as floats that are widened.
TEST_P(ThresholdWritersTest, SitesKeepWhatDoublesHold) {
  EXPECT_TRUE(Call(&Operations::SaveAntennaAlignmentThresholds, db_.get(), 1, &key_, 1, 0.1, 0.1, 0.1));
  EXPECT_TRUE(Call(&Operations::SavePathAlignmentThresholds, db_.get(), 1, &key_, 1, 0.1F, 0.1F, 0.1F));
  EXPECT_EQ(Rows(Thresholds(), "SELECT AzimuthThreshold = 0.1 FROM AntennaAlignmentThresholds"),
            QStringList{"1"});
  EXPECT_EQ(Rows(Thresholds(), "SELECT AzimuthThreshold = 0.10000000149011612 FROM PathAlignmentThresholds"),
            QStringList{"1"});
}

INSTANTIATE_TEST_SUITE_P(Current, ThresholdWritersTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

}  // namespace
