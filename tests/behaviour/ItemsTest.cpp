// The list of modes for what is connected, and the item that stands for the current mode.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/behaviour/ItemsBench.h"

namespace {

using Pictures = std::vector<std::string>;

using Items = ItemsBench;

// --- What the user sees, row by row.

TEST_F(Items, PanelAlone) {
  Start();
  EXPECT_EQ(For(0x01, 1), "1 0x1 icon 0\n");
}

TEST_F(Items, PanelAndCrt) {
  Start();
  EXPECT_EQ(For(0x03, 2),
            "1 0x1 icon 0\n"
            "2 0x3 icon 5\n"
            "1 0x2 icon 1\n"
            "4 0x3 icon 18\n");
}

TEST_F(Items, EveryOtherConnectorBesideThePanel) {
  Start();
  EXPECT_EQ(For(0x05, 2), "1 0x1 icon 0\n2 0x5 icon 6\n1 0x4 icon 2\n4 0x5 icon 18\n");
  EXPECT_EQ(For(0x09, 2), "1 0x1 icon 0\n2 0x9 icon 7\n1 0x8 icon 3\n4 0x9 icon 18\n");
  EXPECT_EQ(For(0x11, 2), "1 0x1 icon 0\n2 0x11 icon 9\n1 0x10 icon 8\n4 0x11 icon 18\n");
  EXPECT_EQ(For(0x21, 2), "1 0x1 icon 0\n2 0x21 icon 13\n1 0x20 icon 12\n4 0x21 icon 18\n");
  EXPECT_EQ(For(0x41, 2), "1 0x1 icon 0\n2 0x41 icon 15\n1 0x40 icon 14\n4 0x41 icon 18\n");
}

TEST_F(Items, PanelCrtAndHdmiWithoutTripleSupport) {
  Start();
  EXPECT_EQ(For(0x13, 3),
            "1 0x1 icon 0\n"
            "2 0x3 icon 5\n"
            "1 0x2 icon 1\n"
            "2 0x11 icon 9\n"
            "1 0x10 icon 8\n"
            "4 0x3 icon 19\n"
            "4 0x11 icon 21\n");
}

TEST_F(Items, PanelCrtAndHdmiWithTripleSupport) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x13, 3),
            "1 0x1 icon 0\n"
            "512 0x13 icon 26\n"
            "1024 0x13 icon 23\n"
            "1 0x2 icon 1\n"
            "1 0x10 icon 8\n");
}

TEST_F(Items, PanelCrtAndDisplayPortOnTwoAdapters) {
  bench.script->vendor = kVendorHybrid;
  Start();
  EXPECT_EQ(For(0x23, 3),
            "1 0x1 icon 0\n"
            "128 0x33 icon 16\n"
            "256 0x33 icon 17\n"
            "1 0x2 icon 1\n"
            "1 0x20 icon 12\n");
}

TEST_F(Items, FourDisplaysWithoutTripleSupport) {
  Start();
  EXPECT_EQ(For(0x33, 4),
            "1 0x1 icon 0\n"
            "2 0x3 icon 5\n"
            "1 0x2 icon 1\n"
            "2 0x11 icon 9\n"
            "1 0x10 icon 8\n"
            "2 0x21 icon 13\n"
            "1 0x20 icon 12\n"
            "4 0x3 icon 19\n"
            "4 0x11 icon 21\n"
            "4 0x21 icon 20\n");
}

TEST_F(Items, FourDisplaysWithTripleSupport) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x33, 4),
            "1 0x1 icon 0\n"
            "512 0x13 icon 26\n"
            "512 0x23 icon 27\n"
            "512 0x31 icon 28\n"
            "1024 0x13 icon 23\n"
            "1024 0x23 icon 24\n"
            "1024 0x31 icon 25\n"
            "1 0x2 icon 1\n"
            "1 0x10 icon 8\n"
            "1 0x20 icon 12\n");
}

TEST_F(Items, TripleRowsWithDviAsTheThirdDisplay) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x0B, 3),
            "1 0x1 icon 0\n"
            "512 0xb icon 26\n"
            "1024 0xb icon 23\n"
            "1 0x2 icon 1\n"
            "1 0x8 icon 3\n");
  EXPECT_EQ(For(0x29, 3),
            "1 0x1 icon 0\n"
            "512 0x29 icon 28\n"
            "1024 0x29 icon 25\n"
            "1 0x8 icon 3\n"
            "1 0x20 icon 12\n");
}

// --- Masks and counts.

TEST_F(Items, NoDisplayCountedClearsTheListAndFails) {
  Start();
  For(0x03, 2);
  EXPECT_EQ(For(0x03, 0), "refused");
  EXPECT_EQ(bench.Items(), "");
}

TEST_F(Items, AnUnknownBitGivesNothing) {
  Start();
  EXPECT_EQ(For(0x81, 1), "1 0x1 icon 0\n");
  EXPECT_EQ(For(0x80, 1), "");
}

TEST_F(Items, GeneralExtendedItemTakesTheWholeMaskOfTwoDisplays) {
  Start();
  EXPECT_EQ(For(0x83, 2), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x83 icon 18\n");
}

TEST_F(Items, TheCountDecidesOverTheMask) {
  Start();
  EXPECT_EQ(For(0x03, 1), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n");  // no extended item
  EXPECT_EQ(For(0x03, 3), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x3 icon 19\n");
}

TEST_F(Items, ExtendedItemsOfThreeDisplaysShareThePictureOfHdmiAndDvi) {
  Start();
  const std::string items = For(0x19, 3);
  EXPECT_NE(items.find("4 0x11 icon 21\n4 0x9 icon 21\n"), std::string::npos) << items;
}

TEST_F(Items, AdvancedItemsAreThereWhateverIsConnected) {
  bench.script->vendor = kVendorHybrid;
  Start();
  EXPECT_EQ(For(0x0C, 3), "128 0x33 icon 16\n256 0x33 icon 17\n1 0x8 icon 3\n");
}

TEST_F(Items, TwoAdaptersWithTwoDisplaysHaveTheOrdinaryList) {
  bench.script->vendor = kVendorHybrid;
  Start();
  EXPECT_EQ(For(0x03, 2), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x3 icon 18\n");
}

TEST_F(Items, TripleSupportWithTwoDisplaysHasTheOrdinaryList) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x03, 2), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x3 icon 18\n");
}

TEST_F(Items, IndexFollowsTheListsLength) {
  Start();
  For(0x13, 3);
  const std::vector<ItemState> items = bench.State().items;
  ASSERT_EQ(items.size(), 7u);
  for (uint32_t i = 0; i != 7; ++i) {
    EXPECT_EQ(items[i].index, i);
    EXPECT_EQ(items[i].selected, 0u);
    EXPECT_EQ(items[i].is_presentation, 0u);
    EXPECT_TRUE(items[i].has_image);
  }
}

TEST_F(Items, APresentationItemIsACloneOfItsOwnKind) {
  Start();
  For(0x03, 2);
  ASSERT_TRUE(bench.box().AddPresentationItem(11, 0x03, 64));
  const ItemState item = bench.State().items.back();
  EXPECT_EQ(item.mode, 2u);
  EXPECT_EQ(item.displays, 3u);
  EXPECT_EQ(item.is_presentation, 1u);
  EXPECT_EQ(item.presentation_type, 64u);
  EXPECT_EQ(item.icon, 11u);
  EXPECT_EQ(item.index, 4u);
}

// --- Keys of remembered settings.

TEST_F(Items, KeysAreRegisteredForEveryRowAlsoThoseWithoutAnItem) {
  Start();
  For(0x01, 1);
  const std::vector<SettingsKey> keys = bench.State().settings_keys;
  ASSERT_EQ(keys.size(), 17u);  // 18 rows, two of them with the same mode and mask
  EXPECT_EQ(keys[1].mode, 2u);
  EXPECT_EQ(keys[1].displays, 3u);
  EXPECT_EQ(keys[1].section, "2,3 | CRT Monitor,Panel");
  EXPECT_EQ(keys[16].mode, 4u);
  EXPECT_EQ(keys[16].displays, 0x41u);
  EXPECT_EQ(keys[16].section, "4,65 | CRT Monitor,Panel");
  For(0x01, 1);
  EXPECT_EQ(bench.State().settings_keys.size(), 17u);
}

TEST_F(Items, KeysOfTheTwoAdapterList) {
  bench.script->vendor = kVendorHybrid;
  Start();
  For(0x23, 3);
  const std::vector<SettingsKey> keys = bench.State().settings_keys;
  ASSERT_EQ(keys.size(), 7u);
  EXPECT_EQ(keys[1].section, "128,51 | CRT Monitor,Panel");
  EXPECT_EQ(keys[5].section, "1,16 | CRT Monitor,Panel");
}

// --- Windows editions and keys that take items away.

TEST(ItemsOnStarter, HaveNoExtendedItem) {
  SessionBench bench("win7starter intel: internal 1366x768 active, crt 1024x768");
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  EXPECT_EQ(bench.Items(), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n");
  ASSERT_TRUE(bench.box().PrepareDMItems(0x13, 3));
  EXPECT_EQ(bench.Items().find("4 0x"), std::string::npos);
}

TEST(ItemsOnStarter, HaveNoTripleExtendedRowAndRegisterNoKeyForIt) {
  SessionBench bench("win7starter intel: internal 1366x768 active, crt 1024x768");
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  ASSERT_TRUE(bench.Start<FakeAmdMonitor>());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x33, 4));
  EXPECT_EQ(bench.Items(),
            "1 0x1 icon 0\n"
            "1024 0x13 icon 23\n"
            "1024 0x23 icon 24\n"
            "1024 0x31 icon 25\n"
            "1 0x2 icon 1\n"
            "1 0x10 icon 8\n"
            "1 0x20 icon 12\n");
  EXPECT_EQ(bench.State().settings_keys.size(), 10u);
}

TEST(ItemsOnXP, HaveExtendedItemsSinceItHasNoEditions) {
  SessionBench bench("xp intel: internal 1366x768 active, crt 1024x768");
  ASSERT_TRUE(bench.Start());
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  EXPECT_NE(bench.Items().find("4 0x3 icon 18\n"), std::string::npos);
}

TEST_F(Items, HaveNoExtendedItemWhereTheKeyForbidsIt) {
  bench.machine.Config("Settings", "Disable In Extend Mode", 1);
  Start();
  EXPECT_EQ(For(0x03, 2), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n");
}

// --- Pictures.

TEST_F(Items, ShowThePicturesOfTheirRows) {
  bench.script->connected = 0x7F;
  bench.script->connected_count = 7;
  Start();
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(),
            (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "NB-TV.png", "TV.png", "NB-DVI.png",
                      "DVI.png", "NB-HDMI.png", "HDMI.png", "NB-DP.png", "DP.png", "NB-WiDi.png",
                      "WiDi.png", "Extend2CRT.png", "Extend2HDMI.png", "Extend2HDMI.png",
                      "Extend2DP.png", "Extend2WiDi.png"}));
}

TEST_F(Items, ShowTheTriplePictures) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  bench.script->connected = 0x33;
  bench.script->connected_count = 4;
  Start<FakeAmdMonitor>();
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(),
            (Pictures{"NB.png", "3Extend_DSub_HDMI.png", "3Extend_DSub_DP.png",
                      "3Extend_HDMI_DP.png", "3Clone_DSub_HDMI.png", "3Clone_DSub_DP.png",
                      "3Clone_HDMI_DP.png", "CRT.png", "HDMI.png", "DP.png"}));
}

struct AdvancedCase {
  uint32_t connected;
  const char* first;
  const char* second;
};
constexpr AdvancedCase kAdvancedCases[] = {
    {0x33, "AdvancedP1DSUBDPHDMI.png", "AdvancedP2DSUBDPHDMI.png"},
    {0x31, "AdvancedP1DPHDMI.png", "AdvancedP2DPHDMI.png"},
    {0x23, "AdvancedP1DP.png", "AdvancedP2DP.png"},
    {0x13, "AdvancedP1.png", "AdvancedP2.png"},
    {0x29, "AdvancedP1.png", "AdvancedP2.png"},
};

TEST_F(Items, ShowTheAdvancedPicturesByWhatIsConnected) {
  bench.script->vendor = kVendorHybrid;
  bench.script->connected_count = 3;
  Start();
  for (const AdvancedCase& row : kAdvancedCases) {
    bench.script->connected = row.connected;
    ASSERT_TRUE(bench.ostrel().Run());
    const Pictures pictures = bench.ItemPictures();
    ASSERT_GE(pictures.size(), 3u);
    EXPECT_EQ(pictures[1], row.first) << std::hex << row.connected;
    EXPECT_EQ(pictures[2], row.second) << std::hex << row.connected;
    bench.ostrel().Cancel();
  }
}

TEST_F(Items, ShowTelevisionPicturesForHdmiAndDviOnIntelWhereTheKeySaysSo) {
  bench.machine.Config("Settings:Intel", "HDMI Icon Use TV Icon", 1);
  bench.script->connected = 0x19;
  bench.script->connected_count = 3;
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x11;
  Start();
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(), (Pictures{"NB.png", "NB-TV.png", "TV.png", "NB-TV.png", "TV.png",
                                            "Extend2HDMI.png", "Extend2HDMI.png"}));
  // The rows stay those that were chosen, and the current mode finds its item.
  EXPECT_EQ(bench.Items(),
            "1 0x1 icon 0\n"
            "2 0x9 icon 7\n"
            "1 0x8 icon 3\n"
            "2 0x11 icon 9\n"
            "1 0x10 icon 8\n"
            "4 0x11 icon 21\n"
            "4 0x9 icon 21\n");
  EXPECT_EQ(bench.Flags(), "0001000");
}

TEST_F(Items, KeepTheirPicturesOnOtherVendorsWhateverTheKeySays) {
  bench.machine.Config("Settings:Intel", "HDMI Icon Use TV Icon", 1);
  bench.script->vendor = kVendorWin7CCD;
  bench.script->connected = 0x11;
  Start();
  ASSERT_TRUE(bench.ostrel().Run());
  EXPECT_EQ(bench.ItemPictures(), (Pictures{"NB.png", "NB-HDMI.png", "HDMI.png", "Extend.png"}));
}

// --- The item of the current mode.

class CurrentItem : public Items {};

TEST_F(CurrentItem, IsTheOneWithThatModeAndThoseDisplays) {
  StartAt(0x13, 3, IMMonitor::DM_CLONE, 0x11);
  EXPECT_EQ(bench.Flags(), "0001000");
  EXPECT_EQ(bench.State().selected.value, 3u);
  EXPECT_EQ(bench.State().opened.value, 3u);
}

TEST_F(CurrentItem, OfExtendedDesktopIsTheOneOnThoseDisplays) {
  StartAt(0x13, 3, IMMonitor::DM_EXTEND, 0x11);
  EXPECT_EQ(bench.Flags(), "0000001");
}

TEST_F(CurrentItem, OfExtendedDesktopOnUnlistedDisplaysIsNone) {
  StartAt(0x13, 3, IMMonitor::DM_EXTEND, 0x12);
  EXPECT_EQ(bench.Flags(), "0000000");
  EXPECT_EQ(bench.State().selected.value, SIndex::BadValue);
  EXPECT_EQ(bench.State().opened.value, SIndex::BadValue);
  bench.ostrel().Run();
  EXPECT_EQ(bench.Flags(), "1000000");
}

TEST_F(CurrentItem, OfTwoAdaptersIsTheOneOfTheMode) {
  bench.script->vendor = kVendorHybrid;
  StartAt(0x23, 3, IMMonitor::DM_ADVANCED_P2, 0x23);
  EXPECT_EQ(bench.Flags(), "00100");
}

TEST_F(CurrentItem, OfTwoAdaptersIsNoneWithTwoDisplaysActive) {
  bench.script->vendor = kVendorHybrid;
  StartAt(0x23, 3, IMMonitor::DM_ADVANCED_P2, 0x21);
  EXPECT_EQ(bench.Flags(), "00000");
}

TEST_F(CurrentItem, IsThePresentationThatIsRemembered) {
  bench.Remember("Active Display Mode", "Presentation Mode", "64");
  Start();
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  ASSERT_TRUE(bench.box().AddPresentationItem(11, 0x03, 64));
  EXPECT_TRUE(bench.box().SelectCurrentItem(IMMonitor::DM_CLONE, 0x03));
  EXPECT_EQ(bench.Flags(), "00001");
  EXPECT_EQ(bench.State().selected.value, 4u);
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), "64");
}

TEST_F(CurrentItem, ForgetsARememberedPresentationThatFitsNoItem) {
  bench.Remember("Active Display Mode", "Presentation Mode", "64");
  StartAt(0x03, 2, IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(bench.Flags(), "0100");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "2");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Active Displays"), "3");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), "0");
}

TEST_F(CurrentItem, DoesNotTouchTheFileForAnyOtherRememberedType) {
  bench.Remember("Active Display Mode", "Presentation Mode", "16");
  StartAt(0x03, 2, IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(bench.Flags(), "0100");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), "16");
}

TEST_F(CurrentItem, DoesNotReadTheFileForAdvancedModes) {
  bench.Remember("Active Display Mode", "Presentation Mode", "64");
  bench.script->vendor = kVendorHybrid;
  StartAt(0x23, 3, IMMonitor::DM_ADVANCED_P1, 0x23);
  EXPECT_EQ(bench.Flags(), "01000");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), "64");
}

TEST_F(CurrentItem, OfAnExtendedDesktopKeepsTheRememberedPresentationThatMatchesItByMode) {
  bench.Remember("Active Display Mode", "Presentation Mode", "64");
  StartAt(0x03, 2, IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(bench.Flags(), "0001");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Presentation Mode"), "64");
}

TEST_F(CurrentItem, CannotBeFoundInAnEmptyList) {
  bench.machine.SetCommandLine(L"host.exe --enable-dcheck");
  Start();
  SIndex index;
  index.value = 3;
  bench.box().SetSelected(index);
  EXPECT_FALSE(bench.box().SelectCurrentItem(IMMonitor::DM_SINGLE, 0x01));
  EXPECT_EQ(bench.State().selected.value, SIndex::BadValue);
  EXPECT_TRUE(bench.LogHas("Check failed: !m_items.empty(). "));
}

TEST_F(CurrentItem, IsTheLastOfSeveralMatchesAndAllKeepTheirFlags) {
  Start();
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  ASSERT_TRUE(bench.box().AddPlainItem(0, IMMonitor::DM_SINGLE, 0x01));
  EXPECT_TRUE(bench.box().SelectCurrentItem(IMMonitor::DM_SINGLE, 0x01));
  EXPECT_EQ(bench.Flags(), "10001");
  EXPECT_EQ(bench.State().selected.value, 4u);
}

}  // namespace
