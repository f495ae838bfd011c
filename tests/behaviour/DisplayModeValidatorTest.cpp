// A forced arrangement is looked at after three seconds, and taken back when it does not hold.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/behaviour/CoreHost.h"
#include "tests/support/FakeMonitor.h"

namespace {

// The CRT connector is empty: a clone with it can only be forced.
constexpr char kEmptyCrt[] = "win7 intel: internal 1366x768 active, crt";

constexpr char kForcedClone[] =
    "SetDisplayConfig(paths=0 flags=0x42)=31\n"
    "SetDisplayConfig(paths=0 flags=0x882)=0\n";
constexpr char kBackToPanel[] =
    "SetDisplayConfig(paths=0 flags=0x41)=0\n"
    "SetDisplayConfig(paths=0 flags=0x81)=0\n";

class DisplayModeValidatorTest : public testing::Test {
 protected:
  void SetUp() override {
    host.ostrel().SetLassoBoxStatus(1);
    ccd = host.NewCcd();
  }
  void TearDown() override { ccd.reset(); }

  void Force() {
    ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
    ASSERT_EQ(host.machine.TakeJournal(), kForcedClone);
    ASSERT_EQ(host.machine.Topology(), "clone internal+crt");
  }

  CoreHost host{kEmptyCrt};
  CcdPointer ccd;
};

TEST_F(DisplayModeValidatorTest, TakesAForcedCrtBackAfterThreeSeconds) {
  Force();
  host.machine.Advance(2999);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  host.machine.Advance(1);
  EXPECT_EQ(host.machine.TakeJournal(), kBackToPanel);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(DisplayModeValidatorTest, LooksOnce) {
  Force();
  host.machine.Advance(3000);
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
  host.machine.TakeJournal();
  host.machine.Advance(60000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(DisplayModeValidatorTest, NewArrangementReplacesTheTimer) {
  Force();
  host.machine.Advance(2000);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
  ASSERT_EQ(host.machine.ArmedTimers().size(), 1u);
  host.machine.TakeJournal();
  host.machine.Advance(2999);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  host.machine.Advance(1);
  EXPECT_EQ(host.machine.TakeJournal(), kBackToPanel);
}

TEST_F(DisplayModeValidatorTest, EndOfTheObjectKillsTheTimer) {
  Force();
  ASSERT_EQ(host.machine.ArmedTimers().size(), 1u);
  ccd.reset();
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
  host.machine.Advance(3000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
}

TEST_F(DisplayModeValidatorTest, NewerObjectTakesTheRecordsPlace) {
  Force();
  const CcdPointer newer = host.NewBareCcd();
  host.machine.Advance(3000);
  // The newer record has nothing to take back; the older one's arrangement stays.
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

TEST_F(DisplayModeValidatorTest, EndOfAnyObjectLeavesNoRecord) {
  Force();
  host.NewBareCcd().reset();
  host.machine.Advance(3000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

TEST_F(DisplayModeValidatorTest, OlderTimerActsOnTheNewerRecord) {
  Force();
  CcdPointer newer = host.NewCcd();
  host.machine.Advance(1000);
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  ASSERT_EQ(newer->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
  ASSERT_EQ(host.machine.ArmedTimers().size(), 2u);
  host.machine.TakeJournal();
  host.machine.Advance(2000);  // the older object's three seconds
  EXPECT_EQ(host.machine.TakeJournal(), kBackToPanel);
  EXPECT_EQ(host.machine.ArmedTimers().size(), 1u);  // the newer one is still to come,
  newer.reset();                                     // but no longer known to its object
  EXPECT_EQ(host.machine.ArmedTimers().size(), 1u);
  host.machine.Advance(1000);  // finds no record
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

TEST_F(DisplayModeValidatorTest, TimerThatFiredIsNotKilledAgain) {
  Force();
  host.machine.Advance(3000);
  const uint32_t kills = host.machine.Calls("KillTimer");
  ccd.reset();
  EXPECT_EQ(host.machine.Calls("KillTimer"), kills);
}

TEST_F(DisplayModeValidatorTest, EndOfAnOlderObjectLeavesNoRecordEither) {
  CcdPointer older = host.NewCcd();
  ccd = host.NewCcd();  // the newest
  Force();
  older.reset();
  host.machine.Advance(3000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST_F(DisplayModeValidatorTest, FailedQueryStopsIt) {
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    Force();
    host.machine.Fail(function, 1);
    host.machine.Advance(3000);
    EXPECT_EQ(host.machine.TakeJournal(), "") << function;
    EXPECT_EQ(host.machine.Topology(), "clone internal+crt") << function;
    host.machine.ClearFaults();
    ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB), 1);
    host.machine.TakeJournal();
  }
}

TEST(DisplayModeValidatorPaths, ForcedOutputOfAnotherTechnologyStays) {
  CoreHost host("win7 intel: internal 1366x768 active, tv");
  host.ostrel().SetLassoBoxStatus(1);
  const CcdPointer ccd = host.NewCcd();
  ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
  ASSERT_EQ(host.machine.TakeJournal(), kForcedClone);
  ASSERT_EQ(host.machine.Topology(), "clone internal+tv");
  host.machine.Advance(3000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Topology(), "clone internal+tv");
}

TEST(DisplayModeValidatorPaths, CrtThatWasDetectedStays) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768");
  host.ostrel().SetLassoBoxStatus(1);
  const CcdPointer ccd = host.NewCcd();
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 1);
  ASSERT_EQ(host.machine.TakeJournal(), kForcedClone);
  host.machine.Advance(3000);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

// --- The question to the vendor's own library. The arrangement holds as far as Windows knows.

std::shared_ptr<FakeScript> g_vendorScript;

IMMonitor* NewVendorMonitor() { return new FakeMonitor(g_vendorScript); }
IMMonitor* NoVendorMonitor() { return nullptr; }
IMMonitor* ThrowingMaker() { throw std::runtime_error("no"); }

class DisplayModeValidatorVendor : public testing::Test {
 protected:
  void SetUp() override {
    g_vendorScript = std::make_shared<FakeScript>();
    host.ostrel().SetLassoBoxStatus(1);
    ccd = host.NewCcd();
    host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
    ASSERT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_CRT), 1);
    ASSERT_EQ(host.machine.Topology(), "single crt");
    host.machine.TakeJournal();
  }
  void TearDown() override {
    ccd.reset();
    g_vendorScript.reset();
  }

  void ExpectTheArrangementStays() {
    EXPECT_EQ(host.machine.TakeJournal(), "");
    EXPECT_EQ(host.machine.Topology(), "single crt");
  }

  CoreHost host{"win7 intel: internal 1366x768 active, crt 1024x768"};
  CcdPointer ccd;
};

TEST_F(DisplayModeValidatorVendor, NoneOfTheDisplaysConnectedGoesBackToThePanel) {
  g_vendorScript->connected = IMMonitor::MD_NB | IMMonitor::MD_HDMI;
  host.core().ValidateNewest(NewVendorMonitor);
  EXPECT_EQ(g_vendorScript->TakeCalls(), "Initial\nGetConnectedDisplays\n");
  EXPECT_TRUE(g_vendorScript->deleted);
  EXPECT_EQ(host.machine.TakeJournal(), kBackToPanel);
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST_F(DisplayModeValidatorVendor, ConnectedDisplayStays) {
  g_vendorScript->connected = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  host.core().ValidateNewest(NewVendorMonitor);
  EXPECT_EQ(g_vendorScript->TakeCalls(), "Initial\nGetConnectedDisplays\n");
  EXPECT_TRUE(g_vendorScript->deleted);
  ExpectTheArrangementStays();
}

// From here on the script's answer would be the panel alone.

TEST_F(DisplayModeValidatorVendor, FailedInitialIsNoAnswer) {
  g_vendorScript->initial = 0;
  host.core().ValidateNewest(NewVendorMonitor);
  EXPECT_EQ(g_vendorScript->TakeCalls(), "Initial\n");
  EXPECT_TRUE(g_vendorScript->deleted);
  ExpectTheArrangementStays();
}

TEST_F(DisplayModeValidatorVendor, FailedReportIsNoAnswer) {
  g_vendorScript->connected_result = 0;
  host.core().ValidateNewest(NewVendorMonitor);
  EXPECT_EQ(g_vendorScript->TakeCalls(), "Initial\nGetConnectedDisplays\n");
  EXPECT_TRUE(g_vendorScript->deleted);
  ExpectTheArrangementStays();
}

TEST_F(DisplayModeValidatorVendor, WhatIsThrownIsNoAnswer) {
  g_vendorScript->on_call = [](const std::string&) { throw std::runtime_error("no"); };
  host.core().ValidateNewest(NewVendorMonitor);
  EXPECT_TRUE(g_vendorScript->deleted);
  ExpectTheArrangementStays();
  host.core().ValidateNewest(ThrowingMaker);
  ExpectTheArrangementStays();
}

TEST_F(DisplayModeValidatorVendor, NoObjectIsNoAnswer) {
  host.core().ValidateNewest(NoVendorMonitor);
  ExpectTheArrangementStays();
}

TEST(DisplayModeValidatorPaths, WithoutTheLassoStatusNothingIsForced) {
  CoreHost host(kEmptyCrt);
  const CcdPointer ccd = host.NewCcd();
  EXPECT_EQ(ccd->SetNewDisplayMode(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_CRT), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "SetDisplayConfig(paths=0 flags=0x42)=31\n");
  EXPECT_TRUE(host.machine.ArmedTimers().empty());
}

}  // namespace
