// The add-on host and its clients: who shares it, when its thread starts and ends, and what both
// hold meanwhile.
#include "tests/behaviour/AddOnBench.h"

namespace {

constexpr char kConnect[] = "DisplayLinkAddOnHost::Connect() client_connections_ = ";
constexpr char kDisconnect[] = "DisplayLinkAddOnHost::Disconnect() client_connections_ = ";
constexpr char kCreated[] = "DisplayLink AddOn host thread created, id = ";

class DisplayLinkAddOnHost : public AddOnBench {
 protected:
  uint32_t Threads() const { return core.machine.Calls("CreateThread"); }
  bool ThreadRuns() const { return !core.machine.state().threads.Empty(); }
};

// --- The one instance.

TEST_F(DisplayLinkAddOnHost, IsSharedWhileSomebodyHoldsIt) {
  const boost::shared_ptr<Host> first = box().GetInstance();
  const boost::shared_ptr<Host> second = box().GetInstance();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, second);
}

TEST_F(DisplayLinkAddOnHost, IsMadeAnewAfterTheLastReference) {
  Disconnect();
  EXPECT_TRUE(state().stop);
  Drop();
  EXPECT_FALSE(state().stop);
  EXPECT_EQ(state().client_connections, 0);
}

TEST_F(DisplayLinkAddOnHost, StartsWithItsProductsAndNothingElse) {
  EXPECT_EQ(state().thread, nullptr);
  EXPECT_EQ(state().thread_id, 0u);
  EXPECT_FALSE(state().stop);
  EXPECT_EQ(state().client_connections, 0);
  EXPECT_EQ(state().load_state_seen, 0);
  EXPECT_EQ(state().subscribed_pids, (std::vector<uint32_t>{0x1004307, 0x1000290, 0x10002E9}));
  EXPECT_TRUE(Handles().empty());
  EXPECT_EQ(Threads(), 0u);
}

// --- The thread.

TEST_F(DisplayLinkAddOnHost, TheFirstClientStartsTheThread) {
  Install();
  host();
  core.machine.JournalReads(true);
  core.ForgetLog();
  core.machine.TakeJournal();
  Connect();
  EXPECT_NE(state().thread, nullptr);
  EXPECT_EQ(core.TakeLogWithSeverity(), "INFO " + std::string(kConnect) + "0\nINFO " + kCreated +
                                            std::to_string(state().thread_id) + "\n");
  EXPECT_EQ(CountOf(core.machine.TakeJournal(),
                    "CreateThread(security=0 stack=0 parameter=1 "
                    "flags=0)=1\n"),
            1u);
  Advance(0);
  EXPECT_EQ(add_on.pump_thread, state().thread_id);
  EXPECT_NE(add_on.pump_thread, GetCurrentThreadId());
}

TEST_F(DisplayLinkAddOnHost, ASecondClientStartsNoneAndOnlyTheLastEndsIt) {
  Install();
  Connect();
  Advance(0);
  const DWORD id = state().thread_id;
  core.ForgetLog();
  Connect();
  Advance(300);
  EXPECT_EQ(Threads(), 1u);
  EXPECT_EQ(state().thread_id, id);
  Disconnect();
  EXPECT_FALSE(state().stop);
  EXPECT_EQ(state().thread_id, id);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  const uint32_t pumps = add_on.Pumps();
  Advance(1000);
  EXPECT_EQ(add_on.Pumps(), pumps + 10);
  EXPECT_TRUE(ThreadRuns());
  Disconnect();
  EXPECT_TRUE(state().stop);
  EXPECT_FALSE(ThreadRuns());
  EXPECT_EQ(core.TakeLog(),
            std::string(kConnect) + "1\n" + kDisconnect + "2\n" + kDisconnect + "1\n");
  const uint32_t at_end = add_on.Pumps();
  Advance(1000);
  EXPECT_EQ(add_on.Pumps(), at_end);
}

TEST_F(DisplayLinkAddOnHost, TheLastClientWaitsForTheThreadAndKeepsNoHandle) {
  Install();
  Connect();
  Advance(50);
  core.machine.JournalReads(true);
  core.machine.TakeJournal();
  const uint32_t closed = core.machine.Calls("CloseHandle");
  Disconnect();
  EXPECT_EQ(CountOf(core.machine.TakeJournal(), "WaitForSingleObject(5000)=0\n"), 1u);
  EXPECT_EQ(core.machine.Now(), 100u);  // when the pump had waited its 100
  EXPECT_EQ(state().thread, nullptr);
  EXPECT_EQ(state().thread_id, 0u);
  EXPECT_EQ(core.machine.Calls("CloseHandle"), closed);
}

TEST_F(DisplayLinkAddOnHost, TheLastClientUnsubscribesOnItsOwnThread) {
  Install();
  Connect();
  Advance(0);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  EXPECT_EQ(add_on.calling_thread, state().thread_id);
  ASSERT_EQ(add_on.Listeners().size(), 1u);
  EXPECT_EQ(add_on.Listeners()[0].second, host());
  Disconnect();
  EXPECT_EQ(add_on.TakeCalls(), kUnsubscribed);
  EXPECT_EQ(add_on.calling_thread, GetCurrentThreadId());
  EXPECT_TRUE(add_on.Listeners().empty());
  EXPECT_TRUE(state().subscribed_pids.empty());
}

TEST_F(DisplayLinkAddOnHost, WithStandInsTheLastClientCallsNoFunctionOfTheLibrary) {
  Connect();
  Advance(500);
  EXPECT_EQ(box().LoadState(), displaylink::DummyApiLoaded);
  const uint32_t slept = core.machine.Calls("Sleep");
  Disconnect();
  EXPECT_EQ(state().subscribed_pids.size(), 3u);  // an unsubscription would have emptied it
  EXPECT_EQ(core.machine.Calls("Sleep"), slept);
  EXPECT_EQ(core.machine.Now(), 500u);  // the polling thread saw at once that it is to end
}

TEST_F(DisplayLinkAddOnHost, AStoppedHostIsNotStartedAgain) {
  Install();
  Connect();
  Advance(0);
  Disconnect();
  add_on.TakeCalls();
  const uint32_t pumps = add_on.Pumps();
  Connect();
  EXPECT_EQ(Threads(), 2u);
  EXPECT_NE(state().thread, nullptr);
  EXPECT_TRUE(state().stop);
  Advance(0);
  EXPECT_FALSE(ThreadRuns());
  EXPECT_EQ(add_on.Pumps(), pumps);
  EXPECT_EQ(add_on.TakeCalls(), "");
  Disconnect();
}

TEST_F(DisplayLinkAddOnHost, AStoppedHostWithStandInsBindsNothingMore) {
  Connect();
  Advance(0);
  EXPECT_EQ(box().LoadState(), displaylink::DummyApiLoaded);
  Disconnect();
  Drop();
  Disconnect();  // a new host, stopped before it ever ran
  TakeOutput();
  const uint32_t loads = core.machine.Calls("LoadLibraryA");
  Connect();  // its count is 0 again
  Advance(30000);
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(DisplayLinkAddOnHost, ClientsAreCountedBelowNothing) {
  host();
  core.ForgetLog();
  Disconnect();
  Disconnect();
  EXPECT_EQ(state().client_connections, -2);
  EXPECT_EQ(core.TakeLog(), std::string(kDisconnect) + "0\n" + kDisconnect + "-1\n");
  Connect();
  Connect();
  Connect();
  Connect();
  EXPECT_EQ(state().client_connections, 2);
  EXPECT_EQ(Threads(), 3u);  // at -1, 0 and 1
  Advance(0);
  EXPECT_FALSE(ThreadRuns());
  Disconnect();
}

TEST_F(DisplayLinkAddOnHost, WithoutAThreadTheCountStaysRaised) {
  core.machine.SetCommandLine(L"host.exe --v=1 --enable-dcheck");
  host();
  core.ForgetLog();
  core.machine.Fail("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
  Connect();
  EXPECT_EQ(core.TakeLogWithSeverity(), "INFO " + std::string(kConnect) +
                                            "0\nERROR_REPORT Check failed: thread_ != NULL. \n"
                                            "INFO " +
                                            kCreated + "0\n");
  EXPECT_EQ(state().client_connections, 1);
  EXPECT_EQ(state().thread, nullptr);
  EXPECT_EQ(core.Modules(), 0u);
  Connect();
  EXPECT_EQ(state().client_connections, 2);
  EXPECT_EQ(Threads(), 1u);
  Disconnect();
  Disconnect();
  EXPECT_EQ(core.machine.Now(), 0u);  // nothing to wait for
  EXPECT_TRUE(state().stop);
  Drop();
  Connect();  // nobody holds what the thread would have held: this is a new host
  EXPECT_FALSE(state().stop);
  EXPECT_EQ(state().client_connections, 1);
}

// --- A thread that takes longer than its clients wait.

TEST_F(DisplayLinkAddOnHost, ALateThreadIsLeftAloneAfterFiveSeconds) {
  add_on.pump_period = 20000;
  Install();
  Connect();
  Advance(0);
  add_on.TakeCalls();
  core.ForgetLog();
  Disconnect();
  EXPECT_EQ(core.machine.Now(), 5000u);
  EXPECT_EQ(core.TakeLog(), std::string(kDisconnect) + "1\n");
  EXPECT_EQ(add_on.TakeCalls(), kUnsubscribed);
  EXPECT_EQ(state().thread, nullptr);
  EXPECT_EQ(state().thread_id, 0u);
  EXPECT_TRUE(ThreadRuns());
  Advance(15000);
  EXPECT_FALSE(ThreadRuns());
  EXPECT_EQ(add_on.TakeCalls(), "");  // once is enough
  EXPECT_EQ(add_on.Pumps(), 1u);
}

TEST_F(DisplayLinkAddOnHost, ALateThreadKeepsTheHostAndTheModule) {
  add_on.pump_period = 20000;
  Install();
  const std::string at_rest = core.ostrel().module() != nullptr ? core.machine.Outstanding() : "";
  Connect();
  Advance(0);
  const Host* const first = host();
  Disconnect();
  Drop();
  EXPECT_EQ(host(), first);  // the thread holds it still
  EXPECT_TRUE(state().stop);
  EXPECT_EQ(core.Modules(), 2u);  // the add-on library, and this one's own
  Drop();
  Advance(15000);
  EXPECT_FALSE(ThreadRuns());
  EXPECT_FALSE(state().stop);  // a new one
  EXPECT_EQ(core.Modules(), 1u);
}

TEST_F(DisplayLinkAddOnHost, AThreadThatSubscribesWhenNobodyWaitsAnyMoreWithdrawsItself) {
  add_on.on_load = [] { ScriptedAddOn::Wait(8000); };
  Install();
  Connect();
  Advance(0);
  Disconnect();
  EXPECT_EQ(core.machine.Now(), 5000u);
  EXPECT_EQ(add_on.TakeCalls(), "");  // it had not subscribed yet
  Drop();
  Advance(3000);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  Advance(100);
  EXPECT_EQ(add_on.TakeCalls(), kUnsubscribed);
  EXPECT_TRUE(add_on.Listeners().empty());
  EXPECT_FALSE(ThreadRuns());
}

TEST_F(DisplayLinkAddOnHost, ARegistrationThatNobodyWaitsForIsWithdrawnOnceItIsMade) {
  add_on.on_register = [] { ScriptedAddOn::Wait(8000); };
  Install();
  Connect();
  Advance(0);
  Disconnect();  // its own withdrawal comes too early
  add_on.TakeCalls();
  Drop();
  Advance(3100);
  EXPECT_TRUE(add_on.Listeners().empty());
  EXPECT_FALSE(ThreadRuns());
}

// --- Records.

class DisplayLinkRecords : public AddOnBench, public testing::WithParamInterface<bool> {
 protected:
  DisplayLinkRecords() : AddOnBench(GetParam() ? L"--v=1" : L"--v=0") {}
};

TEST_P(DisplayLinkRecords, OfClientsAndEventsNeedTheFirstVerboseLevel) {
  Install();
  Connect();
  Advance(0);
  Tell(displaylink::DL_NC_CONNECTED, 0);
  Disconnect();
  const std::string log = core.TakeLog();
  for (const char* text : {"::Connect()", "::Disconnect()", "DL_NC_CONNECTED"}) {
    EXPECT_EQ(log.find(text) != std::string::npos, GetParam()) << text;
  }
  EXPECT_NE(log.find(kCreated), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Levels, DisplayLinkRecords, testing::Bool());

// --- What the thread holds.

TEST_F(DisplayLinkAddOnHost, TheThreadHoldsTheHostWithoutAnyClientsReference) {
  Install();
  Connect();
  Advance(0);
  const Host* const first = host();
  Drop();
  Advance(500);
  EXPECT_EQ(host(), first);
  EXPECT_EQ(state().client_connections, 1);
  Disconnect();
}

TEST_F(DisplayLinkAddOnHost, TheLibraryStaysLoadedWhileTheThreadRuns) {
  Install();
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(core.ostrel().module(), path, MAX_PATH);
  Connect();
  Advance(0);
  FreeLibrary(core.ostrel().module());  // as a host does that has forgotten to take it down
  ASSERT_EQ(GetModuleHandleW(path), core.ostrel().module());
  Advance(1000);
  EXPECT_EQ(add_on.Pumps(), 11u);
  LoadLibraryW(path);  // the reference back that was just given away
  Disconnect();
  Drop();
  core.ostrel().Unload();
  EXPECT_EQ(GetModuleHandleW(path), nullptr);
}

TEST_F(DisplayLinkAddOnHost, TheModuleIsHeldBeforeTheThreadBegins) {
  Install();
  host();
  EXPECT_EQ(core.Modules(), 0u);
  Connect();
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 0u);  // it has not begun yet
  EXPECT_EQ(core.Modules(), 1u);
  Disconnect();
  EXPECT_EQ(core.machine.Calls("FreeLibraryAndExitThread"), 1u);
}

TEST_F(DisplayLinkAddOnHost, AModuleThatCannotBeHeldKeepsNoThreadFromRunning) {
  Install();
  host();
  core.machine.Fail("GetModuleHandleExW", 1, ERROR_MOD_NOT_FOUND);
  Connect();
  Advance(500);
  EXPECT_EQ(add_on.Pumps(), 6u);
  Disconnect();
  EXPECT_FALSE(ThreadRuns());
  EXPECT_EQ(core.machine.Calls("FreeLibraryAndExitThread"), 0u);
  core.ostrel().ForgiveLeaks();  // of the thread's handle, which nobody closes
}

}  // namespace
