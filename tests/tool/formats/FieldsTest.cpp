#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/AlignmentFields.h"

namespace {

TEST(FieldsTest, NumbersHaveTheFewestDigitsThatReadBack) {
  EXPECT_EQ(Decimal(0.1F), "0.1");
  EXPECT_EQ(Decimal(0.1), "0.1");
  EXPECT_EQ(Decimal(0.1 + 0.2), "0.30000000000000004");
  EXPECT_EQ(Decimal(299.999969482421875F), "299.99997");
  EXPECT_EQ(Decimal(-1.5F), "-1.5");
  EXPECT_EQ(Decimal(-0.0F), "0");
  EXPECT_EQ(Decimal(-0.0), "0");
  EXPECT_EQ(Decimal(1e15), "1000000000000000");
  EXPECT_EQ(Decimal(1e-7), "0.0000001");
  EXPECT_EQ(Decimal(std::numeric_limits<double>::max()).size(), 309);
}

TEST(FieldsTest, DifferingFieldsAreNamed) {
  EXPECT_EQ(DifferingFields(SampleSite(), SampleSite()), QStringList());
  Alignment other = SampleSite();
  other.key = 99;
  other.azimuthDeviation = 99;
  EXPECT_EQ(DifferingFields(SampleSite(), other), QStringList());
  other.note = QStringLiteral("other");
  other.measuredTilt = 1;
  other.heightSource = HeightSource::Manual;
  other.rollThreshold = 1;
  EXPECT_EQ(DifferingFields(SampleSite(), other),
            (QStringList{"measured.tilt", "height.source", "options.note", "options.thresholds.roll"}));
  other = SampleSite();
  // Only paths have it.
  other.farLatitude = 1;
  other.pathLengthThreshold = 1;
  EXPECT_EQ(DifferingFields(SampleSite(), other), QStringList());
}

TEST(FieldsTest, NumbersThatAreNoneAreNamed) {
  EXPECT_EQ(NotFinite(SamplePath()), "");
  Alignment a = SamplePath();
  a.farLatitude = std::nan("");
  EXPECT_EQ(NotFinite(a), "farEnd.latitude");
  a = SamplePath();
  a.tiltThreshold = -std::numeric_limits<float>::infinity();
  EXPECT_EQ(NotFinite(a), "options.thresholds.tilt");
}

TEST(FieldsTest, VerdictsTogether) {
  const auto together = [](float azimuth, float tilt, float roll) {
    Alignment a;
    a.azimuthDeviation = -1;
    a.tiltDeviation = 1;
    a.rollDeviation = 1;
    a.azimuthThreshold = azimuth;
    a.tiltThreshold = tilt;
    a.rollThreshold = roll;
    return VerdictOf(a);
  };
  EXPECT_EQ(together(0, 0, 0), Verdict::None);
  EXPECT_EQ(together(0, 1, 0), Verdict::Pass);
  EXPECT_EQ(together(1, 2, 3), Verdict::Pass);
  EXPECT_EQ(together(0.5F, 1, 1), Verdict::Fail);
  EXPECT_EQ(together(1, 0, 0.5F), Verdict::Fail);
}

TEST(FieldsTest, RollDoesNotCountOnAPath) {
  Alignment a = SamplePath();
  a.tiltThreshold = 1;
  a.rollDeviation = 9;
  a.rollThreshold = 1;
  EXPECT_EQ(VerdictOf(a), Verdict::Pass);
  EXPECT_EQ(Judge(a).size(), 2U);
}

}  // namespace
