// Deleting every report of a site or of a path.
#include <sqlite3.h>

#include <QRegularExpression>

#include "tests/store/DeletionScene.h"
#include "tests/support/ChildProcess.h"

namespace {

const QStringList alphaReports = RowsOf("AntennaAlignment", {1, 2});
const QStringList gammaReports = RowsOf("PathAlignment", {1, 2});
const QStringList alphaThresholds = RowsOf("AntennaAlignmentThresholds", {1, 2});
const QStringList gammaThresholds = RowsOf("PathAlignmentThresholds", {1, 2});
const QStringList alphaSite = RowsOf("Sites", {1});
const QStringList gammaPath = RowsOf("Paths", {1});

bool DeleteSite(DeletionScene* scene, QString& site) {
  return scene->Store()->DeleteReportsBySiteAndSector(site, scene->sector_);
}
bool DeleteAlpha(DeletionScene* scene) { return DeleteSite(scene, scene->alpha_); }
bool DeleteGamma(DeletionScene* scene) { return scene->Store()->DeleteReportsByPath(scene->gamma_); }

using DeletionAllReportsTest = DeletionTest;

// The sector's name is ignored: "North" is one of two sectors.
TEST_P(DeletionAllReportsTest, EverySectorOfTheSiteGoesAndTheSiteWithThem) {
  EXPECT_TRUE(DeleteAlpha(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.AlphaKeyLines());
  scene_.ExpectGone(alphaSite + alphaReports + scene_.AlphaAssociated(), alphaThresholds);
}

TEST_P(DeletionAllReportsTest, TheSectorMayBeUnknown) {
  scene_.sector_ = QStringLiteral("no such sector");
  EXPECT_TRUE(DeleteAlpha(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.AlphaKeyLines());
  scene_.ExpectGone(alphaSite + alphaReports + scene_.AlphaAssociated(), alphaThresholds);
}

TEST_P(DeletionAllReportsTest, EveryReportOfThePathGoesAndThePathWithThem) {
  EXPECT_TRUE(DeleteGamma(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.FoundPath(1) + scene_.GammaKeyLines());
  scene_.ExpectGone(gammaPath + gammaReports + scene_.GammaAssociated(), gammaThresholds);
}

TEST_P(DeletionAllReportsTest, AnUnknownIdentifierChangesNothingAndSucceeds) {
  QString unknown = QStringLiteral("Nowhere");
  EXPECT_TRUE(DeleteSite(&scene_, unknown));
  EXPECT_EQ(scene_.Lines(), scene_.KeyLines("", "", ""));
  EXPECT_TRUE(scene_.Store()->DeleteReportsByPath(unknown));
  EXPECT_EQ(scene_.Lines(), scene_.FoundPath(0) + scene_.KeyLines("", "", ""));
  scene_.ExpectGone({}, {});
}

TEST_P(DeletionAllReportsTest, ASiteOrPathWithoutReportsIsDeleted) {
  scene_.Change("INSERT INTO Sites VALUES (40, 'Empty'); INSERT INTO Paths VALUES (41, 'Empty')");
  QString empty = QStringLiteral("Empty");
  SqliteCalls::Record();
  EXPECT_TRUE(DeleteSite(&scene_, empty));
  EXPECT_TRUE(scene_.Store()->DeleteReportsByPath(empty));
  const QStringList trace = SqliteCalls::TakeTrace();
  EXPECT_EQ(trace.filter(QRegularExpression("DELETE FROM (Orientation|Geolocation|Height)")), QStringList());
  EXPECT_EQ(scene_.Lines(), scene_.KeyLines("", "", "") + scene_.FoundPath(41) + scene_.KeyLines("", "", ""));
  scene_.ExpectGone(RowsOf("Sites", {40}) + RowsOf("Paths", {41}), {});
}

TEST_P(DeletionAllReportsTest, NonAsciiIdentifiersAreFound) {
  scene_.Change("UPDATE Sites SET SiteIdentifier = 'Zürich ✓' WHERE SiteKey = 1");
  QString site = QString::fromUtf8("Zürich ✓");
  EXPECT_TRUE(DeleteSite(&scene_, site));
  EXPECT_EQ(scene_.Lines(), scene_.AlphaKeyLines());
  scene_.ExpectGone(alphaSite + alphaReports + scene_.AlphaAssociated(), alphaThresholds);
}

// One connection per file, one after the other; thresholds only if the version has them.
TEST_P(DeletionAllReportsTest, TheFilesAreOpenedOneAfterTheOther) {
  for (const bool site : {true, false}) {
    SqliteCalls::Record();
    EXPECT_TRUE(site ? DeleteAlpha(&scene_) : DeleteGamma(&scene_));
    const QStringList calls = SqliteCalls::TakeTrace().filter(QRegularExpression("^(open_v2|close) "));
    QStringList files;
    for (const QString& call : calls) {
      files << call.section(' ', 0, 0) + (call.contains("thresholds.sqlite") ? " thresholds" : " main");
    }
    QStringList expected{"open_v2 main", "close main"};
    if (GetParam().HasThresholdsFile())
      expected << "open_v2 thresholds"
               << "close thresholds";
    EXPECT_EQ(files, expected);
  }
  scene_.Lines();
}

// ---- rows that several alignments refer to

TEST_P(DeletionAllReportsTest, OneOrientationAsTargetAndMeasuredIsDeletedOnce) {
  scene_.Change("UPDATE AntennaAlignment SET MeasuredOrientationKey = TargetOrientationKey");
  EXPECT_TRUE(DeleteAlpha(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.KeyLines("1 1 3 3 ", "1 2 ", "1 2 "));
  scene_.ExpectGone(alphaSite + alphaReports +
                        scene_.IfAssociated(RowsOf("Orientation", {1, 3}) + RowsOf("Geolocation", {1, 2}) +
                                            RowsOf("Height", {1, 2})),
                    alphaThresholds);
}

// Beta keeps what it shares, and with it everything of Alpha stays in the main file. The thresholds go.
TEST_P(DeletionAllReportsTest, AnOrientationSharedWithAnotherSiteKeepsTheSite) {
  scene_.Change("UPDATE AntennaAlignment SET TargetOrientationKey = 3 WHERE AntennaAlignmentKey = 3");
  const bool associated = GetParam().DeletesAssociatedRecords();
  EXPECT_EQ(DeleteAlpha(&scene_), !associated || GetParam().HasThresholdsFile());
  QStringList lines = scene_.AlphaKeyLines();
  if (associated) lines << "Failed to delete orientation keys";
  EXPECT_EQ(scene_.Lines(), lines);
  scene_.ExpectGone(associated ? QStringList() : alphaSite + alphaReports, alphaThresholds);
}

// Versions 1 and 2 have no foreign key on the location, but do not delete locations either.
TEST_P(DeletionAllReportsTest, ALocationSharedWithAnotherSiteKeepsTheSite) {
  scene_.Change("UPDATE AntennaAlignment SET LocationKey = 2 WHERE AntennaAlignmentKey = 3");
  const bool associated = GetParam().DeletesAssociatedRecords();
  EXPECT_EQ(DeleteAlpha(&scene_), !associated || GetParam().HasThresholdsFile());
  QStringList lines = scene_.AlphaKeyLines();
  if (associated) lines << "Failed to delete geolocation keys";
  EXPECT_EQ(scene_.Lines(), lines);
  scene_.ExpectGone(associated ? QStringList() : alphaSite + alphaReports, alphaThresholds);
}

// A path is never rolled back: what was deleted before the shared orientation stays deleted.
TEST_P(DeletionAllReportsTest, AnOrientationSharedWithAnotherPathEndsTheDeletionThere) {
  scene_.Change("UPDATE PathAlignment SET TargetOrientationKey = 9 WHERE PathAlignmentKey = 3");
  EXPECT_TRUE(DeleteGamma(&scene_));
  QStringList lines = scene_.FoundPath(1) + scene_.GammaKeyLines();
  if (GetParam().DeletesAssociatedRecords()) {
    lines << "Failed to delete orientation keys"
          << "Deleting of associated records failed";
  }
  EXPECT_EQ(scene_.Lines(), lines);
  scene_.ExpectGone(gammaPath + gammaReports + scene_.IfAssociated(RowsOf("Orientation", {7, 8})),
                    gammaThresholds);
}

// The alignment that shares the height goes with it; what it alone referred to stays behind.
TEST_P(DeletionAllReportsTest, ASharedHeightTakesTheOtherAlignmentWithIt) {
  scene_.Change("UPDATE AntennaAlignment SET SiteHeightKey = 2 WHERE AntennaAlignmentKey = 3");
  EXPECT_TRUE(DeleteAlpha(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.AlphaKeyLines());
  scene_.ExpectGone(alphaSite + alphaReports + scene_.AlphaAssociated() +
                        scene_.IfAssociated(RowsOf("AntennaAlignment", {3})),
                    alphaThresholds);
}

TEST_P(DeletionAllReportsTest, ASharedHeightTakesTheOtherPathAlignmentWithIt) {
  scene_.Change("UPDATE PathAlignment SET SiteHeightKey = 5 WHERE PathAlignmentKey = 3");
  EXPECT_TRUE(DeleteGamma(&scene_));
  EXPECT_EQ(scene_.Lines(), scene_.FoundPath(1) + scene_.GammaKeyLines());
  scene_.ExpectGone(
      gammaPath + gammaReports + scene_.GammaAssociated() + scene_.IfAssociated(RowsOf("PathAlignment", {3})),
      gammaThresholds);
}

// ---- deletes of alignment rows that end in something other than done

TEST_P(DeletionAllReportsTest, RowsOfTheDeleteAreSteppedOver) {
  SqliteCalls::Arm(OnMain("step", SQLITE_ROW, "DELETE FROM AntennaAlignment WHERE").Times(3));
  EXPECT_TRUE(DeleteAlpha(&scene_));
  QStringList lines = scene_.AlphaKeyLines();
  if (GetParam().number == 1)
    lines << "SQLITE_DONE!"
          << "SQLITE_DONE!"
          << "SQLITE_DONE!";
  EXPECT_EQ(scene_.Lines(), lines);
  scene_.ExpectGone(alphaSite + alphaReports + scene_.AlphaAssociated(), alphaThresholds);
}

// Without the delete the site's row is still referred to, and deleting that row never ends.
TEST_P(DeletionAllReportsTest, ADeleteThatCannotBePreparedNeverEnds) {
  for (const bool site : {true, false}) {
    const int status = RunInChild([&] {
      SqliteCalls::Arm(
          OnMain("prepare_v2", SQLITE_NOMEM,
                 site ? "DELETE FROM AntennaAlignment WHERE" : "DELETE FROM PathAlignment WHERE"));
      SqliteCalls::Arm(Fault::Kill("step").OnText(site ? "DELETE FROM Sites" : "DELETE FROM Paths").At(500));
      site ? DeleteAlpha(&scene_) : DeleteGamma(&scene_);
    });
    EXPECT_EQ(status, Fault::killedStatus);
    EXPECT_EQ(IntegrityCheck(scene_.Main()), QStringLiteral("ok"));
    scene_.ExpectGone({}, {});
  }
}

TEST_P(DeletionAllReportsTest, ADeleteThatCannotBePreparedDoesNotStopTheRest) {
  scene_.Change("INSERT INTO Sites VALUES (40, 'Empty'); INSERT INTO Paths VALUES (41, 'Empty')");
  QString empty = QStringLiteral("Empty");
  SqliteCalls::Arm(OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM AntennaAlignment WHERE"));
  SqliteCalls::Arm(OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM PathAlignment WHERE"));
  EXPECT_TRUE(DeleteSite(&scene_, empty));
  EXPECT_TRUE(scene_.Store()->DeleteReportsByPath(empty));
  const QStringList failure("SQL prepare  Fetch Report Data for Site  failed with  7 : out of memory");
  EXPECT_EQ(scene_.Lines(), scene_.KeyLines("", "", "") + failure + scene_.FoundPath(41) +
                                scene_.KeyLines("", "", "") + failure);
  scene_.ExpectGone(RowsOf("Sites", {40}) + RowsOf("Paths", {41}), {});
}

// ---- the key under which thresholds are deleted

// If the main file was never asked for the key it is 0, which no site or path has; if asking failed it is -1.
TEST_P(DeletionAllReportsTest, TheThresholdsKeyIsOneThatNoRowHasWithoutALookUp) {
  if (!GetParam().HasThresholdsFile()) {
    // Nothing of the thresholds file is opened, even if the main file fails.
    SqliteCalls::Arm(Fault("open_v2", SQLITE_CANTOPEN));
    SqliteCalls::Record();
    EXPECT_FALSE(DeleteAlpha(&scene_));
    EXPECT_EQ(SqliteCalls::TakeTrace().filter("thresholds.sqlite"), QStringList());
    scene_.Lines();
    return;
  }
  const struct {
    Fault fault;
    const char* key;
  } cases[] = {
      {Fault("open_v2", SQLITE_CANTOPEN).OnFile("main.sqlite"), "0"},
      {OnMain("exec", SQLITE_BUSY, "BEGIN"), "0"},
      {OnMain("prepare_v2", SQLITE_NOMEM, "SELECT  "), "-1"},
      {OnMain("bind_text", SQLITE_NOMEM, "SELECT  "), "-1"},
      {OnMain("step", SQLITE_BUSY, "SELECT  "), "0"},
  };
  for (const auto& each : cases) {
    for (const bool site : {true, false}) {
      SqliteCalls::Arm(each.fault);
      SqliteCalls::Record();
      EXPECT_TRUE(site ? DeleteAlpha(&scene_) : DeleteGamma(&scene_));
      EXPECT_EQ(SqliteCalls::TakeTrace().filter(QRegularExpression("bind_int64.*Thresholds")),
                QStringList(QStringLiteral("bind_int64 1, %1 = 0 [DELETE FROM %2 = ?]")
                                .arg(each.key, site ? "AntennaAlignmentThresholds WHERE SiteIdentifier"
                                                    : "PathAlignmentThresholds WHERE PathKey")));
      SqliteCalls::Reset();
    }
  }
  scene_.Lines();
  scene_.ExpectGone({}, {});
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionAllReportsTest);

}  // namespace
