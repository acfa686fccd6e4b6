// Many pairs into one.
#include <sys/stat.h>

#include <QDir>
#include <QFile>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

class MergeTest : public ToolTest {
 protected:
  // Another pair: NAME and NAMEt.
  void CreateSource(const QString& name, const QJsonArray& entries) {
    RunWell({"create", name, name + "t"});
    WriteJson("entries.json", entries);
    RunWell({"import", name, name + "t", "entries.json"});
  }
  // A main file of an earlier version, whose sites and paths have this behind their names.
  void LoadEarlier(const QString& name, int version, const QString& suffix = QString()) {
    ToolTest::LoadEarlier(name, version);
    RunSql(Path(name), QString("UPDATE Sites SET SiteIdentifier = SiteIdentifier || '%1'; UPDATE Paths SET "
                               "PathIdentifier = PathIdentifier || '%1'")
                           .arg(suffix));
  }
  // What a pair holds, in no particular order.
  QStringList Exported(const QStringList& files) {
    QStringList lines =
        RunWell(QStringList{"export"} + files + QStringList{"--format", "ndjson"}).split('\n');
    lines.removeLast();
    lines.sort();
    return lines;
  }
  // What a dry run prints, and then the merge: the same. The dry run changes nothing.
  QString Merged(const QStringList& sources) {
    const QByteArray mainFile = ReadFile("m");
    const QByteArray thresholds = ReadFile("t");
    const QStringList files = FilesInFolder();
    const QStringList words = QStringList{"merge", "m", "t"} + sources;
    const QString said = RunWell(words + QStringList{"--dry-run"});
    EXPECT_EQ(ReadFile("m"), mainFile);
    EXPECT_EQ(ReadFile("t"), thresholds);
    EXPECT_EQ(RunWell(words), said);
    EXPECT_EQ(FilesInFolder(), files);
    return said;
  }
  // A failure of the merge, and of its dry run, that leaves the target as it was.
  void ExpectRefused(const QStringList& sources, const QString& message, int status) {
    const QByteArray mainFile = ReadFile("m");
    const QByteArray thresholds = ReadFile("t");
    const QStringList files = FilesInFolder();
    const QStringList words = QStringList{"merge", "m", "t", "--wait", "0"} + sources;
    ExpectFailure(words, message, status);
    ExpectFailure(words + QStringList{"--dry-run"}, message, status);
    EXPECT_EQ(ReadFile("m"), mainFile);
    EXPECT_EQ(ReadFile("t"), thresholds);
    EXPECT_EQ(FilesInFolder(), files);
  }
};

TEST_F(MergeTest, TwentyPairsOfAllVersionsTwice) {
  CreateFilesWith({SiteEntry("of the target")});
  QStringList sources;
  QStringList expected = Exported({"m", "t"});
  for (int number = 0; number < 20; ++number) {
    const int version = number % 7 + 1;
    const QString name = QString("s%1").arg(number);
    QStringList files{name};
    if (version < 7) {
      LoadEarlier(name, version, QString(" %1").arg(number));
    } else {
      CreateSource(name, {SiteEntry(name), SiteEntry(name, "Beta"), PathEntry(name)});
      files.append(name + "t");
    }
    sources += files;
    expected += Exported(files);
  }
  expected.sort();
  const auto count = expected.size() - 1;
  ASSERT_GT(count, 100);
  EXPECT_EQ(Merged(sources), QString("%1 added, 0 already there, 0 conflicts\n").arg(count));
  EXPECT_EQ(Exported({"m", "t"}), expected);
  EXPECT_EQ(RunWell({"check", "m", "t", "--strict"}).count("WARNING"), 0);
  EXPECT_EQ(Merged(sources), QString("0 added, %1 already there, 0 conflicts\n").arg(count));
  EXPECT_EQ(Exported({"m", "t"}), expected);
}

TEST_F(MergeTest, LongWorkShowsItsProgressOnATerminal) {
  CreateFiles();
  CreateSource("a", {SiteEntry("B"), PathEntry("Z")});
  CreateSource("b", {SiteEntry("C")});
  constexpr int aSecond = 1000;
  for (const int clockStep : {0, aSecond}) {
    const Outcome outcome = RunOnTerminal({"merge", "m", "t", "a", "at", "b", "bt", "--dry-run"}, clockStep);
    EXPECT_EQ(outcome.out, "3 added, 0 already there, 0 conflicts\n");
    EXPECT_EQ(outcome.err, clockStep == 0 ? QString()
                                          : "\r\x1b[K1 of 3 alignments\r\x1b[K2 of 3 alignments"
                                            "\r\x1b[K3 of 3 alignments\r\x1b[K");
  }
}

TEST_F(MergeTest, AlignmentsOfEarlierVersionsGetThresholdsOfNone) {
  CreateFiles();
  for (int version = 1; version <= 6; ++version) {
    const QString name = QString("v%1").arg(version);
    LoadEarlier(name, version, QString::number(version));
    RunWell({"merge", "m", "t", name});
  }
  const auto count = [this](const char* file, const QString& table) {
    return Rows(Path(file), "SELECT count(*) FROM " + table).value(0).toInt();
  };
  const int sites = count("m", "AntennaAlignment");
  const int paths = count("m", "PathAlignment");
  EXPECT_GT(sites, 12);
  EXPECT_GT(paths, 12);
  EXPECT_EQ(count("t",
                  "AntennaAlignmentThresholds WHERE AzimuthThreshold = 0 AND TiltThreshold = 0 AND "
                  "RollThreshold = 0"),
            sites);
  EXPECT_EQ(count("t",
                  "PathAlignmentThresholds WHERE AzimuthThreshold = 0 AND TiltThreshold = 0 AND "
                  "PathLengthThreshold = -1"),
            paths);
  EXPECT_EQ(count("t", "AntennaAlignmentThresholds"), sites);
  EXPECT_EQ(count("t", "PathAlignmentThresholds"), paths);
}

TEST_F(MergeTest, AnotherMeasurementOfOneMomentIsListedAndKept) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  CreateSource("s", {With(SiteEntry("S"), "measured.tilt", 1),
                     With(With(PathEntry("P"), "height.source", "manual"), "options.note", "x")});
  EXPECT_EQ(Merged({"s", "st"}),
            QString("conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of s differs in "
                    "measured.tilt from one that is there; both are kept\n"
                    "conflict: path P, 2024-05-14T07:12:33Z of s differs in height.source, options.note "
                    "from one that is there; both are kept\n"
                    "2 added, 0 already there, 2 conflicts\n"));
  EXPECT_EQ(Rows(Path("m"),
                 "SELECT TiltDegrees FROM Orientation JOIN AntennaAlignment ON MeasuredOrientationKey = "
                 "OrientationKey ORDER BY 1"),
            (QStringList{"-2.5", "1.0"}));
  EXPECT_EQ(Rows(Path("m"), "SELECT Note FROM PathAlignment"),
            (QStringList{R"('Grüße, "Ole"\nline 2')", "'x'"}));
  // Both are there now.
  EXPECT_EQ(Merged({"s", "st"}), "0 added, 2 already there, 0 conflicts\n");
}

TEST_F(MergeTest, AnotherNoteAndOtherThresholdsAreListedAndTheTargetsStay) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P"), SiteEntry("T")});
  const QStringList before = Exported({"m", "t"});
  CreateSource("s", {With(SiteEntry("S"), "options.note", "x"),
                     With(PathEntry("P"), "options.thresholds.pathLength", 7),
                     With(With(SiteEntry("T"), "options.thresholds.roll", 7), "options.note", "")});
  for (int run = 0; run < 2; ++run) {
    EXPECT_EQ(Merged({"s", "st"}),
              QString("conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of s differs in "
                      "options.note from the one that is there, which stays\n"
                      "conflict: site T, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of s differs in "
                      "options.note, options.thresholds.roll from the one that is there, which stays\n"
                      "conflict: path P, 2024-05-14T07:12:33Z of s differs in options.thresholds.pathLength "
                      "from the one that is there, which stays\n"
                      "0 added, 3 already there, 3 conflicts\n"));
  }
  EXPECT_EQ(Exported({"m", "t"}), before);
}

TEST_F(MergeTest, ConflictsBetweenSources) {
  CreateFiles();
  CreateSource("a\n", {SiteEntry("S")});
  CreateSource("b", {With(SiteEntry("S"), "options.note", "x"), With(SiteEntry("S"), "target.roll", 1)});
  EXPECT_EQ(Merged({"a\n", "a\nt", "b", "bt"}),
            QString("conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of b differs in "
                    "options.note from the one that is there, which stays\n"
                    "conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of b differs in "
                    "target.roll from one that is there; both are kept\n"
                    "2 added, 1 already there, 2 conflicts\n"));
  CreateSource("c", {With(SiteEntry("S"), "options.note", "y")});
  EXPECT_EQ(RunWell({"merge", "m", "t", "a\n", "a\nt", "c", "ct"}),
            QString("conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of c differs in "
                    "options.note from the one that is there, which stays\n"
                    "0 added, 2 already there, 1 conflicts\n"));
}

TEST_F(MergeTest, DoubledInASourceIsOne) {
  CreateFilesWith({PathEntry("P")});
  CreateSource("s", {SiteEntry("S"), PathEntry("P"), SiteEntry("S"), PathEntry("P"),
                     With(SiteEntry("S"), "options.note", "x")});
  EXPECT_EQ(Merged({"s", "st", "s", "st"}),
            QString("conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of s differs in "
                    "options.note from the one that is there, which stays\n"
                    "conflict: site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z of s differs in "
                    "options.note from the one that is there, which stays\n"
                    "1 added, 9 already there, 2 conflicts\n"));
  EXPECT_EQ(Exported({"m", "t"}).size(), 2);
}

TEST_F(MergeTest, TheTargetItselfAddsNothing) {
  CreateFilesWith({SiteEntry("S"), SiteEntry("S"), PathEntry("P")});
  const QStringList before = Exported({"m", "t"});
  EXPECT_EQ(Merged({"m", "t"}), "0 added, 3 already there, 0 conflicts\n");
  EXPECT_EQ(Exported({"m", "t"}), before);
}

TEST_F(MergeTest, AnEmptySource) {
  CreateFiles();
  CreateSource("s", {});
  EXPECT_EQ(Merged({"s", "st"}), "0 added, 0 already there, 0 conflicts\n");
}

TEST_F(MergeTest, WhichFilesBelongTogether) {
  CreateFilesWith({SiteEntry("S")});
  CreateSource("s", {SiteEntry("S")});
  LoadEarlier("v6", 6);
  ExpectRefused({"s"}, "s: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  ExpectRefused({"v6", "s"}, "s: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  ExpectRefused({"s", "v6", "st"}, "s: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  ExpectRefused({"v6", "st"},
                "v6: is of version 6, which has no thresholds file: leave THRESHOLDS out" + hint, 2);
  const QString behind = ": is a thresholds file, so its main file has to stand before it" + hint;
  ExpectRefused({"st", "s"}, "st" + behind, 2);
  ExpectRefused({"s", "st", "t"}, "t" + behind, 2);
  // The target's own two.
  const QByteArray before = ReadFile("m");
  ExpectFailure({"merge", "t", "m", "v6"}, "t: carries no version, so it is no main file of alignments", 4);
  ExpectFailure({"merge", "m", "v6", "s", "st"}, "v6: has no table PreferencesPathLength" + tellsMore, 4);
  ExpectFailure({"merge", "m", "m", "v6"}, "m: cannot be main and thresholds file at once");
  ExpectFailure({"merge", "v6", "t", "s", "st"},
                "v6: is of version 6; 'tarnbeam-db migrate' brings it to version 7");
  ExpectFailure({"merge", "v6", "t", "s", "st", "--dry-run"},
                "v6: is of version 6; 'tarnbeam-db migrate' brings it to version 7");
  EXPECT_EQ(ReadFile("m"), before);
}

TEST_F(MergeTest, ASourceThatIsNotThere) {
  CreateFiles();
  LoadEarlier("v6", 6);
  ExpectRefused({"v6", "none"}, "none: no such file", 1);
}

TEST_F(MergeTest, ASourceInUse) {
  CreateFiles();
  LoadEarlier("v6", 6);
  CreateSource("s", {SiteEntry("S")});
  for (const char* file : {"s", "st"}) {
    const Holder holder(Path(file), "BEGIN EXCLUSIVE");
    ExpectRefused({"v6", "s", "st"}, InUse(file), 3);
  }
  // A source is read as any file is, whoever else reads it or is about to change it.
  const Holder holder(Path("s"), "BEGIN IMMEDIATE; DELETE FROM Sites");
  EXPECT_EQ(RunWell({"merge", "m", "t", "s", "st"}), "1 added, 0 already there, 0 conflicts\n");
}

TEST_F(MergeTest, ATargetInUse) {
  CreateFilesWith({SiteEntry("S")});
  LoadEarlier("v6", 6);
  const QByteArray before = ReadFile("m");
  for (const char* file : {"m", "t"}) {
    const Holder holder(Path(file), "BEGIN; SELECT count(*) FROM sqlite_schema");
    ExpectFailure({"merge", "m", "t", "v6", "--wait", "0"}, InUse(file), 3);
  }
  EXPECT_EQ(ReadFile("m"), before);
}

TEST_F(MergeTest, ADamagedSource) {
  CreateFiles();
  LoadEarlier("v6", 6);
  CreateSource("s", {SiteEntry("S")});
  const QByteArray whole = ReadFile("s");
  RunSql(Path("s"), "DELETE FROM Height");
  ExpectRefused({"v6", "s", "st"}, "s: 1 alignment without all the rows that belong to it" + tellsMore, 4);
  WriteFile("s", whole);
  RunSql(Path("s"), "UPDATE Orientation SET TiltDegrees = 9e999");
  ExpectRefused({"v6", "s", "st"}, "s: row 1 of Orientation holds what is no finite number" + tellsMore, 4);
  WriteFile("s", "no database, but as long as one has to be");
  ExpectRefused({"v6", "s", "st"}, "s: is no database", 4);
  WriteFile("s", whole);
  Overwrite("s", 4096LL * PageOf("s", "Sites"), QByteArray(200, '\x55'));
  const QByteArray before = ReadFile("m");
  ExpectDamaged({"merge", "m", "t", "v6", "s", "st"}, "s");
  EXPECT_EQ(ReadFile("m"), before);
}

TEST_F(MergeTest, ASourceWithTheThresholdsOfAnotherPair) {
  CreateFiles();
  CreateSource("a", {SiteEntry("S"), SiteEntry("T")});
  CreateSource("b", {SiteEntry("S"), SiteEntry("T")});
  RunSql(Path("bt"), "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = SiteIdentifier + 1");
  ExpectRefused({"a", "bt"}, "a and bt" + noPair, 4);
}

TEST_F(MergeTest, ATargetThatIsNoPair) {
  CreateFilesWith({SiteEntry("S")});
  CreateSource("s", {SiteEntry("T")});
  RunSql(Path("t"), "UPDATE AntennaAlignmentThresholds SET SiteIdentifier = 9");
  ExpectRefused({"s", "st"}, "m and t" + noPair, 4);
}

TEST_F(MergeTest, ASaveThatFailsKeepsNoneOfAnySource) {
  CreateFiles();
  CreateSource("a", {SiteEntry("S")});
  CreateSource("b", {PathEntry("P")});
  RunSql(Path("m"), "CREATE TRIGGER full BEFORE INSERT ON Paths BEGIN SELECT RAISE(FAIL, 'full'); END");
  const QByteArray before = ReadFile("m");
  for (const QStringList& words : {QStringList{"--dry-run"}, QStringList{}}) {
    const Outcome outcome = Run(QStringList{"merge", "m", "t", "a", "at", "b", "bt"} + words);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "tarnbeam-db: b: path P, 2024-05-14T07:12:33Z: could not be saved, so nothing was\n"
              "  library: step INSERT INTO Paths (PathIdentifier) VALUES (?): full\n");
    EXPECT_EQ(ReadFile("m"), before);
  }
}

TEST_F(MergeTest, SourcesThatCannotBeWritten) {
  CreateFiles();
  ASSERT_TRUE(QDir(Folder()).mkdir("stick"));
  CreateSource("stick/s", {SiteEntry("S")});
  LoadEarlier("stick/v5", 5);
  RunSql(Path("stick/s"), "PRAGMA journal_mode = WAL");
  const QStringList names{"s", "st", "v5"};
  for (const QString& name : names) ASSERT_EQ(chmod(Path("stick/" + name).toUtf8().constData(), 0444), 0);
  ASSERT_EQ(chmod(Path("stick").toUtf8().constData(), 0555), 0);
  const QByteArray before = ReadFile("stick/s") + ReadFile("stick/st") + ReadFile("stick/v5");
  const auto count = Exported({"stick/s", "stick/st"}).size() + Exported({"stick/v5"}).size();
  const Outcome outcome = RunUnprivileged({"merge", "m", "t", "stick/s", "stick/st", "stick/v5"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, QString("%1 added, 0 already there, 0 conflicts\n").arg(count));
  EXPECT_EQ(ReadFile("stick/s") + ReadFile("stick/st") + ReadFile("stick/v5"), before);
  EXPECT_EQ(QDir(Path("stick")).entryList(QDir::Files | QDir::Hidden, QDir::Name), names);
  ASSERT_EQ(chmod(Path("stick").toUtf8().constData(), 0755), 0);
}

TEST_F(MergeTest, ADryRunNeedsNothingThatCanBeWritten) {
  CreateFilesWith({SiteEntry("S")});
  LoadEarlier("v2", 2);
  for (const char* file : {"m", "t"}) ASSERT_EQ(chmod(Path(file).toUtf8().constData(), 0444), 0);
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0555), 0);
  EXPECT_EQ(RunUnprivileged({"merge", "m", "t", "v2", "--dry-run"}).status, 0);
  EXPECT_EQ(RunUnprivileged({"merge", "m", "t", "v2"}).status, 1);
  ASSERT_EQ(chmod(Folder().toUtf8().constData(), 0755), 0);
}

TEST_F(MergeTest, NamesOfSourcesMayBeAnything) {
  CreateFiles();
  const QStringList names{"with blanks", "%1 %2", ":memory:", "file:s?mode=ro",
                          "line\nfeed",  "-s",    "a?b*[c]",  QString::fromUtf8("Höhe")};
  QStringList sources;
  for (const QString& name : names) {
    LoadEarlier("earlier", 6, QString::number(sources.size()));
    ASSERT_TRUE(QFile::rename(Path("earlier"), Folder() + "/" + name)) << name.toStdString();
    sources.append(name);
  }
  LoadEarlier("one", 6);
  const auto count = names.size() * Exported({"one"}).size();
  EXPECT_EQ(RunWell(QStringList{"merge", "--", "m", "t"} + sources),
            QString("%1 added, 0 already there, 0 conflicts\n").arg(count));
  EXPECT_EQ(RunWell(QStringList{"merge", "--", "m", "t"} + sources),
            QString("0 added, %1 already there, 0 conflicts\n").arg(count));
}

TEST_F(MergeTest, IdentifiersThatAreNoUtf8AreMergedOnce) {
  CreateFiles();
  CreateSource("s", {SiteEntry("S")});
  RunSql(Path("s"), "UPDATE Sites SET SiteIdentifier = CAST(x'53ff' AS TEXT)");
  EXPECT_EQ(Merged({"s", "st"}), "1 added, 0 already there, 0 conflicts\n");
  EXPECT_EQ(Merged({"s", "st"}), "0 added, 1 already there, 0 conflicts\n");
}

}  // namespace
