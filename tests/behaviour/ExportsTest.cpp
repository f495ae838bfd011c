// What each query and command export asks of the display object, and what it makes of the answer.
#include <gtest/gtest.h>

#include "tests/support/FakeHost.h"

namespace {

constexpr uint32_t kUntouched = 0xABCDABCD;

class Exports : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host.InitExtendMode()); }

  sim::Library& ostrel() { return *host.ostrel; }
  FakeScript& script() { return *host.script; }

  FakeHost host;
};

using OstrelGetConnectedDisplays = Exports;
using OstrelGetActiveDisplays = Exports;
using OstrelGetCurrentDisplayMode = Exports;
using OstrelSetNewDisplayMode = Exports;
using OstrelEnableExtendMode = Exports;
using OstrelHasExternalMonitorConnected = Exports;
using OstrelQueries = Exports;

// --- Connected and active displays.

TEST_F(OstrelGetConnectedDisplays, DetectsBeforeItReads) {
  script().connected = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  script().connected_count = 2;
  uint32_t displays = 0, count = 0;
  EXPECT_EQ(ostrel().GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 3u);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(script().TakeCalls(), "DetectDisplays\nGetConnectedDisplays\n");
}

TEST_F(OstrelGetConnectedDisplays, HdmiAndDisplayPortBitsAreDroppedButCounted) {
  script().connected = 0x3F;
  script().connected_count = 6;
  uint32_t displays = 0, count = 0;
  EXPECT_EQ(ostrel().GetConnectedDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 0xFu);
  EXPECT_EQ(count, 6u);
}

TEST_F(OstrelGetConnectedDisplays, CountIsOptional) {
  uint32_t displays = 0;
  EXPECT_EQ(ostrel().GetConnectedDisplays(&displays, nullptr), 1);
  EXPECT_EQ(displays, 1u);
}

TEST_F(OstrelGetConnectedDisplays, FailureLeavesTheOutputsUntouched) {
  script().connected_result = 0;
  uint32_t displays = kUntouched, count = kUntouched;
  EXPECT_EQ(ostrel().GetConnectedDisplays(&displays, &count), 0);
  EXPECT_EQ(displays, kUntouched);
  EXPECT_EQ(count, kUntouched);
}

TEST_F(OstrelGetConnectedDisplays, AnotherTruthValueThanOneIsSuccess) {
  script().connected_result = 256;
  uint32_t displays = 0;
  EXPECT_EQ(ostrel().GetConnectedDisplays(&displays, nullptr), 1);
}

TEST_F(OstrelGetActiveDisplays, DetectsBeforeItReads) {
  script().active = IMMonitor::MD_CRT | IMMonitor::MD_HDMI;
  script().active_count = 2;
  uint32_t displays = 0, count = 0;
  EXPECT_EQ(ostrel().GetActiveDisplays(&displays, &count), 1);
  EXPECT_EQ(displays, 2u);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(script().TakeCalls(), "DetectDisplays\nGetActiveDisplays\n");
}

TEST_F(OstrelGetActiveDisplays, FailureLeavesTheOutputsUntouched) {
  script().active_result = 0;
  uint32_t displays = kUntouched, count = kUntouched;
  EXPECT_EQ(ostrel().GetActiveDisplays(&displays, &count), 0);
  EXPECT_EQ(displays, kUntouched);
  EXPECT_EQ(count, kUntouched);
}

// --- The current mode.

TEST_F(OstrelGetCurrentDisplayMode, TranslatesTheMode) {
  struct {
    uint32_t internal, exported;
  } const rows[] = {{1, 1}, {2, 2}, {4, 3}, {8, 4}, {16, 5}};
  for (const auto& row : rows) {
    script().mode = row.internal;
    uint32_t mode = kUntouched;
    EXPECT_EQ(ostrel().GetCurrentDisplayMode(&mode, nullptr), 1);
    EXPECT_EQ(mode, row.exported);
  }
}

TEST_F(OstrelGetCurrentDisplayMode, AnyOtherModeIsZeroWithSuccess) {
  for (const uint32_t internal : {0u, 3u, 128u, 256u, 512u, 1024u}) {
    script().mode = internal;
    uint32_t mode = kUntouched;
    EXPECT_EQ(ostrel().GetCurrentDisplayMode(&mode, nullptr), 1) << internal;
    EXPECT_EQ(mode, 0u) << internal;
  }
}

TEST_F(OstrelGetCurrentDisplayMode, NarrowsTheMask) {
  script().mode = IMMonitor::DM_CLONE;
  script().active = IMMonitor::MD_NB | IMMonitor::MD_DP | IMMonitor::MD_DVI;
  uint32_t mode = 0, displays = 0;
  EXPECT_EQ(ostrel().GetCurrentDisplayMode(&mode, &displays), 1);
  EXPECT_EQ(displays, 9u);
  EXPECT_EQ(script().TakeCalls(), "IsExtendModeEnabled\nGetCurrentDisplayMode\n");
}

TEST_F(OstrelGetCurrentDisplayMode, ExtendedModeWritesThreeLeavesDisplaysAndReturnsZero) {
  script().extend_enabled = 1;
  uint32_t mode = 0, displays = kUntouched;
  EXPECT_EQ(ostrel().GetCurrentDisplayMode(&mode, &displays), 0);
  EXPECT_EQ(mode, 3u);
  EXPECT_EQ(displays, kUntouched);
  EXPECT_EQ(script().TakeCalls(), "IsExtendModeEnabled\n");
}

TEST_F(OstrelGetCurrentDisplayMode, FailureWritesNothing) {
  script().mode_result = 0;
  uint32_t mode = kUntouched, displays = kUntouched;
  EXPECT_EQ(ostrel().GetCurrentDisplayMode(&mode, &displays), 0);
  EXPECT_EQ(mode, kUntouched);
  EXPECT_EQ(displays, kUntouched);
}

// --- Setting a mode.

TEST_F(OstrelSetNewDisplayMode, SuccessReturnsZero) {
  EXPECT_EQ(ostrel().SetNewDisplayMode(1, 1), 0);
  EXPECT_EQ(script().TakeCalls(), "IsExtendModeEnabled\nSetNewDisplayMode(1, 0x1)\n");
}

TEST_F(OstrelSetNewDisplayMode, FailureReturnsZero) {
  script().set_result = 0;
  EXPECT_EQ(ostrel().SetNewDisplayMode(2, 3), 0);
  EXPECT_EQ(script().TakeCalls(), "SetNewDisplayMode(2, 0x3)\n");
}

TEST_F(OstrelSetNewDisplayMode, HandsTheExportedNumberOnUntranslated) {
  for (const uint32_t mode : {0u, 4u, 5u, 7u, 1024u}) {
    EXPECT_EQ(ostrel().SetNewDisplayMode(mode, 3), 0);
    EXPECT_EQ(script().TakeCalls(), "SetNewDisplayMode(" + std::to_string(mode) + ", 0x3)\n");
  }
}

TEST_F(OstrelSetNewDisplayMode, MaskZeroMakesNoCall) {
  EXPECT_EQ(ostrel().SetNewDisplayMode(1, 0), 0);
  EXPECT_EQ(ostrel().SetNewDisplayMode(2, 0), 0);
  EXPECT_EQ(script().TakeCalls(), "");
}

TEST_F(OstrelSetNewDisplayMode, MaskThatNarrowsToZeroIsStillSent) {
  EXPECT_EQ(ostrel().SetNewDisplayMode(2, IMMonitor::MD_HDMI), 0);
  EXPECT_EQ(script().TakeCalls(), "SetNewDisplayMode(2, 0x0)\n");
}

TEST_F(OstrelSetNewDisplayMode, MaskKeepsFourLowBits) {
  EXPECT_EQ(ostrel().SetNewDisplayMode(2, 0xFFFFFFFF), 0);
  EXPECT_EQ(script().TakeCalls(), "SetNewDisplayMode(2, 0xf)\n");
}

TEST_F(OstrelSetNewDisplayMode, ModeThreeIgnoresTheMaskAndReturnsTheRealResult) {
  script().extend_result = 7;
  EXPECT_EQ(ostrel().SetNewDisplayMode(3, 0), 7);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nGetCurrentDisplayMode\n"
            "EnableExtendMode(1)\n");
  script().extend_result = 0;
  EXPECT_EQ(ostrel().SetNewDisplayMode(3, 0xFF), 0);
}

TEST_F(OstrelSetNewDisplayMode, SingleLeavesExtendedModeFirst) {
  script().extend_enabled = 1;
  EXPECT_EQ(ostrel().SetNewDisplayMode(1, 2), 0);
  EXPECT_EQ(script().TakeCalls(),
            "IsExtendModeEnabled\n"
            "HasDualOutputCapability\nIsExtendModeEnabled\nEnableExtendMode(0)\n"
            "SetNewDisplayMode(1, 0x2)\n");
}

TEST_F(OstrelSetNewDisplayMode, SingleIsSetEvenWhenLeavingExtendedModeFails) {
  script().extend_enabled = 1;
  script().dual_output = 0;
  EXPECT_EQ(ostrel().SetNewDisplayMode(1, 2), 0);
  EXPECT_EQ(script().TakeCalls(),
            "IsExtendModeEnabled\nHasDualOutputCapability\nSetNewDisplayMode(1, 0x2)\n");
}

TEST_F(OstrelSetNewDisplayMode, CloneDoesNotLookAtExtendedMode) {
  script().extend_enabled = 1;
  EXPECT_EQ(ostrel().SetNewDisplayMode(2, 3), 0);
  EXPECT_EQ(script().TakeCalls(), "SetNewDisplayMode(2, 0x3)\n");
}

// --- Extending.

TEST_F(OstrelEnableExtendMode, ReturnsZeroWithoutDualOutput) {
  script().dual_output = 0;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 0);
  EXPECT_EQ(script().TakeCalls(), "HasDualOutputCapability\n");
}

TEST_F(OstrelEnableExtendMode, DoesNothingWhenItIsAsWanted) {
  EXPECT_EQ(ostrel().EnableExtendMode(0), 1);
  EXPECT_EQ(script().TakeCalls(), "HasDualOutputCapability\nIsExtendModeEnabled\n");
  script().extend_enabled = 1;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 1);
  EXPECT_EQ(script().TakeCalls(), "HasDualOutputCapability\nIsExtendModeEnabled\n");
}

TEST_F(OstrelEnableExtendMode, ComparesAsNumbersSoThatTwoGoesThrough) {
  script().extend_enabled = 1;
  script().mode = IMMonitor::DM_EXTEND;
  EXPECT_EQ(ostrel().EnableExtendMode(2), 1);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nGetCurrentDisplayMode\n"
            "SetNewDisplayMode(1, 0x1)\nEnableExtendMode(2)\n");
}

TEST_F(OstrelEnableExtendMode, PreparesThePanelAloneAndIgnoresItsResult) {
  script().mode = IMMonitor::DM_CLONE;
  script().active = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  script().set_result = 0;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 1);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nGetCurrentDisplayMode\n"
            "SetNewDisplayMode(1, 0x1)\nEnableExtendMode(1)\n");
}

TEST_F(OstrelEnableExtendMode, PreparesFromSingleOnAnotherDisplay) {
  script().active = IMMonitor::MD_CRT;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 1);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nGetCurrentDisplayMode\n"
            "SetNewDisplayMode(1, 0x1)\nEnableExtendMode(1)\n");
}

TEST_F(OstrelEnableExtendMode, NeedsNoPreparationWhenSingleHasThePanelAmongOthers) {
  script().active = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 1);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nGetCurrentDisplayMode\n"
            "EnableExtendMode(1)\n");
}

TEST_F(OstrelEnableExtendMode, TurningOffNeedsNoPreparation) {
  script().extend_enabled = 1;
  script().mode = IMMonitor::DM_EXTEND;
  EXPECT_EQ(ostrel().EnableExtendMode(0), 1);
  EXPECT_EQ(script().TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nEnableExtendMode(0)\n");
}

TEST_F(OstrelEnableExtendMode, ReturnsWhatTheObjectReturns) {
  script().extend_result = 0;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 0);
  script().extend_result = 42;
  EXPECT_EQ(ostrel().EnableExtendMode(1), 42);
}

TEST(OstrelEnableExtendModeConfigured, NoPreparationWithTheKeyOff) {
  FakeHost host;
  host.machine.Config("Settings", "Assure Primary Display is Notebook", 0);
  host.Load();
  ASSERT_TRUE(host.InitExtendMode());
  host.script->mode = IMMonitor::DM_CLONE;
  EXPECT_EQ(host.ostrel->EnableExtendMode(1), 1);
  EXPECT_EQ(host.script->TakeCalls(),
            "HasDualOutputCapability\nIsExtendModeEnabled\nEnableExtendMode(1)\n");
}

// The look at the vendor is seen by its enumeration of the adapters: one for each look, and one for
// each time the display object is asked for.
TEST_F(OstrelEnableExtendMode, LooksAtTheVendorTwice) {
  const uint32_t before = host.machine.Calls("SetupDiGetClassDevsA");
  ostrel().EnableExtendMode(0);
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA") - before, 3u);
}

TEST(OstrelEnableExtendModeUninitialised, LooksAtTheVendorAllTheSame) {
  FakeHost host;
  const uint32_t before = host.machine.Calls("SetupDiGetClassDevsA");
  EXPECT_EQ(host.ostrel->EnableExtendMode(1), 0);
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA") - before, 1u);
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST_F(OstrelQueries, HasDualOutputCapabilityDoesNotLookAtTheVendor) {
  const uint32_t before = host.machine.Calls("SetupDiGetClassDevsA");
  script().dual_output = 5;
  EXPECT_EQ(ostrel().HasDualOutputCapability(), 5);
  EXPECT_EQ(host.machine.Calls("SetupDiGetClassDevsA") - before, 1u);
  EXPECT_EQ(script().TakeCalls(), "HasDualOutputCapability\n");
}

// --- Other queries and commands.

TEST_F(OstrelQueries, IsExtendModeEnabledReturnsWhatTheObjectReturns) {
  EXPECT_EQ(ostrel().IsExtendModeEnabled(), 0);
  script().extend_enabled = 1;
  EXPECT_EQ(ostrel().IsExtendModeEnabled(), 1);
}

TEST_F(OstrelQueries, ChangeToNBOnlySingleDisplayModeReturnsWhatTheObjectReturns) {
  EXPECT_EQ(ostrel().ChangeToNBOnlySingleDisplayMode(), 1);
  script().panel_only_result = 0;
  EXPECT_EQ(ostrel().ChangeToNBOnlySingleDisplayMode(), 0);
  EXPECT_EQ(script().TakeCalls(),
            "ChangeToNBOnlySingleDisplayMode\nChangeToNBOnlySingleDisplayMode\n");
}

TEST_F(OstrelHasExternalMonitorConnected, IntelInExtendedModeAnswersAtOnce) {
  script().extend_enabled = 1;
  script().connected_count = 1;
  EXPECT_EQ(ostrel().HasExternalMonitorConnected(), 1);
  EXPECT_EQ(script().TakeCalls(), "IsExtendModeEnabled\n");
}

TEST_F(OstrelHasExternalMonitorConnected, IntelOutsideExtendedModeCounts) {
  script().connected_count = 2;
  EXPECT_EQ(ostrel().HasExternalMonitorConnected(), 1);
  EXPECT_EQ(script().TakeCalls(), "IsExtendModeEnabled\nDetectDisplays\nGetConnectedDisplays\n");
  script().connected_count = 1;
  EXPECT_EQ(ostrel().HasExternalMonitorConnected(), 0);
}

TEST_F(OstrelHasExternalMonitorConnected, FailedReportIsNo) {
  script().connected_count = 2;
  script().connected_result = 0;
  EXPECT_EQ(ostrel().HasExternalMonitorConnected(), 0);
}

TEST_F(OstrelHasExternalMonitorConnected, OtherVendorsLookAtTheDisplaysInExtendedMode) {
  host.machine.model().adapters[0].hardware_id = "PCI\\VEN_1002&DEV_6841";
  host.factory().InstallMonitor(new FakeMonitor(host.script), 0x1002);
  script().TakeCalls();
  script().extend_enabled = 1;
  script().connected_count = 1;
  EXPECT_EQ(ostrel().HasExternalMonitorConnected(), 0);
  EXPECT_EQ(script().TakeCalls(), "DetectDisplays\nGetConnectedDisplays\n");
}

TEST_F(OstrelQueries, TwoNamesOfOneFunctionAlwaysGiveOne) {
  EXPECT_EQ(ostrel().PermitToChangeMode(), 1);
  EXPECT_EQ(ostrel().DetectDisplayConnectedFeatureIsValid(), 1);
  EXPECT_EQ(GetProcAddress(ostrel().module(), "Ostrel_PermitToChangeMode"),
            GetProcAddress(ostrel().module(), "Ostrel_DetectDisplayConnectedFeatureIsValid"));
}

// --- The vendor.

TEST(OstrelGetVgaVendor, ReadsTheFirstAdapterBeforeAnyInitialisation) {
  struct {
    const char* hardware_id;
    uint32_t code;
  } const rows[] = {{"PCI\\VEN_8086&DEV_0166", 1}, {"PCI\\VEN_1002&DEV_6841", 2},
                    {"PCI\\VEN_10DE&DEV_0DF4", 3}, {"PCI\\VEN_10de&DEV_0df4", 3},
                    {"PCI\\VEN_1106&DEV_3371", 4}, {"PCI\\VEN_1039&DEV_6351", 5},
                    {"PCI\\VEN_1414&DEV_0001", 0}, {"PCI\\VEN_80!86", 0},
                    {"ROOT\\BASICDISPLAY", 0},     {"PCI\\VEN_", 0}};
  sim::Machine machine("win7 intel: internal 1366x768 active");
  sim::Library ostrel(machine);
  for (const auto& row : rows) {
    machine.model().adapters[0].hardware_id = row.hardware_id;
    EXPECT_EQ(ostrel.GetVgaVendor(), row.code) << row.hardware_id;
  }
}

TEST(OstrelGetVgaVendor, AnyFailureOfTheDeviceListIsZero) {
  for (const char* function :
       {"SetupDiGetClassDevsA", "SetupDiEnumDeviceInfo", "SetupDiGetDeviceRegistryPropertyA"}) {
    sim::Machine machine("win7 intel: internal 1366x768 active");
    sim::Library ostrel(machine);
    const std::string at_rest = machine.Outstanding();
    machine.Fail(function, 1);
    EXPECT_EQ(ostrel.GetVgaVendor(), 0u) << function;
    EXPECT_EQ(ostrel.GetVgaVendor(), 1u) << function;
    EXPECT_EQ(machine.Outstanding(), at_rest) << function;
  }
}

TEST(OstrelGetVgaVendor, ExtendModeSideAloneAnswersFromTheDeviceList) {
  FakeHost host;
  ASSERT_TRUE(host.InitExtendMode());
  host.script->vendor = kVendorNvidia;
  EXPECT_EQ(host.ostrel->GetVgaVendor(), 1u);
  EXPECT_EQ(host.script->TakeCalls(), "");
}

TEST(OstrelGetVgaVendor, SwitchSideAnswersFromTheObject) {
  FakeHost host;
  ASSERT_TRUE(host.ostrel->Init());
  struct {
    uint32_t vendor, code;
  } const rows[] = {{0x8086, 1}, {0x1002, 2},  {0x10DE, 3},     {0x1106, 4},
                    {0x1039, 5}, {0x045E, 0},  {0xFFFF, 0},     {0, 0},
                    {0x7777, 0}, {0x10000, 0}, {0x1234'8086, 1}};
  for (const auto& row : rows) {
    host.script->vendor = row.vendor;
    EXPECT_EQ(host.ostrel->GetVgaVendor(), row.code) << row.vendor;
  }
}

}  // namespace
