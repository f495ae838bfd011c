// How the refresh rate of an HDMI monitor is looked at and raised.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "sim/MachineState.h"
#include "tests/behaviour/CcdReports.h"
#include "tests/behaviour/HdmiMonitors.h"

using ccd_test::Set;

namespace {

constexpr char kAdjusted[] =
    "HDMI monitor refresh rate = 58\n"
    "Adjusting HDMI refresh rate...\n"
    "Adjusting HDMI refresh rate completed.\n";

// --- Whether the rate is low.

TEST(HdmiRefreshRateIsLow, From59HzOnItIsNot) {
  const struct {
    uint32_t frequency;
    bool low;
  } rows[] = {{0, true}, {30, true}, {58, true}, {59, false}, {60, false}, {75, false}};
  CoreHost host(kPanel);
  for (const auto& row : rows) {
    FakeMonitor monitor(HdmiAt(row.frequency));
    BoxOf(host);
    host.ForgetLog();
    EXPECT_EQ(BoxOf(host).HdmiRefreshRateIsLow(&monitor), row.low) << row.frequency;
    EXPECT_EQ(host.TakeLogWithSeverity(),
              "INFO HDMI monitor refresh rate = " + std::to_string(row.frequency) + "\n");
  }
}

TEST(HdmiRefreshRateIsLow, UnreadableRateIsNot) {
  CoreHost host(kPanel);
  const auto script = HdmiAt(30);
  script->settings_result = false;
  FakeMonitor monitor(script);
  BoxOf(host);
  host.ForgetLog();
  EXPECT_FALSE(BoxOf(host).HdmiRefreshRateIsLow(&monitor));
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(script->TakeCalls(), "GetDisplaySettings(0, 0x10)\n");
}

/// Keeps the record as the caller handed it over.
class SettingsReader : public FakeMonitor {
 public:
  using FakeMonitor::FakeMonitor;
  bool GetDisplaySettings(uint32_t, DEVMODEA* dm) override {
    given = *dm;
    return false;
  }
  DEVMODEA given = {};
};

TEST(HdmiRefreshRateIsLow, HandsOverAnEmptyRecordOfItsSize) {
  CoreHost host(kPanel);
  SettingsReader reader(std::make_shared<FakeScript>());
  BoxOf(host).HdmiRefreshRateIsLow(&reader);
  DEVMODEA expected = {};
  expected.dmSize = 156;
  EXPECT_EQ(std::memcmp(&reader.given, &expected, sizeof(expected)), 0);
}

// --- The adjustment.

class AdjustHdmi : public testing::Test {
 protected:
  void SetUp() override {
    SlowDown(host.machine);
    BoxOf(host);
    host.ForgetLog();
    host.machine.TakeJournal();
  }
  void Adjust(const std::shared_ptr<FakeScript>& script) {
    FakeMonitor monitor(script);
    BoxOf(host).AdjustHdmiRefreshRate(&monitor);
  }
  void ExpectNothing() {
    EXPECT_EQ(host.machine.TakeJournal(), "");
    EXPECT_EQ(CountOf(host.TakeLog(), "Adjusting"), 0u);
    EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 30u);
  }

  CoreHost host{kPanelAndHdmi, L"--enable-dcheck"};
};

TEST_F(AdjustHdmi, LowRateIsRaisedToThePreferredTiming) {
  Adjust(HdmiAt(58));
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60") + Set(2, "0x2a0"));
  EXPECT_EQ(host.TakeLog(), kAdjusted);
  EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 60u);
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1366u);
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST_F(AdjustHdmi, RateOf59IsLeftAlone) {
  Adjust(HdmiAt(59));
  ExpectNothing();
}

TEST_F(AdjustHdmi, NothingWithoutHdmiAmongTheActiveDisplays) {
  const auto script = HdmiAt(58);
  script->active = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  Adjust(script);
  EXPECT_EQ(script->TakeCalls(), "GetCurrentDisplayMode\n");
  ExpectNothing();
}

TEST_F(AdjustHdmi, NothingWhenTheModeCannotBeRead) {
  const auto script = HdmiAt(58);
  script->mode_result = 0;
  Adjust(script);
  EXPECT_EQ(script->TakeCalls(), "GetCurrentDisplayMode\n");
  ExpectNothing();
}

TEST_F(AdjustHdmi, NothingWhenTheSettingsCannotBeRead) {
  const auto script = HdmiAt(58);
  script->settings_result = false;
  Adjust(script);
  EXPECT_EQ(script->TakeCalls(), "GetCurrentDisplayMode\nGetDisplaySettings(0, 0x10)\n");
  ExpectNothing();
}

TEST_F(AdjustHdmi, WithoutAnObjectItIsACheck) {
  testing::internal::CaptureStderr();
  BoxOf(host).AdjustHdmiRefreshRate(nullptr);
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.TakeLog(), "Check failed: m. \n");
}

TEST_F(AdjustHdmi, SecondCallIsMadeAlthoughTheValidationFailed) {
  host.machine.Fail("SetDisplayConfig", 1, ERROR_GEN_FAILURE);
  Adjust(HdmiAt(58));
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60", 31) + Set(2, "0x6a0"));
  EXPECT_EQ(CountOf(host.TakeLogWithSeverity(),
                    "ERROR Calling SetDisplayConfig 1st attempt failed: r = 31\n"),
            1u);
  EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 60u);
}

TEST_F(AdjustHdmi, RefusedChangeIsLoggedAndEndsTheAdjustment) {
  host.machine.Fail("SetDisplayConfig", 2, ERROR_ACCESS_DENIED);
  Adjust(HdmiAt(58));
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60") + Set(2, "0x2a0", 5));
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "INFO HDMI monitor refresh rate = 58\n"
            "INFO Adjusting HDMI refresh rate...\n"
            "ERROR Calling SetDisplayConfig 2nd attempt failed: r = 5\n"
            "INFO Adjusting HDMI refresh rate completed.\n");
  EXPECT_EQ(host.machine.model().sources[1].mode.frequency, 30u);
}

TEST_F(AdjustHdmi, UnknownPreferredModeIsAppliedAsZeroes) {
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE);
  Adjust(HdmiAt(58));
  // No monitor lists a timing of zeroes, so that it does not validate.
  EXPECT_EQ(host.machine.TakeJournal(), Set(2, "0x60", 1610) + Set(2, "0x6a0"));
  EXPECT_EQ(CountOf(host.TakeLog(), "Adjusting HDMI refresh rate completed.\n"), 1u);
}

TEST_F(AdjustHdmi, KeepsNothingOfWhatItMade) {
  const std::string before = host.machine.Outstanding();
  Adjust(HdmiAt(58));
  EXPECT_EQ(host.machine.Outstanding(), before);
  EXPECT_EQ(host.Modules(), 0u);
}

TEST_F(AdjustHdmi, TakesItsOwnLibraryForThisOnce) {
  const uint32_t loads = host.machine.Calls("LoadLibraryA");
  Adjust(HdmiAt(58));
  EXPECT_GT(host.machine.Calls("LoadLibraryA"), loads);
  EXPECT_EQ(host.machine.Calls("LoadLibraryA"), host.machine.Calls("FreeLibrary"));
}

// --- The timing, with Windows' functions in the test's hands.

struct Windows {
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  LONG sizes_result = ERROR_SUCCESS;
  LONG query_result = ERROR_SUCCESS;
  LONG first_result = ERROR_SUCCESS;
  LONG second_result = ERROR_SUCCESS;
  std::string calls;
  std::vector<DISPLAYCONFIG_MODE_INFO> set_modes;
  std::vector<DISPLAYCONFIG_PATH_INFO> set_paths;
};

Windows* g_windows = nullptr;

void Note(const char* name, UINT32 flags, UINT32 paths, UINT32 modes) {
  char text[96];
  std::snprintf(text, sizeof(text), "%s(%u, %u, 0x%x)\n", name, paths, modes, flags);
  g_windows->calls += text;
}

LONG WINAPI Sizes(UINT32 flags, UINT32* paths, UINT32* modes) {
  *paths = static_cast<UINT32>(g_windows->paths.size());
  *modes = static_cast<UINT32>(g_windows->modes.size());
  Note("Sizes", flags, *paths, *modes);
  return g_windows->sizes_result;
}

LONG WINAPI Query(UINT32 flags, UINT32* path_count, DISPLAYCONFIG_PATH_INFO* paths,
                  UINT32* mode_count, DISPLAYCONFIG_MODE_INFO* modes,
                  DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  Note(topology == nullptr ? "Query" : "QueryTopology", flags, *path_count, *mode_count);
  if (g_windows->query_result != ERROR_SUCCESS) return g_windows->query_result;
  std::copy(g_windows->paths.begin(), g_windows->paths.end(), paths);
  std::copy(g_windows->modes.begin(), g_windows->modes.end(), modes);
  return ERROR_SUCCESS;
}

LONG WINAPI SetConfig(UINT32 path_count, DISPLAYCONFIG_PATH_INFO* paths, UINT32 mode_count,
                      DISPLAYCONFIG_MODE_INFO* modes, UINT32 flags) {
  Note("Set", flags, path_count, mode_count);
  g_windows->set_paths.assign(paths, paths + path_count);
  g_windows->set_modes.assign(modes, modes + mode_count);
  return (flags & SDC_VALIDATE) != 0 ? g_windows->first_result : g_windows->second_result;
}

LONG WINAPI NoDeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER*) { return ERROR_GEN_FAILURE; }

class ApplyPreferredTiming : public testing::Test {
 protected:
  void SetUp() override {
    g_windows = &windows;
    host.machine.state().invented["ccd.dll"] = {
        "ccd.dll",
        {{"ccd.dll", "GetDisplayConfigBufferSizes", sim::Erase(Sizes)},
         {"ccd.dll", "QueryDisplayConfig", sim::Erase(Query)},
         {"ccd.dll", "DisplayConfigGetDeviceInfo", sim::Erase(NoDeviceInfo)},
         {"ccd.dll", "DisplayConfigSetDeviceInfo", sim::Erase(NoDeviceInfo)},
         {"ccd.dll", "SetDisplayConfig", sim::Erase(SetConfig)}}};
    // Three entries, each with bytes of its own, and a record that is none of them.
    for (int i = 0; i != 3; ++i) {
      DISPLAYCONFIG_MODE_INFO mode;
      std::memset(&mode, 0x10 + i, sizeof(mode));
      windows.modes.push_back(mode);
    }
    std::memset(&record, 0x77, sizeof(record));
    BoxOf(host);
    host.ForgetLog();
  }
  void TearDown() override { g_windows = nullptr; }

  void AddPath(uint32_t technology, UINT32 target_mode) {
    DISPLAYCONFIG_PATH_INFO path = {};
    path.sourceInfo.modeInfoIdx = 0;
    path.targetInfo.modeInfoIdx = target_mode;
    path.targetInfo.outputTechnology =
        static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(technology);
    windows.paths.push_back(path);
  }
  bool Apply() { return BoxOf(host).ApplyPreferredTiming("ccd.dll", record); }
  /// The entries that Windows was given, each "old", or "new" where exactly the timing is the
  /// record's.
  std::string Given() const {
    std::string text;
    for (size_t i = 0; i != windows.set_modes.size(); ++i) {
      DISPLAYCONFIG_MODE_INFO with_record = windows.modes[i];
      with_record.targetMode.targetVideoSignalInfo = record.targetMode.targetVideoSignalInfo;
      const auto is = [&](const DISPLAYCONFIG_MODE_INFO& mode) {
        return std::memcmp(&windows.set_modes[i], &mode, sizeof(mode)) == 0;
      };
      text += is(windows.modes[i]) ? "old " : is(with_record) ? "new " : "other ";
    }
    return text;
  }

  CoreHost host{kPanel, L"--enable-dcheck"};
  Windows windows;
  DISPLAYCONFIG_TARGET_PREFERRED_MODE record;
};

constexpr char kAllCalls[] =
    "Sizes(2, 3, 0x2)\n"
    "Query(2, 3, 0x2)\n"
    "Set(2, 3, 0x60)\n"
    "Set(2, 3, 0x2a0)\n";

TEST_F(ApplyPreferredTiming, OverwritesTheTimingOfTheHdmiPathsTarget) {
  AddPath(0x80000000, 1);
  AddPath(5, 2);
  EXPECT_TRUE(Apply());
  EXPECT_EQ(windows.calls, kAllCalls);
  EXPECT_EQ(Given(), "old old new ");
}

TEST_F(ApplyPreferredTiming, TakesTheFirstOfTwoHdmiPaths) {
  AddPath(5, 1);
  AddPath(5, 2);
  EXPECT_TRUE(Apply());
  EXPECT_EQ(Given(), "old new old ");
}

TEST_F(ApplyPreferredTiming, WithoutAnHdmiPathRewritesEntryZero) {
  AddPath(0x80000000, 1);
  AddPath(4, 2);
  EXPECT_TRUE(Apply());
  EXPECT_EQ(windows.calls, kAllCalls);
  EXPECT_EQ(Given(), "new old old ");
}

TEST_F(ApplyPreferredTiming, IndexBehindTheEndOverwritesNothingAndGoesOn) {
  for (const UINT32 index : {3u, DISPLAYCONFIG_PATH_MODE_IDX_INVALID}) {
    windows.paths.clear();
    windows.calls.clear();
    AddPath(0x80000000, 1);
    AddPath(5, index);
    EXPECT_TRUE(Apply());
    EXPECT_EQ(windows.calls, kAllCalls);
    EXPECT_EQ(Given(), "old old old ");
  }
}

TEST_F(ApplyPreferredTiming, PathsAreHandedBackAsTheyCame) {
  AddPath(0x80000000, 1);
  AddPath(5, 2);
  Apply();
  ASSERT_EQ(windows.set_paths.size(), 2u);
  EXPECT_EQ(std::memcmp(windows.set_paths.data(), windows.paths.data(),
                        2 * sizeof(DISPLAYCONFIG_PATH_INFO)),
            0);
}

TEST_F(ApplyPreferredTiming, QuerysResultIsNotLookedAt) {
  AddPath(0x80000000, 1);
  AddPath(5, 2);
  windows.query_result = ERROR_INSUFFICIENT_BUFFER;
  EXPECT_TRUE(Apply());
  EXPECT_EQ(windows.calls, kAllCalls);
}

TEST_F(ApplyPreferredTiming, WithoutSizesNothingFollows) {
  AddPath(5, 2);
  windows.sizes_result = ERROR_GEN_FAILURE;
  EXPECT_FALSE(Apply());
  EXPECT_EQ(windows.calls, "Sizes(1, 3, 0x2)\n");
}

TEST_F(ApplyPreferredTiming, SecondCallAllowsChangesAfterAFailedValidation) {
  AddPath(0x80000000, 1);
  AddPath(5, 2);
  windows.first_result = ERROR_BAD_CONFIGURATION;
  EXPECT_TRUE(Apply());
  EXPECT_EQ(windows.calls,
            "Sizes(2, 3, 0x2)\n"
            "Query(2, 3, 0x2)\n"
            "Set(2, 3, 0x60)\n"
            "Set(2, 3, 0x6a0)\n");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling SetDisplayConfig 1st attempt failed: r = 1610\n");
}

TEST_F(ApplyPreferredTiming, SecondCallsResultIsTheAnswer) {
  AddPath(5, 2);
  windows.second_result = ERROR_ACCESS_DENIED;
  EXPECT_FALSE(Apply());
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Calling SetDisplayConfig 2nd attempt failed: r = 5\n");
}

TEST_F(ApplyPreferredTiming, NeedsABoundApi) {
  EXPECT_FALSE(BoxOf(host).ApplyPreferredTiming(nullptr, record));
  EXPECT_EQ(host.TakeLog(), "");
  testing::internal::CaptureStderr();
  EXPECT_FALSE(BoxOf(host).ApplyPreferredTimingWithoutApi());
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(host.TakeLog(), "Check failed: api. \n");
}

}  // namespace
