// How two pairs differ.
#include <QJsonDocument>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

class DiffCommandTest : public ToolTest {
 protected:
  // A second pair, named om and ot.
  void CreateOther(const QJsonArray& entries) {
    EXPECT_EQ(RunWell({"create", "om", "ot"}), "created om\ncreated ot\n");
    WriteJson("other.json", entries);
    RunWell({"import", "om", "ot", "other.json"});
  }
  QString Table() { return RunWell({"diff", "m", "t", "om", "ot"}); }
};

TEST_F(DiffCommandTest, NothingDiffers) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  CreateOther({PathEntry("P"), SiteEntry("S")});
  EXPECT_EQ(Table(), "");
  EXPECT_EQ(RunWell({"diff", "m", "t", "m", "t"}), "");
  EXPECT_EQ(RunWell({"diff", "m", "t", "om", "ot", "--format", "json"}),
            "{\"onlyInFirst\": [\n]\n,\"onlyInSecond\": [\n]\n,\"changed\": [\n]\n}\n");
}

TEST_F(DiffCommandTest, OneLineEach) {
  CreateFilesWith({SiteEntry("S", "1"), PathEntry("gone")});
  CreateOther({SiteEntry("S", "2"), PathEntry("new"), SiteEntry("S", "1"), SiteEntry("a\tb")});
  EXPECT_EQ(Table(), QString("- path gone, 2024-05-14T07:12:33Z\n"
                             "+ site S, sector 2, position Høyt, 2024-05-14T07:12:33Z\n"
                             "+ site a\\tb, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"
                             "+ path new, 2024-05-14T07:12:33Z\n"));
}

struct Change {
  QJsonObject entry;
  const char* field;
  QJsonValue value;
  const char* line;
};

std::vector<Change> Changes() {
  const QJsonObject site = SiteEntry("A");
  const QJsonObject path = PathEntry("A");
  return {{site, "target.azimuth", 1, "target.azimuth: 0.5 -> 1"},
          {site, "target.tilt", 1, "target.tilt: -2.25 -> 1"},
          {path, "target.roll", 1, "target.roll: 0.125 -> 1"},
          {site, "measured.azimuth", 1, "measured.azimuth: 359.75 -> 1"},
          {path, "measured.tilt", 1, "measured.tilt: -2.5 -> 1"},
          {site, "measured.roll", 1, "measured.roll: 0.375 -> 1"},
          {site, "location.latitude", 1, "location.latitude: 59.318742 -> 1"},
          {path, "location.longitude", 1, "location.longitude: 10.477905 -> 1"},
          {site, "location.elevation", 1, "location.elevation: 38.5 -> 1"},
          {path, "farEnd.latitude", 1, "farEnd.latitude: 54.152287 -> 1"},
          {path, "farEnd.longitude", 1, "farEnd.longitude: 19.408831 -> 1"},
          {path, "farEnd.elevation", 1, "farEnd.elevation: 27.75 -> 1"},
          {site, "height.value", 1, "height.value: 31.5 -> 1"},
          {path, "height.source", "manual", "height.source: gps -> manual"},
          {site, "options.azimuthOffset", 1, "options.azimuthOffset: 90 -> 1"},
          {path, "options.tiltInversion", false, "options.tiltInversion: true -> false"},
          {site, "options.rollPrecision", 1, "options.rollPrecision: 2 -> 1"},
          {path, "options.note", "x", "options.note: Grüße, \"Ole\"\\nline 2 -> x"},
          {site, "options.thresholds.azimuth", 1, "options.thresholds.azimuth: 1.5 -> 1"},
          {path, "options.thresholds.tilt", 1, "options.thresholds.tilt: 0.25 -> 1"},
          {site, "options.thresholds.roll", 1, "options.thresholds.roll: 0 -> 1"},
          {path, "options.thresholds.pathLength", -1, "options.thresholds.pathLength: 1000.5 -> -1"}};
}

TEST_F(DiffCommandTest, EachFieldThatDiffersIsNamed) {
  QJsonArray first;
  QJsonArray second;
  QString sites;
  QString paths;
  int number = 100;
  for (const Change& change : Changes()) {
    const QString identifier = QString::number(number++);
    const QJsonObject entry = With(change.entry, "identifier", identifier);
    first.append(entry);
    second.append(With(entry, change.field, change.value));
    const bool isSite = entry["kind"] == "site";
    (isSite ? sites : paths) +=
        (isSite ? QString("~ site %1, sector Alpha, position Høyt, ") : QString("~ path %1, "))
            .arg(identifier) +
        "2024-05-14T07:12:33Z\n    " + change.line + "\n";
  }
  CreateFilesWith(first);
  CreateOther(second);
  EXPECT_EQ(Table(), sites + paths);
}

TEST_F(DiffCommandTest, Json) {
  CreateFilesWith({SiteEntry("S"), PathEntry("gone")});
  CreateOther({With(With(SiteEntry("S"), "measured.tilt", 1), "options.note", ""), PathEntry("new")});
  const auto parse = [](const QString& text) {
    EXPECT_TRUE(text.endsWith("\n"));
    return QJsonDocument::fromJson(text.toUtf8());
  };
  const QJsonObject diff = parse(RunWell({"diff", "m", "t", "om", "ot", "--format", "json"})).object();
  EXPECT_EQ(diff.keys(), (QStringList{"changed", "onlyInFirst", "onlyInSecond"}));
  // Each alignment as export has it.
  const QJsonArray first = parse(RunWell({"export", "m", "t"})).array();
  const QJsonArray second = parse(RunWell({"export", "om", "ot"})).array();
  EXPECT_EQ(diff["onlyInFirst"].toArray(), QJsonArray{first.at(1)});
  EXPECT_EQ(diff["onlyInSecond"].toArray(), QJsonArray{second.at(1)});
  const QJsonObject changed{{"first", first.at(0)},
                            {"second", second.at(0)},
                            {"fields", QJsonArray{"measured.tilt", "options.note"}}};
  EXPECT_EQ(diff["changed"].toArray(), QJsonArray{changed});
}

TEST_F(DiffCommandTest, Csv) {
  CreateFilesWith({SiteEntry("S"), PathEntry("gone")});
  CreateOther({With(SiteEntry("S"), "measured.tilt", 1), PathEntry("new")});
  const QStringList diff = RunWell({"diff", "m", "t", "om", "ot", "--format", "csv"}).split("\r\n");
  const QStringList first = RunWell({"export", "m", "t", "--format", "csv"}).split("\r\n");
  const QStringList second = RunWell({"export", "om", "ot", "--format", "csv"}).split("\r\n");
  EXPECT_EQ(diff, (QStringList{"side," + first.at(0), "first," + first.at(2), "second," + second.at(2),
                               "changed.first," + first.at(1), "changed.second," + second.at(1), ""}));
  EXPECT_EQ(
      RunWell({"diff", "m", "t", "om", "ot", "--format", "csv", "--separator", ";"}).section("\r\n", 0, 0),
      QString("side,").append(first.at(0)).replace(',', ';'));
}

TEST_F(DiffCommandTest, DoubledAlignmentsCountAsOftenAsTheyAreThere) {
  CreateFilesWith({SiteEntry("S"), SiteEntry("S"), SiteEntry("S"), PathEntry("P")});
  CreateOther({SiteEntry("S"), PathEntry("P"), PathEntry("P")});
  EXPECT_EQ(Table(), QString("- site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"
                             "- site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"
                             "+ path P, 2024-05-14T07:12:33Z\n"));
}

TEST_F(DiffCommandTest, VersionsMayDiffer) {
  for (const int version : {3, 4, 6}) LoadEarlier(QString("v%1").arg(version), version);
  EXPECT_EQ(RunWell({"diff", "v4", "v4"}), "");
  // Note and roll precision have no column in version 3, and height sources have other numbers before
  // version 6.
  RunSql(Path("v6"),
         "DELETE FROM PathAlignment; DELETE FROM AntennaAlignment WHERE AntennaAlignmentKey <> 5; UPDATE "
         "AntennaAlignment SET RollPrecision = 3, Note = 'n', TiltInversionEnabled = 0; UPDATE Height SET "
         "HeightType = 3");
  RunSql(Path("v3"),
         "DELETE FROM PathAlignment; DELETE FROM AntennaAlignment WHERE AntennaAlignmentKey <> 5; UPDATE "
         "AntennaAlignment SET TiltInversionEnabled = 0; UPDATE Height SET HeightType = 1");
  EXPECT_EQ(RunWell({"diff", "v3", "v6"}),
            "~ site O'Brien \"Hill\", sector it's sector 1, position C3, 2017-07-14T02:45:05Z\n"
            "    options.rollPrecision: 0 -> 3\n    options.note:  -> n\n");
  CreateFilesWith({SiteEntry("S")});
  EXPECT_EQ(RunWell({"diff", "v3", "m", "t"}),
            QString("- site O'Brien \"Hill\", sector it's sector 1, position C3, 2017-07-14T02:45:05Z\n"
                    "+ site S, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"));
}

TEST_F(DiffCommandTest, WhichFilesBelongTogether) {
  CreateFilesWith({SiteEntry("S")});
  CreateOther({SiteEntry("S")});
  LoadEarlier("v6", 6);
  ExpectFailure({"diff", "m", "t"}, "OTHER_MAIN is missing" + hint, 2);
  ExpectFailure({"diff", "v6", "v6", "m", "t"}, "m is one too many" + hint, 2);
  ExpectFailure({"diff", "t", "m", "v6"},
                "t: is a thresholds file, so its main file has to stand before it" + hint, 2);
  ExpectFailure({"diff", "m", "t", "ot", "om"},
                "ot: is a thresholds file, so its main file has to stand before it" + hint, 2);
  ExpectFailure({"diff", "m", "om", "ot"}, "m: is of version 7, so THRESHOLDS has to be given" + hint, 2);
  ExpectFailure({"diff", "v6", "t", "m"},
                "v6: is of version 6, which has no thresholds file: leave THRESHOLDS out" + hint, 2);
}

TEST_F(DiffCommandTest, WhatCannotBeRead) {
  CreateFilesWith({SiteEntry("S")});
  CreateOther({SiteEntry("S")});
  ExpectFailure({"diff", "m", "t", "none", "ot"}, "none: no such file");
  {
    const Holder holder(Path("om"), "BEGIN EXCLUSIVE");
    ExpectFailure({"diff", "m", "t", "om", "ot", "--wait", "0"}, InUse("om"), 3);
  }
  const QByteArray thresholds = ReadFile("ot");
  RunSql(Path("ot"), "DROP TABLE PathAlignmentThresholds");
  ExpectFailure({"diff", "m", "t", "om", "ot"}, "ot: has no table PathAlignmentThresholds" + tellsMore, 4);
  WriteFile("ot", thresholds);
  RunSql(Path("om"), "DELETE FROM Orientation");
  ExpectFailure({"diff", "m", "t", "om", "ot"},
                "om: 1 alignment without all the rows that belong to it" + tellsMore, 4);
  Overwrite("om", 4096LL * PageOf("om", "Sites"), QByteArray(200, '\x55'));
  ExpectDamaged({"diff", "m", "t", "om", "ot"}, "om");
}

}  // namespace
