// The settings of a display, read from the driver by handle and record.
#include <gtest/gtest.h>

#include "tests/support/NvidiaHost.h"

namespace {

constexpr char kMachine[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080";
constexpr char kClone[] =
    "win7 nvidia: clone internal 1366x768 active, crt 1366x768 active, hdmi 1920x1080";
constexpr char kExtended[] = "win7 nvidia: internal 1366x768 active, hdmi 1920x1080 active";
constexpr wchar_t kChecked[] = L"--enable-dcheck --v=2";
constexpr uint32_t kNb = IMMonitor::MD_NB;
constexpr uint32_t kCrt = IMMonitor::MD_CRT;
constexpr uint32_t kTv = IMMonitor::MD_TV;
constexpr uint32_t kHdmi = IMMonitor::MD_HDMI;

// --- Display settings.

TEST(NvidiaV2Settings, AreTheDriversOfThatDisplay) {
  NvidiaHost host(kExtended);
  EXPECT_EQ(host.Settings(kNb), "1366x768x32@60 turned 0");
  EXPECT_EQ(host.Settings(kHdmi), "1920x1080x32@60 turned 0");
}

TEST(NvidiaV2Settings, OfACloneAreFoundBehindOneHandle) {
  NvidiaHost host(kClone);
  EXPECT_EQ(host.Settings(kNb), "1366x768x32@60 turned 0");
  EXPECT_EQ(host.Settings(kCrt), "1366x768x32@60 turned 0");
  EXPECT_EQ(host.Settings(kHdmi), "failed");
}

TEST(NvidiaV2Settings, SayWhichFieldsCount) {
  NvidiaHost host(kMachine);
  DEVMODEA dm = {};
  dm.dmSize = 156;
  dm.dmFields = 0x5C0080;
  dm.dmPosition.x = 77;
  EXPECT_TRUE(host.nv().GetDisplaySettings(kNb, &dm));
  EXPECT_EQ(dm.dmFields, 0x5C0000u);
  EXPECT_EQ(dm.dmSize, 156u);
  EXPECT_EQ(dm.dmPosition.x, 77);
}

// The third way: the driver is silent, and the handle is followed to its connector.
TEST(NvidiaV2Settings, OfAConnectorThatTheDriverDoesNotNameAreFoundByTheHandle) {
  NvidiaHost host(kExtended);
  sim::HideNvConnectorTypes(host.machine);
  EXPECT_EQ(host.Settings(kNb), "1366x768x32@60 turned 0");
  EXPECT_EQ(host.Settings(kHdmi), "1920x1080x32@60 turned 0");
  EXPECT_EQ(host.Settings(kCrt), "failed");
}

TEST(NvidiaV2Settings, HandleIsNotFollowedWhereTheDriverNamesTheConnector) {
  NvidiaHost host(kExtended);
  host.Settings(kHdmi);
  EXPECT_EQ(host.machine.Calls("NvAPI_GetAssociatedDisplayOutputId"), 0u);
}

TEST(NvidiaV2Settings, HandleThatLeadsNowhereIsPassedOver) {
  for (const char* function :
       {"NvAPI_GetPhysicalGPUsFromDisplay", "NvAPI_GetAssociatedDisplayOutputId",
        "NvAPI_GPU_GetConnectorInfo"}) {
    NvidiaHost host(kExtended);
    host.Forget();
    sim::HideNvConnectorTypes(host.machine);
    host.machine.Fail(function, 1);
    EXPECT_EQ(host.Settings(kHdmi), "1920x1080x32@60 turned 0") << function;
    host.machine.Fail(function, 1);
    EXPECT_EQ(host.Settings(kNb), "failed") << function;
    EXPECT_EQ(host.TakeLog(), "") << function;
  }
}

int32_t TellsNoGpu(NvDisplayHandle, NvPhysicalGpuHandle*, uint32_t* count) {
  *count = 0;
  return 0;
}

TEST(NvidiaV2Settings, HandleOfNoGpuIsPassedOver) {
  NvidiaHost host(kExtended);
  host.nv();
  sim::HideNvConnectorTypes(host.machine);
  host.box().ReplaceGetPhysicalGPUsFromDisplay(TellsNoGpu);
  EXPECT_EQ(host.Settings(kNb), "failed");
  EXPECT_EQ(host.machine.Calls("NvAPI_GetAssociatedDisplayOutputId"), 0u);
}

TEST(NvidiaV2Settings, EitherRefusedCallIsAFailureAtOnce) {
  for (const uint32_t nth : {1u, 2u}) {
    NvidiaHost host(kExtended);
    host.Forget();
    host.machine.Fail("NvAPI_GetDisplaySettings", nth);
    EXPECT_EQ(host.Settings(kHdmi), "failed") << nth;
    EXPECT_EQ(host.machine.Calls("NvAPI_GetDisplaySettings"), nth);
    EXPECT_EQ(host.TakeLog(), "");
  }
}

TEST(NvidiaV2Settings, WithoutADisplayHandleIsAFailure) {
  NvidiaHost host(kExtended);
  host.nv();
  host.machine.Fail("NvAPI_EnumNvidiaDisplayHandle", 1);
  EXPECT_EQ(host.Settings(kNb), "failed");
}

TEST(NvidiaV2Settings, DisplayWithoutAConnectorTypeIsNotFound) {
  NvidiaHost host("win7 nvidia: tv 800x600 active");
  EXPECT_EQ(host.Settings(kTv), "failed");
}

// A television is looked up by no type, and a plug that the driver does not know has none.
TEST(NvidiaV2Settings, OfAnUnknownPlugAreFoundForATelevision) {
  for (const bool told : {true, false}) {
    NvidiaHost host(kMachine);
    host.connector("internal").nvidia_connector_type = 0xFFFFFFFF;
    if (!told) sim::HideNvConnectorTypes(host.machine);
    EXPECT_EQ(host.Settings(kTv), "1366x768x32@60 turned 0") << told;
    EXPECT_EQ(host.Settings(kNb), "failed") << told;
  }
}

TEST(NvidiaV2Settings, OfAPanelOnAnEmbeddedDisplayPort) {
  NvidiaHost host("win7 nvidia: edp 1366x768 active, hdmi 1920x1080 active");
  EXPECT_EQ(host.Settings(kNb), "1366x768x32@60 turned 0");
}

TEST(NvidiaV2Settings, MissingDisplayAndPlaceFailTheirChecks) {
  NvidiaHost host(kMachine, kChecked);
  host.Forget();
  EXPECT_FALSE(host.nv().GetDisplaySettings(0, nullptr));
  EXPECT_EQ(host.TakeLog(),
            "Check failed: CountBits(imm_display) == 1. \n"
            "Check failed: dm != NULL. \n");
  EXPECT_EQ(host.Settings(kNb | kHdmi), "failed");
  EXPECT_EQ(CountOf(host.TakeLog(), "Check failed: CountBits(imm_display) == 1. \n"), 2u);
}

// A driver that tells records of its own: how many, and the rotation of the first.
struct Told {
  uint32_t first_count = 1;
  uint32_t second_count = 1;
  uint32_t room_seen = 0;
  uint32_t versions = 0;
  uint32_t rotation = 0;
};
Told g_told;

int32_t TellsSettings(NvDisplayHandle, NvDisplaySettings* records, uint32_t* count) {
  if (records == nullptr) {
    *count = g_told.first_count;
    return 0;
  }
  g_told.room_seen = *count;
  for (uint32_t i = 0; i < *count; ++i) {
    if (records[i].version == 0x400D0) ++g_told.versions;
    records[i].connector_type = 70;
  }
  if (*count > 0) {
    records[*count - 1].connector_type = 64;
    records[*count - 1].width = 1111;
    records[*count - 1].height = 222;
    records[*count - 1].bits_per_pixel = 16;
    records[*count - 1].refresh_rate = 75;
    records[*count - 1].rotation = g_told.rotation;
  }
  *count = g_told.second_count;
  return 0;
}

TEST(NvidiaV2Settings, RotationIsAQuarterTurnOrNone) {
  const struct {
    uint32_t told;
    const char* read;
  } rows[] = {{0, "turned 0"}, {1, "turned 1"}, {2, "turned 2"},
              {3, "turned 3"}, {4, "turned 0"}, {0xFFFFFFFF, "turned 0"}};
  NvidiaHost host(kMachine);
  host.nv();
  for (const auto& row : rows) {
    g_told = Told();
    g_told.rotation = row.told;
    host.box().ReplaceGetDisplaySettings(TellsSettings);
    EXPECT_EQ(host.Settings(kNb), std::string("1111x222x16@75 ") + row.read);
  }
}

TEST(NvidiaV2Settings, EveryRecordHasItsVersionWordAndIsLookedAt) {
  NvidiaHost host(kMachine);
  host.nv();
  g_told = Told();
  g_told.first_count = 3;
  g_told.second_count = 3;
  host.box().ReplaceGetDisplaySettings(TellsSettings);
  EXPECT_EQ(host.Settings(kNb), "1111x222x16@75 turned 0");
  EXPECT_EQ(g_told.room_seen, 3u);
  EXPECT_EQ(g_told.versions, 3u);
}

TEST(NvidiaV2Settings, CountThatChangesBetweenTheCallsIsHeldToTheRoom) {
  NvidiaHost host(kMachine);
  host.nv();
  g_told = Told();
  g_told.first_count = 2;
  g_told.second_count = 1;  // the matching record has gone
  host.box().ReplaceGetDisplaySettings(TellsSettings);
  EXPECT_EQ(host.Settings(kNb), "failed");
  g_told.second_count = 5000000;
  EXPECT_EQ(host.Settings(kHdmi), "failed");
  g_told.first_count = 0;
  g_told.second_count = 1;
  EXPECT_EQ(host.Settings(kNb), "failed");
}

TEST(NvidiaV2Settings, MoreRecordsThanMemoryIsAFailure) {
  NvidiaHost host(kMachine);
  host.nv();
  g_told = Told();
  g_told.first_count = 0xFFFFFFFF;
  host.box().ReplaceGetDisplaySettings(TellsSettings);
  EXPECT_EQ(host.Settings(kNb), "failed");
}

}  // namespace
