// Whole stories: what a user does over days, and what stands on the displays, in Ostrel.ini and in
// the host's messages after it.
#include "tests/session/Story.h"

#include <string>

#include "sim/ShortForm.h"

namespace {

/// A section of Ostrel.ini for a desktop of one size; `suffix` stands behind each key.
std::string Sized(const std::string& size, const std::string& suffix = "") {
  const size_t x = size.find('x');
  return "Width" + suffix + "=" + size.substr(0, x) + "\nHeight" + suffix + "=" +
         size.substr(x + 1) + "\nColor Depth" + suffix + "=32\nFrequency" + suffix +
         "=60\nOrientation" + suffix + "=0\n";
}

std::string Section(const std::string& name) { return "[" + name + "]\n"; }

std::string Active(const char* mode, const char* displays, const char* presentation) {
  return Section("Active Display Mode") + "Display Mode=" + mode + "\nActive Displays=" + displays +
         "\nPresentation Mode=" + presentation + "\n";
}

constexpr char kOfficeSizes[] = "internal 1280x720x32@60 at 0,0; crt 1024x768x32@60 at 1280,0";
constexpr char kOfficeNative[] = "internal 1366x768x32@60 at 0,0; crt 1280x1024x32@60 at 1366,0";
constexpr char kPanelNative[] = "internal 1366x768x32@60 at 0,0";

// --- Dock at the office, go home, come back.

class DockAndHome : public Story {
 protected:
  void SetUp() override {
    On("win7 intel: internal 1366x768 active, crt, hdmi");
    machine->model().connectors[0].monitor = sim::MakeMonitor("LP140WH2", 1366, 768);
    Dock();
  }
  void Dock() {
    Plug("crt", "Harbor 19C", 1280, 1024);
    Plug("hdmi", "Harbor 24H", 1920, 1080);
  }
  void Undock() {
    machine->Unplug("crt");
    machine->Unplug("hdmi");
  }

  const std::string office = "Harbor 19C,Harbor 24H,LP140WH2";
  const std::string home = "Home TV 32,LP140WH2";
};

TEST_F(DockAndHome, OldSizesComeBackAtTheOfficeInAnotherProcess) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "NB-HDMI.png", "HDMI.png",
                              "p1024x768.png", "Extend2CRT.png", "Extend2HDMI.png"}));
  Choose("Extend2CRT.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(Desktops(), kOfficeNative);  // never seen here: native sizes, side by side
  UserSets("internal", 1280, 720);
  UserSets("crt", 1024, 768);
  ASSERT_EQ(Desktops(), kOfficeSizes);
  Choose("NB.png");
  EXPECT_EQ(Desktops(), kPanelNative);
  const std::string at_the_office = Section("1,1 | " + office) + Sized("1366x768") +
                                    Section("4,3 | " + office) + Sized("1280x720") +
                                    Sized("1024x768", "2") + Active("1", "1", "0");
  EXPECT_EQ(Remembered(), at_the_office);
  EndProcess();

  Undock();
  Plug("hdmi", "Home TV 32", 1280, 720);
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-HDMI.png", "HDMI.png", "p1024x768.png", "Extend.png"}));
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+hdmi");
  EXPECT_EQ(Desktops(), "internal 1366x768x32@60 at 0,0; hdmi 1280x720x32@60 at 1366,0");
  Choose("NB.png");
  const std::string at_home = at_the_office + Section("1,1 | " + home) + Sized("1366x768") +
                              Section("4,17 | " + home) + Sized("1366x768") +
                              Sized("1280x720", "16");
  EXPECT_EQ(Remembered(), at_home);
  EndProcess();

  machine->Unplug("hdmi");
  Dock();
  WindowsForgets();
  StartProcess();
  Choose("Extend2CRT.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(Desktops(), kOfficeSizes);
  EXPECT_EQ(Remembered(), at_home);
}

TEST_F(DockAndHome, AnotherMonitorOnTheSameConnectorStartsFresh) {
  StartProcess();
  Choose("Extend2CRT.png");
  UserSets("crt", 1024, 768);
  Choose("NB.png");
  Undock();
  Plug("crt", "Harbor 20C", 1280, 1024);
  Plug("hdmi", "Harbor 24H", 1920, 1080);
  WindowsForgets();
  Choose("Extend2CRT.png");
  EXPECT_EQ(Desktops(), kOfficeNative);
}

// --- A projector that must not be offered 1024 by 768.

class ProblemProjector : public Story {
 protected:
  void SetUp() override { OnFile("intel-panel-projector"); }
  const std::string monitors = "LP140WH2,Veld k2210";
};

TEST_F(ProblemProjector, IsOffered800By600OnlyAndItsCloneSizeComesBack) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p800x600.png", "Extend.png"}));
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Desktops(), "internal+crt 1024x768x32@60 at 0,0");  // the best that both take
  UserSets("crt", 800, 600);
  Choose("NB.png");
  const std::string panel = Section("1,1 | " + monitors) + Sized("1366x768");
  const std::string clone = Section("2,3 | " + monitors) + Sized("800x600");
  EXPECT_EQ(Remembered(), panel + Active("1", "1", "0") + clone);
  EndProcess();

  WindowsForgets();
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Desktops(), "internal+crt 800x600x32@60 at 0,0");
  EXPECT_EQ(Remembered(), panel + Active("2", "3", "0") + clone);
}

TEST_F(ProblemProjector, AnotherProjectorIsOfferedBothSizes) {
  Plug("crt", "Veld k2999", 1024, 768);
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p800x600.png", "p1024x768.png",
                              "Extend.png"}));
}

TEST_F(ProblemProjector, NobodyLooksOutForItUnlessTheConfigurationSaysSo) {
  machine->Config("PM:1024x768", "Check Problem Projector", 0);
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p800x600.png", "p1024x768.png",
                              "Extend.png"}));
}

// --- Panel and one CRT monitor.

class PanelAndCrt : public Story {
 protected:
  void SetUp() override {
    On("win7 intel: internal 1366x768 active, crt");
    machine->model().connectors[0].monitor = sim::MakeMonitor("LP140WH2", 1366, 768);
    Plug("crt", "Harbor 19C", 1280, 1024);
  }
  const std::string monitors = "Harbor 19C,LP140WH2";
};

TEST_F(PanelAndCrt, ExtendedFlushedAndExtendedAgainIsThePolicysBusiness) {
  StartProcess();
  Choose("Extend.png");
  EXPECT_EQ(Desktops(), kOfficeNative);
  UserSets("internal", 1280, 720);
  UserSets("crt", 1024, 768);
  Choose("NB.png");
  WindowsForgets();
  Choose("Extend.png");
  EXPECT_EQ(Desktops(), kOfficeSizes);  // as remembered
  Choose("NB.png");

  // Windows still knows the sizes, the library does not: native sizes are its policy's choice.
  EXPECT_TRUE(ostrel->FlushRememberedSettings());
  EXPECT_EQ(Remembered(), "");
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(Desktops(), kOfficeNative);
  EXPECT_EQ(Remembered(), Section("1,1 | " + monitors) + Sized("1366x768"));
}

TEST_F(PanelAndCrt, FromPresentationToPresentationOnlyTheResolutionChanges) {
  machine->Config("PM:800x600", "Support This Mode", 1);
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p800x600.png", "p1024x768.png",
                              "Extend.png"}));
  Choose("p800x600.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Desktops(), "internal+crt 800x600x32@60 at 0,0");
  const std::string panel = Section("1,1 | " + monitors) + Sized("1366x768");
  EXPECT_EQ(Remembered(), panel + Active("2", "3", "32"));

  machine->TakeJournal();
  Choose("p1024x768.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Desktops(), "internal+crt 1024x768x32@60 at 0,0");
  // A size for the paths there are, validated and applied; no topology is asked for.
  EXPECT_EQ(machine->TakeJournal(),
            "PostMessageA(id=1025 wparam=1 lparam=0)\n"
            "PostMessageA(id=1025 wparam=2 lparam=0)\n"
            "SetDisplayConfig(paths=2 flags=0x60)=0\n"
            "SetDisplayConfig(paths=2 flags=0x2a0)=0\n");
  EXPECT_EQ(Remembered(), panel + Active("2", "3", "64"));
  Choose("NB.png");
  EXPECT_EQ(Desktops(), kPanelNative);
  EXPECT_EQ(Remembered(), panel + Active("1", "1", "0"));  // a presentation's size is not kept
}

TEST_F(PanelAndCrt, PresentationIsFoundAgainByTheNextProcess) {
  StartProcess();
  Choose("p1024x768.png");
  EndProcess();
  StartProcess();
  ASSERT_TRUE(ostrel->Run());
  EXPECT_EQ(Highlighted(), "p1024x768.png");
}

TEST_F(PanelAndCrt, SwitchRefusedDuringAFilmIsMadeAfterIt) {
  machine->Config("Settings", "Disable When Video Playback", 1);
  machine->model().other_windows = {
      {"WMPlayerApp", "Windows Media Player", {"Static", "EVRVideoHandler"}}};
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(Desktops(), kPanelNative);
  EXPECT_EQ(Remembered(), "");
  EXPECT_TRUE(ostrel->Stop());  // asks again, and is refused again
  EXPECT_EQ(machine->Topology(), "single internal");

  machine->model().other_windows.clear();
  EXPECT_TRUE(ostrel->Stop());
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Remembered(), Section("1,1 | " + monitors) + Sized("1366x768") + Active("2", "3", "0"));
}

// --- Two monitors of one model.

TEST_F(Story, TwinMonitorsAndOneOfThemShareASection) {
  OnFile("intel-twin-monitors");
  StartProcess();
  Choose("Extend2CRT.png");
  EXPECT_EQ(Desktops(), "internal 1366x768x32@60 at 0,0; crt 1920x1200x32@60 at 1366,0");
  UserSets("internal", 1024, 768);
  UserSets("crt", 1280, 1024);
  Choose("NB.png");
  EXPECT_EQ(Remembered(), Section("1,1 | Harbor 24,LP140WH2") + Sized("1366x768") +
                              Section("4,3 | Harbor 24,LP140WH2") + Sized("1024x768") +
                              Sized("1280x1024", "2") + Active("1", "1", "0"));
  EndProcess();

  machine->Unplug("hdmi");
  WindowsForgets();
  StartProcess();
  Choose("Extend.png");  // one external display is left
  EXPECT_EQ(Desktops(), "internal 1024x768x32@60 at 0,0; crt 1280x1024x32@60 at 1024,0");
}

// --- Odd panels.

class PortraitPanel : public Story {
 protected:
  void SetUp() override { OnFile("intel-portrait-crt"); }
};

TEST_F(PortraitPanel, CloneNeverStandsUpright) {
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(Desktops(), "internal+crt 800x600x32@60 at 0,0");
  Choose("NB.png");
  EXPECT_EQ(Desktops(), "internal 800x1280x32@60 at 0,0");
}

// What the same machine does by itself, so that the size above is seen to be the library's choice.
TEST_F(PortraitPanel, WindowsAloneWouldStandItUpright) {
  machine->Config("Clone", "Setting Type", 0);
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(Desktops(), "internal+crt 800x1280x32@60 at 0,0");
}

TEST_F(Story, PanelOf1024By600IsOfferedNoPresentation) {
  OnFile("intel-1024x600-crt");
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "Extend.png"}));
  Choose("NB-CRT.png");
  EXPECT_EQ(Desktops(), "internal+crt 1024x600x32@60 at 0,0");
  EndProcess();

  // The panel is the reason: a higher one in its place is offered 1024 by 768.
  machine->Plug("internal", sim::MakeMonitor("LP101WX1", 1280, 800));
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"}));
}

}  // namespace
