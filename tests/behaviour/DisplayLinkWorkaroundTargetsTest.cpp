// Connected and active displays with DisplayLink's own among those that Windows lists.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "sim/FaceTable.h"
#include "sim/faces/DisplayLink.h"
#include "sim/tests/Fakes.h"
#include "tests/behaviour/DisplayLinkWorkaroundHost.h"

using namespace ccd_test;

namespace {

constexpr char kDock[] =
    "win7 intel, displaylink: internal 1366x768 active, crt 1024x768, usb@2 1680x1050 active";
constexpr char kTwoOnTheDock[] =
    "win7 intel, displaylink*2: internal 1366x768 active, usb@2 1680x1050, usb2@2 1920x1080";
constexpr char kPanelOnly[] = "win7 intel, displaylink: internal 1366x768 active, usb@2 1680x1050";
constexpr char kUsbOnly[] = "win7 intel, displaylink: internal 1366x768, usb@2 1680x1050 active";

/// An object whose add-on host has had the time to get to know the displays.
struct Dock : DisplayLinkHost {
  explicit Dock(const char* text) : DisplayLinkHost(text), ccd(NewCcd()) { Settle(); }
  void Settle() { machine.Advance(500); }
  sim::Adapter& UsbAdapter() { return machine.model().adapters[1]; }
  sim::Connector& Connector(size_t index) { return machine.model().connectors[index]; }
  size_t Known() {
    const DisplayLinkBox& box = *ostrel().white_box().display_link;
    return box.NivoDisplays(box.GetInstance().get()).size();
  }

  CcdPointer ccd;
};

TEST(DisplayLinkTargets, AreInNoReport) {
  Dock dock(kDock);
  EXPECT_EQ(dock.Known(), 1u);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x03, 2}));
  EXPECT_EQ(Active(dock.ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(dock.machine.TakeJournal(), "");
}

TEST(DisplayLinkTargets, AreInTheReportsOfPlainWin7Ccd) {
  Dock dock(kDock);
  dock.machine.model().services.clear();
  const CcdPointer plain = dock.NewCcd();
  EXPECT_EQ(Connected(plain), (Report{1, 0x13, 3}));
  EXPECT_EQ(Active(plain), (Report{1, 0x11, 2}));
}

TEST(DisplayLinkTargets, AreMissingAmongTheDisplaysOfTheCurrentMode) {
  Dock dock(kDock);
  EXPECT_EQ(Mode(dock.ccd), (Report{1, 0x01, IMMonitor::DM_EXTEND}));
}

TEST(DisplayLinkTargets, AloneLeaveNothingActiveWithSuccess) {
  Dock dock(kUsbOnly);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(Active(dock.ccd), (Report{1, 0, 0}));
}

TEST(DisplayLinkTargets, ThatTheHostDoesNotKnowYetAreReported) {
  DisplayLinkHost host(kDock);
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x13, 3}));
  host.machine.Advance(500);
  EXPECT_EQ(Connected(ccd), (Report{1, 0x03, 2}));
}

TEST(DisplayLinkTargets, WithoutTheLibraryAreReported) {
  DisplayLinkHost host(kDock);
  host.machine.model().displaylink.library = false;
  const CcdPointer ccd = host.NewCcd();
  host.machine.Advance(500);
  EXPECT_EQ(Connected(ccd), (Report{1, 0x13, 3}));
  EXPECT_EQ(host.machine.Calls("dlGetVidPnTargetID"), 0u);
}

TEST(DisplayLinkTargets, ComeAndGoWithTheirDisplays) {
  Dock dock(kTwoOnTheDock);
  EXPECT_EQ(dock.Known(), 2u);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  const sim::Monitor monitor = *dock.Connector(2).monitor;
  dock.machine.Unplug("usb2");
  dock.Settle();
  EXPECT_EQ(dock.Known(), 1u);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  dock.machine.Plug("usb2", monitor);
  dock.Settle();
  EXPECT_EQ(dock.Known(), 2u);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
}

TEST(DisplayLinkTargets, ThatTheHostLeavesOutAreReported) {
  Dock dock(kTwoOnTheDock);
  const uint64_t second = sim::NivoHandleOf(dock.machine, "usb2");
  sim::SetNivoState(dock.machine, second, sim::kNivoOffDesktop);
  sim::PostNivoEvent(dock.machine, sim::kNivoDisplayChanged, second);
  dock.Settle();
  EXPECT_EQ(dock.Known(), 1u);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x11, 2}));
}

// --- Which path is a DisplayLink target's.

TEST(DisplayLinkTargets, WithAnotherNumberOnTheirAdapterAreReported) {
  Dock dock(kPanelOnly);
  const sim::Connector usb = dock.Connector(1);
  // Another output of the same adapter, which the host knows nothing of.
  sim::Connector other = usb;
  other.id = "crt";
  other.technology = 0;
  other.target_id = usb.target_id + 1;
  dock.machine.model().connectors.push_back(other);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x03, 2}));
}

TEST(DisplayLinkTargets, NumberOnTheNotebooksAdapterIsReported) {
  Dock dock(kPanelOnly);
  // The dock's is not there for Windows; the host knows it all the same.
  dock.Connector(0).target_id = dock.Connector(1).target_id;
  dock.Connector(1).forced = true;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(Active(dock.ccd), (Report{1, 0x01, 1}));
}

TEST(DisplayLinkTargets, AreToldByBothHalvesOfTheAdaptersId) {
  Dock dock(kPanelOnly);
  sim::Adapter& notebook = dock.machine.model().adapters[0];
  dock.Connector(0).target_id = dock.Connector(1).target_id;
  dock.Connector(1).forced = true;
  const int32_t high = dock.UsbAdapter().luid_high;
  const uint32_t low = dock.UsbAdapter().luid_low;
  notebook.luid_low = low;
  notebook.luid_high = high + 1;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  notebook.luid_low = low + 1;
  notebook.luid_high = high;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  notebook.luid_low = low;  // the very same
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0, 0}));
}

TEST(DisplayLinkTargets, AreToldByAnAdapterIdOfAnySign) {
  Dock dock(kPanelOnly);
  dock.UsbAdapter().luid_low = 0xFFFFFFF0;
  dock.UsbAdapter().luid_high = -2;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
}

// --- One number on both adapters.

TEST(DisplayLinkTargets, BehindTheNotebooksOfTheSameNumberLeaveThat) {
  Dock dock(kPanelOnly);  // the panel shows something: Windows lists it first
  dock.Connector(0).target_id = dock.Connector(1).target_id;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
}

TEST(DisplayLinkTargets, BeforeTheNotebooksOfTheSameNumberTakeItAlong) {
  Dock dock(kUsbOnly);  // the dock's shows something: Windows lists it first
  dock.Connector(0).target_id = dock.Connector(1).target_id;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0, 0}));
}

// --- What the library answers.

TEST(DisplayLinkTargets, OfWhichOneCannotBeAskedLeaveTheOtherOut) {
  for (const uint32_t failing : {1u, 2u}) {
    Dock dock(kTwoOnTheDock);
    dock.machine.Fail("dlGetVidPnTargetID", failing);
    EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x11, 2})) << failing;
    EXPECT_EQ(dock.machine.Calls("dlGetVidPnTargetID"), 2u);
    EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1})) << failing;
  }
}

TEST(DisplayLinkTargets, OfAServiceThatStoppedStayKnownAndMatchNothing) {
  Dock dock(kPanelOnly);
  dock.machine.model().displaylink.working = false;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x11, 2}));
  EXPECT_EQ(dock.Known(), 1u);
}

TEST(DisplayLinkTargets, ThatCannotBeAskedStandForTheTargetOfZeros) {
  Dock dock(kPanelOnly);
  sim::Adapter& notebook = dock.machine.model().adapters[0];
  notebook.luid_low = 0;
  notebook.luid_high = 0;
  dock.Connector(0).target_id = 0;
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  dock.machine.Fail("dlGetVidPnTargetID", 1);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x10, 1}));  // the panel, not the dock's
}

// A library that fills the record and calls that a failure.
std::vector<uint64_t> g_asked;
bool g_was_zero = false;

int32_t FillAndFail(uint64_t handle, uint32_t kind, void* record) {
  static const uint8_t kZeros[24] = {};
  g_asked.push_back(handle);
  g_was_zero = kind == 0x10000 && std::memcmp(record, kZeros, sizeof(kZeros)) == 0;
  const sim::Model& model = sim::Machine::Current().model();
  auto* const bytes = static_cast<uint8_t*>(record);
  std::memset(bytes, 0xFF, sizeof(kZeros));
  std::memcpy(bytes + 8, &model.adapters[1].luid_low, 4);
  std::memcpy(bytes + 12, &model.adapters[1].luid_high, 4);
  std::memcpy(bytes + 16, &model.connectors[1].target_id, 4);
  return -1;
}

TEST(DisplayLinkTargets, CountWhateverTheResultAndAreAskedForInTheHostsOrder) {
  DisplayLinkHost host(kTwoOnTheDock);
  for (sim::Entry& entry : host.machine.state()
                               .invented[sim::LowerCase(host.machine.model().displaylink.file)]
                               .entries) {
    if (std::string(entry.name) == "dlGetVidPnTargetID") entry.function = sim::Erase(FillAndFail);
  }
  const CcdPointer ccd = host.NewCcd();
  host.machine.Advance(500);
  g_asked.clear();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x11, 2}));  // both records name the first one
  EXPECT_TRUE(g_was_zero);
  EXPECT_EQ(g_asked, (std::vector<uint64_t>{sim::NivoHandleOf(host.machine, "usb"),
                                            sim::NivoHandleOf(host.machine, "usb2")}));
}

// --- Nothing is asked where nothing is known, and nothing is lost by a query that fails.

TEST(DisplayLinkTargets, AreNotAskedForWhenThePathsCannotBeHad) {
  Dock dock(kPanelOnly);
  const uint32_t asked = dock.machine.Calls("dlGetVidPnTargetID");
  dock.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_EQ(Connected(dock.ccd), Report());
  EXPECT_EQ(dock.machine.Calls("dlGetVidPnTargetID"), asked);
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(dock.machine.Calls("dlGetVidPnTargetID"), asked + 1);
}

TEST(DisplayLinkTargets, StayKnownToAnObjectWhoseHostWasStopped) {
  Dock dock(kPanelOnly);
  dock.NewBareCcd();  // ends without having joined
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(sim::NivoListeners(dock.machine), 0u);
  // Its own end withdraws once more what is withdrawn already.
  const sim::CaughtFailures refused;
  dock.ccd.reset();
  EXPECT_EQ(refused.list(), (std::vector<std::string>{
                                "dlUnRegisterNivoDisplayNotification: nobody listens in that way",
                                "dlUnSubscribePids: nobody has subscribed"}));
}

TEST(DisplayLinkTargets, AreLeftOutByTwoObjectsAtATime) {
  Dock dock(kDock);
  CcdPointer second = dock.NewCcd();
  EXPECT_EQ(Connected(second), (Report{1, 0x03, 2}));
  EXPECT_EQ(Connected(dock.ccd), (Report{1, 0x03, 2}));
  dock.ccd.reset();
  EXPECT_EQ(Connected(second), (Report{1, 0x03, 2}));
  EXPECT_EQ(sim::NivoListeners(dock.machine), 1u);
  second.reset();
  EXPECT_EQ(sim::NivoListeners(dock.machine), 0u);
}

// --- A switch.

TEST(DisplayLinkTargets, FromExtendedOntoTheDockToAClone) {
  Dock dock(kDock);
  dock.machine.TakeJournal();
  EXPECT_EQ(dock.ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 0x03), 1);
  EXPECT_EQ(dock.machine.TakeJournal(),
            Set(1, "0x660") + Set(1, "0x6a0") + Set(2, "0x660") + Set(2, "0x6a0"));
  EXPECT_EQ(dock.machine.Topology(), "clone internal+crt");
}

TEST(DisplayLinkTargets, DoNotHoldAForcedArrangement) {
  Dock dock(kPanelOnly);
  dock.ostrel().SetLassoBoxStatus(1);
  dock.TakeConnections();
  dock.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  // Only the dock's display could stand for an HDMI output.
  EXPECT_EQ(dock.ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_HDMI), 1);
  EXPECT_EQ(dock.machine.TakeJournal(), Set(0, "0x48", 31) + Set(0, "0x888"));
  dock.machine.Advance(3000);
  EXPECT_EQ(dock.machine.TakeJournal(), Set(0, "0x41") + Set(0, "0x81"));
  EXPECT_EQ(dock.TakeConnections(), "Connect 1\nDisconnect 2\n");
}

}  // namespace
