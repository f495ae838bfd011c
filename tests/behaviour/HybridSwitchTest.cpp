// Ordinary modes and extended desktop on two adapters: who switches, and what goes before.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridHost.h"

namespace {

constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kExtend = IMMonitor::DM_EXTEND;

constexpr char kAskConnected[] =
    "intel GetConnectedDisplays\nccd GetConnectedDisplays\nccd GetCurrentDisplayMode\n"
    "nvidia GetConnectedDisplays\nnvidia GetVgaVendor\n";
constexpr char kAskMode[] =
    "intel GetCurrentDisplayMode\nintel GetConnectedDisplays\nccd GetCurrentDisplayMode\n"
    "nvidia GetCurrentDisplayMode\nnvidia GetConnectedDisplays\nnvidia GetActiveDisplays\n";
constexpr char kClear[] = "nvidia ApplyCrossAdapterClone(0x0)\n";
constexpr char kExtendFirst[] = "ccd EnableExtendMode(1)\n";

std::string Set(const char* object, uint32_t mode, uint32_t displays) {
  return std::string(object) + " SetNewDisplayMode(" + std::to_string(mode) + ", " + Hex(displays) +
         ")\n";
}

/// The machine is in a clone of these displays: both adapters say so.
void CloneOf(HybridHost* host, uint32_t displays) {
  host->Connected(kNb | kCrt, kHdmi);
  host->Mode(host->intel.get(), kClone, displays & (kNb | kCrt));
  host->Mode(host->nvidia.get(), kClone, displays & (kHdmi | kDp));
}

// --- Clone with a digital display.

TEST(HybridSwitch, CloneOnHdmiOrDisplayPortIsNvidiasWhole) {
  for (const uint32_t displays : {kNb | kHdmi, kNb | kDp, kCrt | kHdmi, kNb | kCrt | kDp}) {
    HybridHost host;
    EXPECT_EQ(host.Switch(kClone, displays), Set("nvidia", kClone, displays) + "1");
    host.nvidia->set_result = 0;
    EXPECT_EQ(host.Switch(kClone, displays), Set("nvidia", kClone, displays) + "0");
  }
}

// --- Ordinary modes.

TEST(HybridSwitch, OrdinaryModeClearsGroupsReadsTheModeAndIsWindows) {
  const struct {
    uint32_t mode;
    uint32_t displays;
  } rows[] = {
      {kSingle, kNb},
      {kSingle, kHdmi},
      {kSingle, kDp},
      {kClone, kNb | kCrt},
      {kClone, kNb | kDvi},
      {kExtend, kHdmi},
      {8, kNb},
      {IMMonitor::DM_TRIPLE_EXTEND, 0x13},
      {0, 0},
  };
  for (const auto& row : rows) {
    HybridHost host;
    const std::string expected =
        std::string(kAskConnected) + kClear + kAskMode + Set("ccd", row.mode, row.displays);
    EXPECT_EQ(host.Switch(row.mode, row.displays), expected + "1");
    host.ccd->set_result = 0;
    EXPECT_EQ(host.Switch(row.mode, row.displays), expected + "0");
  }
}

TEST(HybridSwitch, CloneWithoutHdmiLeadsOverExtendedDesktop) {
  for (const uint32_t current : {kNb | kCrt, kNb | kDp}) {
    for (const uint32_t mode : {kSingle, kClone, kExtend}) {
      HybridHost host;
      CloneOf(&host, current);
      EXPECT_EQ(host.Switch(mode, kNb | kCrt), std::string(kAskConnected) + kClear + kAskMode +
                                                   kExtendFirst + Set("ccd", mode, kNb | kCrt) +
                                                   "1");
    }
  }
}

TEST(HybridSwitch, CloneOnHdmiIsClearedTwiceAndLeadsOverExtendedDesktop) {
  HybridHost host;
  CloneOf(&host, kNb | kHdmi);
  for (const uint32_t mode : {kSingle, kExtend}) {
    EXPECT_EQ(host.Switch(mode, kCrt), std::string(kAskConnected) + kClear + kAskMode + kClear +
                                           kExtendFirst + Set("ccd", mode, kCrt) + "1");
  }
  EXPECT_EQ(host.Switch(kClone, kNb | kDvi), std::string(kAskConnected) + kClear + kAskMode +
                                                 kClear + kExtendFirst +
                                                 Set("ccd", kClone, kNb | kDvi) + "1");
}

TEST(HybridSwitch, CrtCloneOutOfAnHdmiCloneDoesNotExtendFirst) {
  HybridHost host;
  CloneOf(&host, kNb | kHdmi);
  EXPECT_EQ(host.Switch(kClone, kNb | kCrt), std::string(kAskConnected) + kClear + kAskMode +
                                                 kClear + Set("ccd", kClone, kNb | kCrt) + "1");
}

TEST(HybridSwitch, NothingOnTheWayIsLookedAt) {
  HybridHost host;
  CloneOf(&host, kNb | kHdmi);
  host.clone_result = 0;
  host.ccd->extend_result = 0;
  EXPECT_EQ(host.Switch(kSingle, kNb), std::string(kAskConnected) + kClear + kAskMode + kClear +
                                           kExtendFirst + Set("ccd", kSingle, kNb) + "1");
}

TEST(HybridSwitch, UnknownModeIsNoClone) {
  HybridHost host;
  CloneOf(&host, kNb | kHdmi);
  host.intel->mode_result = 0;
  host.nvidia->mode_result = 0;
  EXPECT_EQ(host.Switch(kSingle, kNb),
            std::string(kAskConnected) + kClear + kAskMode + Set("ccd", kSingle, kNb) + "1");
}

TEST(HybridSwitch, ObjectWithoutCloneGroupsHasNothingCleared) {
  HybridHost host;
  CloneOf(&host, kNb | kHdmi);
  IMMonitor& hybrid = host.HybridOver(new FakeMonitor(host.intel), new FakeMonitor(host.nvidia),
                                      new FakeCcd(host.ccd, host.sizes));
  EXPECT_EQ(hybrid.SetNewDisplayMode(kSingle, kNb), 1);
  EXPECT_EQ(host.Told(),
            std::string(kAskConnected) + kAskMode + kExtendFirst + Set("ccd", kSingle, kNb));
}

// --- Extended desktop.

TEST(HybridExtend, PanelAloneThenIntelThenNvidiaThenWindows) {
  const std::string panel = Set("ccd", kSingle, kNb);
  for (const BOOL enable : {1, 0}) {
    const std::string on = std::to_string(enable);
    const std::string ask = "EnableExtendModeOnDisplays(" + on + ", 0x10)\n";
    HybridHost host;
    const auto extend = [&host, enable] {
      const BOOL result = host.hybrid().EnableExtendModeOnDisplays(enable, kHdmi);
      return host.Told() + std::to_string(result);
    };
    host.ccd->set_result = 0;  // not looked at
    host.intel->extend_result = 5;
    EXPECT_EQ(extend(), panel + "intel " + ask + "1");
    host.intel->extend_result = 0;
    host.nvidia->extend_result = 5;
    EXPECT_EQ(extend(), panel + "intel " + ask + "nvidia " + ask + "1");
    host.nvidia->extend_result = 0;
    host.ccd->extend_result = 5;
    const std::string all =
        panel + "intel " + ask + "nvidia " + ask + "ccd EnableExtendMode(" + on + ")\n";
    EXPECT_EQ(extend(), all + "1");
    host.ccd->extend_result = 0;
    EXPECT_EQ(extend(), all + "0");
  }
}

TEST(HybridExtend, WithoutDisplaysItIsWindows) {
  HybridHost host;
  EXPECT_EQ(host.hybrid().EnableExtendMode(1), 1);
  EXPECT_EQ(host.Told(), "ccd EnableExtendMode(1)\n");
  host.ccd->extend_result = 0;
  EXPECT_EQ(host.hybrid().EnableExtendMode(0), 0);
  EXPECT_EQ(host.Told(), "ccd EnableExtendMode(0)\n");
}

TEST(HybridExtend, PanelAloneIsWindows) {
  HybridHost host;
  EXPECT_EQ(host.hybrid().ChangeToNBOnlySingleDisplayMode(), 1);
  EXPECT_EQ(host.Told(), Set("ccd", kSingle, kNb));
  host.ccd->set_result = 0;
  EXPECT_EQ(host.hybrid().ChangeToNBOnlySingleDisplayMode(), 0);
}

}  // namespace
