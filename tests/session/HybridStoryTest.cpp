// Presses of the hotkey on notebooks with two adapters: the panel and CRT on Intel's, DisplayPort
// and HDMI on NVIDIA's. The library as it ships, both drivers of the simulated machine.

#include "tests/session/Story.h"

namespace {

// The panel alone, by a supplied path: with three outputs or more there is no topology of that
// name.
constexpr char kPanelAlone[] =
    "SetDisplayConfig(paths=1 flags=0x660)=0\nSetDisplayConfig(paths=1 flags=0x6a0)=0\n";
// With two outputs there is.
constexpr char kPanelOfTwo[] =
    "SetDisplayConfig(paths=0 flags=0x41)=0\nSetDisplayConfig(paths=0 flags=0x81)=0\n";
constexpr char kNoGroups[] = "NvAPI_DISP_SetHCloneTopology(groups=none)=0\n";
constexpr char kCommit[] = "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";

std::string Group(const char* display) {
  return std::string("NvAPI_DISP_SetHCloneTopology(groups=[[[flags=3 target=0x100 internal] ") +
         "[flags=0 display=" + display + "]]])=0\n";
}

/// A device placed and stored: "3 1600x900x32@60 at 1366,0".
std::string Placed(const std::string& place, const char* fields = "0x20") {
  const bool primary = place[0] == '1';
  const std::string call =
      "ChangeDisplaySettingsExA(\\\\.\\DISPLAY" + place + " fields=" + fields + " flags=0x100000";
  return call + (primary ? "13" : "03") + ")=0\n" + call + (primary ? "11" : "01") + ")=0\n";
}
std::string PlacedWithSize(const std::string& place) { return Placed(place, "0x180020"); }

std::string NvidiaAlone(const char* display) {
  return std::string("NvAPI_DISP_SetDisplayConfig(flags=2 paths=[[[display=") + display +
         "] 1024x768x32 format=21 gdi]])=0\n";
}

class HybridStory : public Story {
 protected:
  void SetUp() override {
    OnFile("intel-nvidia-four");
    machine->Config("Settings", "Prefer Windows 7 CCD API", 0);
  }

  /// The journal since the last call without the notifications to the host.
  std::string TakeChanges() { return TakeLinesBut("PostMessageA"); }
  void RestoreNothing() { machine->Config("Settings", "Restore Display Settings After Switch", 0); }
};

// --- The strip.

struct StripRow {
  const char* name;
  std::vector<std::string> unplugged;
  Pictures offered;
};

class HybridStrip : public HybridStory, public testing::WithParamInterface<StripRow> {};

TEST_P(HybridStrip, OffersTheArrangementsInTheirPictures) {
  for (const std::string& connector : GetParam().unplugged) machine->Unplug(connector);
  StartProcess();
  EXPECT_EQ(Look(), GetParam().offered);
  EXPECT_EQ(Highlighted(), "NB.png");
  EXPECT_EQ(TakeChanges(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Connected, HybridStrip,
    testing::Values(
        StripRow{"All",
                 {},
                 {"NB.png", "AdvancedP1DSUBDPHDMI.png", "AdvancedP2DSUBDPHDMI.png", "CRT.png",
                  "HDMI.png", "DP.png"}},
        StripRow{"DpHdmi",
                 {"crt"},
                 {"NB.png", "AdvancedP1DPHDMI.png", "AdvancedP2DPHDMI.png", "HDMI.png", "DP.png"}},
        StripRow{"CrtDp",
                 {"hdmi"},
                 {"NB.png", "AdvancedP1DP.png", "AdvancedP2DP.png", "CRT.png", "DP.png"}},
        StripRow{"CrtHdmi",
                 {"dp"},
                 {"NB.png", "AdvancedP1.png", "AdvancedP2.png", "CRT.png", "HDMI.png"}},
        StripRow{"Hdmi",
                 {"crt", "dp"},
                 {"NB.png", "NB-HDMI.png", "HDMI.png", "p1024x768.png", "Extend.png"}}),
    [](const testing::TestParamInfo<StripRow>& info) { return std::string(info.param.name); });

// --- To each item and back.

struct ItemRow {
  const char* name;
  std::vector<std::string> unplugged;
  std::string picture;
  std::string topology;
  std::string desktops;
};

class HybridItem : public HybridStory, public testing::WithParamInterface<ItemRow> {};

TEST_P(HybridItem, IsSwitchedToAndLeftForThePanel) {
  const ItemRow& row = GetParam();
  RestoreNothing();
  for (const std::string& connector : row.unplugged) machine->Unplug(connector);
  StartProcess();
  Choose(row.picture);
  EXPECT_EQ(machine->Topology(), row.topology);
  EXPECT_EQ(Desktops(), row.desktops);
  Look();
  EXPECT_EQ(Highlighted(), row.picture);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(Desktops(), "internal 1366x768x32@60 at 0,0");
  Look();
  EXPECT_EQ(Highlighted(), "NB.png");
}

// A display that is placed by position alone has the size that its device had for it: the second
// device is first seen with the display of the first.
INSTANTIATE_TEST_SUITE_P(
    Four, HybridItem,
    testing::Values(ItemRow{"SideBySide",
                            {},
                            "AdvancedP1DSUBDPHDMI.png",
                            "extend internal+crt+dp+hdmi",
                            "internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0; "
                            "dp 1600x900x32@60 at 2646,0; hdmi 1600x900x32@60 at 4246,0"},
                    ItemRow{"BesideClone",
                            {},
                            "AdvancedP2DSUBDPHDMI.png",
                            "extend (internal+crt)+dp+hdmi",
                            "internal+crt 1280x720x32@60 at 0,0; dp 1600x900x32@60 at 1280,0; "
                            "hdmi 1600x900x32@60 at 2880,0"},
                    ItemRow{"Crt", {}, "CRT.png", "single crt", "crt 1280x1024x32@60 at 0,0"},
                    ItemRow{"Hdmi", {}, "HDMI.png", "single hdmi", "hdmi 1920x1080x32@60 at 0,0"},
                    ItemRow{"Dp", {}, "DP.png", "single dp", "dp 1600x900x32@60 at 0,0"}),
    [](const testing::TestParamInfo<ItemRow>& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Three, HybridItem,
    testing::Values(ItemRow{"SideBySideWithoutCrt",
                            {"crt"},
                            "AdvancedP1DPHDMI.png",
                            "extend internal+dp+hdmi",
                            "internal 1366x768x32@60 at 0,0; dp 1600x900x32@60 at 1366,0; "
                            "hdmi 1600x900x32@60 at 2966,0"},
                    ItemRow{"BesideCloneWithoutCrt",
                            {"crt"},
                            "AdvancedP2DPHDMI.png",
                            "extend internal+hdmi; group internal+dp",
                            "internal 1366x768x32@60 at 0,0; hdmi 1920x1080x32@60 at 1366,0"},
                    ItemRow{"SideBySideWithoutHdmi",
                            {"hdmi"},
                            "AdvancedP1DP.png",
                            "extend internal+crt+dp",
                            "internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0; "
                            "dp 1600x900x32@60 at 2646,0"},
                    ItemRow{"BesideCloneWithoutHdmi",
                            {"hdmi"},
                            "AdvancedP2DP.png",
                            "extend (internal+crt)+dp",
                            "internal+crt 1280x720x32@60 at 0,0; dp 1600x900x32@60 at 1280,0"},
                    ItemRow{"SideBySideWithoutDp",
                            {"dp"},
                            "AdvancedP1.png",
                            "extend internal+crt+hdmi",
                            "internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0; "
                            "hdmi 1920x1080x32@60 at 2646,0"},
                    ItemRow{"BesideCloneWithoutDp",
                            {"dp"},
                            "AdvancedP2.png",
                            "extend (internal+crt)+hdmi",
                            "internal+crt 1280x720x32@60 at 0,0; hdmi 1920x1080x32@60 at 1280,0"}),
    [](const testing::TestParamInfo<ItemRow>& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Two, HybridItem,
    testing::Values(ItemRow{"CloneOnHdmi",
                            {"crt", "dp"},
                            "NB-HDMI.png",
                            "single internal; group internal+hdmi",
                            "internal 1366x768x32@60 at 0,0"},
                    ItemRow{"CloneOnDp",
                            {"crt", "hdmi"},
                            "NB-DP.png",
                            "single internal; group internal+dp",
                            "internal 1366x768x32@60 at 0,0"},
                    ItemRow{"Extended",
                            {"crt", "dp"},
                            "Extend.png",
                            "extend internal+hdmi",
                            "internal 1366x768x32@60 at 0,0; hdmi 1024x768x32@60 at 1366,0"}),
    [](const testing::TestParamInfo<ItemRow>& info) { return std::string(info.param.name); });

TEST_F(HybridStory, EveryItemIsReachedFromEveryOther) {
  const Pictures items = {
      "NB.png", "AdvancedP1DSUBDPHDMI.png", "AdvancedP2DSUBDPHDMI.png", "CRT.png", "HDMI.png",
      "DP.png"};
  StartProcess();
  for (const std::string& from : items) {
    for (const std::string& to : items) {
      if (from == to) continue;
      Look();
      if (Highlighted() != from) Choose(from);
      Choose(to);
      Look();
      EXPECT_EQ(Highlighted(), to) << "from " << from;
    }
  }
}

// --- What the drivers are told.

TEST_F(HybridStory, PressToTheFirstArrangement) {
  StartProcess();
  Choose("AdvancedP1DSUBDPHDMI.png");
  const std::string panel = "1 1366x768x32@60 at 0,0";
  const std::string crt = "2 1280x1024x32@60 at 1366,0";
  const std::string dp = "3 1600x900x32@60 at 2646,0";
  const std::string hdmi = "4 1920x1080x32@60 at 4246,0";
  // No size comes back after it.
  EXPECT_EQ(TakeChanges(), NvidiaAlone("0x80062001 dp") + kPanelAlone + Placed(panel) +
                               Placed(crt) + Placed(dp) + Placed(hdmi) + kCommit +
                               PlacedWithSize(panel) + Placed(crt) + PlacedWithSize(dp) +
                               Placed(hdmi) + kCommit);
  EXPECT_NE(Remembered().find("Display Mode=128\nActive Displays=51\n"), std::string::npos)
      << Remembered();
}

TEST_F(HybridStory, PressToTheSecondArrangementWithoutCrt) {
  RestoreNothing();
  machine->Unplug("crt");
  StartProcess();
  Choose("AdvancedP2DPHDMI.png");
  const std::string panel_twice = std::string(kPanelAlone) + kPanelAlone;
  const std::string placed =
      Placed("1 1366x768x32@60 at 0,0") + Placed("4 1920x1080x32@60 at 1366,0") + kCommit;
  const std::string group = Group("0x80062001 dp");
  EXPECT_EQ(TakeChanges(), panel_twice + group + placed + kNoGroups + panel_twice + group + placed);
  EXPECT_NE(Remembered().find("Display Mode=256\nActive Displays=51\n"), std::string::npos)
      << Remembered();
  Choose("NB.png");
  EXPECT_EQ(TakeChanges(), std::string(kNoGroups) + kPanelAlone);
}

class HybridPair : public HybridStory {
 protected:
  void SetUp() override {
    HybridStory::SetUp();
    RestoreNothing();
    machine->Unplug("crt");
    machine->Unplug("dp");
    StartProcess();
  }
};

TEST_F(HybridPair, CloneIsAGroupOfNvidias) {
  Choose("NB-HDMI.png");
  EXPECT_EQ(TakeChanges(), kPanelOfTwo + Group("0x80062002 hdmi"));
  Choose("NB.png");
  EXPECT_EQ(TakeChanges(), std::string(kNoGroups) + kPanelOfTwo);
  Choose("NB-HDMI.png");
  TakeChanges();
  Choose("HDMI.png");
  EXPECT_EQ(TakeChanges(), std::string(kNoGroups) +
                               "SetDisplayConfig(paths=0 flags=0x48)=0\n"
                               "SetDisplayConfig(paths=0 flags=0x88)=0\n");
}

// Extending asks Intel, which has no such display, and then NVIDIA; nobody removes the group.
TEST_F(HybridPair, CloneGroupOutlivesExtending) {
  Choose("NB-HDMI.png");
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+hdmi; group internal+hdmi");
  Look();
  EXPECT_EQ(Highlighted(), "NB-HDMI.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(HybridPair, RefusedGroupLeavesNothingRemembered) {
  machine->Fail("NvAPI_DISP_SetHCloneTopology", 1);
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(Remembered().find("Display Mode=2\n"), std::string::npos) << Remembered();
}

// --- An adapter that comes and goes.

class HybridAdapter : public HybridStory, public testing::WithParamInterface<size_t> {
 protected:
  void Disable(bool disabled) { machine->model().adapters[GetParam()].disabled = disabled; }
};

// Windows announces both changes, and time passes; the library looks at the adapters only when it
// is pressed.
TEST_P(HybridAdapter, DisabledAndEnabledBetweenTwoPressesIsNotNoticed) {
  StartProcess();
  const Pictures offered = Look();
  for (const bool disabled : {true, false}) {
    Disable(disabled);
    machine->BroadcastDisplayChange();
    machine->Advance(10000);
  }
  EXPECT_EQ(TakeChanges(), "");
  EXPECT_EQ(Look(), offered);
  Choose("AdvancedP1DSUBDPHDMI.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt+dp+hdmi");
}

// The object that comes in its place is not ready, and the next process makes everything anew.
TEST_P(HybridAdapter, PressWhileItIsDisabledOpensNothingUntilTheNextProcess) {
  StartProcess();
  const Pictures offered = Look();
  Disable(true);
  EXPECT_FALSE(ostrel->Run());
  EXPECT_EQ(machine->Popup(), nullptr);
  Disable(false);
  EXPECT_FALSE(ostrel->Run());
  EXPECT_EQ(TakeNotifications(), "");
  EXPECT_EQ(TakeChanges(), "");
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
  StartProcess();
  EXPECT_EQ(Look(), offered);
}

INSTANTIATE_TEST_SUITE_P(Adapters, HybridAdapter, testing::Values(0, 1),
                         [](const testing::TestParamInfo<size_t>& info) {
                           return std::string(info.param == 0 ? "Intel" : "Nvidia");
                         });

// --- What the library keeps.

TEST_F(HybridStory, NothingIsKeptOfNvidias) {
  StartProcess();
  Choose("AdvancedP1DSUBDPHDMI.png");
  Choose("AdvancedP2DSUBDPHDMI.png");
  Choose("NB.png");
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
}

}  // namespace
