// The driver's hotkey in place of a switch to HDMI or DVI alone: for whom, and how.
#include <gtest/gtest.h>

#include "sim/EdidMaker.h"
#include "tests/behaviour/IntelHost.h"
#include "tests/support/EdidBlock.h"

namespace {

constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr char kMachine[] =
    "win7 intel: internal 1366x768 active, hdmi 1920x1080, dvi 1920x1080, crt 1024x768";
constexpr char kSection[] = "Single External";
constexpr char kListedDevice[] = "PCI\\VEN_8086&DEV_2A42&SUBSYS_02AA1028&REV_07";

std::string Press() {
  return "SetForegroundWindow(desktop)=1\n"
         "keybd_event(key=162 scan=29 flags=0)\n"
         "keybd_event(key=164 scan=56 flags=0)\n"
         "keybd_event(key=115 scan=62 flags=0)\n"
         "keybd_event(key=115 scan=62 flags=2)\n"
         "keybd_event(key=164 scan=56 flags=2)\n"
         "keybd_event(key=162 scan=29 flags=2)\n"
         "SetForegroundWindow(0x4f0001)=1\n";
}

/// A notebook on both usual lists.
struct HotkeyHost : IntelHost {
  explicit HotkeyHost(const std::string& text = kMachine) : IntelHost(text) {
    machine.Config(kSection, "Intel HDMI Workaround", 1);
    model().adapters[0].hardware_id = kListedDevice;
    NameMonitor("Veld TV4810");
  }

  void NameMonitor(const std::string& name) {
    sim::Monitor& monitor = *model().connectors[1].monitor;
    monitor.edid = sim::MakeEdid(name, monitor.preferred);
  }
  /// Whether the hotkey stands in for a switch to that display alone.
  bool Presses(uint32_t display = IMMonitor::MD_HDMI) {
    EXPECT_EQ(Switch(kSingle, display), "1");
    const std::string journal = machine.TakeJournal();
    const bool pressed = CountOf(journal, "keybd_event") != 0;
    EXPECT_NE(pressed, CountOf(journal, "ICUIExternal8::ChangeActiveDevices") != 0) << journal;
    return pressed;
  }
};

TEST(IntelHotkey, SwitchToHdmiAloneFromEndToEnd) {
  HotkeyHost host;
  host.machine.Config("Settings:Intel", "Support Aspect Ratio Workaround", 1);
  EXPECT_EQ(host.SwitchProtocol(kSingle, IMMonitor::MD_HDMI),
            kEnumDevices + Downgrade() + kSleepSecond + kPreload + kEnumDevices +
                kGetAspectScaling + Press() + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");  // no driver listens to the keys here
}

TEST(IntelHotkey, WithoutAspectFromEndToEnd) {
  HotkeyHost host;
  EXPECT_EQ(host.SwitchProtocol(kSingle, IMMonitor::MD_HDMI),
            kEnumDevices + Downgrade() + kSleepSecond + kPreload + Press() + "1");
}

TEST(IntelHotkey, StandsInForDviToo) {
  HotkeyHost host;
  EXPECT_TRUE(host.Presses(IMMonitor::MD_DVI));
}

TEST(IntelHotkey, StandsInForNothingElse) {
  HotkeyHost host;
  EXPECT_FALSE(host.Presses(IMMonitor::MD_CRT));
  EXPECT_FALSE(host.Presses(IMMonitor::MD_NB));
  EXPECT_EQ(host.Switch(IMMonitor::DM_CLONE, IMMonitor::MD_NB | IMMonitor::MD_HDMI), "1");
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "keybd_event"), 0u);
}

TEST(IntelHotkey, NeedsNoAttachedDeviceAndNoListedUid) {
  HotkeyHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  host.Forget();
  host.machine.Fail("EnumDisplayDevicesA", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, WindowThatWasInFrontComesBack) {
  HotkeyHost host;
  host.machine.state().windows.foreground = reinterpret_cast<HWND>(uintptr_t{0x1234});
  host.Switch(kSingle, IMMonitor::MD_HDMI);
  EXPECT_EQ(host.machine.state().windows.foreground, reinterpret_cast<HWND>(uintptr_t{0x1234}));
}

// --- For whom.

TEST(IntelHotkey, IsOffByDefault) {
  HotkeyHost host;
  host.machine.Config(kSection, "Intel HDMI Workaround", 0);
  EXPECT_FALSE(host.Presses());
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA"), 0u);  // nothing further is looked at
}

// Monitors are asked for their names last, where the device is a listed one.
TEST(IntelHotkey, NotForAnotherDevice) {
  for (const bool listed : {true, false}) {
    HotkeyHost host;
    if (!listed) {
      host.model().adapters[0].hardware_id = "PCI\\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09";
    }
    host.intel();
    const uint32_t before = host.machine.Calls("SetupDiOpenDevRegKey");
    EXPECT_EQ(host.Presses(), listed);
    EXPECT_EQ(host.machine.Calls("SetupDiOpenDevRegKey") != before, listed);
  }
}

TEST(IntelHotkey, EveryIntelDeviceMayCountAsListed) {
  HotkeyHost host;
  host.model().adapters[0].hardware_id = "PCI\\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09";
  host.machine.Config(kSection, "Always Assume Device Has Problem", 1);
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, FirstDeviceDecidesAndMustBeIntels) {
  HotkeyHost host("win7 nvidia*1, intel: internal@2 1366x768 active, hdmi@2 1920x1080, crt@1");
  host.machine.Config(kSection, "Always Assume Device Has Problem", 1);
  host.model().adapters[0].hardware_id = "PCI\\VEN_10DE&DEV_2A42&SUBSYS_397717AA&REV_09";
  EXPECT_FALSE(host.Presses());
}

TEST(IntelHotkey, DeviceThatCannotBeReadIsNotIntels) {
  HotkeyHost host;
  host.machine.Config(kSection, "Always Assume Device Has Problem", 1);
  host.model().adapters[0].hardware_id_readable = false;
  EXPECT_FALSE(host.Presses());
  host.model().adapters[0].hardware_id_readable = true;
  EXPECT_FALSE(host.Presses());  // it was read once, for good
}

TEST(IntelHotkey, ConfiguredDevicesTakeThePlaceOfTheUsualOne) {
  HotkeyHost host;
  host.machine.Config(kSection, "Display Device ID 1", 0x0102);
  EXPECT_FALSE(host.Presses());
}

TEST(IntelHotkey, ConfiguredDevicesCountUpToTheFirstZero) {
  HotkeyHost host;
  host.machine.Config(kSection, "Display Device ID 1", 0x0102);
  host.machine.Config(kSection, "Display Device ID 2", 0x2A42);
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, DeviceBehindAGapDoesNotCount) {
  HotkeyHost host;
  host.machine.Config(kSection, "Display Device ID 1", 0x0102);
  host.machine.Config(kSection, "Display Device ID 3", 0x2A42);
  EXPECT_FALSE(host.Presses());
}

TEST(IntelHotkey, FirstDeviceOfZeroCountsAsNoKey) {
  HotkeyHost host;
  host.machine.Config(kSection, "Display Device ID 1", 0);
  host.machine.Config(kSection, "Display Device ID 2", 0x0102);
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, BothUsualMonitorsAreListed) {
  HotkeyHost host;
  host.NameMonitor("BenQ 241W Z");
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, NamesAreComparedWholeAndByCase) {
  for (const char* name : {"Veld TV481", "Veld TV48100", "veld tv4810", "BenQ 241W"}) {
    HotkeyHost host;
    host.NameMonitor(name);
    EXPECT_FALSE(host.Presses()) << name;
  }
}

TEST(IntelHotkey, EveryMonitorMayCountAsListed) {
  HotkeyHost host;
  host.NameMonitor("Other");
  host.machine.Config(kSection, "Always Assume Monitor Has Problem", 1);
  EXPECT_TRUE(host.Presses());
}

// Nor is the list of monitors read then: it is still to be had afterwards.
TEST(IntelHotkey, WithoutMonitorNamesThereIsNoneAndNoListIsRead) {
  HotkeyHost host;
  for (sim::Connector& connector : host.model().connectors) {
    connector.monitor->edid = EdidBlock().bytes();
  }
  EXPECT_FALSE(host.Presses());
  host.machine.Config(kSection, "HDMI Monitor 1", "Acme");
  host.NameMonitor("Acme");
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, ConfiguredMonitorTakesThePlaceOfBothUsualOnes) {
  for (const char* name : {"Veld TV4810", "BenQ 241W Z"}) {
    HotkeyHost host;
    host.machine.Config(kSection, "HDMI Monitor 1", "Acme");
    host.NameMonitor(name);
    EXPECT_FALSE(host.Presses()) << name;
  }
}

TEST(IntelHotkey, ConfiguredMonitorsCountUpToTheFirstEmptyOne) {
  HotkeyHost host;
  host.machine.Config(kSection, "HDMI Monitor 1", "Acme");
  host.machine.Config(kSection, "HDMI Monitor 2", "Other");
  host.machine.Config(kSection, "HDMI Monitor 4", "Veld TV4810");
  EXPECT_FALSE(host.Presses());
  host.NameMonitor("Other");
  EXPECT_TRUE(host.Presses());
}

TEST(IntelHotkey, ListsAreReadOnce) {
  HotkeyHost host;
  EXPECT_TRUE(host.Presses());
  host.machine.Config(kSection, "Display Device ID 1", 0x0102);
  host.machine.Config(kSection, "HDMI Monitor 1", "Acme");
  host.machine.Config(kSection, "Intel HDMI Workaround", 0);
  EXPECT_TRUE(host.Presses());
}

}  // namespace
