// Seconds since 1970 in UTC.
#include <QTimeZone>

#include "tests/core/HelpersTest.h"

namespace {

constexpr unsigned int noTime = 4294967295U;

QDateTime Utc(const char* text) {
  return QDateTime::fromString(QLatin1String(text) + QLatin1Char('Z'), Qt::ISODateWithMs);
}

struct Conversion {
  const char* name;
  QDateTime time;
  unsigned int seconds;
};

void PrintTo(const Conversion& conversion, std::ostream* out) { *out << conversion.name; }

std::string ConversionName(const testing::TestParamInfo<Conversion>& info) { return info.param.name; }

class ToSecondsTest : public HelpersTest, public testing::WithParamInterface<Conversion> {};

TEST_P(ToSecondsTest, ConvertsAndLeavesItsArgument) {
  QDateTime time = GetParam().time;
  EXPECT_EQ(Call(&Operations::QDateToUnixUtc, time), GetParam().seconds);
  EXPECT_EQ(time, GetParam().time);
  EXPECT_EQ(time.timeSpec(), GetParam().time.timeSpec());
}

class RoundTripTest : public HelpersTest, public testing::WithParamInterface<Conversion> {};

TEST_P(RoundTripTest, ComesBackAsTheSameSecondInLocalTime) {
  const QDateTime back = Call(&Operations::UnixUtcToQDate, GetParam().seconds);
  EXPECT_EQ(back.timeSpec(), Qt::LocalTime);
  EXPECT_EQ(back.toMSecsSinceEpoch() / 1000, GetParam().time.toMSecsSinceEpoch() / 1000);
  EXPECT_EQ(back.time().msec(), 0);
}

const Conversion instants[] = {
    {"Epoch", Utc("1970-01-01T00:00:00"), 0},
    {"SubSecondsAreCutOff", Utc("2017-07-14T02:40:00.999"), 1500000000},
    {"LastOfSigned32Bits", Utc("2038-01-19T03:14:07"), 2147483647},
    {"AboveSigned32Bits", Utc("2038-01-19T03:14:08"), 2147483648U},
    {"LastSecond", Utc("2106-02-07T06:28:14"), 4294967294U},
    {"OtherOffset", QDateTime::fromString("2017-07-14T04:40:00+02:00", Qt::ISODate), 1500000000},
    {"OtherZone", QDateTime(QDate(2017, 7, 13), QTime(16, 40), QTimeZone("Pacific/Honolulu")), 1500000000},
    {"LocalTime", QDateTime::fromSecsSinceEpoch(1500000000), 1500000000},
};

const Conversion timesWithoutSeconds[] = {
    {"PastTheLastSecond", Utc("2106-02-07T06:28:15"), noTime},
    {"FarFuture", Utc("2200-01-01T00:00:00"), noTime},
    {"BeforeTheEpoch", Utc("1969-12-31T23:59:59"), noTime},
    {"Invalid", QDateTime(), noTime},
};

INSTANTIATE_TEST_SUITE_P(Instants, ToSecondsTest, testing::ValuesIn(instants), ConversionName);
INSTANTIATE_TEST_SUITE_P(OutOfRange, ToSecondsTest, testing::ValuesIn(timesWithoutSeconds), ConversionName);
INSTANTIATE_TEST_SUITE_P(Instants, RoundTripTest, testing::ValuesIn(instants), ConversionName);

}  // namespace
