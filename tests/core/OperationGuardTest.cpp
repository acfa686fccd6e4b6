// What a guard promises about the calls on its thread. That every operation keeps to it is a matter for the
// sweeps.
#include "core/OperationGuard.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <memory>
#include <thread>

#include "core/Connection.h"
#include "core/Statement.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "schema/SchemaVersion7.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/OpenDescriptors.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"

namespace {

using Failure = OperationGuard::Failure;
using Limits = OperationGuard::Limits;

constexpr int noLimit = 0;

class OperationGuardTest : public testing::Test {
 protected:
  OperationGuardTest() { SqliteCalls::Reset(); }
  // Debug lines are a matter for other tests: nothing here rests on one.
  ~OperationGuardTest() override { files_.Lines(); }

  void SaveSites(int count) {
    for (int number = 1; number <= count; ++number) SaveSample(store_, SampleSiteAlignment(number));
    SqliteCalls::Reset();
  }
  sqlite3* OpenMain() const { return Sql::OpenForWriting(files_.Main()); }
  QString Main() const { return files_.Main(); }

  StoreFiles files_;
  StorePointer store_ = OwnStore(AlignmentDatabaseVersion7::Create(files_.Main(), files_.Thresholds()));
};

QVector<int> Codes(const OperationGuard& guard) {
  QVector<int> codes;
  for (const Failure& failure : guard.Failures()) codes << failure.code;
  return codes;
}

QStringList Texts(const OperationGuard& guard) {
  QStringList texts;
  for (const Failure& failure : guard.Failures()) texts << failure.text;
  return texts;
}

// A statement whose steps fail this many times before it is done. Returns how often it was stepped.
int StepsOfAFailingLoop(sqlite3* db, int failures) {
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(failures));
  Statement(db, "DELETE FROM Sites", "Delete").StepUntilDone([] {});
  return SqliteCalls::Count("step");
}

// ---- nothing is silent

TEST_F(OperationGuardTest, SucceedsWhereNothingFails) {
  const OperationGuard guard;
  SaveSites(2);
  EXPECT_EQ(store_->GetSiteIdentifiers().size(), 2);
  EXPECT_TRUE(guard.Succeeded());
  EXPECT_EQ(guard.Failures().size(), 0);
  EXPECT_FALSE(guard.LoopEnded());
  EXPECT_EQ(guard.RefusedConnections(), 0);
}

TEST_F(OperationGuardTest, ReadingMakesTheSameCallsWithAndWithoutIt) {
  SaveSites(1);
  const auto trace = [&] {
    SqliteCalls::Record();
    QString site = QStringLiteral("Site 1");
    delete store_->GetAlignmentReportDataForSite(site);
    return SqliteCalls::TakeTrace();
  };
  const QStringList without = trace();
  EXPECT_FALSE(without.isEmpty());
  const OperationGuard guard;
  EXPECT_EQ(trace(), without);
}

TEST_F(OperationGuardTest, TellsTheExtendedCodeAndTheText) {
  const Connection db(OpenMain());
  const OperationGuard guard;
  for (int time = 0; time < 2; ++time) {
    Statement insert(db, "INSERT INTO Sites VALUES (1, ?)", "Insert");
    insert.Text(QStringLiteral("a"), "SQL bind failed with ").Run();
  }
  EXPECT_FALSE(guard.Succeeded());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_CONSTRAINT_PRIMARYKEY});
  EXPECT_EQ(Texts(guard), QStringList{"step INSERT INTO Sites VALUES (1, ?): UNIQUE constraint failed: "
                                      "Sites.SiteKey"});
}

TEST_F(OperationGuardTest, TellsWhatCannotBeOpened) {
  const OperationGuard guard;
  EXPECT_EQ(Sql::OpenForWriting("/nowhere/main.sqlite"), nullptr);
  ASSERT_EQ(guard.Failures().size(), 1);
  EXPECT_EQ(guard.Failures()[0].code & 0xff, SQLITE_CANTOPEN);
  EXPECT_EQ(guard.Failures()[0].text, "open /nowhere/main.sqlite: unable to open database file");
}

// The calls of a save, one after the other: what is reported is the code that the call returned, primary or
// extended, and what the call was about. "MAIN" stands for the main file's path.
struct FailingCall {
  const char* call;
  const char* sql;
  int code;
  const char* text;
};

void PrintTo(const FailingCall& failing, std::ostream* out) { *out << failing.call << " " << failing.sql; }

class FailingCallTest : public OperationGuardTest, public testing::WithParamInterface<FailingCall> {};

TEST_P(FailingCallTest, IsTold) {
  SampleSiteAlignment sample(1);
  SqliteCalls::Arm(Fault(GetParam().call, GetParam().code).OnText(GetParam().sql));
  const OperationGuard guard;
  delete sample.Save(store_.get());
  ASSERT_EQ(SqliteCalls::FiredCount(), 1);
  EXPECT_FALSE(guard.Succeeded());
  ASSERT_GE(guard.Failures().size(), 1);
  EXPECT_EQ(guard.Failures()[0].code, GetParam().code);
  EXPECT_EQ(guard.Failures()[0].text, QString(GetParam().text).replace("MAIN", Main()));
}

INSTANTIATE_TEST_SUITE_P(
    Save, FailingCallTest,
    testing::Values(
        FailingCall{"open_v2", "", SQLITE_NOMEM, "open MAIN: out of memory"},
        FailingCall{"exec", "foreign_keys", SQLITE_NOMEM, "execute PRAGMA foreign_keys = ON;: out of memory"},
        FailingCall{"exec", "temp_store", SQLITE_NOMEM, "execute PRAGMA temp_store = MEMORY;: out of memory"},
        FailingCall{"exec", "BEGIN", SQLITE_BUSY, "execute BEGIN TRANSACTION;: database is locked"},
        FailingCall{"exec", "END", SQLITE_IOERR_FSYNC, "execute END TRANSACTION;: disk I/O error"},
        FailingCall{"prepare_v2", "INSERT INTO Height", SQLITE_NOMEM,
                    "prepare INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?): out of memory"},
        FailingCall{"bind_int", "INSERT INTO Height", SQLITE_NOMEM,
                    "bind INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?): out of memory"},
        FailingCall{"bind_double", "INSERT INTO Height", SQLITE_NOMEM,
                    "bind INSERT INTO Height (HeightInMeters,HeightType) VALUES (?,?): out of memory"},
        FailingCall{"bind_text", "INSERT INTO Sites", SQLITE_TOOBIG,
                    "bind INSERT INTO Sites (SiteIdentifier) VALUES (?): string or blob too big"},
        FailingCall{"step", "SELECT  SiteKey", SQLITE_IOERR_READ,
                    "step SELECT  SiteKey  FROM Sites WHERE (SiteIdentifier=?): disk I/O error"},
        FailingCall{"step", "INSERT INTO Orientation", SQLITE_FULL,
                    "step INSERT INTO Orientation (AzimuthDegrees,TiltDegrees,RollDegrees) VALUES (?,?,?): "
                    "database or disk is full"},
        FailingCall{"close", "", SQLITE_BUSY, "close MAIN: database is locked"}));

TEST_F(OperationGuardTest, TellsARollbackThatFails) {
  SqliteCalls::Arm(Fault("step", SQLITE_FULL).OnText("INSERT INTO AntennaAlignment "));
  SqliteCalls::Arm(Fault("exec", SQLITE_IOERR_WRITE).OnText("ROLLBACK"));
  const OperationGuard guard;
  SampleSiteAlignment sample(1);
  EXPECT_EQ(sample.Save(store_.get()), nullptr);
  EXPECT_EQ(Codes(guard), (QVector<int>{SQLITE_FULL, SQLITE_IOERR_WRITE}));
}

// The commit fails because another process reads. The save returns its record all the same.
TEST_F(OperationGuardTest, TellsACommitThatFailsWhateverTheLoggingRules) {
  const Connection reader(OpenMain());
  Statement read(reader, "SELECT VersionNumber FROM Version", "Read");
  ASSERT_EQ(read.Step(), SQLITE_ROW);
  QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
  const OperationGuard guard;
  SaveSample(store_, SampleSiteAlignment(1));
  QLoggingCategory::setFilterRules(QString());
  EXPECT_EQ(files_.Lines(), QStringList());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_BUSY});
  EXPECT_EQ(Texts(guard), QStringList{"execute END TRANSACTION;: database is locked"});
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Sites"), QStringList());
}

TEST_F(OperationGuardTest, TellsARepeatedStepAlthoughItSucceededThen) {
  SaveSites(2);
  SqliteCalls::Arm(Fault("step", SQLITE_IOERR).OnText("SELECT SiteIdentifier"));
  const OperationGuard guard;
  EXPECT_EQ(store_->GetSiteIdentifiers().size(), 2);
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_IOERR});
  EXPECT_FALSE(guard.LoopEnded());
}

TEST_F(OperationGuardTest, AnAnswerThatSomethingIsNotThereIsNoFailure) {
  RunSql(Main(), "DELETE FROM Version");
  const OperationGuard guard;
  unsigned int version = 0;
  EXPECT_FALSE(AlignmentDatabase::GetDatabaseFileVersion(Main(), &version));
  PreferencesModel model;
  EXPECT_FALSE(store_->RestorePreferences(&model));
  QString nobody = QStringLiteral("nobody");
  EXPECT_FALSE(store_->DeleteReportsBySiteAndIndex(nobody, 0));
  EXPECT_EQ(Texts(guard), QStringList());
}

// Else a save after the restore would keep the empty text.
TEST_F(OperationGuardTest, TellsATextThatCannotBeRead) {
  PreferencesModel model;
  EXPECT_TRUE(store_->SavePreferences(&model));
  SqliteCalls::Arm(Fault("column_text", SQLITE_NOMEM));
  const OperationGuard guard;
  EXPECT_TRUE(store_->RestorePreferences(&model));
  EXPECT_EQ(SqliteCalls::FiredCount(), 1);
  EXPECT_EQ(Texts(guard),
            QStringList{QStringLiteral("read %1: out of memory").arg(SchemaVersion7().restorePreferences)});
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_NOMEM});
}

TEST_F(OperationGuardTest, ATextThatIsNotThereIsNoFailure) {
  const Connection db(OpenMain());
  const OperationGuard guard;
  Statement select(db, "SELECT NULL", "Select");
  EXPECT_EQ(select.Step(), SQLITE_ROW);
  EXPECT_TRUE(select.TextColumn(0).isNull());
  Statement(nullptr, nullptr).TextColumn(0);
  EXPECT_EQ(Texts(guard), QStringList());
}

TEST_F(OperationGuardTest, TellsATextWithoutAStatement) {
  const Connection db(OpenMain());
  const OperationGuard guard;
  EXPECT_EQ(Sql::Prepare(db, " ", "Nothing"), nullptr);
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_MISUSE});
}

TEST_F(OperationGuardTest, KeepsAThousandFailures) {
  const Connection db(OpenMain());
  const OperationGuard guard;
  for (int number = 1; number <= 1001; ++number) {
    Sql::Execute(db, ("garbage" + QByteArray::number(number)).constData(), "Garbage");
  }
  ASSERT_EQ(guard.Failures().size(), 1000);
  EXPECT_EQ(guard.Failures().first().text, "execute garbage1: near \"garbage1\": syntax error");
  EXPECT_EQ(guard.Failures().last().text, "execute garbage1000: near \"garbage1000\": syntax error");
}

// ---- nothing is endless

TEST_F(OperationGuardTest, EndsALoopAfterItsLimitOfFailedSteps) {
  const Connection db(OpenMain());
  for (const int limit : {1, 2, 7}) {
    const OperationGuard guard(Limits{limit, noLimit});
    EXPECT_EQ(StepsOfAFailingLoop(db, 1000), limit);
    EXPECT_TRUE(guard.LoopEnded());
    EXPECT_EQ(Codes(guard), QVector<int>(limit, SQLITE_BUSY));
  }
  const OperationGuard guard;
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 50) << "by default";
}

TEST_F(OperationGuardTest, ALoopThatStaysBelowTheLimitEndsByItself) {
  const Connection db(OpenMain());
  const OperationGuard guard(Limits{7, noLimit});
  EXPECT_EQ(StepsOfAFailingLoop(db, 6), 7);
  EXPECT_FALSE(guard.LoopEnded());
  EXPECT_FALSE(guard.Succeeded());
}

TEST_F(OperationGuardTest, CountsFailedStepsInAll) {
  const Connection db(OpenMain());
  const OperationGuard guard(Limits{7, noLimit});
  EXPECT_EQ(StepsOfAFailingLoop(db, 4), 5);
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 3);
  EXPECT_TRUE(guard.LoopEnded());
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 1) << "every loop ends at its next failed step";
  EXPECT_EQ(StepsOfAFailingLoop(db, 0), 1) << "which a loop without one does not notice";
}

TEST_F(OperationGuardTest, WithoutALimitALoopGoesOn) {
  const Connection db(OpenMain());
  const OperationGuard guard(Limits{noLimit, noLimit});
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 1001);
  EXPECT_FALSE(guard.LoopEnded());
}

TEST_F(OperationGuardTest, ALoopWithASmallerBoundKeepsIt) {
  const Connection db(OpenMain());
  const auto steps = [&] {
    SqliteCalls::Reset();
    SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Always());
    EXPECT_FALSE(Statement(db, "DELETE FROM Sites", "Delete").StepsWithinBound());
    return SqliteCalls::Count("step");
  };
  const OperationGuard wide;
  EXPECT_EQ(steps(), 6);
  EXPECT_FALSE(wide.LoopEnded());
  const OperationGuard narrow(Limits{3, noLimit});
  EXPECT_EQ(steps(), 3);
  EXPECT_TRUE(narrow.LoopEnded());
}

TEST_F(OperationGuardTest, ACallReturnsWhatItHas) {
  SaveSites(3);
  SqliteCalls::Arm(Fault("step", SQLITE_CORRUPT).OnText("SELECT SiteIdentifier").At(3).Always());
  const OperationGuard guard;
  EXPECT_EQ(store_->GetSiteIdentifiers(), (QVector<QString>{"Site 1", "Site 2"}));
  EXPECT_FALSE(guard.Succeeded());
  EXPECT_TRUE(guard.LoopEnded());
}

// An alignment names the site, so deleting its row fails for ever.
TEST_F(OperationGuardTest, ADeletionThatCannotEndIsRolledBack) {
  SaveSites(1);
  RunSql(Main(), "CREATE TRIGGER Keep BEFORE DELETE ON AntennaAlignment BEGIN SELECT raise(ignore); END");
  const QString before = DumpDatabase(Main());
  const OperationGuard guard;
  QString site = QStringLiteral("Site 1");
  QString sector;
  store_->DeleteReportsBySiteAndSector(site, sector);
  EXPECT_EQ(DumpDatabase(Main()), before);
  EXPECT_EQ(Codes(guard), QVector<int>(50, SQLITE_CONSTRAINT_FOREIGNKEY));
  EXPECT_TRUE(guard.LoopEnded());
}

// Positions in a list that was cut short are not those that the caller saw.
TEST_F(OperationGuardTest, NothingIsDeletedByAPositionInAnIncompleteList) {
  for (const int number : {3, 2, 1}) {
    SaveSample(store_, SampleSiteAlignment(number, "Site", QString("Sector %1").arg(number)));
  }
  const QString before = DumpDatabase(Main());
  SqliteCalls::Arm(Fault("step", SQLITE_CORRUPT).OnText("SectorName").At(2).Times(50));
  const OperationGuard guard;
  QString site = QStringLiteral("Site");
  EXPECT_FALSE(store_->DeleteReportsBySiteAndIndex(site, 0));
  EXPECT_EQ(SqliteCalls::FiredCount(), 50);
  EXPECT_EQ(DumpDatabase(Main()), before);
}

constexpr char rowsWithoutEnd[] =
    "CREATE VIEW Sites AS WITH RECURSIVE Number(N) AS (SELECT 1 UNION ALL SELECT N + 1 FROM Number) "
    "SELECT N AS SiteKey, N AS SiteIdentifier FROM Number";
constexpr char calculationWithoutEnd[] =
    "CREATE VIEW Sites AS WITH RECURSIVE Number(N) AS (SELECT 1 UNION ALL SELECT N + 1 FROM Number) "
    "SELECT count(*) AS SiteIdentifier FROM Number";

TEST_F(OperationGuardTest, EndsRowsWithoutEnd) {
  RunSql(Main(), QLatin1String("DROP TABLE Sites; ") + rowsWithoutEnd);
  // Enough for a slow or busy machine to see the first row.
  const OperationGuard guard(Limits{noLimit, 500});
  EXPECT_EQ(store_->GetSiteIdentifiers().value(0), "1");
  EXPECT_TRUE(guard.LoopEnded());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_INTERRUPT});
}

TEST_F(OperationGuardTest, EndsACalculationWithoutEnd) {
  RunSql(Main(), QLatin1String("DROP TABLE Sites; ") + calculationWithoutEnd);
  const OperationGuard guard(Limits{noLimit, 20});
  EXPECT_EQ(store_->GetSiteIdentifiers(), QVector<QString>());
  EXPECT_TRUE(guard.LoopEnded());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_INTERRUPT});
}

TEST_F(OperationGuardTest, EndsAStatementWithoutRows) {
  const OperationGuard guard(Limits{noLimit, 20});
  const Connection db(OpenMain());
  EXPECT_FALSE(
      Sql::Execute(db,
                   "CREATE TABLE Copy AS WITH RECURSIVE Number(N) AS (SELECT 1 UNION ALL SELECT N + 1 "
                   "FROM Number) SELECT N FROM Number",
                   "Copy"));
  EXPECT_TRUE(guard.LoopEnded());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_INTERRUPT});
}

// The time that the caller's own code takes between two steps counts as well.
TEST_F(OperationGuardTest, LooksAtTheTimeBetweenSteps) {
  SaveSites(3);
  constexpr int limit = 300;  // the first step comes in time on a busy machine, too
  const OperationGuard guard(Limits{noLimit, limit});
  const Connection db(OpenMain());
  Statement select(db, "SELECT SiteKey FROM Sites", "Select");
  SqliteCalls::Reset();
  const auto takeLong = [] {
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() <= limit) {
    }
  };
  EXPECT_EQ(select.StepUntilDone(takeLong), SQLITE_INTERRUPT);
  EXPECT_EQ(SqliteCalls::Count("step"), 1);
  EXPECT_TRUE(guard.LoopEnded());
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_INTERRUPT});
}

TEST_F(OperationGuardTest, CountsTheTimeAnewForEachCall) {
  SaveSites(1);
  const OperationGuard guard(Limits{noLimit, 1000});
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() <= 1000) store_->GetSiteIdentifiers();
  EXPECT_EQ(store_->GetSiteIdentifiers().size(), 1);
  EXPECT_TRUE(guard.Succeeded());
}

TEST_F(OperationGuardTest, NeverInterruptsAConnectionThatOutlivesIt) {
  auto guard = std::make_unique<OperationGuard>(Limits{noLimit, 1});
  const Connection db(OpenMain());
  guard.reset();
  EXPECT_TRUE(
      Sql::Execute(db,
                   "CREATE TABLE Copy AS WITH RECURSIVE Number(N) AS (SELECT 1 UNION ALL SELECT N + 1 "
                   "FROM Number LIMIT 200000) SELECT N FROM Number",
                   "Copy"));
}

// ---- nothing stays open

TEST_F(OperationGuardTest, ClosesWhatPathRetrievalLeavesOpen) {
  SaveSample(store_, SamplePathAlignment(1));
  const QStringList before = OpenDescriptors();
  OperationGuard guard;
  const std::unique_ptr<PathAlignmentPdfReportData> reports(
      store_->GetPathAlignmentReportDataForSite(QStringLiteral("Path 1")));
  EXPECT_EQ(reports->PathData()->size(), 1);
  EXPECT_TRUE(guard.Succeeded()) << "required, and nothing is lost";
  EXPECT_EQ(guard.RefusedConnections(), 2);
  EXPECT_NE(OpenDescriptors(), before);
  guard.CloseRefusedConnections();
  EXPECT_EQ(guard.RefusedConnections(), 0);
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
  EXPECT_EQ(SqliteCalls::LiveStatements(), 0);
  EXPECT_TRUE(guard.Succeeded());
}

// The rows were deleted, the step was then reported as failed, and the transaction could no longer be
// committed.
TEST_F(OperationGuardTest, LetsGoOfTheLockOfAHalfFailedDeletion) {
  SaveSample(store_, SamplePathAlignment(1));
  const QStringList before = OpenDescriptors();
  {
    const OperationGuard guard;
    SqliteCalls::Arm(Fault("step", SQLITE_IOERR).OnText("DELETE FROM PathAlignment ").Performed());
    SqliteCalls::Arm(Fault("exec", SQLITE_BUSY).OnText("END"));
    QString path = QStringLiteral("Path 1");
    store_->DeleteReportsByPath(path);
    EXPECT_FALSE(guard.Succeeded());
    EXPECT_EQ(guard.RefusedConnections(), 1);
    const Connection other(OpenMain());
    EXPECT_FALSE(Sql::Execute(other, "DELETE FROM Version", "Delete")) << "it is locked";
  }
  EXPECT_EQ(OpenDescriptors(), before);
  const Connection other(OpenMain());
  EXPECT_TRUE(Sql::Execute(other, "DELETE FROM Version", "Delete"));
  EXPECT_EQ(Rows(Main(), "SELECT count(*) FROM PathAlignment"), QStringList{"1"}) << "rolled back";
}

TEST_F(OperationGuardTest, ARefusalForAnotherReasonIsAFailure) {
  OperationGuard guard;
  sqlite3* const db = OpenMain();
  sqlite3_stmt* const forgotten = Sql::Prepare(db, "SELECT 1", "Select");
  EXPECT_NE(forgotten, nullptr);
  Sql::Close(db);
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_BUSY});
  EXPECT_EQ(guard.RefusedConnections(), 1);
  guard.CloseRefusedConnections();
  EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
}

TEST_F(OperationGuardTest, KeepsWhatRefusesAgain) {
  OperationGuard guard;
  Statement(nullptr, nullptr).LeaveOpen();
  SqliteCalls::Arm(Fault("close", SQLITE_BUSY).Times(2));
  Sql::Close(OpenMain());
  guard.Reset();
  guard.CloseRefusedConnections();
  EXPECT_EQ(guard.RefusedConnections(), 1);
  EXPECT_EQ(Codes(guard), QVector<int>{SQLITE_BUSY});
  guard.CloseRefusedConnections();
  EXPECT_EQ(guard.RefusedConnections(), 0);
}

// ---- several guards

TEST_F(OperationGuardTest, ResetForgetsAllButTheRefusedConnections) {
  SaveSample(store_, SamplePathAlignment(1));
  const Connection db(OpenMain());
  OperationGuard guard(Limits{7, noLimit});
  delete store_->GetPathAlignmentReportDataForSite(QStringLiteral("Path 1"));
  StepsOfAFailingLoop(db, 1000);
  EXPECT_TRUE(guard.LoopEnded());
  guard.Reset();
  EXPECT_TRUE(guard.Succeeded());
  EXPECT_FALSE(guard.LoopEnded());
  EXPECT_EQ(guard.RefusedConnections(), 2);
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 7);
}

TEST_F(OperationGuardTest, EachGuardRecords) {
  const Connection db(OpenMain());
  const OperationGuard outer;
  Sql::Execute(db, "garbage1", "Garbage");
  {
    const OperationGuard inner;
    Sql::Execute(db, "garbage2", "Garbage");
    EXPECT_EQ(inner.Failures().size(), 1);
  }
  Sql::Execute(db, "garbage3", "Garbage");
  EXPECT_EQ(outer.Failures().size(), 3);
}

TEST_F(OperationGuardTest, TheSmallestLimitHolds) {
  const Connection db(OpenMain());
  const OperationGuard outer(Limits{5, noLimit});
  {
    const OperationGuard inner(Limits{3, noLimit});
    EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 3);
    EXPECT_TRUE(inner.LoopEnded());
    EXPECT_FALSE(outer.LoopEnded()) << "two failed steps are left to it";
  }
  const OperationGuard inner;
  EXPECT_EQ(StepsOfAFailingLoop(db, 1000), 2);
  EXPECT_TRUE(outer.LoopEnded());
  EXPECT_FALSE(inner.LoopEnded());
}

TEST_F(OperationGuardTest, TheSmallestTimeLimitHolds) {
  RunSql(Main(), QLatin1String("DROP TABLE Sites; ") + calculationWithoutEnd);
  const OperationGuard outer(Limits{noLimit, 20});
  const OperationGuard inner(Limits{noLimit, 1000000});
  store_->GetSiteIdentifiers();
  EXPECT_TRUE(outer.LoopEnded());
  EXPECT_FALSE(inner.LoopEnded());
}

TEST_F(OperationGuardTest, TheInnermostTakesRefusedConnections) {
  SaveSample(store_, SamplePathAlignment(1));
  const OperationGuard outer;
  {
    const OperationGuard inner;
    delete store_->GetPathAlignmentReportDataForSite(QStringLiteral("Path 1"));
    EXPECT_EQ(inner.RefusedConnections(), 2);
    EXPECT_EQ(outer.RefusedConnections(), 0);
  }
  EXPECT_EQ(SqliteCalls::OpenConnections(), 0);
}

TEST_F(OperationGuardTest, GuardsMayEndInAnyOrder) {
  const Connection db(OpenMain());
  auto first = std::make_unique<OperationGuard>();
  const auto second = std::make_unique<OperationGuard>();
  first.reset();
  Sql::Execute(db, "garbage", "Garbage");
  EXPECT_EQ(second->Failures().size(), 1);
}

TEST_F(OperationGuardTest, WatchesItsOwnThreadAlone) {
  const Connection db(OpenMain());
  const OperationGuard guard(Limits{7, noLimit});
  int steps = 0;
  int failures = 0;
  std::thread other([&] {
    Sql::Execute(db, "garbage", "Garbage");
    steps = StepsOfAFailingLoop(db, 100);
    const OperationGuard own;
    Sql::Execute(db, "garbage", "Garbage");
    failures = static_cast<int>(own.Failures().size());
  });
  other.join();
  EXPECT_EQ(steps, 101);
  EXPECT_EQ(failures, 1);
  EXPECT_TRUE(guard.Succeeded());
}

}  // namespace
