// Storing and restoring the contents of the two input screens.
#include <sqlite3.h>

#include <QRegularExpression>

#include "model/AlignerModel.h"
#include "model/Geolocation.h"
#include "model/Orientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "tests/model/Counted.h"
#include "tests/store/AskedRecords.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SqliteCalls.h"

namespace {

// Azimuth 10, tilt 2, roll 3; far end at 48.5 north, 11.25 west, 519.75 m.
SiteInformation* NewSite() {
  return new SiteInformation(QString::fromUtf8("Sitę '1'"), "Sector", "Position", 10.0F, 2.0F, 3.0F);
}
PathInformation* NewPath() { return new PathInformation(QString::fromUtf8("Päth"), 48.5, -11.25, 519.75); }
const QStringList siteRow(QString::fromUtf8("1|'Sitę ''1'''|'Sector'|'Position'|2.0|3.0|10.0"));
const QStringList pathRow(QString::fromUtf8("1|'Päth'|48.5|-11.25|519.75"));
const QString oldSite = QStringLiteral("1|'old'|'old'|'old'|1.0|1.0|1.0");
const QString oldPath = QStringLiteral("1|'old'|1.0|1.0|1.0");
const QString noMemory = QStringLiteral("  failed with  7 : out of memory");
const QString cannotOpen = QStringLiteral("Can't open database: rval= 14 : unable to open database file");

class ScreenContentsTest : public CreatedStoreTest {
 protected:
  QStringList SiteRow() const {
    return Rows(Main(), QStringLiteral("SELECT rowid, * FROM SiteScreenContents"));
  }
  QStringList PathRow() const {
    return Rows(Main(), QStringLiteral("SELECT rowid, * FROM PathScreenContents"));
  }
  void InsertOldRows() {
    RunSql(Main(),
           QStringLiteral("INSERT OR REPLACE INTO SiteScreenContents (rowid, SiteIdentifier, "
                          "SectorIdentifier, AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth) "
                          "VALUES (1, 'old', 'old', 'old', 1, 1, 1);"
                          "INSERT OR REPLACE INTO PathScreenContents (rowid, PathIdentifier, "
                          "TargetLatitude, TargetLongittude, TargetHeight) VALUES (1, 'old', 1, 1, 1)"));
  }
  void EnterBoth() {
    model_.SetCurrentSiteInformation(NewSite());
    model_.SetCurrentPathInformation(NewPath());
  }

  AlignerModel model_;
};

TEST_P(ScreenContentsTest, NullIsRefused) {
  EXPECT_FALSE(store_->StoreInputContents(nullptr));
  EXPECT_FALSE(store_->RestoreInputContents(nullptr));
  const ConnectionPointer db = OpenMain();
  for (const auto operation :
       {&Operations::SaveCurrentSiteInformation, &Operations::SaveCurrentPathInformation,
        &Operations::RestoreCurrentSiteInformation, &Operations::RestoreCurrentPathInformation}) {
    EXPECT_FALSE(Call(operation, nullptr, &model_));
    EXPECT_FALSE(Call(operation, db.get(), nullptr));
  }
}

TEST_P(ScreenContentsTest, AFreshFileHasNeitherScreen) {
  EnterBoth();
  const ISiteInformation* site = model_.CurrentSiteInformation();
  const IPathInformation* path = model_.CurrentPathInformation();
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  EXPECT_EQ(model_.CurrentSiteInformation(), site);
  EXPECT_EQ(model_.CurrentPathInformation(), path);
}

TEST_P(ScreenContentsTest, BothScreensRoundTrip) {
  InsertOldRows();
  EnterBoth();
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow(), siteRow);
  EXPECT_EQ(PathRow(), pathRow);

  AlignerModel restored;
  EXPECT_TRUE(store_->RestoreInputContents(&restored));
  const ISiteInformation* site = restored.CurrentSiteInformation();
  ASSERT_NE(site, nullptr);
  EXPECT_EQ(site->SiteIdentifier(), QString::fromUtf8("Sitę '1'"));
  EXPECT_EQ(site->SectorName(), QString("Sector"));
  EXPECT_EQ(site->AntennaPosition(), QString("Position"));
  EXPECT_EQ(site->TargetOrientation()->AzimuthDegrees(), 10.0F);
  EXPECT_EQ(site->TargetOrientation()->TiltDegrees(), 2.0F);
  EXPECT_EQ(site->TargetOrientation()->RollDegrees(), 3.0F);
  const IPathInformation* path = restored.CurrentPathInformation();
  ASSERT_NE(path, nullptr);
  EXPECT_EQ(path->PathIdentifier(), QString::fromUtf8("Päth"));
  EXPECT_EQ(path->TargetGeolocation()->LatitudeDegreesNorth(), 48.5);
  EXPECT_EQ(path->TargetGeolocation()->LongitudeDegreesEast(), -11.25);
  EXPECT_EQ(path->TargetGeolocation()->ElevationMeters(), 519.75);
}

TEST_P(ScreenContentsTest, OneScreenEnteredClearsTheOther) {
  InsertOldRows();
  model_.SetCurrentSiteInformation(NewSite());
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow(), siteRow);
  EXPECT_EQ(PathRow(), QStringList());
  model_.ClearCurrentSite();
  model_.SetCurrentPathInformation(NewPath());
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow(), QStringList());
  EXPECT_EQ(PathRow(), pathRow);

  // And only the screen that has a row is restored.
  AlignerModel restored;
  EXPECT_TRUE(store_->RestoreInputContents(&restored));
  EXPECT_EQ(restored.CurrentSiteInformation(), nullptr);
  EXPECT_NE(restored.CurrentPathInformation(), nullptr);
}

TEST_P(ScreenContentsTest, NoScreenEnteredClearsBoth) {
  InsertOldRows();
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow() + PathRow(), QStringList());
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  EXPECT_EQ(model_.CurrentSiteInformation(), nullptr);
  EXPECT_EQ(model_.CurrentPathInformation(), nullptr);
}

TEST_P(ScreenContentsTest, StatementsAndBindsInOrderWithoutATransaction) {
  EnterBoth();
  SqliteCalls::Record();
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  model_.ClearCurrentSite();
  model_.ClearCurrentPath();
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  const QStringList trace = SqliteCalls::TakeTrace();
  EXPECT_EQ(trace.filter("TRANSACTION"), QStringList());
  QStringList statements;
  for (const QString& step : trace.filter(QRegularExpression("^step "))) {
    statements << step.section('[', 1).chopped(1).remove(' ');
  }
  EXPECT_EQ(
      statements,
      QStringList({"INSERT OR REPLACE INTO SiteScreenContents (RowID, SiteIdentifier, SectorIdentifier, "
                   "AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth ) VALUES (1,?,?,?,?,?,?)",
                   "INSERT OR REPLACE INTO PathScreenContents (RowID, PathIdentifier, TargetLatitude, "
                   "TargetLongittude, TargetHeight ) VALUES (1,?,?,?,?)",
                   "SELECT SiteIdentifier,SectorIdentifier,AntennaPosition, TargetTilt, TargetRoll, "
                   "TargetAzimuth FROM SiteScreenContents WHERE (RowID=1)",
                   "SELECT PathIdentifier, TargetLatitude, TargetLongittude, TargetHeight FROM "
                   "PathScreenContents WHERE (RowID=1)",
                   "DELETE FROM SiteScreenContents WHERE (RowID=1)",
                   "DELETE FROM PathScreenContents WHERE (RowID=1)"})
          .replaceInStrings(" ", ""));
  QStringList binds;
  for (const QString& bind : trace.filter(QRegularExpression("^bind_"))) {
    binds << bind.section(',', 0, 0);
  }
  EXPECT_EQ(binds,
            QStringList({"bind_text 1", "bind_text 2", "bind_text 3", "bind_double 4", "bind_double 5",
                         "bind_double 6", "bind_text 1", "bind_double 2", "bind_double 3", "bind_double 4"}));
}

// Angles are floats in the model: what another tool has written is rounded. Positions are not.
TEST_P(ScreenContentsTest, AnglesPassThroughFloat) {
  InsertOldRows();
  RunSql(Main(), QStringLiteral("UPDATE SiteScreenContents SET TargetTilt = 0.1, TargetRoll = 1.000000001, "
                                "TargetAzimuth = 123.456789012;"
                                "UPDATE PathScreenContents SET TargetLatitude = 0.1, TargetLongittude = "
                                "1.000000001, TargetHeight = 123.456789012"));
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  const IOrientation* target = model_.CurrentSiteInformation()->TargetOrientation();
  EXPECT_EQ(target->TiltDegrees(), 0.1F);
  EXPECT_EQ(target->RollDegrees(), 1.0F);
  EXPECT_EQ(target->AzimuthDegrees(), 123.456789012F);
  const IGeolocation* farEnd = model_.CurrentPathInformation()->TargetGeolocation();
  EXPECT_EQ(farEnd->LatitudeDegreesNorth(), 0.1);
  EXPECT_EQ(farEnd->LongitudeDegreesEast(), 1.000000001);
  EXPECT_EQ(farEnd->ElevationMeters(), 123.456789012);

  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT TargetTilt = %1 FROM SiteScreenContents")
                             .arg(static_cast<double>(0.1F), 0, 'g', 17)),
            QStringList("1"));
}

// Each restore gives new records, and the model releases those that they replace.
TEST_P(ScreenContentsTest, ReplacedRecordsAreReleased) {
  InsertOldRows();
  int destroyed = 0;
  model_.SetCurrentSiteInformation(new Counted<SiteInformation>(&destroyed, "s", "s", "s", 0.0F, 0.0F, 0.0F));
  model_.SetCurrentPathInformation(new Counted<PathInformation>(&destroyed, "p", 0.0, 0.0, 0.0));
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  EXPECT_EQ(destroyed, 2);
  EXPECT_EQ(model_.CurrentSiteInformation()->SiteIdentifier(), QString("old"));
  EXPECT_TRUE(store_->RestoreInputContents(&model_));
  EXPECT_EQ(model_.CurrentPathInformation()->PathIdentifier(), QString("old"));
}

// ---- records without an orientation or a location

TEST_P(ScreenContentsTest, ASiteWithoutTargetKeepsTheRowAndFails) {
  InsertOldRows();
  model_.SetCurrentSiteInformation(new AskedSite(nullptr));
  EXPECT_FALSE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow() + PathRow(), QStringList({oldSite, oldPath}));
}

TEST_P(ScreenContentsTest, APathWithoutLocationKeepsTheRowAndSucceeds) {
  InsertOldRows();
  model_.SetCurrentSiteInformation(NewSite());
  model_.SetCurrentPathInformation(new AskedPath(nullptr));
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SiteRow() + PathRow(), siteRow + QStringList(oldPath));
}

class AskedModel : public AlignerModel {
 public:
  ISiteInformation* CurrentSiteInformation() override {
    return Asked("CurrentSite", AlignerModel::CurrentSiteInformation());
  }
  IPathInformation* CurrentPathInformation() override {
    return Asked("CurrentPath", AlignerModel::CurrentPathInformation());
  }
};

// Model and record are asked once for each column, after one look whether there is a record.
TEST_P(ScreenContentsTest, TheModelIsAskedAnewForEachColumn) {
  AskedOrientation target;
  AskedGeolocation farEnd;
  AskedModel model;
  model.SetCurrentSiteInformation(new AskedSite(&target));
  model.SetCurrentPathInformation(new AskedPath(&farEnd));
  asked.clear();
  EXPECT_TRUE(store_->StoreInputContents(&model));
  EXPECT_EQ(asked, (QStringList{"CurrentSite",       "CurrentSite", "SiteIdentifier",    "CurrentSite",
                                "SectorName",        "CurrentSite", "AntennaPosition",   "CurrentSite",
                                "TargetOrientation", "TiltDegrees", "CurrentSite",       "TargetOrientation",
                                "RollDegrees",       "CurrentSite", "TargetOrientation", "AzimuthDegrees",
                                "CurrentPath",       "CurrentPath", "PathIdentifier",    "CurrentPath",
                                "PathLocation",      "Latitude",    "CurrentPath",       "PathLocation",
                                "Longitude",         "CurrentPath", "PathLocation",      "Elevation"}));
}

// ---- failures

struct ScreenBranch {
  const char* name;
  Fault fault;
  QStringList lines;
  bool result;
  bool siteStored;
  bool pathStored;
};

ScreenBranch BindBranch(const char* table, int position, const char* text) {
  const bool site = QByteArray(table) == "SiteScreenContents";
  return {text,
          Fault("bind", SQLITE_NOMEM).OnText(table).At(position),
          {QStringLiteral("SQL bind current %1 failed with  7 : out of memory").arg(text)},
          !site,
          !site,
          false};
}

std::vector<ScreenBranch> StoreBranches() {
  const char* const site = "SiteScreenContents";
  const char* const path = "PathScreenContents";
  return {
      {"Open", Fault("open_v2", SQLITE_CANTOPEN), {cannotOpen}, false, false, false},
      {"PrepareSite",
       Fault("prepare_v2", SQLITE_NOMEM).OnText(site),
       {"SQL prepare  Save Current Site" + noMemory},
       false,
       false,
       false},
      BindBranch(site, 1, "site identifier"),
      BindBranch(site, 2, "sector identifier"),
      BindBranch(site, 3, "antenna position"),
      BindBranch(site, 4, "target tilt"),
      BindBranch(site, 5, "target roll"),
      BindBranch(site, 6, "target roll"),  // the azimuth
      {"StepSite", Fault("step", SQLITE_BUSY).OnText(site), {}, false, false, false},
      {"StepSiteRow", Fault("step", SQLITE_ROW).OnText(site), {}, false, false, false},
      // The path reports success whatever happens, in the texts of the site.
      {"PreparePath",
       Fault("prepare_v2", SQLITE_NOMEM).OnText(path),
       {"SQL prepare  Save Current Path" + noMemory},
       true,
       true,
       false},
      BindBranch(path, 1, "site identifier"),
      BindBranch(path, 2, "target tilt"),
      BindBranch(path, 3, "target tilt"),
      BindBranch(path, 4, "target tilt"),
      {"StepPath", Fault("step", SQLITE_BUSY).OnText(path), {}, true, true, false},
  };
}

// After each the connection is closed; the leak guard over all tests checks that.
TEST_P(ScreenContentsTest, FailuresOfStoring) {
  for (const ScreenBranch& branch : StoreBranches()) {
    SCOPED_TRACE(branch.name);
    InsertOldRows();
    EnterBoth();
    SqliteCalls::Arm(branch.fault);
    EXPECT_EQ(store_->StoreInputContents(&model_), branch.result);
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    SqliteCalls::Reset();
    EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
    EXPECT_EQ(Lines(), branch.lines);
    EXPECT_EQ(SiteRow(), branch.siteStored ? siteRow : QStringList(oldSite));
    EXPECT_EQ(PathRow(), branch.pathStored ? pathRow : QStringList(oldPath));
  }
}

TEST_P(ScreenContentsTest, NothingIsBoundAfterAFailedBind) {
  for (const auto& [table, count] :
       {std::pair("SiteScreenContents", 6), std::pair("PathScreenContents", 4)}) {
    for (int position = 1; position <= count; ++position) {
      EnterBoth();
      SqliteCalls::Reset();
      SqliteCalls::Arm(Fault("bind", SQLITE_NOMEM).OnText(table).At(position));
      SqliteCalls::Record();
      store_->StoreInputContents(&model_);
      const QStringList trace = SqliteCalls::TakeTrace().filter(table);
      EXPECT_EQ(trace.filter(QRegularExpression("^bind_")).size(), position);
      EXPECT_EQ(trace.filter(QRegularExpression("^step ")).size(), 0);
      EXPECT_EQ(Lines().size(), 1);
    }
  }
}

// A screen that cannot be cleared because the statement cannot be prepared counts as cleared.
TEST_P(ScreenContentsTest, FailuresOfClearing) {
  InsertOldRows();
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).Times(2));
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(Lines(), QStringList({"SQL prepare  delete site screen contents" + noMemory,
                                  "SQL prepare  delete path screen contents" + noMemory}));
  EXPECT_EQ(SiteRow() + PathRow(), QStringList({oldSite, oldPath}));
}

TEST_P(ScreenContentsTest, ClearingIsSteppedUntilDone) {
  InsertOldRows();
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).OnText("SiteScreenContents").Times(20));
  SqliteCalls::Arm(Fault("step", SQLITE_IOERR).OnText("PathScreenContents").Times(30));
  EXPECT_TRUE(store_->StoreInputContents(&model_));
  EXPECT_EQ(SqliteCalls::Count("step"), 52);
  EXPECT_EQ(SiteRow() + PathRow(), QStringList());
}

TEST_P(ScreenContentsTest, FailuresOfRestoring) {
  InsertOldRows();
  const struct {
    const char* name;
    Fault fault;
    QStringList lines;
    bool result;
    bool site;
    bool path;
  } branches[] = {
      {"Open", Fault("open_v2", SQLITE_CANTOPEN), {cannotOpen}, false, false, false},
      {"PrepareSite",
       Fault("prepare_v2", SQLITE_NOMEM),
       {"SQL prepare  Restore site info" + noMemory},
       true,
       false,
       true},
      {"StepSite", Fault("step", SQLITE_BUSY), {}, true, false, true},
      {"PreparePath",
       Fault("prepare_v2", SQLITE_NOMEM).At(2),
       {"SQL prepare  Restore path information" + noMemory},
       true,
       true,
       false},
      {"StepPath", Fault("step", SQLITE_BUSY).At(2), {}, true, true, false},
  };
  for (const auto& branch : branches) {
    SCOPED_TRACE(branch.name);
    AlignerModel model;
    SqliteCalls::Reset();
    SqliteCalls::Arm(branch.fault);
    EXPECT_EQ(store_->RestoreInputContents(&model), branch.result);
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
    EXPECT_EQ(Lines(), branch.lines);
    EXPECT_EQ(model.HasCurrentSite(), branch.site);
    EXPECT_EQ(model.HasCurrentPath(), branch.path);
  }
}

INSTANTIATE_FOR_ALL_VERSIONS(ScreenContentsTest);

}  // namespace
