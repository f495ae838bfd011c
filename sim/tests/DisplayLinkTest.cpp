// The simulated library of USB displays.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/tests/DisplayLinkCalls.h"
#include "sim/tests/Fakes.h"

// After windows.h.
#include <shlwapi.h>

namespace sim {
namespace {

class DisplayLink : public testing::Test {
 protected:
  DisplayLink() { AddOnClient::Heard().clear(); }
  void Listen(uintptr_t id = 1) {
    ASSERT_EQ(client.Subscribe(), 3);
    ASSERT_EQ(client.Register(AddOnClient::Context(id)), 0);
  }
  Heard TakeHeard() { return std::exchange(AddOnClient::Heard(), Heard()); }

  Machine machine{kUsbNotebook};
  AddOnClient client;
  const uint64_t usb = NivoHandleOf(machine, "usb");
  const uint64_t usb2 = NivoHandleOf(machine, "usb2");
};

// --- Installed or not.

TEST(DisplayLinkLibrary, IsFoundByItsWholePathWhereItIsInstalled) {
  Machine plain("win7 intel: internal 1366x768 active");
  EXPECT_FALSE(AddOnClient().loaded());
  InstallDisplayLinkLibrary(plain);
  EXPECT_TRUE(AddOnClient().loaded());
  EXPECT_TRUE(AddOnClient("c:\\PROGRAM FILES\\displaylink core software\\addonapi64.DLL").loaded());
  EXPECT_FALSE(AddOnClient("AddOnApi64.dll").loaded());
  EXPECT_FALSE(AddOnClient("C:\\Windows\\AddOnApi64.dll").loaded());
  EXPECT_TRUE(plain.model().services.empty());
}

TEST(DisplayLinkLibrary, RegistryTellsWhereItIs) {
  const Machine machine(kUsbNotebook);
  char path[260] = {};
  DWORD size = sizeof path;
  EXPECT_EQ(FAKE(SHGetValueA)(HKEY_LOCAL_MACHINE, "SOFTWARE\\DisplayLink\\Core",
                              "AddOnApi64FileLocation", nullptr, path, &size),
            ERROR_SUCCESS);
  EXPECT_STREQ(path, kAddOnFile);
}

TEST_F(DisplayLink, ComesAndGoes) {
  EXPECT_TRUE(client.loaded());
  client.Free();
  RemoveDisplayLink(machine);
  EXPECT_FALSE(AddOnClient().loaded());
  EXPECT_TRUE(machine.model().registry["HKLM\\SOFTWARE\\DisplayLink\\Core"].empty());
  EXPECT_TRUE(machine.model().services.empty());
  InstallDisplayLink(machine);
  EXPECT_TRUE(AddOnClient().loaded());
  ASSERT_EQ(machine.model().services.size(), 1u);
  EXPECT_EQ(machine.model().services[0].name, "DisplayLinkService");
  EXPECT_TRUE(machine.model().services[0].running);
  InstallDisplayLink(machine);
  EXPECT_EQ(machine.model().services.size(), 1u);
}

TEST_F(DisplayLink, LoadedLibraryStaysWhenItsFileGoes) {
  RemoveDisplayLink(machine);
  EXPECT_TRUE(client.Has("dlPumpMessages"));
  EXPECT_EQ(client.Pump(), kDlNotWorking);
}

TEST_F(DisplayLink, HasTheEightEntriesAndNoOther) {
  for (const char* name :
       {"dlSubscribePids", "dlUnSubscribePids", "dlRegisterNivoDisplayNotification",
        "dlUnRegisterNivoDisplayNotification", "dlPumpMessages", "dlGetExecutionState",
        "dlGetNivoID", "dlGetVidPnTargetID"}) {
    EXPECT_TRUE(client.Has(name)) << name;
  }
  EXPECT_FALSE(client.Has("dlGetNivoDisplay"));
  RemoveDisplayLinkEntry(machine, "dlGetNivoID");
  EXPECT_FALSE(client.Has("dlGetNivoID"));
  EXPECT_THROW(RemoveDisplayLinkEntry(machine, "dlGetNivoID"), std::runtime_error);
}

// --- In Windows.

TEST_F(DisplayLink, TargetsStandInTheDisplayConfigurationOnAnAdapterOfTheirOwn) {
  ASSERT_TRUE(StartWith(machine.model(), {0, 2}, false));
  const Queried active = Query(QDC_ONLY_ACTIVE_PATHS);
  ASSERT_EQ(active.paths.size(), 2u);
  const auto& panel = active.paths[0].targetInfo;
  const auto& target = active.paths[1].targetInfo;
  EXPECT_EQ(static_cast<uint32_t>(target.outputTechnology), 0xFFFFFFFFu);
  EXPECT_NE(target.adapterId.LowPart, panel.adapterId.LowPart);
  EXPECT_EQ(target.adapterId.HighPart, 1);
  EXPECT_NE(target.id, panel.id);
  EXPECT_EQ(machine.Topology(), "extend internal+usb");
  EXPECT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST_F(DisplayLink, LibraryNamesTheTargetThatWindowsKnows) {
  machine.model().connectors[2].target_id = 0x100;  // as the panel's
  struct {
    uint64_t unused = 0;
    uint32_t low = 0;
    int32_t high = 0;
    uint32_t target = 0;
    uint32_t behind = 0x11223344;
  } record;
  EXPECT_EQ(client.Ask("dlGetVidPnTargetID", usb, kNivoQuestion, static_cast<void*>(&record)), 0);
  EXPECT_EQ(record.low, machine.model().adapters[1].luid_low);
  EXPECT_EQ(record.high, 1);
  EXPECT_EQ(record.target, 0x100u);
  EXPECT_EQ(record.behind, 0x11223344u);
  record = {};
  machine.Fail("dlGetVidPnTargetID", 1);
  EXPECT_EQ(client.Ask("dlGetVidPnTargetID", usb, kNivoQuestion, static_cast<void*>(&record)),
            kDlFault);
  EXPECT_EQ(record.low, 0u);
  EXPECT_EQ(record.target, 0u);
}

// --- Displays.

TEST_F(DisplayLink, HandlesAreLargeAndDifferent) {
  EXPECT_GT(usb, uint64_t{0xFFFFFFFF});
  EXPECT_NE(usb, usb2);
  EXPECT_THROW(NivoHandleOf(machine, "crt"), std::runtime_error);
  machine.model().connectors[2].nivo.handle = 7;
  EXPECT_EQ(NivoHandleOf(machine, "usb"), 7u);
}

TEST_F(DisplayLink, ExecutionStateFollowsTheModelUnlessSet) {
  EXPECT_EQ(client.StateOf(usb), 1u);
  EXPECT_EQ(client.StateOf(usb2), kNivoOffDesktop);  // nothing plugged in
  machine.model().connectors[2].nivo.execution_state = 4;
  EXPECT_EQ(client.StateOf(usb), 4u);
  SetNivoState(machine, usb, 6);
  EXPECT_EQ(client.StateOf(usb), 6u);
  SetNivoState(machine, 99, 3);  // a handle of the test's own
  EXPECT_EQ(client.StateOf(99), 3u);
}

TEST_F(DisplayLink, IdIsFilledUpToItsSizeAndNoFurther) {
  uint8_t record[73];
  std::memset(record, 0x77, sizeof record);
  const uint32_t size = 72;
  std::memcpy(record, &size, 4);
  EXPECT_EQ(client.Ask("dlGetNivoID", usb, static_cast<void*>(record)), 0);
  uint64_t handle = 0;
  std::memcpy(&handle, record + 8, 8);
  EXPECT_EQ(handle, usb);
  EXPECT_STREQ(reinterpret_cast<const char*>(record + 16), "usb");
  EXPECT_EQ(record[71], 0u);
  EXPECT_EQ(record[72], 0x77u);
}

// --- Messages.

TEST_F(DisplayLink, NewListenerHearsOfTheDisplaysThatAreThere) {
  Listen();
  EXPECT_EQ(TakeHeard(), Heard());  // not before it pumps
  EXPECT_EQ(client.Pump(), 2);
  EXPECT_EQ(TakeHeard(), Heard({"0: 1 0x0 on 1", "0: 2 0xd15b000000000012 on 1"}));
  EXPECT_EQ(machine.Now(), 0u);
}

TEST_F(DisplayLink, PumpWaitsForAnEventAndNotBeyond) {
  Listen();
  client.Pump();
  TakeHeard();
  EXPECT_EQ(client.Pump(), 0);
  EXPECT_EQ(machine.Now(), 100u);
  machine.At(130, [this] { machine.Plug("usb2", MakeMonitor("Second", 1280, 1024)); });
  EXPECT_EQ(client.Pump(), 1);
  EXPECT_EQ(machine.Now(), 130u);
  machine.Unplug("usb2");
  EXPECT_EQ(client.StateOf(usb2), kNivoOffDesktop);
  EXPECT_EQ(client.Pump(), 1);
  EXPECT_EQ(TakeHeard(),
            Heard({"130: 2 0xd15b000000000013 on 1", "130: 3 0xd15b000000000013 on 1"}));
}

TEST_F(DisplayLink, OtherConnectorsAreNoneOfItsBusiness) {
  Listen();
  client.Pump();
  TakeHeard();
  machine.Unplug("crt");
  EXPECT_EQ(client.Pump(), 0);
}

TEST_F(DisplayLink, EventsOfATestReachEveryListener) {
  Listen(1);
  ASSERT_EQ(client.Register(AddOnClient::Context(2)), 0);
  EXPECT_EQ(NivoListeners(machine), 2u);
  client.Pump();
  TakeHeard();
  PostNivoEvent(machine, 17, 0x123456789A);
  EXPECT_EQ(client.Pump(), 2);
  EXPECT_EQ(TakeHeard(), Heard({"0: 17 0x123456789a on 1", "0: 17 0x123456789a on 2"}));
  EXPECT_EQ(client.StateOf(0x123456789A), 1u);
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(1)), 0);
  PostNivoEvent(machine, 17, 5);
  client.Pump();
  EXPECT_EQ(TakeHeard(), Heard({"0: 17 0x5 on 2"}));
}

TEST_F(DisplayLink, ProductsThatNobodyHasSubscribedStayUnmentioned) {
  const uint32_t other[] = {0x1004307};
  EXPECT_EQ(client.Subscribe(other, 1), 1);
  EXPECT_EQ(client.Register(nullptr), 0);
  machine.Unplug("usb");
  client.Pump();
  EXPECT_EQ(TakeHeard(), Heard({"0: 1 0x0 on 0"}));
  EXPECT_EQ(client.UnSubscribe(), 0);
  EXPECT_TRUE(SubscribedPids(machine).empty());
  EXPECT_EQ(client.Subscribe(nullptr, 0), 0);
  EXPECT_EQ(client.Subscribe(), 3);
  EXPECT_EQ(SubscribedPids(machine), (std::vector<uint32_t>{0x1004307, 0x1000290, 0x10002E9}));
  machine.Plug("usb", MakeMonitor("Back", 1280, 1024));
  client.Pump();
  EXPECT_EQ(TakeHeard(), Heard({"0: 2 0xd15b000000000012 on 0"}));
}

TEST_F(DisplayLink, StoppedServiceTellsOnceAndFailsFromThenOn) {
  Listen();
  ASSERT_TRUE(StartWith(machine.model(), {0, 2}, false));
  client.Pump();
  TakeHeard();
  StopDisplayLink(machine);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_FALSE(machine.model().services[0].running);
  EXPECT_EQ(client.Pump(), 1);
  EXPECT_EQ(TakeHeard(), Heard({"0: 4 0x0 on 1"}));
  EXPECT_EQ(client.Pump(), kDlNotWorking);
  EXPECT_EQ(machine.Now(), 100u);
  EXPECT_EQ(client.StateOf(usb), 0xFFFFFFFFu);
  EXPECT_EQ(client.Subscribe(), kDlNotWorking);
  EXPECT_EQ(client.Register(AddOnClient::Context(2)), kDlNotWorking);
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(1)), kDlNotWorking);
  EXPECT_EQ(NivoListeners(machine), 0u);
}

TEST_F(DisplayLink, RemovedSoftwareSaysSo) {
  Listen();
  client.Pump();
  TakeHeard();
  RemoveDisplayLink(machine);
  client.Pump();
  EXPECT_EQ(TakeHeard(), Heard({"0: 4 0x0 on 1", "0: 5 0x0 on 1"}));
}

// --- Faults, journal, ledger.

TEST_F(DisplayLink, DeclaredFaultsAnswerAndChangeNothing) {
  machine.Fail("dlSubscribePids", 1);
  machine.Fail("dlRegisterNivoDisplayNotification", 1, 0xFFFFFFF8);
  machine.Fail("dlPumpMessages", 1);
  machine.Fail("dlGetExecutionState", 1);
  machine.Fail("dlGetNivoID", 1);
  machine.Fail("dlUnRegisterNivoDisplayNotification", 2);
  machine.Fail("dlUnSubscribePids", 2);
  EXPECT_EQ(client.Subscribe(), -1);
  EXPECT_TRUE(SubscribedPids(machine).empty());
  EXPECT_EQ(client.Register(nullptr), -8);
  EXPECT_EQ(NivoListeners(machine), 0u);
  EXPECT_EQ(client.Pump(40), -1);
  EXPECT_EQ(machine.Now(), 40u);
  EXPECT_EQ(client.StateOf(usb), 0xFFFFFFFFu);
  uint32_t record[18] = {72};
  EXPECT_EQ(client.Ask("dlGetNivoID", usb, static_cast<void*>(record)), -1);
  EXPECT_EQ(record[2], 0u);
  // What did not begin well may be ended all the same.
  EXPECT_EQ(client.UnRegister(nullptr), kDlNotSubscribed);
  EXPECT_EQ(client.UnSubscribe(), 0);
  Listen();
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(1)), -1);
  EXPECT_EQ(NivoListeners(machine), 1u);
  EXPECT_EQ(client.UnSubscribe(), -1);
  EXPECT_EQ(SubscribedPids(machine).size(), 3u);
}

TEST_F(DisplayLink, JournalHasTheCallsOnRequestAndNoIdlePump) {
  Listen();
  EXPECT_EQ(machine.TakeJournal(), "");
  client.UnRegister(AddOnClient::Context(1));
  client.UnSubscribe();
  machine.JournalReads(true);
  Listen();
  client.Pump();
  client.Pump();
  client.StateOf(usb);
  client.UnRegister(AddOnClient::Context(1));
  client.UnSubscribe();
  EXPECT_EQ(machine.Calls("dlPumpMessages"), 2u);
  machine.JournalReads(false);
  std::string told;
  for (std::istringstream lines(machine.TakeJournal()); !lines.eof();) {
    std::string line;
    std::getline(lines, line);
    if (line.rfind("dl", 0) == 0) told += line + "\n";
  }
  EXPECT_EQ(told,
            "dlSubscribePids(0x1004307 0x1000290 0x10002e9 count=3)=3\n"
            "dlRegisterNivoDisplayNotification(context=1)=0\n"
            "dlPumpMessages(100)=2\n"
            "dlGetExecutionState(handle=0xd15b000000000012)=0\n"
            "dlUnRegisterNivoDisplayNotification(context=1)=0\n"
            "dlUnSubscribePids(count=-1)=0\n");
}

TEST_F(DisplayLink, ListenerStandsInTheLedgerUntilTheLibraryGoes) {
  Listen();
  EXPECT_NE(machine.Outstanding().find("DisplayLink listener"), std::string::npos);
  client.Free();
  EXPECT_EQ(machine.Outstanding(), "");
  EXPECT_EQ(NivoListeners(machine), 0u);
  EXPECT_TRUE(SubscribedPids(machine).empty());
}

// --- What cannot be fails the running test.

TEST_F(DisplayLink, WhatNobodyBeganCannotBeEnded) {
  const CaughtFailures caught;
  EXPECT_EQ(client.UnSubscribe(), kDlNotSubscribed);
  EXPECT_EQ(client.UnRegister(nullptr), kDlNotSubscribed);
  Listen(1);
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(2)), kDlNotSubscribed);
  EXPECT_EQ(client.Register(AddOnClient::Context(1)), kDlBadArgument);
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(1)), 0);
  EXPECT_EQ(client.UnRegister(AddOnClient::Context(1)), kDlNotSubscribed);
  EXPECT_EQ(client.UnSubscribe(), 0);
  EXPECT_EQ(client.UnSubscribe(), kDlNotSubscribed);
  EXPECT_EQ(CaughtFailures::list().size(), 6u);
}

TEST_F(DisplayLink, ArgumentsThatCannotBeAreRefused) {
  const CaughtFailures caught;
  uint32_t state = 9;
  uint32_t record[18] = {71};
  const uint64_t none = 0;
  const uint64_t one = 1;
  const auto* const nobody = static_cast<const uint32_t*>(nullptr);
  void* const nothing = nullptr;
  EXPECT_EQ(client.Ask("dlSubscribePids", &kAllPids[0], 3, one), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlSubscribePids", nobody, 3, none), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlSubscribePids", &kAllPids[0], -1, none), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlUnSubscribePids", nobody, -1, one), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlUnSubscribePids", &kAllPids[0], 3, none), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlRegisterNivoDisplayNotification", nothing, nothing, none),
            kDlBadArgument);
  EXPECT_EQ(client.Ask("dlPumpMessages", 100u, one), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlGetExecutionState", usb, 0x10001u, &state), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlGetExecutionState", usb + 100, kNivoQuestion, &state), kDlUnknownHandle);
  EXPECT_EQ(client.Ask("dlGetExecutionState", usb, kNivoQuestion, nothing), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlGetNivoID", usb, static_cast<void*>(record)), kDlBadArgument);
  EXPECT_EQ(client.Ask("dlGetVidPnTargetID", usb, 0u, static_cast<void*>(record)), kDlBadArgument);
  EXPECT_EQ(state, 9u);
  EXPECT_EQ(record[2], 0u);
  EXPECT_EQ(CaughtFailures::list().size(), 12u);
}

}  // namespace
}  // namespace sim
