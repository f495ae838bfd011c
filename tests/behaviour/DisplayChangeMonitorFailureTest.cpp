// What the display-change monitor makes of calls that fail, of the window that it registers once,
// and of Windows versions.
#include "tests/behaviour/DisplayChangeHost.h"
#include "tests/whitebox/ProjectorBox.h"

namespace {

constexpr char kClass[] = "HarborDisplayChangeMonitorWindow";
constexpr char kNoEvent[] = "g_ResetDisplaySettingsCompletedEvent != NULL";

using DisplayChangeFailure = DisplayChange;

// A wait on nothing fails at once. The host then goes on to end a thread that may not have begun to
// look for messages and would miss the one that ends it; in virtual time it always has begun.
TEST_F(DisplayChangeFailure, WithoutTheEventTheHostDoesNotWaitForTheRestore) {
  bench.machine.Fail("CreateEventA", 1, ERROR_NO_SYSTEM_RESOURCES);
  Run();
  EXPECT_EQ(Story(), Failed(0, kNoEvent) + Enter() + Exit(0));
  EXPECT_EQ(Took(), 0u);
  EXPECT_FALSE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutTheThreadTheHostWaitsInVain) {
  bench.machine.Fail("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
  ChangeAt(500);
  const uint32_t posts = bench.machine.Calls("PostThreadMessageA");
  Run();
  EXPECT_EQ(Story(), Failed(0, "g_DCMThreadHandle != NULL"));
  EXPECT_EQ(Took(), 10000u);
  EXPECT_EQ(bench.machine.Calls("PostThreadMessageA"), posts + 1);
  EXPECT_FALSE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutTheWindowNoChangeIsHeardAndTheRestoreComesAfter1500) {
  bench.machine.Fail("CreateWindowExA", 1, ERROR_NOT_ENOUGH_MEMORY);
  ChangeAt(1000);
  Run();
  EXPECT_EQ(Story(), Enter() + Failed(0, "wnd != NULL") + Timer(1500) + Exit(1500));
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutTheFirstTimerNothingIsRestored) {
  bench.machine.Fail("SetTimer", 1, ERROR_NO_SYSTEM_RESOURCES);
  ChangeAt(500);
  Run();
  EXPECT_EQ(Story(), Enter() + Change(500) + Exit(10000));
  EXPECT_EQ(Took(), 10000u);
  EXPECT_FALSE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutTheTimerBehindAChangeNothingIsRestored) {
  bench.machine.Fail("SetTimer", 2, ERROR_NO_SYSTEM_RESOURCES);
  ChangeAt(500);
  ChangeAt(700);
  Run();
  EXPECT_EQ(Story(), Enter() + Reset(500) + Change(700) + Exit(10000));
  EXPECT_FALSE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutTheClassThereIsNoWindowAndNoSecondTry) {
  bench.machine.Fail("RegisterClassA", 1, ERROR_NOT_ENOUGH_MEMORY);
  for (int run = 0; run != 2; ++run) {
    Run();
    EXPECT_EQ(Story(), Enter() + Failed(0, "wnd != NULL") + Timer(1500) + Exit(1500));
  }
  EXPECT_EQ(bench.machine.Calls("RegisterClassA"), 1u);
  EXPECT_TRUE(Variables().class_registered);
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, AfterAFailedWaitTheHostDoesNotWaitForTheRestore) {
  bench.machine.Fail("WaitForSingleObject", 1, ERROR_INVALID_HANDLE);
  Run();
  EXPECT_EQ(Story(), Enter() + Exit(0));
  EXPECT_EQ(Took(), 0u);
  EXPECT_FALSE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, MessageThatCannotBeReadIsPassedOver) {
  bench.machine.Fail("GetMessageA", 1);
  Run();
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Exit(1500));
  EXPECT_TRUE(Restored());
}

TEST_F(DisplayChangeFailure, QuitEndsTheThreadLikeItsOwnMessage) {
  bench.machine.At(bench.machine.Now() + 100, [this] {
    PostThreadMessageA(Variables().thread_id, WM_QUIT, 0, 0);
    bench.machine.state().threads.Notify(Variables().thread_id);
  });
  Run();
  EXPECT_EQ(Story(), Enter() + Exit(100));
  EXPECT_EQ(Took(), 10000u);
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, LeftoversOfAnotherRunAreTold) {
  MonitorState left;
  left.event = reinterpret_cast<HANDLE>(uintptr_t{0x11});
  left.thread = reinterpret_cast<HANDLE>(uintptr_t{0x12});
  left.thread_id = 0x13;
  bench.box().SetMonitorVariables(left);
  Run();
  EXPECT_EQ(Story(), Failed(0, "g_ResetDisplaySettingsCompletedEvent == NULL") +
                         Failed(0, "g_DCMThreadHandle == NULL") + Failed(0, "g_DCMThreadID == 0") +
                         Enter() + Timer(1500) + Exit(1500));
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeFailure, WithoutASessionNothingIsRestoredAndNobodyWaitsLonger) {
  bench.ostrel().DeInit();
  Run();
  EXPECT_EQ(Story(), Enter() + Timer(1500) + Exit(1500));
  EXPECT_EQ(Took(), 1500u);
  EXPECT_FALSE(Restored());
}

TEST_F(DisplayChangeFailure, SelectionThatIsNoItemIsNotRestored) {
  SIndex index;
  index.value = SIndex::BadValue;
  bench.box().SetSelected(index);
  Run();
  EXPECT_EQ(Took(), 1500u);
  EXPECT_FALSE(Restored());
}

// --- Memory that runs out.

class DisplayChangeShortOfMemory : public DisplayChange {
 protected:
  // Checks, and nothing else that would be written.
  const wchar_t* CommandLine() const override { return L"host.exe --enable-dcheck"; }
  const ProjectorBox& memory() { return *bench.ostrel().white_box().projectors; }
};

// Whichever piece of memory a restore is refused, and wherever that ends it, the host is told at
// once, and the thread still takes its message.
TEST_F(DisplayChangeShortOfMemory, RestoreThatThrowsEndsTheWaitAllTheSame) {
  bench.ostrel().ForgiveLeaks();  // a list of EDIDs that cannot grow leaves its key open
  uint32_t not_restored = 0;
  bool refused = true;
  for (uint32_t nth = 1; refused && !HasFailure(); ++nth) {
    bench.machine.model().sources[0].mode.width = kWidthBefore;
    bench.machine.At(bench.machine.Now() + 1499, [&, nth] { memory().RefuseMemory(nth); });
    bench.machine.JournalReads(true);
    bench.machine.TakeJournal();
    Run();
    refused = !memory().RefuseMemory(0);
    EXPECT_NE(bench.machine.TakeJournal().find("SetEvent(event)=1\n"), std::string::npos) << nth;
    EXPECT_EQ(Took(), 1500u) << nth;
    ExpectNoRun();
    if (!Restored()) ++not_restored;
  }
  EXPECT_GE(not_restored, 1u);
  EXPECT_TRUE(Restored());  // with enough of it
  EXPECT_EQ(bench.machine.EndThreads(), 0u);
}

// The restore timer fires late, with nobody waiting, and the check that says so cannot be written.
TEST_F(DisplayChangeShortOfMemory, CheckThatCannotBeWrittenIsPassedOver) {
  for (uint64_t moment = 0; moment <= 19500; moment += 500) ChangeAt(moment);
  bench.machine.Fail("PostThreadMessageA", 1);
  Run();
  ASSERT_EQ(Took(), 20000u);
  bench.box().EndSession();
  bench.machine.JournalReads(true);
  bench.machine.TakeJournal();
  memory().RefuseMemory(1);
  bench.machine.Advance(5000);
  EXPECT_FALSE(memory().RefuseMemory(0));  // it was refused
  EXPECT_EQ(bench.machine.Log().find("Check failed"), std::string::npos);
  EXPECT_NE(bench.machine.TakeJournal().find("SetEvent(null)=0\n"), std::string::npos);
  EXPECT_EQ(bench.machine.EndThreads(), 1u);  // the thread goes on
}

// --- The class.

TEST_F(DisplayChange, ClassIsRegisteredOnceAndStays) {
  EXPECT_FALSE(Variables().class_registered);
  for (int run = 0; run != 3; ++run) {
    ChangeAt(300);
    Run();
    EXPECT_EQ(Story(), Enter() + Reset(300) + Timer(1100) + Exit(1100));
  }
  EXPECT_EQ(bench.machine.Calls("RegisterClassA"), 1u);
  EXPECT_TRUE(Variables().class_registered);
  WNDCLASSA registered = {};
  ASSERT_TRUE(GetClassInfoA(GetModuleHandleA(nullptr), kClass, &registered));
  EXPECT_EQ(registered.style, 11u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(registered.hbrBackground), 6u);
  EXPECT_EQ(registered.lpszMenuName, nullptr);
}

TEST_F(DisplayChange, WindowIsHiddenAndEndsWithItsThread) {
  HWND window = nullptr;
  bool visible = true;
  bench.machine.At(bench.machine.Now() + 100, [&] {
    window = MonitorWindow();
    visible = IsWindowVisible(window) != 0;
  });
  Run();
  EXPECT_NE(window, nullptr);
  EXPECT_FALSE(visible);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_EQ(bench.machine.Calls("DestroyWindow"), 0u);
}

// The key messages that a window might get have their characters made first.
TEST_F(DisplayChange, EveryMessageIsTranslatedAndDispatchedButTheLast) {
  const uint32_t translated = bench.machine.Calls("TranslateMessage");
  const uint32_t dispatched = bench.machine.Calls("DispatchMessageA");
  bench.machine.At(bench.machine.Now() + 100, [&] {
    PostThreadMessageA(Variables().thread_id, WM_APP, 0, 0);
    bench.machine.state().threads.Notify(Variables().thread_id);
  });
  Run();  // that one, the timer's, and the one that ends the loop
  EXPECT_EQ(bench.machine.Calls("TranslateMessage"), translated + 2);
  EXPECT_EQ(bench.machine.Calls("DispatchMessageA"), dispatched + 2);
}

// Every other message goes to Windows' own procedure, and so does this one.
TEST_F(DisplayChange, MessagesGoOnToWindows) {
  char title[64] = {};
  const uint32_t defaults = bench.machine.Calls("DefWindowProcA");
  uint32_t at_start = 0;
  uint32_t behind_change = 0;
  bench.machine.At(bench.machine.Now() + 100, [&] {
    GetWindowTextA(MonitorWindow(), title, 64);
    at_start = bench.machine.Calls("DefWindowProcA");
  });
  ChangeAt(200);
  bench.machine.At(bench.machine.Now() + 300,
                   [&] { behind_change = bench.machine.Calls("DefWindowProcA"); });
  Run();
  EXPECT_STREQ(title, kClass);
  EXPECT_GT(at_start, defaults);
  EXPECT_EQ(behind_change, at_start + 1);
}

// --- The window's styles by version.

struct Version {
  const char* windows;
  const char* ex_style;
};

class DisplayChangeWindow : public DisplayChange, public testing::WithParamInterface<Version> {
 protected:
  DisplayChangeWindow() : DisplayChange(GetParam().windows) {}
};

TEST_P(DisplayChangeWindow, IsTopmostFromWindows8On) {
  bench.machine.JournalReads(true);
  bench.machine.TakeJournal();
  Run();
  const std::string journal = bench.machine.TakeJournal();
  EXPECT_NE(journal.find(std::string("CreateWindowExA(ex_style=") + GetParam().ex_style + " "),
            std::string::npos)
      << journal;
}

INSTANTIATE_TEST_SUITE_P(Versions, DisplayChangeWindow,
                         testing::Values(Version{"xp", "0x8000080"}, Version{"2003", "0x8000080"},
                                         Version{"vista", "0x8000080"},
                                         Version{"win7", "0x8000080"},
                                         Version{"2008r2", "0x8000080"},
                                         Version{"win8", "0x8000088"},
                                         Version{"win10", "0x8000088"}),
                         [](const auto& info) { return std::string(info.param.windows); });

}  // namespace
