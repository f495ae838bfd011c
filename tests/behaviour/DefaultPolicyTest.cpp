// The resolution of a mode for which nothing is remembered.
#include "sim/EdidMaker.h"
#include "tests/behaviour/PolicyTest.h"

namespace {

using policy_test::Changed;
using policy_test::Configured;
using policy_test::DesktopOf;

constexpr char kVista[] = "vista intel: internal 1366x768 active, crt 1024x768";
constexpr char kWin7[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class DefaultPolicy : public policy_test::PolicyTest {
 protected:
  explicit DefaultPolicy(const std::string& text = kVista) : PolicyTest(text) {}
  void SetUp() override { Begin(); }
  void Decide(uint32_t mode, uint32_t displays) { policy().ApplyDefaultPolicy(mode, displays); }
  bool Best() { return policy().ApplyBestResolution(IMMonitor::DM_CLONE, 0x03); }
};

// --- "Setting Type".

TEST_F(DefaultPolicy, TypeZeroLeavesEveryModeToTheDriver) {
  for (const char* section :
       {"Single Internal", "Single External", "Clone", "Extend", "Settings"}) {
    bench.machine.Config(section, "Setting Type", 0);
  }
  Decide(IMMonitor::DM_SINGLE, 0x01);
  Decide(IMMonitor::DM_SINGLE, 0x02);
  Decide(IMMonitor::DM_CLONE, 0x03);
  Decide(IMMonitor::DM_EXTEND, 0x03);
  Decide(IMMonitor::DM_TRIPLE_CLONE, 0x13);
  EXPECT_EQ(Journal(), "");
}

TEST_F(DefaultPolicy, EveryTypeButZeroAndTwoForcesTheModesSize) {
  const struct {
    const char* section;
    uint32_t mode, displays;
  } rows[] = {
      {"Single Internal", IMMonitor::DM_SINGLE, 0x01},
      {"Single External", IMMonitor::DM_SINGLE, 2},
      {"Clone", IMMonitor::DM_CLONE, 0x03},
      {"Extend", IMMonitor::DM_EXTEND, 0x03},
      {"Settings", IMMonitor::DM_TRIPLE_CLONE, 0x13},
  };
  for (const int64_t type : {1, 3, -1}) {
    for (const auto& row : rows) {
      bench.machine.Config(row.section, "Setting Type", type);
      bench.machine.Config(row.section, "Width", 1280);
      bench.machine.Config(row.section, "Height", 720);
      Decide(row.mode, row.displays);
      EXPECT_EQ(Journal(), Changed("1280x720x32@60", "0x5c0000")) << row.section;
    }
  }
}

TEST_F(DefaultPolicy, TheFixedSizeKeepsDepthAndFrequency) {
  SetModes(0, {{1366, 768, 32, 60}, {1366, 768, 16, 50}, {1024, 768, 16, 50}});
  model().sources[0].mode = {1366, 768, 16, 50};
  policy().ApplyFixedResolution(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Journal(), Changed("1024x768x16@50", "0x5c0000"));
}

TEST_F(DefaultPolicy, TheFixedSizeIsSetAlsoWhereTheDesktopCannotBeRead) {
  bench.machine.Fail("EnumDisplaySettingsA", 1);
  policy().ApplyFixedResolution(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Journal(), Changed("1024x768x0@0", "0x5c0000"));
}

TEST_F(DefaultPolicy, ARefusedFixedSizeIsLoggedByTheChangeOnly) {
  bench.machine.Config("Clone", "Setting Type", 1);
  bench.machine.Config("Clone", "Width", 1440);
  Decide(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Journal(), Changed("1440x768x32@60", "0x5c0000", -2));
  EXPECT_EQ(TakeLog(),
            "ERROR Calling ChangeDisplaySettingsEx() failed: -2\n"
            "ERROR Calling ChangeDisplaySettingsEx() failed: -2\n"
            "WARNING Changing display resolution to 1440 x 768 failed\n");
}

// --- One display alone.

class SingleDefault : public DefaultPolicy {
 protected:
  SingleDefault() : DefaultPolicy(kWin7) {}
};

TEST_F(SingleDefault, GetsTheNativeSizeOfItsMonitorIn32BitsAtSixtyHertz) {
  model().sources[0].mode = {800, 600, 16, 50};
  Decide(IMMonitor::DM_SINGLE, 0x01);
  EXPECT_EQ(Journal(), Configured(1));
  EXPECT_EQ(DesktopOf(model().sources[0]), "1366x768x32@60");
}

TEST_F(SingleDefault, GetsTheNativeSizeOfTheDisplayThatIsMeant) {
  model().sources[0].mode = {800, 600, 32, 60};
  model().active[0].connector = 1;
  Decide(IMMonitor::DM_SINGLE, 0x02);
  EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
}

TEST_F(SingleDefault, GivesItsMonitorObjectBack) {
  const std::string before = bench.machine.Outstanding();
  const uint32_t loads = bench.machine.Calls("LoadLibraryA") + bench.machine.Calls("LoadLibraryW");
  model().sources[0].mode = {800, 600, 32, 60};
  for (int i = 0; i != 3; ++i) Decide(IMMonitor::DM_SINGLE, 0x01);
  EXPECT_EQ(bench.machine.Outstanding(), before);
  EXPECT_GT(bench.machine.Calls("LoadLibraryA") + bench.machine.Calls("LoadLibraryW"), loads);
}

TEST_F(SingleDefault, WithoutANativeSizeIs1024By768) {
  Decide(IMMonitor::DM_SINGLE, 0x10);  // no HDMI display is active
  EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
}

// Below Windows 7 the monitor's EDID is read through the object, which may have none to give.
class SingleDefaultBelowWin7 : public policy_test::PolicyTest {
 protected:
  SingleDefaultBelowWin7() : PolicyTest(kVista) {}
  void Decide() { policy().ApplyDefaultPolicy(IMMonitor::DM_SINGLE, 0x01); }
};

TEST_F(SingleDefaultBelowWin7, AMonitorWithoutEdidIs1024By768) {
  Begin();
  Decide();
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(SingleDefaultBelowWin7, AMonitorThatThrowsCountsAsUnknown) {
  bench.script->initial_extension = false;
  bench.script->edid = sim::MakeEdid("Panel", {1366, 768, 32, 60});
  model().sources[0].mode = {800, 600, 32, 60};
  Begin<FakeExtensionMonitor>();
  Decide();
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(SingleDefaultBelowWin7, AMonitorThatThrowsWhenAskedCountsAsUnknown) {
  bench.script->edid = sim::MakeEdid("Panel", {1366, 768, 32, 60});
  model().sources[0].mode = {800, 600, 32, 60};
  Begin<FakeExtensionMonitor>();
  uint32_t asked = 0;
  bench.script->on_call = [&asked](const std::string& call) {
    if (call.rfind("GetEDID", 0) != 0) return;
    ++asked;
    throw std::runtime_error("not now");
  };
  Decide();
  bench.script->on_call = nullptr;
  EXPECT_EQ(asked, 1u);
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(SingleDefaultBelowWin7, TheEdidsSizeIsTaken) {
  bench.script->edid = sim::MakeEdid("Panel", {1366, 768, 32, 60});
  model().sources[0].mode = {800, 600, 16, 50};
  Begin<FakeExtensionMonitor>();
  Decide();
  EXPECT_EQ(Journal(), Changed("1366x768x32@60", "0x5c0000"));
}

TEST_F(SingleDefaultBelowWin7, ARefusedNativeSizeGivesWayToTheBestMode) {
  bench.script->edid = sim::MakeEdid("Panel", {1400, 1050, 32, 60});
  Begin<FakeExtensionMonitor>();
  SetModes(0, {{800, 600, 32, 60}, {1366, 768, 32, 60}});
  Decide();
  EXPECT_EQ(Journal(),
            Changed("1400x1050x32@60", "0x5c0000", -2) + Changed("1366x768x32@60", "0x5c0000"));
}

TEST_F(SingleDefaultBelowWin7, AndThenToTheFixedOne) {
  Begin();
  SetModes(0, {{640, 480, 32, 60}});
  bench.machine.Config("Single Internal", "Width", 640);
  bench.machine.Config("Single Internal", "Height", 480);
  Decide();
  EXPECT_EQ(Journal(),
            Changed("1024x768x32@60", "0x5c0000", -2) + Changed("640x480x32@60", "0x5c0000"));
}

// --- Every other mode.

TEST_F(DefaultPolicy, AnyOtherModeGetsTheBestModeOfThePrimaryDisplay) {
  SetModes(0, {{800, 600, 32, 60}, {1280, 720, 16, 60}, {1280, 720, 32, 60}, {640, 480, 32, 60}});
  Decide(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Journal(), Changed("1280x720x32@60", "0x5c0000"));
  Decide(IMMonitor::DM_ADVANCED_P2, 0x33);
  EXPECT_EQ(Journal(), Changed("1280x720x32@60", "0x5c0000"));
}

TEST_F(DefaultPolicy, AnyOtherModeWithoutAGoodOneGetsTheFixedOne) {
  SetModes(0, {{640, 480, 32, 60}});
  bench.machine.Config("Clone", "Width", 640);
  bench.machine.Config("Clone", "Height", 480);
  Decide(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(Journal(), Changed("640x480x32@60", "0x5c0000"));
}

// --- The best mode.

TEST_F(DefaultPolicy, TheBestTheSecondAnd1024By768AreTriedInTurn) {
  SetModes(0, {{1152, 864, 32, 60}, {1280, 800, 32, 50}, {1280, 720, 32, 60}, {1024, 768, 32, 50}});
  bench.machine.Fail("ChangeDisplaySettingsExA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(Best());
  const std::string journal = Journal();
  std::string expected;
  for (const char* mode : {"1280x800x32@50", "1152x864x32@60", "1024x768x32@50"}) {
    std::string lines = Changed(mode, "0x5c0000", -1);
    lines.replace(lines.find("=-1\n"), 4, "=0\n");  // the test before the change is not refused
    expected += lines;
  }
  EXPECT_EQ(journal, expected);
}

TEST_F(DefaultPolicy, WithoutAnyModeThereIsNoBest) {
  SetModes(0, {});
  EXPECT_FALSE(Best());
  EXPECT_EQ(Journal(), "");
}

TEST_F(DefaultPolicy, TheWalkReadsEveryModeOnceAndEndsBehindTheLast) {
  SetModes(0, std::vector<sim::DisplayMode>(500, {1024, 768, 32, 60}));
  const uint32_t before = bench.machine.Calls("EnumDisplaySettingsExA");
  EXPECT_TRUE(Best());
  EXPECT_EQ(bench.machine.Calls("EnumDisplaySettingsExA") - before, 501u);
}

TEST_F(DefaultPolicy, APortraitModeIsNeverChosen) {
  SetModes(0, {{1024, 768, 32, 60}, {1080, 1920, 32, 60}, {1200, 1600, 32, 60}});
  EXPECT_TRUE(Best());
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(DefaultPolicy, BothMaximaTogetherReplaceBothSides) {
  SetModes(0, {{1920, 1080, 32, 60}, {1000, 500, 32, 60}});
  bench.machine.Config("Clone", "Max Width", 1000);
  bench.machine.Config("Clone", "Max Height", 500);
  EXPECT_TRUE(Best());
  EXPECT_EQ(Journal(), Changed("1000x500x32@60", "0x5c0000"));
}

TEST_F(DefaultPolicy, AMaximumThatIsNotListedIsTriedAllTheSame) {
  SetModes(0, {{1366, 768, 32, 60}, {1024, 768, 32, 60}});
  bench.machine.Config("Clone", "Max Width", 1200);
  bench.machine.Config("Clone", "Max Height", 2000);
  EXPECT_TRUE(Best());
  EXPECT_EQ(Journal(),
            Changed("1200x2000x32@60", "0x5c0000", -2) + Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(DefaultPolicy, OneMaximumAloneLimitsNothing) {
  SetModes(0, {{1366, 768, 32, 60}, {800, 600, 32, 60}});
  bench.machine.Config("Clone", "Max Width", 800);
  EXPECT_TRUE(Best());
  EXPECT_EQ(Journal(), Changed("1366x768x32@60", "0x5c0000"));
}

TEST_F(DefaultPolicy, OfEqualModesTheLastListedWins) {
  SetModes(0, {{1366, 768, 32, 60}, {1366, 768, 32, 40}});
  EXPECT_TRUE(Best());
  EXPECT_EQ(Journal(), Changed("1366x768x32@40", "0x5c0000"));
}

class FrequencyKeys : public policy_test::PolicyTest {
 protected:
  FrequencyKeys() : PolicyTest(kVista) {}
  std::string BestWith(const char* key, const std::vector<sim::DisplayMode>& modes) {
    bench.machine.Config("Settings", key, 1);
    EXPECT_TRUE(bench.Start());
    SetModes(0, modes);
    EXPECT_TRUE(policy().ApplyBestResolution(IMMonitor::DM_CLONE, 0x03));
    return Journal();
  }
};

TEST_F(FrequencyKeys, SixtyHertzStaysWhereItIsBetter) {
  EXPECT_EQ(BestWith("Frequency 60Hz Is Better", {{1366, 768, 32, 60}, {1366, 768, 32, 40}}),
            Changed("1366x768x32@60", "0x5c0000"));
}

TEST_F(FrequencyKeys, LowFrequenciesAreRefusedOnlyAfterOneOfAtLeastSixty) {
  EXPECT_EQ(BestWith("Eliminate Frequency Less Then 60Hz",
                     {{1280, 800, 32, 50}, {1024, 768, 32, 60}, {1920, 1080, 32, 59}}),
            Changed("1280x800x32@50", "0x5c0000"));
}

}  // namespace
