// When the resolution is put back behind a switch on an old NVIDIA driver, to the millisecond.
#include <sstream>

#include "tests/behaviour/DisplayChangeHost.h"

namespace {

constexpr char kNoEvent[] = "g_ResetDisplaySettingsCompletedEvent != NULL";

// --- When.

TEST_F(DisplayChange, WithoutOneTheRestoreComesAfter1500) {
  Run();
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Exit(1500));
  EXPECT_EQ(Took(), 1500u);
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChange, RestoreComes800BehindTheLastOfThree) {
  for (const uint64_t moment : {500, 1000, 1500}) ChangeAt(moment);
  Run();
  EXPECT_EQ(Story(), Enter() + Reset(500) + Reset(1000) + Reset(1500) + Timer(2300) + Exit(2300));
  EXPECT_EQ(Took(), 2300u);
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChange, FromExtendedDesktopTheRestoreComes1600BehindTheLast) {
  for (const uint64_t moment : {500, 1000, 1500}) ChangeAt(moment);
  Run(IMMonitor::DM_EXTEND);
  EXPECT_EQ(Story(), Enter() + Reset(500) + Reset(1000) + Reset(1500) + Timer(3100) + Exit(3100));
  EXPECT_EQ(Variables().period, 1600u);
  ExpectIdle();
}

TEST_F(DisplayChange, FromExtendedDesktopWithoutOneItIs1500AllTheSame) {
  Run(IMMonitor::DM_EXTEND);
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Exit(1500));
}

TEST_F(DisplayChange, PeriodIs800FromEveryOtherMode) {
  EXPECT_EQ(Variables().period, 800u);
  for (const uint32_t mode : {0, 1, 2, 8, 16, 128, 256, 512, 1024}) {
    Run(IMMonitor::DM_EXTEND);
    ChangeAt(100);
    Run(mode);
    EXPECT_EQ(Variables().period, 800u) << mode;
    EXPECT_EQ(Took(), 900u) << mode;
  }
}

TEST_F(DisplayChange, EarlyOneShortensTheWait) {
  ChangeAt(100);
  Run();
  EXPECT_EQ(Story(), Enter() + Reset(100) + Timer(900) + Exit(900));
}

TEST_F(DisplayChange, OneJustBehindTheRestoreIsTooLate) {
  ChangeAt(1501);
  Run();
  EXPECT_EQ(Took(), 1500u);
  const std::string story = Story();
  bench.machine.Advance(5000);
  EXPECT_EQ(Story(), story);
}

TEST_F(DisplayChange, OnesThatNeverStopEndTheWaitAfter10000WithNothingRestored) {
  std::string story = Enter();
  for (uint64_t moment = 500; moment <= 30000; moment += 500) {
    ChangeAt(moment);
    if (moment <= 10000) story += Reset(moment);
  }
  Run();
  EXPECT_EQ(Story(), story + Exit(10000));
  EXPECT_EQ(Took(), 10000u);
  EXPECT_EQ(Width(), kWidthBefore);
  ExpectIdle();
}

TEST_F(DisplayChange, LastMomentForARestoreIsTheEndOfTheWait) {
  for (uint64_t moment = 700; moment <= 9200; moment += 500) ChangeAt(moment);
  Run();
  EXPECT_EQ(Took(), 10000u);
  EXPECT_TRUE(Restored());
  bench.machine.model().sources[0].mode.width = kWidthBefore;
  for (uint64_t moment = 701; moment <= 9201; moment += 500) ChangeAt(moment);
  Run();
  EXPECT_EQ(Took(), 10000u);
  EXPECT_FALSE(Restored());
}

// The next run is not to find the timer that the one before has left behind.
TEST_F(DisplayChange, RunBehindOneThatGaveUpStartsAnew) {
  for (uint64_t moment = 500; moment <= 10000; moment += 500) ChangeAt(moment);
  Run();
  bench.machine.JournalReads(true);
  bench.machine.TakeJournal();
  Run();
  EXPECT_NE(bench.machine.TakeJournal().find("SetTimer(id=0 period=1500)"), std::string::npos);
  EXPECT_EQ(Took(), 1500u);
  EXPECT_TRUE(Restored());
}

// --- Changes that start nothing.

// The display object is asked for its modes right before the change of resolution.
TEST_F(DisplayChange, OfTheRestoreItselfStartsNothing) {
  bench.script->on_call = [this](const std::string& call) {
    if (call == "PreloadDisplayModes") bench.machine.BroadcastDisplayChange();
  };
  const uint32_t timers = bench.machine.Calls("SetTimer");
  Run();
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Change(1500) + Exit(1500));
  EXPECT_EQ(Took(), 1500u);
  EXPECT_EQ(bench.machine.Calls("SetTimer"), timers + 1);
  ExpectIdle();
}

TEST_F(DisplayChange, DuringALongRestoreStartsNothing) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 1);  // tried again after 3000 ms
  ChangeAt(2000);
  ChangeAt(3000);
  const uint32_t timers = bench.machine.Calls("SetTimer");
  Run();
  // They wait for the thread to look for messages again.
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Change(4500) + Change(4500) + Exit(4500));
  EXPECT_EQ(Took(), 4500u);
  EXPECT_EQ(bench.machine.Calls("SetTimer"), timers + 1);
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

// --- A restore that comes when nobody waits for it any more.

TEST_F(DisplayChange, RestoreThatTakesLongerThanTheWaitSignalsNobody) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 1);  // tried again after 3000 ms
  for (uint64_t moment = 700; moment <= 7700; moment += 500) ChangeAt(moment);
  bench.machine.JournalReads(true);
  Run();
  const std::string journal = bench.machine.TakeJournal();
  EXPECT_NE(Story().find(Timer(8500) + Failed(11500, kNoEvent) + Exit(11500)), std::string::npos)
      << Story();
  EXPECT_NE(journal.find("SetEvent(null)=0"), std::string::npos) << journal;
  EXPECT_EQ(Took(), 11500u);
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

/// The message that ends the thread is lost, so that its timer fires when the host has gone on.
class LateTimer : public DisplayChange {
 protected:
  /// Changes go on to that moment; returns once the host has stopped waiting for the thread, too.
  void RunWithChangesTo(uint64_t last) {
    for (uint64_t moment = last % 500; moment <= last; moment += 500) ChangeAt(moment);
    bench.machine.Fail("PostThreadMessageA", 1);
    Run();
    EXPECT_EQ(Took(), 20000u);
    EXPECT_EQ(Variables().thread, nullptr);
    EXPECT_EQ(Variables().thread_id, 0u);
  }
  /// The thread's timer fires. The test has the thread still.
  void Fire() {
    bench.machine.JournalReads(true);
    bench.machine.TakeJournal();
    bench.machine.Advance(5000);
    EXPECT_NE(bench.machine.TakeJournal().find("SetEvent(null)=0\n"), std::string::npos);
  }
  void ExpectFiredWithoutRestore(uint64_t moment) {
    const std::string end = Timer(moment) + Failed(moment, kNoEvent);
    const std::string story = Story();
    ASSERT_GE(story.size(), end.size());
    EXPECT_EQ(story.substr(story.size() - end.size()), end);
    EXPECT_FALSE(Restored());
  }
  void TearDown() override { EXPECT_EQ(bench.machine.EndThreads(), 1u); }
};

TEST_F(LateTimer, RestoresWhileTheHostWaitsForTheThread) {
  RunWithChangesTo(10000);
  EXPECT_NE(Story().find(Timer(10800) + Failed(10800, kNoEvent)), std::string::npos) << Story();
  EXPECT_TRUE(Restored());
}

TEST_F(LateTimer, RestoresNothingOnceTheSessionHasEnded) {
  RunWithChangesTo(19500);
  bench.box().EndSession();
  Fire();
  ExpectFiredWithoutRestore(20300);
}

TEST_F(LateTimer, RestoresNothingForAnIndexThatIsNoItems) {
  RunWithChangesTo(19500);
  SIndex index;
  index.value = static_cast<uint32_t>(bench.State().items.size());
  bench.box().SetSelected(index);
  Fire();
  ExpectFiredWithoutRestore(20300);
}

TEST_F(LateTimer, RestoresNothingOnceTheSwitchSideHasEnded) {
  RunWithChangesTo(19500);
  bench.ostrel().DeInit();
  Fire();
  ExpectFiredWithoutRestore(20300);
}

// --- On which thread, and what it restores.

TEST_F(DisplayChange, RestoreRunsOnTheMonitoringThread) {
  DWORD asked_on = 0;
  DWORD thread = 0;
  bench.script->on_call = [&](const std::string& call) {
    if (call != "PreloadDisplayModes") return;
    asked_on = GetCurrentThreadId();
    thread = Variables().thread_id;
  };
  Run();
  EXPECT_NE(asked_on, 0u);
  EXPECT_NE(asked_on, GetCurrentThreadId());
  EXPECT_EQ(asked_on, thread);
}

// The end of a thread that an earlier run has left behind is not to stop the timer of this one.
TEST_F(DisplayChange, OneLeftBehindDoesNotTakeTheNextOnesTimerAlong) {
  DWORD left_behind = 0;
  bench.machine.At(bench.machine.Now() + 100, [&] { left_behind = Variables().thread_id; });
  bench.machine.Fail("PostThreadMessageA", 1);
  Run();
  ASSERT_EQ(Took(), 11500u);
  bench.machine.At(bench.machine.Now() + 100, [&] {
    PostThreadMessageA(left_behind, WM_QUIT, 0, 0);
    bench.machine.state().threads.Notify(left_behind);
  });
  ChangeAt(200);
  Run();
  EXPECT_EQ(Story(), Enter() + Exit(100) + Reset(200) + Timer(1000) + Exit(1000));
  EXPECT_EQ(Took(), 1000u);
  ExpectIdle();
}

TEST_F(DisplayChange, PresentationItemGetsItsOwnResolution) {
  ASSERT_TRUE(bench.box().AddPresentationItem(10, 0x03, 32));
  SIndex index;
  index.value = static_cast<uint32_t>(bench.State().items.size()) - 1;
  bench.box().SetSelected(index);
  Run();
  EXPECT_EQ(Width(), 800u);
}

TEST_F(DisplayChange, HostsOwnTimersDoNotFireWhileItWaits) {
  bench.box().RepeatDetection([] { return false; });
  ASSERT_EQ(bench.machine.ArmedTimers().size(), 1u);
  for (const uint64_t moment : {700, 1400, 2100}) ChangeAt(moment);
  Run();
  EXPECT_EQ(Took(), 2900u);
  EXPECT_EQ(bench.machine.ArmedTimers().size(), 1u);
  bench.machine.Advance(0);
  EXPECT_TRUE(bench.machine.ArmedTimers().empty());
}

// --- What is logged where nobody asks for more.

class DisplayChangeAtLevel1 : public DisplayChange {
 protected:
  const wchar_t* CommandLine() const override { return L"host.exe --v=1 --log-has-tick-count=1"; }
};

TEST_F(DisplayChangeAtLevel1, OnlyTheResetIsTold) {
  ChangeAt(500);
  Run();
  EXPECT_EQ(Story(), At(500, "Reset timer"));
}

// --- Call by call.

TEST_F(DisplayChange, CallsStandInTheirOrder) {
  ChangeAt(500);
  bench.machine.JournalReads(true);
  bench.machine.TakeJournal();
  Run();
  const std::regex other(
      "^(?!CreateEventA|CreateThread|RegisterClassA|CreateWindowExA|SetTimer|"
      "KillTimer|SetEvent|ChangeDisplaySettingsExA|WaitForSingleObject|"
      "PostThreadMessageA|CloseHandle)[^\n]*\n");
  std::string calls;
  std::istringstream journal(bench.machine.TakeJournal());
  for (std::string line; std::getline(journal, line);) {
    calls += std::regex_replace(line + "\n", other, "");
  }
  // The timers' numbers stand for themselves, the first and the second.
  std::string armed = "first";
  const std::regex kill("KillTimer.id=([1-9][0-9]*)");
  for (std::smatch found; std::regex_search(calls, found, kill); armed = "second") {
    calls = std::regex_replace(calls, std::regex("KillTimer.id=" + found[1].str() + ".=1"),
                               "KillTimer(" + armed + ")=1");
  }
  calls = std::regex_replace(calls, std::regex("(ChangeDisplaySettingsExA)[^\n]*"), "$1");
  EXPECT_EQ(calls,
            "CreateEventA(security=0 manual=0 set=0 name=\"\")=1\n"
            "CreateThread(security=0 stack=0 parameter=0 flags=0)=1\n"
            "RegisterClassA(HarborDisplayChangeMonitorWindow style=11 background=6 menu=0 "
            "extra=0,0 the host's instance)=1\n"
            "CreateWindowExA(ex_style=0x8000080 class=HarborDisplayChangeMonitorWindow "
            "title=HarborDisplayChangeMonitorWindow style=0xcf0000 at -2147483648,0 size=200x100 "
            "parent=0 menu=0 the host's instance)=1\n"
            "SetTimer(id=0 period=1500)=1\n"
            "KillTimer(first)=1\n"
            "SetTimer(id=0 period=800)=1\n"
            "KillTimer(second)=1\n"
            "ChangeDisplaySettingsExA\n"
            "SetEvent(event)=1\n"
            "WaitForSingleObject(10000)=0\n"
            "CloseHandle(event)=1\n"
            "PostThreadMessageA(id=1025 wparam=0 lparam=0)=1\n"
            "WaitForSingleObject(10000)=0\n"
            "CloseHandle(thread)=1\n");
}

}  // namespace
