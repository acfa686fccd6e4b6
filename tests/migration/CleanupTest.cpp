// The removal of what no alignment refers to, the same in the five converters that have it.
#include "migration/UnusedRecords.h"
#include "tests/migration/ConversionTest.h"
#include "tests/support/ShimVfs.h"

namespace {

class CleanupTest : public ConversionTest {
 protected:
  static QStringList CleanupAborted(const QStringList& lines) {
    return Aborted(Tested(), lines, "DeleteUnusedRecords");
  }
  // What a deletion has logged when it fails, with the tables before it done.
  static QStringList UpToFirstDeletion(const CleanupTexts& texts) {
    return CleanupLines(texts.table) + texts.Lines(texts.unused, true);
  }
  // All statements that read keys, in the order in which they run.
  static std::vector<QByteArray> KeyQueries() {
    std::vector<QByteArray> queries{selectSiteKeys, selectPathKeys};
    for (const CleanupTexts& texts : Cleanups()) queries.emplace_back(texts.select);
    return queries;
  }
  QString Keys(const CleanupTexts& texts) const {
    return Rows(Main(), QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(texts.key, texts.table))
        .join(QLatin1Char(' '));
  }
};
INSTANTIATE_TEST_SUITE_P(Converters, CleanupTest,
                         testing::ValuesIn(Converters().begin() + 1, Converters().end()), NameOf);

constexpr char failed[] = "Failed to delete a record, aborting";

TEST_P(CleanupTest, KeysCannotBeAskedFor) {
  for (const CleanupTexts& texts : Cleanups()) {
    SCOPED_TRACE(texts.table);
    ExpectFailure(Failing("prepare_v2", texts.select),
                  CleanupAborted(CleanupLines(texts.table) + QStringList{PrepareFailed(texts.selectLabel),
                                                                         QString(texts.collectFailure)}));
  }
}

TEST_P(CleanupTest, DeletionCannotBePrepared) {
  for (const CleanupTexts& texts : Cleanups()) {
    SCOPED_TRACE(texts.table);
    ExpectFailure(
        Failing("prepare_v2", texts.deleteSql),
        CleanupAborted(UpToFirstDeletion(texts) + QStringList{PrepareFailed(texts.deleteLabel), failed}));
  }
}

TEST_P(CleanupTest, KeyCannotBeBound) {
  for (const CleanupTexts& texts : Cleanups()) {
    SCOPED_TRACE(texts.table);
    ExpectFailure(
        Failing("bind_int64", texts.deleteSql),
        CleanupAborted(UpToFirstDeletion(texts) + QStringList{BindFailed(texts.bindFailure), failed}));
  }
}

// Done at one of five steps; a sixth is still made, but does not help.
TEST_P(CleanupTest, DeletionStepsFiveTimes) {
  for (const CleanupTexts& texts : Cleanups()) {
    SCOPED_TRACE(texts.table);
    Load();
    ExpectSuccess(Failing("step", texts.deleteSql).Times(4), CleanupLines());
    ExpectDump(Main(), Expected());
    Load();
    ExpectFailure(Failing("step", texts.deleteSql).Times(5),
                  CleanupAborted(UpToFirstDeletion(texts) + QStringList{failed}));
    SqliteCalls::Record();
    SqliteCalls::Arm(Failing("step", texts.deleteSql).Always());
    EXPECT_FALSE(Convert(Tested(), Main()).result);
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("step = ").filter(texts.deleteSql).size(), 6);
    SqliteCalls::Reset();
  }
}

// A later deletion that fails: those before it are part of the discarded copy.
TEST_P(CleanupTest, LaterDeletionFails) {
  const CleanupTexts& texts = Cleanups()[0];
  QStringList lines = texts.Lines(texts.unused);
  lines.removeLast();
  ExpectFailure(Failing("prepare_v2", texts.deleteSql).At(2),
                CleanupAborted(lines + QStringList{PrepareFailed(texts.deleteLabel), failed}));
}

TEST_P(CleanupTest, SixFailedStepsEndTheReading) {
  const QString upTo[] = {"Orientation", "Orientation", "Orientation", "Geolocation",
                          "Height",      "Sites",       "Paths"};
  std::size_t number = 0;
  for (const QByteArray& query : KeyQueries()) {
    SCOPED_TRACE(query.constData());
    const QStringList lines = CleanupAborted(CleanupLines(upTo[number++].toLatin1()));
    ExpectFailure(Failing("step", query).Times(6), lines);
    // Rows before and between the failures do not help.
    ExpectFailure(Failing("step", query).At(2).Times(6), lines);
    SqliteCalls::Arm(Failing("step", query).At(5).Times(3));
    ExpectFailure(Failing("step", query).Times(3), lines);
  }
}

TEST_P(CleanupTest, FiveFailedStepsAreOvercome) {
  for (const QByteArray& query : KeyQueries()) {
    SCOPED_TRACE(query.constData());
    Load();
    ExpectSuccess(Failing("step", query).Times(5), CleanupLines());
    ExpectDump(Main(), Expected());
    Load();
    SqliteCalls::Arm(Failing("step", query).At(5).Times(2));
    ExpectSuccess(Failing("step", query).Times(3), CleanupLines());
    ExpectDump(Main(), Expected());
  }
}

TEST_P(CleanupTest, GuardIsToldOfEveryFailedStep) {
  SqliteCalls::Arm(Failing("step", selectPathKeys).Times(6));
  Watched watched = ConvertWatched(Tested(), Main());
  EXPECT_FALSE(watched.converted.result);
  EXPECT_EQ(watched.codes, QVector<int>(6, SQLITE_IOERR));
  SqliteCalls::Arm(Failing("step", selectPathKeys).Times(2));
  watched = ConvertWatched(Tested(), Main());
  EXPECT_TRUE(watched.converted.result);
  EXPECT_EQ(watched.codes, QVector<int>(2, SQLITE_IOERR));
}

// After each error the engine begins again with the first row, so that rows come for ever.
TEST_P(CleanupTest, ReadErrorInTheMiddleOfATable) {
  RunSql(Main(),
         "WITH RECURSIVE N(n) AS (SELECT 100 UNION ALL SELECT n + 1 FROM N WHERE n < 5000) "
         "INSERT INTO Orientation SELECT n, 1.5, 2.5, 3.5 FROM N");
  const QByteArray query = Cleanups()[0].select;
  const ShimVfs vfs;
  SqliteCalls::Record();
  SqliteCalls::Arm(Fault::Before("prepare_v2", [] {
                     ShimVfs::Arm(
                         Fault("read", SQLITE_IOERR_READ).OnFile("TemporaryDB.sqlite").At(8).Always());
                   }).OnText(query));
  const QByteArray before = ContentOf(Main());
  const Converted converted = Convert(Tested(), Main());
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines, CleanupAborted({}));
  const QStringList steps = SqliteCalls::TakeTrace().filter("step = ").filter(query);
  EXPECT_EQ(steps.filter("step = 10 ").size(), 6);
  EXPECT_GT(steps.filter("step = 100 ").size(), 6) << "no rows before the error";
  ExpectUntouched(before, false);
}

TEST_P(CleanupTest, StepsThatReportNeitherRowNorDoneAreCountedAlike) {
  ExpectFailure(
      Fault("step", 0)
          .OnText(selectPathKeys)
          .Results({SQLITE_OK, SQLITE_BUSY, SQLITE_FULL, SQLITE_NOMEM, SQLITE_CORRUPT, SQLITE_MISUSE}),
      CleanupAborted({}));
}

// The keys of site alignments are then missing, and the first row that one of them refers to cannot be
// deleted.
TEST_P(CleanupTest, SiteKeysCannotBeAskedFor) {
  const QStringList started{PrepareFailed("Get site keys"), "SQlite site keys statement creation failed"};
  ExpectFailure(Failing("prepare_v2", selectSiteKeys),
                CleanupAborted(started + QStringList{"Unused orientation keys vector length:  13",
                                                     "Deleting record with key 1", failed}));
  // Without site alignments no key is missing.
  RunSql(Main(), "DELETE FROM AntennaAlignment");
  SqliteCalls::Arm(Failing("prepare_v2", selectSiteKeys));
  const Converted converted = ConvertWithFault();
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines.mid(0, 2), started);
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Sites"), QStringList());
}

TEST_P(CleanupTest, PathKeysCannotBeAskedFor) {
  ExpectFailure(Failing("prepare_v2", selectPathKeys),
                CleanupAborted({PrepareFailed("Get path keys"), "SQLite statement creation failed"}));
}

// Stays attached until the connection closes; the 11 steps before it have detached.
TEST_P(CleanupTest, StaysAttachedWhenPathKeysCannotBeAskedFor) {
  SqliteCalls::Record();
  SqliteCalls::Arm(Failing("prepare_v2", selectPathKeys));
  EXPECT_FALSE(Convert(Tested(), Main()).result);
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("exec DETACH").size(), 11);
}

TEST_P(CleanupTest, DetachedAfterEveryOtherFailure) {
  for (const Fault& fault :
       {Failing("step", selectSiteKeys).Times(6), Failing("step", selectPathKeys).Times(6),
        Failing("prepare_v2", Cleanups()[4].select)}) {
    SqliteCalls::Record();
    SqliteCalls::Arm(fault);
    EXPECT_FALSE(Convert(Tested(), Main()).result);
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("exec DETACH").size(), 12);
    SqliteCalls::Reset();
  }
}

TEST_P(CleanupTest, NothingUnused) {
  for (const CleanupTexts& texts : Cleanups()) {
    RunSql(Main(), QStringLiteral("DELETE FROM %1 WHERE %2 IN (%3)")
                       .arg(texts.table, texts.key, texts.unused.join(QLatin1Char(','))));
  }
  SqliteCalls::Record();
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines,
            (QStringList{"Unused orientation keys vector length:  0",
                         "Unused geolocation keys vector length:  0", "Unused height record count:  0",
                         "Unused site record count:  0", "Unused path record count:  0"}));
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("DELETE FROM"), QStringList());
}

// What only one column of an alignment refers to is kept.
TEST_P(CleanupTest, EveryReferenceKeeps) {
  const struct {
    const char* column;
    const char* table;
  } references[] = {
      {"AntennaAlignment.TargetOrientationKey", "Orientation"},
      {"AntennaAlignment.MeasuredOrientationKey", "Orientation"},
      {"AntennaAlignment.LocationKey", "Geolocation"},
      {"AntennaAlignment.SiteHeightKey", "Height"},
      {"AntennaAlignment.SiteKey", "Sites"},
      {"PathAlignment.TargetOrientationKey", "Orientation"},
      {"PathAlignment.MeasuredOrientationKey", "Orientation"},
      {"PathAlignment.LocationKey", "Geolocation"},
      {"PathAlignment.PathLocationKey", "Geolocation"},
      {"PathAlignment.SiteHeightKey", "Height"},
      {"PathAlignment.PathKey", "Paths"},
  };
  for (const auto& [column, table] : references) {
    SCOPED_TRACE(column);
    const CleanupTexts* cleanup = nullptr;
    for (const CleanupTexts& texts : Cleanups()) {
      if (qstrcmp(texts.table, table) == 0) cleanup = &texts;
    }
    ASSERT_NE(cleanup, nullptr);
    Load();
    // The first alignment of its table now refers to a row that was unused before.
    const QString kept = cleanup->unused.first();
    RunSql(Main(), QStringLiteral("UPDATE %1 SET %2 = %3 WHERE RowID = 1")
                       .arg(QString(column).section('.', 0, 0), QString(column).section('.', 1, 1), kept));
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    EXPECT_TRUE(Keys(*cleanup).split(' ').contains(kept)) << Keys(*cleanup).toStdString();
  }
}

// Keys are read as 32 bits and bound as 64: the deletion of an unused row with a larger key does not find it,
// and a row whose key reads the same as one that is in use stays.
TEST_P(CleanupTest, KeysBeyond32Bits) {
  RunSql(Main(),
         "INSERT INTO Height VALUES (4294967796, 1.5, 0);"   // 500, unused: stays
         "INSERT INTO Height VALUES (4294967297, 2.5, 0);"   // 1, which is in use: stays
         "INSERT INTO Height VALUES (2147483648, 3.5, 0);"   // -2147483648, unused: stays
         "INSERT INTO Height VALUES (-2147483648, 4.5, 0);"  // likewise, and goes
         "INSERT INTO Height VALUES (501, 5.5, 0);"          // kept by the next
         "INSERT INTO Height VALUES (4294967797, 6.5, 0);"   // in use below
         "UPDATE PathAlignment SET SiteHeightKey = 4294967797 WHERE RowID = 1;");
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  const QString query = "SELECT HeightKey FROM Height ORDER BY HeightKey";
  EXPECT_EQ(Rows(Main(), query).join(' '),
            QString("1 2 3 4 6 9 10 501 2147483648 4294967297 4294967796 4294967797"));
  QStringList logged = converted.lines.mid(converted.lines.indexOf("Unused height record count:  6"), 7);
  EXPECT_EQ(logged, (QStringList{"Unused height record count:  6", "Deleting record with key -2147483648",
                                 "Deleting record with key 5", "Deleting record with key 8",
                                 "Deleting record with key 12", "Deleting record with key -2147483648",
                                 "Deleting record with key 500"}));
}

TEST(UnusedRecordsTest, RefusesNull) {
  using Cleanup = bool (*)(sqlite3*, QVector<int>*);
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(":memory:", &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  QVector<int> keys;
  const LogCapture log;
  EXPECT_FALSE(UnusedRecords::DeleteUnusedRecords(nullptr));
  for (const Cleanup cleanup :
       {&UnusedRecords::DeleteUnusedOrientationRecords, &UnusedRecords::DeleteUnusedGeolocationRecords,
        &UnusedRecords::DeleteUnusedHeightRecords, &UnusedRecords::DeleteUnusedSiteRecords,
        &UnusedRecords::DeleteUnusedPathRecords}) {
    EXPECT_FALSE(cleanup(nullptr, &keys));
    EXPECT_FALSE(cleanup(db, nullptr));
  }
  EXPECT_EQ(log.Lines(), QStringList());
  sqlite3_close(db);
}

}  // namespace
