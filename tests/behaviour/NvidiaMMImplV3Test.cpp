// NvidiaMMImplV3: its life, and single and clone through the driver's display paths.
#include <gtest/gtest.h>

#include "tests/support/NvidiaPathsHost.h"

namespace {

constexpr char kDisplayIdCall[] = "NvAPI_SYS_GetDisplayIdFromGpuAndOutputId";
constexpr char kModeCheck[] = "mode == IMMonitor::DM_SINGLE || mode == IMMonitor::DM_CLONE";

std::string OneBitChecks(uint32_t count) {
  std::string text;
  for (uint32_t i = 0; i < count; ++i) text += Failed("CountBits(imm_display) == 1");
  return text;
}

// --- Construction.

TEST(NvidiaV3, HoldsTheDisplayConfigurationLibraryForAsLongAsItLives) {
  NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone, kChecked);
  host.ostrel();
  const size_t modules = host.Modules();
  host.ForgetLog();
  host.bare(host.paths().NewV3);
  EXPECT_EQ(host.Modules(), modules + 1);
  EXPECT_EQ(host.TakeLog(), "");
  host.End();
  EXPECT_EQ(host.Modules(), modules);
}

TEST(NvidiaV3, ChecksThatWindowsIsLaterThanVista) {
  for (const char* windows : {"vista", "2003", "xp"}) {
    NvidiaPathsHost<NvidiaMMImplV3> host(
        windows + std::string(" nvidia: internal 1366x768 active, hdmi 1920x1080"), kChecked);
    host.ostrel();
    host.ForgetLog();
    host.bare(host.paths().NewV3);
    EXPECT_EQ(host.TakeLogWithSeverity(),
              "ERROR_REPORT " + Failed("win_util::GetWinVersion() > win_util::WINVERSION_VISTA"))
        << windows;
  }
}

TEST(NvidiaV3, ChecksItsApi) {
  NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone, kChecked);
  host.ostrel();
  host.ForgetLog();
  host.bare(host.paths().NewV3WithoutApi);
  EXPECT_EQ(host.TakeLog(), Failed("ccd != NULL"));
}

// What cannot be found out goes to the driver as nothing, and the driver decides.
TEST(NvidiaV3, WithoutApiNamesAForeignNobody) {
  NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone, kChecked);
  host.bare(host.paths().NewV3WithoutApi);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne("foreign [target=0x0 unknown]", -5) + "0");
  EXPECT_EQ(CountOf(host.TakeLog(), Failed("ccd != NULL")), 4u);  // two questions, each twice
}

TEST(NvidiaV3, OnVistaNamesAForeignNobody) {
  V3Host host("vista nvidia: internal 1366x768 active, hdmi 1920x1080", kChecked);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne("foreign [target=0x0 unknown]", -3) + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV3, GivesEverythingBack) {
  V3Host host;
  host.Apply(kSingle, kHdmi);
  host.Apply(kClone, kNb | kHdmi);
  host.ExtendOn(kHdmi);
  host.End();
  EXPECT_EQ(host.machine.Outstanding(), "");
}

// Whichever piece of memory is refused, what the object was to own is given back.
TEST(NvidiaV3, ObjectThatCannotBeMadeLeavesNothing) {
  for (const bool cross_adapter : {false, true}) {
    NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone);
    EXPECT_EQ(host.paths().MakeAndEnd(cross_adapter), "1");
    uint32_t refused = 0;
    for (uint32_t nth = 1; nth < 100; ++nth) {
      const int64_t pieces = host.paths().PiecesOut();
      host.paths().RefuseMemory(nth);
      const std::string result = host.paths().MakeAndEnd(cross_adapter);
      if (host.paths().RefuseMemory(0)) {
        EXPECT_EQ(result, "1");
        break;
      }
      ++refused;
      EXPECT_EQ(host.paths().PiecesOut(), pieces) << nth << " " << result;
    }
    EXPECT_GE(refused, 2u);
    EXPECT_LT(refused, 99u);
  }
}

TEST(NvidiaV3, BeforeInitialNothingIsSet) {
  NvidiaPathsHost<NvidiaMMImplV3> host(kNvidiaAlone);
  NvidiaMMImplV3& bare = host.bare(host.paths().NewV3);
  EXPECT_EQ(bare.ApplyDisplayMode(kSingle, kHdmi, nullptr), 0);
  EXPECT_EQ(bare.ApplyExtendModeOnDisplay(kHdmi), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.machine.Calls(kSetConfig), 0u);
}

TEST(NvidiaV3, IsNotCrossAdapterForItself) {
  V3Host host("win7 nvidia: internal 1366x768 active, crt 1024x768");
  EXPECT_FALSE(host.own().IsCrossAdapterCapable());
  EXPECT_EQ(host.own().ShouldResetDisplaySettingAfterSwtich(), 1);
  EXPECT_EQ(host.own().GetVgaVendor(), kVendorNvidia);
}

// --- Single.

TEST(NvidiaV3Single, NamesADisplayOfTheAdapterByTheDriversId) {
  const struct {
    uint32_t display;
    const char* id;
  } rows[] = {{kHdmi, "hdmi"}, {kNb, "internal"}, {kCrt, "crt"}, {kDvi, "dvi"}, {kDp, "dp"}};
  V3Host host;
  for (const auto& row : rows) {
    EXPECT_EQ(host.Apply(kSingle, row.display), host.SetOne(host.Own(row.id)) + "1");
    EXPECT_EQ(host.machine.Topology(), "single " + std::string(row.id));
  }
}

TEST(NvidiaV3Single, NamesADisplayOfAnotherAdapterByWindowsId) {
  V3Host host(kTwoAdapters);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne(host.Own("hdmi")) + "1");
  EXPECT_EQ(host.Apply(kSingle, kNb), host.SetOne("foreign " + host.Foreign("internal")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
  EXPECT_EQ(host.Apply(kSingle, kCrt), host.SetOne("foreign " + host.Foreign("crt")) + "1");
  EXPECT_EQ(host.machine.Topology(), "single crt");
}

TEST(NvidiaV3Single, SetNewDisplayModeUsesTheUsualMode) {
  V3Host host;
  EXPECT_EQ(host.Switch(kSingle, kHdmi), host.SetOne(host.Own("hdmi")) + "1");
}

TEST(NvidiaV3Single, SeveralDisplaysFailTheirChecksAndAreNobody) {
  V3Host host(kNvidiaAlone, kChecked);
  EXPECT_EQ(host.Apply(kSingle, kNb | kHdmi),
            host.SetOne("foreign [target=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), Failed("CountBits(displays) == 1") + OneBitChecks(4));
}

TEST(NvidiaV3Single, NoDisplayFailsTheChecksAndIsNobody) {
  V3Host host(kNvidiaAlone, kChecked);
  EXPECT_EQ(host.Apply(kSingle, 0), host.SetOne("foreign [target=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), Failed("CountBits(displays) == 1") + OneBitChecks(4));
}

TEST(NvidiaV3Single, DisplayThatIsNotPluggedInIsRefusedByTheDriver) {
  V3Host host("win7 nvidia: internal 1366x768 active, hdmi");
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne(host.Own("hdmi"), -1) + "0");
}

TEST(NvidiaV3Single, DisplayWithoutAConnectorIsNobody) {
  V3Host host("win7 nvidia: internal 1366x768 active");
  EXPECT_EQ(host.Apply(kSingle, kDp), host.SetOne("foreign [target=0x0 unknown]", -5) + "0");
}

// The connector's plug is of a kind that the display is not looked up by.
TEST(NvidiaV3Single, UnknownOutputGoesToTheDriverAsZero) {
  V3Host host("win7 nvidia: internal 1366x768 active, hdmi 1920x1080");
  host.connector("hdmi").nvidia_connector_type = 99;
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne("[display=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.machine.Calls(kDisplayIdCall), 0u);
}

TEST(NvidiaV3Single, UnknownDisplayIdGoesToTheDriverAsZero) {
  V3Host host;
  host.Forget();
  host.machine.Fail(kDisplayIdCall, 1);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne("[display=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

// --- Clone.

TEST(NvidiaV3Clone, NamesThePanelFirst) {
  V3Host host;
  const std::string both = host.Own("internal") + " " + host.Own("hdmi");
  EXPECT_EQ(host.Apply(kClone, kNb | kHdmi), host.SetOne(both) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+hdmi");
  EXPECT_EQ(host.Apply(kClone, kHdmi), host.SetOne(both) + "1");
}

TEST(NvidiaV3Clone, PanelOfAnotherAdapterMakesBothForeign) {
  V3Host host(kTwoAdapters);
  EXPECT_EQ(host.Apply(kClone, kNb | kCrt),
            host.SetOne("foreign " + host.Foreign("internal") + " " + host.Foreign("crt")) + "1");
  EXPECT_EQ(host.machine.Topology(), "clone internal+crt");
  EXPECT_EQ(host.Apply(kClone, kNb | kHdmi),
            host.SetOne("foreign " + host.Foreign("internal") +
                            " [target=" + Hex(host.connector("hdmi").target_id) + " unknown]",
                        -5) +
                "0");
}

TEST(NvidiaV3Clone, SecondDisplayMustBeOne) {
  V3Host host(kNvidiaAlone, kChecked);
  EXPECT_EQ(host.Apply(kClone, kNb | kHdmi | kCrt),
            host.SetOne(host.Own("internal") + " [display=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), OneBitChecks(1));
}

// --- The source mode.

TEST(NvidiaV3Mode, SettingsTakeTheUsualModesPlace) {
  const struct {
    uint16_t depth;
    const char* format;
  } rows[] = {{32, "format=21"}, {16, "format=23"}};
  for (const auto& row : rows) {
    V3Host host;
    const NvidiaModeSettings settings = {800, 600, row.depth, 75};
    EXPECT_EQ(host.Apply(kSingle, kHdmi, &settings),
              host.SetOne(host.Own("hdmi"), 0,
                          "800x600x" + std::to_string(row.depth) + " " + row.format + " gdi") +
                  "1");
    EXPECT_EQ(host.Apply(kClone, kNb | kHdmi, &settings),
              host.SetOne(host.Own("internal") + " " + host.Own("hdmi"), 0,
                          "800x600x" + std::to_string(row.depth) + " " + row.format + " gdi") +
                  "1");
  }
}

TEST(NvidiaV3Mode, DepthWithoutAFormatFailsItsCheckAndGoesToTheDriver) {
  V3Host host(kNvidiaAlone, kChecked);
  const NvidiaModeSettings settings = {65535, 1, 15, 60};
  EXPECT_EQ(host.Apply(kSingle, kHdmi, &settings),
            host.SetOne(host.Own("hdmi"), -1, "65535x1x15 format=0 gdi") + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR_REPORT " + Failed("false"));
}

TEST(NvidiaV3Mode, ColorFormatOfEveryDepth) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  const struct {
    uint32_t depth;
    uint32_t format;
  } rows[] = {{8, 41}, {16, 23}, {24, 21}, {32, 21}};
  for (const auto& row : rows) EXPECT_EQ(host.paths().ColorFormat(row.depth), row.format);
  EXPECT_EQ(host.TakeLog(), "");
  for (const uint32_t depth : {0u, 4u, 15u, 30u, 64u, 0xFFFFFFFFu}) {
    EXPECT_EQ(host.paths().ColorFormat(depth), 0u) << depth;
    EXPECT_EQ(host.TakeLog(), Failed("false")) << depth;
  }
}

// --- Other modes.

TEST(NvidiaV3Mode, ExtendedDesktopFailsItsCheckAndNamesNobody) {
  V3Host host(kNvidiaAlone, kChecked);
  EXPECT_EQ(host.Switch(kExtend, kNb | kHdmi), host.SetOne("[display=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), Failed(kModeCheck));
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV3Mode, AnyOtherModeToo) {
  for (const uint32_t mode : {0u, 3u, 8u, 16u, 128u, 256u, 512u, 1024u}) {
    V3Host host(kNvidiaAlone, kChecked);
    EXPECT_EQ(host.Apply(mode, kHdmi), host.SetOne("[display=0x0 unknown]", -5) + "0") << mode;
    EXPECT_EQ(host.TakeLog(), Failed(kModeCheck)) << mode;
  }
}

TEST(NvidiaV3Mode, ExtendWithoutADisplayDoesNothing) {
  V3Host host;
  EXPECT_EQ(host.Extend(TRUE), "0");
  EXPECT_EQ(host.own().ApplyExtendMode(), 0);
  EXPECT_EQ(host.machine.Calls("NvAPI_SetViewEx"), 0u);
  EXPECT_EQ(host.machine.Calls(kSetConfig), 0u);
}

// --- Failures.

TEST(NvidiaV3Failure, RefusalIsTheResultAndIsNotLogged) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  for (const int32_t status : {-1, -3, -9, 5}) {
    host.machine.Fail(kSetConfig, 1, sim::NvCode(status));
    EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne(host.Own("hdmi"), status) + "0");
  }
  EXPECT_EQ(host.TakeLog(), "");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV3Failure, DriverWithoutPathsRefuses) {
  V3Host host;
  host.machine.ForgiveUnusedFaults();
  sim::RemoveNvApi(host.machine, kSetConfig);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), "0");
  EXPECT_EQ(host.ExtendOn(kHdmi), "0");
}

TEST(NvidiaV3Failure, FailedQueryMakesTheDisplayForeign) {
  V3Host host;
  host.Forget();
  host.machine.Fail("QueryDisplayConfig", 1);
  EXPECT_EQ(
      host.Apply(kSingle, kHdmi),
      host.SetOne("foreign [target=" + Hex(host.connector("hdmi").target_id) + " unknown]", -5) +
          "0");
  host.machine.Fail("QueryDisplayConfig", 1, 0, sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Apply(kSingle, kHdmi), host.SetOne("foreign [target=0x0 unknown]", -5) + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV3Failure, FailedSizesAreLoggedAndMakeTheDisplayForeign) {
  V3Host host(kNvidiaAlone, kChecked);
  host.Forget();
  host.machine.Fail("GetDisplayConfigBufferSizes", 1, ERROR_GEN_FAILURE,
                    sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(host.Apply(kClone, kNb | kHdmi),
            host.SetOne("foreign [target=0x0 unknown] [target=0x0 unknown]", -5) + "0");
  EXPECT_EQ(CountOf(host.TakeLog(), Failed("CCD_SUCCEEDED(r)") +
                                        "Call to GetDisplayConfigBufferSizes() failed: r = 31\n"),
            3u);
}

TEST(NvidiaV3Failure, UnreadableAdapterNameMakesTheDisplayForeign) {
  V3Host host;
  host.Forget();
  host.machine.Fail("DisplayConfigGetDeviceInfo", 1, ERROR_GEN_FAILURE,
                    sim::Machine::Repeat::kFromThenOn);
  EXPECT_EQ(
      host.Apply(kSingle, kHdmi),
      host.SetOne("foreign [target=" + Hex(host.connector("hdmi").target_id) + " unknown]", -5) +
          "0");
  EXPECT_EQ(host.TakeLog(), "");
}

}  // namespace
