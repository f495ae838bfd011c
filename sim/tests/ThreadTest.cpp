// Threads of the library in virtual time.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/Library.h"
#include "sim/MachineState.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

// What the threads did, with the moment. Threads take turns, so that nothing here is locked.
std::vector<std::string> g_story;
void Tell(const std::string& what) {
  g_story.push_back(std::to_string(Machine::Current().Now()) + " " + what);
}

HANDLE g_event = nullptr;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR id, DWORD) {
  Tell("timer");
  SIM_FAKE(KillTimer)(nullptr, id);
  SIM_FAKE(SetEvent)(g_event);
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DISPLAYCHANGE) Tell("change to " + std::to_string(LOWORD(lparam)));
  return DefWindowProcA(window, message, wparam, lparam);
}

void Pump() {
  MSG message = {};
  while (SIM_FAKE(GetMessageA)(&message, nullptr, 0, 0) > 0) {
    if (message.message >= WM_APP) Tell("message " + std::to_string(message.message - WM_APP));
    if (message.message == WM_APP + 9) return;
    SIM_FAKE(DispatchMessageA)(&message);
  }
}

DWORD WINAPI PumpWithTimer(void* period) {
  if (period != nullptr) {
    SIM_FAKE(SetTimer)(nullptr, 0, *static_cast<UINT*>(period), OnTimer);
  }
  Pump();
  Tell("end");
  return 7;
}

DWORD WINAPI PumpWithWindow(void*) {
  const HWND window =
      SIM_FAKE(CreateWindowExA)(0, "STATIC", "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
  SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage));
  SIM_FAKE(SetTimer)(window, 1, 60000, nullptr);
  return PumpWithTimer(nullptr);
}

DWORD WINAPI SleepAndSignal(void* milliseconds) {
  SIM_FAKE(Sleep)(*static_cast<DWORD*>(milliseconds));
  Tell("awake");
  SIM_FAKE(SetEvent)(g_event);
  return 0;
}

class Thread : public testing::Test {
 protected:
  Thread() : machine_(kSampleMachine) {
    g_story.clear();
    g_event = SIM_FAKE(CreateEventA)(nullptr, FALSE, FALSE, "");
  }
  ~Thread() override {
    machine_.EndThreads();
    for (const HANDLE thread : threads_) SIM_FAKE(CloseHandle)(thread);
    if (g_event != nullptr) SIM_FAKE(CloseHandle)(g_event);
  }

  HANDLE Start(LPTHREAD_START_ROUTINE procedure, void* parameter = nullptr) {
    const HANDLE thread = SIM_FAKE(CreateThread)(nullptr, 0, procedure, parameter, 0, &id_);
    threads_.push_back(thread);
    return thread;
  }
  DWORD Wait(DWORD milliseconds) { return SIM_FAKE(WaitForSingleObject)(g_event, milliseconds); }
  void Post(UINT number) { SIM_FAKE(PostThreadMessageA)(id_, WM_APP + number, 0, 0); }

  using Story = std::vector<std::string>;
  Machine machine_;
  std::vector<HANDLE> threads_;
  DWORD id_ = 0;
};

TEST_F(Thread, TimerFiresAtItsMomentWhileTheOtherWaits) {
  UINT period = 1500;
  Start(PumpWithTimer, &period);
  EXPECT_EQ(Wait(10000), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.Now(), 1500u);
  EXPECT_EQ(g_story, Story({"1500 timer"}));
}

TEST_F(Thread, WaitIsOverAtItsTimeOut) {
  UINT period = 1501;
  Start(PumpWithTimer, &period);
  EXPECT_EQ(Wait(1500), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(machine_.Now(), 1500u);
  EXPECT_EQ(g_story, Story());
  EXPECT_EQ(Wait(1), WAIT_OBJECT_0);
}

TEST_F(Thread, WaitWithoutThreadsTakesItsTimeAndPlannedEventsHappen) {
  machine_.At(700, [] { Tell("planned"); });
  EXPECT_EQ(Wait(1500), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(machine_.Now(), 1500u);
  EXPECT_EQ(g_story, Story({"700 planned"}));
}

TEST_F(Thread, PlannedEventsHappenInTheirOrderAndBeforeTimersOfTheMoment) {
  UINT period = 300;
  Start(PumpWithTimer, &period);
  machine_.At(300, [] { Tell("second"); });
  machine_.At(200, [] { Tell("first"); });
  machine_.At(300, [] { Tell("third"); });
  EXPECT_EQ(Wait(10000), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"200 first", "300 second", "300 third", "300 timer"}));
}

TEST_F(Thread, PlannedEventComesLateWhenItsMomentHasPassed) {
  machine_.At(100, [] { Tell("planned"); });
  SIM_FAKE(Sleep)(500);
  EXPECT_EQ(g_story, Story());
  machine_.Advance(0);
  EXPECT_EQ(g_story, Story({"500 planned"}));
}

TEST_F(Thread, PlannedEventMayEndTheWait) {
  machine_.At(400, [] { SIM_FAKE(SetEvent)(g_event); });
  Start(PumpWithTimer);
  EXPECT_EQ(Wait(10000), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.Now(), 400u);
}

TEST_F(Thread, TimersOfTheWaitingThreadDoNotFire) {
  Start(PumpWithTimer);
  SIM_FAKE(SetTimer)(nullptr, 0, 100, OnTimer);
  EXPECT_EQ(Wait(1000), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(g_story, Story());
  machine_.Advance(0);
  EXPECT_EQ(g_story, Story({"1000 timer"}));
}

TEST_F(Thread, TimerFiresInAnAdvanceToo) {
  UINT period = 100;
  Start(PumpWithTimer, &period);
  EXPECT_EQ(Wait(0), static_cast<DWORD>(WAIT_TIMEOUT));
  machine_.Advance(100);
  EXPECT_EQ(g_story, Story({"100 timer"}));
}

TEST_F(Thread, TimerBelongsToItsThread) {
  UINT period = 100;
  Start(PumpWithTimer, &period);
  EXPECT_EQ(Wait(0), static_cast<DWORD>(WAIT_TIMEOUT));
  ASSERT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_EQ(machine_.ArmedTimers()[0].thread, id_);
  EXPECT_FALSE(SIM_FAKE(KillTimer)(nullptr, machine_.ArmedTimers()[0].id));
  EXPECT_EQ(machine_.ArmedTimers().size(), 1u);
}

TEST_F(Thread, MessagesArriveInTheirOrderAndTheHandleIsSignalledAtTheEnd) {
  const HANDLE thread = Start(PumpWithTimer);
  EXPECT_EQ(Wait(50), static_cast<DWORD>(WAIT_TIMEOUT));
  for (const UINT number : {1, 2, 9, 3}) Post(number);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(thread, 10000), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.Now(), 50u);
  EXPECT_EQ(g_story, Story({"50 message 1", "50 message 2", "50 message 9", "50 end"}));
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 7u);
}

TEST_F(Thread, MessageToNobodyFails) {
  EXPECT_FALSE(SIM_FAKE(PostThreadMessageA)(0, WM_APP, 0, 0));
}

TEST_F(Thread, TakesTimersAndWindowsAlongWhenItEnds) {
  const HANDLE thread = Start(PumpWithWindow);
  EXPECT_EQ(Wait(0), static_cast<DWORD>(WAIT_TIMEOUT));
  ASSERT_EQ(machine_.state().windows.alive.size(), 1u);
  const HWND window = machine_.state().windows.alive[0];
  EXPECT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_NE(machine_.Outstanding().find("window 0x"), std::string::npos);
  Post(9);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(thread, 10000), WAIT_OBJECT_0);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_TRUE(machine_.state().windows.alive.empty());
  EXPECT_TRUE(machine_.ArmedTimers().empty());
  EXPECT_EQ(machine_.Outstanding().find("window 0x"), std::string::npos);
}

TEST_F(Thread, TakesItsOwnTimerAlongOnly) {
  UINT period = 100;
  const HANDLE thread = Start(PumpWithTimer, &period);
  const UINT_PTR own = SIM_FAKE(SetTimer)(nullptr, 0, 5000, OnTimer);
  EXPECT_EQ(Wait(0), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(machine_.ArmedTimers().size(), 2u);
  Post(9);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(thread, 10000), WAIT_OBJECT_0);
  ASSERT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_EQ(machine_.ArmedTimers()[0].id, own);
}

TEST_F(Thread, DisplayChangeReachesItsWindowAtTheMoment) {
  Start(PumpWithWindow);
  machine_.At(250, [this] { machine_.BroadcastDisplayChange(); });
  machine_.At(251, [this] { machine_.model().sources[0].mode.width = 800; });
  machine_.At(900, [this] { machine_.BroadcastDisplayChange(); });
  EXPECT_EQ(Wait(2000), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(g_story, Story({"250 change to 1366", "900 change to 800"}));
}

TEST_F(Thread, SleepsInTheVirtualTimeThatTheOtherDrives) {
  DWORD period = 3000;
  Start(SleepAndSignal, &period);
  EXPECT_EQ(Wait(2999), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(Wait(10000), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.Now(), 3000u);
  EXPECT_EQ(g_story, Story({"3000 awake"}));
}

// A thread's own wait takes its whole time-out once it is a long one; that it was ended is not
// lost.
TEST_F(Thread, OwnWaitSeesWhatWasSignalledMeanwhile) {
  Start([](void*) -> DWORD {
    const DWORD result = SIM_FAKE(WaitForSingleObject)(g_event, 3000);
    Tell(result == WAIT_OBJECT_0 ? "signalled" : "timed out");
    return 0;
  });
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 0), static_cast<DWORD>(WAIT_TIMEOUT));
  machine_.At(1000, [] { SIM_FAKE(SetEvent)(g_event); });
  machine_.Advance(2999);
  EXPECT_EQ(g_story, Story());
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 10000), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"3000 signalled"}));
}

TEST_F(Thread, OwnWaitThatNothingEndsTimesOut) {
  Start([](void*) -> DWORD {
    const DWORD result = SIM_FAKE(WaitForSingleObject)(g_event, 3000);
    Tell(result == WAIT_TIMEOUT ? "timed out" : "signalled");
    return 0;
  });
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 10000), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"3000 timed out"}));
}

TEST_F(Thread, WorksWhileTheOtherGivesUp) {
  machine_.At(100, [this] { Post(1); });
  Start([](void*) -> DWORD {
    MSG message = {};
    SIM_FAKE(GetMessageA)(&message, nullptr, 0, 0);
    Machine::Current().Work(500);
    Tell("done");
    return 0;
  });
  EXPECT_EQ(Wait(400), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(g_story, Story());
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 10000), WAIT_OBJECT_0);
  EXPECT_EQ(g_story, Story({"600 done"}));
}

TEST_F(Thread, WorkOnTheTestsThreadMovesTheClock) {
  machine_.Work(500);
  EXPECT_EQ(machine_.Now(), 500u);
}

TEST_F(Thread, ThatIsLeftIsEndedAndTold) {
  Start(PumpWithTimer);
  EXPECT_EQ(machine_.EndThreads(), 1u);
  EXPECT_EQ(g_story, Story({"0 end"}));
  EXPECT_EQ(machine_.EndThreads(), 0u);
}

TEST_F(Thread, ThatDoesNotEndIsAFailure) {
  static HANDLE released = nullptr;
  released = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  machine_.state().threads.SetPatience(50);
  Start([](void*) -> DWORD { return WaitForSingleObject(released, INFINITE); });
  {
    const CaughtFailures failures;
    EXPECT_EQ(machine_.EndThreads(), 1u);
    EXPECT_EQ(CaughtFailures::list(),
              std::vector<std::string>{"a thread of the DLL goes on, whatever it is told"});
  }
  SetEvent(released);
  machine_.state().threads.SetPatience(20000);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 0), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.EndThreads(), 0u);
  CloseHandle(released);
}

TEST_F(Thread, ThatDoesNotComeToRestIsAFailure) {
  static HANDLE released = nullptr;
  released = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  machine_.state().threads.SetPatience(50);
  Start([](void*) -> DWORD { return WaitForSingleObject(released, INFINITE); });
  {
    const CaughtFailures failures;
    EXPECT_EQ(Wait(100), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(CaughtFailures::list(),
              std::vector<std::string>{"a thread of the DLL neither waits nor ends"});
  }
  SetEvent(released);
  machine_.state().threads.SetPatience(20000);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(threads_[0], 0), WAIT_OBJECT_0);
  CloseHandle(released);
}

TEST_F(Thread, EventIsInTheLedgerUnlessItHasNoName) {
  EXPECT_EQ(machine_.Outstanding().rfind("event 0x", 0), 0u);
  EXPECT_TRUE(SIM_FAKE(CloseHandle)(g_event));
  g_event = nullptr;
  EXPECT_EQ(machine_.Outstanding(), "");
  const HANDLE nameless = SIM_FAKE(CreateEventA)(nullptr, FALSE, FALSE, nullptr);
  EXPECT_EQ(machine_.Outstanding(), "");
  SIM_FAKE(CloseHandle)(nameless);
}

// Two events of the empty name are two events.
TEST_F(Thread, EmptyNameIsNoName) {
  const HANDLE other = SIM_FAKE(CreateEventA)(nullptr, FALSE, FALSE, "");
  SIM_FAKE(SetEvent)(other);
  EXPECT_EQ(Wait(0), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(other, 0), WAIT_OBJECT_0);
  SIM_FAKE(CloseHandle)(other);
}

TEST_F(Thread, DeclaredFaultsAnswerAsDocumented) {
  MSG message = {};
  machine_.Fail("CreateEventA", 1);
  machine_.Fail("SetEvent", 1);
  machine_.Fail("WaitForSingleObject", 1);
  machine_.Fail("GetMessageA", 1);
  machine_.Fail("PostThreadMessageA", 1);
  EXPECT_EQ(SIM_FAKE(CreateEventA)(nullptr, FALSE, FALSE, ""), nullptr);
  EXPECT_FALSE(SIM_FAKE(SetEvent)(g_event));
  EXPECT_EQ(Wait(10000), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(SIM_FAKE(GetMessageA)(&message, nullptr, 0, 0), -1);
  EXPECT_FALSE(SIM_FAKE(PostThreadMessageA)(GetCurrentThreadId(), WM_APP, 0, 0));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_THREAD_ID));
  EXPECT_EQ(machine_.Now(), 0u);
}

TEST_F(Thread, NoEventCannotBeSetOrWaitedFor) {
  EXPECT_FALSE(SIM_FAKE(SetEvent)(nullptr));
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(nullptr, 10000), WAIT_FAILED);
  EXPECT_EQ(machine_.Now(), 0u);
}

TEST(ThreadOfTheLibrary, LeftRunningByAnUnloadFailsTheTestUnlessForgiven) {
  Machine machine(kSampleMachine);
  CaughtFailures failures;
  for (const bool forgiven : {false, true}) {
    Library ostrel(machine);
    const HANDLE thread = SIM_FAKE(CreateThread)(nullptr, 0, PumpWithTimer, nullptr, 0, nullptr);
    SIM_FAKE(CloseHandle)(thread);
    if (forgiven) ostrel.ForgiveLeaks();
  }
  ASSERT_EQ(failures.list().size(), 1u);
  EXPECT_EQ(failures.list()[0], "threads left running by the unload of the DLL: 1");
  EXPECT_EQ(machine.EndThreads(), 0u);
}

}  // namespace
}  // namespace sim
