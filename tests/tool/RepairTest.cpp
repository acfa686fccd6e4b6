// Putting files right.
#include <QFile>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

const QString copied = QStringLiteral("copied to m.before-repair-1\ncopied to t.before-repair-1\n");
const QString salvageHint =
    QStringLiteral(", which cannot be repaired; 'tarnbeam-db salvage' reads what can be read into new files");

class RepairTest : public ToolTest {
 protected:
  void SetUp() override {
    CreateFilesWith({SiteEntry("S", "1"), SiteEntry("S", "2"), PathEntry("P")});
    mainFile_ = ReadFile("m");
    thresholds_ = ReadFile("t");
    exported_ = RunWell({"export", "m", "t"});
  }

  // Rows that belong to nothing, and thresholds that count and do not count.
  void Litter() {
    RunSql(Path("m"),
           "INSERT INTO Sites VALUES (7, 'Å'), (8, 'B'); INSERT INTO Paths VALUES (8, 'P8');"
           "INSERT INTO Orientation VALUES (20, 1, 2, 3), (21, 1, 2, 3), (22, 1, 2, 3);"
           "INSERT INTO Geolocation VALUES (30, 1, 2, 3); INSERT INTO Height VALUES (40, 1, 2)");
    RunSql(Path("t"),
           "UPDATE AntennaAlignmentThresholds SET TiltThreshold = 77 WHERE AntennaAlignmentKey = 1;"
           "INSERT INTO AntennaAlignmentThresholds VALUES (50, 1, 1, 5, 5, 5), (51, 1, 1, 1.5, 0.125, 0),"
           "(52, 9, 1, 4, 4, 4), (53, 1, 6, 3, 3, 3);"
           "INSERT INTO PathAlignmentThresholds VALUES (60, 9, 1, 1, 1, 1), (61, 8, 2, 1, 1, 1)");
  }

  void ExpectUntouched() {
    EXPECT_EQ(ReadFile("m"), mainFile_);
    EXPECT_EQ(ReadFile("t"), thresholds_);
    EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "t"}));
  }

  void KeepState() {
    mainFile_ = ReadFile("m");
    thresholds_ = ReadFile("t");
  }

  // The root page of the index over the names of a table, from 0.
  int IndexPage(const QString& table) { return PageOf("m", "sqlite_autoindex_" + table + "_1"); }

  QByteArray mainFile_;
  QByteArray thresholds_;
  QString exported_;
};

TEST_F(RepairTest, WhatWouldBeDoneHasToBeSaid) {
  Litter();
  KeepState();
  const Outcome outcome = RunInShell("exec \"$0\" \"$@\" > /dev/full", {"repair", "m", "t", "--dry-run"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: standard output cannot be written\n");
  ExpectUntouched();
}

// A byte of a name is another, so that no index can be made.
TEST_F(RepairTest, NamesThatAreThereTwiceAreRefused) {
  RunSql(Path("m"), "INSERT INTO Sites VALUES (7, 'Tower 1'), (8, 'Tower 2')");
  const auto at = ReadFile("m").indexOf("Tower 2", PageOf("m", "Sites") * 4096);
  ASSERT_LT(at, (PageOf("m", "Sites") + 1) * 4096);
  Overwrite("m", at, "Tower 1");
  KeepState();
  ExpectFailure({"repair", "m", "t"}, "m: UNIQUE constraint failed: Sites.SiteIdentifier" + salvageHint, 4);
  ExpectUntouched();
}

TEST_F(RepairTest, RightFilesAreLeftAlone) {
  EXPECT_EQ(RunWell({"repair", "m", "t"}), "nothing to repair in m and t\n");
  EXPECT_EQ(RunWell({"repair", "m", "t", "--dry-run"}), "nothing to repair in m and t\n");
  ExpectUntouched();
}

TEST_F(RepairTest, RowsThatBelongToNothingGo) {
  Litter();
  KeepState();
  const QString lines =
      " m: 2 (sites that no alignment refers to)\n"
      " m: 1 (paths that no alignment refers to)\n"
      " m: 3 (orientations that no alignment refers to)\n"
      " m: 1 (locations that no alignment refers to)\n"
      " m: 1 (heights that no alignment refers to)\n"
      " t: 1 (thresholds without site alignment)\n"
      " t: 2 (thresholds without path alignment)\n"
      " t: 2 (two thresholds rows for one site alignment)\n";
  EXPECT_EQ(RunWell({"repair", "m", "t", "--dry-run"}),
            QString(lines).replace("\n ", "\nwould remove from ").replace(0, 1, "would remove from "));
  ExpectUntouched();
  EXPECT_EQ(RunWell({"repair", "m", "t"}),
            copied + QString(lines).replace("\n ", "\nremoved from ").replace(0, 1, "removed from "));
  EXPECT_EQ(ReadFile("m.before-repair-1"), mainFile_);
  EXPECT_EQ(ReadFile("t.before-repair-1"), thresholds_);
  EXPECT_EQ(RunWell({"export", "m", "t"}), exported_);
  // Of several rows the last counts; a row of something else is not touched.
  EXPECT_EQ(Rows(Path("t"), "SELECT AntennaThresholdKey FROM AntennaAlignmentThresholds ORDER BY 1"),
            (QStringList{"2", "51", "53"}));
  EXPECT_EQ(Rows(Path("m"),
                 "SELECT (SELECT count(*) FROM Sites), (SELECT count(*) FROM Paths), (SELECT count(*) "
                 "FROM Orientation), (SELECT count(*) FROM Geolocation), (SELECT count(*) FROM Height)"),
            QStringList{"1|1|6|4|3"});
  EXPECT_EQ(RunWell({"repair", "m", "t"}), "nothing to repair in m and t\n");
}

TEST_F(RepairTest, CopiesAreNeverOverwritten) {
  WriteFile("m.before-repair-1", "precious");
  WriteFile("t.before-repair-2", "precious");
  Litter();
  EXPECT_EQ(RunWell({"repair", "m", "t"}).split('\n').filter("copied"),
            (QStringList{"copied to m.before-repair-3", "copied to t.before-repair-3"}));
  EXPECT_EQ(ReadFile("m.before-repair-1"), "precious");
  EXPECT_EQ(ReadFile("t.before-repair-2"), "precious");
}

TEST_F(RepairTest, DamageInIndicesAloneIsRepaired) {
  RunSql(Path("m"), "PRAGMA user_version = 17; PRAGMA application_id = 18");
  const QString before = DumpDatabase(Path("m"));
  int repairs = 0;
  for (const char* table : {"Sites", "Paths"}) {
    for (const QByteArray& damage : {QByteArray(4096, '\x55'), QByteArray(4096, '\0'), QByteArray(8, '\0')}) {
      const int page = IndexPage(table);
      // Behind the last byte of the page, where the entries stand.
      Overwrite("m", (page + 1) * 4096 - damage.size(), damage);
      EXPECT_EQ(Run({"check", "m", "t"}).status, 4);
      EXPECT_EQ(RunWell({"repair", "m", "t", "--dry-run"}), "would rebuild the indices of m\n");
      EXPECT_EQ(RunWell({"repair", "m", "t"}), QString("copied to m.before-repair-%1\n"
                                                       "copied to t.before-repair-%1\n"
                                                       "rebuilt the indices of m\n")
                                                   .arg(++repairs));
      EXPECT_EQ(IntegrityCheck(Path("m")), QString("ok"));
      EXPECT_EQ(DumpDatabase(Path("m")), before);
      EXPECT_EQ(Rows(Path("m"), "PRAGMA user_version"), QStringList{"17"});
      EXPECT_EQ(Rows(Path("m"), "PRAGMA application_id"), QStringList{"18"});
      EXPECT_EQ(RunWell({"export", "m", "t"}), exported_);
      EXPECT_EQ(Run({"check", "m", "t", "--strict"}).status, 0);
    }
  }
}

TEST_F(RepairTest, OtherDamageIsRefused) {
  for (const char* table : {"Height", "Orientation", "AntennaAlignment", "Sites"}) {
    Overwrite("m", PageOf("m", table) * 4096, QByteArray(4096, '\x55'));
    KeepState();
    for (const QStringList& words :
         {QStringList{"repair", "m", "t"}, QStringList{"repair", "m", "t", "--dry-run"}}) {
      ExpectDamaged(words, "m", salvageHint);
      ExpectUntouched();
    }
  }
}

// Rows of a table that its tree has lost look like pages that nobody uses.
TEST_F(RepairTest, LostPagesOfTablesAreRefused) {
  QJsonArray entries;
  constexpr int enough = 200;
  for (int number = 0; number < enough; ++number) entries.append(SiteEntry("S", QString::number(number)));
  WriteJson("more.json", entries);
  RunWell({"import", "m", "t", "more.json"});
  const qint64 root = PageOf("m", "Orientation") * 4096;
  ASSERT_EQ(ReadFile("m").at(int(root)), '\x05');
  // A tree with one cell less.
  const int cells = ReadFile("m").at(int(root) + 4);
  Overwrite("m", root + 4, QByteArray(1, char(cells - 1)));
  QFile::remove(Path("more.json"));
  KeepState();
  ExpectDamaged({"repair", "m", "t"}, "m", salvageHint);
  ExpectUntouched();
}

TEST_F(RepairTest, ErrorsOfOtherKindsAreRefused) {
  const auto expect = [this](const char* file, const char* sql, const QString& message) {
    WriteFile("m", mainFile_);
    WriteFile("t", thresholds_);
    RunSql(Path(file), sql);
    const QByteArray mainFile = ReadFile("m");
    ExpectFailure({"repair", "m", "t"}, message, 4);
    ExpectFailure({"repair", "m", "t", "--dry-run"}, message, 4);
    EXPECT_EQ(ReadFile("m"), mainFile);
  };
  expect("m", "DELETE FROM Height WHERE HeightKey = 1",
         "m: foreign key violations (AntennaAlignment row 1 names no row of Height)" + salvageHint);
  expect("m", "UPDATE Height SET HeightInMeters = 9e999 WHERE HeightKey = 1",
         "m: values of a wrong type or not finite (Height row 1)" + salvageHint);
  expect("m", "CREATE TABLE Extra (x)",
         "m: schema differences (table Extra does not belong there)" + salvageHint);
  expect("m", "UPDATE Version SET VersionNumber = 8",
         "m: unknown version (version 8 is not known)" + salvageHint);
  expect("m", "UPDATE Version SET VersionNumber = 6",
         "m: is of version 6, which cannot be repaired; 'tarnbeam-db migrate' brings it to version 7");
  expect("t",
         "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = 9; UPDATE PathAlignmentThresholds SET "
         "PathKey = 9",
         "m and t" + noPair);
}

TEST_F(RepairTest, FilesThatAreNotThereOrInUse) {
  ExpectFailure({"repair", "m", "none"}, "none: no such file");
  ExpectFailure({"repair", "m", "./m"}, "m: cannot be main and thresholds file at once");
  Litter();
  for (const char* file : {"m", "t"}) {
    const Holder holder(Path(file), "BEGIN EXCLUSIVE");
    ExpectFailure({"repair", "m", "t", "--wait", "0"}, InUse(file), 3);
    ExpectFailure({"repair", "m", "t", "--dry-run", "--wait", "0"}, InUse(file), 3);
  }
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "t"}));
}

TEST_F(RepairTest, NamesMayBeAnything) {
  Litter();
  for (const QString name : {" ", ":memory:", "file:x?mode=ro", "%1", "a\nb", "*?[", "Å'\""}) {
    ASSERT_TRUE(QFile::copy(Path("m"), Folder() + '/' + name) &&
                QFile::copy(Path("t"), Folder() + '/' + name + ".t"));
    EXPECT_EQ(RunWell({"repair", name, name + ".t"}).count("removed from "), 8);
  }
  EXPECT_EQ(FilesInFolder().size(), 3 + 7 * 4);
}

TEST_F(RepairTest, OnAFullDiskTheFilesStayAsTheyWere) {
  Litter();
  KeepState();
  for (const int blocks : {0, 8, 40, 71, 75}) {
    const Outcome outcome = RunWithFileLimit(blocks, {"repair", "m", "t"});
    EXPECT_EQ(outcome.status, 1) << blocks;
    EXPECT_EQ(outcome.out, QString());
    ExpectUntouched();
  }
}

TEST_F(RepairTest, ACopyThatCannotBeMadeStopsIt) {
  Litter();
  KeepState();
  const QString name(250, 'n');
  ASSERT_TRUE(QFile::rename(Path("t"), Path(name)));
  const Outcome outcome = Run({"repair", "m", name});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(outcome.err.endsWith(": File name too long\n")) << outcome.err.toStdString();
  ASSERT_TRUE(QFile::rename(Path(name), Path("t")));
  ExpectUntouched();
}

}  // namespace
