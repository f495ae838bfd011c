// The driver's numbers for kinds of device and the display flags, read in both directions.
#include "Common/MultiMonitor/Intel/IntelDeviceTypes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Row {
  uint32_t display;
  uint32_t type;
};
constexpr Row kRows[] = {{0x00, 0}, {0x01, 2}, {0x02, 1}, {0x04, 4},
                         {0x08, 3}, {0x10, 5}, {0x20, 7}, {0x40, 6}};

TEST(IntelDeviceTypes, EveryRowReadsInBothDirections) {
  for (const Row& row : kRows) {
    EXPECT_EQ(IntelTypeOfDisplay(row.display), row.type) << row.display;
    EXPECT_EQ(DisplayOfIntelType(row.type), row.display) << row.type;
  }
}

TEST(IntelDeviceTypes, WhatHasNoRowIsZero) {
  for (const uint32_t display : {0x03u, 0x11u, 0x7Fu, 0x80u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(IntelTypeOfDisplay(display), 0u) << display;
  }
  for (const uint32_t type : {8u, 9u, 100u, 0xFFFFFFFFu}) {
    EXPECT_EQ(DisplayOfIntelType(type), 0u) << type;
  }
}

TEST(IntelDeviceTypes, TypesOfAMaskComeAscendingByDisplay) {
  std::vector<uint32_t> types;
  EXPECT_TRUE(IntelTypesOfDisplays(0x7F, &types));
  EXPECT_EQ(types, (std::vector<uint32_t>{2, 1, 4, 3, 5, 7, 6}));
}

TEST(IntelDeviceTypes, EveryMaskGivesTheTypesOfItsBits) {
  for (uint32_t mask = 0; mask < 0x100; ++mask) {
    std::vector<uint32_t> expected;
    for (size_t i = 1; i < std::size(kRows); ++i) {
      if ((mask & kRows[i].display) != 0) expected.push_back(kRows[i].type);
    }
    std::vector<uint32_t> types;
    EXPECT_EQ(IntelTypesOfDisplays(mask, &types), !expected.empty()) << mask;
    EXPECT_EQ(types, expected) << mask;
  }
}

TEST(IntelDeviceTypes, TypesAreAppended) {
  std::vector<uint32_t> types = {99};
  EXPECT_FALSE(IntelTypesOfDisplays(0, &types));
  EXPECT_FALSE(IntelTypesOfDisplays(0xFFFFFF80, &types));
  EXPECT_TRUE(IntelTypesOfDisplays(0x10, &types));
  EXPECT_EQ(types, (std::vector<uint32_t>{99, 5}));
}

}  // namespace
