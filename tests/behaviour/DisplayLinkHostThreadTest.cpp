// The add-on host's thread: how it follows the load state, subscribes and pumps.
#include <functional>

#include "tests/behaviour/AddOnBench.h"

namespace {

using displaylink::ApiLoaded;
using displaylink::ApiLoadPending;
using displaylink::DummyApiLoaded;
using displaylink::UnLoadPending;

constexpr char kSubscribedNothing[] =
    "dlSubscribePids(count 0, 0)\n"
    "dlRegisterNivoDisplayNotification(0)\n";
constexpr char kGivenUp[] = "\nApiDllLoadState: UnLoadPending -> DummyApiLoaded\n";

/// Counts what it is told.
class Observer : public displaylink::ILoadObserver {
 public:
  void OnLoaded() override { ++loaded; }
  void OnUnloading() override {
    ++unloading;
    if (look) look();
  }
  int loaded = 0;
  int unloading = 0;
  std::function<void()> look;
};

class DisplayLinkHostThread : public AddOnBench {
 protected:
  /// With a client and the first turn begun.
  void Start() {
    Connect();
    Advance(0);
  }
  /// Somebody inside the library sets the state while the thread pumps, once.
  void SetStateInPump(int32_t state) {
    add_on.on_pump = [this, state] {
      box().SetLoadState(state);
      add_on.on_pump = nullptr;
    };
  }
  void TakeTurn() { box().TakeTurn(host()); }
};

// --- The real library.

TEST_F(DisplayLinkHostThread, BindsSubscribesAndPumpsInItsFirstTurn) {
  Install();
  Start();
  EXPECT_EQ(TakeOutput(), kLoaded);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  EXPECT_EQ(add_on.Pumps(), 1u);
  EXPECT_EQ(state().load_state_seen, ApiLoaded);
}

TEST_F(DisplayLinkHostThread, PumpsForAHundredMillisecondsAtATimeAndSubscribesOnce) {
  Install();
  Start();
  add_on.TakeCalls();
  Advance(99);
  EXPECT_EQ(add_on.Pumps(), 1u);
  Advance(1);
  EXPECT_EQ(add_on.Pumps(), 2u);
  Advance(9900);
  EXPECT_EQ(add_on.Pumps(), 101u);
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 1u);
}

TEST_F(DisplayLinkHostThread, ANewHostFindsTheLibraryLoadedAndSubscribesAgain) {
  Install();
  Start();
  Disconnect();
  Drop();
  TakeOutput();
  add_on.TakeCalls();
  EXPECT_EQ(box().LoadState(), ApiLoaded);
  EXPECT_EQ(state().load_state_seen, 0);
  Start();
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 1u);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  EXPECT_EQ(state().load_state_seen, ApiLoaded);
}

TEST_F(DisplayLinkHostThread, FailedSubscriptionsAreToldAndStopNothing) {
  add_on.results = {{"dlSubscribePids", -3}, {"dlRegisterNivoDisplayNotification", -8}};
  Install();
  host();
  Connect();
  core.ForgetLog();
  Advance(0);
  EXPECT_EQ(core.TakeLogWithSeverity(),
            "ERROR Cannot subscribe PIDs, rv = -3\n"
            "ERROR Register Nivo display notification failed, rv = -8\n");
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  Advance(1000);
  EXPECT_EQ(add_on.Pumps(), 11u);
  Disconnect();
  EXPECT_EQ(add_on.TakeCalls(), kUnsubscribed);
}

TEST_F(DisplayLinkHostThread, APositiveResultOfASubscriptionIsASuccess) {
  add_on.results = {{"dlSubscribePids", 1}, {"dlRegisterNivoDisplayNotification", 0x7FFFFFFF}};
  Install();
  host();
  Connect();
  core.ForgetLog();
  Advance(0);
  EXPECT_EQ(core.TakeLog(), "");
}

TEST_F(DisplayLinkHostThread, EachFailedPumpIsToldAndStopsNothing) {
  add_on.results = {{"dlPumpMessages", -1}};
  Install();
  Start();
  core.ForgetLog();
  Advance(300);
  EXPECT_EQ(core.TakeLogWithSeverity(),
            "WARNING dlPumpMessage() failed\n"
            "WARNING dlPumpMessage() failed\n"
            "WARNING dlPumpMessage() failed\n");
  EXPECT_EQ(add_on.Pumps(), 4u);
  EXPECT_EQ(state().load_state_seen, ApiLoaded);
}

// --- No library.

TEST_F(DisplayLinkHostThread, TriesAgainEveryTenSeconds) {
  Start();
  EXPECT_EQ(TakeOutput(), kDummy);
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  for (int i = 0; i < 3; ++i) {
    Advance(9999);
    EXPECT_EQ(TakeOutput(), "");
    Advance(1);
    EXPECT_EQ(TakeOutput(), std::string(kRetry) + kDummy);
  }
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 4u);
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
}

TEST_F(DisplayLinkHostThread, SaysNothingInTheLogOfAMissingLibrary) {
  host();
  Connect();
  core.ForgetLog();
  Advance(30000);
  EXPECT_EQ(core.TakeLog(), "");
}

TEST_F(DisplayLinkHostThread, PollsTheClockWithoutAWaitWhileThereAreStandIns) {
  Start();
  core.machine.JournalReads(true);
  core.machine.TakeJournal();
  const uint32_t slept = core.machine.Calls("Sleep");
  const uint32_t asked = core.machine.Calls("clock");
  Advance(5000);
  EXPECT_EQ(core.machine.Calls("Sleep"), slept);
  EXPECT_EQ(core.machine.TakeJournal(), "");
  EXPECT_GT(core.machine.Calls("clock"), asked + 100);
}

TEST_F(DisplayLinkHostThread, FindsALibraryThatHasComeByItsNextTry) {
  Start();
  Advance(4000);
  Install();
  Advance(5999);
  TakeOutput();
  EXPECT_EQ(add_on.TakeCalls(), "");
  Advance(1);
  EXPECT_EQ(TakeOutput(), std::string(kRetry) + kLoaded);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  EXPECT_EQ(add_on.Pumps(), 1u);
  Advance(20000);
  EXPECT_EQ(TakeOutput(), "");
  EXPECT_EQ(add_on.Pumps(), 201u);
}

TEST_F(DisplayLinkHostThread, ANewHostWaitsOutTheTenSecondsOfTheOneBefore) {
  Start();
  Advance(7000);
  Disconnect();
  Drop();
  Install();
  TakeOutput();
  Start();
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  Advance(2999);
  EXPECT_EQ(TakeOutput(), "");
  Advance(1);
  EXPECT_EQ(TakeOutput(), std::string(kRetry) + kLoaded);
}

TEST_F(DisplayLinkHostThread, TheTryTellsTheObserverOnlyOfASuccess) {
  Observer observer;
  box().SetLoadObserver(&observer);
  Start();
  Advance(10000);
  EXPECT_EQ(observer.loaded, 0);
  Install();
  Advance(10000);
  EXPECT_EQ(observer.loaded, 1);
  EXPECT_EQ(observer.unloading, 0);
}

// --- A state that changes while the thread pumps.

TEST_F(DisplayLinkHostThread, AnUnloadInThePumpUnsubscribesAndEndsInStandIns) {
  Observer observer;
  std::string at_unload;
  box().SetLoadObserver(&observer);
  observer.look = [&] {
    at_unload = std::to_string(box().LoadState()) + " " + std::to_string(core.Modules());
  };
  Install();
  Start();
  TakeOutput();
  add_on.TakeCalls();
  SetStateInPump(UnLoadPending);
  Advance(100);
  EXPECT_EQ(add_on.TakeCalls(), kUnsubscribed);
  EXPECT_EQ(add_on.calling_thread, state().thread_id);
  EXPECT_EQ(TakeOutput(), kGivenUp);
  EXPECT_EQ(observer.unloading, 1);
  EXPECT_EQ(at_unload, "2 2");  // told first, while the library is still held
  EXPECT_EQ(core.Modules(), 1u);
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 1u);
}

TEST_F(DisplayLinkHostThread, AfterAnUnsubscriptionALaterSubscriptionAsksForNothing) {
  Install();
  Start();
  add_on.TakeCalls();
  SetStateInPump(UnLoadPending);
  Advance(100);
  EXPECT_TRUE(state().subscribed_pids.empty());
  add_on.TakeCalls();
  TakeOutput();
  Advance(10000);
  EXPECT_EQ(TakeOutput(), std::string(kRetry) + kLoaded);
  EXPECT_EQ(add_on.TakeCalls(), kSubscribedNothing);
}

TEST_F(DisplayLinkHostThread, APendingLoadInThePumpBindsAndSubscribesAnew) {
  Install();
  Start();
  TakeOutput();
  add_on.TakeCalls();
  SetStateInPump(ApiLoadPending);
  Advance(100);
  EXPECT_EQ(add_on.TakeCalls(), std::string(kUnsubscribed) + kSubscribedNothing);
  EXPECT_EQ(TakeOutput(), kLoaded);
  EXPECT_EQ(CountOf(core.machine.Outstanding(), "times"), 0u);
  EXPECT_EQ(state().load_state_seen, ApiLoaded);
}

TEST_F(DisplayLinkHostThread, WithStandInsInThePumpNoTryComesBeforeTenSecondsOfRunTime) {
  Install();
  Start();
  TakeOutput();
  SetStateInPump(DummyApiLoaded);
  Advance(100);
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  Advance(9899);
  EXPECT_EQ(TakeOutput(), "");
  Advance(1);  // no stand-ins were ever bound: their time is that of the start
  EXPECT_EQ(TakeOutput(), std::string(kRetry) + kLoaded);
}

TEST_F(DisplayLinkHostThread, AFailedPumpLeavesTheSubscriptionsWhateverTheState) {
  add_on.results = {{"dlPumpMessages", -5}};
  Install();
  Start();
  add_on.TakeCalls();
  TakeOutput();
  SetStateInPump(UnLoadPending);
  Advance(100);
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_EQ(TakeOutput(), kGivenUp);
  EXPECT_EQ(state().subscribed_pids.size(), 3u);
}

// --- Single turns.

TEST_F(DisplayLinkHostThread, AStateThatIsNoneChangesNothing) {
  host();
  box().SetLoadState(9);
  TakeTurn();
  EXPECT_EQ(state().load_state_seen, 9);
  EXPECT_EQ(box().LoadState(), 9);
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 0u);
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(DisplayLinkHostThread, AnUnloadBetweenTwoTurnsUnsubscribesNothing) {
  Install();
  host();
  TakeTurn();
  EXPECT_EQ(add_on.TakeCalls(), kSubscribed);
  TakeOutput();
  box().SetLoadState(UnLoadPending);
  TakeTurn();
  EXPECT_EQ(add_on.TakeCalls(), "");
  EXPECT_EQ(TakeOutput(), kGivenUp);
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  EXPECT_EQ(core.Modules(), 0u);
}

TEST_F(DisplayLinkHostThread, ALoadPendingTurnEndsInStandInsWithoutTheLibrary) {
  host();
  TakeTurn();
  EXPECT_EQ(state().load_state_seen, DummyApiLoaded);
  EXPECT_EQ(TakeOutput(), kDummy);
}

TEST_F(DisplayLinkHostThread, WithoutAHostThereIsNothingToDo) {
  core.machine.SetCommandLine(L"host.exe --enable-dcheck");
  core.ostrel();
  core.ForgetLog();
  box().ThreadBody(nullptr);
  EXPECT_EQ(core.TakeLogWithSeverity(), "ERROR_REPORT Check failed: host. \n");
  EXPECT_EQ(TakeOutput(), "");
}

TEST_F(DisplayLinkHostThread, AHostIsNoFailedCheck) {
  core.machine.SetCommandLine(L"host.exe --enable-dcheck");
  Disconnect();
  core.ForgetLog();
  box().ThreadBody(host());  // ends: it is stopped
  EXPECT_EQ(core.TakeLog(), "");
  EXPECT_EQ(core.machine.Calls("LoadLibraryA"), 0u);
}

TEST_F(DisplayLinkHostThread, LooksAtItsStopFlagBehindEachTurn) {
  Install();
  host();
  add_on.on_pump = [this] { Disconnect(); };
  box().ThreadBody(host());  // on this thread
  EXPECT_EQ(add_on.Pumps(), 1u);
}

}  // namespace
