#include <gtest/gtest.h>

#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1024x768 active";
constexpr DWORD kStage = CDS_UPDATEREGISTRY | CDS_NORESET;

DISPLAY_DEVICEA Device(const char* name, DWORD index) {
  DISPLAY_DEVICEA device = {};
  device.cb = sizeof device;
  if (!FAKE(EnumDisplayDevicesA)(name, index, &device, 0)) device.StateFlags = 0xDEAD;
  return device;
}

TEST(DisplayDevices, ListsEverySourceWithItsState) {
  Machine machine("win7 intel: internal 1366x768 active, crt 1024x768");
  const DISPLAY_DEVICEA first = Device(nullptr, 0);
  EXPECT_STREQ(first.DeviceName, kFirst);
  EXPECT_STREQ(first.DeviceString, "Intel(R) HD Graphics 4000");
  EXPECT_STREQ(first.DeviceID, "PCI\\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09");
  EXPECT_EQ(first.StateFlags,
            static_cast<DWORD>(DISPLAY_DEVICE_ATTACHED_TO_DESKTOP | DISPLAY_DEVICE_PRIMARY_DEVICE));
  EXPECT_EQ(Device(nullptr, 1).StateFlags, 0u);
  EXPECT_EQ(Device(nullptr, 2).StateFlags, 0xDEADu);
}

TEST(DisplayDevices, WideFormSaysTheSame) {
  Machine machine(kExtended);
  DISPLAY_DEVICEW device = {};
  device.cb = sizeof device;
  ASSERT_TRUE(FAKE(EnumDisplayDevicesW)(nullptr, 1, &device, 0));
  EXPECT_STREQ(device.DeviceName, L"\\\\.\\DISPLAY2");
  EXPECT_EQ(device.StateFlags, static_cast<DWORD>(DISPLAY_DEVICE_ATTACHED_TO_DESKTOP));
}

TEST(DisplayDevices, RecordWithoutItsSizeIsRefused) {
  Machine machine(kPanelAndCrt);
  DISPLAY_DEVICEA device = {};
  EXPECT_FALSE(FAKE(EnumDisplayDevicesA)(nullptr, 0, &device, 0));
  EXPECT_EQ(device.DeviceName[0], '\0');
}

TEST(DisplayDevices, OldRecordIsWrittenOnlyAsFarAsItReaches) {
  Machine machine(kPanelAndCrt);
  DISPLAY_DEVICEA device = {};
  device.cb = offsetof(DISPLAY_DEVICEA, DeviceID);
  device.DeviceID[0] = '!';
  ASSERT_TRUE(FAKE(EnumDisplayDevicesA)(nullptr, 0, &device, 0));
  EXPECT_STREQ(device.DeviceName, kFirst);
  EXPECT_EQ(device.DeviceID[0], '!');
}

TEST(DisplayDevices, MirroringDriverIsListedAndMarked) {
  Machine machine(kPanelAndCrt);
  Adapter mirror;
  mirror.mirroring = true;
  machine.model().adapters.push_back(mirror);
  Source source;
  source.adapter = 1;
  source.device_name = "\\\\.\\DISPLAYV1";
  machine.model().sources.push_back(source);
  EXPECT_EQ(Device(nullptr, 2).StateFlags, static_cast<DWORD>(DISPLAY_DEVICE_MIRRORING_DRIVER));
}

TEST(DisplayDevices, DisabledAdapterHasNoDisplayDevice) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active");
  machine.model().adapters[1].disabled = true;
  EXPECT_EQ(Device(nullptr, 1).StateFlags, 0u);
  EXPECT_EQ(Device(nullptr, 2).StateFlags, 0xDEADu);
}

TEST(DisplayDevices, DeviceNameListsItsMonitors) {
  Machine machine("win7 intel: clone internal 1366x768 active, crt 1024x768 active");
  EXPECT_STREQ(Device(kFirst, 1).DeviceName, "\\\\.\\DISPLAY1\\Monitor1");
  EXPECT_EQ(Device(kFirst, 2).StateFlags, 0xDEADu);
  EXPECT_EQ(Device(kSecond, 0).StateFlags, 0xDEADu);
}

TEST(DisplayDevices, DeclaredFaultRefusesOnce) {
  Machine machine(kPanelAndCrt);
  machine.Fail("EnumDisplayDevicesA", 1);
  EXPECT_EQ(Device(nullptr, 0).StateFlags, 0xDEADu);
  EXPECT_NE(Device(nullptr, 0).StateFlags, 0xDEADu);
}

TEST(DisplaySettings, CurrentSettingsSayModePositionAndFields) {
  Machine machine(kExtended);
  const DEVMODEA dm = Settings(kSecond);
  EXPECT_EQ(Told(dm), "1024x768x32@60 at 1366,0");
  EXPECT_EQ(dm.dmFields, 0x7C00A0u);
  EXPECT_EQ(dm.dmSize, 124);  // how far Windows writes, whatever came in
}

TEST(DisplaySettings, NullDeviceIsThePrimaryOne) {
  Machine machine("win7 intel: crt 1024x768 active, internal 1366x768 active");
  EXPECT_EQ(Now(nullptr), "1024x768x32@60 at 0,0");
}

TEST(DisplaySettings, DetachedDeviceAnswersWithSizesOfZero) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(Now(kSecond), "detached");
}

TEST(DisplaySettings, RegistrySettingsAreThereOnceSomethingWasStored) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(Told(Settings(kFirst, ENUM_REGISTRY_SETTINGS)), "1366x768x32@60 at 0,0");
  EXPECT_EQ(Told(Settings(kSecond, ENUM_REGISTRY_SETTINGS)), "refused");
  ASSERT_EQ(Change(kSecond, SizedAt(800, 600, 1366, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Told(Settings(kSecond, ENUM_REGISTRY_SETTINGS)), "800x600x32@60 at 1366,0");
}

TEST(DisplaySettings, WalkEndsAfterTheMonitorsModes) {
  Machine machine(kPanelAndCrt);
  const size_t count = machine.model().connectors[0].monitor->modes.size();
  EXPECT_NE(Told(Settings(kFirst, static_cast<DWORD>(count - 1))), "refused");
  EXPECT_EQ(Told(Settings(kFirst, static_cast<DWORD>(count))), "refused");
  EXPECT_EQ(Settings(kFirst, 0).dmFields & DM_POSITION, 0u);
}

TEST(DisplaySettings, DetachedDeviceListsTheModesOfTheDisplayItWouldTake) {
  Machine machine(kPanelAndCrt);
  DWORD last = 0;
  while (Told(Settings(kSecond, last)) != "refused") ++last;
  ASSERT_GT(last, 0u);
  EXPECT_EQ(Told(Settings(kSecond, last - 1)), "1024x768x32@60 at 0,0");
}

TEST(DisplaySettings, CloneListsCommonModesOnly) {
  Machine machine("win7 intel: clone internal 1366x768 active, crt 1024x768 active");
  for (DWORD i = 0; Told(Settings(kFirst, i)) != "refused"; ++i) {
    EXPECT_LE(Settings(kFirst, i).dmPelsWidth, 1024u);
  }
}

TEST(DisplaySettings, RecordWithoutItsSizeAndUnknownDeviceAreRefused) {
  Machine machine(kPanelAndCrt);
  DEVMODEA dm = {};
  EXPECT_FALSE(FAKE(EnumDisplaySettingsA)(nullptr, ENUM_CURRENT_SETTINGS, &dm));
  EXPECT_EQ(dm.dmPelsWidth, 0u);
  EXPECT_EQ(Now("\\\\.\\DISPLAY9"), "refused");
  EXPECT_EQ(Now("\\\\.\\display1"), "1366x768x32@60 at 0,0");
}

TEST(DisplaySettings, AllFourFormsAgree) {
  Machine machine(kPanelAndCrt);
  DEVMODEA a = EmptyMode();
  DEVMODEW w = {};
  DEVMODEW x = {};
  w.dmSize = x.dmSize = sizeof w;
  ASSERT_TRUE(FAKE(EnumDisplaySettingsExA)(kFirst, ENUM_CURRENT_SETTINGS, &a, 0));
  ASSERT_TRUE(FAKE(EnumDisplaySettingsW)(L"\\\\.\\DISPLAY1", ENUM_CURRENT_SETTINGS, &w));
  ASSERT_TRUE(FAKE(EnumDisplaySettingsExW)(L"\\\\.\\DISPLAY1", ENUM_CURRENT_SETTINGS, &x, 0));
  EXPECT_EQ(a.dmPelsWidth, 1366u);
  EXPECT_EQ(w.dmPelsWidth, 1366u);
  EXPECT_EQ(x.dmPelsWidth, 1366u);
}

TEST(DisplaySettingsChange, TestChangesNothing) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(Change(kFirst, Sized(800, 600), CDS_TEST), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
}

TEST(DisplaySettingsChange, SizeThatTheMonitorDoesNotListIsABadMode) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(Change(kFirst, Sized(1920, 1080), CDS_TEST), DISP_CHANGE_BADMODE);
  DEVMODEA dm = Sized(800, 600);
  dm.dmFields |= DM_DISPLAYFREQUENCY;
  dm.dmDisplayFrequency = 75;
  EXPECT_EQ(Change(kFirst, dm, 0), DISP_CHANGE_BADMODE);
  dm.dmDisplayFrequency = 0;  // the default one
  EXPECT_EQ(Change(kFirst, dm, CDS_TEST), DISP_CHANGE_SUCCESSFUL);
  dm = Sized(800, 600);
  dm.dmFields |= DM_BITSPERPEL;
  dm.dmBitsPerPel = 24;
  EXPECT_EQ(Change(kFirst, dm, CDS_TEST), DISP_CHANGE_BADMODE);
}

TEST(DisplaySettingsChange, FieldsThatAreNotNamedStayAsTheyAre) {
  Machine machine(kPanelAndCrt);
  DEVMODEA dm = EmptyMode();
  dm.dmFields = DM_BITSPERPEL;
  dm.dmBitsPerPel = 16;
  dm.dmPelsWidth = 5;
  ASSERT_EQ(Change(kFirst, dm, 0), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "1366x768x16@60 at 0,0");
}

TEST(DisplaySettingsChange, DynamicChangeGoesAwayWithTheNextCommit) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(Change(kFirst, Sized(800, 600), 0), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "800x600x32@60 at 0,0");
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
}

TEST(DisplaySettingsChange, StoredChangeStays) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(Change(nullptr, Sized(800, 600), CDS_UPDATEREGISTRY | CDS_GLOBAL | CDS_RESET),
            DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "800x600x32@60 at 0,0");
}

TEST(DisplaySettingsChange, StagingWaitsForTheCommit) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(Change(kSecond, SizedAt(800, 600, 1366, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(machine.Topology(), "single internal");
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Now(kSecond), "800x600x32@60 at 1366,0");
}

TEST(DisplaySettingsChange, CommitFindsThatTheMonitorHasBeenExchanged) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(Change(kSecond, SizedAt(1024, 768, 1366, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  machine.Plug("crt", MakeMonitor("CRT", 800, 600));
  EXPECT_EQ(Commit(), DISP_CHANGE_BADMODE);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(DisplaySettingsChange, SizeOfZeroDetaches) {
  Machine machine(kExtended);
  ASSERT_EQ(Change(kSecond, SizedAt(0, 0, 0, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Now(kSecond), "detached");
}

TEST(DisplaySettingsChange, LastDeviceCannotBeDetached) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(Change(kFirst, SizedAt(0, 0, 0, 0), CDS_UPDATEREGISTRY), DISP_CHANGE_FAILED);
  ASSERT_EQ(Change(kFirst, SizedAt(0, 0, 0, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Commit(), DISP_CHANGE_FAILED);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(DisplaySettingsChange, DeviceWithoutAMonitorHasNoModeAtAll) {
  Machine machine("win7 intel: internal 1366x768 active, crt");
  EXPECT_EQ(Change(kSecond, SizedAt(1024, 768, 1366, 0), CDS_TEST), DISP_CHANGE_BADMODE);
}

TEST(DisplaySettingsChange, SetPrimaryMovesTheOrigin) {
  Machine machine(kExtended);
  DEVMODEA dm = SizedAt(1024, 768, 0, 0);
  ASSERT_EQ(Change(kSecond, dm, kStage | CDS_SET_PRIMARY), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 0,0");
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 1024,0");
  EXPECT_EQ(Now(nullptr), "1024x768x32@60 at 0,0");
}

TEST(DisplaySettingsChange, PanelAndPrimaryChangePlacesInOneCommit) {
  Machine machine("win7 intel: crt 1024x768 active, internal 1366x768");
  ASSERT_EQ(Change(kSecond, SizedAt(1366, 768, 0, 0), kStage | CDS_SET_PRIMARY),
            DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Change(kFirst, SizedAt(0, 0, 0, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Now(nullptr), "1366x768x32@60 at 0,0");
}

TEST(DisplaySettingsChange, DesktopsNeitherOverlapNorDrift) {
  Machine machine(kExtended);
  ASSERT_EQ(Change(kFirst, Sized(800, 600), CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 800,0");
}

TEST(DisplaySettingsChange, SecondDeviceLeavesTheClone) {
  Machine machine("win7 intel: clone internal 1024x768 active, crt 1024x768 active");
  ASSERT_EQ(Change(kSecond, SizedAt(1024, 768, 1024, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

// What a clone group of NVIDIA's driver shows is not dark, but free when nothing else is.
TEST(DisplaySettingsChange, DeviceThatComesTakesADarkDisplayBeforeOneOfAGroup) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active, dp@2 1600x900, hdmi@2 1920x1080");
  Model& model = machine.model();
  const size_t device = *FindSource(model, "\\\\.\\DISPLAY3");
  const size_t dp = *FindConnector(model, "dp");
  const size_t hdmi = *FindConnector(model, "hdmi");
  EXPECT_EQ(ConnectorForSource(model, model.active, device), dp);
  model.nvidia_clone_groups = {{{3, 0x100}, {0, NvDisplayIdOf(model, "dp")}}};
  EXPECT_EQ(ConnectorForSource(model, model.active, device), hdmi);
  model.nvidia_clone_groups.push_back({{3, 0x100}, {0, NvDisplayIdOf(model, "hdmi")}});
  EXPECT_EQ(ConnectorForSource(model, model.active, device), dp);
}

// NVIDIA's driver shows nothing on the panel of the other adapter, though it is in the group.
TEST(DisplaySettingsChange, PanelOfACloneGroupIsAsDarkAsWindowsLeavesIt) {
  Machine machine("win7 intel, nvidia: internal 1366x768, crt 1280x1024, dp@2 1600x900 active");
  Model& model = machine.model();
  const size_t device = *FindSource(model, "\\\\.\\DISPLAY1");
  model.nvidia_clone_groups = {{{3, 0x100}, {0, NvDisplayIdOf(model, "dp")}}};
  EXPECT_EQ(ConnectorForSource(model, model.active, device), *FindConnector(model, "internal"));
}

TEST(DisplaySettingsChange, DisplayOfAGroupIsTakenBeforeOneOutOfWindowsClone) {
  Machine machine(
      "win7 intel, nvidia: clone internal 1024x768, dvi@2 1024x768, dp@2 1024x768 active, "
      "hdmi@2 1024x768 active");
  Model& model = machine.model();
  const size_t device = *FindSource(model, "\\\\.\\DISPLAY4");
  const size_t dvi = *FindConnector(model, "dvi");
  EXPECT_EQ(ConnectorForSource(model, model.active, device), dvi);
  model.nvidia_clone_groups = {{{3, 0x100}, {0, NvDisplayIdOf(model, "dvi")}}};
  EXPECT_EQ(ConnectorForSource(model, model.active, device), dvi);
  model.connectors[dvi].monitor.reset();
  EXPECT_EQ(ConnectorForSource(model, model.active, device), *FindConnector(model, "hdmi"));
}

TEST(DisplaySettingsChange, OrientationTurnsTheSizes) {
  Machine machine(kPanelAndCrt);
  DEVMODEA dm = Sized(768, 1366);
  dm.dmFields |= DM_DISPLAYORIENTATION;
  dm.dmDisplayOrientation = DMDO_90;
  ASSERT_EQ(Change(kFirst, dm, CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Now(kFirst), "768x1366x32@60 at 0,0");
  EXPECT_EQ(Settings(kFirst).dmDisplayOrientation, static_cast<DWORD>(DMDO_90));
  dm.dmDisplayOrientation = 7;
  EXPECT_EQ(Change(kFirst, dm, CDS_TEST), DISP_CHANGE_BADMODE);
}

TEST(DisplaySettingsChange, ForbiddenFlagsAndParameters) {
  Machine machine(kPanelAndCrt);
  const DEVMODEA dm = Sized(800, 600);
  EXPECT_EQ(Change(kFirst, dm, CDS_NORESET), DISP_CHANGE_BADFLAGS);
  EXPECT_EQ(Change(kFirst, dm, CDS_GLOBAL), DISP_CHANGE_BADFLAGS);
  EXPECT_EQ(Change(kFirst, dm, kStage | CDS_RESET), DISP_CHANGE_BADFLAGS);
  EXPECT_EQ(Change(kFirst, dm, 0x80000000), DISP_CHANGE_BADFLAGS);
  EXPECT_EQ(Change("\\\\.\\DISPLAY7", dm, CDS_TEST), DISP_CHANGE_BADPARAM);
  DEVMODEA copy = dm;
  EXPECT_EQ(FAKE(ChangeDisplaySettingsExA)(kFirst, &copy, GetDesktopWindow(), CDS_TEST, nullptr),
            DISP_CHANGE_BADPARAM);
  EXPECT_EQ(FAKE(ChangeDisplaySettingsExA)(kFirst, &copy, nullptr, CDS_TEST, &copy),
            DISP_CHANGE_BADPARAM);
  copy.dmSize = 0;
  EXPECT_EQ(Change(kFirst, copy, CDS_TEST), DISP_CHANGE_BADMODE);
}

TEST(DisplaySettingsChange, EveryCallIsInTheJournal) {
  Machine machine(kPanelAndCrt);
  DEVMODEA dm = SizedAt(1024, 768, 0, 0);
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 60;
  Change(kFirst, dm, CDS_TEST);
  Change(kFirst, Sized(5, 5), CDS_TEST);
  FAKE(ChangeDisplaySettingsA)(&dm, CDS_TEST);
  Commit();
  Settings(kFirst);
  EXPECT_EQ(machine.TakeJournal(),
            "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1024x768x32@60 at 0,0 fields=0x180020 "
            "flags=0x2)=0\n"
            "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 5x5x0@0 at 0,0 fields=0x180000 "
            "flags=0x2)=-2\n"
            "ChangeDisplaySettingsA(null 1024x768x32@60 at 0,0 fields=0x180020 flags=0x2)=0\n"
            "ChangeDisplaySettingsExA(null null flags=0x0)=0\n");
}

TEST(DisplaySettingsChange, DeclaredFaultIsGivenBackAndChangesNothing) {
  Machine machine(kPanelAndCrt);
  machine.Fail("ChangeDisplaySettingsExA", 1);
  EXPECT_EQ(Change(kFirst, Sized(800, 600), 0), DISP_CHANGE_FAILED);
  machine.Fail("ChangeDisplaySettingsExA", 1, static_cast<uint32_t>(DISP_CHANGE_RESTART));
  EXPECT_EQ(Change(kFirst, Sized(800, 600), 0), DISP_CHANGE_RESTART);
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at 0,0");
}

TEST(DisplaySettingsChange, QueryDisplayConfigSeesWhatChanged) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(Change(kSecond, SizedAt(800, 600, 1366, 0), kStage), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(Commit(), DISP_CHANGE_SUCCESSFUL);
  EXPECT_EQ(Query(QDC_ONLY_ACTIVE_PATHS).paths.size(), 2u);
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_EXTEND);
}

}  // namespace
}  // namespace sim
