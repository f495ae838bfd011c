// Connected and active displays while the DisplayLink service is there, without any display of
// DisplayLink's.
#include <gtest/gtest.h>

#include "tests/behaviour/DisplayLinkWorkaroundHost.h"

using namespace ccd_test;

namespace {

TEST(DisplayLinkReports, EveryTechnologyIsItsDisplayAndCounts) {
  ExpectEveryTechnologyReported<DisplayLinkHost>();
}

TEST(DisplayLinkReports, ConnectedDisplaysAreActiveOrNot) {
  DisplayLinkHost host("win7 intel: internal 1366x768 active, crt 1024x768, hdmi 1920x1080, dp");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x13, 3}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST(DisplayLinkReports, PathWithoutAFlagStillCounts) {
  DisplayLinkHost host("win7 intel: internal 1366x768 active, wireless 1280x720 active");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x01, 2}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 2}));
}

// --- Targets

TEST(DisplayLinkReports, TargetsOfOneTechnologyCountEach) {
  DisplayLinkHost host(
      "win7 intel: internal 1366x768 active, hdmi 1920x1080 active, "
      "hdmi2 1920x1080");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(Connected(ccd), (Report{1, 0x11, 3}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x11, 2}));
}

TEST(DisplayLinkReports, TargetCountsOnceFromHoweverManySources) {
  for (const char* sources : {"", "*3", "*4"}) {
    DisplayLinkHost host("win7 intel" + std::string(sources) +
                         ": internal 1366x768 active, crt 1024x768, hdmi 1920x1080");
    EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x13, 3})) << sources;
  }
}

TEST(DisplayLinkReports, SourcesOfACloneDoNotMultiplyIt) {
  DisplayLinkHost host("win7 intel: clone internal 1024x768 active, crt 1024x768 active");
  EXPECT_EQ(Active(host.NewCcd()), (Report{1, 0x03, 2}));
}

/// A panel on the first adapter and a CRT on the second; one of them shows something, so that
/// Windows lists it first.
constexpr char kPanelFirst[] = "win7 intel, nvidia: internal 1366x768 active, crt@2 1024x768";
constexpr char kCrtFirst[] = "win7 intel, nvidia: internal 1366x768, crt@2 1024x768 active";

TEST(DisplayLinkReports, TargetsOfTwoAdaptersCountEachWithIdsOfTheirOwn) {
  for (const char* text : {kPanelFirst, kCrtFirst}) {
    DisplayLinkHost host(text);
    host.machine.model().connectors[1].target_id = 9;
    EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x03, 2})) << text;
  }
}

TEST(DisplayLinkReports, OfTargetsWithOneIdOnTwoAdaptersTheFirstCountsAlone) {
  const struct {
    const char* machine;
    uint32_t first;
  } rows[] = {{kPanelFirst, IMMonitor::MD_NB}, {kCrtFirst, IMMonitor::MD_CRT}};
  for (const auto& row : rows) {
    DisplayLinkHost host(row.machine);
    host.machine.model().connectors[0].target_id = 7;
    host.machine.model().connectors[1].target_id = 7;
    EXPECT_EQ(Connected(host.NewCcd()), (Report{1, row.first, 1})) << row.machine;
  }
}

TEST(DisplayLinkReports, OfActiveTargetsWithOneIdTheFirstCountsAlone) {
  DisplayLinkHost host("win7 intel, nvidia: internal 1366x768 active, crt@2 1024x768 active");
  host.machine.model().connectors[0].target_id = 7;
  host.machine.model().connectors[1].target_id = 7;
  EXPECT_EQ(Active(host.NewCcd()), (Report{1, 0x01, 1}));
}

TEST(DisplayLinkReports, IdsAreToldApartWhateverTheirOrder) {
  DisplayLinkHost host(
      "win7 intel, nvidia: internal 1366x768 active, hdmi 1920x1080, "
      "crt@2 1024x768, dp@2 1920x1080");
  // The panel's comes again on the other adapter, with others between them.
  host.machine.model().connectors[0].target_id = 0x80000002;
  host.machine.model().connectors[1].target_id = 0xFFFFFFFF;
  host.machine.model().connectors[2].target_id = 1;
  host.machine.model().connectors[3].target_id = 0x80000002;
  EXPECT_EQ(Connected(host.NewCcd()), (Report{1, 0x13, 3}));
}

TEST(DisplayLinkReports, ForcedPathIsNoDisplay) {
  DisplayLinkHost host("win7 intel: internal 1366x768 active, crt 1024x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[1].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0x01, 1}));
  EXPECT_EQ(Active(ccd), (Report{1, 0x01, 1}));
}

TEST(DisplayLinkReports, NoDisplayAtAllIsASuccess) {
  DisplayLinkHost host("win7 intel: internal 1366x768 active");
  const CcdPointer ccd = host.NewCcd();
  host.machine.model().connectors[0].forced = true;
  EXPECT_EQ(Connected(ccd), (Report{1, 0, 0}));
  EXPECT_EQ(Active(ccd), (Report{1, 0, 0}));
}

// --- Outputs

TEST(DisplayLinkReports, AddToTheirOutputs) {
  DisplayLinkHost host(kPanelAndCrt);
  const CcdPointer ccd = host.NewCcd();
  uint32_t displays = 0x41, count = 10;
  EXPECT_EQ(ccd->GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 12u);
  EXPECT_EQ(ccd->GetActiveDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0x43u);
  EXPECT_EQ(count, 13u);
}

TEST(DisplayLinkReports, FailedQueriesLeaveTheOutputsAsTheyWere) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    DisplayLinkHost host(kPanelAndCrt, L"--enable-dcheck");
    const CcdPointer ccd = host.NewCcd();
    host.ForgetLog();
    host.machine.Fail(function, 1, ERROR_INSUFFICIENT_BUFFER, sim::Machine::Repeat::kFromThenOn);
    uint32_t displays = 0x40, count = 10, mode = 0x77;
    EXPECT_EQ(ccd->GetConnectedDisplays(&displays, &count), 0) << function;
    EXPECT_EQ(ccd->GetActiveDisplays(&displays, &count), 0) << function;
    EXPECT_EQ(ccd->GetCurrentDisplayMode(&mode, &displays), 0) << function;
    EXPECT_EQ(displays, 0x40u);
    EXPECT_EQ(count, 10u);
    EXPECT_EQ(mode, 0x77u);
    EXPECT_EQ(host.TakeLog(), "") << function;
  }
}

// --- DisplayPort

TEST(DisplayLinkReports, DisplayPortIsLookedUpAsExternalWhateverWasReported) {
  constexpr char kEmbedded[] = "win7 intel: edp 1366x768 active, crt 1024x768";
  DisplayLinkHost host(kEmbedded);
  const CcdPointer ccd = host.NewCcd();
  // With a mask of DisplayPort alone Win7CCD would keep the technology of what was first.
  host.machine.model().connectors[1].monitor.reset();
  EXPECT_EQ(Connected(ccd), (Report{1, IMMonitor::MD_DP, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(ccd.get(), IMMonitor::MD_DP), 10u);
  DEVMODEA dm = {};
  EXPECT_FALSE(ccd->GetDisplaySettings(IMMonitor::MD_DP, &dm));

  host.machine.model().services.clear();
  const CcdPointer plain = host.NewCcd();
  EXPECT_EQ(Connected(plain), (Report{1, IMMonitor::MD_DP, 1}));
  EXPECT_EQ(host.core().TechnologyFromDisplay(plain.get(), IMMonitor::MD_DP), 11u);
  EXPECT_TRUE(plain->GetDisplaySettings(IMMonitor::MD_DP, &dm));
}

TEST(DisplayLinkReports, ExternalDisplayPortIsFound) {
  DisplayLinkHost host("win7 intel: internal 1366x768, dp 1920x1080 active");
  DEVMODEA dm = {};
  EXPECT_TRUE(host.NewCcd()->GetDisplaySettings(IMMonitor::MD_DP, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 1920u);
}

}  // namespace
