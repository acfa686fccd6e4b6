#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/MergePlan.h"

namespace {

void ExpectCounts(const MergePlan& plan, qint64 added, qint64 there, qint64 conflicts) {
  EXPECT_EQ(plan.Added(), added);
  EXPECT_EQ(plan.There(), there);
  EXPECT_EQ(plan.Conflicts(), conflicts);
}

TEST(MergePlanTest, WhatIsThereIsNotAdded) {
  MergePlan plan({ReportsOf({SampleSite()}), ReportsOf({SamplePath()})});
  for (const Alignment& alignment : {SampleSite(), SamplePath()}) {
    const MergePlan::Step step = plan.Take(alignment);
    EXPECT_FALSE(step.isAdded);
    EXPECT_EQ(step.conflict, QStringList());
  }
  ExpectCounts(plan, 0, 2, 0);
}

TEST(MergePlanTest, WhatIsNotThereIsAddedOnce) {
  MergePlan plan({});
  for (const bool isAdded : {true, false}) {
    const MergePlan::Step step = plan.Take(SampleSite());
    EXPECT_EQ(step.isAdded, isAdded);
    EXPECT_EQ(step.conflict, QStringList());
  }
  ExpectCounts(plan, 1, 1, 0);
}

TEST(MergePlanTest, AnotherMeasurementOfOneMomentIsInConflictAndAdded) {
  MergePlan plan({ReportsOf({SampleSite()})});
  Alignment other = SampleSite();
  other.measuredTilt = 1;
  other.note = QStringLiteral("other");
  const MergePlan::Step step = plan.Take(other);
  EXPECT_TRUE(step.isAdded);
  EXPECT_EQ(step.conflict, (QStringList{"measured.tilt", "options.note"}));
  EXPECT_EQ(plan.Take(other).conflict, QStringList());
  ExpectCounts(plan, 1, 1, 1);
}

TEST(MergePlanTest, WhereOneOfFiveDiffersThereIsNoConflict) {
  MergePlan plan({ReportsOf({SampleSite()})});
  for (int field = 0; field < 5; ++field) {
    Alignment other = SampleSite();
    if (field == 0) other.kind = Kind::Path;
    if (field == 1) other.identifier = QStringLiteral("other");
    if (field == 2) other.sector = QStringLiteral("other");
    if (field == 3) other.position = QStringLiteral("other");
    if (field == 4) other.time = other.time.addSecs(1);
    const MergePlan::Step step = plan.Take(other);
    EXPECT_TRUE(step.isAdded) << field;
    EXPECT_EQ(step.conflict, QStringList()) << field;
  }
}

TEST(MergePlanTest, AnotherNoteOrOtherThresholdsAreInConflict) {
  MergePlan plan({ReportsOf({SampleSite()}), ReportsOf({SamplePath()})});
  const auto conflict = [&plan](Alignment alignment, auto member, auto value) {
    alignment.*member = value;
    const MergePlan::Step step = plan.Take(alignment);
    EXPECT_FALSE(step.isAdded);
    return step.conflict;
  };
  using A = Alignment;
  EXPECT_EQ(conflict(SampleSite(), &A::note, QString("other")), QStringList{"options.note"});
  EXPECT_EQ(conflict(SamplePath(), &A::note, QString("other")), QStringList{"options.note"});
  EXPECT_EQ(conflict(SampleSite(), &A::azimuthThreshold, 9.0F), QStringList{"options.thresholds.azimuth"});
  EXPECT_EQ(conflict(SampleSite(), &A::tiltThreshold, 9.0F), QStringList{"options.thresholds.tilt"});
  EXPECT_EQ(conflict(SampleSite(), &A::rollThreshold, 9.0F), QStringList{"options.thresholds.roll"});
  EXPECT_EQ(conflict(SamplePath(), &A::pathLengthThreshold, -1.0F),
            QStringList{"options.thresholds.pathLength"});
  // A value that the kind does not have.
  EXPECT_EQ(conflict(SampleSite(), &A::pathLengthThreshold, -1.0F), QStringList());
  ExpectCounts(plan, 0, 7, 6);
}

TEST(MergePlanTest, WhatIsLikeOneOfSeveralIsInNoConflict) {
  Alignment other = SampleSite();
  other.note = QStringLiteral("other");
  MergePlan plan({ReportsOf({SampleSite(), other})});
  EXPECT_EQ(plan.Take(other).conflict, QStringList());
  EXPECT_EQ(plan.Take(SampleSite()).conflict, QStringList());
  ExpectCounts(plan, 0, 2, 0);
}

// Comparing each with each would take for ever here.
TEST(MergePlanTest, ManyOfOneMomentAreTakenInProportion) {
  constexpr int count = 50'000;
  std::vector<Alignment> there;
  for (int number = 0; number < count; ++number) {
    there.push_back(SampleSite());
    there.back().note = QString::number(number);
  }
  MergePlan plan({ReportsOf(there)});
  for (const Alignment& alignment : there) plan.Take(alignment);
  ExpectCounts(plan, 0, count, 0);
  for (Alignment& alignment : there) {
    alignment.note.append(QStringLiteral("x"));
    plan.Take(alignment);
  }
  ExpectCounts(plan, 0, 2 * count, count);
}

}  // namespace
