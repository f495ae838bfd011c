// The display-change monitor in real time: Windows' own timers, queues and waits, and two threads
// that really run at one time. The runs are few, since each takes its second, and look for no upper
// limit of time: a busy machine makes them late, not wrong.
#include <atomic>
#include <functional>

#include "tests/behaviour/DisplayChangeHost.h"

namespace {

constexpr ULONGLONG kCoarse = 40;  // timers keep no better time

BOOL CALLBACK TakeMonitorWindow(HWND window, LPARAM found) {
  char name[64] = {};
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  GetClassNameA(window, name, sizeof(name));
  const bool ours =
      process == GetCurrentProcessId() && std::string(name) == "HarborDisplayChangeMonitorWindow";
  if (ours) *reinterpret_cast<HWND*>(found) = window;
  return !ours;
}

/// The window that a run in progress has made; null when there is none.
HWND FindMonitorWindow() {
  HWND found = nullptr;
  EnumWindows(TakeMonitorWindow, reinterpret_cast<LPARAM>(&found));
  return found;
}

/// Somebody beside the host and the monitor, for as long as this stands.
class Bystander {
 public:
  explicit Bystander(std::function<void()> act)
      : act_(std::move(act)), thread_(CreateThread(nullptr, 0, Act, this, 0, nullptr)) {}
  ~Bystander() {
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
  }
  Bystander(const Bystander&) = delete;
  Bystander& operator=(const Bystander&) = delete;

 private:
  static DWORD WINAPI Act(void* self) {
    static_cast<Bystander*>(self)->act_();
    return 0;
  }
  const std::function<void()> act_;
  const HANDLE thread_;
};

class DisplayChangeInRealTime : public DisplayChange {
 protected:
  void SetUp() override {
    bench.machine.UseRealTime();
    DisplayChange::SetUp();
  }

  void RunForReal() {
    over_ = false;
    timers_before_ = bench.machine.Calls("SetTimer");
    bench.machine.model().sources[0].mode.width = kWidthBefore;
    begin_ = GetTickCount64();
    Run();
    end_ = GetTickCount64();
    over_ = true;
  }
  uint32_t TimersSet() const { return bench.machine.Calls("SetTimer") - timers_before_; }
  static void Tell(HWND window) { SendNotifyMessageA(window, WM_DISPLAYCHANGE, 32, 0); }

  /// Tells of one change as soon as the run's first timer stands.
  void TellOnce() {
    while (!over_ && TimersSet() == 0) Sleep(1);
    told_ = GetTickCount64();
    Tell(FindMonitorWindow());
  }

  std::atomic<bool> over_{true};
  std::atomic<ULONGLONG> begin_{0};
  std::atomic<ULONGLONG> told_{0};
  std::atomic<uint32_t> timers_before_{0};
  ULONGLONG end_ = 0;
};

TEST_F(DisplayChangeInRealTime, RestoreComes1500BehindTheSwitch) {
  RunForReal();
  EXPECT_GE(end_ - begin_, 1500 - kCoarse);
  EXPECT_EQ(TimersSet(), 1u);
  EXPECT_TRUE(Restored());
  ExpectIdle();
}

TEST_F(DisplayChangeInRealTime, ChangeIsHeardAndTheRestoreComes800BehindIt) {
  // On a machine so busy that the word comes too late nothing is shown, and it is tried again.
  for (int tries = 0; tries != 5; ++tries) {
    over_ = false;
    timers_before_ = bench.machine.Calls("SetTimer");
    {
      const Bystander bystander([this] { TellOnce(); });
      RunForReal();
    }
    EXPECT_TRUE(Restored());
    ExpectIdle();
    if (told_ - begin_ < 1000) break;
  }
  EXPECT_EQ(TimersSet(), 2u);
  EXPECT_GE(end_ - told_, 800 - kCoarse);
}

// Changes come from within the restore to the end of the run: while the event is set and closed,
// the loop is told to end, and the window goes.
TEST_F(DisplayChangeInRealTime, ChangesAroundTheEndDisturbNothing) {
  constexpr uint32_t kWithin = 3;  // so many before the restore goes on
  std::atomic<bool> restoring{false};
  std::atomic<uint32_t> told{0};
  bench.script->on_call = [&](const std::string& call) {
    if (call != "PreloadDisplayModes") return;
    restoring = true;
    for (int patience = 0; told < kWithin && patience != 5000; ++patience) Sleep(1);
  };
  for (int run = 0; run != 2; ++run) {
    restoring = false;
    told = 0;
    over_ = false;
    {
      const Bystander bystander([&] {
        while (!restoring && !over_) Sleep(1);
        const HWND window = FindMonitorWindow();
        for (; !over_; Sleep(0), ++told) Tell(window);
      });
      RunForReal();
    }
    EXPECT_GE(told, kWithin);
    EXPECT_EQ(TimersSet(), 1u);
    EXPECT_TRUE(Restored());
    ExpectIdle();
  }
}

}  // namespace
