#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentUid.h"

namespace {

// Each computed by Python's uuid.uuid5 over the texts of the fields.
TEST(UidTest, KnownAnswers) {
  EXPECT_EQ(AlignmentUid(SampleSite()), "c163bdf6-cf0e-5dd7-9621-a895268ce423");
  EXPECT_EQ(AlignmentUid(SamplePath()), "a65bc655-f8ab-55a9-a10f-f6a63d8810c3");
  Alignment a;
  a.identifier = QStringLiteral("S");
  a.time = Moment("1970-01-01T00:00:00Z");
  EXPECT_EQ(AlignmentUid(a), "e217565c-8e58-5f82-b77e-871111c7c61b");
}

TEST(UidTest, NoteThresholdsKeyAndJudgementDoNotCount) {
  Alignment a = SampleSite();
  a.note.clear();
  a.azimuthThreshold = a.tiltThreshold = a.rollThreshold = a.pathLengthThreshold = 9;
  a.key = 1;
  a.index = 1;
  a.azimuthDeviation = a.tiltDeviation = a.rollDeviation = 9;
  EXPECT_EQ(AlignmentUid(a), AlignmentUid(SampleSite()));
}

TEST(UidTest, WhatAKindDoesNotHaveDoesNotCount) {
  Alignment a = SampleSite();
  a.farLatitude = 1;
  EXPECT_EQ(AlignmentUid(a), AlignmentUid(SampleSite()));
  a = SamplePath();
  a.sector = a.position = QStringLiteral("ZZZ");
  a.rollPrecision = 1;
  EXPECT_EQ(AlignmentUid(a), AlignmentUid(SamplePath()));
}

TEST(UidTest, TheOffsetOfTheTimeDoesNotCount) {
  Alignment a = SampleSite();
  a.time = a.time.toOffsetFromUtc(7200);
  EXPECT_EQ(AlignmentUid(a), AlignmentUid(SampleSite()));
}

template <typename Value>
bool Counts(Value Alignment::*member, const Value& value) {
  Alignment a = SamplePath();
  a.*member = value;
  Alignment b = SampleSite();
  b.*member = value;
  return AlignmentUid(a) != AlignmentUid(SamplePath()) || AlignmentUid(b) != AlignmentUid(SampleSite());
}

TEST(UidTest, EverythingElseCounts) {
  using A = Alignment;
  EXPECT_TRUE(Counts(&A::kind, Kind::Site));
  for (auto member : {&A::identifier, &A::sector, &A::position})
    EXPECT_TRUE(Counts(member, QString("other")));
  EXPECT_TRUE(Counts(&A::time, Moment("2024-05-14T07:12:34Z")));
  for (auto member : {&A::targetAzimuth, &A::targetTilt, &A::targetRoll, &A::measuredAzimuth,
                      &A::measuredTilt, &A::measuredRoll, &A::azimuthOffset}) {
    EXPECT_TRUE(Counts(member, 9.0F));
  }
  for (auto member : {&A::latitude, &A::longitude, &A::elevation, &A::farLatitude, &A::farLongitude,
                      &A::farElevation, &A::height}) {
    EXPECT_TRUE(Counts(member, 9.0));
  }
  EXPECT_TRUE(Counts(&A::heightSource, HeightSource::Manual));
  EXPECT_TRUE(Counts(&A::tiltInversion, false));
  EXPECT_TRUE(Counts(&A::rollPrecision, 1));
}

TEST(UidTest, TextsDoNotRunIntoEachOther) {
  Alignment a = SampleSite();
  Alignment b = SampleSite();
  a.sector = QStringLiteral("A");
  a.position = QStringLiteral("1:B,");
  b.sector = QStringLiteral("A,1:B");
  b.position = QString();
  EXPECT_NE(AlignmentUid(a), AlignmentUid(b));
}

}  // namespace
