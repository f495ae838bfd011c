// The window that would look at the displays after a device change. The library never creates it;
// its logic is whole.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "sim/MachineState.h"
#include "tests/behaviour/HdmiMonitors.h"

namespace {

class RRWindow : public testing::Test {
 protected:
  void SetUp() override {
    host.ForgetLog();
    window.reset(BoxOf(host).NewWindow(&monitor));
    host.machine.TakeJournal();
  }
  void TearDown() override {
    // A destroyed window asks the thread to quit; the next test is not to see that.
    MSG message;
    while (PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) {
    }
  }

  bool Create() { return window->Create(L"", WS_POPUP, 0, 0, 0, 10, 10, nullptr); }
  LRESULT Send(UINT message, WPARAM wparam = 0) {
    return window->HandleMessage(window->wnd(), message, wparam, 0);
  }
  RRWindowState State() { return BoxOf(host).StateOf(window.get()); }
  /// The period of the armed timer with id 10; 0 when there is none.
  uint32_t Period() {
    for (const sim::Machine::Timer& timer : host.machine.ArmedTimers()) {
      if (timer.window == window->wnd() && timer.id == 10) return timer.period;
    }
    return 0;
  }

  CoreHost host{kPanelAndHdmi, L"--v=3"};
  std::shared_ptr<FakeScript> script = HdmiAt(58);
  FakeMonitor monitor{script};
  std::unique_ptr<IntelRRWorkaroundWindow> window;
};

/// A window whose check can be held up in the middle.
class RRWorker : public RRWindow {
 protected:
  void SetUp() override {
    RRWindow::SetUp();
    host.machine.state().threads.StartAtOnce();
    ASSERT_TRUE(Create());
    script->TakeCalls();
    script->on_call = [this](const std::string&) { WaitForSingleObject(go, INFINITE); };
  }
  void TearDown() override {
    CloseHandle(go);
    RRWindow::TearDown();
  }

  /// The timer fires; the check stands at its first question to the display object.
  void Fire() {
    window->OnTimer(10);
    thread = OpenThread(SYNCHRONIZE, FALSE, State().worker_thread_id);
  }
  /// The check goes on to its end.
  void Finish() {
    ASSERT_NE(thread, nullptr);
    SetEvent(go);
    EXPECT_EQ(WaitForSingleObject(thread, 30000), WAIT_OBJECT_0);
    CloseHandle(thread);
    thread = nullptr;
  }
  void FireAndFinish() {
    ResetEvent(go);
    Fire();
    Finish();
  }
  size_t Rounds() {
    return CountOf(host.TakeLog(), "IntelRRWorkaroundWindow::ApplyWorkaround()\n");
  }

  HANDLE go = CreateEventA(nullptr, TRUE, FALSE, nullptr);
  HANDLE thread = nullptr;
};

// --- Making and ending.

TEST_F(RRWindow, StartsWithNothingKnown) {
  const RRWindowState state = State();
  EXPECT_EQ(state.m, &monitor);
  EXPECT_FALSE(state.timer_armed);
  EXPECT_EQ(state.known_displays, 0u);
  EXPECT_EQ(state.worker_thread, nullptr);
  EXPECT_EQ(state.worker_thread_id, 0u);
  EXPECT_EQ(script->TakeCalls(), "");
}

TEST_F(RRWindow, CreateMakesTheWindowOfItsClassAndReadsTheConnectedDisplays) {
  ASSERT_TRUE(Create());
  wchar_t name[100] = {};
  GetClassNameW(window->wnd(), name, 100);
  EXPECT_STREQ(name, L"HarborIntelRRWorkaroundWindowClassName");
  EXPECT_EQ(script->TakeCalls(), "GetConnectedDisplays\n");
  EXPECT_EQ(State().known_displays, 0x11u);
}

TEST_F(RRWindow, FailedCreateAsksNothing) {
  host.machine.Fail("CreateWindowExW", 1, ERROR_NOT_ENOUGH_MEMORY);
  EXPECT_FALSE(Create());
  EXPECT_EQ(script->TakeCalls(), "");
  EXPECT_EQ(State().known_displays, 0u);
}

TEST_F(RRWindow, DestructorTellsAndDestroysTheWindow) {
  ASSERT_TRUE(Create());
  const HWND wnd = window->wnd();
  host.ForgetLog();
  window.reset();
  EXPECT_FALSE(IsWindow(wnd));
  EXPECT_EQ(host.TakeLog(), "~IntelRRWorkaroundWindow()\n");
}

// --- Messages.

TEST_F(RRWindow, MessagesOfItsOwnGiveZero) {
  ASSERT_TRUE(Create());
  for (const UINT message : {2u, 16u, 126u, 274u, 275u, 537u}) {
    EXPECT_EQ(Send(message), 0) << message;
  }
}

TEST_F(RRWindow, DestroyAsksTheThreadToQuit) {
  ASSERT_TRUE(Create());
  MSG message = {};
  EXPECT_FALSE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(Send(WM_DESTROY), 0);
  ASSERT_TRUE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(message.wParam, 0u);
}

TEST_F(RRWindow, DoesNotCloseItself) {
  ASSERT_TRUE(Create());
  SendMessageA(window->wnd(), WM_CLOSE, 0, 0);
  SendMessageA(window->wnd(), WM_SYSCOMMAND, SC_CLOSE, 0);
  ASSERT_NE(window->wnd(), nullptr);
  EXPECT_TRUE(IsWindow(window->wnd()));
}

TEST_F(RRWindow, EverythingElseGoesToWindows) {
  ASSERT_TRUE(Create());
  const uint32_t before = host.machine.Calls("DefWindowProcW");
  for (const UINT message : {2u, 16u, 126u, 274u, 275u, 537u}) Send(message);
  EXPECT_EQ(host.machine.Calls("DefWindowProcW"), before);
  Send(WM_NULL);
  EXPECT_EQ(Send(WM_GETTEXTLENGTH), 0);
  window->HandleMessage(window->wnd(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"four"));
  EXPECT_EQ(Send(WM_GETTEXTLENGTH), 4);
  EXPECT_EQ(host.machine.Calls("DefWindowProcW"), before + 4);
}

// --- When the check is due.

TEST_F(RRWindow, DeviceChangeArmsTheTimer) {
  ASSERT_TRUE(Create());
  EXPECT_EQ(Send(WM_DEVICECHANGE), 0);
  EXPECT_EQ(Period(), 3000u);
  EXPECT_TRUE(State().timer_armed);
}

TEST_F(RRWindow, DisplayChangeAloneDoesNothing) {
  ASSERT_TRUE(Create());
  Send(WM_DISPLAYCHANGE);
  EXPECT_EQ(Period(), 0u);
  EXPECT_FALSE(State().timer_armed);
}

TEST_F(RRWindow, DisplayChangeBehindADeviceChangeHoldsTheCheckBack) {
  ASSERT_TRUE(Create());
  Send(WM_DEVICECHANGE);
  Send(WM_DISPLAYCHANGE);
  EXPECT_EQ(Period(), 5000u);
  EXPECT_EQ(host.machine.ArmedTimers().size(), 1u);
  EXPECT_TRUE(State().timer_armed);
  host.machine.Advance(4999);
  EXPECT_EQ(host.machine.Calls("CreateThread"), 0u);
}

TEST_F(RRWindow, AnotherTimerIsNotItsOwn) {
  ASSERT_TRUE(Create());
  Send(WM_DEVICECHANGE);
  EXPECT_EQ(Send(WM_TIMER, 11), 0);
  EXPECT_EQ(Period(), 3000u);
  EXPECT_TRUE(State().timer_armed);
  EXPECT_EQ(host.machine.Calls("CreateThread"), 0u);
}

TEST_F(RRWindow, ThreadThatCannotBeStartedIsNoCheckAndTheNextTimerTriesAgain) {
  ASSERT_TRUE(Create());
  script->TakeCalls();
  host.machine.Fail("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
  Send(WM_TIMER, 10);
  EXPECT_EQ(State().worker_thread, nullptr);
  EXPECT_EQ(script->TakeCalls(), "");
  host.machine.Fail("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
  Send(WM_TIMER, 10);
  EXPECT_EQ(host.machine.Calls("CreateThread"), 2u);
}

// --- The check.

TEST_F(RRWorker, TimerIsKilledAndStartsTheCheck) {
  Send(WM_DEVICECHANGE);
  host.machine.Advance(3000);
  thread = OpenThread(SYNCHRONIZE, FALSE, State().worker_thread_id);
  EXPECT_EQ(Period(), 0u);
  EXPECT_FALSE(State().timer_armed);
  EXPECT_NE(State().worker_thread, nullptr);
  EXPECT_NE(State().worker_thread_id, 0u);
  Finish();
  EXPECT_EQ(script->TakeCalls(), "GetConnectedDisplays\n");
}

TEST_F(RRWorker, OneCheckRunsAtATime) {
  Fire();
  EXPECT_EQ(window->OnTimer(10), 0);
  EXPECT_EQ(host.machine.Calls("CreateThread"), 1u);
  Finish();
  FireAndFinish();
  EXPECT_EQ(host.machine.Calls("CreateThread"), 2u);
}

TEST_F(RRWorker, RunsOnAThreadOfItsOwnAndEndsWithHandleAndIdCleared) {
  DWORD asked_on = 0;
  script->on_call = [&](const std::string&) {
    asked_on = GetCurrentThreadId();
    WaitForSingleObject(go, INFINITE);
  };
  FireAndFinish();
  EXPECT_NE(asked_on, 0u);
  EXPECT_NE(asked_on, GetCurrentThreadId());
  EXPECT_EQ(State().worker_thread, nullptr);
  EXPECT_EQ(State().worker_thread_id, 0u);
  EXPECT_EQ(CountOf(host.machine.Outstanding(), "thread"), 0u);
}

TEST_F(RRWorker, SameDisplaysAreNoReason) {
  FireAndFinish();
  EXPECT_EQ(Rounds(), 0u);
}

TEST_F(RRWorker, OtherDisplaysAreRememberedAndLookedAtOnce) {
  script->connected = 0x13;
  FireAndFinish();
  EXPECT_EQ(State().known_displays, 0x13u);
  EXPECT_EQ(Rounds(), 1u);
  FireAndFinish();
  EXPECT_EQ(Rounds(), 0u);
}

TEST_F(RRWorker, UnreadableDisplaysAreNoReason) {
  script->connected = 0x13;
  script->connected_result = 0;
  FireAndFinish();
  EXPECT_EQ(State().known_displays, 0x11u);
  EXPECT_EQ(Rounds(), 0u);
}

TEST_F(RRWorker, NewHdmiMonitorAtALowRateIsAdjusted) {
  SlowDown(host.machine);
  script->connected = 0x13;
  script->connected_count = 3;
  FireAndFinish();
  EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 60u);
}

TEST_F(RRWorker, ExceptionOfTheObjectEndsTheCheckOnly) {
  script->on_call = [this](const std::string&) {
    WaitForSingleObject(go, INFINITE);
    throw 1;
  };
  FireAndFinish();
  EXPECT_EQ(State().worker_thread, nullptr);
  EXPECT_EQ(State().worker_thread_id, 0u);
}

// --- What the check does.

TEST_F(RRWindow, AdjustsOnlyHdmiAmongSeveralDisplays) {
  const struct {
    uint32_t displays;
    uint32_t count;
    bool looks;
  } rows[] = {{0x11, 2, true},  {0x10, 2, true},  {0x13, 3, true},
              {0x11, 1, false}, {0x03, 2, false}, {0x11, 0, false}};
  for (const auto& row : rows) {
    script->TakeCalls();
    host.ForgetLog();
    BoxOf(host).ApplyWorkaround(window.get(), row.displays, row.count);
    EXPECT_EQ(script->TakeCalls().rfind("GetCurrentDisplayMode\n", 0) == 0, row.looks)
        << row.displays << " " << row.count;
    EXPECT_EQ(host.TakeLog().rfind("IntelRRWorkaroundWindow::ApplyWorkaround()\n", 0), 0u);
  }
}

TEST(RRWindowWithoutObject, CreatesAndChecksWithoutAsking) {
  CoreHost host(kPanelAndHdmi, L"--v=1");
  const std::unique_ptr<IntelRRWorkaroundWindow> window(BoxOf(host).NewWindow(nullptr));
  ASSERT_TRUE(window->Create(L"", WS_POPUP, 0, 0, 0, 10, 10, nullptr));
  BoxOf(host).CheckDisplays(window.get());
  EXPECT_EQ(BoxOf(host).StateOf(window.get()).known_displays, 0u);
  EXPECT_EQ(CountOf(host.TakeLog(), "ApplyWorkaround()"), 0u);
}

// --- The order of the virtual operations is part of the contract: the destructor's two places and
// the five of every window, then those of this one.

TEST_F(RRWorker, OperationsStandInTheirOrder) {
  using Operation = LRESULT (*)(IntelRRWorkaroundWindow*, UINT_PTR);
  const auto call = [&](size_t slot, UINT_PTR argument) {
    return (*reinterpret_cast<Operation* const*>(window.get()))[slot](window.get(), argument);
  };
  EXPECT_EQ(call(7, 0), 0);
  EXPECT_EQ(Period(), 3000u);
  EXPECT_EQ(call(8, 0), 0);
  EXPECT_EQ(Period(), 5000u);
  EXPECT_EQ(call(9, 11), 0);
  EXPECT_EQ(Period(), 5000u);
  call(9, 10);
  thread = OpenThread(SYNCHRONIZE, FALSE, State().worker_thread_id);
  EXPECT_EQ(Period(), 0u);
  Finish();
}

}  // namespace
