// How the first two versions delete.
#include <sqlite3.h>

#include <QRegularExpression>

#include "tests/store/DeletionScene.h"

namespace {

// The four deletes of alignments, and the alignment rows that each removes.
struct LegacyDelete {
  const char* name;
  const char* sql;
  const char* label;
  QStringList gone;
  QStringList before;  // lines of version 1 up to the steps
  QStringList after;
  int leaked;  // by retrieving a path
  bool (*run)(DeletionScene*);
};

const std::vector<LegacyDelete>& LegacyDeletes() {
  static const std::vector<LegacyDelete> deletes = {
      {"Site",
       "DELETE FROM AntennaAlignment WHERE SiteKey = ?",
       "Fetch Report Data for Site",
       RowsOf("AntennaAlignment", {1, 2}) + RowsOf("Sites", {1}),
       {},
       {},
       0,
       [](DeletionScene* scene) {
         return scene->Store()->DeleteReportsBySiteAndSector(scene->alpha_, scene->sector_);
       }},
      {"Path",
       "DELETE FROM PathAlignment WHERE PathKey = ?",
       "Fetch Report Data for Site",
       RowsOf("PathAlignment", {1, 2}) + RowsOf("Paths", {1}),
       {"The path key is  1"},
       {},
       0,
       [](DeletionScene* scene) { return scene->Store()->DeleteReportsByPath(scene->gamma_); }},
      {"SiteReport",
       "DELETE FROM AntennaAlignment WHERE SiteKey = ? AND AntennaAlignmentKey = ?",
       "Delete site by and id and index",
       RowsOf("AntennaAlignment", {2}),
       {},
       {"Ending transaction"},
       0,
       [](DeletionScene* scene) { return scene->Store()->DeleteReportsBySiteAndIndex(scene->alpha_, 0); }},
      {"PathReport",
       "DELETE FROM PathAlignment WHERE PathKey = ? AND PathAlignmentKey = ?",
       "Delete path by id and index",
       RowsOf("PathAlignment", {1}),
       {CloseFailure()},
       {},
       1,
       [](DeletionScene* scene) { return scene->Store()->DeleteReportsByPathAndIndex(scene->gamma_, 0); }},
  };
  return deletes;
}

const StoreVersion& VersionNumber(unsigned int number) { return StoreVersion::All()[number - 1]; }

class LegacyDeletionTest : public testing::TestWithParam<std::size_t> {
 protected:
  const LegacyDelete& Deletion() const { return LegacyDeletes()[GetParam()]; }
  // Runs the deletion on a scene; what it leaves open comes from its retrieval.
  bool Run(DeletionScene* scene) {
    SqliteLeakGuard::ExpectLeaked(Deletion().leaked, Deletion().leaked);
    return Deletion().run(scene);
  }
  // The lines of the second version: those of the first without the path's key.
  QStringList BeforeInVersion2() const { return Deletion().before.filter("sqlite3_close"); }
};

std::string DeletionName(const testing::TestParamInfo<std::size_t>& info) {
  return LegacyDeletes()[info.param].name;
}

// Required behaviour: the line says the opposite of what happened. It is written for a row as well as for a
// failure.
TEST_P(LegacyDeletionTest, Version1StepsUntilDoneAndLogsEveryOtherStep) {
  DeletionScene scene(VersionNumber(1));
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY)
                       .OnText(Deletion().sql)
                       .Results({SQLITE_BUSY, SQLITE_ROW, SQLITE_ERROR, SQLITE_OK, SQLITE_MISUSE,
                                 SQLITE_IOERR, SQLITE_BUSY}));
  EXPECT_TRUE(Run(&scene));
  EXPECT_EQ(SqliteCalls::FiredCount(), 7);
  QStringList loop;
  while (loop.size() < 7) loop << "SQLITE_DONE!";
  EXPECT_EQ(scene.Lines(), Deletion().before + loop + Deletion().after);
  scene.ExpectGone(Deletion().gone, {});
}

TEST_P(LegacyDeletionTest, Version1LogsNothingWhereTheFirstStepIsDone) {
  DeletionScene scene(VersionNumber(1));
  EXPECT_TRUE(Run(&scene));
  EXPECT_EQ(scene.Lines(), Deletion().before + Deletion().after);
  scene.ExpectGone(Deletion().gone, {});
}

// The row of the site or path itself is stepped without the line.
TEST_P(LegacyDeletionTest, TheOwnersRowIsSteppedWithoutTheLine) {
  for (const unsigned int number : {1U, 2U}) {
    DeletionScene scene(VersionNumber(number));
    SqliteCalls::Arm(Fault("step", SQLITE_BUSY).OnText("DELETE FROM Sites").Times(3));
    SqliteCalls::Arm(Fault("step", SQLITE_BUSY).OnText("DELETE FROM Paths").Times(3));
    EXPECT_TRUE(Run(&scene));
    EXPECT_EQ(scene.Lines().filter("SQLITE_DONE!"), QStringList());
    scene.ExpectGone(Deletion().gone, {});
    SqliteCalls::Reset();
    SqliteCalls::CloseLeaked();
  }
  SqliteLeakGuard::ExpectLeaked(0, 0);
}

TEST_P(LegacyDeletionTest, Version2StepsOnceAndLogsNoneOfIt) {
  DeletionScene scene(VersionNumber(2));
  SqliteCalls::Reset();
  SqliteCalls::Record();
  EXPECT_TRUE(Run(&scene));
  EXPECT_EQ(SqliteCalls::TakeTrace()
                .filter(QRegularExpression("^step "))
                .filter(QStringLiteral("[%1]").arg(Deletion().sql))
                .size(),
            1);
  EXPECT_EQ(scene.Lines(), BeforeInVersion2() + Deletion().after);
  scene.ExpectGone(Deletion().gone, {});
}

TEST_P(LegacyDeletionTest, Version2StopsAtTheFirstFailure) {
  DeletionScene scene(VersionNumber(2));
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).OnText(Deletion().sql));
  const bool isPath = QByteArray(Deletion().name) == "Path";
  EXPECT_EQ(Run(&scene), isPath);  // the deletion of a path is always true
  SqliteLeakGuard::ExpectLeaked(Deletion().leaked + 1, Deletion().leaked + 1);
  EXPECT_EQ(scene.Lines().filter("SQLITE_DONE!"), QStringList());
  scene.ExpectGone({}, {});
}

TEST_P(LegacyDeletionTest, StatementsKeepTheirLabels) {
  for (const unsigned int number : {1U, 2U}) {
    DeletionScene scene(VersionNumber(number));
    // The row of the site or path is deleted too, and would never go while alignments refer to it.
    SqliteCalls::Arm(Fault("prepare_v2", SQLITE_NOMEM).OnText(Deletion().sql));
    SqliteCalls::Arm(Fault("step", SQLITE_DONE).OnText("DELETE FROM Sites"));
    SqliteCalls::Arm(Fault("step", SQLITE_DONE).OnText("DELETE FROM Paths"));
    EXPECT_TRUE(Run(&scene));
    const QStringList before = number == 1 ? Deletion().before : BeforeInVersion2();
    EXPECT_EQ(
        scene.Lines(),
        before +
            QStringList(
                QStringLiteral("SQL prepare  %1  failed with  7 : out of memory").arg(Deletion().label)) +
            Deletion().after);
    scene.ExpectGone({}, {});
    SqliteCalls::Reset();
    SqliteCalls::CloseLeaked();
  }
  SqliteLeakGuard::ExpectLeaked(0, 0);
}

INSTANTIATE_TEST_SUITE_P(All, LegacyDeletionTest, testing::Range(std::size_t{0}, std::size_t{4}),
                         DeletionName);

}  // namespace
