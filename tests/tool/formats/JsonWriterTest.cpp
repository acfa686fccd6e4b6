#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <limits>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/Console.h"
#include "tool/formats/AlignmentJson.h"

namespace {

QJsonObject Parsed(const char* text) { return QJsonDocument::fromJson(text).object(); }

TEST(JsonWriterTest, Site) {
  EXPECT_EQ(AlignmentJson::ToObject(SampleSite(), AlignmentJson::Uid::Without), Parsed(R"({
    "kind": "site", "identifier": "Åsgård", "sector": "Alpha", "position": "Høyt",
    "time": "2024-05-14T07:12:33Z",
    "target": {"azimuth": 0.5, "tilt": -2.25, "roll": 0.125},
    "measured": {"azimuth": 359.75, "tilt": -2.1, "roll": 0.375},
    "location": {"latitude": 59.318742, "longitude": 10.477905, "elevation": 38.4},
    "height": {"value": 31.5, "source": "gps"},
    "options": {"azimuthOffset": 90, "tiltInversion": true, "rollPrecision": 2,
                "note": "Grüße, \"Ole\"\nline 2", "thresholds": {"azimuth": 1.5, "tilt": 0.125, "roll": 0}},
    "judgement": {"azimuth": {"deviation": -0.75, "threshold": 1.5, "verdict": "pass"},
                  "tilt": {"deviation": 0.15, "threshold": 0.125, "verdict": "fail"},
                  "roll": {"deviation": 0.25, "threshold": 0, "verdict": "none"}},
    "verdict": "fail"})"));
}

TEST(JsonWriterTest, Path) {
  EXPECT_EQ(AlignmentJson::ToObject(SamplePath(), AlignmentJson::Uid::With), Parsed(R"({
    "kind": "path", "identifier": "Żuławy",
    "time": "2024-05-14T07:12:33Z",
    "target": {"azimuth": 0.5, "tilt": -2.25, "roll": 0.125},
    "measured": {"azimuth": 359.75, "tilt": -2.1, "roll": 0.375},
    "location": {"latitude": 59.318742, "longitude": 10.477905, "elevation": 38.4},
    "farEnd": {"latitude": 54.152287, "longitude": 19.408831, "elevation": 27.75},
    "height": {"value": 31.5, "source": "gps"},
    "options": {"azimuthOffset": 90, "tiltInversion": true,
                "note": "Grüße, \"Ole\"\nline 2",
                "thresholds": {"azimuth": 1.5, "tilt": 0.125, "pathLength": 1000.5}},
    "judgement": {"azimuth": {"deviation": -0.75, "threshold": 1.5, "verdict": "pass"},
                  "tilt": {"deviation": 0.15, "threshold": 0.125, "verdict": "fail"}},
    "verdict": "fail",
    "uid": "a65bc655-f8ab-55a9-a10f-f6a63d8810c3"})"));
}

TEST(JsonWriterTest, AHeightSourceWithoutNameIsANumber) {
  Alignment a = SampleSite();
  a.heightSource = static_cast<HeightSource>(9);
  const QJsonObject object = AlignmentJson::ToObject(a, AlignmentJson::Uid::Without);
  EXPECT_EQ(object["height"].toObject()["source"], 9);
}

TEST(JsonWriterTest, NumbersThatAreNoneAreRefused) {
  Alignment a = SampleSite();
  a.identifier = QStringLiteral("S\x1b[2J");
  a.height = std::numeric_limits<double>::infinity();
  try {
    AlignmentJson::ToObject(a, AlignmentJson::Uid::Without);
    ADD_FAILURE();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "site S\\x1b[2J: height.value is no number that JSON can hold");
  }
}

TEST(JsonWriterTest, AnArrayIsWrittenAsQtWritesItWhole) {
  for (int count : {0, 1, 3}) {
    Written written;
    AlignmentJsonWriter writer(written.Sink(), AlignmentJson::Uid::With);
    QJsonArray whole;
    for (int number = 0; number < count; ++number) {
      writer.Write(ReportsOf({SampleSite()}));
      whole.append(AlignmentJson::ToObject(SampleSite(), AlignmentJson::Uid::With));
    }
    writer.End();
    EXPECT_EQ(written.Text(), QJsonDocument(whole).toJson());
  }
}

TEST(JsonWriterTest, OneObjectALine) {
  Written written;
  AlignmentLinesWriter writer(written.Sink(), AlignmentJson::Uid::With);
  writer.Write(ReportsOf({SampleSite(), SampleSite()}));
  writer.End();
  const QByteArrayList lines = written.Text().split('\n');
  ASSERT_EQ(lines.size(), 3);
  EXPECT_EQ(lines.at(2), "");
  for (int number : {0, 1}) {
    EXPECT_EQ(QJsonDocument::fromJson(lines.at(number)).object(),
              AlignmentJson::ToObject(SampleSite(), AlignmentJson::Uid::With));
  }
}

}  // namespace
