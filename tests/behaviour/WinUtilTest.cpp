#include <gtest/gtest.h>

#include "sim/Library.h"
#include "sim/Machine.h"

namespace {

using sim::Library;
using sim::Machine;
using namespace win_util;

WinVersion VersionOn(uint32_t major, uint32_t minor, uint8_t product_type) {
  Machine machine("win7 intel: internal 1366x768 active");
  machine.model().windows.major = major;
  machine.model().windows.minor = minor;
  machine.model().windows.product_type = product_type;
  Library ostrel(machine, Library::Build::kWhiteBox);
  return ostrel.white_box().foundation->GetWinVersion();
}

TEST(GetWinVersion, ServerOf61CountsAs2008) { EXPECT_EQ(VersionOn(6, 1, 3), WINVERSION_2008); }

TEST(GetWinVersion, WorkstationsFollowTheTable) {
  EXPECT_EQ(VersionOn(5, 1, 1), WINVERSION_XP);
  EXPECT_EQ(VersionOn(5, 2, 3), WINVERSION_SERVER_2003);
  EXPECT_EQ(VersionOn(6, 0, 1), WINVERSION_VISTA);
  EXPECT_EQ(VersionOn(6, 1, 1), WINVERSION_WIN7);
  EXPECT_EQ(VersionOn(6, 2, 1), WINVERSION_WIN8);
  EXPECT_EQ(VersionOn(6, 3, 1), WINVERSION_LATER);
  EXPECT_EQ(VersionOn(10, 0, 1), WINVERSION_LATER);
}

TEST(GetWinVersion, IsKeptForTheProcess) {
  Machine machine("win7 intel: internal 1366x768 active");
  Library ostrel(machine, Library::Build::kWhiteBox);
  EXPECT_EQ(ostrel.white_box().foundation->GetWinVersion(), WINVERSION_WIN7);
  machine.model().windows.major = 10;
  EXPECT_EQ(ostrel.white_box().foundation->GetWinVersion(), WINVERSION_WIN7);
}

}  // namespace
