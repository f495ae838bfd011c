// A thousand runs of the display-change monitor, each with changes at moments of its own. They are
// in virtual time, in which the host's thread and the monitor's take turns: what they hold is the
// rule, and that nothing stays behind. What two threads that really run at one time do to each
// other stands in DisplayChangeMonitorRealTimeTest.cpp.
#include <algorithm>
#include <random>
#include <vector>

#include "tests/behaviour/DisplayChangeHost.h"

namespace {

constexpr int kRuns = 250;  // of each seed
constexpr uint64_t kWait = 10000;

struct Expected {
  uint64_t took;
  bool restored;
};

// The rule once more, without threads, windows and timers.
Expected Foretell(const std::vector<uint64_t>& changes, uint32_t previous_mode) {
  const uint64_t period = previous_mode == IMMonitor::DM_EXTEND ? 1600 : 800;
  uint64_t due = 1500;
  for (const uint64_t change : changes) {
    if (change > due || change > kWait) break;
    due = change + period;
  }
  return {std::min(due, kWait), due <= kWait};
}

class DisplayChangeStress : public DisplayChange, public testing::WithParamInterface<uint32_t> {
 protected:
  // Without records: they would be most of what a run does.
  void SetUp() override {
    bench.machine.SetEnvironment("OSTREL_LOG_LEVEL", "4");
    DisplayChange::SetUp();
  }
  const wchar_t* CommandLine() const override { return L"host.exe"; }

  std::vector<uint64_t> RandomChanges() { return Below(8) == 0 ? Endless() : Some(); }
  std::vector<uint64_t> Some() {
    std::vector<uint64_t> changes(Below(16));
    const uint64_t range = 1 + Below(14000);
    for (uint64_t& change : changes) change = Below(range);
    std::sort(changes.begin(), changes.end());
    return changes;
  }
  std::vector<uint64_t> Endless() {
    std::vector<uint64_t> changes;
    for (uint64_t at = 0; at < 11000; at += 300 + Below(500)) changes.push_back(at);
    return changes;
  }
  uint64_t Below(uint64_t limit) { return random_() % limit; }

  void RunOnce() {
    const std::vector<uint64_t> changes = RandomChanges();
    const uint32_t previous_mode = Below(2) != 0 ? IMMonitor::DM_EXTEND : IMMonitor::DM_CLONE;
    for (const uint64_t change : changes) ChangeAt(change);
    bench.machine.model().sources[0].mode.width = kWidthBefore;
    Run(previous_mode);
    const Expected expected = Foretell(changes, previous_mode);
    EXPECT_EQ(Took(), expected.took);
    EXPECT_EQ(Restored(), expected.restored);
    ExpectIdle();
    bench.machine.Advance(30000);  // the changes that were left reach nobody
    (expected.restored ? restored : given_up)++;
  }

  int restored = 0;
  int given_up = 0;

 private:
  std::mt19937 random_{GetParam()};
};

TEST_P(DisplayChangeStress, LeavesNothingAndHangsNowhere) {
  for (int run = 0; run != kRuns && !HasFailure(); ++run) RunOnce();
  EXPECT_EQ(bench.machine.Calls("CreateThread"), static_cast<uint32_t>(kRuns));
  EXPECT_EQ(bench.machine.Calls("CreateWindowExA"), static_cast<uint32_t>(kRuns));
  EXPECT_EQ(bench.machine.Calls("RegisterClassA"), 1u);
  EXPECT_EQ(bench.machine.EndThreads(), 0u);
  // Both ends are among them.
  EXPECT_GT(restored, kRuns / 10);
  EXPECT_GT(given_up, kRuns / 20);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DisplayChangeStress, testing::Values(1u, 2u, 3u, 4u));

}  // namespace
