// Which displays NvidiaMMImplV2 reports as connected and active, and in which mode.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr char kClone[] =
    "win7 nvidia: clone internal 1366x768 active, crt 1366x768 active, hdmi 1920x1080";
constexpr char kExtended[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080 active";
constexpr char kTwoGpus[] = "win7 nvidia, nvidia: internal 1366x768 active, hdmi@2 1920x1080";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";

// --- Connected displays.

TEST(NvidiaV2Connected, ReportsWhatHangsOnTheGpu) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, crt 1024x768, hdmi, dp 1920x1080");
  EXPECT_EQ(host.Connected(), "0x23 (3)");
  host.machine.Unplug("crt");
  EXPECT_EQ(host.Connected(), "0x21 (2)");
}

TEST(NvidiaV2Connected, FirstGpuWithADisplayBecomesTheCurrentOne) {
  NvidiaHost host(kTwoGpus);
  EXPECT_EQ(host.Connected(), "0x1 (1)");
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(0));
  host.machine.Unplug("internal");
  host.Connected();
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(1));
  host.machine.Unplug("hdmi");
  host.Connected();
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(0));
}

TEST(NvidiaV2Connected, SecondGpuIsNotAskedWhereTheFirstHasADisplay) {
  NvidiaHost host(kTwoGpus);
  host.Connected();
  EXPECT_EQ(host.machine.Calls("NvAPI_GPU_GetConnectedOutputs"), 1u);
}

TEST(NvidiaV2Connected, GpuThatFailsIsPassedOver) {
  NvidiaHost host(kTwoGpus);
  host.Forget();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  host.Connected();
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(1));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Connected, NoDisplayAnywhereIsASuccessWithNothing) {
  NvidiaHost host(kMachine);
  host.nv();
  host.machine.Unplug("internal");
  host.machine.Unplug("hdmi");
  EXPECT_EQ(host.Connected(), "0x0 (0)");
}

TEST(NvidiaV2Connected, EveryGpuFailingIsASuccessWithNothing) {
  NvidiaHost host(kTwoGpus);
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Connected(), "0x0 (0)");
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(0));
}

TEST(NvidiaV2Connected, WithoutGpusIsAFailureThatClearsTheOutputs) {
  NvidiaHost host(kMachine);
  host.ostrel();
  host.machine.Fail("NvAPI_EnumPhysicalGPUs", 1);
  uint32_t displays = 0xEE;
  uint32_t count = 0xEE;
  EXPECT_EQ(host.nv().GetConnectedDisplays(&displays, &count), 0);
  EXPECT_EQ(displays, 0u);
  EXPECT_EQ(count, 0u);
}

TEST(NvidiaV2Connected, MissingPlacesFailTheirChecks) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  uint32_t number = 0;
  EXPECT_EQ(host.nv().GetConnectedDisplays(nullptr, nullptr), 0);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: imm_displays != NULL. \nCheck failed: display_count != NULL. \n");
  EXPECT_EQ(host.nv().GetConnectedDisplays(nullptr, &number), 0);
  EXPECT_EQ(host.nv().GetConnectedDisplays(&number, nullptr), 0);
}

// --- Active displays.

TEST(NvidiaV2Active, ReportsWhatShowsADesktop) {
  NvidiaHost host(kClone);
  EXPECT_EQ(host.Active(), "0x3 (2)");
}

TEST(NvidiaV2Active, AsksTheCurrentGpu) {
  NvidiaHost host("win7 nvidia, nvidia: crt 1024x768 active, internal@2 1366x768 active");
  EXPECT_EQ(host.Active(), "0x2 (1)");
  host.machine.Unplug("crt");
  host.Connected();
  host.machine.JournalReads(true);
  host.Active();
  EXPECT_EQ(CountOf(host.machine.Journal(), "NvAPI_GPU_GetActiveOutputs(gpu=1)=0\n"), 1u)
      << host.machine.Journal();
}

TEST(NvidiaV2Active, NoneLeavesTheOutputsAndIsASuccess) {
  NvidiaHost host("win7 nvidia, intel: crt 1024x768, internal@2 1366x768 active", kChecked);
  host.Forget();
  EXPECT_EQ(host.Active(), "0xee (238)");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Active, RefusalIsAFailure) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("NvAPI_GPU_GetActiveOutputs", 1);
  EXPECT_EQ(host.Active(), "failed");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Active, MissingPlacesFailTheirChecks) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  uint32_t number = 0;
  EXPECT_EQ(host.nv().GetActiveDisplays(nullptr, nullptr), 0);
  EXPECT_EQ(host.TakeLog(), "Check failed: imm_displays. \nCheck failed: display_count. \n");
  EXPECT_EQ(host.nv().GetActiveDisplays(nullptr, &number), 0);
  EXPECT_EQ(host.nv().GetActiveDisplays(&number, nullptr), 0);
}

// --- The current mode.

TEST(NvidiaV2Mode, OneActiveDisplayIsSingle) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Mode(), "0x1 0x1");
}

TEST(NvidiaV2Mode, TwoActiveDisplaysAreAClone) {
  NvidiaHost host(kClone);
  EXPECT_EQ(host.Mode(), "0x2 0x3");
}

TEST(NvidiaV2Mode, ExtendedDesktopIsWindowsWord) {
  NvidiaHost host(kExtended);
  EXPECT_EQ(host.Mode(), "0x4 0x11");
}

TEST(NvidiaV2Mode, NoActiveDisplayIsAFailureThatWritesNothing) {
  NvidiaHost host("win7 nvidia, intel: crt 1024x768, internal@2 1366x768 active");
  EXPECT_EQ(host.Mode(), "failed 0xee 0xee");
}

TEST(NvidiaV2Mode, ThreeActiveDisplaysAreASuccessThatWritesNothing) {
  NvidiaHost host(
      "win7 nvidia*3: clone internal 1024x768 active, crt 1024x768 active, hdmi 1024x768 active");
  EXPECT_EQ(host.Active(), "0x13 (3)");
  EXPECT_EQ(host.Mode(), "0xee 0xee");
}

// Two outputs of one display count as two.
TEST(NvidiaV2Mode, GoesByTheCountAndNotByTheBits) {
  NvidiaHost host("win7 nvidia: clone dvi 1024x768 active, dvi2 1024x768 active");
  EXPECT_EQ(host.Mode(), "0x2 0x8");
}

TEST(NvidiaV2Mode, RefusalIsAFailureOnOneDesktop) {
  NvidiaHost host(kMachine);
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetActiveOutputs", 1);
  EXPECT_EQ(host.Mode(), "failed 0xee 0xee");
}

TEST(NvidiaV2Mode, RefusalLeavesAnExtendedDesktopWithoutDisplays) {
  NvidiaHost host(kExtended);
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetActiveOutputs", 1);
  EXPECT_EQ(host.Mode(), "0x4 0x0");
}

TEST(NvidiaV2Mode, MissingPlacesFailTheirChecks) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  uint32_t number = 0;
  EXPECT_EQ(host.nv().GetCurrentDisplayMode(nullptr, nullptr), 0);
  EXPECT_EQ(host.TakeLog(), "Check failed: imm_mode. \nCheck failed: imm_displays. \n");
  EXPECT_EQ(host.nv().GetCurrentDisplayMode(nullptr, &number), 0);
  EXPECT_EQ(host.nv().GetCurrentDisplayMode(&number, nullptr), 0);
}

}  // namespace
