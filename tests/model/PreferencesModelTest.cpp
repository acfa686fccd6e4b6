#include "model/PreferencesModel.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QStringList>

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

TEST(PreferencesModelTest, HeightSourceOffersGpsUnderItsStoredNumber) {
  PreferencesModel model;
  EXPECT_TRUE(model.HeightSource()->AssignValueWithKey(3));
  EXPECT_EQ(model.HeightSource()->CurrentValue()->Name(), "GPS");
}

/// "key name" of every allowed value, then the current key.
template <typename T>
QString Choices(const EnumeratedSetting<T>* setting) {
  QStringList values;
  for (const T* value : setting->AllowedValues()) {
    values << QStringLiteral("%1 %2").arg(value->Key()).arg(value->Name());
  }
  return values.join(QStringLiteral(", ")) + QStringLiteral("; now %1").arg(setting->CurrentValue()->Key());
}

QString TimeZones() {
  QStringList values;
  for (int hours = -12; hours <= 14; ++hours) {
    const QString offset =
        hours == 0 ? QString() : QStringLiteral("%1%2").arg(hours > 0 ? "+" : "").arg(hours);
    values << QStringLiteral("%1 UTC%2").arg(hours + 12).arg(offset);
  }
  return values.join(QStringLiteral(", ")) + QStringLiteral("; now 12");
}

TEST(PreferencesModelTest, OffersTheseChoices) {
  PreferencesModel model;
  EXPECT_EQ(Choices(model.DistanceUnits()), "0 Meters, 1 Feet; now 0");
  EXPECT_EQ(Choices(model.AzimuthOffset()), "0 None, 1 90 degrees, 2 180 degrees, 3 270 degrees; now 0");
  EXPECT_EQ(Choices(model.DateFormat()), "0 MM/DD/YYYY, 1 DD/MM/YYYY, 2 YYYY-MM-DD; now 0");
  EXPECT_EQ(Choices(model.CoordinateFormat()),
            "0 Decimal degrees, 1 Degrees, minutes, 2 Degrees, minutes, seconds; now 0");
  EXPECT_EQ(Choices(model.AutoShutoffDelay()), "0 Never, 1 15 minutes, 2 30 minutes, 3 60 minutes; now 1");
  EXPECT_EQ(Choices(model.DatumFormat()), "0 WGS 84, 1 NAD 83, 2 NAD 27; now 0");
  EXPECT_EQ(Choices(model.HeightSource()), "1 Manual, 2 Barometric, 3 GPS; now 1");
  EXPECT_EQ(Choices(model.TimeZone()), TimeZones());
  EXPECT_EQ(Choices(model.BluetoothMode()), "0 Off, 1 On, 2 Discoverable; now 0");
  EXPECT_EQ(Choices(model.GeoidFormat()), "0 EGM96, 1 EGM2008; now 0");
}

// Where the file's schema has a default for a column, the model starts with the same.
TEST(PreferencesModelTest, StartsWithTheseValues) {
  PreferencesModel model;
  for (Setting<bool>* on :
       {model.ShowCrosshairs(), model.ShowTarget(), model.CameraEnabled(), model.SoundEnabled(),
        model.TiltIndicatorEnabled(), model.RollIndicatorEnabled()}) {
    EXPECT_TRUE(on->Value());
  }
  for (Setting<bool>* off :
       {model.SerialNumberValid(), model.DaylightSavingsEnabled(), model.AccelerometerCalibrated(),
        model.TiltInversionEnabled(), model.RollPrecision(), model.PathLengthThresholdEnabled()}) {
    EXPECT_FALSE(off->Value());
  }
  for (Setting<double>* offset :
       {model.AccelerometerXOffset(), model.AccelerometerYOffset(), model.AccelerometerZOffset()}) {
    EXPECT_EQ(offset->Value(), 0.0);
  }
  EXPECT_EQ(model.AccelerometerXGain()->Value(), 1.0);
  EXPECT_EQ(model.AccelerometerZGain()->Value(), 1.0);
  EXPECT_EQ(model.AzimuthThreshold()->Value(), 2.0);
  EXPECT_EQ(model.TiltThreshold()->Value(), 0.5);
  EXPECT_EQ(model.RollThreshold()->Value(), 1.0);
  EXPECT_EQ(model.PathLengthThreshold()->Value(), 1000.0);
  EXPECT_EQ(model.SerialNumber()->Value(), 0);
  EXPECT_EQ(model.GNSSFileCRC()->Value(), 0);
  EXPECT_EQ(model.CalibrationDate()->Value(), QString());
  EXPECT_EQ(model.BluetoothDisplayName()->Value(), "Tarnbeam");
  EXPECT_EQ(model.UserTechId()->Value(), "tbm001");
}

}  // namespace
