// What NvidiaMMImplV3 learns from Windows' paths, and its displays' ids.
#include <gtest/gtest.h>

#include "tests/support/NvidiaPathsHost.h"

namespace {

constexpr char kUser32[] = "User32.dll";
constexpr char kNotLoaded[] = "";
constexpr uint32_t kOther = 0xFFFFFFFF;

std::string OneBit() { return Failed("CountBits(imm_display) == 1"); }

// --- IsDisplayOnNvidia.

bool OnNvidia(V3Host* host, uint32_t display) {
  return host->paths().IsDisplayOnNvidia(kUser32, display);
}

TEST(NvidiaV3Paths, DisplayBelongsToTheAdapterOfItsPath) {
  V3Host host(kTwoAdapters);
  for (const uint32_t display : {kNb, kCrt}) EXPECT_FALSE(OnNvidia(&host, display)) << display;
  for (const uint32_t display : {kHdmi, kDvi, kDp})
    EXPECT_TRUE(OnNvidia(&host, display)) << display;
  EXPECT_FALSE(OnNvidia(&host, kTv));
}

TEST(NvidiaV3Paths, ConnectorWithNothingPluggedInBelongsToItsAdapter) {
  V3Host host("win7 intel, nvidia: internal 1366x768 active, hdmi@2");
  EXPECT_TRUE(OnNvidia(&host, kHdmi));
}

TEST(NvidiaV3Paths, OneOfSeveralOnNvidiaIsEnough) {
  V3Host host("win7 intel, nvidia: internal 1366x768 active, hdmi 1920x1080, hdmi2@2 1920x1080");
  EXPECT_TRUE(OnNvidia(&host, kHdmi));
}

TEST(NvidiaV3Paths, UnreadableNameIsPassedOver) {
  V3Host host;
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1);
  EXPECT_TRUE(OnNvidia(&host, kHdmi));
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_FALSE(OnNvidia(&host, kHdmi));
}

TEST(NvidiaV3Paths, NameIsReadInSmallLetters) {
  V3Host host("win7 none: internal 1366x768 active");
  const struct {
    const char* hardware_id;
    bool nvidia;
  } rows[] = {{"PCI\\VEN_10DE&DEV_0FD4", true},
              {"pci\\ven_10de&dev_0fd4", true},
              {"PCI\\VEN_8086&DEV_0166", false},
              {"PCI\\VEN_8086&SUBSYS_10De17AA", true},
              {"10DE", true},
              {"PCI\\VEN_1002&DEV_010D", false}};
  for (const auto& row : rows) {
    host.model().adapters[0].hardware_id = row.hardware_id;
    EXPECT_EQ(OnNvidia(&host, kNb), row.nvidia) << row.hardware_id;
  }
}

// The name is asked of the target: its adapter, its id, a record of 276 bytes.
TEST(NvidiaV3Paths, AsksForTheNameOfTheTargetsAdapter) {
  V3Host host(kTwoAdapters);
  host.ostrel();
  host.machine.TakeJournal();
  host.machine.JournalReads(true);
  OnNvidia(&host, kNb);
  host.machine.JournalReads(false);
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "GetDisplayConfigBufferSizes(flags=0x1"), 1u) << journal;
  EXPECT_EQ(CountOf(journal, "QueryDisplayConfig(flags=0x1"), 1u) << journal;
  // Once for each desktop that the panel could show.
  EXPECT_EQ(CountOf(journal, "DisplayConfigGetDeviceInfo(type=4 id=0x701)"), 2u) << journal;
}

TEST(NvidiaV3Paths, QuestionsNeedTheApi) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  LUID adapter_id = {7, 8};
  EXPECT_FALSE(host.paths().IsDisplayOnNvidia(nullptr, kNb));
  EXPECT_EQ(host.paths().GetDisplayTargetId(nullptr, kNb), 0u);
  EXPECT_FALSE(host.paths().GetNotebookAdapterId(nullptr, kNb, &adapter_id));
  EXPECT_EQ(CountOf(host.TakeLog(), Failed("ccd != NULL")), 6u);  // each twice
  EXPECT_FALSE(host.paths().IsDisplayOnNvidia(kNotLoaded, kNb));
  EXPECT_EQ(host.paths().GetDisplayTargetId(kNotLoaded, kNb), 0u);
  EXPECT_FALSE(host.paths().GetNotebookAdapterId(kNotLoaded, kNb, &adapter_id));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(adapter_id.LowPart, 7u);
}

TEST(NvidiaV3Paths, QuestionsAreAboutOneDisplay) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  for (const uint32_t displays : {0u, kNb | kHdmi}) {
    EXPECT_FALSE(OnNvidia(&host, displays));
    EXPECT_EQ(host.TakeLog(), OneBit() + OneBit());
    EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, displays), 0u);
    EXPECT_EQ(host.TakeLog(), OneBit() + OneBit());
  }
}

// Technology "other" stands for whatever is not one known display.
TEST(NvidiaV3Paths, WhatIsNoKnownDisplayIsLookedUpAsOther) {
  V3Host host("win7 nvidia: internal 1366x768 active, other 1920x1080");
  host.connector("other").technology = kOther;
  EXPECT_TRUE(OnNvidia(&host, kNb | kHdmi));
  EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, 0x40), host.connector("other").target_id);
}

TEST(NvidiaV3Paths, AnswerWithoutPathsFailsTheChecks) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  LUID adapter_id = {};
  EXPECT_FALSE(host.paths().IsDisplayOnNvidia(kApiWithoutPaths, kNb));
  EXPECT_EQ(host.TakeLog(), Failed("path_count > 0") + Failed("mode_count > 0"));
  EXPECT_EQ(host.paths().GetDisplayTargetId(kApiWithoutPaths, kNb), 0u);
  EXPECT_EQ(host.TakeLog(), Failed("path_count > 0") + Failed("mode_count > 0"));
  EXPECT_FALSE(host.paths().GetNotebookAdapterId(kApiWithoutPaths, kNb, &adapter_id));
  EXPECT_EQ(host.TakeLog(), Failed("path_count > 0") + Failed("mode_count > 0"));
}

TEST(NvidiaV3Paths, FailedQueryFindsNothing) {
  V3Host host(kTwoAdapters);
  for (const char* function : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig"}) {
    LUID adapter_id = {7, 8};
    host.machine.Fail(function, 1);
    EXPECT_FALSE(OnNvidia(&host, kHdmi)) << function;
    host.machine.Fail(function, 1);
    EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, kHdmi), 0u) << function;
    host.machine.Fail(function, 1);
    EXPECT_FALSE(host.paths().GetNotebookAdapterId(kUser32, kNb, &adapter_id)) << function;
    EXPECT_EQ(adapter_id.LowPart, 7u);
  }
}

// --- GetDisplayTargetId.

TEST(NvidiaV3Paths, TargetIdIsOfTheFirstPluggedInConnector) {
  V3Host host("win7 nvidia: internal 1366x768 active, hdmi, hdmi2 1920x1080, hdmi3 1920x1080, dp");
  EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, kHdmi), host.connector("hdmi2").target_id);
  EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, kNb), host.connector("internal").target_id);
  EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, kDp), 0u);
  EXPECT_EQ(host.paths().GetDisplayTargetId(kUser32, kCrt), 0u);
}

// --- GetNotebookAdapterId.

std::string NotebookAdapterId(V3Host* host, uint32_t display) {
  LUID adapter_id = {7, 8};
  const bool known = host->paths().GetNotebookAdapterId(kUser32, display, &adapter_id);
  return (known ? "" : "failed ") + Hex(static_cast<uint32_t>(adapter_id.HighPart)) + ":" +
         Hex(adapter_id.LowPart);
}

TEST(NvidiaV3Paths, NotebookAdapterIsThePanels) {
  V3Host host(kTwoAdapters);
  host.model().adapters[0].luid_high = 3;
  EXPECT_EQ(NotebookAdapterId(&host, kNb), "0x3:" + Hex(host.model().adapters[0].luid_low));
}

TEST(NvidiaV3Paths, NotebookAdapterIsThatOfTheLastPanel) {
  V3Host host("win7 intel, nvidia: internal 1366x768 active, internal2@2 1366x768");
  EXPECT_EQ(NotebookAdapterId(&host, kNb), "0x0:" + Hex(host.model().adapters[1].luid_low));
}

TEST(NvidiaV3Paths, NotebookAdapterIsOfAPanelThatIsThere) {
  V3Host host("win7 intel, nvidia: internal 1366x768 active, internal2@2");
  EXPECT_EQ(NotebookAdapterId(&host, kNb), "0x0:" + Hex(host.model().adapters[0].luid_low));
  host.machine.Unplug("internal");
  EXPECT_EQ(NotebookAdapterId(&host, kNb), "failed 0x8:0x7");
}

TEST(NvidiaV3Paths, NotebookAdapterIsOfThePanelAlone) {
  V3Host host(kTwoAdapters, kChecked);
  host.Forget();
  for (const uint32_t display : {0u, kCrt, kHdmi, kNb | kCrt}) {
    EXPECT_EQ(NotebookAdapterId(&host, display), "failed 0x8:0x7") << display;
    EXPECT_EQ(host.TakeLog(), Failed("imm_display == 1")) << display;
  }
  EXPECT_FALSE(host.paths().GetNotebookAdapterId(kUser32, kNb, nullptr));
  EXPECT_EQ(host.TakeLog(), Failed("adapter_id != NULL"));
}

// --- DisplayIdOfDisplay.

TEST(NvidiaV3Paths, DisplayIdIsThatOfTheOutputWithTheConnector) {
  V3Host host;
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.own(), kHdmi),
            sim::NvDisplayIdOf(host.model(), "hdmi"));
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.own(), kTv), 0u);
  host.machine.Fail("NvAPI_SYS_GetDisplayIdFromGpuAndOutputId", 1);
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.own(), kHdmi), 0u);
}

TEST(NvidiaV3Paths, DisplayIdIsOfTheCurrentGpu) {
  V3Host host("win7 nvidia, nvidia: hdmi 1920x1080 active, hdmi2@2 1920x1080");
  host.own();
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.own(), kHdmi),
            sim::NvDisplayIdOf(host.model(), "hdmi"));
  host.machine.Unplug("hdmi");
  host.Connected();  // the second GPU has the first one connected
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.own(), kHdmi),
            sim::NvDisplayIdOf(host.model(), "hdmi2"));
}

TEST(NvidiaV3Paths, DisplayIdNeedsTheDriver) {
  NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone);
  EXPECT_EQ(host.paths().DisplayIdOfDisplay(&host.bare(host.paths().NewV3), kHdmi), 0u);
}

}  // namespace
