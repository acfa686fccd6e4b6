// Every operation of every store while a second process holds a lock on one of its files. Nothing waits: a
// call that meets the lock fails at once, and the rest of the operation goes on.
#include <functional>

#include "tests/robustness/LockHolder.h"
#include "tests/robustness/SweptOperation.h"

namespace {

enum class File { Main, Thresholds };
enum class Lock { Shared, Reserved, Exclusive };
enum class Rows { None, Whole, WithoutAlignment };

constexpr const char* takingLock[] = {"BEGIN; SELECT count(*) FROM sqlite_schema", "BEGIN IMMEDIATE",
                                      "BEGIN EXCLUSIVE"};

// How operations differ from what they do without the lock. "=": the same result. Lines are those about
// failures that are not written without it.
struct Hindered {
  Lock lock;
  const char* operations;
  const char* result;
  const char* earlierResult;  // of versions 1 to 6
  bool mainIsWhole;
  Rows thresholds;
  QStringList lines;
  QStringList earlierLines;
};

const char* const anySave = "SaveNewSite SaveKnownSite SaveNewPath SaveKnownPath";
const char* const siteSave = "SaveNewSite SaveKnownSite";
const char* const pathSave = "SaveNewPath SaveKnownPath";
const char* const anyDeletion = "DeleteSite DeletePath DeleteSiteReport DeletePathReport";
const char* const noKey = "key 4294967295";
const QString end = QStringLiteral("SQL  End Transaction  failed with  5 : database is locked");
const QString close = QStringLiteral(
    "sqlite3_close failed with  5 unable to close due to unfinalized statements or unfinished backups");
// A statement that is left open keeps its transaction from being committed.
const QString unfinished = QStringLiteral(
    "SQL  End Transaction  failed with  5 : cannot commit transaction - SQL statements in progress");
const QString step = QStringLiteral("Failed to execute SQLITE step, code:  5");
const QString statement = QStringLiteral("SQL Statement failed");

QString Prepare(const char* label) {
  return QStringLiteral("SQL prepare  %1  failed with  5 : database is locked").arg(QLatin1String(label));
}

std::vector<Hindered> HinderedByMainLocks() {
  const QString siteKey = Prepare("Select SiteKey for Site Identifier");
  const QString pathKey = Prepare("Select PathKey for Path Identifier");
  const QString siteRows = Prepare("Fetch Report Data for Site");
  const QString pathRows = Prepare("Fetch Report Data for Path");
  // Where neither file is changed, in every version.
  const auto unchanged = [](Lock lock, const char* operations, const char* result, const QStringList& lines) {
    return Hindered{lock, operations, result, result, false, Rows::None, lines, lines};
  };
  // The same, but earlier versions have another result, and may write fewer lines.
  const auto unchangedByVersion = [](const char* operations, const char* result, const char* earlierResult,
                                     const QStringList& lines, const QStringList& earlierLines) {
    constexpr Rows rows = Rows::None;
    return Hindered{Lock::Exclusive, operations, result, earlierResult, false, rows, lines, earlierLines};
  };
  // Where only the thresholds are changed.
  const auto thresholdsAlone = [](Lock lock, const char* operations, const char* result,
                                  const char* earlierResult, Rows rows, const QStringList& lines) {
    return Hindered{lock, operations, result, earlierResult, false, rows, lines, lines};
  };
  const QString noPreferences = QStringLiteral("Failed to prepare statement in prefernces statement");
  const QString noKeyForSite = QStringLiteral("Failed to get key for site");
  return {
      // Another reader: everything is written, and the commit fails. Operations that ignore its result say
      // nothing.
      thresholdsAlone(Lock::Shared, anySave, "=", "=", Rows::Whole, {end}),
      thresholdsAlone(Lock::Shared, anyDeletion, "=", "=", Rows::Whole, {end}),
      unchanged(Lock::Shared, "SavePreferences StoreScreens", "false", {}),
      // Another writer: the first write fails.
      thresholdsAlone(Lock::Reserved, anySave, noKey, noKey, Rows::WithoutAlignment, {}),
      thresholdsAlone(Lock::Reserved, "DeleteSite", "=", "false", Rows::Whole, {close}),
      thresholdsAlone(Lock::Reserved, "DeletePath", "=", "=", Rows::Whole, {unfinished, close}),
      thresholdsAlone(Lock::Reserved, "DeleteSiteReport", "=", "false", Rows::Whole, {step, close}),
      thresholdsAlone(Lock::Reserved, "DeletePathReport", "=", "false", Rows::Whole, {close}),
      unchanged(Lock::Reserved, "SavePreferences StoreScreens", "false", {}),
      // Not even the schema can be read.
      unchanged(Lock::Exclusive, "ProbeVersion", "false",
                {QStringLiteral("sqlite3_prepare_v2 failed with  5 : database is locked")}),
      thresholdsAlone(Lock::Exclusive, siteSave, noKey, noKey, Rows::WithoutAlignment, {siteKey}),
      thresholdsAlone(Lock::Exclusive, pathSave, noKey, noKey, Rows::WithoutAlignment, {pathKey}),
      unchanged(Lock::Exclusive, "SiteIdentifiers PathIdentifiers", "", {siteRows}),
      unchangedByVersion("SiteReports", "null", "null", {siteKey, siteRows}, {siteRows}),
      unchangedByVersion("PathReports", "records;", "null", {pathKey, pathRows, statement},
                         {pathRows, statement}),
      unchangedByVersion("DeleteSite", "=", "false", {siteKey, noKeyForSite}, {siteKey, noKeyForSite}),
      unchanged(Lock::Exclusive, "DeletePath", "=", {pathKey}),
      unchangedByVersion("DeleteSiteReport", "false", "false", {siteKey, siteRows}, {siteRows}),
      unchangedByVersion("DeletePathReport", "false", "false", {pathKey, pathRows, statement},
                         {pathRows, statement}),
      unchanged(Lock::Exclusive, "SavePreferences", "false", {Prepare("Save Preferences")}),
      unchanged(Lock::Exclusive, "RestorePreferences", "false/",
                {Prepare("Restore preferences"), noPreferences}),
      unchanged(Lock::Exclusive, "StoreScreens", "false", {Prepare("Save Current Site")}),
      unchanged(Lock::Exclusive, "ClearScreens", "=",
                {Prepare("delete site screen contents"), Prepare("delete path screen contents")}),
      unchanged(Lock::Exclusive, "RestoreScreens", "true/",
                {Prepare("Restore site info"), Prepare("Restore path information")}),
  };
}

std::vector<Hindered> HinderedByThresholdsLocks() {
  const QString siteTable = Prepare("Fetch Threshold Report Data for Site");
  const QString pathTable = Prepare("Fetch Threshold Report Data for Path");
  const auto row = [](Lock lock, const char* operations, const char* result, const QStringList& lines) {
    return Hindered{lock, operations, result, result, true, Rows::None, lines, lines};
  };
  return {
      row(Lock::Shared, anySave, "=", {end}),
      // The delete of a site's report finds no row; the engine needs the lock all the same.
      row(Lock::Shared, anyDeletion, "=", {end}),
      row(Lock::Shared, "SavePreferences", "=", {}),
      row(Lock::Reserved, siteSave, "null", {}),
      row(Lock::Reserved, pathSave, "null",
          {QStringLiteral("SQL last step failed with  5 : database is locked")}),
      row(Lock::Reserved, "DeleteSite DeletePath DeletePathReport", "=", {unfinished, close}),
      row(Lock::Reserved, "DeleteSiteReport", "=", {step, unfinished, close}),
      row(Lock::Reserved, "SavePreferences", "=", {}),
      row(Lock::Exclusive, siteSave, "null", {Prepare("Insert Antenna Alignment Thresholds")}),
      row(Lock::Exclusive, pathSave, "null", {Prepare("Save Path Threshold Info")}),
      row(Lock::Exclusive, "SiteReports", "/0,0,0", {siteTable}),
      row(Lock::Exclusive, "PathReports", "/0,0,-1", {pathTable, statement}),
      row(Lock::Exclusive, "DeleteSite", "=", {Prepare("Fetch Report Thresholds Data for Site")}),
      row(Lock::Exclusive, "DeletePath", "=", {Prepare("Fetch Report Data for Site")}),
      row(Lock::Exclusive, "DeleteSiteReport", "=",
          {siteTable, Prepare("Delete site thresholds by and id and index")}),
      row(Lock::Exclusive, "DeletePathReport", "=",
          {pathTable, statement, Prepare("Delete path by id and index")}),
      row(Lock::Exclusive, "SavePreferences", "=", {Prepare("Save Preferences Thresholds")}),
      row(Lock::Exclusive, "RestorePreferences", "true/main",
          {Prepare("Restore preferences threshold"),
           QStringLiteral("Failed to prepare statement in prefernces threshold statement")}),
  };
}

const Hindered* Find(const std::vector<Hindered>& table, Lock lock, const StoreOperation& operation) {
  for (const Hindered& row : table) {
    const QStringList names = QString::fromLatin1(row.operations).split(QLatin1Char(' '));
    if (row.lock == lock && names.contains(QLatin1String(operation.name))) return &row;
  }
  return nullptr;
}

// "/t": the records with thresholds t.
QString ExpectedResult(const QString& text, const QString& clean) {
  if (text == QLatin1String("=")) return clean;
  if (!text.startsWith(QLatin1Char('/'))) return text;
  QStringList records = clean.split(QLatin1Char(';'));
  for (QString& record : records) {
    if (record.contains(QLatin1Char('/'))) record = record.section(QLatin1Char('/'), 0, 0) + text;
  }
  return records.join(QLatin1Char(';'));
}

QStringList FailureLines(QStringList lines, const QStringList& cleanLines) {
  for (const QString& line : cleanLines) lines.removeOne(line);
  return lines.filter(QStringLiteral("failed"), Qt::CaseInsensitive);
}

class ConcurrencyTest : public OperationTest {
 protected:
  void SetUp() override { RunClean(); }

  // Screens are cleared, and version 1 deletes, until the step is done: the lock keeps the call stepping.
  bool StepsUntilReleased(File file, Lock lock) const {
    if (file == File::Thresholds) return false;
    const QString name = QLatin1String(operation_.name);
    if (name == QLatin1String("ClearScreens")) return lock != Lock::Exclusive;
    return version_.number == 1 && name.startsWith(QLatin1String("Delete")) && lock == Lock::Reserved;
  }

  void RunUnder(File file, Lock lock) {
    scene_.Restore();
    LockHolder holder(file == File::Main ? scene_.Main() : scene_.Thresholds(),
                      takingLock[static_cast<int>(lock)]);
    constexpr int patience = 100;
    bool released = false;
    if (StepsUntilReleased(file, lock)) {
      SqliteCalls::Arm(Fault::Before("step", [&] {
                         holder.Release();
                         released = true;
                       }).At(patience));
    }
    GuardAgainstSpinning();
    const QString result = operation_.run(version_, scene_.Main(), scene_.Thresholds());
    SqliteCalls::CloseLeaked();
    SqliteCalls::Reset();
    holder.Release();
    Expect(file, lock, result);
    EXPECT_EQ(released, StepsUntilReleased(file, lock));
    scene_.ExpectSound();
  }

  void Expect(File file, Lock lock, const QString& result) {
    const std::vector<Hindered> table =
        file == File::Main ? HinderedByMainLocks() : HinderedByThresholdsLocks();
    const Hindered* const row = StepsUntilReleased(file, lock) ? nullptr : Find(table, lock, operation_);
    const QStringList failures = FailureLines(log_.TakeLines(), cleanLines_);
    const Change main = scene_.MainChange();
    const Change thresholds = scene_.ThresholdsChange();
    if (row == nullptr) {
      EXPECT_EQ(result, clean_.result);
      EXPECT_EQ(failures, QStringList());
      EXPECT_EQ(main, clean_.main);
      EXPECT_EQ(thresholds, clean_.thresholds);
      return;
    }
    const bool current = version_.HasThresholdsFile();
    EXPECT_EQ(result,
              ExpectedResult(QLatin1String(current ? row->result : row->earlierResult), clean_.result));
    EXPECT_EQ(failures, current ? row->lines : row->earlierLines);
    EXPECT_EQ(main, row->mainIsWhole ? clean_.main : Change());
    if (row->thresholds == Rows::WithoutAlignment && current) {
      ASSERT_EQ(thresholds.made.size(), 1);
      EXPECT_EQ(thresholds.made[0].section(QLatin1Char('|'), 3, 3), QStringLiteral("-1"));
      EXPECT_EQ(thresholds.gone, QStringList());
    } else {
      EXPECT_EQ(thresholds, row->thresholds == Rows::Whole ? clean_.thresholds : Change());
    }
  }
};

TEST_P(ConcurrencyTest, AnotherProcessHoldsALock) {
  for (const Lock lock : {Lock::Shared, Lock::Reserved, Lock::Exclusive}) {
    for (const File file : {File::Main, File::Thresholds}) {
      // Earlier versions have no thresholds file to lock.
      if (file == File::Thresholds && !version_.HasThresholdsFile()) continue;
      SCOPED_TRACE(std::string(takingLock[static_cast<int>(lock)]) +
                   (file == File::Main ? " on the main file" : " on the thresholds file"));
      RunUnder(file, lock);
    }
  }
}

// The connection that a deletion leaves open behind a lock keeps a lock of its own: what is saved afterwards
// cannot be committed before the process ends. That is the cost of a statement that stays unfinalised.
TEST(LeftConnectionTest, KeepsLaterSavesFromBeingCommitted) {
  const StoreVersion& version = StoreVersion::All().back();
  const auto named = [](const char* name) {
    for (const StoreOperation& operation : StoreOperation::All()) {
      if (qstrcmp(operation.name, name) == 0) return operation;
    }
    ADD_FAILURE() << name;
    return StoreOperation::All().front();
  };
  const StoreOperation deletion = named("DeletePath");
  const StoreOperation save = named("SaveNewSite");
  const Scene scene(StartOf(deletion, version));
  LogCapture log;
  {
    LockHolder holder(scene.Main(), takingLock[static_cast<int>(Lock::Reserved)]);
    EXPECT_EQ(deletion.run(version, scene.Main(), scene.Thresholds()), QStringLiteral("true"));
  }
  log.TakeLines();
  EXPECT_EQ(SqliteCalls::OpenConnections(), 1);
  save.run(version, scene.Main(), scene.Thresholds());
  EXPECT_EQ(log.TakeLines(), QStringList({end}));
  SqliteCalls::CloseLeaked();
  EXPECT_EQ(scene.MainChange(), Change());
  EXPECT_TRUE(IsFullResult(save.run(version, scene.Main(), scene.Thresholds())));
  EXPECT_EQ(log.TakeLines(), QStringList());
}

INSTANTIATE_FOR_OPERATIONS(ConcurrencyTest, StoreOperation::OnFiles());

}  // namespace
