// Presses of the hotkey on AMD notebooks that switch through their own driver: the library as it
// ships, the driver's libraries of the simulated machine.
#include <algorithm>

#include "sim/faces/AmdDriver.h"
#include "tests/session/Story.h"

namespace {

constexpr char kSet[] = "ADL_Display_DisplayMapConfig_Set";
constexpr char kStart[] = "ADL_Main_Control_Create";

class AmdStory : public Story {
 protected:
  void OnAmd(const std::string& notebook) {
    OnFile(notebook);
    ThroughTheVendor();
    machine->Config("Settings", "Restore Display Settings After Switch", 0);
  }

  /// The display library's lines since the last call.
  std::string TakeSets() { return TakeLines({"ADL_"}); }
  bool LogHas(const char* text) const { return machine->Log().find(text) != std::string::npos; }
};

// --- AMD alone.

class AmdPair : public AmdStory {
 protected:
  void SetUp() override { OnAmd("amd-panel-hdmi"); }
};

TEST_F(AmdPair, OffersWhatTheDriverSees) {
  StartProcess();
  const Pictures offered = Look();
  for (const char* picture : {"NB.png", "NB-HDMI.png", "HDMI.png", "Extend.png"}) {
    EXPECT_EQ(std::count(offered.begin(), offered.end(), picture), 1) << picture;
  }
  EXPECT_EQ(TakeSets(), "");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(AmdPair, PressToCloneAndToTheOther) {
  StartProcess();
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+hdmi");
  EXPECT_EQ(TakeSets(),
            "ADL_Display_DisplayMapConfig_Set(adapter=0 maps=[0: 1024x768x32@60 at 0,0 turn=0 "
            "adapter=0 id=1/32/0/16 flag=0 mode=0x2/0x0 targets=0+2 map=0x6e/0x4] "
            "targets=[1/32/0/16 map=0 mask=0x1 value=0x1][0/32/0/16 map=0 mask=0x1 value=0x1])=0"
            "\n");
  Look();
  EXPECT_EQ(Highlighted(), "NB-HDMI.png");
  Choose("HDMI.png");
  EXPECT_EQ(machine->Topology(), "single hdmi");
  Look();
  EXPECT_EQ(Highlighted(), "HDMI.png");
}

TEST_F(AmdPair, PressToExtendedAndBack) {
  StartProcess();
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+hdmi");
  EXPECT_EQ(Desktops(), "internal 1366x768x32@60 at 0,0; hdmi 1920x1080x32@60 at 1366,0");
  EXPECT_EQ(machine->Calls(kSet), 1u);
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(AmdPair, FailedCallIsMadeAgainBehindTheUsersBack) {
  StartProcess();
  machine->Fail(kSet, 1);
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+hdmi");
  EXPECT_EQ(machine->Calls(kSet), 2u);
  EXPECT_NE(Remembered().find("Display Mode=2\n"), std::string::npos);
}

TEST_F(AmdPair, RefusedSwitchIsForgotten) {
  StartProcess();
  machine->Fail(kSet, 1, 0, sim::Machine::Repeat::kFromThenOn);
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_TRUE(LogHas("Call to ADL_Display_DisplayMapConfig_Set() rv = -1"));
  EXPECT_EQ(Remembered().find("Active Display Mode"), std::string::npos);
}

TEST_F(AmdPair, EndOfTheProcessLeavesNothingBehind) {
  StartProcess();
  Choose("Extend.png");
  EXPECT_TRUE(sim::AdlIsRunning(*machine));
  EndProcess();
  EXPECT_FALSE(sim::AdlIsRunning(*machine));
  EXPECT_EQ(machine->Outstanding(), "");
}

// --- Three displays, on an adapter whose numbers are not its positions.

class AmdThree : public AmdStory {
 protected:
  void SetUp() override { OnAmd("amd-three-displays"); }
};

TEST_F(AmdThree, PressToTripleClone) {
  StartProcess();
  Choose("3Clone_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt+hdmi");
  Look();
  EXPECT_EQ(Highlighted(), "3Clone_DSub_HDMI.png");
}

TEST_F(AmdThree, PressToTripleExtended) {
  StartProcess();
  Choose("3Extend_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt+hdmi");
  EXPECT_EQ(Desktops(),
            "internal 1600x900x32@60 at 0,0; crt 1280x1024x32@60 at 1600,0; "
            "hdmi 1920x1080x32@60 at 2880,0");
  Look();
  EXPECT_EQ(Highlighted(), "3Extend_DSub_HDMI.png");
}

TEST_F(AmdThree, WithoutAGridNoTripleIsOffered) {
  machine->model().adapters[0].amd.sls_grids.clear();
  StartProcess();
  for (const std::string& picture : Look()) EXPECT_NE(picture[0], '3') << picture;
}

// --- Intel and AMD.

TEST_F(AmdStory, AmdSwitchesWhereItsLibraryStarts) {
  OnAmd("intel-amd");
  StartProcess();
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+hdmi");
  EXPECT_EQ(TakeSets(),
            "ADL_Display_DisplayMapConfig_Set(adapter=0 maps=[2: 1024x768x32@60 at 0,0 turn=0 "
            "adapter=0 id=1/32/0/16 flag=0 mode=0x2/0x0 targets=0+2 map=0x6e/0x4] "
            "targets=[1/32/0/16 map=2 mask=0x0 value=0x0][0/32/0/16 map=2 mask=0x0 value=0x0])=0"
            "\n");
  EXPECT_EQ(machine->Calls("CoCreateInstance"), 0u);
  Look();
  EXPECT_EQ(Highlighted(), "NB-HDMI.png");
}

TEST_F(AmdStory, IntelSwitchesWhereItFails) {
  OnAmd("intel-amd-integrated");
  StartProcess();
  EXPECT_TRUE(LogHas("Can't recognize active adapter index"));
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+hdmi");
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 1u);
  EXPECT_EQ(machine->Calls(kSet), 0u);
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
}

// --- The older library.

TEST_F(AmdStory, LibraryOfBuild1049IsNotStarted) {
  OnAmd("amd-legacy-panel-crt");
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(machine->Calls(kStart), 0u);
  EXPECT_EQ(machine->Calls("ATIDL_SetConfigurationEx"), 1u);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EndProcess();
  EXPECT_EQ(machine->Outstanding(), "");
}

TEST_F(AmdStory, LibraryOfBuild1050Is) {
  OnAmd("amd-legacy-panel-crt");
  machine->model().adapters[0].amd.adl_version = "7.14.10.1050";
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(machine->Calls(kSet), 1u);
}

TEST_F(AmdStory, LibraryThatDrivesOneDisplayGivesWayToTheOlderOne) {
  OnAmd("amd-panel-hdmi");
  sim::SetAmdAnswer(*machine, "ADL_Display_NumberOfDisplays_Get", 1);
  StartProcess();
  EXPECT_FALSE(sim::AdlIsRunning(*machine));
  Choose("NB-HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+hdmi");
  EXPECT_EQ(machine->Calls(kSet), 0u);
  EXPECT_EQ(machine->Calls("ATIDL_SetConfigurationEx"), 1u);
}

}  // namespace
