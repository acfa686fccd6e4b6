#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentCsv.h"
#include "tool/formats/AlignmentDiff.h"
#include "tool/formats/AlignmentJson.h"

namespace {

Alignment Site(const char* identifier, float tilt = 0) {
  Alignment a = SampleSite();
  a.identifier = QString::fromLatin1(identifier);
  a.measuredTilt = tilt;
  return a;
}

QStringList Identifiers(const std::vector<Alignment>& alignments) {
  QStringList names;
  for (const Alignment& a : alignments) names.append(a.identifier);
  return names;
}

TEST(DiffTest, EqualSetsDoNotDiffer) {
  const AlignmentDiff diff({Site("A"), SamplePath(), Site("B")}, {SamplePath(), Site("B"), Site("A")});
  EXPECT_TRUE(diff.onlyInFirst.empty());
  EXPECT_TRUE(diff.onlyInSecond.empty());
  EXPECT_TRUE(diff.changed.empty());
}

TEST(DiffTest, WhatStandsOnOneSide) {
  const AlignmentDiff diff({Site("B"), Site("A"), Site("C")}, {Site("B"), Site("D")});
  EXPECT_EQ(Identifiers(diff.onlyInFirst), (QStringList{"A", "C"}));
  EXPECT_EQ(Identifiers(diff.onlyInSecond), QStringList{"D"});
  EXPECT_TRUE(diff.changed.empty());
}

TEST(DiffTest, WhatDiffers) {
  Alignment other = Site("A", 1);
  other.note = QStringLiteral("other");
  const AlignmentDiff diff({Site("A")}, {other});
  ASSERT_EQ(diff.changed.size(), 1U);
  EXPECT_EQ(diff.changed[0].fields, (QStringList{"measured.tilt", "options.note"}));
  EXPECT_TRUE(diff.onlyInFirst.empty());
  EXPECT_TRUE(diff.onlyInSecond.empty());
}

TEST(DiffTest, EachOfTheMatchedFieldsTellsApart) {
  for (int field = 0; field < 5; ++field) {
    Alignment other = SampleSite();
    if (field == 0) other.kind = Kind::Path;
    if (field == 1) other.identifier.clear();
    if (field == 2) other.sector.clear();
    if (field == 3) other.position.clear();
    if (field == 4) other.time = other.time.addSecs(1);
    const AlignmentDiff diff({SampleSite()}, {other});
    EXPECT_EQ(diff.onlyInFirst.size(), 1U) << field;
    EXPECT_EQ(diff.onlyInSecond.size(), 1U) << field;
  }
}

TEST(DiffTest, OfSeveralThatMatchEqualOnesGoFirst) {
  const AlignmentDiff diff({Site("A", 1), Site("A", 2), Site("A", 3)}, {Site("A", 3), Site("A", 4)});
  ASSERT_EQ(diff.changed.size(), 1U);
  EXPECT_EQ(diff.changed[0].first.measuredTilt, 1);
  EXPECT_EQ(diff.changed[0].second.measuredTilt, 4);
  ASSERT_EQ(diff.onlyInFirst.size(), 1U);
  EXPECT_EQ(diff.onlyInFirst[0].measuredTilt, 2);
}

TEST(DiffTest, OfDoubledOnesAsManyAreLeftAsThereAreMore) {
  const AlignmentDiff diff({Site("A"), Site("A"), Site("A"), Site("B")}, {Site("A"), Site("B"), Site("B")});
  EXPECT_EQ(Identifiers(diff.onlyInFirst), (QStringList{"A", "A"}));
  EXPECT_EQ(Identifiers(diff.onlyInSecond), QStringList{"B"});
  EXPECT_TRUE(diff.changed.empty());
}

// Comparing each with each would take for ever here.
TEST(DiffTest, ManyOfOneMomentAreMatchedInProportion) {
  constexpr int count = 50'000;
  std::vector<Alignment> first;
  for (int number = 0; number < count; ++number) first.push_back(Site("A", static_cast<float>(number)));
  std::vector<Alignment> second(first.rbegin(), first.rend());
  second.back().measuredTilt = -1;
  const AlignmentDiff diff(first, second);
  ASSERT_EQ(diff.changed.size(), 1U);
  EXPECT_EQ(diff.changed[0].first.measuredTilt, 0);
  EXPECT_EQ(diff.changed[0].second.measuredTilt, -1);
  EXPECT_TRUE(diff.onlyInFirst.empty());
  EXPECT_TRUE(diff.onlyInSecond.empty());
}

TEST(DiffTest, Json) {
  Written written;
  WriteDiffJson(AlignmentDiff({Site("A"), Site("B")}, {Site("B", 1), Site("C"), Site("D")}), written.Sink());
  EXPECT_TRUE(written.Text().endsWith('\n'));
  QJsonParseError error{};
  const QJsonObject object = QJsonDocument::fromJson(written.Text(), &error).object();
  EXPECT_EQ(error.error, QJsonParseError::NoError);
  const auto exported = [](const Alignment& alignment) {
    return AlignmentJson::ToObject(alignment, AlignmentJson::Uid::With);
  };
  EXPECT_EQ(object,
            (QJsonObject{{"onlyInFirst", QJsonArray{exported(Site("A"))}},
                         {"onlyInSecond", QJsonArray{exported(Site("C")), exported(Site("D"))}},
                         {"changed", QJsonArray{QJsonObject{{"first", exported(Site("B"))},
                                                            {"second", exported(Site("B", 1))},
                                                            {"fields", QJsonArray{"measured.tilt"}}}}}}));
}

// The lines of an export, each after the side that it stands on.
TEST(DiffTest, Csv) {
  Written written;
  WriteDiffCsv(AlignmentDiff({Site("A"), Site("B")}, {Site("B", 1), Site("C")}), CsvForm(), written.Sink());
  Written exported;
  AlignmentCsvWriter writer(exported.Sink(), CsvForm(), AlignmentColumns::OfExport());
  writer.Write(ReportsOf({Site("A"), Site("C"), Site("B"), Site("B", 1)}));
  writer.End();
  // The notes have a line feed each.
  const QByteArrayList lines = exported.Text().split('\r');
  ASSERT_EQ(lines.size(), 6);
  QByteArray expected = "side," + lines[0];
  int number = 0;
  for (const char* side : {"first", "second", "changed.first", "changed.second"}) {
    expected += QByteArray("\r\n") + side + ',' + lines[++number].mid(1);
  }
  EXPECT_EQ(written.Text(), expected + "\r\n");
}

TEST(DiffTest, Table) {
  Written written;
  Alignment path = SamplePath();
  path.identifier = QStringLiteral("P\x1b");
  WriteDiffTable(AlignmentDiff({Site("A"), Site("B")}, {Site("B", 1.5F), path}), written.Sink());
  EXPECT_EQ(written.Text(),
            "- site A, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"
            "+ path P\\x1b, 2024-05-14T07:12:33Z\n"
            "~ site B, sector Alpha, position Høyt, 2024-05-14T07:12:33Z\n"
            "    measured.tilt: 0 -> 1.5\n");
}

}  // namespace
