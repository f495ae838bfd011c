// Presses of the hotkey on Intel notebooks with a USB display: the library as it ships, its thread
// that listens to DisplayLink's software, and Windows' own display configuration.
#include <algorithm>

#include "sim/MachineState.h"
#include "sim/ShortForm.h"
#include "sim/faces/DisplayLink.h"
#include "sim/faces/StandardOutput.h"
#include "tests/session/Story.h"

namespace {

constexpr char kFound[] = "\nApiDllLoadState: ApiLoadPending -> ApiLoaded\n";
constexpr char kNotFound[] = "\nApiDllLoadState: ApiLoadPending -> DummyApiLoaded\n";
constexpr char kRetry[] = "\nApiDllLoadState: DummyApiLoaded -> ApiLoadPending\n";

// Windows' own topologies, asked about and then taken.
constexpr char kPanelTopology[] =
    "SetDisplayConfig(paths=0 flags=0x41)=0\nSetDisplayConfig(paths=0 flags=0x81)=0\n";
constexpr char kCloneTopology[] =
    "SetDisplayConfig(paths=0 flags=0x42)=0\nSetDisplayConfig(paths=0 flags=0x82)=0\n";
constexpr char kExtendTopology[] = "SetDisplayConfig(paths=0 flags=0x84)=0\n";  // taken unasked
// With three displays about: the one that is wanted, or the two.
constexpr char kOnePath[] =
    "SetDisplayConfig(paths=1 flags=0x660)=0\nSetDisplayConfig(paths=1 flags=0x6a0)=0\n";
constexpr char kTwoPaths[] =
    "SetDisplayConfig(paths=2 flags=0x660)=0\nSetDisplayConfig(paths=2 flags=0x6a0)=0\n";

class DisplayLinkStory : public Story {
 protected:
  void OnDock(const std::string& notebook) {
    OnFile(notebook);
    Prepare();
  }
  void OnText(const std::string& text) {
    On(text);
    Prepare();
  }
  /// Starts the process and lets its thread meet the displays.
  void Start() {
    StartProcess();
    machine->Advance(100);
  }
  /// The calls of the display configuration since the last time.
  std::string TakeSets() { return TakeLines({"SetDisplayConfig"}); }
  bool Offers(const char* picture) {
    const Pictures offered = Look();
    return std::count(offered.begin(), offered.end(), picture) == 1;
  }

 private:
  void Prepare() {
    ThroughTheVendor();
    machine->Config("Settings", "Restore Display Settings After Switch", 0);
  }
};

const Pictures kWithoutUsb = {"NB.png", "NB-CRT.png", "CRT.png", "p1024x768.png", "Extend.png"};

// --- A notebook on its dock.

class OnTheDock : public DisplayLinkStory {
 protected:
  void SetUp() override { OnDock("intel-displaylink"); }
};

TEST_F(OnTheDock, UsbDisplayIsNoneOfTheNotebooksOwn) {
  Start();
  EXPECT_EQ(sim::TakeStandardOutput(*machine), kFound);
  EXPECT_EQ(sim::UnflushedStandardOutput(*machine), "");
  EXPECT_EQ(Look(), kWithoutUsb);
  EXPECT_EQ(Highlighted(), "NB.png");
  EXPECT_EQ(TakeSets(), "");
}

// As long as the thread has not heard of it, it looks like a display of the notebook's.
TEST_F(OnTheDock, UsbDisplayCountsUntilTheThreadKnowsIt) {
  StartProcess();
  ASSERT_TRUE(ostrel->Run());
  const Pictures before = Offered();
  EXPECT_EQ(std::count(before.begin(), before.end(), "HDMI.png"), 1);
  machine->Advance(3000);
  EXPECT_EQ(TakeNotifications(), "12");
  EXPECT_EQ(Look(), kWithoutUsb);
}

TEST_F(OnTheDock, ProcessEndsWithItsSubscriptionsAndTheNextOneBeginsAnew) {
  for (int process = 0; process < 3; ++process) {
    Start();
    EXPECT_EQ(sim::SubscribedPids(*machine),
              (std::vector<uint32_t>{0x1004307, 0x1000290, 0x10002E9}));
    EXPECT_EQ(sim::NivoListeners(*machine), 1u);
    EXPECT_EQ(machine->Calls("CreateThread"), process + 1u);
    EndProcess();
    EXPECT_EQ(sim::NivoListeners(*machine), 0u);
    EXPECT_TRUE(sim::SubscribedPids(*machine).empty());
    EXPECT_EQ(sim::TakeStandardOutput(*machine), kFound);
    EXPECT_EQ(machine->EndThreads(), 0u);
  }
}

TEST_F(OnTheDock, SoftwareThatIsRemovedLeavesTheNotebookToThePress) {
  Start();
  sim::RemoveDisplayLink(*machine);
  machine->Advance(200);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EndProcess();
  EXPECT_EQ(sim::NivoListeners(*machine), 0u);
  EXPECT_EQ(machine->EndThreads(), 0u);
  Start();  // without a service nobody is looked for
  EXPECT_EQ(machine->Calls("CreateThread"), 1u);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
}

TEST_F(OnTheDock, PressToCloneAndToExtended) {
  Start();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), kTwoPaths);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakeSets(), kOnePath);
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt+usb");
  EXPECT_EQ(TakeSets(), kExtendTopology);
}

// --- At the desk: extended to the USB display.

class AtTheDesk : public DisplayLinkStory {
 protected:
  void SetUp() override { OnDock("intel-displaylink-extend"); }
};

TEST_F(AtTheDesk, ExtendedDesktopOverTheUsbDisplayIsHighlightedAsExtended) {
  Start();
  EXPECT_EQ(Look(), kWithoutUsb);
  EXPECT_EQ(Highlighted(), "Extend.png");
  EXPECT_EQ(TakeSets(), "");
  EXPECT_EQ(machine->Topology(), "extend internal+usb");
}

TEST_F(AtTheDesk, PressToCloneGoesThroughThePanelAlone) {
  Start();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), std::string(kOnePath) + kTwoPaths);
}

TEST_F(AtTheDesk, PressToSingleGoesThereAndBack) {
  Start();
  Choose("CRT.png");
  EXPECT_EQ(machine->Topology(), "single crt");
  EXPECT_EQ(TakeSets(), kOnePath);
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+usb");  // as it was used last
  EXPECT_EQ(TakeSets(), kExtendTopology);
}

TEST_F(AtTheDesk, FromExtendedToCloneToSingleAndBack) {
  Start();
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), std::string(kOnePath) + kTwoPaths);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakeSets(), kOnePath);
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+usb");
  EXPECT_EQ(TakeSets(), kExtendTopology);
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
}

// --- With the USB display unplugged Windows makes its topologies itself.

class OffTheDesk : public DisplayLinkStory {
 protected:
  void SetUp() override {
    OnText("win7 intel, displaylink: internal 1366x768 active, crt 1280x1024 active, usb@2");
  }
};

TEST_F(OffTheDesk, FromExtendedToCloneToSingleAndBack) {
  Start();
  Look();
  EXPECT_EQ(Highlighted(), "Extend.png");
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), std::string(kPanelTopology) + kCloneTopology);
  Choose("NB.png");
  EXPECT_EQ(machine->Topology(), "single internal");
  EXPECT_EQ(TakeSets(), kPanelTopology);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(TakeSets(), kCloneTopology);  // from the panel there is no detour
  Choose("Extend.png");
  EXPECT_EQ(machine->Topology(), "extend internal+crt");
  EXPECT_EQ(TakeSets(), kExtendTopology);
}

TEST_F(OffTheDesk, RefusedDetourIsNoReasonToStop) {
  Start();
  machine->Fail("SetDisplayConfig", 2, ERROR_GEN_FAILURE);  // the panel alone
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

TEST_F(OffTheDesk, PlugWhileThePopupIsOpen) {
  Start();
  ASSERT_TRUE(ostrel->Run());
  const Pictures offered = Offered();
  Plug("usb", "Harbor 22D", 1680, 1050);
  machine->Advance(100);
  ASSERT_NE(machine->Popup(), nullptr);
  EXPECT_EQ(Offered(), offered);
  machine->Advance(3000);
  EXPECT_EQ(TakeNotifications(), "12");
  EXPECT_EQ(Look(), kWithoutUsb);
}

TEST_F(OffTheDesk, UnplugAndPlugWhileThePopupIsOpen) {
  Plug("usb", "Harbor 22D", 1680, 1050);
  Start();
  ASSERT_TRUE(ostrel->Run());
  machine->At(machine->Now() + 300, [this] { machine->Unplug("usb"); });
  machine->At(machine->Now() + 600, [this] { Plug("usb", "Harbor 24W", 1920, 1200); });
  machine->Advance(3000);
  EXPECT_EQ(machine->Popup(), nullptr);
  EXPECT_EQ(TakeNotifications(), "12");
  // Asked again for each of the three events, and named to the library for the two arrivals.
  EXPECT_EQ(machine->Calls("dlGetExecutionState"), 3u);
  EXPECT_EQ(machine->Calls("dlGetNivoID"), 2u);
  EXPECT_EQ(Look(), kWithoutUsb);
}

// Its software keeps it off the desktop: it is none of those that are left out.
TEST_F(OffTheDesk, DisplayThatIsSwitchedOffCountsUntilItIsOnAgain) {
  Plug("usb", "Harbor 22D", 1680, 1050);
  const uint64_t handle = sim::NivoHandleOf(*machine, "usb");
  sim::SetNivoState(*machine, handle, sim::kNivoOffDesktop);
  Start();
  EXPECT_TRUE(Offers("HDMI.png"));
  sim::SetNivoState(*machine, handle, 1);
  sim::PostNivoEvent(*machine, sim::kNivoDisplayChanged, handle);
  machine->Advance(100);
  EXPECT_FALSE(Offers("HDMI.png"));
}

// --- The library comes later.

TEST_F(DisplayLinkStory, LibraryThatIsInstalledMeanwhileIsFoundTenSecondsOn) {
  OnDock("intel-displaylink-half");
  Start();
  EXPECT_EQ(sim::TakeStandardOutput(*machine), kNotFound);
  machine->Advance(4900);
  sim::InstallDisplayLink(*machine);
  Plug("usb", "Harbor 22D", 1680, 1050);
  machine->Advance(4999);
  EXPECT_EQ(sim::TakeStandardOutput(*machine), "");
  EXPECT_EQ(sim::NivoListeners(*machine), 0u);
  machine->Advance(1);
  EXPECT_EQ(sim::TakeStandardOutput(*machine), std::string(kRetry) + kFound);
  EXPECT_EQ(sim::NivoListeners(*machine), 1u);
  EXPECT_EQ(Look(), kWithoutUsb);
}

TEST_F(DisplayLinkStory, LibraryThatNeverComesIsLookedForEveryTenSeconds) {
  OnDock("intel-displaylink-half");
  Start();
  machine->Advance(39900);
  std::string told = kNotFound;
  for (int retry = 0; retry < 4; ++retry) told += std::string(kRetry) + kNotFound;
  EXPECT_EQ(sim::TakeStandardOutput(*machine), told);
  EXPECT_EQ(machine->Calls("dlPumpMessages"), 0u);
  const uint64_t before = machine->Now();
  EndProcess();
  EXPECT_EQ(machine->Now(), before);  // the thread sees at once that it is to end
}

TEST_F(DisplayLinkStory, ServiceThatStopsLeavesThePressAlone) {
  OnDock("intel-displaylink");
  Start();
  sim::StopDisplayLink(*machine);
  machine->Advance(1000);
  EXPECT_EQ(Look(), kWithoutUsb);
  EXPECT_NE(machine->Log().find("dlPumpMessage() failed"), std::string::npos);
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
}

// --- No service.

TEST_F(DisplayLinkStory, WithoutTheServiceNobodyListens) {
  OnDock("intel-displaylink");
  machine->model().services.clear();
  Start();
  EXPECT_EQ(Look(), kWithoutUsb);  // the adapter's driver knows its own displays only
  EXPECT_EQ(machine->Calls("CreateThread"), 0u);
  EXPECT_EQ(sim::TakeStandardOutput(*machine), "");
  Choose("NB-CRT.png");
  EXPECT_EQ(machine->Topology(), "clone internal+crt");
  EXPECT_EQ(machine->Calls("ICUIExternal8::ChangeActiveDevices"), 1u);
}

TEST_F(DisplayLinkStory, WithoutTheServiceWindowsCountsTheUsbDisplay) {
  OnDock("intel-displaylink");
  machine->Config("Settings", "Prefer Windows 7 CCD API", 1);
  machine->model().services.clear();
  Start();
  EXPECT_TRUE(Offers("HDMI.png"));
}

TEST_F(DisplayLinkStory, StoppedServiceIsAsGoodAsARunningOne) {
  OnDock("intel-displaylink");
  machine->model().services[0].running = false;
  Start();
  EXPECT_EQ(machine->Calls("CreateThread"), 1u);
  EXPECT_EQ(Look(), kWithoutUsb);
}

struct ServiceRow {
  const char* function;
  const char* line;
};

class ServiceThatCannotBeAsked : public DisplayLinkStory,
                                 public testing::WithParamInterface<ServiceRow> {};

TEST_P(ServiceThatCannotBeAsked, CountsAsNone) {
  OnDock("intel-displaylink");
  machine->Fail(GetParam().function, 1, ERROR_ACCESS_DENIED, sim::Machine::Repeat::kFromThenOn);
  Start();
  EXPECT_EQ(machine->Calls("CreateThread"), 0u);
  EXPECT_NE(machine->Log().find(GetParam().line), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    Services, ServiceThatCannotBeAsked,
    testing::Values(ServiceRow{"OpenSCManagerW",
                               "Cannot open Service Control Manager, last error = 5"},
                    ServiceRow{"OpenServiceW",
                               "Cannot open DislayLink service, name = DisplayLinkService, "
                               "last error = 5"}),
    [](const testing::TestParamInfo<ServiceRow>& info) { return info.param.function; });

}  // namespace
