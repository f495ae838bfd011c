// The resolutions of an extended desktop: what is put back, what is the default, and by which
// device.
#include "sim/EdidMaker.h"
#include "tests/behaviour/PolicyTest.h"

namespace {

using policy_test::DesktopOf;
using policy_test::Line;
using settings_file::Five;

constexpr char kFirst[] = "\\\\.\\DISPLAY1";
constexpr char kSecond[] = "\\\\.\\DISPLAY2";
constexpr char kPlaced[] = "0x5c00a0";
constexpr char kUnturned[] = "0x5c0020";
constexpr char kCommit[] = "ChangeDisplaySettingsExA(null null flags=0x0)=0\n";

/// What a native size asked of Windows leaves in the log.
std::string Looked() { return std::string("INFO ") + kNoDisplayLink; }

std::string Step(const char* device, const std::string& what, const char* fields, const char* flags,
                 int result) {
  return Line("ChangeDisplaySettingsExA", device, what, fields, flags, result);
}

/// A device's settings tested and stored, as the primary display or not.
std::string Primary(const char* device, const std::string& what) {
  return Step(device, what, kPlaced, "0x1b", 0) + Step(device, what, kPlaced, "0x10000019", 0);
}
std::string Secondary(const char* device, const std::string& what, const char* fields = kPlaced) {
  return Step(device, what, fields, "0xb", 0) + Step(device, what, fields, "0x10000009", 0);
}
/// A test that the device does not pass.
std::string Refused(const char* device, const std::string& what, const char* flags,
                    const char* fields = kPlaced) {
  return Step(device, what, fields, flags, -2);
}

constexpr char kNativePanel[] = "1366x768x32@60 at 0,0";

class Extended : public policy_test::PolicyTest {
 protected:
  explicit Extended(
      const std::string& text = "win7 intel: internal 1366x768 active, crt 1024x768 active")
      : PolicyTest(text) {}
  void SetUp() override { Begin(); }

  bool Restore(const std::string& lines, uint32_t displays = 0x03) {
    return policy().ApplyRememberedSettings(IMMonitor::DM_EXTEND, displays, Remember("s", lines));
  }
  void Default(uint32_t displays = 0x03) {
    policy().ApplyDefaultPolicy(IMMonitor::DM_EXTEND, displays);
  }
};

const std::string& Both() {
  static const std::string lines = Five("", 1024, 768, 32, 60, 0) + Five("2", 800, 600, 32, 60, 0);
  return lines;
}

// --- What is remembered.

TEST_F(Extended, PanelAndExternalDisplayAreStoredAndCommittedTogether) {
  EXPECT_TRUE(Restore(Both()));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") +
                           Secondary(kSecond, "800x600x32@60 at 1366,0") + kCommit);
  EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
  EXPECT_EQ(DesktopOf(model().sources[1]), "800x600x32@60");
  EXPECT_EQ(TakeLog(), Looked());
}

TEST_F(Extended, NothingIsDoneWithoutASizeForThePanel) {
  EXPECT_FALSE(Restore(Five("2", 800, 600, 32, 60, 0)));
  EXPECT_FALSE(Restore("Width=1024\r\n" + Five("2", 800, 600, 32, 60, 0)));
  EXPECT_FALSE(Restore("Height=768\r\n" + Five("2", 800, 600, 32, 60, 0)));
  EXPECT_EQ(Journal(), "");
}

TEST_F(Extended, WithoutThePanelOnlyTheExternalDisplayIsStored) {
  EXPECT_TRUE(Restore(Both(), 0x02));
  EXPECT_EQ(Journal(), Secondary(kSecond, "800x600x32@60 at 1366,0") + kCommit);
}

TEST_F(Extended, WithoutAnExternalDisplayThePanelIsCommitted) {
  for (const uint32_t displays : {0x01U, 0x05U, 0x41U}) {
    EXPECT_TRUE(Restore(Both(), displays));
    EXPECT_EQ(Journal(),
              Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") + kCommit);
    model().sources[0].mode = {1366, 768, 32, 60};
  }
}

TEST_F(Extended, OnlyTheFirstExternalDisplayIsTreated) {
  const struct {
    uint32_t displays;
    const char* mode;
  } rows[] = {
      {0x3A, "800x600x32@60 at 1366,0"},
      {0x38, "1024x768x32@60 at 1366,0"},
      {0x30, "800x600x16@60 at 1366,0"},
      {0x20, "1024x768x16@60 at 1366,0"},
  };
  const std::string lines = Five("2", 800, 600, 32, 60, 0) + Five("8", 1024, 768, 32, 60, 0) +
                            Five("16", 800, 600, 16, 60, 0) + Five("32", 1024, 768, 16, 60, 0);
  for (const auto& row : rows) {
    model().sources[1].mode = {1024, 768, 32, 60};
    EXPECT_TRUE(Restore(lines, row.displays));
    EXPECT_EQ(Journal(), Secondary(kSecond, row.mode) + kCommit);
  }
}

TEST_F(Extended, ADepthOrFrequencyOfZeroKeepsTheDevicesOwn) {
  SetModes(0, {{1366, 768, 32, 60}, {1366, 768, 16, 50}, {1024, 768, 16, 50}});
  SetModes(1, {{1024, 768, 16, 75}, {800, 600, 16, 75}});
  model().sources[0].mode = {1366, 768, 16, 50};
  model().sources[1].mode = {1024, 768, 16, 75};
  EXPECT_TRUE(Restore(Five("", 1024, 768, 0, 0, 0) + Five("2", 800, 600, 0, 0, 0)));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x16@50 at 0,0") +
                           Secondary(kSecond, "800x600x16@75 at 1366,0") + kCommit);
}

TEST_F(Extended, DepthAndFrequencyAre32BitsAndSixtyHertzByDefault) {
  model().sources[0].mode = {1366, 768, 16, 60};
  model().sources[1].mode = {1024, 768, 16, 60};
  EXPECT_TRUE(Restore("Width=1024\r\nHeight=768\r\nWidth2=800\r\nHeight2=600\r\n"));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") +
                           Secondary(kSecond, "800x600x32@60 at 1366,0") + kCommit);
}

TEST_F(Extended, TheExternalDisplayIsTurnedAndThePanelIsNot) {
  EXPECT_TRUE(Restore(Five("", 1024, 768, 32, 60, 2) + Five("2", 600, 800, 32, 60, 1)));
  EXPECT_EQ(model().sources[0].orientation, 0u);
  EXPECT_EQ(model().sources[1].orientation, 1u);
  EXPECT_EQ(DesktopOf(model().sources[1]), "600x800x32@60");
}

TEST_F(Extended, ARememberedOrientationOfZeroKeepsTheDevicesOwn) {
  model().sources[1].mode = {768, 1024, 32, 60};
  model().sources[1].orientation = 3;
  EXPECT_TRUE(Restore(Five("", 1024, 768, 32, 60, 0) + Five("2", 600, 800, 32, 60, 0)));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") +
                           Secondary(kSecond, "600x800x32@60 at 1366,0") + kCommit);
  EXPECT_EQ(model().sources[1].orientation, 3u);
}

TEST_F(Extended, ATurnThatIsRefusedIsGivenUpAndNothingElse) {
  EXPECT_TRUE(Restore(Five("", 1024, 768, 32, 60, 0) + Five("2", 800, 600, 16, 60, 1)));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") +
                           Refused(kSecond, "800x600x16@60 at 1366,0", "0xb") +
                           Secondary(kSecond, "800x600x16@60 at 1366,0", kUnturned) + kCommit);
  EXPECT_EQ(model().sources[1].orientation, 0u);
  EXPECT_EQ(TakeLog(), Looked() + "ERROR Call ChangeDisplaySettingsExA() failed, rv = -2\n");
}

// --- What is refused.

TEST_F(Extended, APanelThatRefusesStopsEverything) {
  const std::string steps[] = {
      Step(kFirst, kNativePanel, kPlaced, "0x1b", -1),
      Step(kFirst, kNativePanel, kPlaced, "0x1b", 0) +
          Step(kFirst, kNativePanel, kPlaced, "0x10000019", -1),
      Primary(kFirst, kNativePanel) + Step(kFirst, "1024x768x32@60 at 0,0", kPlaced, "0x1b", -1),
      Primary(kFirst, kNativePanel) + Step(kFirst, "1024x768x32@60 at 0,0", kPlaced, "0x1b", 0) +
          Step(kFirst, "1024x768x32@60 at 0,0", kPlaced, "0x10000019", -1),
  };
  uint32_t call = 1;
  for (const std::string& journal : steps) {
    bench.machine.Fail("ChangeDisplaySettingsExA", call++);
    EXPECT_FALSE(Restore(Both()));
    EXPECT_EQ(Journal(), journal);
    EXPECT_EQ(TakeLog(), Looked() + "ERROR Call ChangeDisplaySettingsExA() failed, rv = -1\n");
  }
}

TEST_F(Extended, ASecondDisplayThatRefusesDoesNotStopTheCommit) {
  EXPECT_TRUE(Restore(Five("", 1024, 768, 32, 60, 0) + Five("2", 1440, 900, 32, 60, 0)));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") +
                           Refused(kSecond, "1440x900x32@60 at 1366,0", "0xb") +
                           Refused(kSecond, "1440x900x32@60 at 1366,0", "0xb", kUnturned) +
                           kCommit);
  EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
}

TEST_F(Extended, ASecondDisplayOfWhichNothingIsRememberedDoesNotStopTheCommit) {
  EXPECT_TRUE(Restore(Five("", 1024, 768, 32, 60, 0) + "Width2=800\r\n"));
  EXPECT_EQ(Journal(),
            Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") + kCommit);
}

TEST_F(Extended, DevicesThatCannotBeReadAreAsIfTheyRefused) {
  bench.machine.Fail("EnumDisplaySettingsA", 1);
  EXPECT_FALSE(Restore(Both()));
  EXPECT_EQ(Journal(), "");
  bench.machine.Fail("EnumDisplaySettingsA", 2);
  EXPECT_FALSE(Restore(Both()));
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel));
  bench.machine.Fail("EnumDisplaySettingsA", 3);
  EXPECT_TRUE(Restore(Both()));
  EXPECT_EQ(Journal(),
            Primary(kFirst, kNativePanel) + Primary(kFirst, "1024x768x32@60 at 0,0") + kCommit);
}

TEST_F(Extended, ACommitThatFailsIsToldWithoutParentheses) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 7);
  EXPECT_FALSE(Restore(Both()));
  EXPECT_EQ(TakeLog(), Looked() + "ERROR Call ChangeDisplaySettingsExA failed, rv = -1\n");
}

TEST_F(Extended, WhatCannotBePutBackGivesWayToTheDefault) {
  Remember(SectionOf(IMMonitor::DM_EXTEND, 0x03), Five("", 1440, 900, 32, 60, 0));
  policy().RestoreDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) +
                           Refused(kFirst, "1440x900x32@60 at 0,0", "0x1b") +
                           Primary(kFirst, kNativePanel) +
                           Secondary(kSecond, "1024x768x32@60 at 1366,0") + kCommit);
}

TEST_F(Extended, WhatWasSavedIsPutBack) {
  bench.script->settings_result = true;
  bench.script->settings.dmPelsWidth = 1024;
  bench.script->settings.dmPelsHeight = 768;
  bench.script->settings.dmBitsPerPel = 32;
  bench.script->settings.dmDisplayFrequency = 60;
  bench.script->on_call = [this](const std::string& call) {
    if (call != "GetDisplaySettings(0, 0x2)") return;
    bench.script->settings.dmPelsWidth = 800;
    bench.script->settings.dmPelsHeight = 600;
  };
  policy().SaveDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  policy().RestoreDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(DesktopOf(model().sources[0]), "1024x768x32@60");
  EXPECT_EQ(DesktopOf(model().sources[1]), "800x600x32@60");
}

class OneDesktop : public Extended {
 protected:
  OneDesktop() : Extended("win7 intel: internal 1366x768 active, crt 1024x768") {}
};

TEST_F(OneDesktop, IsNotTreatedAsAnExtendedOne) {
  EXPECT_FALSE(Restore(Both()));
  Default();
  EXPECT_EQ(Journal(), "");
}

// --- The default.

TEST_F(Extended, ByDefaultBothGetTheirNativeSizesSideBySide) {
  model().sources[0].mode = {800, 600, 16, 60};
  model().sources[1].mode = {640, 480, 16, 60};
  model().sources[1].x = 800;
  model().sources[1].y = 100;
  Default();
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) +
                           Secondary(kSecond, "1024x768x32@60 at 1366,0") + kCommit);
  EXPECT_EQ(TakeLog(), Looked() + Looked());
}

TEST_F(Extended, ByDefaultThePanelIsPlacedWithoutBeingPartOfTheMask) {
  Default(0x02);
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) +
                           Secondary(kSecond, "1024x768x32@60 at 1366,0") + kCommit);
}

TEST_F(Extended, ByDefaultWithoutAnExternalDisplayThePanelIsCommitted) {
  Default(0x41);
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) + kCommit);
}

TEST_F(Extended, ByDefaultAPanelThatRefusesStopsEverything) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 1);
  Default();
  EXPECT_EQ(Journal(), Step(kFirst, kNativePanel, kPlaced, "0x1b", -1));
}

TEST_F(Extended, ByDefaultASecondDisplayThatRefusesDoesNotStopTheCommit) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 3);
  Default();
  EXPECT_EQ(Journal(), Primary(kFirst, kNativePanel) +
                           Step(kSecond, "1024x768x32@60 at 1366,0", kPlaced, "0xb", -1) + kCommit);
}

TEST_F(Extended, ByDefaultACommitThatFailsIsToldInOtherWords) {
  bench.machine.Fail("ChangeDisplaySettingsExA", 5);
  Default();
  EXPECT_EQ(TakeLog(),
            Looked() + Looked() + "ERROR Calling ChangeDisplaySettingsExA() failed: -1\n");
}

TEST_F(Extended, MonitorObjectsAreGivenBack) {
  const std::string before = bench.machine.Outstanding();
  for (int i = 0; i != 3; ++i) {
    EXPECT_TRUE(Restore(Both()));
    Default();
  }
  EXPECT_EQ(bench.machine.Outstanding(), before);
}

// --- StageNativeResolution.

TEST_F(Extended, ANativeSizeKeepsItsPlaceUnlessItIsTold) {
  model().sources[1].y = 50;
  EXPECT_TRUE(policy().StageNativeResolution(IMMonitor::MD_CRT, kSecond, false, nullptr, nullptr));
  EXPECT_EQ(Journal(), Secondary(kSecond, "1024x768x32@60 at 1366,50"));
  DEVMODEA previous = {};
  previous.dmPosition = {1500, 70};
  EXPECT_TRUE(
      policy().StageNativeResolution(IMMonitor::MD_CRT, kSecond, false, &previous, nullptr));
  EXPECT_EQ(Journal(), Secondary(kSecond, "1024x768x32@60 at 1500,0"));
}

TEST_F(Extended, AnUnknownNativeSizeIs1024By768AndToldAlsoWhenItIsRefused) {
  SetModes(1, {{800, 600, 32, 60}});
  DEVMODEA out = {};
  EXPECT_FALSE(policy().StageNativeResolution(IMMonitor::MD_DP, kSecond, false, nullptr, &out));
  EXPECT_EQ(out.dmPelsWidth, 1024u);
  EXPECT_EQ(out.dmPelsHeight, 768u);
  EXPECT_EQ(out.dmPosition.x, 1366);
  EXPECT_EQ(out.dmSize, 156);
  EXPECT_EQ(out.dmFields, 0x5C00A0u);
}

// --- Which device.

TEST_F(Extended, DevicesAreListedInOrderWithoutMirroringDriversAndDarkOnes) {
  EXPECT_EQ(policy().ListDesktopDevices(), (std::vector<std::string>{kFirst, kSecond}));
  model().active.pop_back();
  EXPECT_EQ(policy().ListDesktopDevices(), (std::vector<std::string>{kFirst}));
  model().adapters[0].mirroring = true;
  EXPECT_TRUE(policy().ListDesktopDevices().empty());
}

TEST_F(Extended, ADeviceIsFoundByItsConnector) {
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_NB, "given"), kFirst);
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_CRT, "given"), kSecond);
}

TEST_F(Extended, ADeviceThatIsNotFoundKeepsTheNameItHad) {
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_HDMI, "given"), "given");
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(false, IMMonitor::MD_CRT, "given"), "given");
  bench.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_CRT, "given"), "given");
  bench.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_CRT, "given"), "given");
}

TEST_F(Extended, ADisplayThatHasGoneIsNotFoundThoughItsPathIsStillActive) {
  model().connectors[1].monitor.reset();
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_CRT, "given"), "given");
  model().connectors[1].forced = true;
  EXPECT_EQ(policy().GetDeviceNameOfDisplay(true, IMMonitor::MD_CRT, "given"), kSecond);
}

// The panel hangs on the second device.
class PanelSecond : public Extended {
 protected:
  explicit PanelSecond(
      const std::string& text = "win7 nvidia: crt 1024x768 active, internal 1366x768 active")
      : Extended(text) {}
  void SetUp() override {
    bench.script->vendor = kVendorNvidia;
    bench.script->edid = sim::MakeEdid("Monitor", {800, 600, 32, 60});
    Begin<FakeExtensionMonitor>(kVendorNvidia);
  }
};

TEST_F(PanelSecond, OnNvidiaDevicesAreFoundByConnector) {
  EXPECT_TRUE(Restore(Five("", 1280, 720, 32, 60, 0) + Five("2", 800, 600, 32, 60, 0)));
  EXPECT_EQ(Journal(), Primary(kSecond, kNativePanel) +
                           Primary(kSecond, "1280x720x32@60 at 1024,0") +
                           Secondary(kFirst, "800x600x32@60 at 0,0") + kCommit);
  Default();
  EXPECT_EQ(Journal(), Primary(kSecond, kNativePanel) +
                           Secondary(kFirst, "1024x768x32@60 at 1366,0") + kCommit);
}

TEST_F(PanelSecond, WithAnyOtherVendorTheFirstDeviceCountsAsThePanels) {
  bench.script->vendor = kVendorIntel;
  EXPECT_FALSE(Restore(Both()));
  EXPECT_EQ(Journal(), Refused(kFirst, kNativePanel, "0x1b"));
}

TEST_F(PanelSecond, OnNvidiaADisplayThatIsNotActiveIsNotStored) {
  EXPECT_TRUE(Restore(Five("", 1280, 720, 32, 60, 0) + Five("16", 800, 600, 32, 60, 0), 0x11));
  EXPECT_EQ(Journal(), Primary(kSecond, kNativePanel) +
                           Primary(kSecond, "1280x720x32@60 at 1024,0") + kCommit);
}

TEST_F(PanelSecond, OnNvidiaWithoutTheDisplayConfigurationNothingIsStored) {
  bench.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(Restore(Both()));
  Default();
  EXPECT_EQ(Journal(), "");
}

class PanelSecondOnVista : public PanelSecond {
 protected:
  PanelSecondOnVista()
      : PanelSecond("vista nvidia: crt 1024x768 active, internal 1366x768 active") {}
};

TEST_F(PanelSecondOnVista, BelowWindows7TheFirstDeviceCountsAsThePanelsOnNvidiaToo) {
  Default();
  EXPECT_EQ(Journal(), Primary(kFirst, "800x600x32@60 at 0,0") +
                           Secondary(kSecond, "800x600x32@60 at 800,0") + kCommit);
}

// --- What throws.

class Throwing : public Extended {
 protected:
  Throwing() : Extended("vista intel: internal 1366x768 active, crt 1024x768 active") {}
  void SetUp() override {
    bench.script->initial_extension = false;
    Begin<FakeExtensionMonitor>();
  }
};

TEST_F(Throwing, AMonitorThatCannotBeAskedEndsTheRestoreInTheLog) {
  EXPECT_FALSE(Restore(Both()));
  EXPECT_EQ(Journal(), "");
  EXPECT_EQ(TakeLog(),
            "ERROR Exception occurred: call IDisplayExtension::InitialExtension failed\n");
}

TEST_F(Throwing, AndTheDefaultLikewise) {
  Default();
  EXPECT_EQ(Journal(), "");
  EXPECT_EQ(TakeLog(),
            "ERROR Exception occurred: call IDisplayExtension::InitialExtension failed\n");
}

TEST_F(Throwing, ARestoreThatThrewGoesOnWithTheDefault) {
  Remember(SectionOf(IMMonitor::DM_EXTEND, 0x03), Both());
  policy().RestoreDisplaySettings(IMMonitor::DM_EXTEND, 0x03);
  EXPECT_EQ(CountOf(TakeLog(), "Exception occurred: "), 2u);
}

TEST_F(Throwing, AnExternalDisplayAloneNeedsNoMonitor) {
  EXPECT_TRUE(Restore(Both(), 0x02));
  EXPECT_EQ(Journal(), Secondary(kSecond, "800x600x32@60 at 1366,0") + kCommit);
}

}  // namespace
