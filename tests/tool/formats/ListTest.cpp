#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/formats/ListFormats.h"

namespace {

Reports TwoAntennas(float firstDeviation, float secondDeviation) {
  Alignment first = SampleSite();
  first.tiltThreshold = 0;
  first.azimuthDeviation = firstDeviation;
  Alignment second = first;
  second.position = QStringLiteral("low");
  second.time = Moment("2024-05-14T07:12:34Z");
  second.azimuthDeviation = secondDeviation;
  // The earlier measurement of the second antenna fails.
  Alignment earlier = second;
  earlier.time = Moment("2020-01-01T00:00:00Z");
  earlier.azimuthDeviation = 99;
  return ReportsOf({second, earlier, first});
}

TEST(ListTest, TheNewestOfEachAntennaCount) {
  const ListEntry passing = EntryOf(TwoAntennas(1, 1));
  EXPECT_EQ(passing.reports, 3);
  EXPECT_EQ(passing.lastMeasured, Moment("2024-05-14T07:12:34Z"));
  EXPECT_EQ(passing.verdict, Verdict::Pass);
  EXPECT_EQ(EntryOf(TwoAntennas(2, 1)).verdict, Verdict::Fail);
  EXPECT_EQ(EntryOf(TwoAntennas(1, 2)).verdict, Verdict::Fail);
}

TEST(ListTest, JsonAndCsv) {
  ListEntry entry = EntryOf(TwoAntennas(1, 1));
  entry.identifier = QStringLiteral("=a,b");
  EXPECT_EQ(ListObject(entry), (QJsonObject{{"kind", "site"},
                                            {"identifier", "=a,b"},
                                            {"reports", 3},
                                            {"lastMeasured", "2024-05-14T07:12:34Z"},
                                            {"verdict", "pass"}}));
  const CsvForm form{QLatin1Char(','), true, true};
  EXPECT_EQ(ListCsvHeader(form), "\xEF\xBB\xBFkind,identifier,reports,lastMeasured,verdict\r\n");
  EXPECT_EQ(ListCsvLine(entry, form), "site,\"'=a,b\",3,2024-05-14T07:12:34Z,pass\r\n");
}

TEST(ListTest, WithoutReports) {
  ListEntry entry;
  entry.kind = Kind::Path;
  entry.identifier = QStringLiteral("P");
  EXPECT_EQ(ListObject(entry), (QJsonObject{{"kind", "path"},
                                            {"identifier", "P"},
                                            {"reports", 0},
                                            {"lastMeasured", QJsonValue::Null},
                                            {"verdict", "none"}}));
  EXPECT_EQ(ListCsvLine(entry, CsvForm()), "path,P,0,,none\r\n");
}

}  // namespace
