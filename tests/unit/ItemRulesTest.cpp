#include "session/catalogue/ItemRules.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "Common/MultiMonitor/DisplayNumbers.h"
#include "session/catalogue/ItemTables.h"
#include "session/catalogue/SIndex.h"

namespace {

using Numbers = DisplayNumbers;
constexpr uint32_t kBad = SIndex::BadValue;

DMItem Item(uint32_t mode, uint32_t displays, uint32_t type = 0, uint32_t selected = 0) {
  DMItem item;
  item.mode = mode;
  item.displays = displays;
  item.presentation_type = type;
  item.selected = selected;
  return item;
}

std::vector<DMItem> List(std::vector<DMItem> items) {
  for (size_t i = 0; i != items.size(); ++i) items[i].index = static_cast<uint32_t>(i);
  return items;
}

std::string Flags(const std::vector<DMItem>& items) {
  std::string flags;
  for (const DMItem& item : items) flags += item.selected != 0 ? '1' : '0';
  return flags;
}

// --- The tables, row by row.

struct Row {
  uint32_t mode;
  uint32_t mask;
  uint32_t icon;
};

template <size_t kRows, size_t kExpected>
void ExpectRows(const catalogue::Candidate (&table)[kRows], const Row (&expected)[kExpected]) {
  static_assert(kRows == kExpected, "the table has as many rows as expected");
  for (size_t i = 0; i != kRows; ++i) {
    EXPECT_EQ(table[i].mode, expected[i].mode) << "row " << i + 1;
    EXPECT_EQ(table[i].mask, expected[i].mask) << "row " << i + 1;
    EXPECT_EQ(table[i].icon, expected[i].icon) << "row " << i + 1;
  }
}

TEST(ItemTables, OrdinaryCandidatesStandInTheirOrder) {
  ExpectRows(catalogue::kOrdinaryCandidates, {{1, 0x01, 0},
                                              {2, 0x03, 5},
                                              {1, 0x02, 1},
                                              {2, 0x05, 6},
                                              {1, 0x04, 2},
                                              {2, 0x09, 7},
                                              {1, 0x08, 3},
                                              {2, 0x11, 9},
                                              {1, 0x10, 8},
                                              {2, 0x21, 13},
                                              {1, 0x20, 12},
                                              {2, 0x41, 15},
                                              {1, 0x40, 14},
                                              {4, 0x03, 18},
                                              {4, 0x03, 19},
                                              {4, 0x11, 21},
                                              {4, 0x21, 20},
                                              {4, 0x41, 22}});
}

TEST(ItemTables, HybridCandidatesStandInTheirOrder) {
  ExpectRows(catalogue::kHybridCandidates, {{1, 0x01, 0},
                                            {128, 0x33, 16},
                                            {256, 0x33, 17},
                                            {1, 0x02, 1},
                                            {1, 0x08, 3},
                                            {1, 0x10, 8},
                                            {1, 0x20, 12}});
}

TEST(ItemTables, TripleCandidatesStandInTheirOrder) {
  ExpectRows(catalogue::kTripleCandidates, {{1, 0x01, 0},
                                            {512, 0x13, 26},
                                            {512, 0x23, 27},
                                            {512, 0x31, 28},
                                            {512, 0x29, 28},
                                            {512, 0x0B, 26},
                                            {1024, 0x13, 23},
                                            {1024, 0x23, 24},
                                            {1024, 0x31, 25},
                                            {1024, 0x29, 25},
                                            {1024, 0x0B, 23},
                                            {1, 0x02, 1},
                                            {1, 0x08, 3},
                                            {1, 0x10, 8},
                                            {1, 0x20, 12}});
}

TEST(ItemTables, ExtendCandidatesStandInTheirOrderAndDviSharesTheHdmiPicture) {
  const uint32_t expected[][2] = {{0x03, 19}, {0x11, 21}, {0x09, 21}, {0x21, 20}, {0x41, 22}};
  ASSERT_EQ(std::size(catalogue::kExtendCandidates), std::size(expected));
  for (size_t i = 0; i != std::size(expected); ++i) {
    EXPECT_EQ(catalogue::kExtendCandidates[i].mask, expected[i][0]) << "row " << i + 1;
    EXPECT_EQ(catalogue::kExtendCandidates[i].icon, expected[i][1]) << "row " << i + 1;
  }
}

TEST(ItemTables, IconRowsNameTheirFiles) {
  const wchar_t* const expected[] = {
      L"NB",
      L"CRT",
      L"TV",
      L"DVI",
      L"LCD",
      L"NB-CRT",
      L"NB-TV",
      L"NB-DVI",
      L"HDMI",
      L"NB-HDMI",
      L"p800x600",
      L"p1024x768",
      L"DP",
      L"NB-DP",
      L"WiDi",
      L"NB-WiDi",
      L"AdvancedP1",
      L"AdvancedP2",
      L"Extend",
      L"Extend2CRT",
      L"Extend2DP",
      L"Extend2HDMI",
      L"Extend2WiDi",
      L"3Clone_DSub_HDMI",
      L"3Clone_DSub_DP",
      L"3Clone_HDMI_DP",
      L"3Extend_DSub_HDMI",
      L"3Extend_DSub_DP",
      L"3Extend_HDMI_DP",
  };
  ASSERT_EQ(std::size(catalogue::kIconFiles), std::size(expected));
  for (size_t i = 0; i != std::size(expected); ++i) {
    EXPECT_EQ(std::wstring(catalogue::kIconFiles[i]),
              std::wstring(L"OstrelRes\\") + expected[i] + L".png")
        << "row " << i;
  }
}

// --- Small decisions.

TEST(ItemRules, ACandidateFitsWhenAllOfItsDisplaysAreConnected) {
  EXPECT_TRUE(catalogue::IsConnected(0x03, 0x13));
  EXPECT_FALSE(catalogue::IsConnected(0x03, 0x11));
  EXPECT_FALSE(catalogue::IsConnected(0x80, 0x7F));
}

TEST(ItemRules, OnlyAClonesOfHdmiOrDviIsADigitalClone) {
  EXPECT_TRUE(catalogue::IsDigitalClone(Numbers::DM_CLONE, 0x11));
  EXPECT_TRUE(catalogue::IsDigitalClone(Numbers::DM_CLONE, 0x09));
  EXPECT_FALSE(catalogue::IsDigitalClone(Numbers::DM_CLONE, 0x03));
  EXPECT_FALSE(catalogue::IsDigitalClone(Numbers::DM_CLONE, 0x21));
  EXPECT_FALSE(catalogue::IsDigitalClone(Numbers::DM_SINGLE, 0x10));
}

std::wstring Advanced(uint32_t mode, uint32_t connected) {
  const wchar_t* const file = catalogue::AdvancedPictureFile(mode, connected);
  return file == nullptr ? L"row" : file;
}

TEST(ItemRules, AdvancedPicturesGoByWhatIsConnected) {
  EXPECT_EQ(Advanced(128, 0x33), L"OstrelRes\\AdvancedP1DSUBDPHDMI.png");
  EXPECT_EQ(Advanced(256, 0x33), L"OstrelRes\\AdvancedP2DSUBDPHDMI.png");
  EXPECT_EQ(Advanced(128, 0x31), L"OstrelRes\\AdvancedP1DPHDMI.png");
  EXPECT_EQ(Advanced(256, 0x30), L"OstrelRes\\AdvancedP2DPHDMI.png");
  EXPECT_EQ(Advanced(128, 0x23), L"OstrelRes\\AdvancedP1DP.png");
  EXPECT_EQ(Advanced(256, 0x23), L"OstrelRes\\AdvancedP2DP.png");
  EXPECT_EQ(Advanced(256, 0x2B), L"OstrelRes\\AdvancedP2DP.png");  // DVI does not count
  EXPECT_EQ(Advanced(128, 0x13), L"row");
  EXPECT_EQ(Advanced(128, 0x21), L"row");
  EXPECT_EQ(Advanced(256, 0x01), L"row");
}

TEST(ItemRules, TelevisionPicturesReplaceFourRowsOnly) {
  for (uint32_t row = 0; row != catalogue::kIconCount; ++row) {
    uint32_t expected = row;
    if (row == 3 || row == 8) expected = 2;
    if (row == 7 || row == 9) expected = 6;
    EXPECT_EQ(catalogue::TelevisionPictureRow(row), expected) << "row " << row;
  }
}

TEST(ItemRules, PresentationTypesAre32And64) {
  EXPECT_TRUE(catalogue::IsPresentationType(32));
  EXPECT_TRUE(catalogue::IsPresentationType(64));
  EXPECT_FALSE(catalogue::IsPresentationType(0));
  EXPECT_FALSE(catalogue::IsPresentationType(96));
}

// --- IsModeUsable.

TEST(IsModeUsable, RefusesNoModeAndNoDisplays) {
  EXPECT_FALSE(catalogue::IsModeUsable(0, 1, 3, 2));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_SINGLE, 0, 3, 2));
}

TEST(IsModeUsable, TakesAdvancedModesWithoutTest) {
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_ADVANCED_P1, 0x20, 0, 0));
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_ADVANCED_P2, 0x20, 0, 0));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_ADVANCED_P1, 0, 0x33, 3));
}

TEST(IsModeUsable, WantsTwoDisplaysForCloneAndExtend) {
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_CLONE, 0x01, 0x03, 2));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_EXTEND, 0x02, 0x03, 2));
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_CLONE, 0x03, 0x03, 2));
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_EXTEND, 0x03, 0x03, 2));
}

TEST(IsModeUsable, CountsAmongTheSixteenLowBitsOnly) {
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_SINGLE, 0x10000, 0x10001, 2));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_CLONE, 0x10001, 0x10001, 2));
}

TEST(IsModeUsable, HasNoCountForOtherModes) {
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_TRIPLE_CLONE, 0x01, 0x01, 1));
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_HSPAN, 0x01, 0x01, 1));
}

TEST(IsModeUsable, RefusesWithNothingConnected) {
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_SINGLE, 1, 1, 0));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_SINGLE, 1, 0, 1));
}

TEST(IsModeUsable, WantsEveryDisplayConnected) {
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_SINGLE, 0x10, 0x03, 2));
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_EXTEND, 0x11, 0x03, 2));
}

TEST(IsModeUsable, HoldsTheCountAgainstTwoForCloneOnly) {
  EXPECT_FALSE(catalogue::IsModeUsable(Numbers::DM_CLONE, 0x03, 0x03, 1));
  EXPECT_TRUE(catalogue::IsModeUsable(Numbers::DM_EXTEND, 0x03, 0x03, 1));
}

// --- The matcher.

TEST(SelectMatchingItem, MatchesModeDisplaysAndPresentationType) {
  auto items = List({Item(1, 1), Item(2, 3), Item(2, 3, 64), Item(4, 3)});
  EXPECT_EQ(catalogue::SelectMatchingItem(2, 3, 0, kBad, &items), 1u);
  EXPECT_EQ(Flags(items), "0100");
  EXPECT_EQ(catalogue::SelectMatchingItem(2, 3, 64, kBad, &items), 2u);
  EXPECT_EQ(Flags(items), "0010");
}

TEST(SelectMatchingItem, LeavesThePositionAndClearsTheFlagsWithoutAMatch) {
  auto items = List({Item(1, 1, 0, 1), Item(2, 3, 0, 1)});
  EXPECT_EQ(catalogue::SelectMatchingItem(2, 5, 0, kBad, &items), kBad);
  EXPECT_EQ(Flags(items), "00");
}

TEST(SelectMatchingItem, LastOfSeveralMatchesGivesThePositionAndAllKeepTheirFlags) {
  auto items = List({Item(1, 1), Item(1, 2), Item(1, 1)});
  EXPECT_EQ(catalogue::SelectMatchingItem(1, 1, 0, kBad, &items), 2u);
  EXPECT_EQ(Flags(items), "101");
}

TEST(SelectMatchingItem, DoesNotLookAtThePresentationTypeInExtendedMode) {
  auto items = List({Item(1, 1), Item(4, 3)});
  EXPECT_EQ(catalogue::SelectMatchingItem(4, 3, 64, kBad, &items), 1u);
  EXPECT_EQ(Flags(items), "01");
}

TEST(SelectMatchingItem, ExtendItemOnOtherDisplaysKeepsItsFlag) {
  auto items = List({Item(4, 0x03, 0, 1), Item(4, 0x11), Item(4, 0x21), Item(1, 1, 0, 1)});
  EXPECT_EQ(catalogue::SelectMatchingItem(4, 0x11, 0, kBad, &items), 1u);
  EXPECT_EQ(Flags(items), "1100");
}

TEST(SelectMatchingItem, ExtendItemLosesItsFlagWhenAnotherModeIsSought) {
  auto items = List({Item(4, 0x03, 0, 1), Item(1, 1)});
  EXPECT_EQ(catalogue::SelectMatchingItem(1, 1, 0, kBad, &items), 1u);
  EXPECT_EQ(Flags(items), "01");
}

TEST(SelectAdvancedItem, MatchesByModeWithThreeDisplaysOrMore) {
  auto items = List({Item(1, 1, 0, 1), Item(128, 0x33), Item(256, 0x33)});
  EXPECT_EQ(catalogue::SelectAdvancedItem(256, 0x13, kBad, &items), 2u);
  EXPECT_EQ(Flags(items), "001");
  EXPECT_EQ(catalogue::SelectAdvancedItem(128, 0x33, kBad, &items), 1u);
  EXPECT_EQ(Flags(items), "010");
}

TEST(SelectAdvancedItem, MatchesNothingWithFewerThanThreeDisplays) {
  auto items = List({Item(1, 1, 0, 1), Item(128, 0x33, 0, 1)});
  EXPECT_EQ(catalogue::SelectAdvancedItem(128, 0x03, kBad, &items), kBad);
  EXPECT_EQ(Flags(items), "00");
}

TEST(SelectAdvancedItem, CounterStartsOverBehindFourteen) {
  std::vector<DMItem> items(16, Item(1, 1));
  items[15] = Item(256, 0x33);
  EXPECT_EQ(catalogue::SelectAdvancedItem(256, 0x33, kBad, &items), 0u);
  EXPECT_EQ(items[15].selected, 1u);
  EXPECT_EQ(items[0].selected, 0u);
}

TEST(SelectAnyExtendItem, FlagsAllAndTakesTheLast) {
  auto items = List({Item(1, 1), Item(4, 0x03), Item(4, 0x11), Item(1, 2)});
  EXPECT_EQ(catalogue::SelectAnyExtendItem(kBad, &items), 2u);
  EXPECT_EQ(Flags(items), "0110");
  auto none = List({Item(1, 1)});
  EXPECT_EQ(catalogue::SelectAnyExtendItem(kBad, &none), kBad);
}

}  // namespace
