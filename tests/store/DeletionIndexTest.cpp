// Deleting one report of a site or of a path by its position.
#include <sqlite3.h>

#include <QRegularExpression>

#include "tests/store/DeletionScene.h"

namespace {

const QString ending = QStringLiteral("Ending transaction");
const QString rollingBack = QStringLiteral("Rolling back transaction");

bool DeleteFromAlpha(DeletionScene* scene, int index) {
  return scene->Store()->DeleteReportsBySiteAndIndex(scene->alpha_, index);
}
bool DeleteFromGamma(DeletionScene* scene, int index) {
  return scene->Store()->DeleteReportsByPathAndIndex(scene->gamma_, index);
}

// How many connections a retrieval opens; those of a path's stay open.
int Retrieval(const StoreVersion& version) { return version.HasThresholdsFile() ? 2 : 1; }
QStringList PathRetrieval(const StoreVersion& version) {
  QStringList lines;
  while (lines.size() < Retrieval(version)) lines << CloseFailure();
  return lines;
}
// The look-up of the keys of the path's report.
QStringList PathKeysFound(const StoreVersion& version) {
  if (!version.DeletesAssociatedRecords()) return {};
  return {"Finding keys for a specific path measurement", "Sqlite step rval:  100", "Sqlite step rval:  101"};
}

// One line for each of the two transactions.
QStringList Committed(const StoreVersion& version) {
  return version.HasThresholdsFile() ? QStringList{ending, ending} : QStringList{ending};
}

class DeletionIndexTest : public DeletionTest {
 protected:
  // Announces what the given number of path retrievals leave open.
  static void ExpectRetrievals(int count) {
    SqliteLeakGuard::ExpectLeaked(count * Retrieval(GetParam()), count * Retrieval(GetParam()));
  }
};

// Reports are ordered by sector: position 0 is alignment 2. The site stays, and the thresholds, which are
// looked for under key 0.
TEST_P(DeletionIndexTest, OneReportOfASite) {
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_EQ(scene_.Lines(), Committed(GetParam()));
  scene_.ExpectGone(RowsOf("AntennaAlignment", {2}) +
                        scene_.IfAssociated(RowsOf("Orientation", {3, 4}) + RowsOf("Geolocation", {2}) +
                                            RowsOf("Height", {2})),
                    {});
}

TEST_P(DeletionIndexTest, TheLastReportOfASiteLeavesTheSite) {
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 1));
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_FALSE(DeleteFromAlpha(&scene_, 0));
  EXPECT_EQ(scene_.Lines(), Committed(GetParam()) + Committed(GetParam()));
  scene_.ExpectGone(RowsOf("AntennaAlignment", {1, 2}) + scene_.AlphaAssociated(), {});
  EXPECT_EQ(scene_.Store()->GetSiteIdentifiers(), QVector<QString>({"Alpha", "Beta"}));
}

// Exactly the report's own thresholds go with it; the path stays.
TEST_P(DeletionIndexTest, OneReportOfAPath) {
  ExpectRetrievals(1);
  EXPECT_TRUE(DeleteFromGamma(&scene_, 1));
  EXPECT_EQ(scene_.Lines(), PathRetrieval(GetParam()) + PathKeysFound(GetParam()));
  scene_.ExpectGone(RowsOf("PathAlignment", {2}) +
                        scene_.IfAssociated(RowsOf("Orientation", {9, 10}) + RowsOf("Geolocation", {6, 7}) +
                                            RowsOf("Height", {5})),
                    RowsOf("PathAlignmentThresholds", {2}));
}

TEST_P(DeletionIndexTest, TheLastReportOfAPathLeavesThePath) {
  ExpectRetrievals(2);
  const QStringList lines = PathRetrieval(GetParam()) + PathKeysFound(GetParam());
  for (int report = 1; report <= 2; ++report) {
    EXPECT_TRUE(DeleteFromGamma(&scene_, 0));
    EXPECT_EQ(scene_.Lines(), lines);
  }
  scene_.ExpectGone(RowsOf("PathAlignment", {1, 2}) + scene_.GammaAssociated(),
                    RowsOf("PathAlignmentThresholds", {1, 2}));
  EXPECT_EQ(scene_.Store()->GetPathIdentifiers().size(), 2);
}

// A thresholds row that was stored under key 0 is what the deletion of a site's report finds.
TEST_P(DeletionIndexTest, ThresholdsUnderKeyZeroGo) {
  if (GetParam().HasThresholdsFile()) {
    RunSql(scene_.Thresholds(),
           "INSERT INTO AntennaAlignmentThresholds VALUES (50,0,1,1,1,1), (51,0,2,1,1,1)");
    scene_.Remember();
  }
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 1));
  EXPECT_EQ(scene_.Lines(), Committed(GetParam()));
  scene_.ExpectGone(RowsOf("AntennaAlignment", {1}) +
                        scene_.IfAssociated(RowsOf("Orientation", {1, 2}) + RowsOf("Geolocation", {1}) +
                                            RowsOf("Height", {1})),
                    RowsOf("AntennaAlignmentThresholds", {50}));
}

// Every key of both phases: their order, and that the report's is bound as an unsigned number in 64 bits.
TEST_P(DeletionIndexTest, KeysAsTheyAreBound) {
  ExpectRetrievals(1);
  scene_.Change("UPDATE AntennaAlignment SET AntennaAlignmentKey = -2 WHERE AntennaAlignmentKey = 2");
  SqliteCalls::Arm(Fault("step", SQLITE_DONE).OnText("DELETE FROM").Always());
  SqliteCalls::Record();
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_TRUE(DeleteFromGamma(&scene_, 0));
  QStringList keys;
  for (const QString& call : SqliteCalls::TakeTrace().filter(QRegularExpression("^bind_int64.*\\[DELETE"))) {
    keys << call.section(' ', 1, 2) + call.section("DELETE FROM", 1).section(' ', 0, 1);
  }
  QStringList expected{"1, 1 AntennaAlignment", "2, 4294967294 AntennaAlignment"};
  if (GetParam().DeletesAssociatedRecords()) {
    // The measured orientation before the target.
    expected << "1, 4 Orientation"
             << "1, 3 Orientation"
             << "1, 2 Geolocation"
             << "1, 2 Height";
  }
  if (GetParam().HasThresholdsFile()) {
    expected << "1, 1 AntennaAlignmentThresholds"
             << "2, 0 AntennaAlignmentThresholds";
  }
  expected << "1, 1 PathAlignment"
           << "2, 1 PathAlignment";
  if (GetParam().DeletesAssociatedRecords()) {
    // The target orientation before the measured one, the far end before the instrument.
    expected << "1, 7 Orientation"
             << "1, 8 Orientation"
             << "1, 4 Geolocation"
             << "1, 5 Geolocation"
             << "1, 4 Height";
  }
  if (GetParam().HasThresholdsFile()) {
    expected << "1, 1 PathAlignmentThresholds"
             << "2, 1 PathAlignmentThresholds";
  }
  EXPECT_EQ(keys, expected);
  scene_.Lines();
}

TEST_P(DeletionIndexTest, PositionsOutOfRangeOpenNothingBeyondTheRetrieval) {
  int retrievals = 0;
  for (const int index : {2, 3, 2147483647, -1, -2147483647}) {
    SqliteCalls::Reset();
    EXPECT_FALSE(DeleteFromAlpha(&scene_, index));
    EXPECT_EQ(SqliteCalls::Count("open_v2"), Retrieval(GetParam()));
    EXPECT_EQ(scene_.Lines(), QStringList());
    SqliteCalls::Reset();
    EXPECT_FALSE(DeleteFromGamma(&scene_, index));
    EXPECT_EQ(SqliteCalls::Count("open_v2"), Retrieval(GetParam()));
    EXPECT_EQ(scene_.Lines(), PathRetrieval(GetParam()));
    ++retrievals;
  }
  ExpectRetrievals(retrievals);
  scene_.ExpectGone({}, {});
}

TEST_P(DeletionIndexTest, UnknownIdentifiersHaveNoReports) {
  ExpectRetrievals(1);
  QString unknown = QStringLiteral("Nowhere");
  EXPECT_FALSE(scene_.Store()->DeleteReportsBySiteAndIndex(unknown, 0));
  EXPECT_FALSE(scene_.Store()->DeleteReportsByPathAndIndex(unknown, 0));
  EXPECT_EQ(scene_.Lines(), PathRetrieval(GetParam()));
  scene_.ExpectGone({}, {});
}

TEST_P(DeletionIndexTest, OneOrientationAsTargetAndMeasuredIsDeletedOnce) {
  scene_.Change("UPDATE AntennaAlignment SET MeasuredOrientationKey = TargetOrientationKey");
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_EQ(scene_.Lines(), Committed(GetParam()));
  scene_.ExpectGone(RowsOf("AntennaAlignment", {2}) +
                        scene_.IfAssociated(RowsOf("Orientation", {3}) + RowsOf("Geolocation", {2}) +
                                            RowsOf("Height", {2})),
                    {});
}

TEST_P(DeletionIndexTest, ASharedHeightTakesTheOtherAlignmentWithIt) {
  scene_.Change("UPDATE AntennaAlignment SET SiteHeightKey = 2 WHERE AntennaAlignmentKey = 1");
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_EQ(scene_.Lines(), Committed(GetParam()));
  scene_.ExpectGone(RowsOf("AntennaAlignment", {2}) +
                        scene_.IfAssociated(RowsOf("AntennaAlignment", {1}) + RowsOf("Orientation", {3, 4}) +
                                            RowsOf("Geolocation", {2}) + RowsOf("Height", {2})),
                    {});
}

// The main file is rolled back. For the site the thresholds phase makes the result true all the same, though
// it finds no row; for the path it deletes the report's thresholds.
TEST_P(DeletionIndexTest, ASharedOrientationKeepsTheReport) {
  ExpectRetrievals(1);
  scene_.Change(
      "UPDATE AntennaAlignment SET TargetOrientationKey = 3 WHERE AntennaAlignmentKey = 1;"
      "UPDATE PathAlignment SET TargetOrientationKey = 8 WHERE PathAlignmentKey = 2");
  const bool associated = GetParam().DeletesAssociatedRecords();
  const bool result = !associated || GetParam().HasThresholdsFile();
  EXPECT_EQ(DeleteFromAlpha(&scene_, 0), result);
  QStringList lines = Committed(GetParam());
  if (associated) {
    lines.removeFirst();
    lines =
        QStringList{"Failed to delete orientation keys", "Couldn't delete associated records", rollingBack} +
        lines;
  }
  EXPECT_EQ(scene_.Lines(), lines);
  EXPECT_EQ(DeleteFromGamma(&scene_, 0), result);
  lines = PathRetrieval(GetParam()) + PathKeysFound(GetParam());
  if (associated) lines << "Failed to delete orientation keys";
  EXPECT_EQ(scene_.Lines(), lines);
  scene_.ExpectGone(
      associated ? QStringList() : RowsOf("AntennaAlignment", {2}) + RowsOf("PathAlignment", {1}),
      RowsOf("PathAlignmentThresholds", {1}));
}

// An alignment that is gone when its keys are looked up: they are 0, and nothing is deleted.
TEST_P(DeletionIndexTest, AnAlignmentWithoutARowHasKeysZero) {
  ExpectRetrievals(1);
  SqliteCalls::Arm(OnMain("step", SQLITE_DONE, "FROM AntennaAlignment WHERE AntennaAlignmentKey=?"));
  SqliteCalls::Arm(OnMain("step", SQLITE_DONE, "FROM PathAlignment WHERE PathAlignmentKey=?"));
  SqliteCalls::Arm(OnMain("step", SQLITE_DONE, "DELETE FROM AntennaAlignment WHERE"));
  SqliteCalls::Arm(OnMain("step", SQLITE_DONE, "DELETE FROM PathAlignment WHERE"));
  SqliteCalls::Record();
  EXPECT_TRUE(DeleteFromAlpha(&scene_, 0));
  EXPECT_TRUE(DeleteFromGamma(&scene_, 0));
  const QStringList binds = SqliteCalls::TakeTrace().filter(
      QRegularExpression("^bind_int64.*DELETE FROM (Orientation|Geolocation|Height)"));
  EXPECT_EQ(binds.filter(QRegularExpression("^bind_int64 1, 0 ")).size(), binds.size());
  EXPECT_EQ(binds.size(), GetParam().DeletesAssociatedRecords() ? 4 + 5 : 0);
  scene_.Lines();
  scene_.ExpectGone({}, RowsOf("PathAlignmentThresholds", {1}));
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionIndexTest);

}  // namespace
