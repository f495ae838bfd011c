// Switching through the control panel's command: which line for which switch.
#include "tests/behaviour/NvidiaPanelHost.h"

namespace {

constexpr char kPair[] = "xp nvidia: internal 1280x800 active, crt 1280x1024";
constexpr char kExtended[] = "xp nvidia: internal 1280x800 active, crt 1280x1024 active";
constexpr char kFour[] =
    "xp nvidia: internal 1280x800 active, crt 1280x1024, tv 800x600, hdmi 1920x1080";

constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kDvi = IMMonitor::MD_DVI;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

// --- What a switch asks and starts.

/// The functions of a journal in order, one word each; what the object within is asked is its own.
std::string Course(const std::string& journal) {
  std::istringstream lines(journal);
  std::string course;
  for (std::string line; std::getline(lines, line);) {
    course += line.substr(0, line.find('(')) + "\n";
  }
  return course;
}

TEST(NvidiaControlPanel, SwitchFromEndToEnd) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_TRUE(host.nvidia().SetNewDisplayMode(IMMonitor::DM_SINGLE, kNb));
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(Course(journal),
            "NvCplRefreshConnectedDevices\n"
            "NvCplGetRealConnectedDevicesString\n"
            "NvAPI_EnumPhysicalGPUs\n"
            "NvAPI_GPU_GetConnectedOutputs\n"
            "NvAPI_GPU_GetConnectorInfo\n"
            "NvAPI_GPU_GetConnectorInfo\n"
            "NvGetDisplayInfo\n"
            "NvGetDisplayInfo\n"
            "CreateProcessA\n"
            "dtcfg\n");
  EXPECT_EQ(CountOf(journal, "NvCplRefreshConnectedDevices(0x2)=1\n"), 1u);
  EXPECT_EQ(CountOf(journal, "NvCplGetRealConnectedDevicesString(#DA,#AA size=16 active=0)=1\n"),
            1u);
  EXPECT_EQ(CountOf(journal, "NvGetDisplayInfo(#DA)=1\nNvGetDisplayInfo(#AA)=1\n"), 1u);
  EXPECT_EQ(
      CountOf(journal, "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 standard DA)=1\n"),
      1u);
}

TEST(NvidiaControlPanel, LinesOfTheThreeViews) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, hdmi 1920x1080");
  host.connector("internal").nvidia_moniker = "#DB";
  host.connector("hdmi").nvidia_moniker = "#DC";
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kHdmi),
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 clone DB DC)=1\n"
            "dtcfg(setview 0 clone DB DC)=1\n1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(host.Extend(TRUE, kHdmi),
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 dualview DB DC)=1\n"
            "dtcfg(setview 0 dualview DB DC)=1\n1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kHdmi),
            "CreateProcessA(rundll32.exe NvCpl.DLL,dtcfg setview 0 standard DC)=1\n"
            "dtcfg(setview 0 standard DC)=1\n1");
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
}

// --- One display.

TEST(NvidiaControlPanelSingle, EveryDisplay) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kCrt), Shown("standard AA") + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kTv), Shown("standard TA") + "1");
  EXPECT_EQ(host.machine.Topology(), "single tv");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kHdmi), Shown("standard DB") + "1");
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kNb), Shown("standard DA") + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaControlPanelSingle, OfSeveralTheFirstOfTheOrder) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kNb | kHdmi), Shown("standard DA") + "1");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kCrt | kTv | kHdmi), Shown("standard AA") + "1");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kTv | kHdmi), Shown("standard TA") + "1");
}

TEST(NvidiaControlPanelSingle, OneWithoutANameIsPassedWithACheck) {
  NvidiaPanelHost host(kPair, L"--enable-dcheck");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kCrt | kTv), Shown("standard AA") + "1");
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kTv | kHdmi), "0");
  const std::string check =
      "Check failed: it != moniker_map.end(). Cannot find display moniker from connected "
      "displays\n";
  EXPECT_EQ(host.TakeLog(), check + check);
  sim::Connector& panel = host.connector("internal");
  panel.nvidia_display_type = 0x3000;  // the library calls it a television
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, kNb | kCrt), Shown("standard AA") + "1");
  EXPECT_EQ(host.TakeLog(), check);
}

TEST(NvidiaControlPanelSingle, NoDisplayIsACheckForEachOfTheOrder) {
  NvidiaPanelHost host(kPair, L"--enable-dcheck");
  EXPECT_EQ(host.Switch(IMMonitor::DM_SINGLE, 0), "0");
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed: CountBits(displays) > 0. \n"), 6u);
}

// --- Clone.

TEST(NvidiaControlPanelClone, PanelComesFirst) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kCrt), Shown("clone DA AA") + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kTv), Shown("clone DA TA") + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+tv");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kHdmi), Shown("clone DA DB") + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
}

TEST(NvidiaControlPanelClone, OfSeveralTheFirstOfTheOrder) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kTv | kHdmi), Shown("clone DA TA") + "1");
}

TEST(NvidiaControlPanelClone, NeedsThePanelAndAnother) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kCrt | kHdmi), "0");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb), "0");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, 0), "0");
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kDvi), "0");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

// --- Other modes.

TEST(NvidiaControlPanelModes, OthersHaveNoCommand) {
  NvidiaPanelHost host(kPair);
  for (const uint32_t mode : {0u, 3u, 4u, 8u, 16u, 128u, 256u, 512u, 1024u}) {
    EXPECT_EQ(host.Switch(mode, kNb | kCrt), "0") << mode;
  }
  EXPECT_EQ(host.machine.Calls("NvCplRefreshConnectedDevices"), 9u);  // detected all the same
}

// --- Extended desktop.

TEST(NvidiaControlPanelExtend, AddsThePanelToTheMask) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Extend(TRUE, kCrt), Shown("dualview DA AA") + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
  EXPECT_EQ(host.Extend(TRUE, kNb | kHdmi), Shown("dualview DA DB") + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST(NvidiaControlPanelExtend, OfSeveralTheFirstOfTheOrder) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Extend(TRUE, kHdmi | kTv), Shown("dualview DA TA") + "1");
}

TEST(NvidiaControlPanelExtend, WithoutAnotherDisplayFails) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.Extend(TRUE, 0), "0");
  EXPECT_EQ(host.Extend(TRUE, kDvi), "0");
}

TEST(NvidiaControlPanelExtend, AnyTruthTurnsItOn) {
  NvidiaPanelHost host(kPair);
  EXPECT_EQ(host.Extend(2, kCrt), Shown("dualview DA AA") + "1");
}

TEST(NvidiaControlPanelExtend, OffShowsTheFirstOfAllConnected) {
  NvidiaPanelHost host(kExtended);
  EXPECT_EQ(host.Extend(FALSE, kCrt), Shown("standard DA") + "1");  // whatever the mask says
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaControlPanelExtend, OffPassesADisplayWithoutAName) {
  NvidiaPanelHost host(kExtended);
  host.connector("internal").nvidia_display_type = 0x3000;
  EXPECT_EQ(host.Extend(FALSE, kNb), Shown("standard AA") + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
}

TEST(NvidiaControlPanelExtend, OffWithoutAnyNameFails) {
  NvidiaPanelHost host(kExtended);
  host.nvidia();
  host.machine.Fail("NvCplGetRealConnectedDevicesString", 1);
  EXPECT_EQ(host.Extend(FALSE, kNb), "0");
}

TEST(NvidiaControlPanelExtend, WhereverTakesAllConnected) {
  NvidiaPanelHost host(kFour);
  EXPECT_EQ(host.ExtendWherever(TRUE), Shown("dualview DA AA") + "1");
  EXPECT_EQ(host.ExtendWherever(FALSE), Shown("standard DA") + "1");
  host.machine.Unplug("crt");
  host.machine.Unplug("tv");
  EXPECT_EQ(host.ExtendWherever(TRUE), Shown("dualview DA DB") + "1");
}

TEST(NvidiaControlPanelExtend, WhereverWithThePanelAloneFails) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, crt");
  EXPECT_EQ(host.ExtendWherever(TRUE), "0");
}

TEST(NvidiaControlPanelExtend, ConnectedDisplaysMustBeKnown) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  for (const BOOL enable : {TRUE, FALSE}) {
    host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
    EXPECT_EQ(host.Extend(enable, kCrt), "0");
    host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
    EXPECT_EQ(host.ExtendWherever(enable), "0");
  }
  EXPECT_EQ(host.machine.Calls("NvCplRefreshConnectedDevices"), 4u);
  EXPECT_EQ(host.machine.Calls("NvGetDisplayInfo"), 0u);
}

TEST(NvidiaControlPanelModes, SwitchWorksWithoutKnowingWhatIsConnected) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kCrt), Shown("clone DA AA") + "1");
}

// --- The program.

TEST(NvidiaControlPanelProgram, ThatDoesNotStartIsASuccessAllTheSame) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("CreateProcessA", 1, ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kCrt), Started("clone DA AA", 0) + "1");
  host.machine.Fail("CreateProcessA", 1, ERROR_ACCESS_DENIED);
  EXPECT_EQ(host.Extend(TRUE, kCrt), Started("dualview DA AA", 0) + "1");
  host.machine.Fail("CreateProcessA", 1, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_EQ(host.ExtendWherever(FALSE), Started("standard DA", 0) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_EQ(host.Mode(), "1 of 1");  // only a look tells
}

TEST(NvidiaControlPanelProgram, ThatDoesNothingIsASuccessAllTheSame) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  host.machine.Fail("dtcfg", 1);
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, kNb | kCrt), Missed("clone DA AA") + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaControlPanelProgram, BothHandlesAreGivenBackAtOnce) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  const std::string held = host.machine.Outstanding();
  const uint32_t closed = host.machine.Calls("CloseHandle");
  host.Switch(IMMonitor::DM_CLONE, kNb | kCrt);
  EXPECT_EQ(host.machine.Calls("CloseHandle"), closed + 2);
  EXPECT_EQ(host.machine.Outstanding(), held);
}

TEST(NvidiaControlPanelProgram, ThatDoesNotStartLeavesNoHandleToGiveBack) {
  NvidiaPanelHost host(kPair);
  host.Switch(IMMonitor::DM_CLONE, kNb | kCrt);
  const uint32_t closed = host.machine.Calls("CloseHandle");
  host.machine.Fail("CreateProcessA", 1, ERROR_FILE_NOT_FOUND);
  host.Switch(IMMonitor::DM_SINGLE, kNb);
  EXPECT_EQ(host.machine.Calls("CloseHandle"), closed);
}

TEST(NvidiaControlPanelProgram, IsNotWaitedFor) {
  NvidiaPanelHost host(kPair);
  host.nvidia();
  const uint64_t before = host.machine.Now();
  const uint32_t waits = host.machine.Calls("WaitForSingleObject");
  host.Switch(IMMonitor::DM_CLONE, kNb | kCrt);
  EXPECT_EQ(host.machine.Calls("WaitForSingleObject"), waits);
  EXPECT_EQ(host.machine.Now(), before);
}

// --- Faults at every place of a course.

struct Step {
  std::string (*run)(NvidiaPanelHost* host);
};

constexpr Step kCourse[] = {
    {[](NvidiaPanelHost* h) { return std::to_string(h->bare()->Initial()); }},
    {[](NvidiaPanelHost* h) { return h->Connected() + h->Active() + h->Mode(); }},
    {[](NvidiaPanelHost* h) { return h->Switch(IMMonitor::DM_CLONE, kNb | kHdmi); }},
    {[](NvidiaPanelHost* h) { return h->Extend(TRUE, kCrt); }},
    {[](NvidiaPanelHost* h) { return h->ExtendWherever(FALSE); }},
};

/// @return false when no call met the fault
bool RunWithFault(const std::string& function, uint32_t nth, sim::Machine::Repeat repeat) {
  NvidiaPanelHost host("xp nvidia: internal 1280x800 active, crt 1280x1024, hdmi 1920x1080",
                       L"--enable-dcheck --v=2");
  host.bare();
  host.machine.ForgiveUnusedFaults();
  host.machine.Fail(function, nth, 0, repeat);
  for (const Step& step : kCourse) {
    if (step.run(&host) == "0" && &step == kCourse) break;  // there is no object to go on with
  }
  const bool met = host.machine.FaultsGiven() > 0;
  host.machine.ClearFaults();
  if (host.bare()->Initial() == 0) return met;
  host.Switch(IMMonitor::DM_SINGLE, kNb);
  EXPECT_EQ(host.machine.Topology(), "single internal") << function << " " << nth;
  EXPECT_EQ(host.Connected(), "19 (3)") << function << " " << nth;
  EXPECT_EQ(host.Mode(), "1 of 1") << function << " " << nth;
  return met;
}

class NvidiaControlPanelFault : public testing::TestWithParam<const char*> {};

TEST_P(NvidiaControlPanelFault, AtAnyCallLeavesAMachineThatSwitches) {
  for (const auto repeat : {sim::Machine::Repeat::kOnce, sim::Machine::Repeat::kFromThenOn}) {
    uint32_t nth = 1;
    while (nth < 100 && RunWithFault(GetParam(), nth, repeat)) ++nth;
    EXPECT_GT(nth, 1u) << "never called";
    EXPECT_LT(nth, 100u);
  }
}

INSTANTIATE_TEST_SUITE_P(Functions, NvidiaControlPanelFault,
                         testing::Values("LoadLibraryA", "GetProcAddress", "NvAPI_Initialize",
                                         "NvAPI_EnumPhysicalGPUs", "NvAPI_GPU_GetConnectedOutputs",
                                         "NvAPI_GPU_GetActiveOutputs", "NvAPI_GPU_GetConnectorInfo",
                                         "NvAPI_EnumNvidiaDisplayHandle",
                                         "NvAPI_GetHDMISupportInfo", "NvGetWindowsDisplayState",
                                         "NvCplRefreshConnectedDevices",
                                         "NvCplGetRealConnectedDevicesString", "NvGetDisplayInfo",
                                         "CreateProcessA", "dtcfg"));

}  // namespace
