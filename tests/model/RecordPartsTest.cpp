#include <gtest/gtest.h>

#include <cmath>

#include "model/AntennaAlignmentReportData.h"
#include "model/PathAlignmentReportData.h"
#include "tests/support/SampleAlignments.h"

namespace {

constexpr int none = -1;

/// Null in place of the part that is to be missing.
template <typename Part>
Part* Unless(int missing, int number, Part* part) {
  return missing == number ? nullptr : part;
}

/// Which parts of a record are missing, by number, and whether its angles can still be compared.
void Expect(const IAlignmentReportData& record, int missing, bool hasBothOrientations) {
  EXPECT_EQ(record.IsValid(), missing == none) << "without part " << missing;
  for (const float error :
       {record.AzimuthErrorDegrees(), record.TiltErrorDegrees(), record.RollErrorDegrees()}) {
    EXPECT_EQ(std::isnan(error), !hasBothOrientations) << "without part " << missing;
  }
}

// The site holds the target orientation.
TEST(RecordPartsTest, ASiteRecordNeedsAllFive) {
  SampleSiteAlignment sample(1);
  for (int missing = none; missing < 5; ++missing) {
    const AntennaAlignmentReportData record(
        1, Unless(missing, 0, &sample.site), Unless(missing, 1, &sample.location),
        Unless(missing, 2, &sample.measured), Unless(missing, 3, &sample.height), sample.time,
        Unless(missing, 4, &sample.options));
    Expect(record, missing, missing != 0 && missing != 2);
  }
}

TEST(RecordPartsTest, APathRecordNeedsAllSix) {
  SamplePathAlignment sample(1);
  for (int missing = none; missing < 6; ++missing) {
    const PathAlignmentReportData record(
        1, Unless(missing, 0, &sample.path), Unless(missing, 1, &sample.location),
        Unless(missing, 2, &sample.measured), Unless(missing, 3, &sample.height),
        Unless(missing, 4, &sample.target), sample.time, Unless(missing, 5, &sample.options));
    Expect(record, missing, missing != 2 && missing != 4);
  }
}

}  // namespace
