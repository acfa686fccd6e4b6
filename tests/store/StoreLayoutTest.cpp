// The binary interface of the stores: positions of the virtual operations, size, destruction.
#include <type_traits>

#include "tests/model/Counted.h"
#include "tests/model/SlotPosition.h"
#include "tests/store/StoreVersions.h"

namespace {

template <typename Store>
std::vector<int> OperationPositions() {
  return SlotPositions(&Store::Version, &Store::SaveAlignmentReportData, &Store::SavePathReportData,
                       &Store::GetAlignmentReportDataForSite, &Store::GetPathAlignmentReportDataForSite,
                       &Store::SavePreferences, &Store::RestorePreferences, &Store::GetSiteIdentifiers,
                       &Store::GetPathIdentifiers, &Store::DeleteReportsBySiteAndSector,
                       &Store::DeleteReportsByPath, &Store::DeleteReportsBySiteAndIndex,
                       &Store::DeleteReportsByPathAndIndex, &Store::StoreInputContents,
                       &Store::RestoreInputContents);
}

const std::vector<int> oneToFifteen = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

template <typename Store>
class StoreLayoutTest : public testing::Test {};

struct StoreName {
  template <typename Store>
  static std::string GetName(int index) {
    return "Version" + std::to_string(index + 1);
  }
};

using Stores = AllStores::As<testing::Types>;
TYPED_TEST_SUITE(StoreLayoutTest, Stores, StoreName);

TYPED_TEST(StoreLayoutTest, OperationsStandInTheOrderOfTheInterface) {
  EXPECT_EQ(OperationPositions<IAlignmentDatabase>(), oneToFifteen);
  EXPECT_EQ(OperationPositions<TypeParam>(), oneToFifteen);
  EXPECT_EQ(SlotPosition(&IAlignmentDatabaseInternal::Close), 16);
  EXPECT_EQ(SlotPosition(&TypeParam::Close), 16);
  EXPECT_EQ(SlotPosition(&TypeParam::CreateTables), 0);
}

// A virtual destructor takes two positions; the second deletes. Operation 16 is the one before it.
TYPED_TEST(StoreLayoutTest, TheDestructorFollows) {
  int destroyed = 0;
  DeleteThroughSlot(new Counted<TypeParam>(&destroyed, QString(), QString()), 18);
  EXPECT_EQ(destroyed, 1);
  EXPECT_TRUE(std::has_virtual_destructor_v<TypeParam>);
  EXPECT_FALSE(std::has_virtual_destructor_v<IAlignmentDatabaseInternal>);
  EXPECT_FALSE(std::has_virtual_destructor_v<AlignmentDatabase>);
}

TYPED_TEST(StoreLayoutTest, AStoreIsItsTwoPaths) {
  EXPECT_EQ(sizeof(TypeParam), sizeof(void*) + 2 * sizeof(QString));
}

}  // namespace
