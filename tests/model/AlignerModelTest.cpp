#include "model/AlignerModel.h"

#include <gtest/gtest.h>

#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "tests/model/Counted.h"
#include "tests/model/CountingObserver.h"

namespace {

/// The site half of the model, for tests that hold for both halves.
struct SiteScreen {
  using Record = ISiteInformation;
  static Record* New(int* destroyed) {
    return new Counted<SiteInformation>(destroyed, "S1", "Alpha", "1", 1.0F, 2.0F, 3.0F);
  }
  static Record* Current(IAlignerModel& model) { return model.CurrentSiteInformation(); }
  static bool HasCurrent(IAlignerModel& model) { return model.HasCurrentSite(); }
  static void Set(IAlignerModel& model, Record* record) { model.SetCurrentSiteInformation(record); }
  static void Clear(IAlignerModel& model) { model.ClearCurrentSite(); }
};

struct PathScreen {
  using Record = IPathInformation;
  static Record* New(int* destroyed) { return new Counted<PathInformation>(destroyed, "P1", 1.0, 2.0, 3.0); }
  static Record* Current(IAlignerModel& model) { return model.CurrentPathInformation(); }
  static bool HasCurrent(IAlignerModel& model) { return model.HasCurrentPath(); }
  static void Set(IAlignerModel& model, Record* record) { model.SetCurrentPathInformation(record); }
  static void Clear(IAlignerModel& model) { model.ClearCurrentPath(); }
};

template <typename Screen>
class AlignerModelTest : public testing::Test {
 protected:
  AlignerModelTest() { model_->AddObserver(&observer_); }

  int destroyed_ = 0;
  int otherDestroyed_ = 0;
  CountingObserver observer_;
  std::unique_ptr<AlignerModel> model_ = std::make_unique<AlignerModel>();
};

using Screens = testing::Types<SiteScreen, PathScreen>;
TYPED_TEST_SUITE(AlignerModelTest, Screens, );

TYPED_TEST(AlignerModelTest, FreshModelIsEmpty) {
  EXPECT_EQ(TypeParam::Current(*this->model_), nullptr);
  EXPECT_FALSE(TypeParam::HasCurrent(*this->model_));
}

TYPED_TEST(AlignerModelTest, OwnsTheRecordItIsGiven) {
  auto* record = TypeParam::New(&this->destroyed_);
  TypeParam::Set(*this->model_, record);
  EXPECT_EQ(TypeParam::Current(*this->model_), record);
  EXPECT_TRUE(TypeParam::HasCurrent(*this->model_));
  EXPECT_EQ(this->destroyed_, 0);
  this->model_.reset();
  EXPECT_EQ(this->destroyed_, 1);
}

TYPED_TEST(AlignerModelTest, ReleasesTheRecordItReplaces) {
  TypeParam::Set(*this->model_, TypeParam::New(&this->destroyed_));
  TypeParam::Set(*this->model_, TypeParam::New(&this->otherDestroyed_));
  EXPECT_EQ(this->destroyed_, 1);
  EXPECT_EQ(this->otherDestroyed_, 0);
}

TYPED_TEST(AlignerModelTest, NullEmptiesTheScreen) {
  TypeParam::Set(*this->model_, nullptr);
  TypeParam::Set(*this->model_, TypeParam::New(&this->destroyed_));
  TypeParam::Set(*this->model_, nullptr);
  EXPECT_EQ(TypeParam::Current(*this->model_), nullptr);
  EXPECT_EQ(this->destroyed_, 1);
}

TYPED_TEST(AlignerModelTest, ClearEmptiesTheScreen) {
  TypeParam::Set(*this->model_, TypeParam::New(&this->destroyed_));
  TypeParam::Clear(*this->model_);
  EXPECT_FALSE(TypeParam::HasCurrent(*this->model_));
  EXPECT_EQ(this->destroyed_, 1);
}

TYPED_TEST(AlignerModelTest, CurrentRecordSetAgainIsKept) {
  auto* record = TypeParam::New(&this->destroyed_);
  TypeParam::Set(*this->model_, record);
  TypeParam::Set(*this->model_, record);
  EXPECT_EQ(TypeParam::Current(*this->model_), record);
  EXPECT_EQ(this->destroyed_, 0);
  this->model_.reset();
  EXPECT_EQ(this->destroyed_, 1);
}

TYPED_TEST(AlignerModelTest, TellsObserversOfEachChange) {
  TypeParam::Set(*this->model_, TypeParam::New(&this->destroyed_));
  TypeParam::Clear(*this->model_);
  EXPECT_EQ(this->observer_.changed, CountingObserver::Models({this->model_.get(), this->model_.get()}));
  this->model_->RemoveObserver(&this->observer_);
  TypeParam::Clear(*this->model_);
  EXPECT_EQ(this->observer_.changed.size(), 2);
}

TEST(AlignerModelScreensTest, AreIndependent) {
  int sitesDestroyed = 0;
  int pathsDestroyed = 0;
  AlignerModel model;
  SiteScreen::Set(model, SiteScreen::New(&sitesDestroyed));
  PathScreen::Set(model, PathScreen::New(&pathsDestroyed));
  model.ClearCurrentSite();
  EXPECT_EQ(sitesDestroyed, 1);
  EXPECT_EQ(pathsDestroyed, 0);
  EXPECT_TRUE(model.HasCurrentPath());
}

}  // namespace
