// Connected, active and current on two adapters: whose word counts for which display.
#include <gtest/gtest.h>

#include "tests/behaviour/HybridHost.h"

namespace {

constexpr uint32_t kSingle = IMMonitor::DM_SINGLE;
constexpr uint32_t kClone = IMMonitor::DM_CLONE;
constexpr uint32_t kExtend = IMMonitor::DM_EXTEND;

/// "0x11 (2)", or "failed"; both outputs hold rubbish before.
std::string Connected(HybridHost* host) {
  uint32_t displays = 0xAAAA;
  uint32_t count = 0xBBBB;
  const BOOL known = host->hybrid().GetConnectedDisplays(&displays, &count);
  return known == 1 ? Hex(displays) + " (" + std::to_string(count) + ")" : "failed";
}
std::string Active(HybridHost* host) {
  uint32_t displays = 0xAAAA;
  uint32_t count = 0xBBBB;
  const BOOL known = host->hybrid().GetActiveDisplays(&displays, &count);
  return known == 1 ? Hex(displays) + " (" + std::to_string(count) + ")" : "failed";
}
std::string Mode(HybridHost* host) {
  uint32_t mode = 0xEE;
  uint32_t displays = 0xEE;
  const BOOL known = host->hybrid().GetCurrentDisplayMode(&mode, &displays);
  return known == 1 ? std::to_string(mode) + " " + Hex(displays) : "failed";
}

// --- Connected.

TEST(HybridConnected, AsksAllThreeInOrder) {
  HybridHost host;
  host.Connected(kNb | kCrt, kHdmi | kDp);
  EXPECT_EQ(Connected(&host), "0x33 (4)");
  EXPECT_EQ(host.Told(),
            "intel GetConnectedDisplays\nccd GetConnectedDisplays\nccd GetCurrentDisplayMode\n"
            "nvidia GetConnectedDisplays\nnvidia GetVgaVendor\n");
}

TEST(HybridConnected, CountsTheBitsAndNotTheReports) {
  HybridHost host;
  host.Connected(kNb | kCrt, kHdmi);
  host.ccd->connected = kNb | kCrt | kTv;
  host.intel->connected_count = 9;
  host.ccd->connected_count = 9;
  host.nvidia->connected_count = 9;
  EXPECT_EQ(Connected(&host), "0x17 (4)");
}

TEST(HybridConnected, NeverTakesHdmiFromWindows) {
  HybridHost host;
  host.Connected(kNb, 0);
  host.ccd->connected = kNb | kHdmi | kDp | kDvi | kTv;
  EXPECT_EQ(Connected(&host), "0x2d (4)");
  host.Mode(host.ccd.get(), kClone, kNb);
  EXPECT_EQ(Connected(&host), "0x2d (4)");
}

TEST(HybridConnected, NeverTakesCrtFromNvidia) {
  HybridHost host;
  host.Connected(kNb, kCrt | kHdmi | kNb | kTv | kDvi);
  EXPECT_EQ(Connected(&host), "0x1d (4)");
}

TEST(HybridConnected, TakesCrtFromASecondObjectOfAnotherVendor) {
  HybridHost host;
  host.Connected(kNb, kCrt | kHdmi);
  host.nvidia->vendor = kVendorIntel;
  EXPECT_EQ(Connected(&host), "0x13 (3)");
}

TEST(HybridConnected, CloneInWindowsWipesIntelsWord) {
  HybridHost host;
  host.Connected(kNb | kCrt, kHdmi);
  host.ccd->connected = kNb | kHdmi | kDp;
  host.Mode(host.ccd.get(), kClone, kNb | kCrt);
  EXPECT_EQ(Connected(&host), "0x31 (3)");
  for (const uint32_t mode : {kSingle, kExtend, 0u}) {
    host.Mode(host.ccd.get(), mode, kNb | kCrt);
    EXPECT_EQ(Connected(&host), "0x33 (4)") << mode;
  }
}

TEST(HybridConnected, IsOneWhateverFailed) {
  for (uint32_t failing = 0; failing < 8; ++failing) {
    HybridHost host;
    host.Connected(kNb, kHdmi);
    host.ccd->connected = kCrt;
    host.intel->connected_result = (failing & 1) != 0 ? 0 : 1;
    host.ccd->connected_result = (failing & 2) != 0 ? 0 : 1;
    host.nvidia->connected_result = (failing & 4) != 0 ? 0 : 1;
    uint32_t expected = 0;
    if ((failing & 1) == 0) expected |= kNb;
    if ((failing & 2) == 0) expected |= kCrt;
    if ((failing & 4) == 0) expected |= kHdmi;
    EXPECT_EQ(Connected(&host), Hex(expected) + " (" + std::to_string(CountBits(expected)) + ")");
    // What failed is not asked further.
    const std::string told = host.Told();
    EXPECT_EQ(CountOf(told, "ccd GetCurrentDisplayMode"), (failing & 2) != 0 ? 0u : 1u);
    EXPECT_EQ(CountOf(told, "nvidia GetVgaVendor"), (failing & 4) != 0 ? 0u : 1u);
  }
}

TEST(HybridConnected, ChecksItsArguments) {
  HybridHost host(kFour, kChecked);
  IMMonitor& hybrid = host.hybrid();
  host.Forget();
  uint32_t number = 7;
  EXPECT_EQ(hybrid.GetConnectedDisplays(nullptr, &number), 0);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: displays != NULL. \n");
  EXPECT_EQ(hybrid.GetConnectedDisplays(&number, nullptr), 0);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: display_count != NULL. \n");
  EXPECT_EQ(host.Told(), "");
}

// Win7CCD adds to what it finds in the outputs.
TEST(HybridConnected, WindowsOwnObjectStartsFromNothing) {
  HybridHost host;
  IMMonitor& hybrid = host.HybridOverWindows();
  host.Connected(kNb, 0);
  host.intel->connected = kTv;
  host.intel->connected_result = 0;
  uint32_t displays = 0;
  uint32_t count = 0;
  EXPECT_EQ(hybrid.GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, kNb | kCrt | kDp);
  EXPECT_EQ(count, 3u);
}

// --- Active.

TEST(HybridActive, AddsUpBothAdaptersCountsIncluded) {
  HybridHost host;
  host.Mode(host.intel.get(), kExtend, kNb | kCrt);
  host.Mode(host.nvidia.get(), kExtend, kNb | kHdmi);
  EXPECT_EQ(Active(&host), "0x13 (4)");
  EXPECT_EQ(host.Told(), "intel GetActiveDisplays\nnvidia GetActiveDisplays\n");
}

TEST(HybridActive, FailureOfEitherIsOne) {
  HybridHost host;
  host.intel->active_result = 0;
  EXPECT_EQ(Active(&host), "failed");
  host.intel->active_result = 1;
  host.nvidia->active_result = 0;
  EXPECT_EQ(Active(&host), "failed");
  uint32_t number = 0;
  EXPECT_EQ(host.hybrid().GetActiveDisplays(nullptr, &number), 0);
  EXPECT_EQ(host.hybrid().GetActiveDisplays(&number, nullptr), 0);
}

// --- The current mode.

TEST(HybridCurrentMode, AsksInOrderAndAllOfThem) {
  HybridHost host;
  host.intel->mode_result = 0;
  host.nvidia->mode_result = 0;
  EXPECT_EQ(Mode(&host), "failed");
  EXPECT_EQ(host.Told(),
            "intel GetCurrentDisplayMode\nintel GetConnectedDisplays\nccd GetCurrentDisplayMode\n"
            "nvidia GetCurrentDisplayMode\nnvidia GetConnectedDisplays\n"
            "nvidia GetActiveDisplays\n");
}

/// Three displays, extended over both adapters.
void Extended(HybridHost* host) {
  host->Connected(kNb | kCrt, kHdmi | kDp);
  host->Mode(host->intel.get(), kExtend, kNb | kCrt);
  host->Mode(host->ccd.get(), kExtend, kNb | kCrt);
  host->Mode(host->nvidia.get(), kExtend, kHdmi);
}

TEST(HybridCurrentMode, RuleByRule) {
  HybridHost host;
  Extended(&host);
  EXPECT_EQ(Mode(&host), "128 0x13");
  host.ccd->mode = kClone;
  EXPECT_EQ(Mode(&host), "256 0x13");
  host.intel->mode_result = 0;
  EXPECT_EQ(Mode(&host), "4 0x10");
  host.intel->mode_result = 1;
  host.nvidia->mode_result = 0;
  EXPECT_EQ(Mode(&host), "4 0x3");
  host.nvidia->mode_result = 1;
  host.nvidia->connected_count = 0;
  EXPECT_EQ(Mode(&host), "4 0x3");
  host.nvidia->connected_count = 1;
  host.intel->connected_count = 1;
  host.intel->active = kNb;
  EXPECT_EQ(Mode(&host), "4 0x11");
  host.Mode(host.nvidia.get(), kClone, kNb | kHdmi);
  host.intel->connected_count = 2;
  host.intel->mode = kSingle;
  EXPECT_EQ(Mode(&host), "2 0x11");
}

// One display on Intel's side, the panel, makes NVIDIA's extension one with the panel.
TEST(HybridCurrentMode, IntelsConnectedDisplaysAreCountedAndNotNvidias) {
  HybridHost host;
  Extended(&host);
  host.ccd->mode = kSingle;
  host.Mode(host.intel.get(), kSingle, kNb);
  host.intel->connected_count = 1;
  host.nvidia->connected_count = 2;
  EXPECT_EQ(Mode(&host), "4 0x11");
  host.intel->connected_count = 2;
  host.nvidia->connected_count = 1;
  EXPECT_EQ(Mode(&host), "256 0x11");
}

/// Fails to list displays, and leaves the outputs as they are.
class SilentMonitor : public FakeMonitor {
 public:
  using FakeMonitor::FakeMonitor;
  BOOL GetConnectedDisplays(uint32_t*, uint32_t*) override { return 0; }
  BOOL GetActiveDisplays(uint32_t*, uint32_t*) override { return 0; }
};

TEST(HybridCurrentMode, WhatAnObjectDoesNotWriteIsNothing) {
  HybridHost host;
  host.HybridOver(new FakeMonitor(host.intel), new SilentMonitor(host.nvidia),
                  new FakeCcd(host.ccd, host.sizes));
  Extended(&host);
  EXPECT_EQ(Mode(&host), "4 0x3");  // none connected: Intel's answer
  host.HybridOver(new SilentMonitor(host.intel), new FakeMonitor(host.nvidia),
                  new FakeCcd(host.ccd, host.sizes));
  host.ccd->mode = kSingle;
  host.Mode(host.intel.get(), kSingle, kNb);
  EXPECT_EQ(Mode(&host), "256 0x11");  // not one display on Intel's side
}

TEST(HybridCurrentMode, AgreedModeWithoutIntelsDisplaysTakesWindows) {
  HybridHost host;
  Extended(&host);
  host.Mode(host.intel.get(), kSingle, 0);
  host.Mode(host.nvidia.get(), kSingle, kHdmi);
  host.Mode(host.ccd.get(), kSingle, kCrt | kHdmi | kDp);
  EXPECT_EQ(Mode(&host), "1 0x12");
}

// NVIDIA's active displays count in two rules; its mode names others.
TEST(HybridCurrentMode, NvidiasActiveDisplaysAreAskedForThemselves) {
  HybridHost host;
  Extended(&host);
  host.ccd->mode = kSingle;
  uint32_t asked = 0;
  host.nvidia->on_call = [&](const std::string& call) {
    if (call == "GetActiveDisplays") host.nvidia->active = kDp;
    if (call == "GetCurrentDisplayMode") host.nvidia->active = kHdmi;
    ++asked;
  };
  EXPECT_EQ(Mode(&host), "256 0x23");
  EXPECT_EQ(asked, 3u);
}

// What Windows' object has in its outputs before counts for nothing when it fails.
TEST(HybridCurrentMode, FailureOfWindowsObjectIsAModeOfNothing) {
  HybridHost host("win7 intel, nvidia: internal 1366x768 active, crt 1280x1024 active");
  IMMonitor& hybrid = host.HybridOverWindows();
  Extended(&host);
  uint32_t mode = 0;
  uint32_t displays = 0;
  EXPECT_EQ(hybrid.GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(mode, uint32_t{IMMonitor::DM_ADVANCED_P1});
  host.machine.Fail("QueryDisplayConfig", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(hybrid.GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(mode, uint32_t{IMMonitor::DM_ADVANCED_P2});
}

TEST(HybridCurrentMode, ChecksItsArguments) {
  HybridHost host(kFour, kChecked);
  IMMonitor& hybrid = host.hybrid();
  host.Forget();
  uint32_t number = 7;
  EXPECT_EQ(hybrid.GetCurrentDisplayMode(nullptr, &number), 0);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: mode != NULL. \n");
  EXPECT_EQ(hybrid.GetCurrentDisplayMode(&number, nullptr), 0);
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT Check failed: displays != NULL. \n");
  EXPECT_EQ(host.Told(), "");
}

}  // namespace
