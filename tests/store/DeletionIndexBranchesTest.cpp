// Every way in which deleting one report can fail, and that its container is released whatever happens.
#include <sqlite3.h>

#include "model/AntennaAlignmentReportData.h"
#include "model/PathAlignmentReportData.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/model/Counted.h"
#include "tests/store/DeletionScene.h"

namespace {

const QString ending = QStringLiteral("Ending transaction");
const QString rollingBack = QStringLiteral("Rolling back transaction");
const QString noMemory = QStringLiteral("  failed with  7 : out of memory");
const QString busy = QStringLiteral("  failed with  5 : database is locked");
const QString cannotOpen = QStringLiteral("Can't open database: rval= 14 : unable to open database file");

// With thresholds the retrieval looks up the key first, so the deletion's own look-up is the second.
int OwnLookup(const DeletionScene& scene) { return scene.Version().HasThresholdsFile() ? 2 : 1; }

// A thresholds phase that fails, or fails to fail, and what it does to the result of the main phase.
struct ThresholdsPhase {
  const char* name;
  Fault fault;
  QStringList lines;
  bool makesTrue;
  bool finishes;  // the transaction is ended, with a line in the site's case
  int leaked;
};

std::vector<ThresholdsPhase> ThresholdsPhases(const char* rows, const char* label, const QString& ownerLine,
                                              const QString& keyLine, const QStringList& stepLines) {
  return {
      {"OpenThresholds", OnThresholds("open_v2", SQLITE_CANTOPEN, "").At(2), {cannotOpen}, false, false, 0},
      {"BeginThresholds",
       OnThresholds("exec", SQLITE_BUSY, "BEGIN"),
       {"SQL  Begin Transaction" + busy},
       false,
       false,
       0},
      {"PrepareThresholds",
       OnThresholds("prepare_v2", SQLITE_NOMEM, rows),
       {QStringLiteral("SQL prepare  %1").arg(label) + noMemory},
       true,
       true,
       0},
      {"BindThresholdsOwner", OnThresholds("bind_int64", SQLITE_NOMEM, rows), {ownerLine}, false, true, 0},
      {"BindThresholdsKey", OnThresholds("bind_int64", SQLITE_NOMEM, rows).At(2), {keyLine}, false, true, 0},
      {"StepThresholds", OnThresholds("step", SQLITE_BUSY, rows), stepLines, false, true, 1},
  };
}

// The branches of the thresholds phase, after a main phase that succeeded and after one that did not.
void AddThresholdsPhases(const std::vector<ThresholdsPhase>& phases, const DeletionBranch& done,
                         const DeletionBranch& failed, bool logsEnd, std::vector<DeletionBranch>* branches) {
  for (const ThresholdsPhase& phase : phases) {
    for (const DeletionBranch& before : {done, failed}) {
      DeletionBranch branch = before;
      branch.name = phase.name;
      branch.faults.push_back(phase.fault);
      branch.lines += phase.lines;
      branch.result = before.mainResult || phase.makesTrue;
      if (phase.finishes && logsEnd) branch.lines << (branch.result ? ending : rollingBack);
      if (phase.leaked > 0) branch.lines << CloseFailure();
      branch.leaked = phase.leaked;
      branch.goneFromThresholds.clear();
      branches->push_back(branch);
    }
  }
}

// Position 1 of "Alpha": alignment 1. No row of the thresholds file is ever found.
std::vector<DeletionBranch> SiteBranches(const DeletionScene& scene) {
  const bool second = scene.Version().HasThresholdsFile();
  const QStringList all =
      RowsOf("AntennaAlignment", {1}) +
      scene.IfAssociated(RowsOf("Orientation", {1, 2}) + RowsOf("Geolocation", {1}) + RowsOf("Height", {1}));
  const char* const lookup = "SELECT  SiteKey";
  const char* const keys = "FROM AntennaAlignment WHERE AntennaAlignmentKey=?";
  const char* const alignment = "DELETE FROM AntennaAlignment WHERE";
  const QString noKey = QStringLiteral("Couldn't get ID for site identifier");
  const QString noKeys = QStringLiteral("Couldn't get keys for site measurement");
  const QString notDeleted = QStringLiteral("Couldn't delete associated records");
  const QString ownerLine = QStringLiteral("failed to bind site key");
  const QString keyLine = QStringLiteral("failed to bind antenna alignment key");
  const QString stepLine = QStringLiteral("Failed to execute SQLITE step, code:  5");

  // The main phase fails with these lines and is rolled back; the thresholds phase then succeeds.
  const auto rolledBack = [&](const char* name, const Fault& fault, QStringList lines, int leaked = 0) {
    lines << rollingBack;
    if (leaked > 0) lines << CloseFailure();
    if (second) lines << ending;
    return DeletionBranch{name, {fault}, lines, false, true, {}, {}, leaked};
  };
  QStringList committed{ending};
  if (second) committed << ending;
  std::vector<DeletionBranch> branches{
      {"OpenMain", {OnMain("open_v2", SQLITE_CANTOPEN, "").At(2)}, {cannotOpen}, false, false, {}, {}},
      {"BeginMain",
       {OnMain("exec", SQLITE_BUSY, "BEGIN")},
       QStringList("SQL  Begin Transaction" + busy) + (second ? QStringList(ending) : QStringList()),
       false,
       true,
       {},
       {}},
      rolledBack("PrepareLookup", OnMain("prepare_v2", SQLITE_NOMEM, lookup).At(OwnLookup(scene)),
                 {"SQL prepare  Select SiteKey for Site Identifier" + noMemory, noKey}),
      rolledBack("BindLookup", OnMain("bind_text", SQLITE_NOMEM, lookup).At(OwnLookup(scene)),
                 {"SQL bind failed with  7 : out of memory", noKey}),
      rolledBack("BindOwner", OnMain("bind_int64", SQLITE_NOMEM, alignment), {ownerLine}),
      rolledBack("BindKey", OnMain("bind_int64", SQLITE_NOMEM, alignment).At(2), {keyLine}),
      {"Commit",
       {OnMain("exec", SQLITE_BUSY, "END TRANSACTION")},
       QStringList{ending, "SQL  End Transaction" + busy} + (second ? QStringList(ending) : QStringList()),
       true,
       true,
       {},
       {}},
  };
  if (scene.Version().number != 1) {
    branches.push_back(rolledBack("Step", OnMain("step", SQLITE_BUSY, alignment), {stepLine}, 1));
    // Here a row does not count as done, unlike in the deletion of a whole site.
    branches.push_back(rolledBack("StepRow", OnMain("step", SQLITE_ROW, alignment),
                                  {"Failed to execute SQLITE step, code:  100"}, 1));
  }
  if (!scene.Version().DeletesAssociatedRecords()) {
    branches.push_back({"Prepare",
                        {OnMain("prepare_v2", SQLITE_NOMEM, alignment)},
                        {"SQL prepare  Delete site by and id and index" + noMemory, ending},
                        true,
                        true,
                        {},
                        {}});
    return branches;
  }
  const DeletionBranch associated[] = {
      rolledBack("PrepareKeys", OnMain("prepare_v2", SQLITE_NOMEM, keys),
                 {"SQL prepare  Fetch Keys For Site" + noMemory, noKeys}),
      rolledBack("BindKeys", OnMain("bind_int", SQLITE_NOMEM, keys),
                 {"SQL bind failed with  7 : out of memory", noKeys}),
      // The alignment stays, so what it refers to cannot be deleted.
      rolledBack("Prepare", OnMain("prepare_v2", SQLITE_NOMEM, alignment),
                 {"SQL prepare  Delete site by and id and index" + noMemory,
                  "Failed to delete orientation keys", notDeleted}),
      rolledBack("Associated", OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Height"),
                 {"SQL bind  HeightKey  in table  Height", "Failed to delete height keys", notDeleted}),
  };
  branches.insert(branches.end(), std::begin(associated), std::end(associated));
  if (!second) return branches;

  const DeletionBranch done{"", {}, {ending}, true, true, all, {}};
  const DeletionBranch failed{
      "", {OnMain("bind_int64", SQLITE_NOMEM, alignment)}, {ownerLine, rollingBack}, false, false, {}, {}};
  AddThresholdsPhases(
      ThresholdsPhases("DELETE FROM AntennaAlignmentThresholds", "Delete site thresholds by and id and index",
                       ownerLine, keyLine, {stepLine}),
      done, failed, true, &branches);
  return branches;
}

// Position 0 of "Gamma": alignment 1, whose thresholds row goes. No line is written about the transactions.
std::vector<DeletionBranch> PathBranches(const DeletionScene& scene) {
  const QStringList all = RowsOf("PathAlignment", {1}) +
                          scene.IfAssociated(RowsOf("Orientation", {7, 8}) + RowsOf("Geolocation", {4, 5}) +
                                             RowsOf("Height", {4}));
  const QStringList thresholds = RowsOf("PathAlignmentThresholds", {1});
  const bool second = scene.Version().HasThresholdsFile();
  const bool associated = scene.Version().DeletesAssociatedRecords();
  const QStringList retrieval =
      second ? QStringList{CloseFailure(), CloseFailure()} : QStringList(CloseFailure());
  const QString looking = QStringLiteral("Finding keys for a specific path measurement");
  const QStringList found =
      retrieval +
      (associated ? QStringList{looking, "Sqlite step rval:  100", "Sqlite step rval:  101"} : QStringList());
  const char* const lookup = "SELECT  PathKey";
  const char* const keys = "FROM PathAlignment WHERE PathAlignmentKey=?";
  const char* const alignment = "DELETE FROM PathAlignment WHERE";
  const QString ownerLine = QStringLiteral("failed to bind path key");
  const QString keyLine = QStringLiteral("Failed to bind path report key");

  // The main phase fails; if it had looked up the path's key, the thresholds are deleted all the same.
  const auto rolledBack = [&](const char* name, const Fault& fault, const QStringList& lines,
                              const QStringList& fromThresholds, int leaked = 0) {
    return DeletionBranch{name, {fault}, lines, false, true, {}, fromThresholds, leaked};
  };
  std::vector<DeletionBranch> branches{
      {"OpenMain",
       {OnMain("open_v2", SQLITE_CANTOPEN, "").At(2)},
       retrieval + QStringList(cannotOpen),
       false,
       false,
       {},
       {}},
      rolledBack("BeginMain", OnMain("exec", SQLITE_BUSY, "BEGIN"),
                 retrieval + QStringList("SQL  Begin Transaction" + busy), {}),
      rolledBack("PrepareLookup", OnMain("prepare_v2", SQLITE_NOMEM, lookup).At(OwnLookup(scene)),
                 retrieval + QStringList("SQL prepare  Select PathKey for Path Identifier" + noMemory), {}),
      rolledBack("BindLookup", OnMain("bind_text", SQLITE_NOMEM, lookup).At(OwnLookup(scene)),
                 retrieval + QStringList("SQL bind failed with  7 : out of memory"), {}),
      rolledBack("BindOwner", OnMain("bind_int64", SQLITE_NOMEM, alignment), found + QStringList(ownerLine),
                 thresholds),
      rolledBack("BindKey", OnMain("bind_int64", SQLITE_NOMEM, alignment).At(2), found + QStringList(keyLine),
                 thresholds),
      {"Commit",
       {OnMain("exec", SQLITE_BUSY, "END TRANSACTION")},
       found + QStringList("SQL  End Transaction" + busy),
       true,
       true,
       {},
       thresholds},
  };
  if (scene.Version().number != 1) {
    branches.push_back(rolledBack("Step", OnMain("step", SQLITE_BUSY, alignment),
                                  found + QStringList(CloseFailure()), thresholds, 1));
  }
  const QStringList unprepared = found + QStringList("SQL prepare  Delete path by id and index" + noMemory);
  if (!associated) {
    branches.push_back(
        {"Prepare", {OnMain("prepare_v2", SQLITE_NOMEM, alignment)}, unprepared, true, true, {}, {}});
    return branches;
  }
  const DeletionBranch more[] = {
      rolledBack("PrepareKeys", OnMain("prepare_v2", SQLITE_NOMEM, keys),
                 retrieval + QStringList{looking, "SQL prepare  Fetch Keys For Path" + noMemory}, thresholds),
      rolledBack("BindKeys", OnMain("bind_int", SQLITE_NOMEM, keys),
                 retrieval + QStringList{looking, "SQL bind failed with  7 : out of memory"}, thresholds),
      rolledBack("Prepare", OnMain("prepare_v2", SQLITE_NOMEM, alignment),
                 unprepared + QStringList("Failed to delete orientation keys"), thresholds),
      rolledBack("Associated", OnMain("bind_int64", SQLITE_NOMEM, "DELETE FROM Height"),
                 found + QStringList{"SQL bind  HeightKey  in table  Height", "Failed to delete height keys"},
                 thresholds),
  };
  branches.insert(branches.end(), std::begin(more), std::end(more));
  if (!second) return branches;

  const DeletionBranch done{"", {}, found, true, true, all, {}};
  const DeletionBranch failed{
      "", {OnMain("bind_int64", SQLITE_NOMEM, alignment)}, found + QStringList(ownerLine), false, false, {},
      {}};
  AddThresholdsPhases(ThresholdsPhases("DELETE FROM PathAlignmentThresholds", "Delete path by id and index",
                                       ownerLine, keyLine, {}),
                      done, failed, false, &branches);
  return branches;
}

using DeletionIndexBranchesTest = testing::TestWithParam<StoreVersion>;

TEST_P(DeletionIndexBranchesTest, OfASite) {
  ExpectBranches(GetParam(), SiteBranches, 0, [](DeletionScene* scene) {
    return scene->Store()->DeleteReportsBySiteAndIndex(scene->alpha_, 1);
  });
}

TEST_P(DeletionIndexBranchesTest, OfAPath) {
  ExpectBranches(GetParam(), PathBranches, GetParam().HasThresholdsFile() ? 2 : 1, [](DeletionScene* scene) {
    return scene->Store()->DeleteReportsByPathAndIndex(scene->gamma_, 0);
  });
}

INSTANTIATE_FOR_ALL_VERSIONS(DeletionIndexBranchesTest);

// ---- the container of the retrieval

// A store whose retrievals count the containers that they return and those that are destroyed, and can return
// no container.
template <typename Version>
class CountingStore : public Version {
 public:
  using Version::Version;
  static CountingStore* Open(const QString& main, const QString& thresholds) {
    return new CountingStore(main, thresholds);
  }
  static CountingStore* Create(const QString& main, const QString& thresholds) {
    auto* store = new CountingStore(main, thresholds);
    store->CreateTables();
    return store;
  }

  AntennaAlignmentPdfReportData* GetAlignmentReportDataForSite(QString& site) override {
    return Count(std::unique_ptr<AntennaAlignmentPdfReportData>(Version::GetAlignmentReportDataForSite(site)),
                 site, &AntennaAlignmentPdfReportData::AlignmentData);
  }
  PathAlignmentPdfReportData* GetPathAlignmentReportDataForSite(QString path) override {
    return Count(
        std::unique_ptr<PathAlignmentPdfReportData>(Version::GetPathAlignmentReportDataForSite(path)), path,
        &PathAlignmentPdfReportData::PathData);
  }

 private:
  template <typename Container, typename Records>
  static Container* Count(const std::unique_ptr<Container>& container, const QString& name, Records records) {
    if (answersNull || !container) return nullptr;
    ++made;
    auto* taken = new std::remove_pointer_t<decltype((container.get()->*records)())>;
    taken->swap(*(container.get()->*records)());
    return new Counted<Container>(&destroyed, name, name, taken);
  }

 public:
  static inline int made = 0;
  static inline int destroyed = 0;
  static inline bool answersNull = false;
};

template <typename Version>
class DeletionContainerTest : public testing::Test {};

using SomeVersions =
    testing::Types<AlignmentDatabaseVersion1, AlignmentDatabaseVersion3, AlignmentDatabaseVersion7>;

struct VersionNames {
  template <typename Version>
  static std::string GetName(int) {
    return "Version" + std::to_string(Version({}, {}).Version::Version());
  }
};

TYPED_TEST_SUITE(DeletionContainerTest, SomeVersions, VersionNames);

// Whatever is deleted or fails: each position in range, each out of range, and each call of the engine.
TYPED_TEST(DeletionContainerTest, IsReleasedOnEveryWayOut) {
  using Store = CountingStore<TypeParam>;
  const StoreVersion version = MakeStoreVersion<Store>(TypeParam({}, {}).TypeParam::Version());
  Store::answersNull = false;
  for (const bool site : {true, false}) {
    for (const int index : {-1, 0, 1, 2}) {
      bool fired = true;
      for (int call = 1; fired; ++call) {
        DeletionScene scene(version);
        // Deletes of rows are stepped without end if they fail for good, so the call fails once.
        SqliteCalls::Arm(Fault("", SQLITE_IOERR).At(call));
        Store::made = Store::destroyed = 0;
        if (site) {
          scene.Store()->DeleteReportsBySiteAndIndex(scene.alpha_, index);
        } else {
          scene.Store()->DeleteReportsByPathAndIndex(scene.gamma_, index);
        }
        fired = SqliteCalls::Fired();
        SqliteCalls::Reset();
        EXPECT_EQ(Store::destroyed, Store::made) << "site " << site << " index " << index << " call " << call;
        EXPECT_TRUE(fired || Store::made == 1);
        scene.Lines();
        SqliteCalls::CloseLeaked();
      }
    }
  }
}

// The retrieval is called through the interface; without a container nothing more is opened.
TYPED_TEST(DeletionContainerTest, NoneMeansFalse) {
  using Store = CountingStore<TypeParam>;
  DeletionScene scene(MakeStoreVersion<Store>(TypeParam({}, {}).TypeParam::Version()));
  Store::answersNull = true;
  SqliteCalls::Reset();
  EXPECT_FALSE(scene.Store()->DeleteReportsBySiteAndIndex(scene.alpha_, 0));
  EXPECT_FALSE(scene.Store()->DeleteReportsByPathAndIndex(scene.gamma_, 0));
  EXPECT_EQ(SqliteCalls::Count("open_v2"), scene.Version().HasThresholdsFile() ? 4 : 2);
  EXPECT_EQ(SqliteCalls::Count("exec"), SqliteCalls::Count("open_v2") * 2);  // no transaction
  SqliteCalls::CloseLeaked();
  scene.Lines();
  scene.ExpectGone({}, {});
}

// ---- when the report's key is read

QStringList callsBeforeKey;

class AskedSiteReport : public AntennaAlignmentReportData {
 public:
  AskedSiteReport()
      : AntennaAlignmentReportData(1, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr) {}
  unsigned int AntennaAlignmentKey() const override {
    callsBeforeKey << SqliteCalls::TakeTrace().filter("exec ").last();
    return AntennaAlignmentReportData::AntennaAlignmentKey();
  }
};

class AskedPathReport : public PathAlignmentReportData {
 public:
  AskedPathReport()
      : PathAlignmentReportData(1, nullptr, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr) {}
  unsigned int PathAlignmentKey() const override {
    callsBeforeKey << SqliteCalls::TakeTrace().filter("exec ").last();
    return PathAlignmentReportData::PathAlignmentKey();
  }
};

class AskedReportsStore : public AlignmentDatabaseVersion7 {
 public:
  using AlignmentDatabaseVersion7::AlignmentDatabaseVersion7;
  AntennaAlignmentPdfReportData* GetAlignmentReportDataForSite(QString& site) override {
    return new AntennaAlignmentPdfReportData(site, site,
                                             new QVector<IAntennaAlignmentReportData*>{new AskedSiteReport});
  }
  PathAlignmentPdfReportData* GetPathAlignmentReportDataForSite(QString path) override {
    return new PathAlignmentPdfReportData(path, path,
                                          new QVector<IPathAlignmentReportData*>{new AskedPathReport});
  }
};

// Once, after the main file's transaction has begun.
TEST(DeletionReportKeyTest, IsReadInsideTheTransaction) {
  DeletionScene scene(StoreVersion::All().back());
  AskedReportsStore store(scene.Main(), scene.Thresholds());
  for (const bool site : {true, false}) {
    callsBeforeKey.clear();
    SqliteCalls::Reset();
    SqliteCalls::Record();
    EXPECT_TRUE(site ? store.DeleteReportsBySiteAndIndex(scene.alpha_, 0)
                     : store.DeleteReportsByPathAndIndex(scene.gamma_, 0));
    EXPECT_EQ(callsBeforeKey, QStringList{"exec BEGIN TRANSACTION; = 0"});
  }
  scene.Lines();
}

// If none begins, the path's thresholds are looked for under the report's key all the same, and under a path
// key that no path has.
TEST(DeletionReportKeyTest, IsBoundWhereNoTransactionBegins) {
  DeletionScene scene(StoreVersion::All().back());
  AskedReportsStore store(scene.Main(), scene.Thresholds());
  SqliteCalls::Reset();
  SqliteCalls::Arm(OnMain("exec", SQLITE_BUSY, "BEGIN"));
  SqliteCalls::Record();
  EXPECT_TRUE(store.DeleteReportsByPathAndIndex(scene.gamma_, 0));
  const QString sql = " = 0 [DELETE FROM PathAlignmentThresholds WHERE PathKey = ? AND PathAlignmentKey = ?]";
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("bind_int64"),
            (QStringList{"bind_int64 1, 0" + sql, "bind_int64 2, 1" + sql}));
  scene.Lines();
  scene.ExpectGone({}, {});
}

}  // namespace
