// A notebook with an old NVIDIA driver on which a clone has just been set: what a test of the
// display-change monitor starts from. The item that goes with it is selected, and a width is
// remembered for it that the desktop does not have.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "sim/MachineState.h"
#include "tests/behaviour/LogText.h"
#include "tests/support/SessionBench.h"

class DisplayChange : public testing::Test {
 protected:
  static constexpr uint32_t kWidthBefore = 1366;
  static constexpr uint32_t kRememberedWidth = 1024;

  explicit DisplayChange(const char* windows = "xp")
      : bench(std::string(windows) + " nvidia: internal 1366x768 active, crt 1024x768") {}

  void SetUp() override {
    bench.machine.SetCommandLine(CommandLine());
    ASSERT_TRUE(bench.Start(static_cast<uint16_t>(kVendorNvidia)));
    bench.script->vendor = kVendorNvidia;
    ASSERT_TRUE(bench.box().PrepareDMItems(0x3, 2));
    SIndex index;
    index.value = 1;
    bench.box().SetSelected(index);
    const std::string section = "2,3 | " + bench.State().settings_keys.at(0).signature;
    bench.Remember(section, "Width", std::to_string(kRememberedWidth));
    bench.Remember(section, "Height", "768");
    before = bench.machine.Outstanding();
  }

  virtual const wchar_t* CommandLine() const {
    return L"host.exe --enable-dcheck --v=2 --log-has-tick-count=1";
  }

  void Run(uint32_t previous_mode = IMMonitor::DM_CLONE) {
    start = bench.machine.Now();
    log_seen = bench.machine.Log().size();
    bench.box().RunDisplayChangeMonitor(previous_mode);
  }
  /// Windows tells of a change so many milliseconds behind now.
  void ChangeAt(uint64_t milliseconds) {
    bench.machine.At(bench.machine.Now() + milliseconds,
                     [this] { bench.machine.BroadcastDisplayChange(); });
  }
  uint64_t Took() const { return bench.machine.Now() - start; }

  /// The monitor's records since the last Run: "<milliseconds> <severity> <text>", one a line.
  std::string Story() const {
    const std::string log = bench.machine.Log().substr(log_seen);
    const std::regex record(R"(\[[0-9]+:[0-9/]+:([0-9]+):([A-Z_]+):DisplayChangeMonitor\.cpp)"
                            R"(\([0-9]+\)\] ([^\n]*)\n)");
    std::string story;
    for (std::sregex_iterator at(log.begin(), log.end(), record), end; at != end; ++at) {
      const uint64_t moment = std::stoull((*at)[1]) - kTicksAtStart - start;
      story += std::to_string(moment) + " " + (*at)[2].str() + " " + (*at)[3].str() + "\n";
    }
    return story;
  }

  uint32_t Width() { return bench.machine.model().sources[0].mode.width; }
  bool Restored() { return Width() == kRememberedWidth; }
  /// The monitor's window: the one that the library made last and still has.
  HWND MonitorWindow() {
    const std::vector<HWND>& alive = bench.machine.state().windows.alive;
    return alive.empty() ? nullptr : alive.back();
  }
  MonitorState Variables() { return bench.box().MonitorVariables(); }
  void ExpectIdle() {
    ExpectNoRun();
    EXPECT_EQ(bench.machine.Outstanding(), before);
  }
  void ExpectNoRun() {
    const MonitorState state = Variables();
    EXPECT_EQ(state.event, nullptr);
    EXPECT_EQ(state.thread, nullptr);
    EXPECT_EQ(state.thread_id, 0u);
    EXPECT_EQ(state.timer, 0u);
    EXPECT_TRUE(bench.machine.ArmedTimers().empty());
  }

  // --- The records, as a story tells them.
  static std::string At(uint64_t moment, const char* text) {
    return std::to_string(moment) + " INFO " + text + "\n";
  }
  static std::string Enter() { return At(0, "DislayChangeMonitoringThreadProc() enter"); }
  static std::string Change(uint64_t moment) {
    return At(moment, "OstrelWndProc() WM_DISPLAYCHANGE");
  }
  static std::string Reset(uint64_t moment) { return Change(moment) + At(moment, "Reset timer"); }
  static std::string Timer(uint64_t moment) {
    return At(moment, "ResetDisplaySettingsTimerProc()");
  }
  static std::string Exit(uint64_t moment) {
    return At(moment, "DislayChangeMonitoringThreadProc() exit");
  }
  static std::string Failed(uint64_t moment, const char* condition) {
    return std::to_string(moment) + " ERROR_REPORT Check failed: " + condition + ". \n";
  }

  SessionBench bench;
  uint64_t start = 0;
  size_t log_seen = 0;
  std::string before;  // what the library held before the first run

 private:
  static constexpr uint64_t kTicksAtStart = 600000;
};
