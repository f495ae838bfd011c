// How the object that leaves DisplayLink's displays out leaves extended desktop.
#include <gtest/gtest.h>

#include "tests/behaviour/DisplayLinkWorkaroundHost.h"

using namespace ccd_test;

namespace {

constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1024x768 active";
constexpr char kCloned[] = "win7 intel: clone internal 1024x768 active, crt 1024x768 active";
constexpr char kCrtAlone[] = "win7 intel: internal 1366x768, crt 1024x768 active";

// Presentation types.
constexpr uint32_t kSmallPresentation = 32;
constexpr uint32_t kLargePresentation = 64;

/// A request, and the flags by which it becomes a topology.
struct Request {
  uint32_t mode;
  uint32_t displays;
  const char* validate;
  const char* apply;
};
constexpr Request kClone = {IMMonitor::DM_CLONE, 3, "0x42", "0x82"};
constexpr Request kClones[] = {
    kClone,
    {kSmallPresentation, 3, "0x41", "0x81"},
    {kLargePresentation, 3, "0x41", "0x81"},
};
constexpr Request kOthers[] = {
    {IMMonitor::DM_SINGLE, 1, "0x41", "0x81"},
    {IMMonitor::DM_SINGLE, 2, "0x48", "0x88"},
    {IMMonitor::DM_EXTEND, 3, "0x44", "0x84"},
    {IMMonitor::DM_HSPAN, 3, "0x41", "0x81"},
    {IMMonitor::DM_VSPAN, 3, "0x41", "0x81"},
    {IMMonitor::DM_ADVANCED_P1, 3, "0x41", "0x81"},
    {IMMonitor::DM_ADVANCED_P2, 3, "0x41", "0x81"},
    {IMMonitor::DM_TRIPLE_EXTEND, 3, "0x41", "0x81"},
    {IMMonitor::DM_TRIPLE_CLONE, 3, "0x41", "0x81"},
    {IMMonitor::DM_CLONE | IMMonitor::DM_SINGLE, 3, "0x41", "0x81"},
    {kSmallPresentation | kLargePresentation, 3, "0x41", "0x81"},
    {0, 3, "0x41", "0x81"},
};

std::string ThePanelAlone() { return Set(0, "0x41") + Set(0, "0x81"); }

std::string Switch(const Request& request) {
  return Set(0, request.validate) + Set(0, request.apply);
}

TEST(DisplayLinkSet, FromExtendedDesktopAClonePassesThroughThePanelAlone) {
  for (const Request& request : kClones) {
    DisplayLinkHost host(kExtended);
    const CcdPointer ccd = host.NewCcd();
    EXPECT_EQ(ccd->SetNewDisplayMode(request.mode, request.displays), 1) << request.mode;
    EXPECT_EQ(host.machine.TakeJournal(), ThePanelAlone() + Switch(request)) << request.mode;
    EXPECT_EQ(host.machine.Topology(),
              request.mode == IMMonitor::DM_CLONE ? "clone internal+crt" : "single internal");
  }
}

TEST(DisplayLinkSet, FromExtendedDesktopAnythingElseIsOneChange) {
  for (const Request& request : kOthers) {
    DisplayLinkHost host(kExtended);
    const CcdPointer ccd = host.NewCcd();
    EXPECT_EQ(ccd->SetNewDisplayMode(request.mode, request.displays), 1) << request.mode;
    EXPECT_EQ(host.machine.TakeJournal(), Switch(request)) << request.mode;
  }
}

TEST(DisplayLinkSet, FromAnyOtherModeACloneIsOneChange) {
  for (const char* text : {kPanelAndCrt, kCrtAlone, kCloned}) {
    for (const Request& request : kClones) {
      DisplayLinkHost host(text);
      const CcdPointer ccd = host.NewCcd();
      EXPECT_EQ(ccd->SetNewDisplayMode(request.mode, request.displays), 1) << text;
      EXPECT_EQ(host.machine.TakeJournal(), Switch(request)) << text << " " << request.mode;
    }
  }
}

TEST(DisplayLinkSet, FromAModeWithoutANameACloneIsOneChange) {
  DisplayLinkHost host(kExtended);
  const CcdPointer ccd = host.NewCcd();
  for (auto& entry : host.machine.model().database) entry.second.topology = 3;
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Switch(kClone));
}

TEST(DisplayLinkSet, WhileTheModeCannotBeHadACloneIsOneChange) {
  // Of the active displays, and of the database.
  for (const uint32_t query : {1u, 2u}) {
    DisplayLinkHost host(kExtended);
    const CcdPointer ccd = host.NewCcd();
    host.machine.Fail("QueryDisplayConfig", query);
    EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1) << query;
    EXPECT_EQ(host.machine.TakeJournal(), Switch(kClone)) << query;
  }
}

TEST(DisplayLinkSet, ResultOfThePanelAloneIsIgnored) {
  DisplayLinkHost host(kExtended);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 2, ERROR_ACCESS_DENIED);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Set(0, "0x41") + Set(0, "0x81", 5) + Switch(kClone));
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST(DisplayLinkSet, PathsForThePanelAloneThatCannotBeReadAreIgnoredToo) {
  DisplayLinkHost host(kExtended);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("QueryDisplayConfig", 3);  // behind those of the current mode
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Switch(kClone));
}

TEST(DisplayLinkSet, ResultOfTheCloneIsTheResult) {
  DisplayLinkHost host(kExtended);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 4, ERROR_ACCESS_DENIED);
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(host.machine.TakeJournal(), ThePanelAlone() + Set(0, "0x42") + Set(0, "0x82", 5));
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(DisplayLinkSet, WithThreeTechnologiesBothChangesSupplyPaths) {
  DisplayLinkHost host(
      "win7 intel*3: internal 1366x768 active, crt 1024x768 active, hdmi 1920x1080");
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_HDMI), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            Set(1, "0x660") + Set(1, "0x6a0") + Set(2, "0x660") + Set(2, "0x6a0"));
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
}

TEST(DisplayLinkSet, PanelAloneOnDemandOfACallerIsOneChange) {
  DisplayLinkHost host(kExtended);
  EXPECT_EQ(host.NewCcd()->ChangeToNBOnlySingleDisplayMode(), 1);
  EXPECT_EQ(host.machine.TakeJournal(), ThePanelAlone());
}

TEST(DisplayLinkSet, PlainWin7CcdClonesAnExtendedDesktopAtOnce) {
  DisplayLinkHost host(kExtended);
  host.machine.model().services.clear();
  EXPECT_EQ(host.NewCcd()->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Switch(kClone));
}

}  // namespace
