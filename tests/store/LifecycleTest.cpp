// Opening and creating stores, and the lists of identifiers.
#include <sqlite3.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include "model/AlignerModel.h"
#include "model/PathInformation.h"
#include "model/PreferencesModel.h"
#include "model/SiteInformation.h"
#include "tests/store/ExpectedSchema.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"

namespace {

const char cannotOpen[] = "Can't open database: rval= 14 : unable to open database file";
const char unableToCreate[] = "Unable to create database tables";

// Tables of a file, by name.
QStringList TableNames(const QString& path) {
  return Rows(path, "SELECT name FROM sqlite_schema WHERE type = 'table' AND name <> 'sqlite_sequence'");
}

class OpenTest : public StoreVersionTest {};

TEST_P(OpenTest, TouchesNoFile) {
  {
    const StorePointer store = Open();
    EXPECT_EQ(store->Version(), Version().number);
    store->Close();
  }
  EXPECT_EQ(SqliteCalls::Count(""), 0);
  EXPECT_FALSE(QFile::exists(Main()));
  EXPECT_FALSE(QFile::exists(Thresholds()));
}

TEST_P(OpenTest, MissingFilesShowInTheFirstOperation) {
  const StorePointer store = Open();
  EXPECT_EQ(store->GetSiteIdentifiers(), QVector<QString>());
  EXPECT_EQ(store->GetPathIdentifiers(), QVector<QString>());
  EXPECT_EQ(Lines(),
            (QStringList{"SQL prepare  Fetch Report Data for Site  failed with  1 : no such table: Sites",
                         "SQL prepare  Fetch Report Data for Site  failed with  1 : no such table: "
                         "Paths"}));
  EXPECT_TRUE(QFile::exists(Main()));
  EXPECT_EQ(QFileInfo(Main()).size(), 0);
  EXPECT_FALSE(QFile::exists(Thresholds()));
}

INSTANTIATE_FOR_ALL_VERSIONS(OpenTest);

class CreateTest : public StoreVersionTest {
 protected:
  // Creates, where no files are, while the call that `fault` meets fails; returns the lines. There is a store
  // all the same.
  QStringList CreateWith(const Fault& fault) {
    QFile::remove(Main());
    QFile::remove(Thresholds());
    SqliteCalls::Reset();
    SqliteCalls::Arm(fault);
    const StorePointer store = Create();
    EXPECT_NE(store, nullptr);
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    return Lines();
  }

  // After a failure in the main file's tables: the file is gone, and the thresholds file is there all the
  // same.
  void ExpectThresholdsAlone() {
    EXPECT_FALSE(QFile::exists(Main()));
    EXPECT_EQ(QFile::exists(Thresholds()), Version().HasThresholdsFile());
    if (Version().HasThresholdsFile()) {
      EXPECT_EQ(TableNames(Thresholds()).size(), 3);
    }
  }
};

TEST_P(CreateTest, MakesTheFilesOfItsVersion) {
  const StorePointer store = Create();
  EXPECT_EQ(TableNames(Main()).size(), 11);
  EXPECT_EQ(QDir(files_.Folder().Folder()).entryList(QDir::Files).size(),
            Version().HasThresholdsFile() ? 2 : 1);
  EXPECT_EQ(store->Version(), Version().number);
}

TEST_P(CreateTest, StopsAtTheMainTableThatFails) {
  int count = 0;
  for (const CreatedTable& table : MainTables()) {
    SCOPED_TRACE(table.name.toStdString());
    const QByteArray statement = "CREATE TABLE IF NOT EXISTS " + table.name.toUtf8() + " (";
    EXPECT_EQ(CreateWith(Fault("exec", SQLITE_BUSY).OnText(statement)),
              (QStringList{"SQL  " + table.label + "  failed with  5 : database is locked", unableToCreate}));
    // Two pragmas for each file, the tables so far, and those of the thresholds.
    EXPECT_EQ(SqliteCalls::Count("exec"), 2 + ++count + (Version().HasThresholdsFile() ? 2 + 3 : 0));
    ExpectThresholdsAlone();
  }
  EXPECT_EQ(count, 11);
}

TEST_P(CreateTest, FailsWithTheVersionRecord) {
  const char* const lines[][2] = {
      {"prepare_v2", "SQL prepare  Insert Version  failed with  5 : database is locked"},
      {"bind_int", "SQL bind failed with  5  errmsg:  database is locked"},
  };
  for (const auto& line : lines) {
    EXPECT_EQ(CreateWith(Fault(line[0], SQLITE_BUSY)), (QStringList{line[1], unableToCreate}));
    ExpectThresholdsAlone();
  }
  EXPECT_EQ(CreateWith(Fault("step", SQLITE_BUSY)), QStringList{unableToCreate});
  ExpectThresholdsAlone();
}

TEST_P(CreateTest, LeavesTheThresholdsAloneWhereTheMainFileDoesNotOpen) {
  const StorePointer store = Version().create(files_.Folder().Path("missing/main.sqlite"), Thresholds());
  EXPECT_NE(store, nullptr);
  EXPECT_EQ(Lines(), (QStringList{cannotOpen, unableToCreate}));
  EXPECT_FALSE(QFile::exists(Thresholds()));
  EXPECT_EQ(SqliteCalls::Count("open_v2"), 1);
}

TEST_P(CreateTest, DoesNotWantTheThresholdsPathUnlessItHasTheFile) {
  const StorePointer store = Version().create(Main(), files_.Folder().Path("missing/thresholds.sqlite"));
  EXPECT_NE(store, nullptr);
  EXPECT_EQ(Lines(),
            Version().HasThresholdsFile() ? (QStringList{cannotOpen, unableToCreate}) : QStringList());
  EXPECT_EQ(TableNames(Main()).size(), 11);
}

TEST_P(CreateTest, AnswersWhetherTheTablesWereCreated) {
  const StorePointer store = Open();
  EXPECT_TRUE(store->CreateTables());
  const StorePointer lost = Version().open(files_.Folder().Path("missing/main.sqlite"), Thresholds());
  EXPECT_FALSE(lost->CreateTables());
  EXPECT_EQ(Lines(), QStringList{cannotOpen});
}

// Files of every version with rows in them: all that changes is the number in the version record. A file of
// an earlier version gains no columns.
TEST_P(CreateTest, LeavesExistingTablesAndRowsOfAnyVersion) {
  for (const StoreVersion& made : StoreVersion::All()) {
    SCOPED_TRACE(made.number);
    const StoreFiles files;
    {
      const StorePointer store = made.create(files.Main(), files.Thresholds());
      SaveSample(store, SampleSiteAlignment(1));
      SaveSample(store, SamplePathAlignment(2));
      AlignerModel screens;
      screens.SetCurrentSiteInformation(new SiteInformation("Site", "Sector", "Position", 1, 2, 3));
      screens.SetCurrentPathInformation(new PathInformation("Path", 1, 2, 3));
      EXPECT_TRUE(store->StoreInputContents(&screens));
      PreferencesModel preferences;
      EXPECT_TRUE(store->SavePreferences(&preferences));
    }
    const QString record = QStringLiteral("\nVersion|1|%1\n");
    QString main = DumpDatabase(files.Main());
    ASSERT_TRUE(main.contains(record.arg(made.number)));
    main.replace(record.arg(made.number), record.arg(Version().number));
    const QString thresholds = made.HasThresholdsFile() ? DumpDatabase(files.Thresholds()) : QString();
    const StorePointer store = Version().create(files.Main(), files.Thresholds());
    EXPECT_EQ(DumpDatabase(files.Main()), main);
    EXPECT_EQ(QFile::exists(files.Thresholds()), made.HasThresholdsFile() || Version().HasThresholdsFile());
    if (made.HasThresholdsFile()) {
      EXPECT_EQ(DumpDatabase(files.Thresholds()), thresholds);
    }
  }
}

// As with "IF NOT EXISTS", views count, and so does a name in any case.
TEST_P(CreateTest, LeavesViewsAndOtherCasesInTheirPlace) {
  RunSql(Main(), "CREATE VIEW AntennaAlignment AS SELECT 1; CREATE TABLE pathalignment (Other)");
  const StorePointer store = Create();
  EXPECT_EQ(
      Rows(Main(), "SELECT sql FROM sqlite_schema WHERE name LIKE '%Alignment' ORDER BY name"),
      (QStringList{"'CREATE VIEW AntennaAlignment AS SELECT 1'", "'CREATE TABLE pathalignment (Other)'"}));
}

// Versions 3 to 6 add a column after they created a table. Whether it is there already is looked up first; a
// failure of that counts as one of its creation.
TEST_P(CreateTest, FailsWithTheLookupOfATableThatGetsAColumn) {
  const bool ofSites = Version().number == 3;
  const bool ofPaths = Version().number >= 3 && Version().number <= 6;
  const char* const lookup = "FROM sqlite_master";
  SqliteCalls::Record();
  Create();
  EXPECT_EQ(SqliteCalls::TakeTrace().filter(lookup).filter(QRegularExpression("^step ")).size(),
            (ofSites ? 1 : 0) + (ofPaths ? 1 : 0));
  for (int at = 1; at <= (ofSites ? 1 : 0) + (ofPaths ? 1 : 0); ++at) {
    const QString label =
        ofSites && at == 1 ? "Create Antenna Alignment Table" : "Create Path Alignment Table";
    EXPECT_EQ(
        CreateWith(Fault("prepare_v2", SQLITE_BUSY).OnText(lookup).At(at)),
        (QStringList{"SQL prepare  " + label + "  failed with  5 : database is locked", unableToCreate}));
    ExpectThresholdsAlone();
    EXPECT_EQ(CreateWith(Fault("bind_text", SQLITE_NOMEM).OnText(lookup).At(at)),
              (QStringList{"SQL bind failed with  7 : out of memory", unableToCreate}));
    ExpectThresholdsAlone();
    EXPECT_EQ(CreateWith(Fault("step", SQLITE_IOERR).OnText(lookup).At(at)), QStringList{unableToCreate});
    ExpectThresholdsAlone();
  }
}

TEST_P(CreateTest, LeavesEverythingOpenForLaterUse) {
  const StorePointer store = Create();
  store->Close();
  store->Close();
  SaveSample(store, SampleSiteAlignment(1));
  EXPECT_EQ(store->GetSiteIdentifiers(), QVector<QString>{"Site 1"});
}

INSTANTIATE_FOR_ALL_VERSIONS(CreateTest);

// Only the current store has a second file.
class CreateCurrentTest : public CreateTest {};

TEST_P(CreateCurrentTest, StopsAtTheThresholdsTableThatFails) {
  int count = 0;
  for (const CreatedTable& table : ThresholdTables()) {
    SCOPED_TRACE(table.name.toStdString());
    const QByteArray statement = "CREATE TABLE IF NOT EXISTS " + table.name.toUtf8() + " (";
    EXPECT_EQ(CreateWith(Fault("exec", SQLITE_BUSY).OnText(statement)),
              (QStringList{"SQL  " + table.label + "  failed with  5 : database is locked", unableToCreate}));
    EXPECT_EQ(SqliteCalls::Count("exec"), 2 + 11 + 2 + ++count);
    EXPECT_EQ(TableNames(Main()).size(), 11);
    EXPECT_EQ(Rows(Main(), "SELECT VersionNumber FROM Version"), QStringList{"7"});
    EXPECT_FALSE(QFile::exists(Thresholds()));
  }
  EXPECT_EQ(count, 3);
}

TEST_P(CreateCurrentTest, FailsBothFilesWithOneLineOfItsOwn) {
  SqliteCalls::Arm(Fault("exec", SQLITE_BUSY).OnText("EXISTS Sites ("));
  SqliteCalls::Arm(Fault("exec", SQLITE_IOERR).OnText("EXISTS PathAlignmentThresholds ("));
  const StorePointer store = Create();
  EXPECT_EQ(Lines(), (QStringList{"SQL  Create Sites Table  failed with  5 : database is locked",
                                  "SQL  Create Path Thresholds Table  failed with  10 : disk I/O error",
                                  unableToCreate}));
  EXPECT_FALSE(QFile::exists(Main()));
  EXPECT_FALSE(QFile::exists(Thresholds()));
}

TEST_P(CreateCurrentTest, MakesTheMissingThresholdsFileOfACompleteMainFile) {
  {
    const StorePointer store = Create();
    SaveSample(store, SampleSiteAlignment(1));
  }
  const QString main = DumpDatabase(Main());
  QFile::remove(Thresholds());
  const StorePointer store = Create();
  EXPECT_EQ(DumpDatabase(Main()), main);
  EXPECT_EQ(TableNames(Thresholds()).size(), 3);
}

TEST_P(CreateCurrentTest, StampsAnOlderMainFileAndChangesNothingElse) {
  LoadSqlFile(Main(), QStringLiteral(GOLDEN_FOLDER "/version_1.sql"));
  QString expected = DumpDatabase(Main());
  expected.replace("\nVersion|1|1\n", "\nVersion|1|7\n");
  const StorePointer store = Create();
  EXPECT_EQ(DumpDatabase(Main()), expected);
  EXPECT_EQ(Rows(Main(), "SELECT VersionNumber FROM Version"), QStringList{"7"});
}

INSTANTIATE_TEST_SUITE_P(Current, CreateCurrentTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

class IdentifiersTest : public CreatedStoreTest {
 protected:
  QVector<QString> Sites() { return store_->GetSiteIdentifiers(); }
  QVector<QString> Paths() { return store_->GetPathIdentifiers(); }
  void Fill() {
    RunSql(Main(), "INSERT INTO Sites VALUES (1, 'S1'), (2, 'S2'); INSERT INTO Paths VALUES (3, 'P');");
  }
};

TEST_P(IdentifiersTest, AreNoneInAFreshFile) {
  EXPECT_EQ(Sites(), QVector<QString>());
  EXPECT_EQ(Paths(), QVector<QString>());
}

TEST_P(IdentifiersTest, AreListedOnceHoweverManyAlignmentsThereAre) {
  for (const int number : {1, 2, 1}) {
    SaveSample(store_, SampleSiteAlignment(number));
    SaveSample(store_, SamplePathAlignment(number));
  }
  const QVector<QString> sites = Sites();
  EXPECT_EQ(sites.size(), 2);
  EXPECT_TRUE(sites.contains("Site 1") && sites.contains("Site 2"));
  const QVector<QString> paths = Paths();
  EXPECT_EQ(paths.size(), 2);
  EXPECT_TRUE(paths.contains("Path 1") && paths.contains("Path 2"));
}

TEST_P(IdentifiersTest, AreReadWithTheseCalls) {
  Fill();
  SqliteCalls::Record();
  EXPECT_EQ(Paths(), QVector<QString>{"P"});
  const QString sql = " [SELECT PathIdentifier FROM Paths]";
  EXPECT_EQ(SqliteCalls::TakeTrace().mid(3),
            (QStringList{"prepare_v2 SELECT PathIdentifier FROM Paths = 0", "step = 100" + sql,
                         "column_text 0 = P" + sql, "step = 101" + sql, "reset = 0" + sql,
                         "clear_bindings = 0" + sql, "finalize = 0" + sql, "close " + Main() + " = 0"}));
  EXPECT_EQ(Sites(), (QVector<QString>{"S1", "S2"}));
  EXPECT_EQ(SqliteCalls::TakeTrace().value(3), "prepare_v2 SELECT SiteIdentifier FROM Sites = 0");
}

TEST_P(IdentifiersTest, AreNoneWhereTheFileDoesNotOpen) {
  SqliteCalls::Arm(Fault("open_v2", SQLITE_CANTOPEN).Times(2));
  EXPECT_EQ(Sites(), QVector<QString>());
  EXPECT_EQ(Paths(), QVector<QString>());
  EXPECT_EQ(Lines(), (QStringList{cannotOpen, cannotOpen}));
}

TEST_P(IdentifiersTest, AreNoneWhereTheStatementIsNotPrepared) {
  Fill();
  SqliteCalls::Arm(Fault("prepare_v2", SQLITE_BUSY).Times(2));
  EXPECT_EQ(Sites(), QVector<QString>());
  EXPECT_EQ(Paths(), QVector<QString>());
  const QString line = "SQL prepare  Fetch Report Data for Site  failed with  5 : database is locked";
  EXPECT_EQ(Lines(), (QStringList{line, line}));
}

TEST_P(IdentifiersTest, AreSteppedForUntilDone) {
  Fill();
  SqliteCalls::Reset();
  SqliteCalls::Arm(Fault("step", 0).Results({SQLITE_BUSY, SQLITE_IOERR, SQLITE_OK, SQLITE_CORRUPT}));
  EXPECT_EQ(Sites(), (QVector<QString>{"S1", "S2"}));
  EXPECT_EQ(SqliteCalls::Count("step"), 4 + 3);
  SqliteCalls::Arm(Fault("step", SQLITE_BUSY).Times(1000));
  EXPECT_EQ(Paths(), QVector<QString>{"P"});
  EXPECT_EQ(SqliteCalls::Count("step"), 7 + 1000 + 2);
}

TEST_P(IdentifiersTest, ANullTextIsAnEmptyIdentifier) {
  Fill();
  SqliteCalls::Arm(Fault("column_text", 1));
  EXPECT_EQ(Sites(), (QVector<QString>{"", "S2"}));
}

INSTANTIATE_FOR_ALL_VERSIONS(IdentifiersTest);

}  // namespace
