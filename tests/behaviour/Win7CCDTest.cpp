// The controller over the display configuration functions of Windows 7: its life and its reports.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/behaviour/CcdReports.h"

using namespace ccd_test;

namespace {

// --- Initial

TEST(Win7CCDInitial, RefusesWhatIsOlderThanWindows7) {
  for (const char* windows : {"xp", "2003", "vista", "2008", "2008r2"}) {
    CoreHost host(std::string(windows) + " intel: internal 1366x768 active");
    const CcdPointer ccd = host.NewBareCcd();
    EXPECT_EQ(host.core().InitialOf(ccd.get()), "This class only support Windows 7 or later")
        << windows;
  }
}

TEST(Win7CCDInitial, LoadsTheLibraryOnce) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads + 1);
}

TEST(Win7CCDInitial, FailedLoadIsZeroAndIsTriedAgain) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "0");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
}

TEST(Win7CCDInitial, EveryFunctionIsRequired) {
  for (uint32_t entry = 1; entry <= 5; ++entry) {
    CoreHost host(kPanelAndCrt);
    const CcdPointer ccd = host.NewBareCcd();
    host.machine.Fail("GetProcAddress", entry);
    EXPECT_EQ(host.core().InitialOf(ccd.get()), "0") << entry;
  }
}

TEST(Win7CCDApi, LoadsNothingWithoutAName) {
  CoreHost host(kPanelAndCrt);
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().LoadWin7CCDApi(nullptr), 0);
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(host.core().LoadWin7CCDApi("User32.dll"), 1);
  EXPECT_EQ(host.core().LoadWin7CCDApi("NoSuchLibrary.dll"), 0);
  EXPECT_EQ(host.Modules(), 0u);
}

// --- Without a bound API every operation gives its failure result.

void ExpectFailures(CoreHost* host, const CcdPointer& ccd) {
  EXPECT_EQ(Connected(ccd), Report());
  EXPECT_EQ(Active(ccd), Report());
  EXPECT_EQ(Mode(ccd), Report());
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(ccd->EnableExtendMode(1), 0);
  EXPECT_EQ(ccd->ChangeToNBOnlySingleDisplayMode(), 0);
  DEVMODEA dm = {};
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, &dm));
  EXPECT_EQ(host->core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host->core().HasMultipleDisplayAdapter(ccd.get()), 0);
  EXPECT_EQ(host->machine.TakeJournal(), "");
}

TEST(Win7CCD, FailsBeforeInitial) {
  CoreHost host(kPanelAndCrt);
  ExpectFailures(&host, host.NewBareCcd());
}

TEST(Win7CCD, FailsWithoutAnApiAndChecksIt) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd(host.core().NewWin7CCDWithoutApi());
  ccd->AddRef();
  ExpectFailures(&host, ccd);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "0");
  uint32_t width = 1, height = 1;
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(host.TakeLog(), "Check failed: m_ccd. \n");
}

TEST(Win7CCD, ApiCountsAsLoadedAfterAFailedInitialOnDemand) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  uint32_t width = 1, height = 1;
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), loads);
  ExpectFailures(&host, ccd);
}

// --- Reference count

TEST(Win7CCD, LastReleaseEndsTheWholeObject) {
  CoreHost host(kPanelAndCrt);
  Win7CCD* const ccd = host.core().NewWin7CCD();
  ASSERT_EQ(host.core().InitialOf(ccd), "1");
  IPhysicalMonitor* const pm = ccd;
  EXPECT_EQ(pm->AddRef(), 1u);
  EXPECT_EQ(pm->AddRef(), 2u);
  EXPECT_EQ(pm->Release(), 1u);
  EXPECT_EQ(host.Modules(), 1u);  // its library
  EXPECT_EQ(pm->Release(), 0u);
  EXPECT_EQ(host.Modules(), 0u);
}

TEST(Win7CCD, QueryInterfaceFailsWithACheck) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  void* object = nullptr;
  EXPECT_EQ(static_cast<uint32_t>(ccd->QueryInterface(GUID(), &object)), 0x80004005u);
  EXPECT_EQ(host.TakeLog(), "Check failed: 0 && \"Should never call this function\". \n");
}

TEST(Win7CCD, HasAPseudoVendor) {
  CoreHost host(kPanelAndCrt);
  EXPECT_EQ(host.NewBareCcd()->GetVgaVendor(), 0x045Eu);
}

// --- Connected and active displays

TEST(Win7CCD, ReportsEveryTechnologyAsItsDisplayAndCountsIt) {
  ExpectEveryTechnologyReported<CoreHost>();
}

TEST(Win7CCD, ConnectedDisplaysAreActiveOrNot) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768, hdmi 1920x1080, dp");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x13, 3}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(Win7CCD, PathWithoutAFlagStillCounts) {
  CoreHost host("win7 intel: internal 1366x768 active, wireless 1280x720");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x01, 2}));
}

TEST(Win7CCD, TwoHdmiOutputsCountOnce) {
  CoreHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, hdmi2 1920x1080");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x11, 2}));
}

TEST(Win7CCD, HdmiAndOtherShareAFlagAndCountTwice) {
  CoreHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080, other 1920x1080");
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x11, 3}));
}

TEST(Win7CCD, ReportsAddToTheirOutputs) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  uint32_t displays = 0x40, count = 10;
  EXPECT_EQ(ccd->GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 12u);
  EXPECT_EQ(ccd->GetActiveDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 13u);
}

TEST(Win7CCD, ForcedPathIsNoDisplay) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[1].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
}

TEST(Win7CCD, NoDisplayAtAllIsASuccess) {
  CoreHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0, 0}));
  EXPECT_EQ(Active(ccd), (Report{1, 0, 0}));
}

TEST(Win7CCD, FailedQueriesAreFailuresWithoutAMessage) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    CoreHost host(kPanelAndCrt, L"--enable-dcheck");
    const CcdPointer ccd = host.NewCcd();
    host.ForgetLog();
    // A display plugged in between the two calls makes the buffers too small.
    host.machine.Fail(function, 1, ERROR_INSUFFICIENT_BUFFER, sim::Machine::Repeat::kFromThenOn);
    EXPECT_EQ(Connected(ccd), Report()) << function;
    EXPECT_EQ(Active(ccd), Report()) << function;
    EXPECT_EQ(Mode(ccd), Report()) << function;
    EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0) << function;
    DEVMODEA dm = {};
    EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, &dm)) << function;
    uint32_t width = 7, height = 7;
    EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height)) << function;
    EXPECT_EQ(width, 0u);
    EXPECT_EQ(height, 0u);
    EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 0) << function;
    EXPECT_EQ(host.TakeLog(), "") << function;
    EXPECT_EQ(host.machine.TakeJournal(), "") << function;
  }
}

// --- GetCurrentDisplayMode

TEST(Win7CCDMode, TellsTheTopologyOfTheDatabase) {
  const struct {
    const char* machine;
    Report expected;  // result, active displays, mode
  } rows[] = {
      {"win7 intel: internal 1366x768 active, crt 1024x768", {1, 1, IMMonitor::DM_SINGLE}},
      {"win7 intel: internal 1366x768, crt 1024x768 active", {1, 2, IMMonitor::DM_SINGLE}},
      {"win7 intel: clone internal 1024x768 active, crt 1024x768 active",
       {1, 3, IMMonitor::DM_CLONE}},
      {"win7 intel: internal 1366x768 active, crt 1024x768 active", {1, 3, IMMonitor::DM_EXTEND}},
  };
  for (const auto& row : rows) {
    CoreHost host(row.machine);
    EXPECT_EQ(Mode(host.NewCcd()), row.expected) << row.machine;
  }
}

TEST(Win7CCDMode, UnknownTopologyIsModeZeroWithSuccess) {
  CoreHost host(kPanelAndCrt);
  for (auto& entry : host.machine.model().database) entry.second.topology = 3;
  EXPECT_EQ(Mode(host.NewCcd()), (Report{1, 1, 0}));
}

TEST(Win7CCDMode, SetsItsOutputsWhateverTheyHeld) {
  CoreHost host(kPanelAndCrt);
  uint32_t mode = 0xFF, displays = 0xF0;
  EXPECT_EQ(host.NewCcd()->GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(mode, 1u);
  EXPECT_EQ(displays, 1u);
}

TEST(Win7CCDMode, FailsWhenOnlyTheDatabaseCannotBeRead) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("QueryDisplayConfig", 2);
  EXPECT_EQ(Mode(ccd), Report());
}

}  // namespace
