#pragma once

#include <sqlite3.h>

#include <algorithm>
#include <initializer_list>
#include <map>

#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"

// The beginnings of lines of a dump, each meant for exactly one line.
inline QStringList RowsOf(const char* table, std::initializer_list<int> keys) {
  QStringList rows;
  for (const int key : keys) rows << QStringLiteral("%1|%2|").arg(QLatin1String(table)).arg(key);
  return rows;
}

// Two sites and two paths in the files of one version. "Alpha" has alignments 1 ("South") and 2 ("North"),
// "Beta" has 3; path "Gamma" has alignments 1 and 2, "Delta" has 3. By the order of saving, sites first, site
// alignment n has orientations 2n-1 (target) and 2n, location n and height n; path alignment n has
// orientations 2n+5 and 2n+6, locations 2n+2 (far end) and 2n+3, and height n+3.
class DeletionScene {
 public:
  explicit DeletionScene(const StoreVersion& version)
      : version_(version), store_(version.open(files_.Main(), files_.Thresholds())) {
    const TemporaryFolder& filled = Filled(version);
    EXPECT_TRUE(QFile::copy(filled.Main(), files_.Main()));
    EXPECT_EQ(QFile::copy(filled.Thresholds(), files_.Thresholds()), version.HasThresholdsFile());
    Remember();
    // Alpha's alignments come first, so that every list of keys below is what the comment above says.
    EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT SiteKey, TargetOrientationKey, MeasuredOrientationKey, "
                                          "LocationKey, SiteHeightKey FROM AntennaAlignment")),
              QStringList({"1|1|2|1|1", "1|3|4|2|2", "2|5|6|3|3"}));
    EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT PathKey, TargetOrientationKey, MeasuredOrientationKey, "
                                          "PathLocationKey, LocationKey, SiteHeightKey FROM PathAlignment")),
              QStringList({"1|7|8|4|5|4", "1|9|10|6|7|5", "2|11|12|8|9|6"}));
  }

  // Remembers what is in the files now; a deletion is compared with it.
  void Remember() {
    main_ = DumpDatabase(Main());
    thresholds_ = version_.HasThresholdsFile() ? DumpDatabase(files_.Thresholds()) : QString();
  }

  // Changes rows bypassing the store, foreign keys not enforced, and remembers the outcome.
  void Change(const char* sql) {
    RunSql(Main(), QString::fromUtf8(sql));
    Remember();
  }

  // Exactly these rows are gone since then, and the files are whole.
  void ExpectGone(const QStringList& fromMain, const QStringList& fromThresholds) {
    ExpectGoneFrom(Main(), main_, fromMain);
    EXPECT_EQ(ForeignKeyCheck(Main()), QStringList());
    if (version_.HasThresholdsFile()) {
      ExpectGoneFrom(files_.Thresholds(), thresholds_, fromThresholds);
    } else {
      EXPECT_FALSE(QFile::exists(files_.Thresholds()));
    }
  }

  AlignmentDatabaseStore* Store() { return store_.get(); }
  const StoreVersion& Version() const { return version_; }
  QString Main() const { return files_.Main(); }
  QString Thresholds() const { return files_.Thresholds(); }
  QStringList Lines() { return files_.Lines(); }

  // What is logged of the lists of keys; nothing if associated records are left alone.
  QStringList KeyLines(const QString& orientation, const QString& geolocation, const QString& height) const {
    if (!version_.DeletesAssociatedRecords()) return {};
    return {"OrientationKeys: ", orientation, "GeolocationKeys: ", geolocation, "HeightKeys: ", height};
  }
  QStringList AlphaKeyLines() const { return KeyLines("1 2 3 4 ", "1 2 ", "1 2 "); }
  QStringList GammaKeyLines() const { return KeyLines("7 8 9 10 ", "4 5 6 7 ", "4 5 "); }
  // What is logged on the way to the lists of a path's keys.
  QStringList FoundPath(int key) const {
    if (version_.number == 1) return {QStringLiteral("The path key is  %1").arg(key)};
    return version_.DeletesAssociatedRecords() ? QStringList("Finding relevant path keys...") : QStringList();
  }

  // Associated records that a deletion takes with it.
  QStringList IfAssociated(const QStringList& rows) const {
    return version_.DeletesAssociatedRecords() ? rows : QStringList();
  }
  QStringList AlphaAssociated() const {
    return IfAssociated(RowsOf("Orientation", {1, 2, 3, 4}) + RowsOf("Geolocation", {1, 2}) +
                        RowsOf("Height", {1, 2}));
  }
  QStringList GammaAssociated() const {
    return IfAssociated(RowsOf("Orientation", {7, 8, 9, 10}) + RowsOf("Geolocation", {4, 5, 6, 7}) +
                        RowsOf("Height", {4, 5}));
  }

  QString alpha_ = QStringLiteral("Alpha");
  QString beta_ = QStringLiteral("Beta");
  QString gamma_ = QStringLiteral("Gamma");
  QString delta_ = QStringLiteral("Delta");
  QString sector_ = QStringLiteral("North");

 private:
  template <typename Record>
  static void Keep(Record* record) {
    EXPECT_NE(record, nullptr);
    delete record;
  }

  // Files of the version, filled once for all scenes of the process: writing them takes far longer than
  // copying them.
  static const TemporaryFolder& Filled(const StoreVersion& version) {
    static std::map<unsigned int, TemporaryFolder> folders;
    const auto [entry, isNew] = folders.try_emplace(version.number);
    if (isNew) Fill(version.create(entry->second.Main(), entry->second.Thresholds()).get());
    return entry->second;
  }

  static void Fill(AlignmentDatabaseStore* store) {
    Keep(SampleSiteAlignment(1, "Alpha", "South").Save(store));
    Keep(SampleSiteAlignment(2, "Alpha", "North").Save(store));
    Keep(SampleSiteAlignment(3, "Beta", "West").Save(store));
    Keep(SamplePathAlignment(4, "Gamma").Save(store));
    Keep(SamplePathAlignment(5, "Gamma").Save(store));
    Keep(SamplePathAlignment(6, "Delta").Save(store));
  }

  static void ExpectGoneFrom(const QString& path, const QString& before, const QStringList& beginnings) {
    QStringList gone = before.split('\n');
    for (const QString& line : DumpDatabase(path).split('\n')) {
      EXPECT_TRUE(gone.removeOne(line)) << "was not there before: " << line.toStdString();
    }
    QStringList expected;
    for (const QString& beginning : beginnings) {
      for (const QString& line : before.split('\n')) {
        if (line.startsWith(beginning)) expected << line;
      }
    }
    EXPECT_EQ(expected.size(), beginnings.size());
    expected.sort();
    gone.sort();
    EXPECT_EQ(gone, expected);
    EXPECT_EQ(IntegrityCheck(path), QStringLiteral("ok"));
  }

  const StoreVersion version_;
  StoreFiles files_;
  StorePointer store_;
  QString main_;
  QString thresholds_;
};

class DeletionTest : public testing::TestWithParam<StoreVersion> {
 protected:
  DeletionScene scene_{GetParam()};
};

// What is logged when a connection with a statement left open refuses to close; the message is the engine's.
inline QString CloseFailure() {
  static const QString line = [] {
    sqlite3* db = nullptr;
    sqlite3_stmt* statement = nullptr;
    EXPECT_EQ(sqlite3_open_v2(":memory:", &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_prepare_v2(db, "SELECT 1", -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_close(db), SQLITE_BUSY);
    const QString message = QString::fromUtf8(sqlite3_errmsg(db));
    sqlite3_finalize(statement);
    EXPECT_EQ(sqlite3_close(db), SQLITE_OK);
    return QStringLiteral("sqlite3_close failed with  5 %1").arg(message);
  }();
  return line;
}

// One way in which a deletion fails, and all that can be seen of it.
struct DeletionBranch {
  const char* name;
  std::vector<Fault> faults;
  QStringList lines;
  bool mainResult;  // what the main file alone would give: the result of the versions without thresholds
  bool result;      // the result of the current version
  QStringList goneFromMain;
  QStringList goneFromThresholds;
  int leaked = 0;  // connections left open, each with one statement
};

// Runs every branch that `list` has for a version, each on files of its own. `leakedBefore` connections stay
// open even if nothing fails.
template <typename Delete>
void ExpectBranches(const StoreVersion& version, std::vector<DeletionBranch> (*list)(const DeletionScene&),
                    int leakedBefore, Delete remove) {
  const std::size_t count = list(DeletionScene(version)).size();
  for (std::size_t index = 0; index < count; ++index) {
    DeletionScene scene(version);
    const DeletionBranch branch = list(scene)[index];
    SCOPED_TRACE(branch.name);
    for (const Fault& fault : branch.faults) SqliteCalls::Arm(fault);
    EXPECT_EQ(remove(&scene), version.HasThresholdsFile() ? branch.result : branch.mainResult);
    EXPECT_GE(SqliteCalls::FiredCount(), static_cast<int>(branch.faults.size()));
    SqliteCalls::Reset();
    EXPECT_EQ(scene.Lines(), branch.lines);
    scene.ExpectGone(branch.goneFromMain, branch.goneFromThresholds);
    EXPECT_EQ(SqliteCalls::OpenConnections(), branch.leaked + leakedBefore);
    EXPECT_EQ(SqliteCalls::LiveStatements(), branch.leaked + leakedBefore);
    SqliteCalls::CloseLeaked();
  }
}

inline Fault OnMain(const char* call, int code, const char* sql) {
  return Fault(call, code).OnFile("main.sqlite").OnText(sql);
}
inline Fault OnThresholds(const char* call, int code, const char* sql) {
  return Fault(call, code).OnFile("thresholds.sqlite").OnText(sql);
}
