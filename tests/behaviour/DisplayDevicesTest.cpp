// The listings of Windows' display devices, and settings stored for one of them.
#include <gtest/gtest.h>

#include "tests/behaviour/CoreHost.h"

namespace {

using Names = std::vector<std::string>;
using WideNames = std::vector<std::wstring>;

void MakeMirroring(CoreHost* host, size_t adapter) {
  host->machine.model().adapters[adapter].mirroring = true;
}

Names Attached(CoreHost* host) {
  Names names = {"left over"};
  host->core().GetAttachedDevices(&names);
  return names;
}

WideNames AllNames(CoreHost* host) {
  WideNames names = {L"left over"};
  host->core().GetDisplayDeviceNames(&names);
  return names;
}

WideNames IntelAttached(CoreHost* host) {
  WideNames names = {L"left over"};
  host->core().GetIntelAttachedDevices(&names);
  return names;
}

WideNames ByVendor(CoreHost* host, const char* vendor) {
  WideNames names = {L"left over"};
  host->core().GetDeviceNamesByVendor(vendor, &names);
  return names;
}

TEST(GetAttachedDevices, ListsAttachedAndUnattachedOnesFromTheFirstAttachedOn) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768");
  EXPECT_EQ(Attached(&host), (Names{"\\\\.\\DISPLAY1", "\\\\.\\DISPLAY2"}));
}

TEST(GetAttachedDevices, DropsUnattachedOnesInFrontOfTheFirstAttachedOne) {
  CoreHost host("win7 intel: internal 1366x768, crt 1024x768 active");
  host.machine.model().active = {{1, 1}};  // the second source shows the CRT
  host.machine.model().primary_source = 1;
  EXPECT_EQ(Attached(&host), (Names{"\\\\.\\DISPLAY2"}));
}

TEST(GetAttachedDevices, IsEmptyWithoutAnAttachedDevice) {
  CoreHost host("win7 intel: internal 1366x768 active, crt 1024x768");
  host.machine.model().active.clear();
  EXPECT_EQ(Attached(&host), Names{});
}

TEST(GetAttachedDevices, IsEmptyAndSilentWithoutDevices) {
  CoreHost host("win7 intel: internal 1366x768 active", L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  host.machine.Fail("EnumDisplayDevicesA", 1);
  EXPECT_EQ(Attached(&host), Names{});
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(GetAttachedDevices, LeavesMirroringDriversOut) {
  // Behind the attached device, where unattached ones stay in the list.
  CoreHost host("win7 intel, amd: internal 1366x768 active, crt 1024x768");
  MakeMirroring(&host, 1);
  EXPECT_EQ(Attached(&host), (Names{"\\\\.\\DISPLAY1", "\\\\.\\DISPLAY2"}));
}

TEST(GetDisplayDeviceNames, ListsEveryDeviceInOrder) {
  CoreHost host("win7 intel, nvidia: internal 1366x768, hdmi@2 1920x1080 active");
  EXPECT_EQ(AllNames(&host), (WideNames{L"\\\\.\\DISPLAY1", L"\\\\.\\DISPLAY2", L"\\\\.\\DISPLAY3",
                                        L"\\\\.\\DISPLAY4"}));
}

TEST(GetDisplayDeviceNames, LeavesMirroringDriversOut) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active");
  MakeMirroring(&host, 1);
  EXPECT_EQ(AllNames(&host), (WideNames{L"\\\\.\\DISPLAY1", L"\\\\.\\DISPLAY2"}));
}

TEST(GetIntelAttachedDevices, ListsIntelDevicesFromTheFirstAttachedOn) {
  CoreHost host("win7 nvidia, intel: internal@2 1366x768 active, hdmi@1 1920x1080");
  EXPECT_EQ(IntelAttached(&host), (WideNames{L"\\\\.\\DISPLAY3", L"\\\\.\\DISPLAY4"}));
}

TEST(GetIntelAttachedDevices, DropsUnattachedOnesInFront) {
  CoreHost host("win7 intel: internal 1366x768, crt 1024x768 active");
  host.machine.model().active = {{1, 1}};
  EXPECT_EQ(IntelAttached(&host), (WideNames{L"\\\\.\\DISPLAY2"}));
}

TEST(GetIntelAttachedDevices, IsEmptyWhenOnlyOthersAreAttached) {
  CoreHost host("win7 intel, nvidia: internal 1366x768, hdmi@2 1920x1080 active");
  EXPECT_EQ(IntelAttached(&host), WideNames{});
}

TEST(GetIntelAttachedDevices, LeavesMirroringDriversOut) {
  CoreHost host("win7 intel, intel: internal 1366x768 active");
  MakeMirroring(&host, 1);
  EXPECT_EQ(IntelAttached(&host), (WideNames{L"\\\\.\\DISPLAY1", L"\\\\.\\DISPLAY2"}));
}

TEST(GetDeviceNamesByVendor, MatchesTheLowerCasedDeviceId) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active");
  EXPECT_EQ(ByVendor(&host, "*10de*"), (WideNames{L"\\\\.\\DISPLAY3", L"\\\\.\\DISPLAY4"}));
  EXPECT_EQ(ByVendor(&host, "*8086*"), (WideNames{L"\\\\.\\DISPLAY1", L"\\\\.\\DISPLAY2"}));
  EXPECT_EQ(ByVendor(&host, "*"), AllNames(&host));
}

TEST(GetDeviceNamesByVendor, ComparesWithTheWildcardAsItIs) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active");
  EXPECT_EQ(ByVendor(&host, "*10DE*"), WideNames{});  // the ids are small by then
  EXPECT_EQ(ByVendor(&host, "10de"), WideNames{});    // the whole id counts
  EXPECT_EQ(ByVendor(&host, "pci\\\\ven_10d?*"),
            (WideNames{L"\\\\.\\DISPLAY3", L"\\\\.\\DISPLAY4"}));
}

TEST(GetDeviceNamesByVendor, LeavesMirroringDriversOut) {
  CoreHost host("win7 nvidia, nvidia: internal@2 1366x768 active");
  MakeMirroring(&host, 0);
  EXPECT_EQ(ByVendor(&host, "*10de*"), (WideNames{L"\\\\.\\DISPLAY3", L"\\\\.\\DISPLAY4"}));
}

TEST(GetDeviceNamesByVendor, HasNoAnswerWithoutAVendor) {
  CoreHost host("win7 intel: internal 1366x768 active", L"--enable-dcheck");
  host.core();
  host.ForgetLog();
  EXPECT_EQ(ByVendor(&host, nullptr), WideNames{});
  EXPECT_EQ(host.TakeLog(), "Check failed: vendor_id_string != NULL. \n");
}

TEST(GetDisplayDeviceCount, CountsDevicesWithoutMirroringOnes) {
  CoreHost host("win7 intel, nvidia: internal 1366x768 active");
  EXPECT_EQ(host.core().GetDisplayDeviceCount(), 4u);
  MakeMirroring(&host, 1);
  EXPECT_EQ(host.core().GetDisplayDeviceCount(), 2u);
}

TEST(GetDisplayDeviceCount, IsZeroWhenTheFirstCallFails) {
  CoreHost host("win7 intel: internal 1366x768 active");
  host.core();
  host.machine.Fail("EnumDisplayDevicesA", 1);
  EXPECT_EQ(host.core().GetDisplayDeviceCount(), 0u);
}

// --- ChangeDisplaySettingsTestAndApply

DEVMODEA Wanted(uint32_t width, uint32_t height) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT | DM_BITSPERPEL;
  dm.dmPelsWidth = width;
  dm.dmPelsHeight = height;
  dm.dmBitsPerPel = 32;
  return dm;
}

TEST(ChangeDisplaySettingsTestAndApply, PutsItsFlagsTogether) {
  const struct {
    bool reset;
    bool set_primary;
    const char* flags;
  } rows[] = {{false, false, "0x10000009"},
              {false, true, "0x10000019"},
              {true, false, "0x40000009"},
              {true, true, "0x40000019"}};
  for (const auto& row : rows) {
    CoreHost host("win7 intel: internal 1366x768 active");
    DEVMODEA dm = Wanted(1024, 768);
    int32_t status = 77;
    EXPECT_TRUE(host.core().ChangeDisplaySettingsTestAndApply("\\\\.\\DISPLAY1", &dm, row.reset,
                                                              row.set_primary, &status));
    EXPECT_EQ(status, 0);
    std::string expected;
    for (const char* flags : {"0x2", row.flags}) {
      expected +=
          "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1024x768x32@0 at 0,0 fields=0x1c0000 flags=";
      expected += flags;
      expected += ")=0\n";
    }
    EXPECT_EQ(host.machine.TakeJournal(), expected);
  }
}

TEST(ChangeDisplaySettingsTestAndApply, StopsAtARefusedTest) {
  CoreHost host("win7 intel: internal 1366x768 active");
  DEVMODEA dm = Wanted(1234, 567);
  int32_t status = 77;
  EXPECT_FALSE(
      host.core().ChangeDisplaySettingsTestAndApply("\\\\.\\DISPLAY1", &dm, true, true, &status));
  EXPECT_EQ(status, DISP_CHANGE_BADMODE);
  EXPECT_EQ(host.machine.TakeJournal(),
            "ChangeDisplaySettingsExA(\\\\.\\DISPLAY1 1234x567x32@0 at 0,0 fields=0x1c0000 "
            "flags=0x2)=-2\n");
}

TEST(ChangeDisplaySettingsTestAndApply, ReportsARefusedChange) {
  CoreHost host("win7 intel: internal 1366x768 active");
  host.core();
  DEVMODEA dm = Wanted(1024, 768);
  int32_t status = 77;
  host.machine.Fail("ChangeDisplaySettingsExA", 2, static_cast<uint32_t>(DISP_CHANGE_NOTUPDATED));
  EXPECT_FALSE(
      host.core().ChangeDisplaySettingsTestAndApply("\\\\.\\DISPLAY1", &dm, false, false, &status));
  EXPECT_EQ(status, DISP_CHANGE_NOTUPDATED);
}

TEST(ChangeDisplaySettingsTestAndApply, NeedsNoStatus) {
  CoreHost host("win7 intel: internal 1366x768 active");
  DEVMODEA dm = Wanted(1024, 768);
  EXPECT_TRUE(
      host.core().ChangeDisplaySettingsTestAndApply("\\\\.\\DISPLAY1", &dm, true, false, nullptr));
  EXPECT_EQ(host.machine.model().sources[0].mode.width, 1024u);
  dm = Wanted(1234, 567);
  EXPECT_FALSE(
      host.core().ChangeDisplaySettingsTestAndApply("\\\\.\\DISPLAY1", &dm, true, false, nullptr));
}

}  // namespace
