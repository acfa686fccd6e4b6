// Formats and filters as options of the commands.
#include <QJsonDocument>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

QJsonArray Parsed(const QString& json) { return QJsonDocument::fromJson(json.toUtf8()).array(); }

// Two antennas of A, of which one was corrected; one of B, which fails; a path.
class FormatsTest : public ToolTest {
 protected:
  void SetUp() override {
    CreateFilesWith(
        {At("A", "north", "2024-05-14T23:59:59Z", 9), At("A", "north", "2024-05-15T00:00:00Z", 0.5),
         At("A", "south", "2024-05-14T12:00:00+02:00", 0.5), At("B", "north", "2024-05-16T00:00:00Z", 9),
         With(With(PathEntry("P"), "time", "2024-05-15T12:00:00Z"), "measured.tilt", -2.25)});
  }

  static QJsonObject At(const char* site, const char* sector, const char* time, double azimuth) {
    const QJsonObject entry = With(With(SiteEntry(site, sector), "time", time), "measured.tilt", -2.25);
    return With(With(entry, "target.azimuth", 0), "measured.azimuth", azimuth);
  }

  // Times of what a command leaves, in the order of the files.
  QStringList Times(const QStringList& options) {
    QStringList times;
    for (const QJsonValue& entry : Parsed(RunWell(QStringList{"export", "m", "t"} + options))) {
      times.append(entry.toObject()["time"].toString().mid(8, 11));
    }
    return times;
  }
};

TEST_F(FormatsTest, Filters) {
  EXPECT_EQ(Times({}).size(), 5);
  EXPECT_EQ(Times({"--since", "2024-05-15"}), (QStringList{"15T00:00:00", "16T00:00:00", "15T12:00:00"}));
  EXPECT_EQ(Times({"--until", "2024-05-14"}), (QStringList{"14T23:59:59", "14T10:00:00"}));
  EXPECT_EQ(Times({"--until", "2024-05-15T00:00"}), (QStringList{"14T23:59:59", "14T10:00:00"}));
  EXPECT_EQ(Times({"--since", "2024-05-15T02:00+02:00", "--until", "2024-05-15"}),
            (QStringList{"15T00:00:00", "15T12:00:00"}));
  EXPECT_EQ(Times({"--sector", "south"}), QStringList{"14T10:00:00"});
  EXPECT_EQ(Times({"--failed"}), (QStringList{"14T23:59:59", "16T00:00:00"}));
  EXPECT_EQ(Times({"--latest", "--failed"}), QStringList{"16T00:00:00"});
  EXPECT_EQ(Times({"--until", "2024-05-14", "--latest", "--failed"}), QStringList{"14T23:59:59"});
  EXPECT_EQ(Times({"--since", "2030-01-01"}), QStringList());
}

TEST_F(FormatsTest, OnlyWhatIsLeftIsListed) {
  EXPECT_EQ(RunWell({"list", "m", "t", "--latest", "--failed"}),
            "kind  reports  identifier\nsite        1  B\n");
  EXPECT_EQ(RunWell({"list", "m", "t", "--since", "2030-01-01", "--format", "json"}), "[\n]\n");
  EXPECT_EQ(RunWell({"report", "m", "t", "--all", "--since", "2030-01-01"}), "");
}

TEST_F(FormatsTest, ListAsJson) {
  EXPECT_EQ(Parsed(RunWell({"list", "m", "t", "--format", "json"})),
            (QJsonArray{QJsonObject{{"kind", "site"},
                                    {"identifier", "A"},
                                    {"reports", 3},
                                    {"lastMeasured", "2024-05-15T00:00:00Z"},
                                    {"verdict", "pass"}},
                        QJsonObject{{"kind", "site"},
                                    {"identifier", "B"},
                                    {"reports", 1},
                                    {"lastMeasured", "2024-05-16T00:00:00Z"},
                                    {"verdict", "fail"}},
                        QJsonObject{{"kind", "path"},
                                    {"identifier", "P"},
                                    {"reports", 1},
                                    {"lastMeasured", "2024-05-15T12:00:00Z"},
                                    {"verdict", "pass"}}}));
}

TEST_F(FormatsTest, TheIndexIsThatOfDeletion) {
  const QString latest =
      RunWell({"report", "m", "t", "--site", "A", "--sector", "north", "--latest", "--format", "csv"});
  const QString line = latest.section("\r\n", 1, 1);
  EXPECT_EQ(line.section(',', 1, 6), QString("2,site,A,north,Høyt,2024-05-15T00:00:00Z"));
  EXPECT_EQ(Run({"delete", "m", "t", "--site", "A", "--index", line.section(',', 0, 0), "--yes"}).status, 0);
  EXPECT_EQ(Rows(Path("m"), "SELECT AntennaAlignmentKey FROM AntennaAlignment"),
            (QStringList{"1", "3", "4"}));
}

TEST_F(FormatsTest, CsvOptions) {
  // Texts are read without the mark that they begin with.
  RunInShell("exec \"$0\" \"$@\" > out", {"list", "m", "t", "--format", "csv", "--separator", ";", "--bom"});
  EXPECT_EQ(ReadFile("out"),
            "\xEF\xBB\xBFkind;identifier;reports;lastMeasured;verdict\r\n"
            "site;A;3;2024-05-15T00:00:00Z;pass\r\nsite;B;1;2024-05-16T00:00:00Z;fail\r\n"
            "path;P;1;2024-05-15T12:00:00Z;pass\r\n");
}

// Spreadsheets are for people, exports for programs.
TEST_F(FormatsTest, TextsLikeFormulasAreGuardedForPeople) {
  WriteJson("in.json", {At("=1+1", "north", "2024-05-14T12:00:00Z", 0.5)});
  RunWell({"import", "m", "t", "in.json"});
  const auto lines = [this](const QStringList& words) {
    return RunWell(words + QStringList{"--format", "csv"}).split("\r\n").filter("=1+1");
  };
  EXPECT_EQ(lines({"list", "m", "t"}), QStringList{"site,'=1+1,1,2024-05-14T12:00:00Z,pass"});
  EXPECT_EQ(lines({"report", "m", "t", "--all"}).value(0).section(',', 0, 5), "0,5,site,'=1+1,north,Høyt");
  EXPECT_EQ(lines({"export", "m", "t"}).value(0).section(',', 0, 4), "5,site,=1+1,north,Høyt");
}

TEST_F(FormatsTest, LinesOfJson) {
  const QStringList lines = RunWell({"export", "m", "t", "--format", "ndjson"}).split('\n');
  const QJsonArray array = Parsed(RunWell({"export", "m", "t"}));
  ASSERT_EQ(array.size(), 5);
  ASSERT_EQ(lines.size(), 6);
  for (int number = 0; number < 5; ++number) {
    EXPECT_EQ(QJsonDocument::fromJson(lines.at(number).toUtf8()).object(), array.at(number).toObject());
  }
  EXPECT_EQ(lines.at(5), "");
}

TEST_F(FormatsTest, Maps) {
  const QJsonObject map =
      QJsonDocument::fromJson(RunWell({"map", "m", "t", "--format", "geojson", "--failed"}).toUtf8())
          .object();
  // The newest that the filters leave: one of A, one of B.
  EXPECT_EQ(map["features"].toArray().size(), 6);
  const QStringList kml{"map", "m", "t", "--format", "kml"};
  EXPECT_EQ(RunWell(kml).count("<Placemark>"), 13);
  EXPECT_EQ(RunWell(kml + QStringList{"--ray", "1000"}), RunWell(kml));
  EXPECT_NE(RunWell(kml + QStringList{"--ray", "1001"}), RunWell(kml));
}

TEST_F(FormatsTest, VersionAndPreferencesAsJson) {
  const auto object = [](const QString& json) { return QJsonDocument::fromJson(json.toUtf8()).object(); };
  EXPECT_EQ(object(RunWell({"version", "m", "--format", "json"})),
            (QJsonObject{{"version", 7}, {"current", true}}));
  EXPECT_EQ(RunWell({"preferences", "m", "t", "--format", "json"}), "{\n}\n");
  RunSql(Path("t"), "INSERT INTO PreferencesPathLength VALUES (1, 0.1)");
  EXPECT_EQ(object(RunWell({"preferences", "m", "t", "--format", "json"})),
            (QJsonObject{{"PathLengthThresholdEnabled", QJsonObject{{"value", 1}}},
                         {"PathLengthThreshold", QJsonObject{{"value", 0.1}}}}));
}

}  // namespace
