// Presses of the hotkey on old NVIDIA notebooks: the library as it ships, NVAPI and the control
// panel's library of the simulated driver, and the program that the switch starts.

#include "sim/MachineState.h"
#include "sim/faces/NvCplDriver.h"
#include "sim/faces/Programs.h"
#include "tests/session/Story.h"

namespace {

class NvidiaXpStory : public Story {
 protected:
  /// The programs that were started since the last call, and what they did.
  std::string TakePrograms() { return TakeLines({"CreateProcessA", "dtcfg"}); }
  static std::string Shown(const std::string& view) {
    return "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 " + view +
           ")=1\ndtcfg(setview 0 " + view + ")=1\n";
  }

  /// As Choose. @return how long the library worked once the pop-up had closed: the pause that is
  /// configured, and the watch of the display changes
  uint64_t ChooseAndTime(const std::string& picture) {
    const uint64_t begin = machine->Now();
    Choose(picture);
    return machine->Now() - begin - kPopupTime;
  }
  /// Windows tells of a further change, so many milliseconds behind a press of now.
  void ChangeAt(uint64_t milliseconds) {
    machine->At(machine->Now() + kPopupTime + milliseconds,
                [this] { machine->BroadcastDisplayChange(); });
  }

  static constexpr uint64_t kPopupTime = 1500;
};

class NvidiaXpPair : public NvidiaXpStory {
 protected:
  void SetUp() override { OnFile("xp-nvidia"); }
};

TEST_F(NvidiaXpPair, OffersWhatTheDriverSees) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"}));
  EXPECT_EQ(Highlighted(), "NB.png");
  EXPECT_EQ(TakePrograms(), "");
  EXPECT_EQ(ostrel->GetVgaVendor(), 3u);
}

TEST_F(NvidiaXpPair, PressToCloneAndBack) {
  StartProcess();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakePrograms(), Shown("clone DA AA"));
  Look();
  EXPECT_EQ(Highlighted(), "NB-CRT.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakePrograms(), Shown("standard DA"));
  Look();
  EXPECT_EQ(Highlighted(), "NB.png");
}

TEST_F(NvidiaXpPair, PressToTheMonitorAndBack) {
  StartProcess();
  Choose("CRT.png");
  EXPECT_EQ(machine->Topology(), "single crt");
  EXPECT_EQ(Desktops(), "crt 1280x1024x32@60 at 0,0");
  EXPECT_EQ(TakePrograms(), Shown("standard AA"));
  Look();
  EXPECT_EQ(Highlighted(), "CRT.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakePrograms(), Shown("standard DA"));
}

TEST_F(NvidiaXpPair, PressToExtendedAndBack) {
  StartProcess();
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(Desktops(), "internal 1280x800x32@60 at 0,0; crt 1280x1024x32@60 at 1280,0");
  EXPECT_EQ(TakePrograms(), Shown("dualview DA AA"));
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  Look();
  EXPECT_EQ(Highlighted(), "NB.png");
}

TEST_F(NvidiaXpPair, SizeOfTheCloneComesBack) {
  StartProcess();
  Choose("NB-CRT.png");
  UserSets("crt", 800, 600);
  Choose("NB.png");
  WindowsForgets();
  Choose("NB-CRT.png");
  EXPECT_EQ(Desktops(), "internal+crt 800x600x32@60 at 0,0");
}

// --- The driver changes the displays while the library goes on, and the library waits for quiet.

class NvidiaXpChanges : public NvidiaXpPair {
 protected:
  void SetUp() override {
    NvidiaXpPair::SetUp();
    machine->Config("Settings", "Delay Time To Restore Display Settings", 0);
    StartProcess();
    // What the clone is to come back with, which Windows has forgotten.
    Choose("NB-CRT.png");
    UserSets("crt", 800, 600);
    Choose("NB.png");
    WindowsForgets();
    threads_before = machine->Calls("CreateThread");
    sim::LetProgramsTake(*machine, 400);
    TakePrograms();
  }
  uint32_t Monitors() const { return machine->Calls("CreateThread") - threads_before; }

  static constexpr char kCameBack[] = "internal+crt 800x600x32@60 at 0,0";
  uint32_t threads_before = 0;
};

TEST_F(NvidiaXpChanges, SizeComesBack800BehindTheDriversChange) {
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 400u + 800u);
  EXPECT_EQ(TakePrograms(), Shown("clone DA AA"));
  EXPECT_EQ(Desktops(), kCameBack);
  EXPECT_EQ(Monitors(), 1u);
}

TEST_F(NvidiaXpChanges, SizeComesBack800BehindTheLastOfThree) {
  for (const uint64_t moment : {900, 1400}) ChangeAt(moment);
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 1400u + 800u);
  EXPECT_EQ(Desktops(), kCameBack);
}

TEST_F(NvidiaXpChanges, FromExtendedDesktopItComesBack1600BehindTheChange) {
  EXPECT_EQ(ChooseAndTime("Extend.png"), 400u + 800u);
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 400u + 1600u);
  EXPECT_EQ(Desktops(), kCameBack);
}

TEST_F(NvidiaXpChanges, ProgramThatDoesNothingIsWaitedFor1500) {
  machine->Fail("dtcfg", 1);
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 1500u);
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(NvidiaXpChanges, SlowDriverChangesWhatWasRestoredTooEarly) {
  sim::LetProgramsTake(*machine, 2000);
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 1500u);
  EXPECT_EQ(machine->Topology(), "single internal");
  machine->Advance(500);
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_NE(Desktops(), kCameBack);
}

TEST_F(NvidiaXpChanges, DriverThatNeverRestsEndsTheWaitWithNothingRestored) {
  for (uint64_t moment = 500; moment <= 12000; moment += 500) ChangeAt(moment);
  EXPECT_EQ(ChooseAndTime("NB-CRT.png"), 10000u);
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_NE(Desktops(), kCameBack);
}

TEST_F(NvidiaXpPair, ProgramThatDoesNotStartLeavesTheMachineAsItWas) {
  StartProcess();
  machine->Fail("CreateProcessA", 1, ERROR_FILE_NOT_FOUND);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  Look();
  EXPECT_EQ(Highlighted(), "NB.png");
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

TEST_F(NvidiaXpPair, MonitorThatComesLaterIsOffered) {
  const sim::Monitor monitor = *machine->model().connectors[1].monitor;
  machine->Unplug("crt");
  StartProcess();
  EXPECT_EQ(Look(), Pictures{"NB.png"});
  machine->Plug("crt", monitor);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

TEST_F(NvidiaXpPair, EverythingGoesBackToTheDriver) {
  StartProcess();
  for (const char* picture : {"NB-CRT.png", "CRT.png", "Extend.png", "NB.png"}) Choose(picture);
  ostrel->DeInit();
  EXPECT_EQ(machine->Outstanding(), "");  // the unload comes later
}

TEST_F(NvidiaXpPair, NotebookWithoutTheControlPanelsLibraryDoesNotStart) {
  machine->state().invented.at(sim::kNvCplLibrary).available = [](const sim::Model&) {
    return false;
  };
  ostrel.emplace(*machine);
  EXPECT_FALSE(ostrel->Init());
}

TEST_F(NvidiaXpPair, NotebookWhoseControlPanelLacksAnEntryDoesNotStart) {
  sim::RemoveNvCplEntry(*machine, "dtcfgex");
  ostrel.emplace(*machine);
  EXPECT_FALSE(ostrel->Init());
}

class NvidiaXpThree : public NvidiaXpStory {
 protected:
  void SetUp() override { OnFile("xp-nvidia-hdmi"); }
};

TEST_F(NvidiaXpThree, OffersEachDisplayBesideThePanel) {
  StartProcess();
  EXPECT_EQ(Look(), (Pictures{"NB.png", "NB-CRT.png", "CRT.png", "NB-HDMI.png", "HDMI.png",
                              "p1024x768.png", "Extend2CRT.png", "Extend2HDMI.png"}));
}

// The sound device of a television that was left stays for a while; looking again lets go of it.
TEST_F(NvidiaXpThree, OneDisplayMakesTheDriverLookAgainFourTimes) {
  StartProcess();
  Choose("HDMI.png");
  Choose("NB.png");
  const uint32_t looks = machine->Calls("NvCplRefreshConnectedDevices");
  for (uint32_t more = 1; more <= 4; ++more) {
    machine->Advance(2000);
    EXPECT_EQ(machine->Calls("NvCplRefreshConnectedDevices"), looks + more);
  }
  machine->Advance(20000);
  EXPECT_EQ(machine->Calls("NvCplRefreshConnectedDevices"), looks + 4);
}

struct PressRow {
  const char* picture;
  const char* topology;
  const char* view;
};

class NvidiaXpPress : public NvidiaXpThree, public testing::WithParamInterface<PressRow> {};

TEST_P(NvidiaXpPress, SwitchesThereAndBack) {
  StartProcess();
  Choose(GetParam().picture);
  EXPECT_EQ(machine->Topology(), GetParam().topology);
  EXPECT_EQ(TakePrograms(), Shown(GetParam().view));
  Look();
  EXPECT_EQ(Highlighted(), GetParam().picture);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
}

INSTANTIATE_TEST_SUITE_P(
    Items, NvidiaXpPress,
    testing::Values(PressRow{"NB-CRT.png", "clone internal+crt", "clone DA AA"},
                    PressRow{"CRT.png", "single crt", "standard AA"},
                    PressRow{"NB-HDMI.png", "clone internal+hdmi", "clone DA DB"},
                    PressRow{"HDMI.png", "single hdmi", "standard DB"},
                    PressRow{"Extend2CRT.png", "extend internal+crt", "dualview DA AA"},
                    PressRow{"Extend2HDMI.png", "extend internal+hdmi", "dualview DA DB"}));

}  // namespace
