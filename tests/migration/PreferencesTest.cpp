// The preferences step of the first two converters: what it passes over, the calibration flag, and the
// auto-shutoff delay.
#include <cmath>

#include "tests/migration/ConversionTest.h"

namespace {

class PreferencesTest : public ConversionTest {
 protected:
  QStringList Row(const char* columns) const {
    return Rows(Main(), QStringLiteral("SELECT %1 FROM Preferences").arg(columns));
  }
  QStringList Columns() const {
    return Rows(Main(), "SELECT count(*), max(name) FROM pragma_table_info('Preferences') WHERE cid >= 25");
  }
};

using PreferencesTest1to2 = PreferencesTest;
INSTANTIATE_TEST_SUITE_P(Converters, PreferencesTest1to2, testing::Values(ConverterFrom(1)), NameOf);
using PreferencesTest2to3 = PreferencesTest;
INSTANTIATE_TEST_SUITE_P(Converters, PreferencesTest2to3, testing::Values(ConverterFrom(2)), NameOf);
using PreferencesTest6to7 = PreferencesTest;
INSTANTIATE_TEST_SUITE_P(Converters, PreferencesTest6to7, testing::Values(ConverterFrom(6)), NameOf);

constexpr char copy[] = "INSERT INTO TemporaryDB.Preferences";
constexpr char constants[] = "SELECT AccelerometerXOffset";
constexpr char storeFlag[] = "UPDATE TemporaryDB.Preferences SET  AccelerometerCalibrated=?";
constexpr char storeDelay[] = "UPDATE TemporaryDB.Preferences SET  AutoShutoffDelay=?";
constexpr char invalid[] = "Calibration constants found to have invalid values";
constexpr char noRow[] = "failed to retrieve accelerometer calibration values";

// If the flag's column could not be added, the flag cannot be stored either, and that counts.
TEST_P(PreferencesTest1to2, FailedAdditionIsPassedOverAfterTheCopy) {
  const std::vector<AddedChange> changes = ChangesOf(Tested(), "Preferences");
  ExpectFailure(Failing("exec", changes[0].sql),
                {ExecuteFailed(changes[0].label),
                 "SQL prepare  store calibration validity  failed with  1 : no such column: "
                 "AccelerometerCalibrated",
                 "Failed to create calibration store statement",
                 "Detaching database DetermineAccelerometerCalibrationValid"});
  for (std::size_t failed = 1; failed < changes.size(); ++failed) {
    SCOPED_TRACE(changes[failed].sql);
    Load();
    ExpectSuccess(Failing("exec", changes[failed].sql), {ExecuteFailed(changes[failed].label)});
    EXPECT_EQ(Columns().value(0).section('|', 0, 0), QString::number(failed));
    EXPECT_EQ(Row("AccelerometerCalibrated, AutoShutoffDelay"), QStringList{"1|1"});
  }
}

TEST_P(PreferencesTest1to2, FailedCopyAloneIsPassedOver) {
  ExpectSuccess(Failing("exec", copy), {ExecuteFailed("Copy Preferences Table"), noRow, invalid});
  EXPECT_EQ(Row("*"), QStringList());
  EXPECT_EQ(Columns(), QStringList{"4|'TiltIndicatorEnabled'"});
}

TEST_P(PreferencesTest1to2, FailedCopyAndAdditionFail) {
  for (const AddedChange& change : ChangesOf(Tested(), "Preferences")) {
    SCOPED_TRACE(change.sql);
    SqliteCalls::Arm(Failing("exec", copy));
    ExpectFailure(Failing("exec", change.sql),
                  {ExecuteFailed("Copy Preferences Table"), ExecuteFailed(change.label)});
  }
}

TEST_P(PreferencesTest2to3, NeitherCopyNorAdditionsCount) {
  const std::vector<AddedChange> changes = ChangesOf(Tested(), "Preferences");
  const struct {
    std::vector<const char*> failing;
    QStringList lines;
    const char* columns;
    int rows;
  } cases[] = {
      {{copy}, {ExecuteFailed("Copy Preferences Table")}, "6|'TiltInversionEnabled'", 0},
      {{changes[0].sql}, {ExecuteFailed(changes[0].label)}, "4|'TiltIndicatorEnabled'", 1},
      {{changes[1].sql}, {ExecuteFailed(changes[1].label)}, "5|'TiltInversionEnabled'", 1},
      {{copy, changes[0].sql},
       {ExecuteFailed("Copy Preferences Table"), ExecuteFailed(changes[0].label)},
       "4|'TiltIndicatorEnabled'",
       0},
      {{copy, changes[1].sql},
       {ExecuteFailed("Copy Preferences Table"), ExecuteFailed(changes[1].label)},
       "5|'TiltInversionEnabled'",
       0},
  };
  for (const auto& [failing, lines, columns, rows] : cases) {
    SCOPED_TRACE(testing::PrintToString(lines));
    Load();
    for (const char* const sql : failing) SqliteCalls::Arm(Failing("exec", sql));
    ExpectSuccess(lines + CleanupLines());
    EXPECT_EQ(Columns(), QStringList{columns});
    EXPECT_EQ(Row("*").size(), rows);
  }
}

// Not about preferences, but of the same kind: the note of path alignments need not be added.
TEST_P(PreferencesTest6to7, PathNoteIsPassedOver) {
  const AddedChange note = ChangesOf(Tested(), "PathAlignment")[0];
  ExpectSuccess(Failing("exec", note.sql), QStringList{ExecuteFailed(note.label)} + CleanupLines());
  EXPECT_EQ(Rows(Main(), "SELECT count(*) FROM pragma_table_info('PathAlignment') WHERE name = 'Note'"),
            QStringList{"0"});
  EXPECT_EQ(Rows(Main(), "SELECT * FROM Version"), QStringList{"7"});
}

struct Calibration {
  double xOffset, yOffset, xGain, zOffset, zGain;
};

// The tolerance is 0.00001, and a value that reaches it is no longer a default.
TEST_P(PreferencesTest1to2, Calibration) {
  const double at = 0.00001;
  const double below = std::nextafter(at, 0.0);
  const struct {
    Calibration constants;
    bool valid;
  } cases[] = {
      {{0, 0, 1, 0, 1}, false},
      {{below, 0, 1, 0, 1}, false},
      {{-below, 0, 1, 0, 1}, false},
      {{at, 0, 1, 0, 1}, true},
      {{-at, 0, 1, 0, 1}, true},
      {{0.001, 0, 1, 0, 1}, true},
      {{-0.001, 0, 1, 0, 1}, true},
      {{0, below, 1, 0, 1}, false},
      {{0, -below, 1, 0, 1}, false},
      {{0, at, 1, 0, 1}, true},
      {{0, -at, 1, 0, 1}, true},
      {{0, -2, 1, 0, 1}, true},
      {{0, 0, 1.000009, 0, 1}, false},
      {{0, 0, 0.999991, 0, 1}, false},
      {{0, 0, 1.000011, 0, 1}, true},
      {{0, 0, 0.999989, 0, 1}, true},
      {{0, 0, -1, 0, 1}, true},
      {{0, 0, 0, 0, 1}, true},
      {{0, 0, 1, below, 1}, false},
      {{0, 0, 1, -below, 1}, false},
      {{0, 0, 1, at, 1}, true},
      {{0, 0, 1, -at, 1}, true},
      {{0, 0, 1, 0, 1.000009}, false},
      {{0, 0, 1, 0, 1.000011}, true},
      {{0, 0, 1, 0, -1.000009}, false},
      {{0, 0, 1, 0, -1.000011}, true},
      // Required behaviour: the absolute value is taken before 1 is subtracted, so every smaller gain is a
      // default.
      {{0, 0, 1, 0, 0.5}, false},
      {{0, 0, 1, 0, 0}, false},
      {{0, 0, 1, 0, -0.5}, false},
      {{0, 0, 1, 0, 0.999989}, false},
      {{0, 0, 1, 0, 2}, true},
      {{0, 0, 1, 0, -2}, true},
      {{below, -below, 1.000009, below, 1.000009}, false},
      {{1, 1, 2, 1, 2}, true},
  };
  for (const auto& [c, valid] : cases) {
    const QString values = QStringLiteral(
                               "AccelerometerXOffset=%1, AccelerometerYOffset=%2, AccelerometerXGain=%3, "
                               "AccelerometerZOffset=%4, AccelerometerZGain=%5")
                               .arg(c.xOffset, 0, 'g', 17)
                               .arg(c.yOffset, 0, 'g', 17)
                               .arg(c.xGain, 0, 'g', 17)
                               .arg(c.zOffset, 0, 'g', 17)
                               .arg(c.zGain, 0, 'g', 17);
    SCOPED_TRACE(values.toStdString());
    Load();
    RunSql(Main(), "UPDATE Preferences SET " + values);
    const Converted converted = Convert(Tested(), Main());
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(converted.lines, valid ? QStringList() : QStringList{invalid});
    EXPECT_EQ(Row("AccelerometerCalibrated"), QStringList{valid ? "1" : "0"});
  }
}

TEST_P(PreferencesTest1to2, ShutOffDelayIsAlwaysOne) {
  for (const int delay : {-1, 0, 1, 2, 107}) {
    Load();
    RunSql(Main(), QStringLiteral("UPDATE Preferences SET AutoShutoffDelay = %1").arg(delay));
    EXPECT_TRUE(Convert(Tested(), Main()).result);
    EXPECT_EQ(Row("AutoShutoffDelay"), QStringList{"1"});
  }
}

// The golden file is calibrated; constants that cannot be read count as factory ones.
TEST_P(PreferencesTest1to2, ConstantsThatCannotBeRead) {
  const struct {
    Fault fault;
    QStringList lines;
  } cases[] = {
      {Failing("prepare_v2", constants),
       {PrepareFailed("Get calibration constants"), "Failed to prepare statement in prefernces statement",
        invalid}},
      {Failing("step", constants), {noRow, invalid}},
      {Fault("step", SQLITE_DONE).OnText(constants), {noRow, invalid}},
  };
  for (const auto& [fault, lines] : cases) {
    SCOPED_TRACE(testing::PrintToString(lines));
    Load();
    ExpectSuccess(fault, lines);
    EXPECT_EQ(Row("AccelerometerCalibrated, AutoShutoffDelay"), QStringList{"0|1"});
  }
}

TEST_P(PreferencesTest1to2, FlagThatCannotBeStored) {
  const char* const last = "Detaching database DetermineAccelerometerCalibrationValid";
  ExpectFailure(Failing("prepare_v2", storeFlag), {PrepareFailed("store calibration validity"),
                                                   "Failed to create calibration store statement", last});
  ExpectFailure(Failing("bind_int", storeFlag), {BindFailed("SQL bind DistanceKey failed with "), last});
  ExpectFailure(
      Failing("step", storeFlag),
      {"Operation wasn't successful for some reason in DetermineAccelerometerCalibrationValid", last});
}

TEST_P(PreferencesTest1to2, DelayThatCannotBeStored) {
  const char* const last = "Detaching database at ResetAutoshutoffSetting";
  ExpectFailure(Failing("prepare_v2", storeDelay), {PrepareFailed("Reset auto-shutoff setting"),
                                                    "Failed to create calibration store statement", last});
  ExpectFailure(Failing("bind_int", storeDelay), {BindFailed("SQL bind DistanceKey failed with "), last});
  ExpectSuccess(Failing("step", storeDelay),
                {"Operation wasn't successful for some reason in ResetAutoshutoffSetting"});
  EXPECT_EQ(Row("AccelerometerCalibrated, AutoShutoffDelay"), QStringList{"1|107"});
}

}  // namespace
