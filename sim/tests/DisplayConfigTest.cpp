#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

#include "sim/ShortForm.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1024x768 active";

// --- QueryDisplayConfig.

TEST(QueryDisplayConfig, ActivePathHasSourceAndTargetMode) {
  Machine machine(kPanelAndCrt);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  ASSERT_EQ(q.result, ERROR_SUCCESS);
  ASSERT_EQ(q.paths.size(), 1u);
  ASSERT_EQ(q.modes.size(), 2u);
  const DISPLAYCONFIG_PATH_INFO& path = q.paths[0];
  EXPECT_EQ(path.flags, static_cast<UINT32>(DISPLAYCONFIG_PATH_ACTIVE));
  EXPECT_EQ(static_cast<UINT32>(path.targetInfo.outputTechnology), 0x80000000u);
  EXPECT_TRUE(path.targetInfo.targetAvailable);
  EXPECT_EQ(path.targetInfo.refreshRate.Numerator / path.targetInfo.refreshRate.Denominator, 60u);
  EXPECT_EQ(SourceMode(&q, 0)->width, 1366u);
  EXPECT_EQ(SourceMode(&q, 0)->pixelFormat, DISPLAYCONFIG_PIXELFORMAT_32BPP);
  const DISPLAYCONFIG_MODE_INFO& target = q.modes[path.targetInfo.modeInfoIdx];
  EXPECT_EQ(target.infoType, DISPLAYCONFIG_MODE_INFO_TYPE_TARGET);
  EXPECT_EQ(target.id, path.targetInfo.id);
}

TEST(QueryDisplayConfig, PathsOfACloneShareTheirSourceMode) {
  Machine machine("win7 intel: clone internal 1366x768 active, crt 1024x768 active");
  const Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  ASSERT_EQ(q.paths.size(), 2u);
  EXPECT_EQ(q.modes.size(), 3u);
  EXPECT_EQ(q.paths[0].sourceInfo.modeInfoIdx, q.paths[1].sourceInfo.modeInfoIdx);
}

TEST(QueryDisplayConfig, AllPathsArePairsOfOneAdapterWithTheActiveOnesFirst) {
  Machine machine(
      "win7 intel, nvidia: internal 1366x768, crt 1024x768 active, hdmi@2 800x600, dp@2");
  const Queried q = Query(QDC_ALL_PATHS);
  ASSERT_EQ(q.paths.size(), 8u);  // 2 sources x 2 targets, twice
  EXPECT_EQ(q.paths[0].flags, static_cast<UINT32>(DISPLAYCONFIG_PATH_ACTIVE));
  EXPECT_EQ(static_cast<UINT32>(q.paths[0].targetInfo.outputTechnology), 0u);
  std::set<std::tuple<DWORD, UINT32, UINT32>> pairs;
  for (size_t i = 0; i < q.paths.size(); ++i) {
    const DISPLAYCONFIG_PATH_INFO& path = q.paths[i];
    EXPECT_EQ(path.flags == DISPLAYCONFIG_PATH_ACTIVE, i == 0);
    EXPECT_EQ(path.sourceInfo.adapterId.LowPart, path.targetInfo.adapterId.LowPart);
    const bool plugged = path.targetInfo.outputTechnology != 10;
    EXPECT_EQ(path.targetInfo.targetAvailable != FALSE, plugged);
    if (i > 0) {
      EXPECT_EQ(path.sourceInfo.modeInfoIdx, DISPLAYCONFIG_PATH_MODE_IDX_INVALID);
    }
    pairs.insert({path.sourceInfo.adapterId.LowPart, path.sourceInfo.id, path.targetInfo.id});
  }
  EXPECT_EQ(pairs.size(), 8u);
}

TEST(QueryDisplayConfig, DisabledAdapterHasNoPaths) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600");
  machine.model().adapters[1].disabled = true;
  EXPECT_EQ(Query(QDC_ALL_PATHS).paths.size(), 2u);
}

TEST(QueryDisplayConfig, DatabaseTellsTheTopology) {
  const struct {
    const char* machine;
    int topology;
  } rows[] = {
      {"win7 intel: internal 1366x768 active, crt 1024x768", 1},
      {"win7 intel: clone internal 1366x768 active, crt 1024x768 active", 2},
      {"win7 intel: internal 1366x768 active, crt 1024x768 active", 4},
      {"win7 intel: internal 1366x768, crt 1024x768 active", 8},
  };
  for (const auto& row : rows) {
    Machine machine(row.machine);
    EXPECT_EQ(static_cast<int>(Query(QDC_DATABASE_CURRENT).topology), row.topology) << row.machine;
  }
}

TEST(QueryDisplayConfig, TopologyPointerGoesWithTheDatabaseOnly) {
  Machine machine(kPanelAndCrt);
  UINT32 paths = 8;
  UINT32 modes = 8;
  std::vector<DISPLAYCONFIG_PATH_INFO> p(8);
  std::vector<DISPLAYCONFIG_MODE_INFO> m(8);
  DISPLAYCONFIG_TOPOLOGY_ID topology = {};
  EXPECT_EQ(
      FAKE(QueryDisplayConfig)(QDC_DATABASE_CURRENT, &paths, p.data(), &modes, m.data(), nullptr),
      ERROR_INVALID_PARAMETER);
  EXPECT_EQ(FAKE(QueryDisplayConfig)(QDC_ALL_PATHS, &paths, p.data(), &modes, m.data(), &topology),
            ERROR_INVALID_PARAMETER);
}

TEST(QueryDisplayConfig, FlagsNameExactlyOneKindOfQuery) {
  Machine machine(kPanelAndCrt);
  UINT32 paths = 0;
  UINT32 modes = 0;
  for (UINT32 flags : {0U, 3U, 5U, 6U, 7U, 0x100U}) {
    EXPECT_EQ(FAKE(GetDisplayConfigBufferSizes)(flags, &paths, &modes), ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(FAKE(GetDisplayConfigBufferSizes)(QDC_ALL_PATHS, nullptr, &modes),
            ERROR_INVALID_PARAMETER);
  EXPECT_EQ(FAKE(GetDisplayConfigBufferSizes)(QDC_ALL_PATHS, &paths, nullptr),
            ERROR_INVALID_PARAMETER);
}

TEST(QueryDisplayConfig, BuffersTooSmallAreRefusedAndUntouched) {
  Machine machine(kExtended);
  UINT32 paths = 1;
  UINT32 modes = 4;
  std::vector<DISPLAYCONFIG_PATH_INFO> p(1);
  std::vector<DISPLAYCONFIG_MODE_INFO> m(4);
  EXPECT_EQ(
      FAKE(QueryDisplayConfig)(QDC_ONLY_ACTIVE_PATHS, &paths, p.data(), &modes, m.data(), nullptr),
      ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(paths, 1u);
  EXPECT_EQ(p[0].flags, 0u);
  paths = 0;
  EXPECT_EQ(
      FAKE(QueryDisplayConfig)(QDC_ONLY_ACTIVE_PATHS, &paths, p.data(), &modes, m.data(), nullptr),
      ERROR_INVALID_PARAMETER);
}

TEST(QueryDisplayConfig, LargerBuffersAreToldTheRealCounts) {
  Machine machine(kPanelAndCrt);
  UINT32 paths = 8;
  UINT32 modes = 8;
  std::vector<DISPLAYCONFIG_PATH_INFO> p(8);
  std::vector<DISPLAYCONFIG_MODE_INFO> m(8);
  EXPECT_EQ(
      FAKE(QueryDisplayConfig)(QDC_ONLY_ACTIVE_PATHS, &paths, p.data(), &modes, m.data(), nullptr),
      ERROR_SUCCESS);
  EXPECT_EQ(paths, 1u);
  EXPECT_EQ(modes, 2u);
}

TEST(QueryDisplayConfig, DeclaredFaultsAnswerInPlaceOfTheFunction) {
  Machine machine(kPanelAndCrt);
  machine.Fail("QueryDisplayConfig", 1, ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(Query(QDC_ALL_PATHS).result, ERROR_INSUFFICIENT_BUFFER);
  machine.Fail("GetDisplayConfigBufferSizes", 1);
  EXPECT_EQ(Query(QDC_ALL_PATHS).result, ERROR_GEN_FAILURE);
  EXPECT_EQ(Query(QDC_ALL_PATHS).result, ERROR_SUCCESS);
}

TEST(DisplayConfig, EntriesExistFromWindows7On) {
  for (const char* name : {"GetDisplayConfigBufferSizes", "QueryDisplayConfig", "SetDisplayConfig",
                           "DisplayConfigGetDeviceInfo", "DisplayConfigSetDeviceInfo"}) {
    const Entry* entry = FindEntryByName(name);
    ASSERT_NE(entry, nullptr);
    ASSERT_NE(entry->available, nullptr);
    EXPECT_TRUE(entry->available(ParseShortForm("win7 intel: internal 800x600 active")));
    EXPECT_TRUE(entry->available(ParseShortForm("2008r2 intel: internal 800x600 active")));
    EXPECT_FALSE(entry->available(ParseShortForm("vista intel: internal 800x600 active")));
    EXPECT_FALSE(entry->available(ParseShortForm("2008 intel: internal 800x600 active")));
    EXPECT_FALSE(entry->available(ParseShortForm("xp intel: internal 800x600 active")));
  }
}

// --- DisplayConfigGetDeviceInfo.

template <typename Record>
Record Named(DISPLAYCONFIG_DEVICE_INFO_TYPE type, LUID adapter, UINT32 id) {
  Record record = {};
  record.header.type = type;
  record.header.size = sizeof record;
  record.header.adapterId = adapter;
  record.header.id = id;
  return record;
}

TEST(DisplayConfigGetDeviceInfo, SourceNameIsTheDisplayDevices) {
  Machine machine(kExtended);
  const Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  auto name = Named<DISPLAYCONFIG_SOURCE_DEVICE_NAME>(DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME,
                                                      q.paths[1].sourceInfo.adapterId,
                                                      q.paths[1].sourceInfo.id);
  ASSERT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&name.header), ERROR_SUCCESS);
  EXPECT_STREQ(name.viewGdiDeviceName, L"\\\\.\\DISPLAY2");
}

TEST(DisplayConfigGetDeviceInfo, PreferredModeIsTheMonitorsNativeOne) {
  Machine machine("win7 intel: internal 1366x768 active, crt");
  for (const DISPLAYCONFIG_PATH_INFO& path : Query(QDC_ALL_PATHS).paths) {
    auto mode = Named<DISPLAYCONFIG_TARGET_PREFERRED_MODE>(
        DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_PREFERRED_MODE, path.targetInfo.adapterId,
        path.targetInfo.id);
    const LONG result = FAKE(DisplayConfigGetDeviceInfo)(&mode.header);
    EXPECT_EQ(result, path.targetInfo.targetAvailable ? ERROR_SUCCESS : ERROR_GEN_FAILURE);
    EXPECT_EQ(mode.width, path.targetInfo.targetAvailable ? 1366u : 0u);
  }
}

TEST(DisplayConfigGetDeviceInfo, TargetNameComesFromTheEdid) {
  Machine machine(kPanelAndCrt);
  const DISPLAYCONFIG_PATH_INFO path = Query(QDC_ONLY_ACTIVE_PATHS).paths[0];
  auto name = Named<DISPLAYCONFIG_TARGET_DEVICE_NAME>(
      DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_NAME, path.targetInfo.adapterId, path.targetInfo.id);
  ASSERT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&name.header), ERROR_SUCCESS);
  EXPECT_STREQ(name.monitorFriendlyDeviceName, L"Panel");
  EXPECT_EQ(static_cast<UINT32>(name.outputTechnology), 0x80000000u);
  EXPECT_EQ(name.flags.edidIdsValid, 1u);
}

TEST(DisplayConfigGetDeviceInfo, AdapterNameHasTheHardwareId) {
  Machine machine("win7 nvidia: internal 1366x768 active");
  const DISPLAYCONFIG_PATH_INFO path = Query(QDC_ONLY_ACTIVE_PATHS).paths[0];
  auto name = Named<DISPLAYCONFIG_ADAPTER_NAME>(DISPLAYCONFIG_DEVICE_INFO_GET_ADAPTER_NAME,
                                                path.targetInfo.adapterId, path.targetInfo.id);
  ASSERT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&name.header), ERROR_SUCCESS);
  EXPECT_EQ(std::wstring(name.adapterDevicePath).find(L"\\\\?\\PCI#VEN_10DE&DEV_"), 0u);
}

TEST(DisplayConfigGetDeviceInfo, WrongSizeOrIdIsAGeneralFailureAndUnknownKindAnInvalidParameter) {
  Machine machine(kPanelAndCrt);
  const DISPLAYCONFIG_PATH_INFO path = Query(QDC_ONLY_ACTIVE_PATHS).paths[0];
  auto name = Named<DISPLAYCONFIG_SOURCE_DEVICE_NAME>(
      DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME, path.sourceInfo.adapterId, path.sourceInfo.id);
  auto bad = name;
  bad.header.size -= 1;
  EXPECT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&bad.header), ERROR_GEN_FAILURE);
  bad = name;
  bad.header.id = 99;
  EXPECT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&bad.header), ERROR_GEN_FAILURE);
  bad = name;
  bad.header.adapterId.LowPart ^= 0x5555;
  EXPECT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&bad.header), ERROR_GEN_FAILURE);
  bad = name;
  bad.header.type = static_cast<DISPLAYCONFIG_DEVICE_INFO_TYPE>(77);
  EXPECT_EQ(FAKE(DisplayConfigGetDeviceInfo)(&bad.header), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(FAKE(DisplayConfigGetDeviceInfo)(nullptr), ERROR_GEN_FAILURE);
}

TEST(DisplayConfigSetDeviceInfo, PersistenceShowsInTheStatusOfThePaths) {
  Machine machine(kPanelAndCrt);
  const DISPLAYCONFIG_PATH_INFO path = Query(QDC_ONLY_ACTIVE_PATHS).paths[0];
  auto record =
      Named<DISPLAYCONFIG_SET_TARGET_PERSISTENCE>(DISPLAYCONFIG_DEVICE_INFO_SET_TARGET_PERSISTENCE,
                                                  path.targetInfo.adapterId, path.targetInfo.id);
  record.bootPersistenceOn = 1;
  ASSERT_EQ(FAKE(DisplayConfigSetDeviceInfo)(&record.header), ERROR_SUCCESS);
  const UINT32 status = Query(QDC_ONLY_ACTIVE_PATHS).paths[0].targetInfo.statusFlags;
  EXPECT_NE(status & DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_BOOT, 0u);
  EXPECT_EQ(machine.TakeJournal(), "DisplayConfigSetDeviceInfo(type=5 id=0x100)=0\n");
}

}  // namespace
}  // namespace sim
