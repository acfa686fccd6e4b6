// Deletion, and what it says beforehand.
#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

class DeleteTest : public ToolTest {
 protected:
  void SetUp() override {
    CreateFilesWith(
        {SiteEntry("S", "1"), SiteEntry("S", "2"), SiteEntry("T"), PathEntry("P"), PathEntry("P")});
  }

  // How many rows there are: site alignments, their thresholds, path alignments, their thresholds.
  QStringList Counts() const {
    const auto count = [this](const char* file, const char* table) {
      return Rows(Path(file), QString("SELECT count(*) FROM %1").arg(table)).value(0);
    };
    return {count("m", "AntennaAlignment"), count("t", "AntennaAlignmentThresholds"),
            count("m", "PathAlignment"), count("t", "PathAlignmentThresholds")};
  }

  void ExpectDeletion(const QStringList& words, const QString& message, const QString& result,
                      const QStringList& remaining) {
    const Outcome outcome = Run(QStringList{"delete", "m", "t"} + words + QStringList{"--yes"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "tarnbeam-db: " + message + "\n");
    EXPECT_EQ(outcome.out, result + "\n");
    EXPECT_EQ(Counts(), remaining);
  }
};

TEST_F(DeleteTest, WholeSite) {
  ExpectDeletion({"--site", "S"}, "site S and 2 reports in all its sectors will be deleted",
                 "deleted site S and 2 reports", {"1", "1", "2", "2"});
  EXPECT_EQ(Rows(Path("m"), "SELECT SiteIdentifier FROM Sites"), QStringList{"'T'"});
}

TEST_F(DeleteTest, WholePath) {
  ExpectDeletion({"--path", "P"}, "path P and 2 reports will be deleted", "deleted path P and 2 reports",
                 {"3", "3", "0", "0"});
}

TEST_F(DeleteTest, OneReportOfASiteGoesWithItsThresholds) {
  ExpectDeletion({"--site", "S", "--index", "1"},
                 "1 report of site S will be deleted: 2024-05-14T07:12:33Z, of 2 that there are",
                 "deleted report 1 of site S", {"2", "2", "2", "2"});
  EXPECT_EQ(Rows(Path("m"), "SELECT SectorName FROM AntennaAlignment"), (QStringList{"'1'", "'Alpha'"}));
  EXPECT_EQ(Rows(Path("t"), "SELECT AntennaAlignmentKey FROM AntennaAlignmentThresholds"),
            (QStringList{"1", "3"}));
}

TEST_F(DeleteTest, OneReportOfAPath) {
  ExpectDeletion({"--path", "P", "--index", "0"},
                 "1 report of path P will be deleted: 2024-05-14T07:12:33Z, of 2 that there are",
                 "deleted report 0 of path P", {"3", "3", "1", "1"});
  EXPECT_EQ(Rows(Path("m"), "SELECT PathAlignmentKey FROM PathAlignment"), QStringList{"2"});
}

TEST_F(DeleteTest, RefusesWithoutATerminalToAskOn) {
  const Outcome outcome = Run({"delete", "m", "t", "--site", "S"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: site S and 2 reports in all its sectors will be deleted\n"
            "tarnbeam-db: nothing was deleted: without a terminal to ask on, --yes has to be given\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

TEST_F(DeleteTest, AsksOnATerminal) {
  const Outcome no = Run({"delete", "m", "t", "--path", "P"}, "n\n");
  EXPECT_EQ(no.status, 1);
  EXPECT_EQ(no.err,
            "tarnbeam-db: path P and 2 reports will be deleted\nDelete? [y/N] "
            "tarnbeam-db: nothing was deleted\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
  const Outcome yes = Run({"delete", "m", "t", "--path", "P"}, "y\n");
  EXPECT_EQ(yes.status, 0);
  EXPECT_EQ(yes.out, "deleted path P and 2 reports\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "0", "0"}));
}

TEST_F(DeleteTest, WhatIsNotThere) {
  ExpectFailure({"delete", "m", "t", "--site", "P", "--yes"}, "m: there is no site P");
  ExpectFailure({"delete", "m", "t", "--site", "S", "--index", "2", "--yes"},
                "site S has 2 reports, numbered from 0: there is none at 2");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

// The library returns true for this.
TEST_F(DeleteTest, ADeletionThatFailedIsSaid) {
  RunSql(Path("m"),
         "CREATE TRIGGER keep BEFORE DELETE ON PathAlignment BEGIN SELECT RAISE(FAIL, 'kept'); END");
  const Outcome outcome = Run({"delete", "m", "t", "--path", "P", "--yes"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: path P and 2 reports will be deleted\n"
            "tarnbeam-db: path P could not be deleted\n"
            "  library: step DELETE FROM PathAlignment WHERE PathKey = ?: kept\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

// The reports go, and what they belong to stays.
TEST_F(DeleteTest, ASiteThatATriggerKeepsIsNotDeleted) {
  RunSql(Path("m"), "CREATE TRIGGER keep BEFORE DELETE ON Sites BEGIN SELECT RAISE(IGNORE); END");
  const Outcome outcome = Run({"delete", "m", "t", "--site", "S", "--yes"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: site S and 2 reports in all its sectors will be deleted\n"
            "tarnbeam-db: site S could not be deleted, perhaps because of a trigger; nothing was deleted\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

TEST_F(DeleteTest, WhatIsShownIsDeletedOrNothing) {
  const Outcome outcome = RunWhileAsked({"delete", "m", "t", "--site", "S", "--index", "0"}, [this] {
    RunSql(Path("m"), "UPDATE AntennaAlignment SET SectorName = '0' WHERE AntennaAlignmentKey = 1");
  });
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnbeam-db: 1 report of site S will be deleted: 2024-05-14T07:12:33Z, of 2 that there are\n"
            "Delete? [y/N] tarnbeam-db: m: site S was changed meanwhile by another program; nothing was "
            "deleted\n");
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

// While it asks, nobody is kept from the files.
TEST_F(DeleteTest, AnotherReportMayGoMeanwhile) {
  const Outcome outcome = RunWhileAsked({"delete", "m", "t", "--site", "S", "--index", "1"}, [this] {
    EXPECT_EQ(Run({"delete", "m", "t", "--site", "S", "--index", "0", "--yes"}).status, 0);
  });
  EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
  EXPECT_EQ(Rows(Path("m"), "SELECT SectorName FROM AntennaAlignment"), (QStringList{"'Alpha'"}));
  EXPECT_EQ(Counts(), (QStringList{"1", "1", "2", "2"}));
}

TEST_F(DeleteTest, AReaderOfOneFileKeepsBothAsTheyAre) {
  for (const char* file : {"m", "t"}) {
    const Holder reader(Path(file), "BEGIN; SELECT count(*) FROM sqlite_schema");
    const Outcome outcome = Run({"delete", "m", "t", "--site", "S", "--yes", "--wait", "0"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.err,
              "tarnbeam-db: site S and 2 reports in all its sectors will be deleted\ntarnbeam-db: " +
                  InUse(file) + "\n");
    EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
  }
}

TEST_F(DeleteTest, ThresholdsOfSomethingElseStay) {
  RunSql(
      Path("t"),
      "INSERT INTO AntennaAlignmentThresholds (AntennaAlignmentKey, SiteIdentifier) VALUES (3, 1), (99, 1)");
  EXPECT_EQ(Run({"delete", "m", "t", "--site", "S", "--yes"}).status, 0);
  EXPECT_EQ(Rows(Path("t"), "SELECT AntennaAlignmentKey, SiteIdentifier FROM AntennaAlignmentThresholds"),
            (QStringList{"3|2", "3|1"}));
}

TEST_F(DeleteTest, FilesThatAreNoPairAreRefused) {
  RunSql(Path("t"), "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = SiteIdentifier + 5");
  RunSql(Path("t"), "UPDATE PathAlignmentThresholds SET PathKey = PathKey + 5");
  // Nobody is asked first.
  ExpectFailure({"delete", "m", "t", "--site", "S", "--yes"}, "m and t" + noPair, 4);
  EXPECT_EQ(Counts(), (QStringList{"3", "3", "2", "2"}));
}

TEST_F(DeleteTest, AnIdentifierThatIsNoUtf8) {
  RunSql(Path("m"), "UPDATE Sites SET SiteIdentifier = CAST(x'53ff' AS TEXT) WHERE SiteIdentifier = 'S'");
  EXPECT_EQ(Run({"delete", "m", "t", "--site", QString("S") + QChar(QChar::ReplacementCharacter), "--index",
                 "0", "--yes"})
                .status,
            0);
  EXPECT_EQ(Counts(), (QStringList{"2", "2", "2", "2"}));
  EXPECT_EQ(Rows(Path("m"), "SELECT hex(SiteIdentifier) FROM Sites"), (QStringList{"'53FF'", "'54'"}));
}

}  // namespace
