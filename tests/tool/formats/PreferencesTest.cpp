#include <gtest/gtest.h>

#include "tests/support/PrintQt.h"
#include "tool/formats/PreferencesFormats.h"

namespace {

TEST(PreferencesFormatsTest, KeysHaveNamesAndOtherValuesHaveNone) {
  EXPECT_EQ(PreferencesObject({{"DistanceUnits", 1LL},
                               {"AzimuthThreshold", 0.5},
                               {"UserTechId", "tbm001"},
                               {"ShowTarget", 1LL},
                               {"BluetoothEnabled", 2LL}}),
            (QJsonObject{{"DistanceUnits", QJsonObject{{"value", 1}, {"name", "Feet"}}},
                         {"AzimuthThreshold", QJsonObject{{"value", 0.5}}},
                         {"UserTechId", QJsonObject{{"value", "tbm001"}}},
                         {"ShowTarget", QJsonObject{{"value", 1}}},
                         {"BluetoothEnabled", QJsonObject{{"value", 2}, {"name", "Discoverable"}}}}));
}

TEST(PreferencesFormatsTest, AKeyWithoutANameIsShownAsItIs) {
  EXPECT_EQ(PreferencesObject({{"GeoidFormat", -7LL}}),
            (QJsonObject{{"GeoidFormat", QJsonObject{{"value", -7}, {"name", QJsonValue::Null}}}}));
}

TEST(PreferencesFormatsTest, EveryColumnWithASettingsKeyHasNames) {
  for (const char* column :
       {"DistanceUnits", "AzimuthOffset", "DateFormat", "CoordinateFormat", "DatumFormat", "HeightSource",
        "AutoShutoffDelay", "BluetoothEnabled", "TimeZone", "GeoidFormat"}) {
    const QJsonObject entry = PreferencesObject({{column, 1LL}})[column].toObject();
    EXPECT_TRUE(entry["name"].isString()) << column;
  }
}

TEST(PreferencesFormatsTest, TheTableShowsWhatIsStoredAndNothingElse) {
  EXPECT_EQ(PreferencesTable({{"SerialNumber", 99999999999LL},
                              {"DistanceUnits", 1LL},
                              {"GeoidFormat", -7LL},
                              {"ShowTarget", 0LL},
                              {"SoundEnabled", 1LL},
                              {"AzimuthThreshold", 0.1},
                              {"PathLengthThreshold", 1250.5},
                              {"UserTechId", "a\tb"},
                              {"AzimuthOffset", 1LL},
                              {"Language", 0LL}}),
            QString("DistanceUnits               Feet (1)\n"
                    "GeoidFormat                 unknown (-7)\n"
                    "AzimuthThreshold            0.1 °\n"
                    "PathLengthThreshold         1250.5\n"
                    "SoundEnabled                on\n"
                    "ShowTarget                  off\n"
                    "UserTechId                  a\\tb\n"
                    "SerialNumber                99999999999\n"
                    "AzimuthOffset               (stored, but not read back)\n"));
}

TEST(PreferencesFormatsTest, NothingStored) {
  EXPECT_EQ(PreferencesObject({}), QJsonObject());
  EXPECT_EQ(PreferencesTable({}), QString());
}

}  // namespace
