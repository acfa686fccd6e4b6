#include <gtest/gtest.h>

#include "tests/support/SqliteLeakGuard.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  SqliteLeakGuard::Install();
  return RUN_ALL_TESTS();
}
