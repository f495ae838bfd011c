// Extended desktop of NvidiaMMImplV2: on by a dual view of the driver, off by Windows alone.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr char kExtended[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080 active";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;
constexpr uint32_t kDp = IMMonitor::MD_DP;
constexpr int32_t kRefused = -1;
constexpr int32_t kInvalid = -5;
constexpr int32_t kBadHandle = -8;

// The record of settings that could not be read for ERROR_GEN_FAILURE, with the system's own words.
std::string ReadFailed() {
  char text[256] = {};
  const DWORD length =
      FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     ERROR_GEN_FAILURE, 0x400, text, sizeof(text), nullptr);
  EXPECT_NE(length, 0u);
  const std::string whole(text, length);
  return "ERROR Calling EnumDisplaySettingsEx() failed: " +
         whole.substr(0, whole.find_last_not_of(" \r\n") + 1) + "\n";
}

std::string DualView(uint32_t first, uint32_t second, int32_t result = 0,
                     const std::string& size = "1024x768x32@60") {
  return SetView(4,
                 "[" + ViewPath(first, "1366x768x32@60", " gdi") + " " +
                     ViewPath(second, size, " at 1366,0") + "]",
                 result);
}

// --- On, on a named display.

TEST(NvidiaV2ExtendOn, IsADualViewOfThePanelAsItIsAndTheDisplayToItsRight) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x10000, 0x20000) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
  EXPECT_EQ(host.Mode(), "0x4 0x11");
  EXPECT_EQ(host.Settings(kHdmi), "1024x768x32@60 turned 0");
}

TEST(NvidiaV2ExtendOn, SizeOfTheSecondDisplayIsConfigured) {
  NvidiaHost host(kMachine);
  host.machine.Config("ExtendMode:2nd", "Width", 1920);
  host.machine.Config("ExtendMode:2nd", "Height", 1080);
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x10000, 0x20000, 0, "1920x1080x32@60") + "1");
}

TEST(NvidiaV2ExtendOn, ConfiguredSizeOfZeroIsHandedOn) {
  NvidiaHost host(kMachine);
  host.machine.Config("ExtendMode:2nd", "Width", 0);
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x10000, 0x20000, kRefused, "0x768x32@60") + "0");
}

TEST(NvidiaV2ExtendOn, TakesSizeDepthAndRateOfThePrimaryDisplay) {
  NvidiaHost host("win7 nvidia: internal 1366x768 active, hdmi 1920x1080");
  sim::DisplayMode& mode = host.model().sources[0].mode;
  mode = {800, 600, 16, 75};
  host.machine.Fail("NvAPI_SetViewEx", 1);
  EXPECT_EQ(host.ExtendOn(kHdmi),
            SetView(4,
                    "[" + ViewPath(0x10000, "800x600x16@75", " gdi") + " " +
                        ViewPath(0x20000, "1024x768x16@75", " at 800,0") + "]",
                    kRefused) +
                "0");
}

TEST(NvidiaV2ExtendOn, PanelIsWhereItsConnectorIs) {
  NvidiaHost host(kMachine);
  host.connector("internal").nvidia_output = 0x100;
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x100, 0x20000) + "1");
}

TEST(NvidiaV2ExtendOn, PanelMayHangOnAnEmbeddedDisplayPort) {
  NvidiaHost host("win7 nvidia: edp 1366x768 active, hdmi 1920x1080");
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x10000, 0x20000) + "1");
}

TEST(NvidiaV2ExtendOn, DisplayWithoutAnOutputIsNone) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.ExtendOn(kDp), DualView(0x10000, 0, kInvalid) + "0");
}

TEST(NvidiaV2ExtendOn, ThePanelItselfFailsTheCheck) {
  NvidiaHost host(kMachine, kChecked);
  EXPECT_EQ(host.ExtendOn(kNb), DualView(0x10000, 0x10000, kInvalid) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: (external_display & IMMonitor::MD_NB) == 0. \n");
}

TEST(NvidiaV2ExtendOn, SeveralDisplaysFailTheCheckOfTheLookUp) {
  NvidiaHost host(kMachine, kChecked);
  EXPECT_EQ(host.ExtendOn(kHdmi | kDp), DualView(0x10000, 0, kInvalid) + "0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: CountBits(imm_display) == 1. \n");
}

TEST(NvidiaV2ExtendOn, WithoutADisplayHandleTheDriverIsNotAsked) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1);
  EXPECT_EQ(host.nv().ApplyExtendModeOnDisplay(kHdmi), 0);
  EXPECT_EQ(host.machine.TakeJournal(), "");
  EXPECT_EQ(host.TakeLogWithSeverity(), "INFO Can't find any NVIDIA display handle\n");
}

TEST(NvidiaV2ExtendOn, RefusalIsAFailureWithoutALogLine) {
  NvidiaHost host(kMachine);
  host.machine.Fail("NvAPI_SetViewEx", 1);
  EXPECT_EQ(host.ExtendOn(kHdmi), DualView(0x10000, 0x20000, kRefused) + "0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2ExtendOn, SettingsThatCannotBeReadAreLoggedAndAreNone) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("EnumDisplaySettingsExA", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(host.nv().ApplyExtendModeOnDisplay(kHdmi), 0);
  EXPECT_EQ(host.machine.TakeJournal(), SetView(4,
                                                "[" + ViewPath(0x10000, "0x0x0", " gdi") + " " +
                                                    ViewPath(0x20000, "1024x768x0") + "]",
                                                kRefused));
  EXPECT_EQ(host.TakeLogWithSeverity(), ReadFailed());
}

// --- On, on a display of the driver's choice.

TEST(NvidiaV2Extend, NeedsTwoDisplayDevices) {
  NvidiaHost host("win7 nvidia*1: internal 1366x768 active, hdmi 1920x1080");
  EXPECT_EQ(host.Extend(TRUE), "0");
  EXPECT_EQ(host.Extend(FALSE), "0");
}

TEST(NvidiaV2Extend, IsADualViewOfThePanelsUsualOutputAndTheFirstChoice) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, 0x20000) + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST(NvidiaV2Extend, FirstChoiceIsTheFirstOfFourOutputs) {
  const struct {
    std::vector<uint32_t> connected;
    uint32_t chosen;
  } rows[] = {{{0x80000, 0x40000, 0x20000, 0x1}, 0x1},
              {{0x80000, 0x40000, 0x20000}, 0x20000},
              {{0x80000, 0x40000}, 0x40000},
              {{0x80000}, 0x80000},
              {{0x2, 0x80000}, 0x80000},
              {{0x2, 0x4, 0x8, 0x100, 0x200, 0x400, 0x800}, 0x40000},
              {{}, 0x40000}};
  for (const auto& row : rows) {
    NvidiaHost host(kMachine);
    const sim::Connector hdmi = host.connector("hdmi");
    host.machine.Unplug("hdmi");
    host.connector("hdmi").nvidia_output = 0x1000;
    for (const uint32_t output : row.connected) {
      sim::Connector connector = hdmi;
      connector.id = "hdmi at " + Hex(output);
      connector.nvidia_output = output;
      host.model().connectors.push_back(connector);
    }
    host.machine.Fail("NvAPI_SetViewEx", 1);
    EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, row.chosen, kRefused) + "0");
  }
}

TEST(NvidiaV2Extend, PanelsUsualOutputIsNamedAlsoWhereItHangsElsewhere) {
  NvidiaHost host(kMachine);
  host.connector("internal").nvidia_output = 0x100;
  EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, 0x20000, kInvalid) + "0");
}

TEST(NvidiaV2Extend, NoGpuThatAnswersIsTheLastChoice) {
  NvidiaHost host(kMachine);
  host.nv();
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 1);
  EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, 0x40000, kInvalid) + "0");
}

TEST(NvidiaV2Extend, FirstGpuWithADisplayIsAsked) {
  NvidiaHost host(
      "win7 nvidia, nvidia, nvidia: internal@2 1366x768 active, hdmi@2 1920x1080, crt@3 800x600");
  host.nv();
  host.machine.Fail("NvAPI_SetViewEx", 1);
  EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, 0x20000, kRefused) + "0");
  host.machine.Fail("NvAPI_GPU_GetConnectedOutputs", 2);
  host.machine.Fail("NvAPI_SetViewEx", 1);
  EXPECT_EQ(host.Extend(TRUE), DualView(0x10000, 0x1, kRefused) + "0");
}

TEST(NvidiaV2Extend, CurrentGpuStays) {
  NvidiaHost host("win7 nvidia, nvidia: internal@2 1366x768 active, hdmi@2 1920x1080");
  host.nv();
  host.Extend(TRUE);
  EXPECT_EQ(host.box().CurrentGpu(&host.nv()), sim::NvGpuOf(0));
}

TEST(NvidiaV2Extend, WithoutADisplayHandleTheDriverDecides) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1);
  EXPECT_EQ(host.nv().ApplyExtendMode(), 0);
  EXPECT_EQ(host.machine.TakeJournal(),
            SetView(4,
                    "[" + ViewPath(0x10000, "1366x768x32@60", " gdi") + " " +
                        ViewPath(0x20000, "1024x768x32@60", " at 1366,0") + "]",
                    kBadHandle, "0"));
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(NvidiaV2Extend, SettingsThatCannotBeReadAreLoggedAndAreNone) {
  NvidiaHost host(kMachine);
  host.Forget();
  host.machine.Fail("EnumDisplaySettingsExA", 1, ERROR_GEN_FAILURE);
  EXPECT_EQ(host.nv().ApplyExtendMode(), 0);
  EXPECT_EQ(CountOf(host.machine.TakeJournal(), "[mask=0x10000 0x0x0 source=0 gdi]"), 1u);
  EXPECT_EQ(host.TakeLogWithSeverity(), ReadFailed());
}

// --- Off.

std::string Change(const std::string& device, const std::string& mode, const std::string& flags,
                   int32_t result = 0, const std::string& fields = "0x7c00a0") {
  return "ChangeDisplaySettingsExA(\\\\.\\" + device + " " + mode + " at 0,0 fields=" + fields +
         " flags=" + flags + ")=" + std::to_string(result) + "\n";
}
std::string Keep(const std::string& device, const std::string& mode) {
  return Change(device, mode, "0x2") + Change(device, mode, "0x10000019");
}
std::string Detach(const std::string& device) {
  return Change(device, "0x0x32@60", "0x2") + Change(device, "0x0x32@60", "0x10000009");
}
std::string Commit(int32_t result = 0) {
  return "ChangeDisplaySettingsExA(null null flags=0x0)=" + std::to_string(result) + "\n";
}

TEST(NvidiaV2ExtendOff, KeepsThePrimaryDeviceAndDetachesTheOther) {
  NvidiaHost host(kExtended);
  EXPECT_EQ(host.Extend(FALSE),
            Keep("DISPLAY1", "1366x768x32@60") + Detach("DISPLAY2") + Commit() + "1");
  EXPECT_EQ(host.machine.Topology(), "single internal");
}

TEST(NvidiaV2ExtendOff, IsTheSameForNamedDisplays) {
  NvidiaHost host(kExtended);
  host.Forget();
  EXPECT_EQ(host.nv().EnableExtendModeOnDisplays(FALSE, kHdmi), 1);
  EXPECT_EQ(host.machine.TakeJournal(),
            Keep("DISPLAY1", "1366x768x32@60") + Detach("DISPLAY2") + Commit());
}

TEST(NvidiaV2ExtendOff, NamedDisplaysNeedNoTwoDevices) {
  NvidiaHost host("win7 nvidia*1: internal 1366x768 active, hdmi 1920x1080");
  host.Forget();
  EXPECT_EQ(host.nv().EnableExtendModeOnDisplays(FALSE, kHdmi), 1);
  EXPECT_EQ(host.machine.TakeJournal(), Keep("DISPLAY1", "1366x768x32@60") + Commit());
}

TEST(NvidiaV2ExtendOff, GoesInWindowsOrderWhereverThePrimaryDeviceStands) {
  NvidiaHost host(kExtended);
  host.model().primary_source = 1;
  host.model().sources[1].x = 0;
  host.model().sources[0].x = 1920;
  EXPECT_EQ(host.Extend(FALSE),
            Detach("DISPLAY1") + Keep("DISPLAY2", "1920x1080x32@60") + Commit() + "1");
  EXPECT_EQ(host.machine.Topology(), "single hdmi");
}

TEST(NvidiaV2ExtendOff, LeavesDevicesAloneThatAreNotAttached) {
  NvidiaHost host(kMachine);
  EXPECT_EQ(host.Extend(FALSE), Keep("DISPLAY1", "1366x768x32@60") + Commit() + "1");
}

TEST(NvidiaV2ExtendOff, DeviceOfAnotherVendorIsDetachedToo) {
  NvidiaHost host("win7 nvidia, intel: internal 1366x768 active, crt@2 1024x768 active");
  EXPECT_EQ(host.Extend(FALSE),
            Keep("DISPLAY1", "1366x768x32@60") + Detach("DISPLAY3") + Commit() + "1");
}

// It is to be detached like any other. Here it has no settings to read and takes none, and the
// commit cannot keep it.
TEST(NvidiaV2ExtendOff, AttachedMirroringDeviceIsToBeDetachedToo) {
  NvidiaHost host("win7 nvidia, amd: internal 1366x768 active, hdmi@2 1920x1080 active");
  host.model().adapters[1].mirroring = true;
  EXPECT_EQ(host.Extend(FALSE), Keep("DISPLAY1", "1366x768x32@60") +
                                    Change("DISPLAY3", "0x0x0@0", "0x2", -1, "0x5c0000") +
                                    Commit(-1) + "0");
}

TEST(NvidiaV2ExtendOff, SettingsThatFailTheTestAreNotStored) {
  NvidiaHost host(kExtended);
  host.Forget();
  host.machine.Fail("ChangeDisplaySettingsExA", 1, sim::NvCode(DISP_CHANGE_BADMODE));
  EXPECT_EQ(host.Extend(FALSE),
            Change("DISPLAY1", "1366x768x32@60", "0x2", -2) + Detach("DISPLAY2") + Commit() + "1");
}

TEST(NvidiaV2ExtendOff, DetachingThatFailsTheTestIsNotStored) {
  NvidiaHost host(kExtended);
  host.Forget();
  host.machine.Fail("ChangeDisplaySettingsExA", 3, sim::NvCode(DISP_CHANGE_FAILED));
  EXPECT_EQ(host.Extend(FALSE), Keep("DISPLAY1", "1366x768x32@60") +
                                    Change("DISPLAY2", "0x0x32@60", "0x2", -1) + Commit() + "1");
  EXPECT_EQ(host.machine.Topology(), "extend internal+hdmi");
}

TEST(NvidiaV2ExtendOff, StoringThatFailsStopsNothing) {
  for (const uint32_t nth : {2u, 4u}) {
    NvidiaHost host(kExtended);
    host.Forget();
    host.machine.Fail("ChangeDisplaySettingsExA", nth);
    const std::string course = host.Extend(FALSE);
    EXPECT_EQ(CountOf(course, "ChangeDisplaySettingsExA"), 5u) << course;
    EXPECT_EQ(course.back(), '1');
  }
}

TEST(NvidiaV2ExtendOff, ResultIsTheCommits) {
  NvidiaHost host(kExtended);
  host.Forget();
  host.machine.Fail("ChangeDisplaySettingsExA", 5, sim::NvCode(DISP_CHANGE_FAILED));
  EXPECT_EQ(host.Extend(FALSE),
            Keep("DISPLAY1", "1366x768x32@60") + Detach("DISPLAY2") + Commit(-1) + "0");
}

TEST(NvidiaV2ExtendOff, SettingsThatCannotBeReadAreLoggedAndTheStepGoesOn) {
  NvidiaHost host(kExtended);
  host.Forget();
  host.machine.Fail("EnumDisplaySettingsExA", 1, ERROR_GEN_FAILURE,
                    sim::Machine::Repeat::kFromThenOn);
  const std::string course = host.Extend(FALSE);
  for (const char* device : {"DISPLAY1", "DISPLAY2"}) {
    EXPECT_EQ(CountOf(course, std::string("ChangeDisplaySettingsExA(\\\\.\\") + device +
                                  " 0x0x0@0 at 0,0 fields=0x5c0000 flags=0x2)"),
              1u)
        << course;
  }
  EXPECT_EQ(CountOf(course, Commit()), 1u) << course;
  EXPECT_EQ(host.TakeLogWithSeverity(), ReadFailed() + ReadFailed());
}

}  // namespace
