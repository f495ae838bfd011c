// The pop-up's list and its highlight while the DisplayLink service is there: one item of extended
// desktop stands for all displays.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/behaviour/ItemsBench.h"

namespace {

class DisplayLinkItems : public ItemsBench {
 protected:
  explicit DisplayLinkItems(
      const std::string& text = "win7 intel: internal 1366x768 active, crt 1024x768")
      : ItemsBench(text) {
    SetService(true);
  }

  void SetService(bool there) {
    bench.machine.model().services.clear();
    if (there) bench.machine.model().services.push_back({"DisplayLinkService", false});
  }
};

constexpr char kPanelCrtAndHdmi[] =
    "1 0x1 icon 0\n"
    "2 0x3 icon 5\n"
    "1 0x2 icon 1\n"
    "2 0x11 icon 9\n"
    "1 0x10 icon 8\n";

// --- The list

TEST_F(DisplayLinkItems, OfOneDisplayHaveNoExtendedDesktop) {
  Start();
  EXPECT_EQ(For(0x01, 1), "1 0x1 icon 0\n");
}

TEST_F(DisplayLinkItems, OfTwoDisplaysAreTheUsualOnes) {
  Start();
  EXPECT_EQ(For(0x03, 2), "1 0x1 icon 0\n2 0x3 icon 5\n1 0x2 icon 1\n4 0x3 icon 18\n");
}

TEST_F(DisplayLinkItems, OneItemOfExtendedDesktopStandsForThreeDisplaysOrMore) {
  Start();
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x13 icon 18\n");
  EXPECT_EQ(For(0x33, 4), std::string(kPanelCrtAndHdmi) +
                              "2 0x21 icon 13\n1 0x20 icon 12\n"
                              "4 0x33 icon 18\n");
  SetService(false);
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x3 icon 19\n4 0x11 icon 21\n");
}

TEST_F(DisplayLinkItems, OfDisplaysWithoutAFlagCountForTheOneItem) {
  Start();
  EXPECT_EQ(For(0x01, 2), "1 0x1 icon 0\n4 0x1 icon 18\n");
}

TEST_F(DisplayLinkItems, OfTwoAdaptersAreTheOrdinaryOnes) {
  bench.script->vendor = kVendorHybrid;
  Start();
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x13 icon 18\n");
  SetService(false);
  EXPECT_EQ(For(0x13, 3),
            "1 0x1 icon 0\n128 0x33 icon 16\n256 0x33 icon 17\n1 0x2 icon 1\n"
            "1 0x10 icon 8\n");
}

TEST_F(DisplayLinkItems, WhereThreeDisplaysCanBeDrivenAreTheOrdinaryOnes) {
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x13 icon 18\n");
  SetService(false);
  EXPECT_EQ(For(0x13, 3),
            "1 0x1 icon 0\n512 0x13 icon 26\n1024 0x13 icon 23\n1 0x2 icon 1\n"
            "1 0x10 icon 8\n");
}

TEST_F(DisplayLinkItems, OfferPresentationsWhereThreeDisplaysCanBeDriven) {
  bench.machine.Config("PM:1024x768", "Support This Mode", 1);
  bench.script->vendor = kVendorAmd;
  bench.script->sls_grid = true;
  Start<FakeAmdMonitor>();
  EXPECT_EQ(For(0x13, 3),
            std::string(kPanelCrtAndHdmi) + "2 0x3 icon 11 type 64\n4 0x13 icon 18\n");
  EXPECT_EQ(For(0x33, 4).find(" type "), std::string::npos);
  SetService(false);
  EXPECT_EQ(For(0x13, 3).find(" type "), std::string::npos);
}

TEST_F(DisplayLinkItems, RegisterNoKeysOfExtendedDesktop) {
  Start();
  For(0x13, 3);
  const std::vector<SettingsKey> keys = bench.State().settings_keys;
  EXPECT_EQ(keys.size(), 13u);
  for (const SettingsKey& key : keys) EXPECT_NE(key.mode, 4u) << key.section;
  SetService(false);
  For(0x13, 3);
  EXPECT_EQ(bench.State().settings_keys.size(), 17u);
}

TEST_F(DisplayLinkItems, HaveNoExtendedItemWhereTheKeyForbidsIt) {
  bench.machine.Config("Settings", "Disable In Extend Mode", 1);
  Start();
  EXPECT_EQ(For(0x13, 3), kPanelCrtAndHdmi);
}

class DisplayLinkItemsOnStarter : public DisplayLinkItems {
 protected:
  DisplayLinkItemsOnStarter()
      : DisplayLinkItems("win7starter intel: internal 1366x768 active, crt 1024x768") {}
};

TEST_F(DisplayLinkItemsOnStarter, HaveNoExtendedItem) {
  Start();
  EXPECT_EQ(For(0x13, 3), kPanelCrtAndHdmi);
}

class DisplayLinkItemsBeforeWindows7 : public DisplayLinkItems {
 protected:
  DisplayLinkItemsBeforeWindows7()
      : DisplayLinkItems("vista intel: internal 1366x768 active, crt 1024x768") {}
};

TEST_F(DisplayLinkItemsBeforeWindows7, AreThoseWithoutTheService) {
  Start();
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x3 icon 19\n4 0x11 icon 21\n");
}

class DisplayLinkItemsBesideAnotherVendor : public DisplayLinkItems {
 protected:
  DisplayLinkItemsBesideAnotherVendor()
      : DisplayLinkItems("win7 amd: internal 1366x768 active, crt 1024x768") {}
};

TEST_F(DisplayLinkItemsBesideAnotherVendor, AreThoseWithoutTheService) {
  ASSERT_TRUE(bench.Start(static_cast<uint16_t>(kVendorAmd)));
  EXPECT_EQ(For(0x13, 3), std::string(kPanelCrtAndHdmi) + "4 0x3 icon 19\n4 0x11 icon 21\n");
}

// --- The highlight

class DisplayLinkCurrentItem : public DisplayLinkItems {};

TEST_F(DisplayLinkCurrentItem, OfExtendedDesktopIsTheOneItemWhateverIsActive) {
  StartAt(0x13, 3, IMMonitor::DM_EXTEND, 0x11);
  EXPECT_EQ(bench.Items(), std::string(kPanelCrtAndHdmi) + "4 0x13 icon 18\n");
  EXPECT_EQ(bench.Flags(), "000001");
  EXPECT_EQ(bench.State().selected.value, 5u);
}

TEST_F(DisplayLinkCurrentItem, OfExtendedDesktopOnADockIsTheOneItem) {
  // The dock's display is not among the active ones.
  StartAt(0x03, 2, IMMonitor::DM_EXTEND, 0x01);
  EXPECT_EQ(bench.Flags(), "0001");
  EXPECT_EQ(bench.State().opened.value, 3u);
}

TEST_F(DisplayLinkCurrentItem, OfExtendedDesktopOnAllDisplaysIsFoundAsUsual) {
  StartAt(0x13, 3, IMMonitor::DM_EXTEND, 0x13);
  EXPECT_EQ(bench.Flags(), "000001");
}

TEST_F(DisplayLinkCurrentItem, OfAnotherModeOnUnlistedDisplaysIsNone) {
  StartAt(0x13, 3, IMMonitor::DM_CLONE, 0x12);
  EXPECT_EQ(bench.Flags(), "000000");
  EXPECT_EQ(bench.State().selected.value, SIndex::BadValue);
}

TEST_F(DisplayLinkCurrentItem, WithoutTheServiceExtendedDesktopOnUnlistedDisplaysIsNone) {
  SetService(false);
  StartAt(0x03, 2, IMMonitor::DM_EXTEND, 0x01);
  EXPECT_EQ(bench.Flags(), "0000");
}

TEST_F(DisplayLinkCurrentItem, IsTheLastOfSeveralExtendedOnesAndAllAreFlagged) {
  Start();
  ASSERT_TRUE(bench.box().PrepareDMItems(0x03, 2));
  ASSERT_TRUE(bench.box().AddPlainItem(19, IMMonitor::DM_EXTEND, 0x11));
  EXPECT_TRUE(bench.box().SelectCurrentItem(IMMonitor::DM_EXTEND, 0x09));
  EXPECT_EQ(bench.Flags(), "00011");
  EXPECT_EQ(bench.State().selected.value, 4u);
}

}  // namespace
