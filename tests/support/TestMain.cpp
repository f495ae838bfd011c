#include <gtest/gtest.h>

#include "tests/support/Environment.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  test_support::InstallEnvironment();
  return RUN_ALL_TESTS();
}
