// Every way in which deleting all reports of a site or a path can fail.
#include <sqlite3.h>

#include "tests/store/DeletionScene.h"

namespace {

const QString noMemory = QStringLiteral("  failed with  7 : out of memory");
const QString busy = QStringLiteral("  failed with  5 : database is locked");

QStringList operator+(const QStringList& lines, const QString& line) { return QStringList(lines) << line; }

// The main phase decides the result if there are no thresholds; the thresholds phase makes it true when its
// delete is done or cannot be prepared.
std::vector<DeletionBranch> SiteBranches(const DeletionScene& scene) {
  const QStringList keys = scene.AlphaKeyLines();
  const QStringList all = RowsOf("Sites", {1}) + RowsOf("AntennaAlignment", {1, 2}) + scene.AlphaAssociated();
  const QStringList thresholds = RowsOf("AntennaAlignmentThresholds", {1, 2});
  const QString noKey = QStringLiteral("Failed to get key for site");
  const char* const lookup = "SELECT  SiteKey";
  const char* const related = "FROM AntennaAlignment WHERE SiteKey=?";
  const char* const alignments = "DELETE FROM AntennaAlignment WHERE";
  const char* const rows = "DELETE FROM AntennaAlignmentThresholds";
  const QString prepareLookup = "SQL prepare  Select SiteKey for Site Identifier" + noMemory;
  const QString bindDelete = "SQL bind SiteKey (site delete) failed with  7 : out of memory";
  const QString prepareThresholds = "SQL prepare  Fetch Report Thresholds Data for Site" + noMemory;
  const QString cannotOpen = "Can't open database: rval= 14 : unable to open database file";

  std::vector<DeletionBranch> branches{
      {"OpenMain", {OnMain("open_v2", SQLITE_CANTOPEN, "")}, {cannotOpen}, false, true, {}, {}},
      {"BeginMain",
       {OnMain("exec", SQLITE_BUSY, "BEGIN")},
       {"SQL  Begin Transaction" + busy},
       false,
       true,
       {},
       {}},
      {"PrepareLookup",
       {OnMain("prepare_v2", SQLITE_NOMEM, lookup)},
       {prepareLookup, noKey},
       false,
       true,
       {},
       {}},
      {"BindLookup",
       {OnMain("bind_text", SQLITE_NOMEM, lookup)},
       {"SQL bind failed with  7 : out of memory", noKey},
       false,
       true,
       {},
       {}},
      {"RollBack",
       {OnMain("prepare_v2", SQLITE_NOMEM, lookup), OnMain("exec", SQLITE_BUSY, "ROLLBACK")},
       {prepareLookup, noKey, "SQL  Roll Back" + busy},
       false,
       true,
       {},
       {}},
      {"BindAlignments",
       {OnMain("bind_int64", SQLITE_NOMEM, alignments)},
       keys + bindDelete + CloseFailure(),
       false,
       true,
       {},
       thresholds,
       1},
      {"PrepareSite",
       {OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM Sites")},
       keys + ("SQL prepare  Delete site" + noMemory),
       true,
       true,
       RowsOf("AntennaAlignment", {1, 2}) + scene.AlphaAssociated(),
       thresholds},
      {"BindSite",
       {OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Sites")},
       keys + "SQL bind SiteKey (key delete) failed with  7 : out of memory" + CloseFailure(),
       false,
       true,
       {},
       thresholds,
       1},
      // The result does not depend on the commit. Closing undoes the changes.
      {"Commit",
       {OnMain("exec", SQLITE_BUSY, "END TRANSACTION")},
       keys + ("SQL  End Transaction" + busy),
       true,
       true,
       {},
       thresholds},
  };
  if (scene.Version().number != 1) {
    branches.push_back({"StepAlignments",
                        {OnMain("step", SQLITE_BUSY, alignments)},
                        keys + CloseFailure(),
                        false,
                        true,
                        {},
                        thresholds,
                        1});
  }
  if (scene.Version().DeletesAssociatedRecords()) {
    const QString noKeys = QStringLiteral("Failed to retrieve relevant keys for this site");
    const DeletionBranch associated[] = {
        {"PrepareRelated",
         {OnMain("prepare_v2", SQLITE_NOMEM, related)},
         {"SQL prepare  Fetch Keys For Site" + noMemory, noKeys},
         false,
         true,
         {},
         thresholds},
        {"BindRelated",
         {OnMain("bind_int", SQLITE_NOMEM, related)},
         {"SQL bind failed with  7 : out of memory", noKeys},
         false,
         true,
         {},
         thresholds},
        {"PrepareOrientation",
         {OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM Orientation").At(3)},
         keys + ("SQL prepare  Generic record delete" + noMemory) + "Failed to delete orientation keys",
         false,
         true,
         {},
         thresholds},
        {"BindGeolocation",
         {OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Geolocation")},
         keys + "SQL bind  GeolocationKey  in table  Geolocation" + "Failed to delete geolocation keys",
         false,
         true,
         {},
         thresholds},
        {"StepHeight",
         {OnMain("step", SQLITE_BUSY, "DELETE FROM Height").Times(5)},
         keys + "Failed to delete height keys",
         false,
         true,
         {},
         thresholds},
    };
    branches.insert(branches.end(), std::begin(associated), std::end(associated));
  }
  if (!scene.Version().HasThresholdsFile()) return branches;

  const Fault failing = OnMain("prepare_v2", SQLITE_NOMEM, related);
  const QStringList failed{"SQL prepare  Fetch Keys For Site" + noMemory,
                           "Failed to retrieve relevant keys for this site"};
  const struct {
    const char* name;
    Fault fault;
    QStringList lines;
    bool makesTrue;
    int leaked;
  } phases[] = {
      {"OpenThresholds", OnThresholds("open_v2", SQLITE_CANTOPEN, ""), {cannotOpen}, false, 0},
      {"BeginThresholds",
       OnThresholds("exec", SQLITE_BUSY, "BEGIN"),
       {"SQL  Begin Transaction" + busy},
       false,
       0},
      {"PrepareThresholds", OnThresholds("prepare_v2", SQLITE_NOMEM, rows), {prepareThresholds}, true, 0},
      {"BindThresholds",
       OnThresholds("bind_int64", SQLITE_NOMEM, rows),
       {bindDelete, CloseFailure()},
       false,
       1},
      {"StepThresholds", OnThresholds("step", SQLITE_BUSY, rows), {CloseFailure()}, false, 1},
  };
  for (const auto& phase : phases) {
    branches.push_back({phase.name, {phase.fault}, keys + phase.lines, true, true, all, {}, phase.leaked});
    branches.push_back({phase.name,
                        {failing, phase.fault},
                        failed + phase.lines,
                        false,
                        phase.makesTrue,
                        {},
                        {},
                        phase.leaked});
  }
  branches.push_back({"CommitThresholds",
                      {OnThresholds("exec", SQLITE_BUSY, "END TRANSACTION")},
                      keys + ("SQL  End Transaction" + busy),
                      true,
                      true,
                      all,
                      {}});
  branches.push_back(
      {"RollBackThresholds",
       {failing, OnThresholds("step", SQLITE_BUSY, rows), OnThresholds("exec", SQLITE_BUSY, "ROLLBACK")},
       failed + ("SQL  Roll Back" + busy) + CloseFailure(),
       false,
       false,
       {},
       {},
       1});
  return branches;
}

// Always true, and never rolled back.
std::vector<DeletionBranch> PathBranches(const DeletionScene& scene) {
  const QStringList found = scene.FoundPath(1);
  const QStringList keys = found + scene.GammaKeyLines();
  const QStringList reports = RowsOf("PathAlignment", {1, 2});
  const QStringList pathAndReports = RowsOf("Paths", {1}) + reports;
  const QStringList all = pathAndReports + scene.GammaAssociated();
  const QStringList thresholds = RowsOf("PathAlignmentThresholds", {1, 2});
  const QString cannotOpen = "Can't open database: rval= 14 : unable to open database file";
  const char* const lookup = "SELECT  PathKey";
  const char* const related = "FROM PathAlignment WHERE PathKey=?";
  const char* const alignments = "DELETE FROM PathAlignment WHERE";
  const char* const rows = "DELETE FROM PathAlignmentThresholds";

  const auto branch = [](const char* name, const Fault& fault, const QStringList& lines,
                         const QStringList& fromMain, const QStringList& fromThresholds, int leaked = 0) {
    return DeletionBranch{name, {fault}, lines, true, true, fromMain, fromThresholds, leaked};
  };
  std::vector<DeletionBranch> branches{
      branch("OpenMain", OnMain("open_v2", SQLITE_CANTOPEN, ""), {cannotOpen}, {}, {}),
      branch("BeginMain", OnMain("exec", SQLITE_BUSY, "BEGIN"), {"SQL  Begin Transaction" + busy}, {}, {}),
      branch("PrepareLookup", OnMain("prepare_v2", SQLITE_NOMEM, lookup),
             {"SQL prepare  Select PathKey for Path Identifier" + noMemory}, {}, {}),
      branch("BindLookup", OnMain("bind_text", SQLITE_NOMEM, lookup),
             {"SQL bind failed with  7 : out of memory"}, {}, {}),
      // The text names the site.
      branch("BindAlignments", OnMain("bind_int64", SQLITE_NOMEM, alignments),
             keys + "SQL bind SiteKey (site delete) failed with  7 : out of memory" + CloseFailure(), {},
             thresholds, 1),
      branch("PreparePath", OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM Paths"),
             keys + ("SQL prepare  Delete site" + noMemory), reports + scene.GammaAssociated(), thresholds),
      branch("BindPath", OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Paths"),
             keys + "SQL bind PathKey (key delete) failed with  7 : out of memory" + CloseFailure(), reports,
             thresholds, 1),
      branch("Commit", OnMain("exec", SQLITE_BUSY, "END TRANSACTION"), keys + ("SQL  End Transaction" + busy),
             {}, thresholds),
  };
  if (scene.Version().number != 1) {
    branches.push_back(branch("StepAlignments", OnMain("step", SQLITE_BUSY, alignments),
                              keys + CloseFailure(), {}, thresholds, 1));
  }
  if (scene.Version().DeletesAssociatedRecords()) {
    // Without the lists the alignments and the path go all the same, and leave behind what they referred to.
    const QStringList unlisted =
        QStringList("Failed to retrieve relevant keys for this path") + scene.KeyLines("", "", "");
    const QString last = QStringLiteral("Deleting of associated records failed");
    const DeletionBranch associated[] = {
        branch("PrepareRelated", OnMain("prepare_v2", SQLITE_NOMEM, related),
               found + ("SQL prepare  Fetch Keys For Path" + noMemory) + unlisted, pathAndReports,
               thresholds),
        branch("BindRelated", OnMain("bind_int", SQLITE_NOMEM, related),
               found + "SQL bind failed with  7 : out of memory" + unlisted, pathAndReports, thresholds),
        branch("PrepareOrientation", OnMain("prepare_v2", SQLITE_NOMEM, "DELETE FROM Orientation").At(3),
               keys + ("SQL prepare  Generic record delete" + noMemory) +
                   "Failed to delete orientation keys" + last,
               pathAndReports + RowsOf("Orientation", {7, 8}), thresholds),
        branch("BindGeolocation", OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Geolocation").At(2),
               keys + "SQL bind  GeolocationKey  in table  Geolocation" +
                   "Failed to delete geolocation keys" + last,
               pathAndReports + RowsOf("Orientation", {7, 8, 9, 10}) + RowsOf("Geolocation", {4}),
               thresholds),
        branch("StepHeight", OnMain("step", SQLITE_BUSY, "DELETE FROM Height").Times(6),
               keys + "Failed to delete height keys" + last,
               pathAndReports + RowsOf("Orientation", {7, 8, 9, 10}) + RowsOf("Geolocation", {4, 5, 6, 7}),
               thresholds),
    };
    branches.insert(branches.end(), std::begin(associated), std::end(associated));
  }
  if (!scene.Version().HasThresholdsFile()) return branches;

  const DeletionBranch phases[] = {
      branch("OpenThresholds", OnThresholds("open_v2", SQLITE_CANTOPEN, ""), keys + cannotOpen, all, {}),
      branch("BeginThresholds", OnThresholds("exec", SQLITE_BUSY, "BEGIN"),
             keys + ("SQL  Begin Transaction" + busy), all, {}),
      branch("PrepareThresholds", OnThresholds("prepare_v2", SQLITE_NOMEM, rows),
             keys + ("SQL prepare  Fetch Report Data for Site" + noMemory), all, {}),
      branch("BindThresholds", OnThresholds("bind_int64", SQLITE_NOMEM, rows),
             keys + "SQL bind PathKey (path delete) failed with  7 : out of memory" + CloseFailure(), all, {},
             1),
      branch("StepThresholds", OnThresholds("step", SQLITE_BUSY, rows), keys + CloseFailure(), all, {}, 1),
      branch("StepThresholdsRows", OnThresholds("step", SQLITE_ROW, rows).Times(2), keys, all, thresholds),
      branch("CommitThresholds", OnThresholds("exec", SQLITE_BUSY, "END TRANSACTION"),
             keys + ("SQL  End Transaction" + busy), all, {}),
  };
  branches.insert(branches.end(), std::begin(phases), std::end(phases));
  return branches;
}

using DeletionBranchesTest = testing::TestWithParam<StoreVersion>;

TEST_P(DeletionBranchesTest, OfASite) {
  ExpectBranches(GetParam(), SiteBranches, 0, [](DeletionScene* scene) {
    return scene->Store()->DeleteReportsBySiteAndSector(scene->alpha_, scene->sector_);
  });
}

TEST_P(DeletionBranchesTest, OfAPath) {
  ExpectBranches(GetParam(), PathBranches, 0,
                 [](DeletionScene* scene) { return scene->Store()->DeleteReportsByPath(scene->gamma_); });
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionBranchesTest);

}  // namespace
