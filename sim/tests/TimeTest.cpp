#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "sim/Machine.h"
#include "sim/tests/Fakes.h"
#include "sim/tests/SampleLibrary.h"

namespace sim {
namespace {

std::vector<std::string> g_fired;

void CALLBACK OnTimer(HWND window, UINT message, UINT_PTR id, DWORD) {
  g_fired.push_back((window == nullptr ? "thread " : "window ") + std::to_string(id) + " at " +
                    std::to_string(Machine::Current().Now()) +
                    (message == WM_TIMER ? "" : " with a wrong message"));
}

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_TIMER) {
    g_fired.push_back("message " + std::to_string(wparam) + " at " +
                      std::to_string(Machine::Current().Now()));
    return 0;
  }
  return DefWindowProcA(window, message, wparam, lparam);
}

class Time : public testing::Test {
 protected:
  Time() : machine_(kSampleMachine) {
    g_fired.clear();
    window_ =
        CreateWindowExA(0, "STATIC", "", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OnMessage));
  }
  ~Time() override { DestroyWindow(window_); }

  Machine machine_;
  HWND window_ = nullptr;
};

using Fired = std::vector<std::string>;

TEST_F(Time, SleepMovesTheClockAndFiresNothing) {
  SIM_FAKE(SetTimer)(window_, 1, 100, nullptr);
  SIM_FAKE(Sleep)(1000);
  EXPECT_EQ(machine_.Now(), 1000u);
  EXPECT_EQ(g_fired, Fired());
  EXPECT_EQ(machine_.Calls("Sleep"), 1u);
}

TEST_F(Time, TimerThatCameDueSeveralTimesGivesOneMessage) {
  SIM_FAKE(SetTimer)(window_, 1, 100, nullptr);
  SIM_FAKE(Sleep)(1000);
  machine_.Advance(0);
  EXPECT_EQ(g_fired, Fired({"message 1 at 1000"}));
  machine_.Advance(100);
  EXPECT_EQ(g_fired.size(), 2u);
}

TEST_F(Time, AdvanceFiresInOrderOfTime) {
  SIM_FAKE(SetTimer)(window_, 1, 300, nullptr);
  SIM_FAKE(SetTimer)(window_, 2, 200, nullptr);
  machine_.Advance(650);
  EXPECT_EQ(g_fired, Fired({"message 2 at 200", "message 1 at 300", "message 2 at 400",
                            "message 1 at 600", "message 2 at 600"}));
  EXPECT_EQ(machine_.Now(), 650u);
}

TEST_F(Time, WindowTimerWithProcedureCallsIt) {
  SIM_FAKE(SetTimer)(window_, 7, 50, OnTimer);
  machine_.Advance(50);
  EXPECT_EQ(g_fired, Fired({"window 7 at 50"}));
}

TEST_F(Time, ThreadTimerGetsItsOwnId) {
  const UINT_PTR first = SIM_FAKE(SetTimer)(nullptr, 5, 100, OnTimer);
  const UINT_PTR second = SIM_FAKE(SetTimer)(nullptr, 5, 100, OnTimer);
  EXPECT_NE(first, 5u);
  EXPECT_NE(first, second);
  EXPECT_EQ(machine_.ArmedTimers().size(), 2u);
  EXPECT_TRUE(SIM_FAKE(KillTimer)(nullptr, second));
  machine_.Advance(100);
  EXPECT_EQ(g_fired, Fired({"thread " + std::to_string(first) + " at 100"}));
}

TEST_F(Time, ThreadTimerWithAKnownIdIsReplaced) {
  const UINT_PTR first = SIM_FAKE(SetTimer)(nullptr, 0, 100, OnTimer);
  EXPECT_EQ(SIM_FAKE(SetTimer)(nullptr, first, 300, OnTimer), first);
  ASSERT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_EQ(machine_.ArmedTimers()[0].period, 300u);
}

TEST_F(Time, SettingAgainRestartsTheTimer) {
  SIM_FAKE(SetTimer)(window_, 1, 100, nullptr);
  machine_.Advance(90);
  SIM_FAKE(SetTimer)(window_, 1, 200, nullptr);
  ASSERT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_EQ(machine_.ArmedTimers()[0].due, 290u);
  machine_.Advance(199);
  EXPECT_EQ(g_fired, Fired());
  machine_.Advance(1);
  EXPECT_EQ(g_fired, Fired({"message 1 at 290"}));
}

TEST_F(Time, KilledTimerIsSilentAndASecondKillFails) {
  SIM_FAKE(SetTimer)(window_, 1, 100, nullptr);
  EXPECT_TRUE(SIM_FAKE(KillTimer)(window_, 1));
  EXPECT_FALSE(SIM_FAKE(KillTimer)(window_, 1));
  machine_.Advance(1000);
  EXPECT_EQ(g_fired, Fired());
}

TEST_F(Time, PeriodBelowTheMinimumIsLengthened) {
  SIM_FAKE(SetTimer)(window_, 1, 1, nullptr);
  machine_.Advance(9);
  EXPECT_EQ(g_fired, Fired());
  machine_.Advance(1);
  EXPECT_EQ(g_fired, Fired({"message 1 at 10"}));
}

TEST_F(Time, TimerOfAGoneWindowIsDropped) {
  SIM_FAKE(SetTimer)(window_, 1, 100, nullptr);
  DestroyWindow(window_);
  machine_.Advance(100);
  EXPECT_TRUE(machine_.ArmedTimers().empty());
}

TEST_F(Time, DeclaredFaultArmsNothing) {
  machine_.Fail("SetTimer", 1, ERROR_NO_SYSTEM_RESOURCES);
  EXPECT_EQ(SIM_FAKE(SetTimer)(window_, 1, 100, nullptr), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_SYSTEM_RESOURCES));
  EXPECT_TRUE(machine_.ArmedTimers().empty());
  EXPECT_NE(SIM_FAKE(SetTimer)(window_, 1, 100, nullptr), 0u);
}

TEST_F(Time, EveryClockFollowsTheVirtualOne) {
  const ULONGLONG ticks = SIM_FAKE(GetTickCount64)();
  const DWORD short_ticks = SIM_FAKE(GetTickCount)();
  const clock_t processor = SIM_FAKE(clock)();
  SIM_FAKE(Sleep)(2500);
  EXPECT_EQ(SIM_FAKE(GetTickCount64)(), ticks + 2500);
  EXPECT_EQ(SIM_FAKE(GetTickCount)(), short_ticks + 2500);
  EXPECT_EQ(SIM_FAKE(clock)(), processor + 2500);
}

TEST_F(Time, LocalTimeIsUtcPlusTheBias) {
  const SYSTEMTIME utc = {2012, 8, 3, 29, 23, 30, 10, 0};
  machine_.SetCalendar(utc, 90);
  SIM_FAKE(Sleep)(5000);
  SYSTEMTIME seen = {};
  SIM_FAKE(GetSystemTime)(&seen);
  EXPECT_EQ(seen.wDay, 29);
  EXPECT_EQ(seen.wHour, 23);
  EXPECT_EQ(seen.wMinute, 30);
  EXPECT_EQ(seen.wSecond, 15);
  SIM_FAKE(GetLocalTime)(&seen);
  EXPECT_EQ(seen.wDay, 30);
  EXPECT_EQ(seen.wHour, 1);
  EXPECT_EQ(seen.wMinute, 0);
}

TEST_F(Time, NewMachineStandsAtAFixedMoment) {
  SYSTEMTIME seen = {};
  SIM_FAKE(GetLocalTime)(&seen);
  EXPECT_EQ(seen.wYear, 2012);
  EXPECT_EQ(seen.wMonth, 8);
  EXPECT_EQ(seen.wDay, 29);
  EXPECT_EQ(seen.wHour, 4);
  EXPECT_EQ(seen.wMinute, 36);
  EXPECT_EQ(seen.wSecond, 26);
}

TEST_F(Time, WaitOnASignalledObjectTakesNoTime) {
  const HANDLE event = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(event, 10000), WAIT_OBJECT_0);
  EXPECT_EQ(machine_.Now(), 0u);
  CloseHandle(event);
}

TEST_F(Time, WaitThatTimesOutTakesVirtualTime) {
  const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  EXPECT_EQ(SIM_FAKE(WaitForSingleObject)(event, 10000), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_EQ(machine_.Now(), 10000u);
  CloseHandle(event);
}

TEST_F(Time, RealTimeLeavesTheClockAlone) {
  machine_.UseRealTime();
  const ULONGLONG before = GetTickCount64();
  EXPECT_GE(SIM_FAKE(GetTickCount64)(), before);
  SIM_FAKE(Sleep)(1);
  EXPECT_EQ(machine_.Now(), 0u);
  EXPECT_EQ(machine_.Calls("Sleep"), 1u);
}

TEST_F(Time, RealTimeTimersAreRealAndRecorded) {
  machine_.UseRealTime();
  EXPECT_NE(SIM_FAKE(SetTimer)(window_, 3, 60000, nullptr), 0u);
  ASSERT_EQ(machine_.ArmedTimers().size(), 1u);
  EXPECT_EQ(machine_.ArmedTimers()[0].period, 60000u);
  EXPECT_TRUE(KillTimer(window_, 3));  // Windows itself knows it
}

}  // namespace
}  // namespace sim
