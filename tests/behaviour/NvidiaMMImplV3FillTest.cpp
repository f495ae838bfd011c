// How NvidiaMMImplV3 fills the driver's paths, and extended desktop through them.
#include <gtest/gtest.h>

#include "tests/support/EdidBlock.h"
#include "tests/support/NvidiaPathRecords.h"
#include "tests/support/NvidiaPathsHost.h"

namespace {

// --- The operations that fill paths.

TEST(NvidiaV3Fill, TargetCountsByMode) {
  V3Host host;
  const struct {
    uint32_t mode;
    const char* counts;
  } rows[] = {{kSingle, "1 7"}, {kClone, "2 7"}, {kExtend, "1 1"}, {0, "7 7"},
              {3, "7 7"},       {8, "7 7"},      {16, "7 7"},      {512, "7 7"}};
  for (const auto& row : rows) {
    PathRecords records;
    for (auto& path : records.paths) path.targetInfoCount = 7;
    host.own().SetPathTargetCounts(row.mode, records.paths);
    EXPECT_EQ(std::to_string(records.paths[0].targetInfoCount) + " " +
                  std::to_string(records.paths[1].targetInfoCount),
              row.counts)
        << row.mode;
  }
  host.own().SetPathTargetCounts(kExtend, nullptr);
}

TEST(NvidiaV3Fill, TargetIsTheDisplayId) {
  V3Host host;
  NV_DISPLAYCONFIG_PATH_TARGET_INFO target = {9, nullptr, 8};
  host.own().SetTargetOfDisplay(kHdmi, &target);
  EXPECT_EQ(target.displayId, sim::NvDisplayIdOf(host.model(), "hdmi"));
  EXPECT_EQ(target.targetId, 8u);
  host.own().SetTargetOfDisplay(kTv, &target);
  EXPECT_EQ(target.displayId, 0u);
  host.own().SetTargetOfDisplay(kHdmi, nullptr);
}

TEST(NvidiaV3Fill, PathIsTheAdaptersOwn) {
  V3Host host(kTwoAdapters);
  for (const uint32_t display : {0u, kNb, kHdmi}) {
    NV_DISPLAYCONFIG_PATH_INFO path = {};
    path.IsNonNVIDIAAdapter = 1;
    host.own().SetPathAdapter(display, &path);
    EXPECT_EQ(path.IsNonNVIDIAAdapter, 0u);
    EXPECT_EQ(path.pOSAdapterID, nullptr);
  }
  host.own().SetPathAdapter(kNb, nullptr);
}

TEST(NvidiaV3Fill, PathsByMode) {
  V3Host host;
  const std::string nb = "display " + Hex(sim::NvDisplayIdOf(host.model(), "internal"));
  const std::string hdmi = "display " + Hex(sim::NvDisplayIdOf(host.model(), "hdmi"));
  const struct {
    uint32_t mode;
    std::string first;
    std::string second;
  } rows[] = {{kSingle, "own [" + nb + "] [untouched]", "foreign [untouched] [untouched]"},
              {kClone, "own [" + nb + "] [" + hdmi + "]", "foreign [untouched] [untouched]"},
              {kExtend, "own [" + nb + "] [untouched]", "own [" + hdmi + "] [untouched]"},
              {0, "foreign [untouched] [untouched]", "foreign [untouched] [untouched]"},
              {8, "foreign [untouched] [untouched]", "foreign [untouched] [untouched]"}};
  for (const auto& row : rows) {
    PathRecords records;
    for (auto& path : records.paths) path.IsNonNVIDIAAdapter = 1;
    host.own().FillPaths(row.mode, kNb, kHdmi, records.paths);
    EXPECT_EQ(records.TextOf(0), row.first) << row.mode;
    EXPECT_EQ(records.TextOf(1), row.second) << row.mode;
  }
}

TEST(NvidiaV3Fill, PathsWithoutArraysAreLeft) {
  V3Host host;
  for (const uint32_t mode : {kSingle, kClone, kExtend}) {
    NV_DISPLAYCONFIG_PATH_INFO bare[2] = {};
    host.own().FillPaths(mode, kNb, kHdmi, bare);
    host.own().FillSourceModes(mode, kNb, kHdmi, bare);
    host.own().FillPaths(mode, kNb, kHdmi, nullptr);
    EXPECT_EQ(bare[0].targetInfo, nullptr);
  }
}

TEST(NvidiaV3Fill, SourceModesByMode) {
  V3Host host;
  const std::string nb = "1600x900x32 format 21 gdi at 0,0";
  const std::string hdmi = "1920x1080x32 format 21 at 1600,0";
  const std::string none = "0x0x0 format 0 at 0,0";
  const struct {
    uint32_t mode;
    std::string second;
  } rows[] = {{kSingle, none}, {kClone, none}, {kExtend, hdmi}, {0, none}, {8, none}};
  for (const auto& row : rows) {
    PathRecords records;
    host.own().FillSourceModes(row.mode, kNb, kHdmi, records.paths);
    EXPECT_EQ(records.ModeOf(0), nb) << row.mode;
    EXPECT_EQ(records.ModeOf(1), row.second) << row.mode;
  }
}

TEST(NvidiaV3Fill, SourceModesCheckTheirArguments) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  PathRecords records;
  host.own().FillSourceModes(kSingle, kNb, 0, nullptr);
  EXPECT_EQ(host.TakeLog(), Failed("path_info != NULL"));
  host.own().FillSourceModes(kClone, kNb, 0, records.paths);
  EXPECT_EQ(host.TakeLog(), "");
  host.own().FillSourceModes(kExtend, kNb, 0, records.paths);
  EXPECT_EQ(CountOf(host.TakeLog(), Failed("CountBits(secondary) == 1")), 1u);
  EXPECT_EQ(records.ModeOf(1), "1024x768x32 format 21 at 1600,0");
  host.own().FillSourceModes(kExtend, kNb | kHdmi, kHdmi, records.paths);
  EXPECT_EQ(CountOf(host.TakeLog(), Failed("CountBits(primary) == 1")), 1u);
}

TEST(NvidiaV3Fill, UnknownSizesAreUsualOnes) {
  V3Host host;
  host.connector("internal").monitor->edid.clear();
  host.connector("hdmi").monitor->edid.clear();
  PathRecords records;
  host.own().FillSourceModes(kExtend, kNb, kHdmi, records.paths);
  EXPECT_EQ(records.ModeOf(0), "1366x768x32 format 21 gdi at 0,0");
  EXPECT_EQ(records.ModeOf(1), "1024x768x32 format 21 at 1366,0");
}

TEST(NvidiaV3Fill, DamagedEdidIsAnUnknownSize) {
  V3Host host;
  host.connector("internal").monitor->edid = EdidBlock().PanelTiming().Sum().Spoil().bytes();
  PathRecords records;
  host.own().FillSourceModes(kSingle, kNb, 0, records.paths);
  EXPECT_EQ(records.ModeOf(0), "1366x768x32 format 21 gdi at 0,0");
}

// A monitor that prefers no timing has a known size: none.
TEST(NvidiaV3Fill, EdidWithoutAPreferredTimingIsASizeOfZero) {
  V3Host host;
  host.connector("internal").monitor->edid = EdidBlock().PanelTiming(false).Sum().bytes();
  PathRecords records;
  host.own().FillSourceModes(kExtend, kNb, kHdmi, records.paths);
  EXPECT_EQ(records.ModeOf(0), "0x0x32 format 21 gdi at 0,0");
  EXPECT_EQ(records.ModeOf(1), "1920x1080x32 format 21 at 0,0");
}

// Ten more places of the table hold what the base has of its side interface.
TEST(NvidiaV3Fill, FiveMoreOperationsStandBehindThoseOfTheBase) {
  using Operation = uint64_t (*)(void* object, uintptr_t a, uintptr_t b, uintptr_t c, void* paths);
  V3Host host;
  void* const object = static_cast<IMMonitor*>(&host.own());
  const auto call = [object](size_t slot, uintptr_t a, uintptr_t b = 0, uintptr_t c = 0,
                             void* paths = nullptr) {
    (*static_cast<Operation**>(object))[slot](object, a, b, c, paths);
  };
  const std::string nb = "[display " + Hex(sim::NvDisplayIdOf(host.model(), "internal")) + "]";
  const std::string hdmi = "[display " + Hex(sim::NvDisplayIdOf(host.model(), "hdmi")) + "]";
  PathRecords records;
  for (auto& path : records.paths) path.IsNonNVIDIAAdapter = 1;

  call(37, kClone, reinterpret_cast<uintptr_t>(records.paths));
  EXPECT_EQ(records.paths[0].targetInfoCount, 2u);
  EXPECT_EQ(records.paths[1].targetInfoCount, 0u);
  call(38, kClone, kNb, kHdmi, records.paths);
  EXPECT_EQ(records.TextOf(0), "own " + nb + " " + hdmi);
  call(39, kNb, reinterpret_cast<uintptr_t>(&records.targets[1][0]));
  EXPECT_EQ(records.TextOf(1), "foreign " + nb + " [untouched]");
  call(40, kNb, reinterpret_cast<uintptr_t>(&records.paths[1]));
  EXPECT_EQ(records.TextOf(1), "own " + nb + " [untouched]");
  EXPECT_EQ(records.ModeOf(0), "0x0x0 format 0 at 0,0");
  call(41, kSingle, kNb, 0, records.paths);
  EXPECT_EQ(records.ModeOf(0), "1600x900x32 format 21 gdi at 0,0");
}

// --- Extended desktop.

TEST(NvidiaV3Extend, PutsTheDisplayRightOfThePanel) {
  V3Host host;
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10, "[" + host.Own("internal") + " 1600x900x32 format=21 gdi] [" +
                             host.Own("hdmi") + " 1920x1080x32 format=21 at 1600,0]") +
                "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(host.ExtendOn(kCrt),
            host.Set(10, "[" + host.Own("internal") + " 1600x900x32 format=21 gdi] [" +
                             host.Own("crt") + " 1280x1024x32 format=21 at 1600,0]") +
                "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+crt");
}

// NVIDIA's driver alone is asked: it knows no panel of another adapter.
TEST(NvidiaV3Extend, PanelOfAnotherAdapterIsNobody) {
  V3Host host(kTwoAdapters);
  EXPECT_EQ(host.ExtendOn(kHdmi),
            host.Set(10,
                     "[[display=0x0 unknown] 1366x768x32 format=21 gdi] [" + host.Own("hdmi") +
                         " 1024x768x32 format=21 at 1366,0]",
                     -5) +
                "0");
}

TEST(NvidiaV3Extend, ChecksThatTheDisplayIsOne) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  host.own().ApplyExtendModeOnDisplay(kHdmi);
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.own().ApplyExtendModeOnDisplay(kHdmi | kCrt), 0);
  EXPECT_EQ(host.TakeLog().rfind(Failed("CountBits(external_display) == 1"), 0), 0u);
}

TEST(NvidiaV3Extend, RefusalIsTheResult) {
  V3Host host;
  host.Forget();
  host.machine.Fail(kSetConfig, 1);
  EXPECT_EQ(host.ExtendOn(kHdmi).back(), '0');
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV3Extend, OffGoesThroughWindows) {
  V3Host host;
  host.ExtendOn(kHdmi);
  host.Forget();
  host.own().EnableExtendModeOnDisplays(FALSE, kHdmi);
  EXPECT_EQ(host.machine.Calls(kSetConfig), 1u);
  EXPECT_NE(host.machine.TakeJournal().find("ChangeDisplaySettingsExA("), std::string::npos);
}

}  // namespace
