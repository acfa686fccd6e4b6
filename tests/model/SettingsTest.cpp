#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include "model/IPreferencesModel.h"
#include "tests/model/CountingObserver.h"

namespace {

class CountingSetting : public EnumeratedSetting<DistanceUnitsSetting> {
 public:
  using EnumeratedSetting::EnumeratedSetting;

  void NotifyObserversOfChange() override { ++notifications; }

  int notifications = 0;
};

class EnumeratedSettingTest : public testing::Test {
 protected:
  DistanceUnitsSetting meters_{0, "Meters"};
  DistanceUnitsSetting feet_{1, "Feet"};
  DistanceUnitsSetting otherFeet_{1, "Survey feet"};
  DistanceUnitsSetting largest_{std::numeric_limits<unsigned int>::max(), "Largest"};
};

TEST_F(EnumeratedSettingTest, HoldsWhatItIsBuiltFrom) {
  const QVector<DistanceUnitsSetting*> allowed{&meters_, &feet_};
  EnumeratedSetting<DistanceUnitsSetting> setting(allowed, &feet_);
  EXPECT_EQ(setting.AllowedValues(), allowed);
  EXPECT_EQ(setting.CurrentValue(), &feet_);
}

TEST_F(EnumeratedSettingTest, WithoutAllowedValuesNothingIsAssigned) {
  CountingSetting setting({}, &meters_);
  EXPECT_FALSE(setting.AssignValueWithKey(0));
  EXPECT_EQ(setting.CurrentValue(), &meters_);
  EXPECT_EQ(setting.notifications, 0);
}

TEST_F(EnumeratedSettingTest, UnknownKeyChangesNothing) {
  CountingSetting setting({&meters_, &feet_}, &meters_);
  EXPECT_FALSE(setting.AssignValueWithKey(2));
  EXPECT_EQ(setting.CurrentValue(), &meters_);
  EXPECT_EQ(setting.notifications, 0);
}

TEST_F(EnumeratedSettingTest, KnownKeyBecomesCurrentAndNotifies) {
  CountingSetting setting({&meters_, &feet_}, &meters_);
  EXPECT_TRUE(setting.AssignValueWithKey(1));
  EXPECT_EQ(setting.CurrentValue(), &feet_);
  EXPECT_EQ(setting.notifications, 1);
}

TEST_F(EnumeratedSettingTest, FirstOfTwoEqualKeysWins) {
  CountingSetting setting({&meters_, &otherFeet_, &feet_}, &meters_);
  EXPECT_TRUE(setting.AssignValueWithKey(1));
  EXPECT_EQ(setting.CurrentValue(), &otherFeet_);
}

TEST_F(EnumeratedSettingTest, CurrentValueAssignedAgainNotifies) {
  CountingSetting setting({&meters_, &feet_}, &feet_);
  EXPECT_TRUE(setting.AssignValueWithKey(1));
  EXPECT_EQ(setting.CurrentValue(), &feet_);
  EXPECT_EQ(setting.notifications, 1);
}

TEST_F(EnumeratedSettingTest, NullEntriesMatchNoKey) {
  CountingSetting setting({nullptr, &feet_}, &feet_);
  EXPECT_FALSE(setting.AssignValueWithKey(0));
  EXPECT_EQ(setting.CurrentValue(), &feet_);
  EXPECT_EQ(setting.notifications, 0);
  EXPECT_TRUE(setting.AssignValueWithKey(1)) << "entries after a null one are still reached";
}

TEST_F(EnumeratedSettingTest, MinusOneIsTheLargestKey) {
  CountingSetting setting({&meters_, &largest_}, &meters_);
  EXPECT_TRUE(setting.AssignValueWithKey(static_cast<unsigned int>(-1)));
  EXPECT_EQ(setting.CurrentValue(), &largest_);
}

TEST_F(EnumeratedSettingTest, WithoutCurrentValueAssignmentGivesOne) {
  EnumeratedSetting<DistanceUnitsSetting> setting({&meters_}, nullptr);
  EXPECT_EQ(setting.CurrentValue(), nullptr);
  EXPECT_TRUE(setting.AssignValueWithKey(0));
  EXPECT_EQ(setting.CurrentValue(), &meters_);
}

TEST_F(EnumeratedSettingTest, ObserversSeeTheNewValue) {
  EnumeratedSetting<DistanceUnitsSetting> setting({&meters_, &feet_}, &meters_);
  CountingObserver observer;
  setting.AddObserver(&observer);
  setting.AssignValueWithKey(1);
  EXPECT_EQ(observer.changed, CountingObserver::Models({&setting}));
}

template <typename T>
class SettingValueTest : public testing::Test {};

using SettingValues =
    testing::Types<DistanceUnitsSetting, DateFormatSetting, CoordinateFormatSetting, DatumFormatSetting,
                   HeightSourceSetting, AutoShutOffDelaySetting, BluetoothModeSetting, TimeZoneSetting,
                   GeoidFormatSetting, AzimuthOffsetSetting>;
TYPED_TEST_SUITE(SettingValueTest, SettingValues, );

TYPED_TEST(SettingValueTest, AnswersKeyAndName) {
  const TypeParam value(7, "Seven");
  static_assert(std::is_same_v<decltype(value.Key()), unsigned int>);
  EXPECT_EQ(value.Key(), 7U);
  EXPECT_EQ(value.Name(), "Seven");
}

template <typename T>
void ExpectSettingTakesValue(const T& first, const T& second) {
  Setting<T> setting(first);
  CountingObserver observer;
  setting.AddObserver(&observer);
  EXPECT_EQ(setting.Value(), first);
  setting.SetValue(second);
  EXPECT_EQ(setting.Value(), second);
  setting.SetValue(second);
  EXPECT_EQ(observer.changed, CountingObserver::Models({&setting, &setting}));
}

TEST(SettingTest, TakesValuesAndNotifiesEachTime) {
  ExpectSettingTakesValue(false, true);
  ExpectSettingTakesValue(1, -2);
  ExpectSettingTakesValue(0.5, 1.25);
  ExpectSettingTakesValue(QString("before"), QString("after"));
}

/// Does to the model what a test asks for while being told of a change.
template <typename Reaction>
class ReactingObserver : public CountingObserver {
 public:
  explicit ReactingObserver(Reaction reaction) : reaction_(reaction) {}

  void ModelChanged(ObservableModel* model) override {
    CountingObserver::ModelChanged(model);
    reaction_(model, this);
  }

 private:
  Reaction reaction_;
};

TEST(ObservableModelTest, TellsEachObserverOnce) {
  ObservableModel model;
  CountingObserver one;
  CountingObserver other;
  model.AddObserver(&one);
  model.AddObserver(&other);
  model.AddObserver(&one);
  model.AddObserver(nullptr);
  model.NotifyObserversOfChange();
  EXPECT_EQ(one.changed, CountingObserver::Models({&model}));
  EXPECT_EQ(other.changed, CountingObserver::Models({&model}));
}

TEST(ObservableModelTest, RemovedObserverIsNotTold) {
  ObservableModel model;
  CountingObserver removed;
  CountingObserver kept;
  CountingObserver stranger;
  model.AddObserver(&removed);
  model.AddObserver(&kept);
  model.RemoveObserver(&removed);
  model.RemoveObserver(&stranger);
  model.NotifyObserversOfChange();
  EXPECT_EQ(removed.changed.size(), 0);
  EXPECT_EQ(kept.changed.size(), 1);
}

TEST(ObservableModelTest, ObserverMayRemoveItself) {
  ObservableModel model;
  ReactingObserver once(
      [](ObservableModel* changed, IModelObserver* self) { changed->RemoveObserver(self); });
  CountingObserver next;
  model.AddObserver(&once);
  model.AddObserver(&next);
  model.NotifyObserversOfChange();
  model.NotifyObserversOfChange();
  EXPECT_EQ(once.changed.size(), 1);
  EXPECT_EQ(next.changed.size(), 2);
}

TEST(ObservableModelTest, ObserverRemovedMeanwhileIsNotTold) {
  ObservableModel model;
  CountingObserver next;
  ReactingObserver remover(
      [&next](ObservableModel* changed, IModelObserver*) { changed->RemoveObserver(&next); });
  model.AddObserver(&remover);
  model.AddObserver(&next);
  model.NotifyObserversOfChange();
  EXPECT_EQ(next.changed.size(), 0);
}

TEST(ObservableModelTest, ObserverAddedMeanwhileIsToldFromTheNextChangeOn) {
  ObservableModel model;
  CountingObserver added;
  ReactingObserver adder(
      [&added](ObservableModel* changed, IModelObserver*) { changed->AddObserver(&added); });
  model.AddObserver(&adder);
  model.NotifyObserversOfChange();
  EXPECT_EQ(added.changed.size(), 0);
  model.NotifyObserversOfChange();
  EXPECT_EQ(added.changed.size(), 1);
}

}  // namespace
