#include "Common/ConfigSection.h"

#include <gtest/gtest.h>

namespace {

std::wstring SectionOf(uint32_t mode, uint32_t displays) {
  std::wstring section;
  EXPECT_TRUE(GetModeSection(mode, displays, &section));
  return section;
}

TEST(GetModeSection, SingleWithThePanelAloneIsInternal) {
  EXPECT_EQ(SectionOf(1, 0x01), L"Single Internal");
  EXPECT_EQ(SectionOf(1, 0), L"Single Internal");
}

TEST(GetModeSection, SingleWithAnyExternalDisplayIsExternal) {
  for (const uint32_t display : {0x02u, 0x04u, 0x08u, 0x10u, 0x20u}) {
    EXPECT_EQ(SectionOf(1, display), L"Single External") << display;
    EXPECT_EQ(SectionOf(1, display | 0x01), L"Single External") << display;
  }
}

TEST(GetModeSection, TheWirelessBitIsNotAmongTheExternalOnes) {
  EXPECT_EQ(SectionOf(1, 0x40), L"Single Internal");
}

TEST(GetModeSection, CloneAndExtendHaveTheirOwnWhateverTheDisplays) {
  EXPECT_EQ(SectionOf(2, 0x01), L"Clone");
  EXPECT_EQ(SectionOf(2, 0x11), L"Clone");
  EXPECT_EQ(SectionOf(4, 0), L"Extend");
}

TEST(GetModeSection, AnyOtherModeReadsTheGeneralSection) {
  for (const uint32_t mode : {0u, 3u, 8u, 16u, 128u, 256u, 512u, 1024u}) {
    EXPECT_EQ(SectionOf(mode, 0x02), L"Settings") << mode;
  }
}

}  // namespace
