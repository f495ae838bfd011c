// The object that leaves DisplayLink's displays out: its class, its start and its end, and how it
// joins and leaves the add-on host.
#include <gtest/gtest.h>

#include <typeinfo>

#include "tests/behaviour/DisplayLinkWorkaroundHost.h"

using namespace ccd_test;

namespace {

bool IsWorkaround(Win7CCD* ccd) {
  return std::string(typeid(*ccd).name()).find("DisplayLinkWorkaroundImpl") != std::string::npos;
}

/// Makes an object that is never initialised, and ends it.
void LeaveWithoutJoining(DisplayLinkHost* host) { host->NewBareCcd(); }

/// The library holds no display configuration functions and no thread any more.
void ExpectNothingLeft(DisplayLinkHost* host) {
  host->machine.Advance(1000);
  EXPECT_EQ(host->Modules(), 0u) << host->machine.Outstanding();
}

TEST(DisplayLinkWorkaround, TakesWin7CcdsPlaceWhileTheServiceIsThere) {
  DisplayLinkHost host(kPanelAndCrt);
  EXPECT_TRUE(IsWorkaround(host.NewBareCcd().get()));
  host.machine.model().services[0].running = false;
  EXPECT_TRUE(IsWorkaround(host.NewBareCcd().get()));
  host.machine.model().services.clear();
  EXPECT_FALSE(IsWorkaround(host.NewBareCcd().get()));
}

TEST(DisplayLinkWorkaround, KeepsWin7CcdsPseudoVendor) {
  DisplayLinkHost host(kPanelAndCrt);
  EXPECT_EQ(host.NewBareCcd()->GetVgaVendor(), 0x045Eu);
}

// --- Initial

TEST(DisplayLinkWorkaroundInitial, JoinsTheHost) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  EXPECT_EQ(host.TakeConnections(), "");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.TakeConnections(), "Connect 0\n");
  ccd.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 1\n");
  ExpectNothingLeft(&host);
}

TEST(DisplayLinkWorkaroundInitial, FailedLoadDoesNotJoin) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "0");
  EXPECT_EQ(host.TakeConnections(), "");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.TakeConnections(), "Connect 0\n");
}

TEST(DisplayLinkWorkaroundInitial, BelowWindows7ThrowsAndDoesNotJoin) {
  for (const char* windows : {"xp", "2003", "vista", "2008", "2008r2"}) {
    DisplayLinkHost host(std::string(windows) + " intel: internal 1366x768 active");
    CcdPointer ccd = host.NewBareCcd();
    ASSERT_TRUE(IsWorkaround(ccd.get())) << windows;
    EXPECT_EQ(host.core().InitialOf(ccd.get()), "This class only support Windows 7 or later");
    EXPECT_EQ(host.TakeConnections(), "") << windows;
    ccd.reset();
    EXPECT_EQ(host.TakeConnections(), "Disconnect 0\n") << windows;
  }
}

TEST(DisplayLinkWorkaroundInitial, EverySuccessJoinsAgainAndTheEndLeavesOnce) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(host.TakeConnections(), "Connect 0\nConnect 1\nConnect 2\n");
  const CcdPointer first = host.NewBareCcd();  // holds the host
  CcdPointer second = host.NewBareCcd();
  ccd.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 3\n");
  // The two clients that nobody takes back are taken back by objects that never were one.
  second.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 2\n");
  LeaveWithoutJoining(&host);
  EXPECT_EQ(host.TakeConnections(), "Disconnect 1\n");
  ExpectNothingLeft(&host);
}

TEST(DisplayLinkWorkaroundInitial, SucceedsWithoutAThreadForTheHost) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("CreateThread", 1);
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");
  EXPECT_EQ(Connected(ccd), (Report{1, 0x03, 2}));
  ccd.reset();
  EXPECT_EQ(host.TakeConnections(), "Connect 0\nDisconnect 1\n");
}

// --- The end

TEST(DisplayLinkWorkaroundEnd, LeavesTheHostAlsoWhenItNeverJoined) {
  DisplayLinkHost host(kPanelAndCrt);
  host.NewBareCcd();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 0\n");
}

TEST(DisplayLinkWorkaroundEnd, ThatNeverJoinedTakesAnothersConnection) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer client = host.NewCcd();
  LeaveWithoutJoining(&host);
  EXPECT_EQ(host.TakeConnections(), "Connect 0\nDisconnect 1\n");
  // Its reports go on, and its own end counts below nothing.
  EXPECT_EQ(Connected(client), (Report{1, 0x03, 2}));
  client.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 0\n");
}

TEST(DisplayLinkWorkaroundEnd, OfOneOfTwoLeavesTheHostToTheOther) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer first = host.NewCcd();
  CcdPointer second = host.NewCcd();
  EXPECT_EQ(host.TakeConnections(), "Connect 0\nConnect 1\n");
  EXPECT_EQ(Connected(first), (Report{1, 0x03, 2}));
  EXPECT_EQ(Connected(second), (Report{1, 0x03, 2}));
  first.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 2\n");
  EXPECT_EQ(Connected(second), (Report{1, 0x03, 2}));
  second.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 1\n");
  ExpectNothingLeft(&host);
}

TEST(DisplayLinkWorkaroundEnd, LetsGoOfTheHostSoThatTheNextObjectGetsANewOne) {
  DisplayLinkHost host(kPanelAndCrt);
  host.NewBareCcd();  // its host ended at -1
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 0\nConnect 0\n");
}

TEST(DisplayLinkWorkaroundEnd, OfEachIsANewRunOfTheThread) {
  DisplayLinkHost host(kPanelAndCrt);
  for (int round = 0; round < 3; ++round) {
    const uint32_t threads = host.machine.Calls("CreateThread");
    host.NewCcd();
    EXPECT_EQ(host.machine.Calls("CreateThread"), threads + 1) << round;
    EXPECT_EQ(host.TakeConnections(), "Connect 0\nDisconnect 1\n") << round;
  }
  ExpectNothingLeft(&host);
}

// --- Started by a first question

TEST(DisplayLinkWorkaroundOnDemand, NativeSizeJoinsOnceAndTheEndLeaves) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  uint32_t width = 0, height = 0;
  EXPECT_TRUE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(width, 1366u);
  EXPECT_EQ(height, 768u);
  EXPECT_TRUE(ccd->GetNativeResolution(IMMonitor::MD_CRT, &width, &height));
  EXPECT_EQ(host.TakeConnections(), "Connect 0\n");
  ccd.reset();
  EXPECT_EQ(host.TakeConnections(), "Disconnect 1\n");
}

TEST(DisplayLinkWorkaroundOnDemand, PreferredModeJoinsToo) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  DISPLAYCONFIG_TARGET_PREFERRED_MODE preferred = {};
  EXPECT_TRUE(ccd->GetTargetPreferredMode(IMMonitor::MD_NB, &preferred));
  EXPECT_EQ(host.TakeConnections(), "Connect 0\n");
}

TEST(DisplayLinkWorkaroundOnDemand, FailureJoinsOnlyWithTheInitialThatFollows) {
  DisplayLinkHost host(kPanelAndCrt);
  CcdPointer ccd = host.NewBareCcd();
  host.machine.Fail("LoadLibraryA", 1);
  uint32_t width = 0, height = 0;
  EXPECT_FALSE(ccd->GetNativeResolution(IMMonitor::MD_NB, &width, &height));
  EXPECT_EQ(host.TakeConnections(), "");
  EXPECT_EQ(host.core().InitialOf(ccd.get()), "1");  // counts as loaded
  EXPECT_EQ(host.TakeConnections(), "Connect 0\n");
}

// --- Without an API

TEST(DisplayLinkWorkaround, FailsBeforeInitial) {
  DisplayLinkHost host(kPanelAndCrt, L"--enable-dcheck");
  const CcdPointer ccd = host.NewBareCcd();
  EXPECT_EQ(Connected(ccd), Report());
  EXPECT_EQ(Active(ccd), Report());
  EXPECT_EQ(Mode(ccd), Report());
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, 3), 0);
  EXPECT_EQ(ccd->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

// --- Memory that runs out

/// Makes an object with `nth` pieces of memory but one, and ends it. @return false when there were
/// enough
bool MakeWithPieces(DisplayLinkHost* host, uint32_t nth, uint32_t* made_null) {
  const ProjectorBox& memory = *host->ostrel().white_box().projectors;
  memory.RefuseMemory(nth);
  Win7CCD* ccd = nullptr;
  bool thrown = false;
  try {
    ccd = host->core().NewWin7CCD();
  } catch (const std::bad_alloc&) {
    thrown = true;
  }
  const bool enough = memory.RefuseMemory(0);
  if (ccd == nullptr && !thrown) ++*made_null;
  EXPECT_EQ(ccd != nullptr, enough || nth == 0) << nth;
  delete ccd;
  return !enough;
}

TEST(DisplayLinkWorkaround, MissingMemoryForTheObjectIsNullAndNothingIsLeftWhereverItRunsOut) {
  DisplayLinkHost host(kPanelAndCrt);
  const FactoryBox& factory = *host.ostrel().white_box().factory;
  uint32_t made_null = 0;
  MakeWithPieces(&host, 0, &made_null);  // what is kept from the first use on
  uint32_t nth = 1;
  for (;; ++nth) {
    const int64_t before = factory.PiecesOut();
    const bool refused = MakeWithPieces(&host, nth, &made_null);
    EXPECT_LE(factory.PiecesOut(), before) << nth;
    if (!refused) break;
    ASSERT_LT(nth, 1000u);
  }
  EXPECT_GT(nth, 3u);
  EXPECT_EQ(made_null, 1u);
}

}  // namespace
