#include "model/PreferencesModel.h"

#include <gtest/gtest.h>

#include <QSet>
#include <set>

namespace {

QSet<ObservableModel*> SettingsOf(IPreferencesModel& model) {
  return {model.DistanceUnits(),
          model.AzimuthOffset(),
          model.DateFormat(),
          model.CoordinateFormat(),
          model.AutoShutoffDelay(),
          model.DatumFormat(),
          model.HeightSource(),
          model.TimeZone(),
          model.BluetoothMode(),
          model.ShowCrosshairs(),
          model.ShowTarget(),
          model.CameraEnabled(),
          model.SoundEnabled(),
          model.SerialNumberValid(),
          model.AzimuthThreshold(),
          model.TiltThreshold(),
          model.RollThreshold(),
          model.AccelerometerXOffset(),
          model.AccelerometerYOffset(),
          model.AccelerometerZOffset(),
          model.AccelerometerXGain(),
          model.AccelerometerZGain(),
          model.CalibrationDate(),
          model.SerialNumber(),
          model.DaylightSavingsEnabled(),
          model.AccelerometerCalibrated(),
          model.GNSSFileCRC(),
          model.TiltIndicatorEnabled(),
          model.RollIndicatorEnabled(),
          model.TiltInversionEnabled(),
          model.BluetoothDisplayName(),
          model.RollPrecision(),
          model.GeoidFormat(),
          model.UserTechId(),
          model.PathLengthThresholdEnabled(),
          model.PathLengthThreshold()};
}

TEST(PreferencesModelTest, EveryAccessorAnswersItsOwnSetting) {
  PreferencesModel model;
  const QSet<ObservableModel*> settings = SettingsOf(model);
  EXPECT_EQ(settings.size(), 36);
  EXPECT_FALSE(settings.contains(nullptr));
}

TEST(PreferencesModelTest, AccessorsAnswerTheSameSettingEachTime) {
  PreferencesModel model;
  EXPECT_EQ(SettingsOf(model), SettingsOf(model));
}

TEST(PreferencesModelTest, ModelsShareNoSetting) {
  PreferencesModel one;
  PreferencesModel other;
  EXPECT_FALSE(SettingsOf(one).intersects(SettingsOf(other)));
}

/// Several values to choose from, one of them current, and no key or name twice.
template <typename T>
void ExpectRealChoice(const EnumeratedSetting<T>* setting) {
  ASSERT_GE(setting->AllowedValues().size(), 2);
  EXPECT_TRUE(setting->AllowedValues().contains(setting->CurrentValue()));
  std::set<unsigned int> keys;
  std::set<QString> names;
  for (const T* value : setting->AllowedValues()) {
    EXPECT_TRUE(keys.insert(value->Key()).second) << value->Key();
    EXPECT_TRUE(names.insert(value->Name()).second) << qPrintable(value->Name());
    EXPECT_FALSE(value->Name().isEmpty());
  }
}

TEST(PreferencesModelTest, EnumeratedSettingsOfferAChoice) {
  PreferencesModel model;
  ExpectRealChoice(model.DistanceUnits());
  ExpectRealChoice(model.AzimuthOffset());
  ExpectRealChoice(model.DateFormat());
  ExpectRealChoice(model.CoordinateFormat());
  ExpectRealChoice(model.AutoShutoffDelay());
  ExpectRealChoice(model.DatumFormat());
  ExpectRealChoice(model.HeightSource());
  ExpectRealChoice(model.TimeZone());
  ExpectRealChoice(model.BluetoothMode());
  ExpectRealChoice(model.GeoidFormat());
}

TEST(PreferencesModelTest, AutoShutoffIsOnAtFirst) {
  PreferencesModel model;
  EXPECT_EQ(model.AutoShutoffDelay()->CurrentValue()->Key(), 1U);
}

TEST(PreferencesModelTest, HeightSourceOffersGpsUnderItsStoredNumber) {
  PreferencesModel model;
  EXPECT_TRUE(model.HeightSource()->AssignValueWithKey(3));
  EXPECT_EQ(model.HeightSource()->CurrentValue()->Name(), "GPS");
}

}  // namespace
