// Presses of the hotkey on Intel notebooks that switch through their own driver: the library as it
// ships, its own COM calls, the driver of the simulated machine.
#include <sstream>

#include "sim/EdidMaker.h"
#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/faces/BasicStrings.h"
#include "sim/faces/ChangeSettings.h"
#include "sim/faces/IntelDriver.h"
#include "tests/session/Story.h"

namespace {

constexpr char kClone[] =
    "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=3 primary=0x1000 count=2 "
    "first=0x1000 second=0x1 err=0)=0\n";
constexpr char kPanelAlone[] =
    "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=1 primary=0x0 count=1 first=0x1000 "
    "second=0x0 err=0)=0\n";
constexpr char kHdmiAlone[] =
    "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=1 primary=0x0 count=1 first=0x10000 "
    "second=0x0 err=0)=0\n";
constexpr char kExtended[] =
    "ICUIExternal8::ChangeActiveDevices(\\\\.\\DISPLAY1 mode=1 primary=0x0 count=1 first=0x1000 "
    "second=0x0, \\\\.\\DISPLAY2 mode=1 primary=0x0 count=1 first=0x1 second=0x0 err=0)=0\n";

/// The desktop on the way to another mode, taken to a size that the driver will not refuse.
constexpr char kDowngrade[] =
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1024x768x32@60 at 0,0 fields=0x5c0000 flags=0x2)=0\n"
    "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1024x768x32@60 at 0,0 fields=0x5c0000 "
    "flags=0x40000009)=0\n";

class IntelStory : public Story {
 protected:
  void OnIntel(const std::string& text) {
    On(text);
    ThroughTheVendor();
  }

  /// The journal since the last call without the notifications to the host.
  std::string TakeChanges() { return TakeLinesBut("PostMessageA"); }
  /// The driver's lines alone.
  std::string TakeDriverCalls() { return TakeLines({"ICUIExternal8::"}); }
};

// --- Two displays.

class IntelPair : public IntelStory {
 protected:
  void SetUp() override {
    OnIntel("win7 intel: internal 1366x768 active, crt 1280x1024");
    // What comes back after the switch is told elsewhere; here the driver has the last word.
    machine->Config("Settings", "Restore Display Settings After Switch", 0);
  }
};

TEST_F(IntelPair, OffersWhatTheDriverSees) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"}));
  EXPECT_EQ(TakeChanges(), "");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(IntelPair, PressToClone) {
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeChanges(), std::string(kDowngrade) + kClone);
  Look();
  EXPECT_EQ(Highlighted(), "NB-CRT.png");
}

TEST_F(IntelPair, PressToExtendedAndBack) {
  StartProcess();
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(Desktops(), "internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0");
  EXPECT_EQ(TakeChanges(), kExtended);
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakeChanges(), std::string(kDowngrade) + kPanelAlone);
}

TEST_F(IntelPair, RefusedSwitchIsTriedFourTimesAndForgotten) {
  machine->Fail("ICUIExternal8::ChangeActiveDevices", 1, static_cast<uint32_t>(E_FAIL),
                sim::Machine::Repeat::kFromThenOn);
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 4u);
  EXPECT_EQ(Remembered().find("Active Display Mode"), std::string::npos);
}

// --- The driver says that it did, and did not.

TEST_F(IntelPair, ApparentSuccessIsTriedAgainWhenTheConfigurationSaysSo) {
  machine->Config("Settings", "Retry When Operation Failed", 1);
  machine->Config("Settings", "Retry Delay Time", 1234);
  machine->Fail("ICUIExternal8::ChangeActiveDevices", 1, 77);
  StartProcess();
  machine->JournalReads(true);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  std::istringstream lines(machine->TakeJournal());
  std::string told;
  for (std::string line; std::getline(lines, line);) {
    const bool change = line.find("::ChangeActiveDevices") != std::string::npos;
    const bool wait = line.rfind("Sleep", 0) == 0;
    if (change || wait) told += line + "\n";
  }
  const std::string apparent = std::string(kClone).replace(std::string(kClone).find("err=0"),
                                                           std::string("err=0").size(), "err=77");
  EXPECT_EQ(told, "Sleep(1000)=0\n" + apparent + "Sleep(1234)=0\nSleep(1000)=0\n" + kClone);
  EXPECT_NE(Remembered().find("Display Mode=2\nActive Displays=3\n"), std::string::npos);
}

TEST_F(IntelPair, ApparentSuccessIsBelievedOtherwise) {
  machine->Fail("ICUIExternal8::ChangeActiveDevices", 1, 77);
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 1u);
  EXPECT_NE(Remembered().find("Display Mode=2\nActive Displays=3\n"), std::string::npos);
}

TEST_F(IntelPair, RealSuccessIsNotTriedAgain) {
  machine->Config("Settings", "Retry When Operation Failed", 1);
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 1u);
}

// --- Three displays.

class IntelThree : public IntelStory {
 protected:
  void SetUp() override {
    OnIntel("win7 intel*3: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080");
  }
  const std::string probe =
      "ICUIExternal8::SetDeviceData(n-view mode=0 probe=1 size=84 count=3 err=0)=0\n";
};

TEST_F(IntelThree, OffersTriplesInPlaceOfPairs) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "3Extend_DSub_HDMI.png", "3Clone_DSub_HDMI.png", "CRT.png",
                              "HDMI.png"}));
}

TEST_F(IntelThree, PressToTripleExtended) {
  StartProcess();
  Choose("3Extend_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt+hdmi");
  EXPECT_EQ(Desktops(),
            "internal 1366x768x32@60 at 0,0; hdmi 1920x1080x32@60 at 1366,0; "
            "crt 1280x1024x32@60 at 3286,0");
  EXPECT_EQ(TakeChanges(),
            kDowngrade + probe +
                "ICUIExternal8::SetDeviceData(n-view mode=5 probe=0 size=220 count=3, "
                "0x1000 1366x768x32@60 left=0 right=0 top=0 bottom=0 orientation=0 scaling=0, "
                "0x10000 1920x1080x32@60 left=1366 right=3286 top=0 bottom=1080 orientation=0 "
                "scaling=0, "
                "0x1 1280x1024x32@60 left=3286 right=4566 top=0 bottom=1024 orientation=0 "
                "scaling=0 err=0)=0\n");
  Look();
  EXPECT_EQ(Highlighted(), "3Extend_DSub_HDMI.png");
}

TEST_F(IntelThree, PressToTripleClone) {
  machine->Config("Settings", "Restore Display Settings After Switch", 0);
  StartProcess();
  Choose("3Clone_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt+hdmi");
  EXPECT_EQ(TakeDriverCalls(),
            probe +
                "ICUIExternal8::SetDeviceData(n-view mode=3 probe=0 size=220 count=3, "
                "0x1000 1366x768x32@60 left=0 right=0 top=0 bottom=0 orientation=0 scaling=0, "
                "0x10000 1920x1080x32@60 left=0 right=0 top=0 bottom=0 orientation=0 scaling=0, "
                "0x1 1280x1024x32@60 left=0 right=0 top=0 bottom=0 orientation=0 scaling=0 "
                "err=0)=0\n");
  Look();
  EXPECT_EQ(Highlighted(), "3Clone_DSub_HDMI.png");
}

// The damaged EDID ends the switch, and nothing else.
TEST_F(IntelThree, PressToTripleWithADamagedEdidLeavesTheNextPress) {
  machine->Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  machine->Config("Settings", "Restore Display Settings After Switch", 0);
  StartProcess();
  ++machine->model().connectors[2].monitor->edid.at(127);
  Choose("3Extend_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  const std::string restored = "ICUIExternal8::SetAspectScaling(uid=0x1000 setting=2 err=0)=0\n";
  EXPECT_EQ(TakeDriverCalls(), probe + restored);
  Choose("CRT.png");
  EXPECT_EQ(machine->Topology(), "single crt");
}

TEST_F(IntelStory, AdapterForTwoOffersNoTriple) {
  OnIntel("win7 intel: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080");
  StartProcess();
  const Pictures offered = Look();
  EXPECT_FALSE(offered.empty());
  for (const std::string& picture : offered) EXPECT_NE(picture[0], '3') << picture;
}

// --- HDMI.

class IntelHdmi : public IntelStory {
 protected:
  void SetUp() override {
    OnIntel("win7 intel: internal 1366x768 active, hdmi 1920x1080");
    machine->Config("Settings", "Restore Display Settings After Switch", 0);
  }

  /// The television was watched at this rate before, and comes up at it again.
  void WatchedAt(uint32_t frequency) {
    sim::Model& model = machine->model();
    sim::Monitor& television = *model.connectors[1].monitor;
    television.modes.push_back({1920, 1080, 32, frequency});
    ASSERT_TRUE(sim::StartWith(model, {1}, false));
    sim::SettingsRequest request;
    request.fields = DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
    request.mode = {1920, 1080, 32, frequency};
    ASSERT_EQ(sim::ChangeSettings(model, size_t{0}, &request, CDS_UPDATEREGISTRY),
              DISP_CHANGE_SUCCESSFUL);
    ASSERT_TRUE(sim::StartWith(model, {0}, false));
  }
};

TEST_F(IntelHdmi, RateOf58IsRaisedToThePreferredOne) {
  WatchedAt(58);
  StartProcess();
  Choose("HDMI.png");
  EXPECT_EQ(machine->Topology(), "single hdmi");
  EXPECT_EQ(Desktops(), "hdmi 1920x1080x32@60 at 0,0");
  EXPECT_EQ(TakeChanges(), std::string(kDowngrade) + kHdmiAlone +
                               "SetDisplayConfig(paths=1 flags=0x60)=0\n"
                               "SetDisplayConfig(paths=1 flags=0x2a0)=0\n");
}

TEST_F(IntelHdmi, RateOf59IsLeftAlone) {
  WatchedAt(59);
  StartProcess();
  Choose("HDMI.png");
  EXPECT_EQ(machine->Topology(), "single hdmi");
  EXPECT_EQ(Desktops(), "hdmi 1920x1080x32@59 at 0,0");
  EXPECT_EQ(TakeChanges(), std::string(kDowngrade) + kHdmiAlone);
}

TEST_F(IntelHdmi, ListedNotebookPressesTheDriversHotkeyInstead) {
  machine->Config("Single External", "Intel HDMI Workaround", 1);
  machine->Config("Single External", "Always Assume Device Has Problem", 1);
  machine->Config("Single External", "Always Assume Monitor Has Problem", 1);
  StartProcess();
  Choose("HDMI.png");
  EXPECT_EQ(machine->Topology(), "single internal");  // the press reaches no driver here
  EXPECT_EQ(TakeChanges(), std::string(kDowngrade) +
                               "SetForegroundWindow(desktop)=1\n"
                               "keybd_event(key=162 scan=29 flags=0)\n"
                               "keybd_event(key=164 scan=56 flags=0)\n"
                               "keybd_event(key=115 scan=62 flags=0)\n"
                               "keybd_event(key=115 scan=62 flags=2)\n"
                               "keybd_event(key=164 scan=56 flags=2)\n"
                               "keybd_event(key=162 scan=29 flags=2)\n"
                               "SetForegroundWindow(0x4f0001)=1\n");
}

// --- The notebooks of the folder.

struct FolderRow {
  const char* notebook;
  const char* picture;
  const char* topology;
};

class IntelNotebook : public IntelStory, public testing::WithParamInterface<FolderRow> {};

TEST_P(IntelNotebook, SwitchesToCloneThroughItsDriver) {
  OnFile(GetParam().notebook);
  machine->Config("Settings", "Prefer Windows 7 CCD API", 0);
  StartProcess();
  Choose(GetParam().picture);
  EXPECT_EQ(machine->Topology(), GetParam().topology);
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 1u);
}

TEST_F(IntelStory, NotebookOfTheFolderForThreeDisplaysShowsTheSameOnAll) {
  OnFile("intel-panel-crt-hdmi");
  machine->Config("Settings", "Prefer Windows 7 CCD API", 0);
  StartProcess();
  Choose("3Clone_DSub_HDMI.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt+hdmi");
  EXPECT_EQ(machine->Calls("ICUIExternal8::SetDeviceData"), 2u);
}

INSTANTIATE_TEST_SUITE_P(
    Folder, IntelNotebook,
    testing::Values(FolderRow{"intel-panel-crt", "NB-CRT.png", "clone internal+crt"},
                    FolderRow{"intel-panel-hdmi", "NB-HDMI.png", "clone internal+hdmi"},
                    FolderRow{"intel-panel-projector", "NB-CRT.png", "clone internal+crt"},
                    FolderRow{"intel-1024x600-crt", "NB-CRT.png", "clone internal+crt"},
                    FolderRow{"intel-portrait-crt", "NB-CRT.png", "clone internal+crt"},
                    FolderRow{"intel-twin-monitors", "NB-HDMI.png", "clone internal+hdmi"},
                    FolderRow{"win7-starter", "NB-CRT.png", "clone internal+crt"},
                    FolderRow{"server2008", "NB-CRT.png", "clone internal+crt"}),
    [](const testing::TestParamInfo<FolderRow>& info) {
      std::string name = info.param.notebook;
      for (char& letter : name) letter = letter == '-' ? '_' : letter;
      return name;
    });

// --- What the library keeps.

TEST_F(IntelPair, DriversObjectAndTheNamesGivenToItAreKept) {
  StartProcess();
  Choose("NB-CRT.png");
  EndProcess();
  // One object for the process, and no reference beyond the one it was made with.
  EXPECT_EQ(sim::IntelDriverReferences(*machine), machine->Calls("CoCreateInstance"));
  EXPECT_GE(machine->Calls("CoCreateInstance"), 1u);
  EXPECT_EQ(sim::KeptBasicStrings(*machine), machine->Calls("SysAllocString"));
  EXPECT_GE(machine->Calls("SysAllocString"), 1u);
  EXPECT_EQ(machine->Calls("SysFreeString"), 0u);
  EXPECT_EQ(machine->Outstanding(), "");
}

TEST_F(IntelPair, NotebookWithoutTheDriversInterfaceDoesNotStart) {
  machine->model().adapters[0].vendor_library = false;
  ostrel.emplace(*machine);
  EXPECT_FALSE(ostrel->Init());
  EXPECT_NE(machine->Log().find("Can't initial Intel display library"), std::string::npos);
}

}  // namespace
