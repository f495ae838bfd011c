// The resolution of every mode with one desktop: what is remembered, and what the configuration
// asks for.
#include "tests/behaviour/PolicyTest.h"

namespace {

using policy_test::Changed;
using policy_test::Configured;
using policy_test::DesktopOf;
using settings_file::Five;
using settings_file::Section;

constexpr char kVista[] = "vista intel: internal 1366x768 active, crt 1024x768";
constexpr char kWin7[] = "win7 intel: internal 1366x768 active, crt 1024x768";

class Policy : public policy_test::PolicyTest {
 protected:
  explicit Policy(const std::string& text = kVista) : PolicyTest(text) {}
  void SetUp() override { Begin(); }
};

// --- What is remembered.

class RememberedSingle : public Policy {
 protected:
  void SetUp() override {
    SetModes(0, {{1366, 768, 32, 60},
                 {1366, 768, 16, 60},
                 {1366, 768, 32, 50},
                 {1366, 600, 32, 60},
                 {1280, 768, 32, 60},
                 {1024, 768, 32, 60},
                 {1024, 768, 16, 50},
                 {800, 600, 32, 60}});
    Policy::SetUp();
  }
  bool Apply(const std::string& lines) {
    return policy().ApplyRememberedSingleSettings(Remember("s", lines));
  }
};

TEST_F(RememberedSingle, OnlyTheFieldsThatDifferAreNamed) {
  const struct {
    sim::DisplayMode remembered;
    const char* mode;
    const char* fields;
  } rows[] = {
      {{1280, 768, 32, 60}, "1280x768x32@60", "0x80000"},
      {{1366, 600, 32, 60}, "1366x600x32@60", "0x100000"},
      {{1366, 768, 16, 60}, "1366x768x16@60", "0x40000"},
      {{1366, 768, 32, 50}, "1366x768x32@50", "0x400000"},
      {{1024, 768, 16, 50}, "1024x768x16@50", "0x4c0000"},
      {{800, 600, 32, 60}, "800x600x32@60", "0x180000"},
  };
  for (const auto& row : rows) {
    model().sources[0].mode = {1366, 768, 32, 60};
    const sim::DisplayMode& one = row.remembered;
    EXPECT_TRUE(Apply(Five("", one.width, one.height, one.bits, one.frequency, 0)));
    EXPECT_EQ(Journal(), Changed(row.mode, row.fields));
    EXPECT_EQ(DesktopOf(model().sources[0]), row.mode);
  }
}

TEST_F(RememberedSingle, ADesktopThatIsAsRememberedIsLeftAlone) {
  EXPECT_TRUE(Apply(Five("", 1366, 768, 32, 60, 0)));
  EXPECT_EQ(Journal(), "");
}

TEST_F(RememberedSingle, TheRememberedOrientationHasNoEffect) {
  EXPECT_TRUE(Apply(Five("", 1366, 768, 32, 60, 1)));
  EXPECT_EQ(Journal(), "");
}

TEST_F(RememberedSingle, ADepthOrFrequencyOfZeroIsNoChange) {
  model().sources[0].mode = {1366, 768, 16, 50};
  EXPECT_TRUE(Apply(Five("", 1366, 768, 0, 0, 0)));
  EXPECT_EQ(Journal(), "");
}

TEST_F(RememberedSingle, DepthAndFrequencyAre32BitsAndSixtyHertzByDefault) {
  model().sources[0].mode = {1024, 768, 16, 50};
  EXPECT_TRUE(Apply("Width=1024\r\nHeight=768\r\n"));
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x440000"));
}

TEST_F(RememberedSingle, NothingIsDoneWithoutWidthOrHeight) {
  EXPECT_FALSE(Apply("Width=1024\r\n"));
  EXPECT_FALSE(Apply("Height=768\r\n"));
  EXPECT_EQ(Journal(), "");
}

TEST_F(RememberedSingle, NothingIsDoneToADesktopThatCannotBeRead) {
  bench.machine.Fail("EnumDisplaySettingsA", 1);
  EXPECT_FALSE(Apply(Five("", 1024, 768, 32, 60, 0)));
  EXPECT_EQ(Journal(), "");
}

TEST_F(RememberedSingle, ARefusedSizeGivesWayTo1024By768WithTheSameFields) {
  EXPECT_TRUE(Apply(Five("", 1440, 768, 32, 60, 0)));
  EXPECT_EQ(Journal(),
            Changed("1440x768x32@60", "0x80000", -2) + Changed("1024x768x32@60", "0x80000"));
}

TEST_F(RememberedSingle, AndThenTo800By600) {
  SetModes(0, {{1366, 768, 32, 60}, {800, 600, 32, 60}});
  EXPECT_TRUE(Apply(Five("", 1440, 900, 32, 60, 0)));
  EXPECT_EQ(Journal(), Changed("1440x900x32@60", "0x180000", -2) +
                           Changed("1024x768x32@60", "0x180000", -2) +
                           Changed("800x600x32@60", "0x180000"));
}

TEST_F(RememberedSingle, AndFailsWhenThatIsRefusedToo) {
  EXPECT_FALSE(Apply(Five("", 1440, 900, 24, 60, 0)));
  EXPECT_EQ(Journal(), Changed("1440x900x24@60", "0x1c0000", -2) +
                           Changed("1024x768x24@60", "0x1c0000", -2) +
                           Changed("800x600x24@60", "0x1c0000", -2));
  EXPECT_EQ(DesktopOf(model().sources[0]), "1366x768x32@60");
}

// --- Where the decision begins.

class Restore : public Policy {
 protected:
  using Policy::Policy;
  /// What is remembered for the clone that the tests come back to.
  void RememberClone(uint32_t width, uint32_t height) {
    Remember(SectionOf(IMMonitor::DM_CLONE, 0x03), Five("", width, height, 32, 60, 0));
  }
  void RestoreClone() { policy().RestoreDisplaySettings(IMMonitor::DM_CLONE, 0x03); }
};

TEST_F(Restore, PutsBackWhatWasSavedInThisProcess) {
  model().sources[0].mode = {800, 600, 32, 60};
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  model().sources[0].mode = {1366, 768, 32, 60};
  RestoreClone();
  EXPECT_EQ(Journal(), Changed("800x600x32@60", "0x180000"));
}

TEST_F(Restore, PutsBackWhatAnEarlierProcessSavedWithoutAKey) {
  RememberClone(800, 600);
  EXPECT_TRUE(bench.State().settings_keys.empty());
  RestoreClone();
  EXPECT_EQ(Journal(), Changed("800x600x32@60", "0x180000"));
  EXPECT_TRUE(bench.State().settings_keys.empty());
}

TEST_F(Restore, WithNothingRememberedTheModesPolicyDecides) {
  bench.machine.Config("Clone", "Setting Type", 1);
  RestoreClone();
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(Restore, AfterAFlushTheModesPolicyDecidesThoughTheKeyIsThere) {
  bench.machine.Config("Clone", "Setting Type", 1);
  model().sources[0].mode = {800, 600, 32, 60};
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  ASSERT_TRUE(bench.ostrel().FlushRememberedSettings());
  EXPECT_EQ(bench.State().settings_keys.size(), 1u);
  RestoreClone();
  EXPECT_EQ(Journal(), Changed("1024x768x32@60", "0x5c0000"));
}

TEST_F(Restore, HalfASizeWithoutAKeyIsNothing) {
  bench.machine.Config("Clone", "Setting Type", 0);
  Remember(SectionOf(IMMonitor::DM_CLONE, 0x03), "Width=800\r\n");
  RestoreClone();
  Remember(SectionOf(IMMonitor::DM_CLONE, 0x03), "Height=600\r\n");
  RestoreClone();
  EXPECT_EQ(Journal(), "");
}

TEST_F(Restore, WhatCannotBeSetGivesWayToTheModesPolicy) {
  bench.machine.Config("Clone", "Setting Type", 1);
  bench.machine.Config("Clone", "Width", 1280);
  bench.machine.Config("Clone", "Height", 720);
  SetModes(0, {{1366, 768, 32, 60}, {1280, 720, 32, 60}});
  RememberClone(1440, 900);
  RestoreClone();
  EXPECT_EQ(Journal(),
            Changed("1440x900x32@60", "0x180000", -2) + Changed("1024x768x32@60", "0x180000", -2) +
                Changed("800x600x32@60", "0x180000", -2) + Changed("1280x720x32@60", "0x5c0000"));
}

TEST_F(Restore, AnotherModeOtherDisplaysAndOtherMonitorsAreNotMeant) {
  bench.machine.Config("Clone", "Setting Type", 0);
  const std::string own = policy().GetMonitorSignature();
  const std::string five = Five("", 800, 600, 32, 60, 0);
  Remember("2,3 | somebody else's",
           five + Section("1,3 | " + own, five) + Section("2,17 | " + own, five));
  RestoreClone();
  EXPECT_EQ(Journal(), "");
}

TEST_F(Restore, AnAdjustPolicyIgnoresWhatIsRememberedThoughItGoesOnBeingWritten) {
  bench.machine.Config("Clone", "Adjust Policy", 1);
  bench.machine.Config("Clone", "Setting Type", 0);
  model().sources[0].mode = {800, 600, 32, 60};
  policy().SaveDisplaySettings(IMMonitor::DM_CLONE, 0x03);
  EXPECT_EQ(settings_file::Bytes(bench.machine),
            Section(SectionOf(2, 3), Five("", 800, 600, 32, 60, 0)));
  model().sources[0].mode = {1366, 768, 32, 60};
  RestoreClone();
  EXPECT_EQ(Journal(), "");
}

TEST_F(Restore, TheAdjustPolicyIsThatOfTheMode) {
  bench.machine.Config("Single Internal", "Adjust Policy", 1);
  bench.machine.Config("Settings", "Adjust Policy", 1);
  RememberClone(800, 600);
  RestoreClone();
  EXPECT_EQ(Journal(), Changed("800x600x32@60", "0x180000"));
}

class RestoreOnWin7 : public Restore {
 protected:
  RestoreOnWin7() : Restore(kWin7) {}
};

TEST_F(RestoreOnWin7, ChangesTheDesktopThroughTheDisplayConfiguration) {
  RememberClone(800, 600);
  RestoreClone();
  EXPECT_EQ(Journal(), Configured(1));
  EXPECT_EQ(DesktopOf(model().sources[0]), "800x600x32@60");
}

// --- The per-mode keys.

TEST_F(Policy, TheKeysHaveTheirDefaults) {
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(policy().GetSettingType(IMMonitor::DM_CLONE, 0x03), 2u);
  EXPECT_EQ(policy().GetAdjustPolicy(IMMonitor::DM_CLONE, 0x03), 0u);
  EXPECT_TRUE(policy().GetFixedResolution(IMMonitor::DM_CLONE, 0x03, &width, &height));
  EXPECT_EQ(width, 1024u);
  EXPECT_EQ(height, 768u);
  EXPECT_FALSE(policy().GetMaxResolution(IMMonitor::DM_CLONE, 0x03, &width, &height));
}

TEST_F(Policy, EachModeReadsItsSectionAtEachUse) {
  const struct {
    const char* section;
    uint32_t mode, displays;
  } rows[] = {
      {"Single Internal", IMMonitor::DM_SINGLE, 0x01},
      {"Single External", IMMonitor::DM_SINGLE, 0x02},
      {"Clone", IMMonitor::DM_CLONE, 0x03},
      {"Extend", IMMonitor::DM_EXTEND, 0x03},
      {"Settings", IMMonitor::DM_TRIPLE_CLONE, 0x13},
  };
  uint32_t value = 10;
  for (const auto& row : rows) {
    const char* const keys[] = {"Setting Type", "Adjust Policy", "Width",
                                "Height",       "Max Width",     "Max Height"};
    EXPECT_EQ(policy().GetSettingType(row.mode, row.displays), 2u);
    for (const char* key : keys) bench.machine.Config(row.section, key, value++);
    uint32_t width = 0;
    uint32_t height = 0;
    EXPECT_EQ(policy().GetSettingType(row.mode, row.displays), value - 6);
    EXPECT_EQ(policy().GetAdjustPolicy(row.mode, row.displays), value - 5);
    EXPECT_TRUE(policy().GetFixedResolution(row.mode, row.displays, &width, &height));
    EXPECT_EQ(width, value - 4);
    EXPECT_EQ(height, value - 3);
    EXPECT_TRUE(policy().GetMaxResolution(row.mode, row.displays, &width, &height));
    EXPECT_EQ(width, value - 2);
    EXPECT_EQ(height, value - 1);
  }
}

TEST_F(Policy, OneMaximumAloneIsNone) {
  uint32_t width = 0;
  uint32_t height = 0;
  bench.machine.Config("Clone", "Max Width", 1024);
  EXPECT_FALSE(policy().GetMaxResolution(IMMonitor::DM_CLONE, 0x03, &width, &height));
  bench.machine.Config("Extend", "Max Height", 768);
  EXPECT_FALSE(policy().GetMaxResolution(IMMonitor::DM_EXTEND, 0x03, &width, &height));
}

}  // namespace
