// A switch told call by call: the journal of what is done to the machine, to the display object and
// to Ostrel.ini, in its order.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Workaround/IMonitorTestWorkaround.h"
#include "Workaround/RefreshRateWorkaround.h"
#include "sim/Face.h"
#include "tests/support/SessionBench.h"

namespace apply_journal {

class JournalledRefreshRate : public RefreshRateWorkaround {
 public:
  void BeginMonitoring() override {}
  void EndMonitoring() override {}
  void AdjustRefreshRate() override { sim::JournalLine("AdjustRefreshRate"); }
};

class JournalledMonitorTest : public IMonitorTestWorkaround {
 public:
  bool IsToolInstalled() override { return true; }
  BOOL ChangeResolutionBeforeSwitch(IMMonitor*) override {
    sim::JournalLine("ChangeResolutionBeforeSwitch");
    return 1;
  }
};

// What the journal has beside the steps of a switch: looking things up.
inline bool IsStep(const std::string& line) {
  for (const char* start :
       {"object: Set", "object: Enable", "object: ShouldReset", "object: GetCurrentDisplayMode",
        "AdjustRefreshRate", "ChangeResolutionBeforeSwitch", "PostMessageA(", "SetDisplayConfig(",
        "ChangeDisplaySettingsExA(", "WritePrivateProfileStringA(", "Sleep(", "RegSetValueExW("}) {
    if (line.rfind(start, 0) == 0) return true;
  }
  return false;
}

inline std::string StepsOf(const std::string& journal) {
  std::string steps;
  for (size_t at = 0; at < journal.size();) {
    const size_t end = journal.find('\n', at);
    const std::string line = journal.substr(at, end - at);
    if (IsStep(line)) steps += line + "\n";
    at = end + 1;
  }
  return steps;
}

inline std::string Written(const std::string& section, const std::string& key, uint32_t value) {
  return "WritePrivateProfileStringA([" + section + "] " + key + "=" + std::to_string(value) +
         ")=1\n";
}

constexpr char kClosed[] = "PostMessageA(id=1025 wparam=2 lparam=0)\n";
constexpr char kAdjusted[] = "AdjustRefreshRate\n";
constexpr char kAskedForReset[] = "object: ShouldResetDisplaySettingAfterSwtich\n";
// The desktop's size through the display configuration.
constexpr char kResized[] =
    "SetDisplayConfig(paths=1 flags=0x60)=0\n"
    "SetDisplayConfig(paths=1 flags=0x2a0)=0\n";

inline std::string Recorded(uint32_t mode, uint32_t displays, uint32_t type) {
  const std::string section = "Active Display Mode";
  return Written(section, "Display Mode", mode) + Written(section, "Active Displays", displays) +
         Written(section, "Presentation Mode", type);
}

inline std::string Set(uint32_t mode, const char* displays) {
  return "object: SetNewDisplayMode(" + std::to_string(mode) + ", " + displays + ")\n";
}

/// A desktop of this size goes into a section.
inline std::string Saved(const std::string& section, uint32_t width, uint32_t height) {
  return Written(section, "Width", width) + Written(section, "Height", height) +
         Written(section, "Color Depth", 32) + Written(section, "Frequency", 60) +
         Written(section, "Orientation", 0);
}

constexpr char kOnWin7[] = "win7 intel: internal 1366x768 active, crt 1024x768";

/// Panel and CRT: the panel alone, clone, the CRT alone, extended desktop, at the places 0 to 3.
class ApplyJournal : public testing::Test {
 protected:
  explicit ApplyJournal(const char* text = kOnWin7) : bench(text) {
    bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  }
  void TearDown() override { bench.script->on_call = nullptr; }

  /// The pop-up opens and the highlight moves `moves` items on.
  template <typename Object = FakeMonitor>
  void Open(int moves, uint32_t vendor = kVendorIntel) {
    ASSERT_TRUE(bench.Start<Object>(static_cast<uint16_t>(vendor)));
    bench.box().SetRefreshRateWorkaround(new JournalledRefreshRate);
    bench.box().SetMonitorTestWorkaround(new JournalledMonitorTest);
    bench.script->vendor = vendor;
    Press(moves + 1);
  }
  void Press(int times) {
    for (int i = 0; i != times; ++i) ASSERT_TRUE(bench.ostrel().Run());
  }

  /// What the pop-up's timer does, step by step, with the result as the last line.
  std::string Apply() {
    const auto asked = bench.script->on_call;
    bench.script->on_call = [asked](const std::string& call) {
      sim::JournalLine("object: " + call);
      if (asked) asked(call);
    };
    bench.machine.JournalReads(true);
    bench.machine.TakeJournal();
    bench.box().ClosePopup();
    const BOOL result = bench.box().ApplySelection();
    bench.machine.JournalReads(false);
    bench.script->on_call = asked;
    return StepsOf(bench.machine.TakeJournal()) + "returned " + std::to_string(result) + "\n";
  }

  std::string Section(uint32_t mode, uint32_t displays) {
    const std::string signature = bench.State().settings_keys.at(0).signature;
    return std::to_string(mode) + "," + std::to_string(displays) + " | " + signature;
  }
  /// The panel's desktop goes under the mode that is left.
  std::string Saved(uint32_t mode, uint32_t displays) {
    return apply_journal::Saved(Section(mode, displays), 1366, 768);
  }
  /// The mode comes back with this width of the desktop.
  void Remember(uint32_t mode, uint32_t displays, uint32_t width, uint32_t height) {
    bench.Remember(Section(mode, displays), "Width", std::to_string(width));
    bench.Remember(Section(mode, displays), "Height", std::to_string(height));
  }
  uint32_t Width() { return bench.machine.model().sources[0].mode.width; }

  void ExpectEnded() {
    const SessionState state = bench.State();
    EXPECT_TRUE(state.items.empty());
    EXPECT_FALSE(state.has_whole_bitmap);
    EXPECT_EQ(state.selected.value, 0u);
    EXPECT_EQ(state.opened.value, 0u);
  }

  SessionBench bench;
};

}  // namespace apply_journal
