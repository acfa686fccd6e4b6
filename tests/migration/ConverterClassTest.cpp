// The binary shape of the converter classes.
#include <gtest/gtest.h>

#include <QString>
#include <type_traits>

#include "migration/AllConverters.h"
#include "tests/model/SlotPosition.h"

namespace {

template <typename T>
class ConverterClassTest : public testing::Test {};

using ConverterClasses = AllConverters::As<testing::Types>;

struct ClassName {
  template <typename T>
  static std::string GetName(int index) {
    return "From" + std::to_string(index + 1);
  }
};
TYPED_TEST_SUITE(ConverterClassTest, ConverterClasses, ClassName);

bool destroyed = false;

template <typename T>
struct Noticed : T {
  ~Noticed() override { destroyed = true; }
};

TYPED_TEST(ConverterClassTest, ConvertThenDestructor) {
  EXPECT_EQ(SlotPosition(&IAlignmentDatabaseConverter::Convert), 1);
  EXPECT_EQ(SlotPosition(&TypeParam::Convert), 1);
  destroyed = false;
  // A destructor takes two positions, the second of which deletes.
  DeleteThroughSlot(new Noticed<TypeParam>, 3);
  EXPECT_TRUE(destroyed);
}

TYPED_TEST(ConverterClassTest, HoldsNoData) {
  EXPECT_EQ(sizeof(TypeParam), sizeof(void*));
  EXPECT_TRUE((std::is_base_of_v<IAlignmentDatabaseConverter, TypeParam>));
  EXPECT_TRUE(std::is_default_constructible_v<TypeParam>);
  EXPECT_TRUE(std::has_virtual_destructor_v<TypeParam>);
  EXPECT_FALSE(std::has_virtual_destructor_v<IAlignmentDatabaseConverter>);
}

}  // namespace
