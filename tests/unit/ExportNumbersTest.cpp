#include "session/ExportNumbers.h"

#include <gtest/gtest.h>

namespace {

TEST(ExportNumbers, FiveModesHaveANumber) {
  EXPECT_EQ(ExportedMode(DisplayNumbers::DM_SINGLE), 1u);
  EXPECT_EQ(ExportedMode(DisplayNumbers::DM_CLONE), 2u);
  EXPECT_EQ(ExportedMode(DisplayNumbers::DM_EXTEND), 3u);
  EXPECT_EQ(ExportedMode(DisplayNumbers::DM_HSPAN), 4u);
  EXPECT_EQ(ExportedMode(DisplayNumbers::DM_VSPAN), 5u);
}

TEST(ExportNumbers, AnyOtherModeIsZero) {
  for (const uint32_t mode : {0u, 3u, 5u, 32u, 64u, 128u, 256u, 512u, 1024u, 0x80000001u, ~0u}) {
    EXPECT_EQ(ExportedMode(mode), 0u) << mode;
  }
}

TEST(ExportNumbers, FiveVendorsHaveACode) {
  EXPECT_EQ(ExportedVendor(0x8086), 1u);
  EXPECT_EQ(ExportedVendor(0x1002), 2u);
  EXPECT_EQ(ExportedVendor(0x10DE), 3u);
  EXPECT_EQ(ExportedVendor(0x1106), 4u);
  EXPECT_EQ(ExportedVendor(0x1039), 5u);
}

TEST(ExportNumbers, AnyOtherVendorIsZeroPseudoVendorsIncluded) {
  for (const uint32_t vendor : {0u, 0x045Eu, 0xFFFFu, 0x1414u, 0x18086u}) {
    EXPECT_EQ(ExportedVendor(vendor), 0u) << vendor;
  }
}

TEST(ExportNumbers, FourLowBitsOfAMaskPass) {
  for (uint32_t mask = 0; mask < 0x200; ++mask) EXPECT_EQ(ExportedMask(mask), mask & 0xF) << mask;
  EXPECT_EQ(ExportedMask(0xFFFFFFF0), 0u);
  EXPECT_EQ(ExportedMask(0xFFFFFFFF), 0xFu);
}

}  // namespace
