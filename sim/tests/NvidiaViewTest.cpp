// Views of the simulated NVIDIA driver: what NvAPI_SetViewEx shows, refuses and tells.
#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/tests/NvidiaDriverCalls.h"

namespace sim {
namespace {

constexpr char kAlone[] = "win7 nvidia: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080";
constexpr char kExtended[] = "vista nvidia: internal 1366x768 active, crt 1280x1024 active";
constexpr uint32_t kPanel = 0x10000;
constexpr uint32_t kCrt = 0x1;
constexpr uint32_t kHdmi = 0x20000;
enum : uint32_t { kStandard = 0, kClone = 1, kDualView = 4 };

std::string Sizes(const Machine& machine) { return DescribeSizes(machine.state().model); }

TEST(NvidiaView, StandardViewShowsOneDisplayAlone) {
  Machine machine(kExtended);
  const NvClient driver;
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(kCrt, 1024, 768, 1)})), 0);
  EXPECT_EQ(machine.Topology(), "single crt");
  EXPECT_EQ(Sizes(machine), "1024x768");
  EXPECT_EQ(driver.Outputs(kActiveOutputsId, driver.Gpu()), kCrt);
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_SetViewEx(handle=1 view=0 paths=[[mask=0x1 1024x768x32@60 source=0 gdi]])=0\n");
}

TEST(NvidiaView, CloneShowsOneDesktopOnAllOfItsPaths) {
  Machine machine(kAlone);
  const NvClient driver;
  Record first = ViewPath(kPanel, 1024, 768, 1);
  first.Set(8, 1);
  EXPECT_EQ(driver.SetView(kClone, View({first, ViewPath(kHdmi, 1024, 768)})), 0);
  EXPECT_EQ(machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(Sizes(machine), "1024x768");
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_SetViewEx(handle=1 view=1 paths=[[mask=0x10000 1024x768x32@60 source=0 primary "
            "gdi] [mask=0x20000 1024x768x32@60 source=0]])=0\n");
}

// Whatever source ids the two paths name: they get desktops of their own.
TEST(NvidiaView, DualViewShowsADesktopOnEachPath) {
  for (const uint32_t second_source : {0U, 1U}) {
    Machine machine(kAlone);
    const NvClient driver;
    Record second = ViewPath(kCrt, 1024, 768, 0, 1366);
    second.Set(4, second_source);
    EXPECT_EQ(driver.SetView(kDualView, View({ViewPath(kPanel, 1366, 768, 1), second})), 0);
    EXPECT_EQ(machine.Topology(), "extend internal+crt");
    EXPECT_EQ(Sizes(machine), "1366x768+1024x768");
    EXPECT_EQ(machine.model().primary_source, 0u);
    EXPECT_EQ(machine.model().sources[1].x, 1366);
    EXPECT_NE(driver.Display(1), nullptr);
  }
}

TEST(NvidiaView, TakenSourceOfADualViewGivesWayToAFreeOne) {
  Machine machine(kAlone);
  const NvClient driver;
  Record first = ViewPath(kPanel, 1366, 768, 1);
  Record second = ViewPath(kCrt, 1024, 768, 0, 1366);
  EXPECT_EQ(driver.SetView(kDualView, View({first.Set(4, 1), second.Set(4, 1)})), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(SourceOfConnector(machine.model(), 0), 1u);
  EXPECT_EQ(SourceOfConnector(machine.model(), 1), 0u);
}

TEST(NvidiaView, PrimaryOfADualViewIsTheOneThatIsMarked) {
  Machine machine(kAlone);
  const NvClient driver;
  EXPECT_EQ(driver.SetView(kDualView, View({ViewPath(kPanel, 1366, 768, 0, 1024),
                                            ViewPath(kCrt, 1024, 768, 1)})),
            0);
  EXPECT_EQ(machine.model().primary_source, 1u);
  EXPECT_EQ(machine.model().sources[0].x, 1024);
  EXPECT_EQ(driver.SetView(kDualView, View({ViewPath(kPanel, 1366, 768, 1),
                                            ViewPath(kCrt, 1024, 768, 1, 1366)})),
            -5);
}

TEST(NvidiaView, IsOfOneGpuAndLeavesTheOthersAlone) {
  Machine machine(
      "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080 active, dp@2 1280x1024");
  const NvClient driver;
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(0x40000, 1280, 1024)})), 0);
  EXPECT_EQ(machine.Topology(), "extend internal+dp");
  EXPECT_EQ(Sizes(machine), "1366x768+1280x1024");
  EXPECT_EQ(machine.model().primary_source, 0u);
}

TEST(NvidiaView, WindowsRemembersTheView) {
  Machine machine(kAlone);
  const NvClient driver;
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(kCrt, 800, 600, 1)})), 0);
  const Arrangement& saved = machine.model().database[ConnectedSet(machine.model())];
  ASSERT_EQ(saved.paths.size(), 1u);
  EXPECT_EQ(machine.model().connectors[saved.paths[0].connector].id, "crt");
  EXPECT_EQ(saved.sources[saved.paths[0].source].mode, (DisplayMode{800, 600, 32, 60}));
  EXPECT_EQ(machine.model().sources[0].registry, (DisplayMode{800, 600, 32, 60}));
}

TEST(NvidiaView, EveryViewEndsTheDisplayHandles) {
  Machine machine(kAlone);
  const NvClient driver;
  void* const before = driver.Display();
  Record same = View({ViewPath(kPanel, 1366, 768, 1)});
  EXPECT_EQ(driver.SetView(kStandard, same), 0);
  EXPECT_EQ(driver.Ask(kSetViewId, before, same.data(), 0U), -8);
  EXPECT_EQ(driver.SetView(kStandard, same), 0);
  machine.TakeJournal();
  EXPECT_EQ(driver.Ask(kSetViewId, nullptr, same.data(), 0U), -8);
  EXPECT_EQ(driver.Ask(kSetViewId, driver.Gpu(), same.data(), 0U), -8);
  const std::string rest = " view=0 paths=[[mask=0x10000 1366x768x32@60 source=0 gdi]])=-8\n";
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_SetViewEx(handle=0" + rest + "NvAPI_SetViewEx(handle=unknown" + rest);
}

// --- Refused, and nothing changed.

TEST(NvidiaView, RefusesWhatTheMonitorsDoNotTake) {
  Machine machine(kAlone);
  const NvClient driver;
  Record shallow = ViewPath(kPanel, 1024, 768, 1);
  shallow.Set(24, 8);
  Record fast = ViewPath(kPanel, 1024, 768, 1);
  fast.Set(40, 75);
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(kPanel, 1920, 1080, 1)})), -1);
  EXPECT_EQ(driver.SetView(kStandard, View({shallow})), -1);
  EXPECT_EQ(driver.SetView(kStandard, View({fast})), -1);
  EXPECT_EQ(driver.SetView(kClone, View({ViewPath(kPanel, 1366, 768), ViewPath(kCrt, 1366, 768)})),
            -1);
  EXPECT_EQ(driver.SetView(kClone, View({ViewPath(kPanel, 1024, 768), ViewPath(kCrt, 800, 600)})),
            -1);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Sizes(machine), "1366x768");
  Record any_frequency = ViewPath(kPanel, 1024, 768, 1);
  any_frequency.Set(40, 0);
  EXPECT_EQ(driver.SetView(kStandard, View({any_frequency})), 0);
}

TEST(NvidiaView, RefusesOutputsThatCannotShowIt) {
  Machine machine("win7 nvidia: internal 1366x768 active, crt, hdmi 1920x1080, dp 1280x1024");
  const NvClient driver;
  const auto path = [](uint32_t mask) { return ViewPath(mask, 1024, 768); };
  EXPECT_EQ(driver.SetView(kStandard, View({path(kCrt)})), -1);  // nothing on it
  EXPECT_EQ(driver.SetView(kStandard, View({path(0)})), -5);
  EXPECT_EQ(driver.SetView(kStandard, View({path(kPanel | kHdmi)})), -5);
  EXPECT_EQ(driver.SetView(kStandard, View({path(0x80000)})), -5);
  EXPECT_EQ(driver.SetView(kClone, View({path(kPanel), path(kPanel)})), -5);
  // More than the GPU drives at a time, more desktops than it scans out.
  EXPECT_EQ(driver.SetView(kClone, View({path(kPanel), path(kHdmi), path(0x40000)})), -1);
  EXPECT_EQ(driver.SetView(kDualView, View({path(kPanel), path(kHdmi), path(0x40000)})), -1);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(NvidiaView, RefusesCountsThatDoNotFitTheView) {
  Machine machine(kAlone);
  const NvClient driver;
  const Record one = ViewPath(kPanel, 1024, 768);
  const Record two = ViewPath(kHdmi, 1024, 768);
  EXPECT_EQ(driver.SetView(kStandard, View({})), -5);
  EXPECT_EQ(driver.SetView(kStandard, View({one, two})), -5);
  EXPECT_EQ(driver.SetView(kClone, View({one})), -5);
  EXPECT_EQ(driver.SetView(kDualView, View({one})), -5);
  EXPECT_EQ(driver.SetView(6, View({one})), -5);
  for (const uint32_t view : {2U, 3U, 5U}) {  // spans and their like
    EXPECT_EQ(driver.SetView(view, View({one, two})), -3);
  }
  Record five = View({one, two});
  EXPECT_EQ(driver.SetView(kClone, five.Set(4, 5)), -5);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(NvidiaView, DeclaredFaultChangesNothingAndIsInTheJournal) {
  Machine machine(kExtended);
  const NvClient driver;
  machine.Fail("NvAPI_SetViewEx", 1, NvCode(-9));
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(kCrt, 1024, 768, 1)})), -9);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_SetViewEx(handle=1 view=0 paths=[[mask=0x1 1024x768x32@60 source=0 gdi]])=-9\n");
}

// --- The journal.

TEST(NvidiaView, JournalTellsEveryFieldThatIsSet) {
  Machine machine(kAlone);
  const NvClient driver;
  Record path = ViewPath(kPanel, 1024, 768, 0x80000007 | 5 << 3, 0xFFFFFC00);
  path.Set(4, 1).Set(8, 3).Set(12, 2).Set(28, 4).Set(32, 5).Set(36, 6).Set(44, 1).Set(48, 7);
  Record record = View({path, ViewPath(kCrt, 0, 0)});
  EXPECT_EQ(driver.SetView(kStandard, record.Set(4, 1)), -5);  // there is no fifth rotation
  EXPECT_EQ(machine.TakeJournal(),
            "NvAPI_SetViewEx(handle=1 view=0 paths=[[mask=0x10000 1024x768x32@60 source=1 primary "
            "gdi at -1024,0 connector=2 color=4 rotation=5 scaling=6 interlaced=1 tv=7 force focus "
            "gpu=5 primary-word=0x3 flags-word=0x8000002f]] "
            "unused=[[mask=0x1 0x0x32@60 source=0]])=-5\n");
  EXPECT_EQ(driver.SetView(kStandard, record.Set(0, 0x30108)), -9);
  EXPECT_EQ(machine.TakeJournal(), "NvAPI_SetViewEx(handle=1 view=0 version=0x30108)=-9\n");
}

TEST(NvidiaView, TurnsWhatIsToBeTurned) {
  Machine machine(kAlone);
  const NvClient driver;
  Record path = ViewPath(kPanel, 768, 1366, 1);
  EXPECT_EQ(driver.SetView(kStandard, View({path})), -1);
  EXPECT_EQ(driver.SetView(kStandard, View({path.Set(32, 1)})), 0);
  EXPECT_EQ(Sizes(machine), "768x1366");
  EXPECT_EQ(machine.model().sources[0].orientation, 1u);
  EXPECT_EQ(driver.SetView(kStandard, View({ViewPath(kPanel, 1366, 768, 1).Set(32, 4)})), 0);
  EXPECT_EQ(machine.model().sources[0].orientation, 0u);
}

}  // namespace
}  // namespace sim
