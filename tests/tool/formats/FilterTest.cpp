#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentFilter.h"

namespace {

Alignment Measured(int index, const char* sector, const char* position, const char* time,
                   float deviation = 0) {
  Alignment a = SampleSite();
  a.index = index;
  a.sector = QString::fromLatin1(sector);
  a.position = QString::fromLatin1(position);
  a.time = Moment(time);
  a.azimuthDeviation = deviation;
  a.tiltDeviation = 0;
  return a;
}

std::vector<int> Indices(const AlignmentFilter& filter, const std::vector<Alignment>& alignments) {
  std::vector<int> indices;
  for (const Alignment& a : filter.Apply(alignments)) indices.push_back(a.index);
  return indices;
}

const std::vector<Alignment>& Alignments() {
  static const std::vector<Alignment> all = {
      Measured(0, "A", "top", "2024-05-14T23:59:59Z", 9), Measured(1, "A", "top", "2024-05-15T00:00:00Z"),
      Measured(2, "A", "low", "2024-05-14T12:00:00Z", 9), Measured(3, "B", "top", "2024-05-16T00:00:00Z", 9),
      Measured(4, "B", "top", "2024-05-15T23:59:59Z")};
  return all;
}

TEST(FilterTest, NothingAskedForIsEverything) {
  EXPECT_EQ(Indices({}, Alignments()), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(FilterTest, SinceIsInclusiveAndUntilExclusive) {
  AlignmentFilter filter;
  filter.since = Moment("2024-05-15T00:00:00Z");
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{1, 3, 4}));
  filter.until = Moment("2024-05-16T00:00:00Z");
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{1, 4}));
}

TEST(FilterTest, PathsHaveNoSector) {
  AlignmentFilter filter;
  filter.sector = QStringLiteral("A");
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{0, 1, 2}));
  filter.sector = QString();
  EXPECT_TRUE(filter.Apply({SamplePath()}).empty());
}

TEST(FilterTest, LatestIsOfWhatIsLeftAndFailedOfTheLatest) {
  AlignmentFilter filter;
  filter.latest = true;
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{1, 2, 3}));
  filter.failed = true;
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{2, 3}));
  filter.until = Moment("2024-05-15T00:00:00Z");
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{0, 2}));
  filter.latest = false;
  filter.until.reset();
  EXPECT_EQ(Indices(filter, Alignments()), (std::vector<int>{0, 2, 3}));
}

TEST(FilterTest, OfSeveralAtOneTimeTheLastIsTheLatest) {
  AlignmentFilter filter;
  filter.latest = true;
  EXPECT_EQ(Indices(filter, {Measured(0, "A", "top", "2024-05-14T12:00:00Z"),
                             Measured(1, "A", "top", "2024-05-14T12:00:00Z")}),
            std::vector<int>{1});
}

TEST(FilterTest, MomentsAreReadAsUtcUnlessTheyHaveAnOffset) {
  const auto equal = [](const char* text, const char* moment) {
    const std::optional<QDateTime> read = ReadMoment(QString::fromLatin1(text));
    return read && *read == Moment(moment);
  };
  EXPECT_TRUE(equal("2024-05-14", "2024-05-14T00:00:00Z"));
  EXPECT_TRUE(equal("2024-05-14T09:12", "2024-05-14T09:12:00Z"));
  EXPECT_TRUE(equal("2024-05-14 09:12:33", "2024-05-14T09:12:33Z"));
  EXPECT_TRUE(equal("2024-05-14T09:12:33Z", "2024-05-14T09:12:33Z"));
  EXPECT_TRUE(equal("2024-05-14T00:30+02:00", "2024-05-13T22:30:00Z"));
  EXPECT_TRUE(equal("2024-05-14T23:30:00-0130", "2024-05-15T01:00:00Z"));
  EXPECT_EQ(ReadMoment("2024-05-14T09:12:33.250Z")->time().msec(), 250);
}

TEST(FilterTest, ADateAloneIsIncludedInUntil) {
  EXPECT_EQ(ReadMoment("2024-02-28", true), Moment("2024-02-29T00:00:00Z"));
  EXPECT_EQ(ReadMoment("2024-12-31", true), Moment("2025-01-01T00:00:00Z"));
  EXPECT_EQ(ReadMoment("2024-02-28T00:00", true), Moment("2024-02-28T00:00:00Z"));
}

TEST(FilterTest, WhatIsNoMomentIsNone) {
  for (const char* text : {"", "yesterday", "2024", "2024-5-14", "2024-02-30", "2024-05-14T",
                           "2024-05-14T25:00", "2024-05-14T09:12:33+", "2024-05-14Z", "2024-05-14T09",
                           "14.05.2024", "2024-05-14T09:12:60", "2024-05-14 ", "2024-05-14\n"}) {
    EXPECT_FALSE(ReadMoment(QString::fromLatin1(text))) << text;
  }
}

}  // namespace
