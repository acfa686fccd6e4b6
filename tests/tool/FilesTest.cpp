// Making the two files, telling right ones from wrong ones, listing, preferences.
#include "model/PreferencesModel.h"
#include "store/AllStores.h"
#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <memory>

namespace {

using FilesTest = ToolTest;

TEST_F(FilesTest, CreateMakesBothFiles) {
  CreateFiles();
  EXPECT_EQ(FilesInFolder(), (QStringList{"m", "t"}));
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
  EXPECT_EQ(Rows(Path("t"), "SELECT count(*) FROM sqlite_master WHERE name LIKE '%Thresholds'"),
            QStringList{"2"});
}

TEST_F(FilesTest, CreateMakesTheMissingFileAlone) {
  CreateFilesWith({SiteEntry()});
  const QByteArray content = ReadFile("m");
  QFile::remove(Path("t"));
  EXPECT_EQ(RunWell({"create", "m", "t"}), "created t\n");
  EXPECT_EQ(ReadFile("m"), content);
  QFile::remove(Path("m"));
  EXPECT_EQ(RunWell({"create", "m", "t"}), "created m\n");
  EXPECT_EQ(RunWell({"list", "m", "t"}), "kind  reports  identifier\n");
}

TEST_F(FilesTest, CreateRefuses) {
  ExpectFailure({"create", "f", "f"}, "f: cannot be main and thresholds file at once");
  ExpectFailure({"create", "no/m", "t"}, "no/m: No such file or directory");
  EXPECT_EQ(FilesInFolder(), QStringList());
  ExpectFailure({"create", "m", "no/t"}, "no/t: No such file or directory");
  EXPECT_EQ(FilesInFolder(), QStringList());
  CreateFiles();
  ExpectFailure({"create", "m", "t"}, "m and t exist already");
  ExpectFailure({"create", "m", "m"}, "m: cannot be main and thresholds file at once");
  ExpectFailure({"create", "new", "m"}, "m: is no thresholds file", 4);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 3");
  ExpectFailure({"create", "m", "new"}, "m: exists and is of version 3, not 7");
  EXPECT_EQ(FilesInFolder(), (QStringList{"m", "t"}));
}

TEST_F(FilesTest, FilesThatAreNotWhatTheyHaveToBe) {
  CreateFiles();
  WriteFile("text", "SQLite format 4, or so one would think");
  WriteFile("empty", "");
  ExpectFailure({"list", "none", "t"}, "none: no such file");
  ExpectFailure({"list", "m", "none"}, "none: no such file");
  ExpectFailure({"list", ".", "t"}, ".: is not a file");
  ExpectFailure({"list", "text", "t"}, "text: is no database", 4);
  ExpectFailure({"list", "m", "empty"}, "empty: is no database", 4);
  ExpectFailure({"list", "m", "./m"}, "m: cannot be main and thresholds file at once");
  ExpectFailure({"list", "t", "m"}, "t: carries no version, so it is no main file of alignments", 4);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 8");
  ExpectFailure({"list", "m", "t"}, "m: is of version 8, newer than this program knows (7)", 4);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 6");
  ExpectFailure({"list", "m", "t"},
                "m: is of version 6, which has no thresholds file: leave THRESHOLDS out" + hint, 2);
  WriteJson("in.json", {SiteEntry("S")});
  ExpectFailure({"import", "m", "t", "in.json"},
                "m: is of version 6; 'tarnbeam-db migrate' brings it to version 7");
  QFile::remove(Path("in.json"));
  EXPECT_EQ(FilesInFolder(), (QStringList{"empty", "m", "t", "text"}));
}

TEST_F(FilesTest, ThresholdsBelongToTheCurrentVersion) {
  CreateFiles();
  for (const QStringList& words :
       {QStringList{"list", "m"}, QStringList{"export", "m"}, QStringList{"preferences", "m"},
        QStringList{"report", "m", "--all"}, QStringList{"map", "m", "--format", "kml"}}) {
    ExpectFailure(words, "m: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  }
}

TEST_F(FilesTest, VersionOfFiles) {
  CreateFiles();
  EXPECT_EQ(RunWell({"version", "m"}), "7\n");
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 4");
  EXPECT_EQ(RunWell({"version", "m"}), "4\n");
  EXPECT_EQ(QJsonDocument::fromJson(RunWell({"version", "m", "--format", "json"}).toUtf8()).object(),
            (QJsonObject{{"version", 4}, {"current", false}}));
  ExpectFailure({"version", "none"}, "none: no such file");
  EXPECT_EQ(FilesInFolder(), (QStringList{"m", "t"}));
}

TEST_F(FilesTest, ListCountsReports) {
  CreateFilesWith({SiteEntry("B"), PathEntry(), SiteEntry("A", "1"), SiteEntry("A", "2"), PathEntry("P\tQ")});
  EXPECT_EQ(RunWell({"list", "m", "t"}), QString("kind  reports  identifier\n"
                                                 "site        1  B\n"
                                                 "site        2  A\n"
                                                 "path        1  Żuławy\n"
                                                 "path        1  P\\tQ\n"));
}

TEST_F(FilesTest, ReadingThatFailsIsNoEmptyAnswer) {
  CreateFilesWith({SiteEntry("A")});
  RunSql(Path("m"), "ALTER TABLE Height RENAME TO Gone");
  ExpectFailure({"list", "m", "t"}, "m: has no table Height" + tellsMore, 4);
}

// Each retrieval of a path leaves connections open in the library.
TEST_F(FilesTest, ManyPathsNeedFewOpenFiles) {
  QJsonArray entries;
  constexpr int wholeCount = 20;
  for (int number = 0; number < wholeCount; ++number) entries.append(PathEntry(QString::number(number)));
  CreateFilesWith(entries);
  for (const char* command : {"list", "export"}) {
    const Outcome outcome = RunInShell("ulimit -n 24 && exec \"$0\" \"$@\"", {command, "m", "t"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, RunWell({command, "m", "t"}));
  }
  EXPECT_EQ(RunWell({"list", "m", "t"}).count("\npath        1  "), wholeCount);
}

// Wherever the last one is gone, the run comes to its end and takes its private copies with it. A limit of
// the shell would not do: the sanitizers need descriptors themselves.
TEST_F(FilesTest, TooFewOpenFilesAreAFailure) {
  CreateFilesWith({SiteEntry("S")});
  ASSERT_TRUE(QDir(Folder()).mkdir("tmp"));
  const QStringList words{"list", Path("m"), Path("t")};
  const QString right = RunWell(words);
  int failed = 0;
  for (int number = 1;; ++number) {
    SCOPED_TRACE(number);
    const Outcome outcome =
        RunFailing(words, "open", Folder(), number, {{"TMPDIR", Path("tmp")}, {"FAILING_LASTS", "1"}});
    EXPECT_EQ(QDir(Path("tmp")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    if (!HasFailed()) break;
    failed += outcome.status != 0 ? 1 : 0;
    if (outcome.status == 0) {
      EXPECT_EQ(outcome.out, right);
    } else {
      EXPECT_NE(outcome.err, "");
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(failed, 0);
}

// The golden files all hold the same sites and paths.
TEST_F(FilesTest, FilesOfEarlierVersionsAreReadAsTheyAre) {
  for (int version = 1; version <= 6; ++version) {
    SCOPED_TRACE(version);
    const QString name = QString("v%1").arg(version);
    LoadEarlier(name, version);
    const QByteArray before = ReadFile(name);
    EXPECT_EQ(RunWell({"list", name}), QString("kind  reports  identifier\n"
                                               "site        3  Zürich Höhe\n"
                                               "site        1  O'Brien \"Hill\"\n"
                                               "site        1  Łódź 北\n"
                                               "site        0  Site without alignments\n"
                                               "path        2  Trasse Süd–Nord\n"
                                               "path        0  Path without alignments\n"
                                               "path        1  Θ'path\"\n"
                                               "path        0  Another path without alignments\n"));
    EXPECT_EQ(QJsonDocument::fromJson(RunWell({"export", name}).toUtf8()).array().size(), 3 + 1 + 1 + 2 + 1);
    // As many as the version has columns, except the language.
    constexpr int shown[] = {25, 29, 31, 31, 32, 33};
    EXPECT_EQ(RunWell({"preferences", name}).count('\n'), shown[version - 1]);
    EXPECT_EQ(ReadFile(name), before);
  }
}

TEST_F(FilesTest, Preferences) {
  CreateFiles();
  EXPECT_EQ(RunWell({"preferences", "m", "t"}), "no preferences are stored\n");
  PreferencesModel model;
  model.DistanceUnits()->AssignValueWithKey(1);
  model.TimeZone()->AssignValueWithKey(21);
  model.AzimuthThreshold()->SetValue(0.1);
  model.PathLengthThreshold()->SetValue(1250.5);
  model.CalibrationDate()->SetValue(QString("2024-05-14 Zürich"));
  model.SerialNumber()->SetValue(-17);
  model.ShowTarget()->SetValue(false);
  const std::unique_ptr<CurrentStore> store(CurrentStore::Open(Path("m"), Path("t")));
  ASSERT_TRUE(store->SavePreferences(&model));
  const QStringList lines = RunWell({"preferences", "m", "t"}).split('\n');
  // 35 stored columns except the language, which no model has, and two of the path length.
  EXPECT_EQ(lines.size(), 35 - 1 + 2 + 1);
  for (const char* line :
       {"DistanceUnits               Feet (1)", "TimeZone                    UTC+9 (21)",
        "AzimuthThreshold            0.1 °", "PathLengthThreshold         1250.5",
        "CalibrationDate             2024-05-14 Zürich", "SerialNumber                -17",
        "ShowTarget                  off", "AzimuthOffset               (stored, but not read back)"}) {
    EXPECT_TRUE(lines.contains(line)) << line;
  }
  const QJsonObject json =
      QJsonDocument::fromJson(RunWell({"preferences", "m", "t", "--format", "json"}).toUtf8()).object();
  QStringList columns;
  for (const QString& column :
       Rows(Path("m"), "SELECT name FROM pragma_table_info('Preferences')") +
           Rows(Path("t"), "SELECT name FROM pragma_table_info('PreferencesPathLength')"))
    columns.append(column.mid(1).chopped(1));
  columns.sort();
  EXPECT_EQ(json.keys(), columns);
  EXPECT_EQ(json["DistanceUnits"].toObject(), (QJsonObject{{"value", 1}, {"name", "Feet"}}));
  EXPECT_EQ(json["AzimuthThreshold"].toObject(), (QJsonObject{{"value", 0.1}}));
  EXPECT_EQ(json["CalibrationDate"].toObject(), (QJsonObject{{"value", "2024-05-14 Zürich"}}));
  EXPECT_EQ(json["PathLengthThreshold"].toObject(), (QJsonObject{{"value", 1250.5}}));
  // What this program has no name for, and what no instrument of this version can keep.
  RunSql(Path("m"), "UPDATE Preferences SET DistanceUnits = 99, SerialNumber = 99999999999");
  const QStringList others = RunWell({"preferences", "m", "t"}).split('\n');
  EXPECT_TRUE(others.contains("DistanceUnits               unknown (99)")) << others.first().toStdString();
  EXPECT_TRUE(others.contains("SerialNumber                99999999999"));
  RunSql(Path("m"), "UPDATE Preferences SET AzimuthThreshold = 9e999");
  for (const char* format : {"table", "json"}) {
    ExpectFailure({"preferences", "m", "t", "--format", format},
                  "m: row 1 of Preferences holds what is no finite number" + tellsMore, 4);
  }
  RunSql(Path("m"), "DROP TABLE Preferences");
  ExpectFailure({"preferences", "m", "t"}, "m: has no table Preferences" + tellsMore, 4);
}

}  // namespace
