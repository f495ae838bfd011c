// The legacy AMD back-end: the settings of one display, and its EDID.
#include <gtest/gtest.h>

#include "tests/behaviour/AtiHost.h"
#include "tests/behaviour/ScriptedAti.h"
#include "tests/support/EdidBlock.h"

namespace {

constexpr wchar_t kChecked[] = L"--enable-dcheck";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;

/// "1366x768x32@60", or "failed"; what the operation must not touch is looked at, too.
std::string Settings(AtiHost* host, uint32_t display) {
  DEVMODEA dm;
  std::memset(&dm, 0xEE, sizeof(dm));
  const DEVMODEA before = dm;
  const bool known = host->ati().GetDisplaySettings(display, &dm);
  std::string text = std::to_string(dm.dmPelsWidth) + "x" + std::to_string(dm.dmPelsHeight) + "x" +
                     std::to_string(dm.dmBitsPerPel) + "@" + std::to_string(dm.dmDisplayFrequency);
  dm.dmPelsWidth = before.dmPelsWidth;
  dm.dmPelsHeight = before.dmPelsHeight;
  dm.dmBitsPerPel = before.dmBitsPerPel;
  dm.dmDisplayFrequency = before.dmDisplayFrequency;
  EXPECT_EQ(std::memcmp(&dm, &before, sizeof(dm)), 0);
  return known ? text : "failed";
}

TEST(AtiSettings, ActiveDisplayHasThoseOfItsEntry) {
  AtiHost host(kPanelCrt);
  EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60");
  EXPECT_EQ(Settings(&host, kCrt), "failed");  // not active
}

TEST(AtiSettings, ClonedDisplaysShareThem) {
  AtiHost host("win7 amd: clone internal 1366x768 active, crt 1280x1024 active");
  EXPECT_NE(Settings(&host, kNb), "failed");
  EXPECT_EQ(Settings(&host, kNb), Settings(&host, kCrt));
}

// The question names no device, and this library then tells of the first one alone: the settings
// of what another device shows are not to be had.
TEST(AtiSettings, OfAnExtendedDesktopThoseOfTheFirstDeviceAreTold) {
  {
    AtiHost host(kPanelCrtExtended);
    EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60");
    EXPECT_EQ(Settings(&host, kCrt), "failed");
  }
  AtiHost turned("win7 amd: crt 1280x1024 active, internal 1366x768 active");
  EXPECT_EQ(Settings(&turned, kCrt), "1280x1024x32@60");
  EXPECT_EQ(Settings(&turned, kNb), "failed");
}

TEST(AtiSettings, BehindAnotherVendorsDevicesNoneAreTold) {
  AtiHost host("win7 intel, amd: internal@2 1366x768 active, crt@2 1280x1024 active");
  EXPECT_EQ(host.Active(), "0x3 (2)");
  host.machine.JournalReads(true);
  host.Forget();
  EXPECT_EQ(Settings(&host, kNb), "failed");
  const std::string journal = host.machine.TakeJournal();
  EXPECT_EQ(CountOf(journal, "ATIDL_GetAdapterConfig("), 1u) << journal;
  EXPECT_EQ(CountOf(journal, ")=" + std::to_string(sim::kLegacyUnknownAdapter)), 1u) << journal;
  EXPECT_EQ(Settings(&host, kCrt), "failed");
}

// --- What is asked, and every way to fail.

class AtiSettingsOf : public testing::Test {
 protected:
  AtiSettingsOf() : host(kPanelCrt) {
    ati.types = {{0, 1}, {1, 2}, {2, 6}, {3, 4}};
    ati.kinds = {{1, 5}};
    Show({1, 2}, 2);
    ati.get_adapter = [this](ScriptedAti::Words* words) {
      *words = config;
      return adapter_result;
    };
    // Slots, then height, width, depth and frequency of each entry.
    PutEntry(2, {1}, {768, 1366, 32, 60});
    PutEntry(20, {2}, {1024, 1280, 16, 75});
    ati.Install(&host.machine);
    host.ati();
    ati.TakeCalls();
  }
  void Show(const ScriptedAti::Words& vectors, uint32_t count, int32_t result = 0) {
    ScriptedAti::Words words = ScriptedAti::Record(16, {64, 2});
    std::copy(vectors.begin(), vectors.end(), words.begin() + 2);
    words[9] = count;
    ati.get_active = ScriptedAti::Answer(words, result);
  }
  void PutEntry(size_t at, const ScriptedAti::Words& slots, const ScriptedAti::Words& mode) {
    config[at] = 72;
    config[at + 2] = static_cast<uint32_t>(slots.size());
    for (size_t i = 0; i < slots.size() && i < 2; ++i) config[at + 3 + 4 * i] = slots[i];
    std::copy(mode.begin(), mode.end(), config.begin() + static_cast<ptrdiff_t>(at) + 11);
  }

  AtiHost host;
  ScriptedAti ati;
  ScriptedAti::Words config = ScriptedAti::Record(39, {156});
  int32_t adapter_result = 0;
};

TEST_F(AtiSettingsOf, EitherEntryMayHaveTheDisplay) {
  EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60");
  EXPECT_EQ(Settings(&host, kCrt), "1280x1024x16@75");
}

TEST_F(AtiSettingsOf, EverySlotIsLookedAtWhateverTheirNumber) {
  PutEntry(2, {8, 1}, {768, 1366, 32, 60});
  for (const uint32_t slots : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    config[4] = config[22] = slots;
    EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60") << slots;
    EXPECT_EQ(Settings(&host, kCrt), "1280x1024x16@75") << slots;
  }
  PutEntry(2, {8, 4}, {768, 1366, 32, 60});
  EXPECT_EQ(Settings(&host, kNb), "failed");
}

TEST_F(AtiSettingsOf, FirstEntryComesFirst) {
  PutEntry(20, {1}, {1024, 1280, 16, 75});
  EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60");
}

// The word that the display stands in is what is looked for, whole.
TEST_F(AtiSettingsOf, DisplayIsLookedForByItsWord) {
  Show({2, 5}, 2);
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "failed");
  PutEntry(20, {5}, {480, 640, 8, 50});
  EXPECT_EQ(Settings(&host, IMMonitor::MD_HDMI), "640x480x8@50");
  EXPECT_EQ(Settings(&host, kNb), "640x480x8@50");
}

TEST_F(AtiSettingsOf, FirstWordOfAFlagIsTaken) {
  ati.types = {{0, 1}, {1, 1}};
  ati.kinds.clear();
  Show({2, 1}, 2);
  EXPECT_EQ(Settings(&host, kNb), "1280x1024x16@75");
}

TEST_F(AtiSettingsOf, AsksInThisOrder) {
  Settings(&host, kCrt);
  EXPECT_EQ(ati.TakeCalls(),
            "ATIDL_GetActiveDisplays(0)\nATIDL_DisplayGetDeviceConfig(0,0)\nEnumDisplays(0,0)\n"
            "ATIDL_DisplayGetDeviceConfig(0,1)\nATIDL_GetAdapterConfig\n");
  ScriptedAti::Words fresh = ScriptedAti::Record(39, {156, 0, 72});
  fresh[20] = 72;
  EXPECT_EQ(ati.given["ATIDL_GetAdapterConfig"], (std::vector<ScriptedAti::Words>{fresh}));
  EXPECT_EQ(ati.given["ATIDL_GetActiveDisplays"],
            (std::vector<ScriptedAti::Words>{ScriptedAti::Record(16, {64})}));
}

TEST_F(AtiSettingsOf, FailedActiveReportFailsWithoutALine) {
  host.ForgetLog();
  for (const int32_t result : {-1, 1}) {
    Show({1, 2}, 2, result);
    EXPECT_EQ(Settings(&host, kNb), "failed");
  }
  EXPECT_EQ(host.TakeLog(), "");
}

TEST_F(AtiSettingsOf, NoVectorIsNoDisplay) {
  for (const uint32_t count : {0u, 0xFFFFFFFFu, 0x80000000u}) {
    Show({1, 2}, count);
    EXPECT_EQ(Settings(&host, kNb), "failed") << count;
  }
  Show({0, 0, 0, 0, 0, 0, 2}, 0x7FFFFFFF);
  EXPECT_EQ(Settings(&host, kCrt), "1280x1024x16@75");
}

// Other than in a report, a display without a type ends nothing.
TEST_F(AtiSettingsOf, DisplayWithoutATypeIsPassedOver) {
  ati.types.clear();
  EXPECT_EQ(Settings(&host, kCrt), "1280x1024x16@75");
}

TEST_F(AtiSettingsOf, FailedAdapterConfigFails) {
  for (const int32_t result : {-1, 1}) {
    adapter_result = result;
    EXPECT_EQ(Settings(&host, kNb), "failed");
  }
}

TEST(AtiSettings, ChecksTheArgumentsOfItsQuestions) {
  AtiHost host(kPanelCrt, kChecked);
  host.bare();
  EXPECT_TRUE(host.box().FindPanel(true, true, true));
  const struct {
    bool library, index, vector;
    const char* log;
  } rows[] = {
      {false, true, true, "Check failed: lib != NULL. \n"},
      {true, false, true, "Check failed: display_index != NULL. \n"},
      {true, true, false, "Check failed: display_vector != NULL. \n"},
      {false, false, false,
       "Check failed: lib != NULL. \nCheck failed: display_index != NULL. \n"
       "Check failed: display_vector != NULL. \n"},
  };
  for (const auto& row : rows) {
    host.Forget();
    EXPECT_FALSE(host.box().FindPanel(row.library, row.index, row.vector)) << &row - rows;
    EXPECT_EQ(host.TakeLog(), row.log);
  }
}

TEST(AtiSettings, ChecksItsArguments) {
  AtiHost host(kPanelCrt, kChecked);
  IMMonitor& ati = host.ati();
  host.Forget();
  EXPECT_FALSE(ati.GetDisplaySettings(kNb, nullptr));
  EXPECT_EQ(host.TakeLog(), "Check failed: dm != NULL. \n");
  EXPECT_EQ(Settings(&host, 0), "failed");
  EXPECT_EQ(Settings(&host, 3), "failed");
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CountBits(imm_display) == 1. \n"
            "Check failed: CountBits(imm_display) == 1. \n");
}

TEST_F(AtiSettingsOf, NoDisplayIsNotTheOneWithoutAFlag) {
  ati.types = {{0, 9}};
  EXPECT_EQ(Settings(&host, 0), "failed");
}

TEST(AtiEntries, SettingsNeedThreeOptionalEntries) {
  for (const char* const entry :
       {"ATIDL_GetActiveDisplays", "ATIDL_GetAdapterConfig", "ATIDL_DisplayGetDeviceConfig"}) {
    AtiHost host(kPanelCrt);
    host.Remove(entry);
    EXPECT_EQ(Settings(&host, kNb), "failed") << entry;
  }
  for (const char* const entry :
       {"ATIDL_GetDisplaySwitchingCapability", "ATIDL_SetActiveDisplays",
        "ATIDL_SetConfigurationEx", "ATIDL_GetAdapterID", "ATIDL_GetDisplayVector",
        "ATIDL_SetAdapterConfig", "ATIDL_DisplayGetEdidData", "ATIDL_GetDisplaySettings"}) {
    AtiHost host(kPanelCrt);
    host.Remove(entry);
    EXPECT_EQ(Settings(&host, kNb), "1366x768x32@60") << entry;
  }
}

// --- EDID.

/// The bytes of a display's EDID; empty when it cannot be read.
std::vector<uint8_t> EdidOf(AtiHost* host, uint32_t display) {
  EdidBlob blob;
  if (!host->extension().GetEDID(display, &blob)) {
    EXPECT_EQ(blob.pv, nullptr);
    return {};
  }
  const auto* const bytes = static_cast<uint8_t*>(blob.pv);
  std::vector<uint8_t> read(bytes, bytes + blob.cb);
  host->extension().FreeEDID(&blob);
  return read;
}

TEST(AtiEdid, IsReadByThePlaceInTheMap) {
  AtiHost host("win7 amd: internal 1366x768 active, crt 1280x1024, hdmi 1920x1080");
  host.mapped();
  EXPECT_EQ(EdidOf(&host, kNb), host.model().connectors[0].monitor->edid);
  EXPECT_EQ(EdidOf(&host, kCrt), host.model().connectors[1].monitor->edid);
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_HDMI), host.model().connectors[2].monitor->edid);
  EXPECT_EQ(host.model().connectors[0].monitor->edid.size(), 128u);
}

TEST(AtiEdid, WithoutAMapOrAPlaceInItTheFirstDisplayIsRead) {
  AtiHost host(kPanelCrt);
  const std::vector<uint8_t> panel = host.model().connectors[0].monitor->edid;
  EXPECT_EQ(EdidOf(&host, kCrt), panel);
  host.mapped();
  EXPECT_NE(EdidOf(&host, kCrt), panel);
  EXPECT_EQ(EdidOf(&host, IMMonitor::MD_DP), panel);
}

TEST(AtiEdid, ChecksThatItIsOneDisplay) {
  AtiHost host(kPanelCrt, kChecked);
  host.mapped();
  host.Forget();
  EXPECT_EQ(EdidOf(&host, 0).size(), 0u);
  EXPECT_EQ(EdidOf(&host, kNb | kCrt), host.model().connectors[0].monitor->edid);
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CountBits(display) == 1. \nCheck failed: CountBits(display) == 1. \n");
}

TEST(AtiEdid, FailsWithTheLibraryOrWithoutItsEntry) {
  {
    AtiHost host(kPanelCrt);
    host.mapped();
    host.machine.Fail("ATIDL_DisplayGetEdidData", 1);
    EXPECT_EQ(EdidOf(&host, kNb).size(), 0u);
    EXPECT_EQ(EdidOf(&host, kNb).size(), 128u);
    EXPECT_FALSE(host.extension().GetEDID(kNb, nullptr));
    host.extension().FreeEDID(nullptr);
  }
  AtiHost host(kPanelCrt);
  host.Remove("ATIDL_DisplayGetEdidData");
  host.mapped();
  EXPECT_EQ(EdidOf(&host, kNb).size(), 0u);
  EdidBlob blob;
  EXPECT_FALSE(host.box().GetMonitorEDID(&host.ati(), kNb, &blob));
}

class AtiEdidRecords : public testing::Test {
 protected:
  AtiEdidRecords() : host(kPanelCrt) {
    ati.types = {{0, 1}, {1, 2}};
    ati.get_edid = [this](ScriptedAti::Words* record) {
      record->at(2) = size;
      for (size_t i = 4; i < record->size(); ++i) record->at(i) = 0x01010101 * (i & 0xFF);
      return result;
    };
    ati.Install(&host.machine);
    host.mapped();
    ati.TakeCalls();
  }
  AtiHost host;
  ScriptedAti ati;
  uint32_t size = 128;
  int32_t result = 0;
};

TEST_F(AtiEdidRecords, RoomIsToldAndTheBytesThatCameAreCopied) {
  const std::vector<uint8_t> bytes = EdidOf(&host, kCrt);
  ASSERT_EQ(bytes.size(), 128u);
  EXPECT_EQ(bytes[0], 4);
  EXPECT_EQ(bytes[127], 35);
  EXPECT_EQ(ati.TakeCalls(), "ATIDL_DisplayGetEdidData(0,1)\n");
  EXPECT_EQ(ati.given["ATIDL_DisplayGetEdidData"],
            (std::vector<ScriptedAti::Words>{ScriptedAti::Record(72, {288, 0, 256})}));
}

TEST_F(AtiEdidRecords, WhatTheRecordHoldsIsCopiedAndNoMore) {
  for (const uint32_t told : {255u, 256u, 257u, 271u, 272u, 273u, 0xFFFFFFFFu}) {
    size = told;
    const std::vector<uint8_t> bytes = EdidOf(&host, kNb);
    ASSERT_EQ(bytes.size(), std::min(told, 272u));
    for (size_t i = 0; i < bytes.size(); ++i) ASSERT_EQ(bytes[i], 4 + i / 4) << told << " " << i;
  }
}

TEST_F(AtiEdidRecords, NoBytesAreAnAnswer) {
  size = 0;
  EdidBlob blob;
  EXPECT_TRUE(host.extension().GetEDID(kNb, &blob));
  EXPECT_EQ(blob.cb, 0u);
  host.extension().FreeEDID(&blob);
}

TEST_F(AtiEdidRecords, AnyResultButZeroIsAFailure) {
  for (const int32_t failure : {-1, 1}) {
    result = failure;
    EXPECT_EQ(EdidOf(&host, kNb).size(), 0u);
    EdidBlob blob;
    EXPECT_FALSE(host.box().GetMonitorEDID(&host.ati(), kNb, &blob));
  }
}

TEST_F(AtiEdidRecords, WithoutMemoryThereIsNone) {
  const auto refuse = host.ostrel().white_box().projectors->RefuseMemory;
  refuse(1);
  EXPECT_EQ(EdidOf(&host, kNb).size(), 0u);
  EXPECT_FALSE(refuse(0));
}

// Whatever display is meant: the second one, without room, and what was there stays.
TEST_F(AtiEdidRecords, MonitorEdidAsksForTheSecondDisplayWithoutRoom) {
  EdidBlob blob;
  blob.cb = 77;
  blob.pv = &blob;
  for (const uint32_t display : {kNb, kCrt, 0u, 3u}) {
    EXPECT_TRUE(host.box().GetMonitorEDID(&host.ati(), display, &blob));
  }
  EXPECT_EQ(blob.cb, 77u);
  EXPECT_EQ(blob.pv, &blob);
  const ScriptedAti::Words fresh = ScriptedAti::Record(72, {288});
  EXPECT_EQ(ati.given["ATIDL_DisplayGetEdidData"], (std::vector<ScriptedAti::Words>(4, fresh)));
  EXPECT_EQ(CountOf(ati.TakeCalls(), "ATIDL_DisplayGetEdidData(0,1)\n"), 4u);
  host.box().FreeMonitorEDID(&host.ati(), &blob);  // gives nothing back
  EXPECT_EQ(blob.pv, &blob);
}

TEST(AtiEdid, MonitorsHaveNoName) {
  AtiHost host(kPanelCrt);
  host.mapped();
  EdidBlob blob;
  EXPECT_TRUE(host.box().GetMonitorEDID(&host.ati(), kNb, &blob));
  std::string name = "as it was";
  EXPECT_EQ(host.box().GetMonitorName(&host.ati(), kNb, &name), 0);
  EXPECT_EQ(host.box().GetMonitorName(&host.ati(), kCrt, &name), 0);
  EXPECT_EQ(name, "as it was");
}

TEST(AtiEdid, BlocksAreGivenBack) {
  AtiHost host(kPanelCrt);
  host.mapped();
  const auto pieces_out = host.ostrel().white_box().factory->PiecesOut;
  EdidBlob blob;
  const int64_t before = pieces_out();
  EXPECT_TRUE(host.extension().GetEDID(kNb, &blob));
  EXPECT_EQ(pieces_out(), before + 1);
  host.extension().FreeEDID(&blob);
  EXPECT_EQ(pieces_out(), before);
}

}  // namespace
