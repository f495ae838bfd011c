// The paths, settings and native sizes that Win7CCD reads.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/behaviour/CcdReports.h"

using namespace ccd_test;

namespace {

// --- GetDisplaySettings

DEVMODEA Filled() {
  DEVMODEA dm;
  std::memset(&dm, 0x5A, sizeof(dm));
  return dm;
}

TEST(Win7CCDSettings, FillsFourFieldsAndNothingElse) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1280x1024 active");
  host.machine.model().sources[1].mode.frequency = 75;
  const CcdPointer ccd = host.NewCcd();
  DEVMODEA dm = Filled();
  EXPECT_TRUE(ccd->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  DEVMODEA expected = Filled();
  expected.dmPelsWidth = 1280;
  expected.dmPelsHeight = 1024;
  expected.dmBitsPerPel = 32;
  expected.dmDisplayFrequency = 60;  // whatever the mode says
  EXPECT_EQ(std::memcmp(&dm, &expected, sizeof(dm)), 0);
}

TEST(Win7CCDSettings, DepthFollowsThePixelFormat) {
  for (const uint32_t bits : {8u, 16u, 24u, 32u}) {
    CoreHost host("win7 intel: internal 1366x768 active");
    host.machine.model().sources[0].mode.bits = bits;
    DEVMODEA dm = {};
    EXPECT_TRUE(host.NewCcd()->GetDisplaySettings(IMMonitor::MD_NB, &dm));
    EXPECT_EQ(dm.dmBitsPerPel, bits);
  }
}

TEST(Win7CCDSettings, BothDisplaysOfACloneHaveTheSharedMode) {
  CoreHost host("win7 intel: clone internal 1024x768 active, crt 1024x768 active");
  const CcdPointer ccd = host.NewCcd();
  for (const uint32_t display : {IMMonitor::MD_NB, IMMonitor::MD_CRT}) {
    DEVMODEA dm = {};
    EXPECT_TRUE(ccd->GetDisplaySettings(display, &dm));
    EXPECT_EQ(dm.dmPelsWidth, 1024u);
  }
}

TEST(Win7CCDSettings, DisplayThatShowsNothingHasNone) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768, other 1280x720");
  const CcdPointer ccd = host.NewCcd();
  DEVMODEA dm = Filled();
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_CRT, &dm));
  // "Other" stands in for nothing here.
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_HDMI, &dm));
}

TEST(Win7CCDSettings, NullRecordFailsTheCheckAndTheCall) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_NB, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: dm != NULL. \n");
}

// --- Technologies and paths

TEST(Win7CCDPaths, TechnologyOfADisplay) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const TechnologyRow rows[] = {{kInternal, IMMonitor::MD_NB},
                                {0, IMMonitor::MD_CRT},
                                {1, IMMonitor::MD_TV},
                                {4, IMMonitor::MD_DVI},
                                {5, IMMonitor::MD_HDMI},
                                {10, IMMonitor::MD_DP},
                                {kOther, 0x40},
                                {kOther, 0},
                                {kOther, 3}};
  for (const TechnologyRow& row : rows) {
    EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), row.flag), row.technology) << row.flag;
  }
}

TEST(Win7CCDPaths, DisplayPortIsTenUnlessItWasTheFirstDisplaySeen) {
  CoreHost host("win7 intel: internal 1366x768 active, edp 1366x768");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Connected(ccd), (Report{1, 0x21, 2}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
}

TEST(Win7CCDPaths, DisplayPortSeenFirstIsLookedUpAsItWasSeen) {
  CoreHost host("win7 intel: edp 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
  ASSERT_EQ(Connected(ccd), (Report{1, 0x20, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 11u);
}

TEST(Win7CCDPaths, DisplayWithoutAFlagTakesTheRunningMasksPlace) {
  // Keys are running masks: a path that adds no bit overwrites the entry in front of it.
  CoreHost host("win7 intel: edp 1366x768 active, wireless 1280x720");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Connected(ccd), (Report{1, 0x20, 2}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 15u);
}

TEST(Win7CCDPaths, ActiveDisplaysDoNotFillTheMap) {
  CoreHost host("win7 intel: edp 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(Active(ccd), (Report{1, 0x20, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
}

DISPLAYCONFIG_PATH_INFO PathOf(uint32_t technology, UINT32 id) {
  DISPLAYCONFIG_PATH_INFO path = {};
  path.targetInfo.outputTechnology = static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(technology);
  path.targetInfo.id = id;
  return path;
}

TEST(Win7CCDPaths, SelectsTheFirstOfATechnology) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const PathList paths = {PathOf(kOther, 1), PathOf(5, 2), PathOf(5, 3)};
  DISPLAYCONFIG_PATH_INFO path = {};
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_HDMI, paths, &path), 1);
  EXPECT_EQ(std::memcmp(&path, &paths[1], sizeof(path)), 0);
}

TEST(Win7CCDPaths, SelectsOtherInPlaceOfAMissingTechnology) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  const PathList paths = {PathOf(5, 1), PathOf(kOther, 2), PathOf(kOther, 3)};
  DISPLAYCONFIG_PATH_INFO path = {};
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, paths, &path), 1);
  EXPECT_EQ(path.targetInfo.id, 2u);
}

TEST(Win7CCDPaths, SelectsNothingOutOfNothing) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();
  DISPLAYCONFIG_PATH_INFO path = PathOf(9, 99);
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, {PathOf(5, 1)}, &path), 0);
  EXPECT_EQ(host.core().SelectPath(ccd.get(), IMMonitor::MD_CRT, {}, &path), 0);
  EXPECT_EQ(path.targetInfo.id, 99u);
}

TEST(Win7CCDPaths, QueryAppendsAvailablePathsUnsorted) {
  CoreHost host("win7 intel*1: crt 1024x768 active, dvi, internal 1366x768");
  const CcdPointer ccd = host.NewCcd();
  PathList paths = {PathOf(9, 99)};
  EXPECT_EQ(host.core().QueryPaths(ccd.get(), QDC_ALL_PATHS, &paths, nullptr), 1);
  ASSERT_EQ(paths.size(), 3u);
  EXPECT_EQ(paths[0].targetInfo.id, 99u);
  EXPECT_EQ(paths[1].targetInfo.id, host.machine.model().connectors[0].target_id);
  EXPECT_EQ(paths[2].targetInfo.id, host.machine.model().connectors[2].target_id);
}

TEST(Win7CCDPaths, QueryTellsTheTopologyOfTheDatabase) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  PathList paths;
  DISPLAYCONFIG_TOPOLOGY_ID topology = {};
  EXPECT_EQ(host.core().QueryPaths(ccd.get(), QDC_DATABASE_CURRENT, &paths, &topology), 1);
  EXPECT_EQ(static_cast<int>(topology), 1);
  EXPECT_EQ(paths.size(), 1u);
}

TEST(Win7CCDPaths, ActiveTargetIsThePanelWhateverIsAskedFor) {
  CoreHost host("win7 intel: crt 1024x768 active, internal 1366x768");
  const CcdPointer ccd = host.NewCcd();
  const uint32_t panel = host.machine.model().connectors[1].target_id;
  for (const uint32_t display : {IMMonitor::MD_NB, IMMonitor::MD_CRT, IMMonitor::MD_DP}) {
    EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), display), panel);
  }
}

TEST(Win7CCDPaths, WithoutADisplayThereIsNoActiveTarget) {
  CoreHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  host.ForgetLog();
  EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(Win7CCDPaths, FailedQueryForTheActiveTargetIsLogged) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  host.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_EQ(host.core().GetActiveTargetId(ccd.get(), IMMonitor::MD_NB), 0u);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Can't find any active display path\n");
}

TEST(Win7CCDPaths, DisplaysOnTwoAdaptersAreSeveralAdapters) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080", L"--v=2");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 1);
  EXPECT_EQ(host.TakeLog(), "HasMultipleDisplayAdapter() number of adapters =2\n");
}

TEST(Win7CCDPaths, AdapterWithoutADisplayDoesNotCount) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, crt 1024x768, hdmi@2", L"--v=2");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(ccd.get()), 0);
  EXPECT_EQ(host.TakeLog(), "HasMultipleDisplayAdapter() number of adapters =1\n");
}

TEST(Win7CCDPaths, DisplaysOfOneTechnologyOnTwoAdaptersAreNotReduced) {
  CoreHost host("win7 intel, nvidia: hdmi 1366x768 active, hdmi2@2 1920x1080");
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(host.NewCcd().get()), 1);
}

TEST(Win7CCDPaths, AdaptersAreToldApartByBothHalvesOfTheirId) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080");
  host.machine.model().adapters[1].luid_low = host.machine.model().adapters[0].luid_low;
  host.machine.model().adapters[1].luid_high = 1;
  EXPECT_EQ(host.core().HasMultipleDisplayAdapter(host.NewCcd().get()), 1);
}

// --- Native size

struct Size {
  bool result = false;
  uint32_t width = 0;
  uint32_t height = 0;
};
bool operator==(const Size& a, const Size& b) {
  return a.result == b.result && a.width == b.width && a.height == b.height;
}
std::ostream& operator<<(std::ostream& out, const Size& size) {
  return out << size.result << ": " << size.width << "x" << size.height;
}

Size Native(const CcdPointer& ccd, uint32_t display) {
  Size size = {false, 7, 7};
  size.result = ccd->GetNativeResolution(display, &size.width, &size.height);
  return size;
}

TEST(Win7CCDNative, IsThePreferredModeOfTheDisplay) {
  CoreHost host(
      "win7 intel: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080, dp 1920x1200");
  const CcdPointer ccd = host.NewBareCcd();  // loads the API itself
  EXPECT_EQ(Native(ccd, IMMonitor::MD_NB), (Size{true, 1366, 768}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_CRT), (Size{true, 1280, 1024}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), (Size{true, 1920, 1080}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_DP), (Size{true, 1920, 1200}));
}

TEST(Win7CCDNative, DviAndHdmiAreLookedForAlike) {
  CoreHost hdmi("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  EXPECT_EQ(Native(hdmi.NewCcd(), IMMonitor::MD_DVI), (Size{true, 1920, 1080}));
}

TEST(Win7CCDNative, DviComesFirstWhereBothAreThere) {
  CoreHost both("win7 intel: internal 1366x768 active, hdmi 1920x1080, dvi 1680x1050");
  const CcdPointer ccd = both.NewCcd();
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), (Size{true, 1680, 1050}));
  EXPECT_EQ(Native(ccd, IMMonitor::MD_DVI), (Size{true, 1680, 1050}));
}

TEST(Win7CCDNative, EmbeddedDisplayPortIsDisplayPort) {
  CoreHost host("win7 intel: internal 1366x768 active, edp 1600x900");
  EXPECT_EQ(Native(host.NewCcd(), IMMonitor::MD_DP), (Size{true, 1600, 900}));
}

TEST(Win7CCDNative, AnythingElseIsTakenForThePanel) {
  CoreHost host("win7 intel: internal 1366x768 active, tv 800x600");
  const CcdPointer ccd = host.NewCcd();
  for (const uint32_t display : {uint32_t{IMMonitor::MD_TV}, 0x40u, 0u, 3u}) {
    EXPECT_EQ(Native(ccd, display), (Size{true, 1366, 768})) << display;
  }
}

TEST(Win7CCDNative, MissingDisplayHasNoneAndZeroesTheOutputs) {
  CoreHost host("win7 intel: internal 1366x768 active, other 1280x720");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Native(ccd, IMMonitor::MD_CRT), Size());
  EXPECT_EQ(Native(ccd, IMMonitor::MD_HDMI), Size());  // "other" stands in for nothing here
}

TEST(Win7CCDNative, DriverWithoutAnAnswerHasNone) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(Native(ccd, IMMonitor::MD_NB), Size());
}

TEST(Win7CCDNative, ChecksItsArguments) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  uint32_t size = 7;
  host.ForgetLog();
  EXPECT_FALSE(ccd->GetNativeResolution(3, nullptr, &size));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: width != NULL && height != NULL. \n"
            "Check failed: CountBits(monitor_id) == 1. \n");
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &size, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: width != NULL && height != NULL. \n");
  EXPECT_EQ(size, 7u);
}

TEST(Win7CCDNative, PreferredModeIsTheWholeRecord) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewBareCcd();  // loads the API itself
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  EXPECT_EQ(ccd->GetTargetPreferredMode(IMMonitor::MD_CRT, &record), 1);
  EXPECT_EQ(record.width, 1024u);
  EXPECT_EQ(record.height, 768u);
  EXPECT_EQ(record.header.size, 80u);
  EXPECT_EQ(record.header.id, host.machine.model().connectors[1].target_id);
  EXPECT_EQ(record.targetMode.targetVideoSignalInfo.activeSize.cx, 1024u);
}

TEST(Win7CCDNative, PreferredModeOfAMissingDisplayLeavesTheRecord) {
  CoreHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record = {};
  record.width = 7;
  EXPECT_EQ(ccd->GetTargetPreferredMode(IMMonitor::MD_DP, &record), 0);
  EXPECT_EQ(record.width, 7u);
}

TEST(Win7CCDNative, PreferredModeChecksItsArguments) {
  CoreHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewCcd();
  host.ForgetLog();
  EXPECT_EQ(ccd->GetTargetPreferredMode(0, nullptr), 0);
  EXPECT_EQ(host.TakeLog(), "Check failed: CountBits(monitor_id) == 1. \n");
}

}  // namespace
