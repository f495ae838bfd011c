// What a switch writes down of the mode it leaves, and puts back of the one it enters.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/SessionBench.h"

namespace {

constexpr char kPanelAlone[] = "1,1 | CRT Monitor,Panel";
constexpr char kClone[] = "2,3 | CRT Monitor,Panel";
constexpr char kExtend[] = "4,3 | CRT Monitor,Panel";

// The items of panel and CRT.
constexpr uint32_t kPanelItem = 0;
constexpr uint32_t kCloneItem = 1;
constexpr uint32_t kCrtItem = 2;
constexpr uint32_t kExtendItem = 3;

class Memory : public testing::Test {
 protected:
  Memory() {
    bench.script->follows = true;
    for (const char* section : {"Single Internal", "Single External", "Clone", "Extend"}) {
      bench.machine.Config(section, "Setting Type", 0);
    }
  }

  void Start() { ASSERT_TRUE(bench.Start()); }
  void Open(uint32_t item) {
    ASSERT_TRUE(bench.ostrel().Run());
    SIndex index = bench.State().selected;
    index.value = item;
    bench.box().SetSelected(index);
    bench.Calls();
    bench.machine.TakeJournal();
  }
  BOOL SwitchTo(uint32_t item) {
    Open(item);
    return bench.ostrel().Stop();
  }
  void SetDesktop(uint32_t width, uint32_t height) {
    bench.machine.model().sources[0].mode = {width, height, 32, 60};
  }
  std::string Desktop() {
    const sim::DisplayMode& mode = bench.machine.model().sources[0].mode;
    return std::to_string(mode.width) + "x" + std::to_string(mode.height);
  }
  std::string SizeIn(const char* section) {
    return bench.Remembered(section, "Width") + "x" + bench.Remembered(section, "Height");
  }

  SessionBench bench;
};

TEST_F(Memory, TheModeThatIsLeftIsWrittenBeforeTheSwitchAndTheNewOneBehindIt) {
  Start();
  bench.script->on_call = [&](const std::string& call) {
    if (call != "SetNewDisplayMode(2, 0x3)") return;
    EXPECT_EQ(SizeIn(kPanelAlone), "1366x768");
    EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "-");
    SetDesktop(1024, 768);
  };
  EXPECT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(SizeIn(kPanelAlone), "1366x768");
  EXPECT_EQ(SizeIn(kClone), "-x-");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "2");
}

TEST_F(Memory, ComingBackPutsTheDesktopBack) {
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);  // by the user
  ASSERT_TRUE(SwitchTo(kPanelItem));
  EXPECT_EQ(SizeIn(kClone), "800x600");
  EXPECT_EQ(Desktop(), "1366x768");
  ASSERT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(Desktop(), "800x600");
}

TEST_F(Memory, ComingBackInAnotherProcessPutsTheDesktopBack) {
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  bench.ostrel().DeInit();
  bench.Load();
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(Desktop(), "800x600");
}

TEST_F(Memory, AfterAFlushNothingIsPutBack) {
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  ASSERT_TRUE(bench.ostrel().FlushRememberedSettings());
  ASSERT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(Desktop(), "1366x768");
}

TEST_F(Memory, AnotherMonitorOnTheSameConnectorStartsFresh) {
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  sim::Monitor& monitor = *bench.machine.model().connectors[1].monitor;
  const std::vector<uint8_t> known = monitor.edid;
  monitor.edid = bench.machine.model().connectors[0].monitor->edid;
  ASSERT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(Desktop(), "1366x768");
  monitor.edid = known;
  SetDesktop(1366, 768);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  ASSERT_TRUE(SwitchTo(kCrtItem));
  EXPECT_EQ(bench.Remembered("2,3 | Panel", "Width"), "-");  // never left with that monitor
}

TEST_F(Memory, TheResolutionIsPutBackBehindTheRecord) {
  Start();
  bench.Remember(kClone, "Width", "800");
  bench.Remember(kClone, "Height", "600");
  std::string recorded;
  bench.script->on_call = [&](const std::string& call) {
    if (call != "ShouldResetDisplaySettingAfterSwtich") return;
    recorded = bench.Remembered("Active Display Mode", "Display Mode");
    EXPECT_EQ(Desktop(), "1366x768");
  };
  EXPECT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(recorded, "2");
  EXPECT_EQ(Desktop(), "800x600");
}

TEST_F(Memory, TheKeyTurnsThePuttingBackOffAndNotTheWriting) {
  bench.machine.Config("Settings", "Restore Display Settings After Switch", 0);
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  EXPECT_EQ(SizeIn(kClone), "800x600");
  EXPECT_EQ(Desktop(), "800x600");
}

TEST_F(Memory, SoDoesAnObjectThatKeepsResolutionsItself) {
  bench.script->should_reset = 0;
  Start();
  ASSERT_TRUE(SwitchTo(kCloneItem));
  SetDesktop(800, 600);
  ASSERT_TRUE(SwitchTo(kPanelItem));
  EXPECT_EQ(SizeIn(kClone), "800x600");
  EXPECT_EQ(Desktop(), "800x600");
}

TEST_F(Memory, AFailedSwitchHasWrittenTheModeItDidNotLeave) {
  bench.script->set_result = 0;
  Start();
  EXPECT_TRUE(SwitchTo(kCloneItem));  // a stop does not tell what became of the switch
  EXPECT_EQ(SizeIn(kPanelAlone), "1366x768");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "-");
}

TEST_F(Memory, AForcedSwitchDoesNotWriteTheModeItLeaves) {
  Start();
  Open(kCloneItem);
  bench.box().SetForceApply(true);
  EXPECT_TRUE(bench.box().ApplySelection());
  EXPECT_EQ(SizeIn(kPanelAlone), "-x-");
  bench.box().ClosePopup();
}

TEST_F(Memory, APresentationIsNeverWritten) {
  bench.script->mode = IMMonitor::DM_CLONE;
  bench.script->active = 0x03;
  Start();
  Open(kPanelItem);
  bench.box().SetItemType(kCloneItem, 64);
  EXPECT_TRUE(bench.ostrel().Stop());
  EXPECT_EQ(SizeIn(kClone), "-x-");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "1");
}

TEST_F(Memory, FromAModeWithoutAnItemNothingIsWritten) {
  bench.script->mode = IMMonitor::DM_HSPAN;
  bench.script->active = 0x03;
  Start();
  EXPECT_TRUE(SwitchTo(kPanelItem));
  EXPECT_EQ(SizeIn(kPanelAlone), "-x-");
  EXPECT_EQ(SizeIn(kClone), "-x-");
}

TEST_F(Memory, AnExtendedDesktopIsWrittenByDisplayAsTheObjectKnowsIt) {
  bench.script->settings_result = true;
  bench.script->settings.dmPelsWidth = 1280;
  bench.script->settings.dmPelsHeight = 720;
  bench.script->settings.dmBitsPerPel = 32;
  bench.script->settings.dmDisplayFrequency = 60;
  Start();
  ASSERT_TRUE(SwitchTo(kExtendItem));
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "-");
  EXPECT_EQ(SizeIn(kExtend), "-x-");
  ASSERT_TRUE(SwitchTo(kPanelItem));
  EXPECT_EQ(SizeIn(kExtend), "1280x720");
  EXPECT_EQ(bench.Remembered(kExtend, "Color Depth2"), "32");
  EXPECT_EQ(bench.Remembered("Active Display Mode", "Display Mode"), "1");
}

TEST_F(Memory, TheDelayComesBeforeThePuttingBack) {
  bench.machine.Config("Settings", "Delay Time To Restore Display Settings", 700);
  Start();
  bench.Remember(kClone, "Width", "800");
  bench.Remember(kClone, "Height", "600");
  const uint64_t before = bench.machine.Now();
  EXPECT_TRUE(SwitchTo(kCloneItem));
  EXPECT_EQ(bench.machine.Now() - before, 700u);
  EXPECT_EQ(Desktop(), "800x600");
}

}  // namespace
