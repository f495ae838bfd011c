// NvidiaMMImplV3CrossAdapter: switches of a notebook whose panel hangs on the Intel adapter.
#include <gtest/gtest.h>

#include "tests/support/NvidiaPathRecords.h"
#include "tests/support/NvidiaPathsHost.h"

namespace {

constexpr char kPanelAndHdmi[] = "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080";
constexpr char kExtended[] =
    "win7 intel, nvidia: internal 1366x768 active, hdmi@2 1920x1080 active, crt 1280x1024";
constexpr char kDisplayIdCall[] = "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId";
constexpr char kResetLine[] = "ShouldResetDisplaySettingAfterSwtich() ";

std::string Luid(CrossHost* host, size_t adapter) {
  return Hex(host->model().adapters[adapter].luid_low);
}
std::string PanelPath(CrossHost* host, const std::string& size) {
  return "[foreign adapter=" + Luid(host, 0) + " " + host->Foreign("internal") + " " + size +
         "x32 format=21 gdi]";
}

// --- Switches from end to end.

TEST(NvidiaCross, SwitchToHdmiAlone) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(host.Switch(kSingle, kHdmi), host.SetOne(host.Own("hdmi")) + "1");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 1u);
  EXPECT_EQ(host.machine.Calls(kWriteGroups), 0u);
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
  EXPECT_EQ(host.Mode(), "0x1 0x10");
}

TEST(NvidiaCross, SwitchToThePanelAlone) {
  CrossHost host(kPanelAndHdmi);
  host.Switch(kSingle, kHdmi);
  EXPECT_EQ(host.Switch(kSingle, kNb), host.SetOne("foreign " + host.Foreign("internal")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaCross, SwitchToCloneOnHdmi) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(host.Switch(kClone, kNb | kHdmi),
            "SetDisplayConfig(paths=0 flags=0x41)=0\n"
            "SetDisplayConfig(paths=0 flags=0x81)=0\n" +
                host.WriteGroups("[[[flags=3 target=" + Hex(host.connector("internal").target_id) +
                                 " internal] [flags=0 display=" +
                                 Hex(sim::NvDisplayIdOf(host.model(), "hdmi")) + " hdmi]]]") +
                "1");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 0u);
  EXPECT_EQ(host.machine.Topology(), "single internal; group internal+hdmi");
  EXPECT_EQ(host.Mode(), "0x2 0x11");
}

TEST(NvidiaCross, SwitchToCloneOnDviGoesThroughThePaths) {
  CrossHost host;
  EXPECT_EQ(host.Switch(kClone, kNb | kDvi),
            host.SetOne("foreign " + host.Foreign("internal") +
                            " [target=" + Hex(host.connector("dvi").target_id) + " unknown]",
                        -5) +
                "0");
  EXPECT_EQ(host.machine.Calls(kReadGroups), 1u);
  EXPECT_EQ(host.machine.Calls(kWriteGroups), 0u);
}

TEST(NvidiaCross, SwitchToCloneOnTheAnalogueOutput) {
  CrossHost host;
  EXPECT_EQ(host.Switch(kClone, kNb | kCrt),
            host.SetOne("foreign " + host.Foreign("internal") + " " + host.Foreign("crt")) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
}

TEST(NvidiaCross, SwitchToExtendedOnHdmi) {
  CrossHost host(kExtended);
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10, PanelPath(&host, "1366x768") + " [" + host.Own("hdmi") +
                             " 1920x1080x32 format=21 at 1366,0]") +
                "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

// NVIDIA's driver tells no EDID while none of its displays shows a desktop.
TEST(NvidiaCross, ExtendedOnADarkHdmiHasTheUsualSize) {
  CrossHost host(kPanelAndHdmi);
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10, PanelPath(&host, "1366x768") + " [" + host.Own("hdmi") +
                             " 1024x768x32 format=21 at 1366,0]") +
                "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

// The analogue output is foreign too, and has no adapter id: eight bytes of zero.
TEST(NvidiaCross, SwitchToExtendedOnTheAnalogueOutput) {
  CrossHost host;
  EXPECT_EQ(host.ExtendOn(kCrt),
            host.Set(10,
                     PanelPath(&host, "1366x768") + " [foreign adapter=0x0 (unknown) [target=" +
                         Hex(host.connector("crt").target_id) +
                         " unknown] 1280x1024x32 format=21 at 1366,0]",
                     -5) +
                "0");
}

TEST(NvidiaCross, ExtendedOnThePanelFailsItsCheck) {
  CrossHost host(kExtended, kChecked);
  host.Forget();
  host.own().ApplyExtendModeOnDisplay(kHdmi);
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed"), 0u);
  host.own().ApplyExtendModeOnDisplay(kNb | kHdmi);
  const std::string log = host.TakeLog();
  EXPECT_EQ(log.rfind(Failed("(external_display & IMMonitor::MD_NB) == 0") +
                          Failed("CountBits(external_display) == 1"),
                      0),
            0u)
      << log;
}

TEST(NvidiaCross, ExtendWithoutADisplayDoesNothing) {
  CrossHost host;
  EXPECT_EQ(host.Extend(TRUE), "0");
  EXPECT_EQ(host.machine.Calls(kSetConfig), 0u);
}

TEST(NvidiaCross, OtherModesGoThroughThePaths) {
  CrossHost host;
  EXPECT_EQ(host.Switch(kExtend, kNb | kHdmi), host.SetOne("[display=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.machine.Calls(kWriteGroups), 0u);
}

TEST(NvidiaCross, SettingsGoWithThePath) {
  CrossHost host;
  const NvidiaModeSettings settings = {1280, 720, 16, 60};
  EXPECT_EQ(host.Apply(kSingle, kHdmi, &settings),
            host.SetOne(host.Own("hdmi"), 0, "1280x720x16 format=23 gdi") + "1");
}

TEST(NvidiaCross, RefusedSwitchIsTheResult) {
  CrossHost host(kExtended);
  host.Forget();
  host.machine.Fail(kSetConfig, 1);
  EXPECT_EQ(host.Switch(kSingle, kHdmi).back(), '0');
  host.machine.Fail(kSetConfig, 1);
  EXPECT_EQ(host.ExtendOn(kHdmi).back(), '0');
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaCross, WhatWindowsDoesNotTellGoesToTheDriverAsNobody) {
  CrossHost host(kExtended);
  host.Forget();
  host.machine.Fail("QueryDisplayConfig", 1, 0, sim::Machine::Repeat::kFromThenOn);
  host.machine.Fail(kDisplayIdCall, 1);
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10,
                     "[foreign adapter=0x0 (unknown) [target=0x0 unknown] 1366x768x32 format=21 "
                     "gdi] [[display=0x0 unknown] 1920x1080x32 format=21 at 1366,0]",
                     -5) +
                "0");
  EXPECT_EQ(host.TakeLog(), "");
}

// --- Whose a display is.

TEST(NvidiaCrossFill, TargetIsWindowsIdOrTheDriversByTheDisplay) {
  CrossHost host;
  const auto own = [&host](const char* id) {
    return "[display " + Hex(sim::NvDisplayIdOf(host.model(), id)) + "]";
  };
  const auto foreign = [&host](const char* id) {
    return "[target " + Hex(host.connector(id).target_id) + "]";
  };
  const struct {
    uint32_t display;
    std::string target;
  } rows[] = {{kNb, foreign("internal")},  {kCrt, foreign("crt")}, {kDvi, own("dvi")},
              {kHdmi, own("hdmi")},        {kDp, own("dp")},       {kTv, "[untouched]"},
              {0, "[untouched]"},          {3, "[untouched]"},     {0x40, "[untouched]"},
              {kHdmi | kDp, "[untouched]"}};
  for (const auto& row : rows) {
    PathRecords records;
    host.own().SetTargetOfDisplay(row.display, &records.targets[0][0]);
    EXPECT_EQ(records.TextOf(0), "own " + row.target + " [untouched]") << row.display;
  }
  host.own().SetTargetOfDisplay(kNb, nullptr);
}

TEST(NvidiaCrossFill, PathIsForeignByTheDisplay) {
  CrossHost host;
  const std::string intel = "foreign 0:" + Luid(&host, 0) + " [untouched] [untouched]";
  const struct {
    uint32_t display;
    bool marked_before;
    std::string path;
  } rows[] = {{kNb, false, intel},
              {kCrt, false, "foreign 0:0 [untouched] [untouched]"},
              {kDvi, true, "own [untouched] [untouched]"},
              {kHdmi, true, "own [untouched] [untouched]"},
              {kDp, true, "own [untouched] [untouched]"},
              {kTv, true, "foreign [untouched] [untouched]"},
              {kTv, false, "own [untouched] [untouched]"},
              {3, false, "own [untouched] [untouched]"},
              {0, false, "own [untouched] [untouched]"}};
  for (const auto& row : rows) {
    PathRecords records;
    records.paths[0].IsNonNVIDIAAdapter = row.marked_before ? 1 : 0;
    host.own().SetPathAdapter(row.display, &records.paths[0]);
    EXPECT_EQ(records.TextOf(0), row.path) << row.display;
    host.paths().FreeAdapterId(&records.paths[0]);
  }
  host.own().SetPathAdapter(kNb, nullptr);
}

TEST(NvidiaCrossFill, NoDisplayFailsTheChecks) {
  CrossHost host(kTwoAdapters, kChecked);
  host.Forget();
  PathRecords records;
  host.own().SetTargetOfDisplay(0, &records.targets[0][0]);
  EXPECT_EQ(host.TakeLog(), Failed("CountBits(imm_display)"));
  host.own().SetPathAdapter(0, &records.paths[0]);
  EXPECT_EQ(host.TakeLog(), Failed("CountBits(imm_display)"));
  host.own().SetTargetOfDisplay(kTv, &records.targets[0][0]);
  host.own().SetPathAdapter(kTv, &records.paths[0]);
  EXPECT_EQ(host.TakeLog(), "");
}

// Only the panel is looked up: the analogue output fails the check of the look-up.
TEST(NvidiaCrossFill, AnalogueOutputGetsNoAdapter) {
  CrossHost host(kTwoAdapters, kChecked);
  host.Forget();
  PathRecords records;
  host.own().SetPathAdapter(kCrt, &records.paths[0]);
  EXPECT_EQ(host.TakeLog(), Failed("imm_display == 1"));
  EXPECT_EQ(records.TextOf(0), "foreign 0:0 [untouched] [untouched]");
  host.paths().FreeAdapterId(&records.paths[0]);
}

TEST(NvidiaCrossFill, UnknownPanelLeavesAnAdapterOfZero) {
  CrossHost host;
  host.own();
  host.machine.Fail("QueryDisplayConfig", 1);
  PathRecords records;
  host.own().SetPathAdapter(kNb, &records.paths[0]);
  EXPECT_EQ(records.TextOf(0), "foreign 0:0 [untouched] [untouched]");
  host.paths().FreeAdapterId(&records.paths[0]);
}

TEST(NvidiaCrossFill, SecondAdapterIdTakesTheFirstOnesPlace) {
  CrossHost host;
  host.own();
  PathRecords records;
  const int64_t pieces = host.paths().PiecesOut();
  host.own().SetPathAdapter(kCrt, &records.paths[0]);
  host.own().SetPathAdapter(kNb, &records.paths[0]);
  EXPECT_EQ(host.paths().PiecesOut(), pieces + 1);
  host.paths().FreeAdapterId(&records.paths[0]);
  EXPECT_EQ(host.paths().PiecesOut(), pieces);
}

// --- Native sizes.

std::string NativeSize(CrossHost* host, uint32_t display) {
  uint32_t width = 7;
  uint32_t height = 8;
  const bool known = host->paths().NativeSizeAcrossAdapters(&host->own(), display, &width, &height);
  return (known ? "" : "failed ") + std::to_string(width) + "x" + std::to_string(height);
}

TEST(NvidiaCrossSize, ComesFromTheDriverOfTheDisplaysAdapter) {
  CrossHost host(
      "win7 intel, nvidia: internal 1366x768 active, crt 1280x1024, hdmi@2 1920x1080 active, dvi@2 "
      "1680x1050, dp@2 2560x1440");
  const struct {
    uint32_t display;
    const char* size;
  } rows[] = {{kNb, "1366x768"},    {kCrt, "1280x1024"}, {kHdmi, "1920x1080"}, {kDvi, "1680x1050"},
              {kDp, "2560x1440"},   {0, "failed 7x8"},   {kTv, "failed 7x8"},  {3, "failed 7x8"},
              {0x40, "failed 7x8"}, {9, "failed 7x8"}};
  for (const auto& row : rows) EXPECT_EQ(NativeSize(&host, row.display), row.size) << row.display;
}

TEST(NvidiaCrossSize, IsUnknownWithoutTheIntelDriver) {
  CrossHost host(kExtended);
  host.model().adapters[0].vendor_library = false;
  EXPECT_EQ(NativeSize(&host, kNb), "failed 7x8");
  EXPECT_EQ(NativeSize(&host, kHdmi), "1920x1080");
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10, "[foreign adapter=" + Luid(&host, 0) + " " + host.Foreign("internal") +
                             " 1366x768x32 format=21 gdi] [" + host.Own("hdmi") +
                             " 1920x1080x32 format=21 at 1366,0]") +
                "1");
}

// With another panel the usual size shows.
TEST(NvidiaCrossSize, UnknownPanelHasTheUsualSize) {
  CrossHost host("win7 intel, nvidia: internal 1600x900 active, hdmi@2 1920x1080 active");
  PathRecords known;
  host.own().FillSourceModes(kExtend, kNb, kHdmi, known.paths);
  EXPECT_EQ(known.ModeOf(0), "1600x900x32 format 21 gdi at 0,0");
  EXPECT_EQ(known.ModeOf(1), "1920x1080x32 format 21 at 1600,0");
  host.connector("internal").monitor->edid.clear();
  host.connector("hdmi").monitor->edid.clear();
  PathRecords unknown;
  host.own().FillSourceModes(kExtend, kNb, kHdmi, unknown.paths);
  EXPECT_EQ(unknown.ModeOf(0), "1366x768x32 format 21 gdi at 0,0");
  EXPECT_EQ(unknown.ModeOf(1), "1024x768x32 format 21 at 1366,0");
}

TEST(NvidiaCrossSize, LeavesNothingOfTheIntelObject) {
  CrossHost host(kExtended);
  NativeSize(&host, kNb);
  NativeSize(&host, kHdmi);
  const int64_t pieces = host.paths().PiecesOut();
  const std::string outstanding = host.machine.Outstanding();
  NativeSize(&host, kHdmi);
  EXPECT_EQ(host.paths().PiecesOut(), pieces);
  EXPECT_EQ(host.machine.Outstanding(), outstanding);
  NativeSize(&host, kNb);
  EXPECT_EQ(host.paths().PiecesOut(), pieces);
}

// --- Ownership.

TEST(NvidiaCrossOwnership, SwitchesGiveTheirMemoryBack) {
  CrossHost host(kExtended);
  const auto all = [&host] {
    host.own().ApplyDisplayMode(kSingle, kHdmi, nullptr);
    host.own().ApplyExtendModeOnDisplay(kHdmi);
    host.own().ApplyExtendModeOnDisplay(kCrt);
    host.own().ApplyDisplayMode(kClone, kNb | kCrt, nullptr);
    host.own().ApplyDisplayMode(kClone, kNb | kHdmi, nullptr);
    uint32_t mode = 0;
    uint32_t displays = 0;
    host.own().GetCurrentDisplayMode(&mode, &displays);
    host.paths().ApplyCrossAdapterClone(&host.own(), kDvi);
  };
  all();
  const int64_t pieces = host.paths().PiecesOut();
  all();
  EXPECT_EQ(host.paths().PiecesOut(), pieces);
}

// Whichever piece of memory is refused, the records that were there by then are given back.
TEST(NvidiaCrossOwnership, ExceptionLeaksNoRecords) {
  CrossHost host(kExtended);
  host.paths().ApplyExtendModeOnDisplay(&host.own(), kHdmi);
  uint32_t refused = 0;
  for (uint32_t nth = 1; nth < 1000; ++nth) {
    const int64_t pieces = host.paths().PiecesOut();
    host.paths().RefuseMemory(nth);
    const std::string result = host.paths().ApplyExtendModeOnDisplay(&host.own(), kHdmi);
    if (host.paths().RefuseMemory(0)) {
      EXPECT_EQ(result, "1");
      break;
    }
    ++refused;
    EXPECT_EQ(host.paths().PiecesOut(), pieces) << nth << " " << result;
  }
  EXPECT_GT(refused, 6u);
  EXPECT_LT(refused, 999u);
}

TEST(NvidiaCrossOwnership, EndGivesTheDriverBack) {
  CrossHost host(kPanelAndHdmi);
  host.Switch(kClone, kNb | kHdmi);
  host.Switch(kSingle, kHdmi);
  host.End();
  EXPECT_EQ(host.machine.Outstanding(), "");
}

// --- The rest.

TEST(NvidiaCross, IsCrossAdapterWhateverItsConnectors) {
  CrossHost host("win7 intel, nvidia: internal 1366x768 active, crt@2 1280x1024");
  EXPECT_TRUE(host.own().IsCrossAdapterCapable());
}

TEST(NvidiaCross, ResetIsAlwaysDue) {
  CrossHost host(kPanelAndHdmi, kChecked);
  host.Forget();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(host.own().ShouldResetDisplaySettingAfterSwtich(), 1);
    EXPECT_EQ(host.TakeLogWithSeverity(), "INFO " + std::string(kResetLine) + "rv = 1\nINFO " +
                                              kResetLine +
                                              "should_reset_display_settings_after_switch_ = 1\n");
    host.Switch(kSingle, i % 2 == 0 ? kHdmi : kNb);
    host.ForgetLog();
  }
}

TEST(NvidiaCross, ResetIsToldAtLevelTwo) {
  CrossHost host(kPanelAndHdmi, L"--v=1");
  host.Forget();
  host.own().ShouldResetDisplaySettingAfterSwtich();
  EXPECT_EQ(host.TakeLog(), "");
}

}  // namespace
