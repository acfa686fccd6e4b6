#include "tests/store/StoreVersions.h"

namespace {

class LifecycleTest : public CreatedStoreTest {};

TEST_P(LifecycleTest, AnswersItsVersion) {
  EXPECT_EQ(store_->Version(), Version().number);
}

INSTANTIATE_FOR_ALL_VERSIONS(LifecycleTest);

}  // namespace
