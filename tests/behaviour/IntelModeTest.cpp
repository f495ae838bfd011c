// What the Intel back-end reads from the driver: the mode, the settings of a display, EDIDs.
#include <gtest/gtest.h>

#include "tests/behaviour/IntelHost.h"
#include "tests/support/EdidBlock.h"
#include "tests/support/RaiseWatch.h"
#include "tests/support/ScriptedCui.h"

namespace {

constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr char kGetDeviceData[] = "ICUIExternal8::GetDeviceData";

using Bytes = ScriptedCui::Bytes;

// --- GetCurrentDisplayMode.

struct ModeCase {
  const char* machine;
  const char* mode;
};

TEST(IntelMode, FollowsTheTopology) {
  const ModeCase cases[] = {
      {"win7 intel: internal 1366x768 active, hdmi 1920x1080", "1 0x1"},
      {"win7 intel: internal 1366x768, hdmi 1920x1080 active", "1 0x10"},
      {"win7 intel: clone internal 1366x768 active, crt 1024x768 active", "2 0x3"},
      {"win7 intel: internal 1366x768 active, dvi 1920x1080 active", "4 0x9"},
      {"win7 intel*3: internal 1366x768 active, hdmi 1920x1080 active, dp 1920x1080 active",
       "512 0x31"},
      {"win7 intel*3: clone internal 1024x768 active, hdmi 1024x768 active, crt 1024x768 active",
       "1024 0x13"},
  };
  for (const ModeCase& c : cases) EXPECT_EQ(IntelHost(c.machine).Mode(), c.mode) << c.machine;
}

// A driver whose N-view block has `count` entries, in whatever mode.
void ScriptNView(ScriptedCui* cui, uint32_t mode, uint32_t count,
                 const std::vector<uint32_t>& uids) {
  cui->get = [=](const GUID&, Bytes* block, uint32_t* err) {
    *err = 0;
    ScriptedCui::Put(block, 8, 16 + 68 * static_cast<uint32_t>(uids.size()));
    if (ScriptedCui::Get(*block, 4) != 0) return S_OK;
    ScriptedCui::Put(block, 0, mode);
    ScriptedCui::Put(block, 12, count);
    for (size_t i = 0; i < uids.size() && 16 + 68 * (i + 1) <= block->size(); ++i) {
      ScriptedCui::Put(block, 16 + 68 * i, uids[i]);
    }
    return S_OK;
  };
}

TEST(IntelMode, EveryOperatingModeBelowThreeDisplaysIsKnown) {
  for (uint32_t count = 0; count < 3; ++count) {
    for (uint32_t mode = 0; mode < 8; ++mode) {
      IntelHost host("win7 intel: internal 1366x768 active", kChecked);
      ScriptedCui cui;
      ScriptNView(&cui, mode, count, {1, 2});
      cui.Install(&host.machine);
      host.Forget();
      const std::string expected = mode == 3 ? "2 0x0" : mode == 5 ? "4 0x0" : "1 0x0";
      EXPECT_EQ(host.Mode(), expected) << mode << " " << count;
      EXPECT_EQ(host.TakeLog(), "") << mode << " " << count;
    }
  }
}

TEST(IntelMode, UnknownOperatingModeOfThreeDisplaysLeavesTheModeUntouched) {
  for (const uint32_t mode : {0u, 1u, 2u, 4u, 6u}) {
    IntelHost host("win7 intel: internal 1366x768 active", kChecked);
    ScriptedCui cui;
    ScriptNView(&cui, mode, 3, {1, 2, 3});
    cui.devices = {{2, 2, 0x12}};
    cui.Install(&host.machine);
    host.Forget();
    EXPECT_EQ(host.Mode(), "238 0x1") << mode;
    EXPECT_EQ(host.TakeLogWithSeverity(),
              "ERROR_REPORT Check failed: false. Unrecognized display mode\n");
  }
}

TEST(IntelMode, MoreThanThreeDisplaysCountAsThree) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 3, 4, {1, 2, 3, 4});
  cui.Install(&host.machine);
  EXPECT_EQ(host.Mode(), "1024 0x0");
}

TEST(IntelMode, UnknownUidsContributeNothing) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 3, 2, {0x11, 0x22});
  cui.devices = {{0x11, 5, 0x12}, {0x33, 1, 0x12}};
  cui.Install(&host.machine);
  EXPECT_EQ(host.Mode(), "2 0x10");
}

TEST(IntelMode, CountBeyondTheBlockIsNotFollowed) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 5, 0xFFFFFFFF, {0x11, 0x22});
  cui.devices = {{0x11, 2, 0x12}, {0x22, 5, 0x12}};
  cui.Install(&host.machine);
  EXPECT_EQ(host.Mode(), "512 0x11");
}

TEST(IntelMode, AsksForTheSizeFirst) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 3, 2, {0x11, 0x22});
  cui.Install(&host.machine);
  host.Mode();
  ASSERT_EQ(cui.given.size(), 2u);
  Bytes probe(84, 0);
  ScriptedCui::Put(&probe, 4, 1);
  ScriptedCui::Put(&probe, 8, 84);
  EXPECT_EQ(cui.given[0], probe);
  Bytes query(16 + 68 * 2, 0);
  ScriptedCui::Put(&query, 8, 16 + 68 * 2);
  EXPECT_EQ(cui.given[1], query);
}

TEST(IntelMode, SizeTooSmallIsRaised) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 1, 1, {});
  cui.Install(&host.machine);
  EXPECT_EQ(host.Mode(), "1 0x0");
  ASSERT_EQ(cui.given.size(), 2u);
  EXPECT_EQ(cui.given[1].size(), 84u);
}

TEST(IntelMode, FailedProbeFails) {
  IntelHost host("win7 intel: internal 1366x768 active", kChecked);
  host.Forget();
  host.machine.Fail(kGetDeviceData, 1, 0x80004005);
  EXPECT_EQ(host.Mode(), "failed");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR Call ICUIExternal8::GetDeviceData(IGFX_GET_SET_N_VIEW_CONFIG_GUID)failed, "
            "hr = 0x80004005, err = 0x7\n");
}

TEST(IntelMode, FailedSecondQueryReadsAsASingleMode) {
  IntelHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080 active", kChecked);
  host.Forget();
  host.machine.Fail(kGetDeviceData, 2, 0x80004005);
  EXPECT_EQ(host.Mode(), "1 0x0");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "ERROR_REPORT Check failed: SUCCEEDED(hr). \n"
            "ERROR_REPORT Check failed: err == IGFX_SUCCESS. \n");
}

// --- GetDisplaySettings.

std::string Settings(IntelHost* host, uint32_t display) {
  DEVMODEA dm = {};
  dm.dmSize = sizeof(dm);
  dm.dmFields = 0x5C0080;
  if (!host->intel().GetDisplaySettings(display, &dm)) return "failed";
  std::ostringstream text;
  text << dm.dmPelsWidth << "x" << dm.dmPelsHeight << "x" << dm.dmBitsPerPel << "@"
       << dm.dmDisplayFrequency << " at " << dm.dmPosition.x << "," << dm.dmPosition.y << " turned "
       << dm.dmDisplayOrientation;
  return text.str();
}

constexpr char kExtended[] = "win7 intel: internal 1366x768 active, hdmi 1920x1080 active, crt";

TEST(IntelSettings, OfTheFirstEntryTakeOneQuery) {
  IntelHost host(kExtended);
  host.intel();
  EXPECT_EQ(Settings(&host, IMMonitor::MD_NB), "1366x768x32@60 at 0,0 turned 0");
  EXPECT_EQ(host.machine.Calls(kGetDeviceData), 1u);
}

TEST(IntelSettings, OfAnotherEntryTakeTwo) {
  IntelHost host(kExtended);
  host.intel();
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "1920x1080x32@60 at 1366,0 turned 0");
  EXPECT_EQ(host.machine.Calls(kGetDeviceData), 2u);
}

TEST(IntelSettings, PositionsLeftOfThePrimaryAreNegative) {
  IntelHost host(kExtended);
  host.model().sources[1].x = -1920;
  host.model().sources[1].y = -100;
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "1920x1080x32@60 at -1920,-100 turned 0");
}

TEST(IntelSettings, OfADarkDisplayAreNotFound) {
  IntelHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  host.Forget();
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "failed");
  EXPECT_EQ(host.TakeLogWithSeverity(),
            "WARNING IntelMMImpl::GetDisplaySettings() no matched display found\n");
}

TEST(IntelSettings, FirstQueryThatFailsIsFollowedByAFullOne) {
  IntelHost host(kExtended);
  host.Forget();
  host.machine.Fail(kGetDeviceData, 1, 0x80004005);
  // The failed query told of no entries, so that one entry is all there is room for.
  EXPECT_EQ(Settings(&host, IMMonitor::MD_NB), "1366x768x32@60 at 0,0 turned 0");
  host.machine.Fail(kGetDeviceData, 1, 5);  // a success that is none
  EXPECT_EQ(Settings(&host, IMMonitor::MD_NB), "1366x768x32@60 at 0,0 turned 0");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(IntelSettings, SecondQueryThatFailsFails) {
  IntelHost host(kExtended);
  host.Forget();
  host.machine.Fail(kGetDeviceData, 2, 0x80004005);
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "failed");
  EXPECT_EQ(host.TakeLogWithSeverity(), "ERROR Call to GetConfiguration failed, err = 7\n");
  host.machine.Fail(kGetDeviceData, 2, 12);
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "failed");
  EXPECT_EQ(host.TakeLog(), "");
}

TEST(IntelSettings, QueriesByBytes) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 5, 3, {0x11, 0x22, 0x33});
  cui.devices = {{0x22, 5, 0x12}};
  cui.Install(&host.machine);
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "0x0x0@0 at 0,0 turned 0");
  ASSERT_EQ(cui.given.size(), 2u);
  Bytes first(84, 0);
  ScriptedCui::Put(&first, 8, 84);
  EXPECT_EQ(cui.given[0], first);
  Bytes second((3 - 1) * 68 + 220, 0);
  ScriptedCui::Put(&second, 8, (3 - 1) * 68 + 220);
  EXPECT_EQ(cui.given[1], second);
}

// A count of 0 makes the size of the second block wrap.
TEST(IntelSettings, WithoutEntriesNoneIsSearched) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  ScriptNView(&cui, 1, 0, {});
  cui.devices = {{0x22, 5, 0x12}};
  cui.Install(&host.machine);
  host.Forget();
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "failed");
  EXPECT_EQ(host.TakeLog(), "IntelMMImpl::GetDisplaySettings() no matched display found\n");
  ASSERT_EQ(cui.given.size(), 2u);
  EXPECT_EQ(cui.given[1].size(), 84u);
  // Nor is the empty entry taken for that of a device without a uid.
  EXPECT_EQ(Settings(&host, IMMonitor::MD_CRT), "failed");
  EXPECT_EQ(Settings(&host, 0), "failed");
}

TEST(IntelSettings, OrientationsMapToThemselvesAndOthersToNone) {
  for (const uint32_t orientation : {0u, 1u, 2u, 3u, 4u, 90u, 0xFFFFFFFFu}) {
    IntelHost host("win7 intel: internal 1366x768 active", kChecked);
    ScriptedCui cui;
    cui.devices = {{0x22, 5, 0x12}};
    cui.get = [=](const GUID&, Bytes* block, uint32_t* err) {
      *err = 0;
      ScriptedCui::Put(block, 12, 1);
      ScriptedCui::Put(block, 16, 0x22);
      ScriptedCui::Put(block, 16 + 56, orientation);
      return S_OK;
    };
    cui.Install(&host.machine);
    host.Forget();
    const uint32_t expected = orientation <= 3 ? orientation : 0;
    EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI),
              "0x0x0@0 at 0,0 turned " + std::to_string(expected));
    EXPECT_EQ(host.TakeLogWithSeverity(),
              orientation <= 3 ? "" : "ERROR_REPORT Check failed: false. Unknown orientation\n");
  }
}

TEST(IntelSettings, WantOneDisplay) {
  IntelHost host("win7 intel: internal 1366x768 active", kChecked);
  host.Forget();
  EXPECT_EQ(Settings(&host, 0), "failed");
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CountBits(imm_display) == 1. \n"
            "IntelMMImpl::GetDisplaySettings() no matched display found\n");
  EXPECT_EQ(Settings(&host, 0x11), "failed");
}

// --- EDIDs.

std::string EdidOf(IntelHost* host, uint32_t display) {
  EdidBlob blob;
  if (!host->extension().GetEDID(display, &blob)) return "failed";
  const std::string text(static_cast<const char*>(blob.pv), blob.cb);
  host->extension().FreeEDID(&blob);
  return text;
}

TEST(IntelEdid, IsTheFirst128BytesOfTheDisplaysOwn) {
  IntelHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  for (size_t i = 0; i < 2; ++i) {
    std::vector<uint8_t>& edid = host.model().connectors[i].monitor->edid;
    edid.resize(256, 0xAB);
    const std::string expected(edid.begin(), edid.begin() + 128);
    EXPECT_EQ(EdidOf(&host, i == 0 ? IMMonitor::MD_NB : IMMonitor::MD_HDMI), expected);
  }
}

TEST(IntelEdid, BlockByBytesAndWithoutALookAtErr) {
  IntelHost host("win7 intel: internal 1366x768 active");
  ScriptedCui cui;
  cui.devices = {{0x22, 5, 0x12}};
  cui.get = [](const GUID&, Bytes* block, uint32_t* err) {
    *err = 5;
    for (size_t i = 12; i < block->size(); ++i) (*block)[i] = static_cast<uint8_t>(i);
    return S_OK;
  };
  cui.Install(&host.machine);
  std::string expected;
  for (size_t i = 12; i < 12 + 128; ++i) expected += static_cast<char>(i);
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_HDMI), expected);
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_CRT), expected);  // no such device: uid 0
  ASSERT_EQ(cui.given.size(), 2u);
  Bytes asked(268, 0);
  ScriptedCui::Put(&asked, 0, 0x22);
  ScriptedCui::Put(&asked, 4, 256);
  EXPECT_EQ(cui.given[0], asked);
  ScriptedCui::Put(&asked, 0, 0);
  EXPECT_EQ(cui.given[1], asked);
}

TEST(IntelEdid, FailsWhereTheDriverDoes) {
  IntelHost host("win7 intel: internal 1366x768 active, hdmi 1920x1080");
  host.intel();
  host.machine.Fail(kGetDeviceData, 1);
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_HDMI), "failed");
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_CRT), "failed");
}

// GetMonitorEDID reads the device with uid 1, which is the CRT here.
struct MonitorEdid {
  bool result;
  EdidBlob blob;
};

MonitorEdid ReadMonitorEdid(IntelHost* host, uint32_t display) {
  MonitorEdid read = {false, {77, host}};
  read.result = host->box().GetMonitorEDID(&host->intel(), display, &read.blob);
  EXPECT_EQ(read.blob.cb, 77u);
  EXPECT_EQ(read.blob.pv, host);
  return read;
}

constexpr char kPanelCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";

void SetCrtEdid(IntelHost* host, const EdidBlock& block) {
  host->model().connectors[1].monitor->edid = block.bytes();
}

TEST(IntelMonitorEdid, ReadsDeviceOneWhateverIsAskedAndLeavesTheBlob) {
  IntelHost host(kPanelCrt);
  SetCrtEdid(&host, EdidBlock().Text(72, 0xFC, "Veld A1\n").Sum());
  host.intel();
  host.machine.JournalReads(true);
  for (const uint32_t display : {0u, 0x01u, 0x02u, 0x10u, 0xFFu}) {
    host.machine.TakeJournal();
    EXPECT_TRUE(ReadMonitorEdid(&host, display).result) << display;
    EXPECT_NE(host.machine.TakeJournal().find("edid size=268 uid=1 err=0"), std::string::npos);
  }
}

TEST(IntelMonitorEdid, NeedsAText) {
  IntelHost host(kPanelCrt);
  SetCrtEdid(&host, EdidBlock().Sum());
  EXPECT_FALSE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  SetCrtEdid(&host, EdidBlock().Text(108, 0xFE, "any\n").Sum());
  EXPECT_TRUE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  SetCrtEdid(&host, EdidBlock().Text(108, 0xFC, "\n").Sum());
  EXPECT_FALSE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  SetCrtEdid(&host, EdidBlock().Text(108, 0xFC, "thirteen char").Sum());
  EXPECT_FALSE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
}

// The search ends at the first text that can be read.
TEST(IntelMonitorEdid, FirstReadableTextDecidesAndMayBeEmpty) {
  IntelHost host(kPanelCrt);
  SetCrtEdid(&host, EdidBlock().Text(72, 0xFC, "\n").Text(108, 0xFC, "Veld A1\n").Sum());
  EXPECT_FALSE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  SetCrtEdid(&host, EdidBlock().Text(72, 0xFC, "thirteen char").Text(108, 0xFC, "Veld A1\n").Sum());
  EXPECT_TRUE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
}

TEST(IntelMonitorEdid, DamagedBlockIsASuccess) {
  IntelHost host(kPanelCrt);
  SetCrtEdid(&host, EdidBlock().Spoil());
  host.intel();
  RaiseWatch watch;
  EXPECT_TRUE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  EXPECT_EQ(watch.Take(), std::string("debugger: ") + kChecksumLine + "throw\n");
  SetCrtEdid(&host, EdidBlock().Put(18, {2}).Sum());
  EXPECT_TRUE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  EXPECT_EQ(watch.Take(), std::string("debugger: ") + kHeaderLine + "throw\n");
}

TEST(IntelMonitorEdid, FailsWhereTheDriverDoes) {
  IntelHost host(kPanelCrt);
  host.intel();
  RaiseWatch watch;
  host.machine.Fail(kGetDeviceData, 1);
  EXPECT_FALSE(ReadMonitorEdid(&host, IMMonitor::MD_CRT).result);
  EXPECT_EQ(watch.Take(), "");
}

TEST(IntelMonitorEdid, GetMonitorNameFindsNoEdid) {
  IntelHost host(kPanelCrt);
  SetCrtEdid(&host, EdidBlock().Text(72, 0xFC, "Veld A1\n").Sum());
  std::string name = "unchanged";
  EXPECT_FALSE(host.box().GetMonitorName(&host.intel(), IMMonitor::MD_CRT, &name));
  EXPECT_EQ(name, "unchanged");
}

}  // namespace
