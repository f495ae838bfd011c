#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "sim/ShortForm.h"
#include "sim/tests/FaceCalls.h"

namespace sim {
namespace {

constexpr char kPanelAndCrt[] = "win7 intel: internal 1366x768 active, crt 1024x768";
constexpr char kExtended[] = "win7 intel: internal 1366x768 active, crt 1024x768 active";
constexpr UINT32 kValidateSupplied = SDC_VALIDATE | SDC_USE_SUPPLIED_DISPLAY_CONFIG;
constexpr UINT32 kApplySupplied = SDC_APPLY | SDC_USE_SUPPLIED_DISPLAY_CONFIG;

// The paths to these targets from sources 0, 1, ... as a caller makes them up: active, without
// modes.
std::vector<DISPLAYCONFIG_PATH_INFO> PathsTo(
    const std::vector<std::pair<UINT32, std::string>>& wanted) {
  const Model& model = Machine::Current().model();
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  for (const auto& [source, id] : wanted) {
    for (const DISPLAYCONFIG_PATH_INFO& path : Query(QDC_ALL_PATHS).paths) {
      bool matches = path.sourceInfo.id == source;
      for (const Connector& connector : model.connectors) {
        const Adapter& adapter = model.adapters[connector.adapter];
        const bool same = connector.target_id == path.targetInfo.id &&
                          adapter.luid_low == path.targetInfo.adapterId.LowPart;
        if (same && connector.id != id) matches = false;
      }
      if (!matches) continue;
      DISPLAYCONFIG_PATH_INFO copy = path;
      copy.flags = DISPLAYCONFIG_PATH_ACTIVE;
      copy.sourceInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
      copy.targetInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
      paths.push_back(copy);
    }
  }
  return paths;
}

// --- SetDisplayConfig: what it refuses.

TEST(SetDisplayConfig, ForbiddenCombinationsOfFlags) {
  Machine machine(kPanelAndCrt);
  const UINT32 forbidden[] = {
      0,
      SDC_TOPOLOGY_CLONE,                                     // neither apply nor validate
      SDC_TOPOLOGY_CLONE | SDC_APPLY | SDC_VALIDATE,          // both
      SDC_APPLY,                                              // neither topology nor configuration
      SDC_TOPOLOGY_CLONE | SDC_APPLY | SDC_SAVE_TO_DATABASE,  // goes with supplied ones only
      SDC_TOPOLOGY_CLONE | SDC_VALIDATE | SDC_NO_OPTIMIZATION,  // goes with apply only
      SDC_TOPOLOGY_CLONE | SDC_VALIDATE | SDC_FORCE_MODE_ENUMERATION,
      SDC_TOPOLOGY_CLONE | SDC_APPLY | SDC_ALLOW_PATH_ORDER_CHANGES,
      SDC_TOPOLOGY_CLONE | SDC_APPLY | 0x01000000,  // no such flag
  };
  for (UINT32 flags : forbidden) {
    EXPECT_EQ(SetTopology(flags), ERROR_INVALID_PARAMETER) << std::hex << flags;
  }
  const std::vector<DISPLAYCONFIG_PATH_INFO> paths = PathsTo({{0, "internal"}});
  const UINT32 forbidden_supplied[] = {
      kApplySupplied | SDC_TOPOLOGY_CLONE,
      kApplySupplied | SDC_TOPOLOGY_SUPPLIED,
      kApplySupplied | SDC_PATH_PERSIST_IF_REQUIRED,
      SDC_APPLY | SDC_TOPOLOGY_SUPPLIED | SDC_TOPOLOGY_CLONE,
      SDC_APPLY | SDC_TOPOLOGY_CLONE,  // a named topology takes no paths
  };
  for (UINT32 flags : forbidden_supplied) {
    EXPECT_EQ(SetPaths(paths, {}, flags), ERROR_INVALID_PARAMETER) << std::hex << flags;
  }
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(SetDisplayConfig, SuppliedConfigurationNeedsPaths) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(SetTopology(kApplySupplied), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_SUPPLIED), ERROR_INVALID_PARAMETER);
  DISPLAYCONFIG_PATH_INFO path = PathsTo({{0, "internal"}})[0];
  EXPECT_EQ(FAKE(SetDisplayConfig)(0, &path, 0, nullptr, kApplySupplied), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(FAKE(SetDisplayConfig)(1, &path, 3, nullptr, kApplySupplied), ERROR_INVALID_PARAMETER);
  path.flags = 0;  // no active path at all
  EXPECT_EQ(SetPaths({path}, {}, kApplySupplied), ERROR_INVALID_PARAMETER);
}

TEST(SetDisplayConfig, PathsThatContradictTheHardware) {
  Machine machine("win7 intel, nvidia: internal 1366x768 active, crt 1024x768, hdmi@2 800x600");
  const DISPLAYCONFIG_PATH_INFO panel = PathsTo({{0, "internal"}})[0];
  DISPLAYCONFIG_PATH_INFO path = panel;
  path.sourceInfo.id = 9;
  EXPECT_EQ(SetPaths({path}, {}, kValidateSupplied), ERROR_INVALID_PARAMETER);
  path = panel;
  path.targetInfo.id = 9;
  EXPECT_EQ(SetPaths({path}, {}, kValidateSupplied), ERROR_INVALID_PARAMETER);
  path = panel;
  path.targetInfo.adapterId.LowPart = 9;
  EXPECT_EQ(SetPaths({path}, {}, kValidateSupplied), ERROR_INVALID_PARAMETER);
  path = PathsTo({{0, "hdmi"}})[0];
  path.sourceInfo = panel.sourceInfo;  // a source of one adapter, a target of the other
  EXPECT_EQ(SetPaths({path}, {}, kValidateSupplied), ERROR_INVALID_PARAMETER);
  path = panel;
  path.sourceInfo.id = 1;  // one target from two sources
  EXPECT_EQ(SetPaths({panel, path}, {}, kValidateSupplied), ERROR_INVALID_PARAMETER);
}

TEST(SetDisplayConfig, ModeIndexesMustNameModesOfThatSourceOrTarget) {
  Machine machine(kExtended);
  const Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  EXPECT_EQ(SetPaths(q.paths, q.modes, kValidateSupplied), ERROR_SUCCESS);
  Queried bad = q;
  bad.paths[0].sourceInfo.modeInfoIdx = 4;
  EXPECT_EQ(SetPaths(bad.paths, bad.modes, kValidateSupplied), ERROR_INVALID_PARAMETER);
  bad = q;
  bad.paths[0].sourceInfo.modeInfoIdx = q.paths[0].targetInfo.modeInfoIdx;
  EXPECT_EQ(SetPaths(bad.paths, bad.modes, kValidateSupplied), ERROR_INVALID_PARAMETER);
  bad = q;
  bad.paths[0].sourceInfo.modeInfoIdx = q.paths[1].sourceInfo.modeInfoIdx;
  EXPECT_EQ(SetPaths(bad.paths, bad.modes, kValidateSupplied), ERROR_INVALID_PARAMETER);
  bad = q;
  bad.paths[0].targetInfo.modeInfoIdx = q.paths[1].targetInfo.modeInfoIdx;
  EXPECT_EQ(SetPaths(bad.paths, bad.modes, kValidateSupplied), ERROR_INVALID_PARAMETER);
}

TEST(SetDisplayConfig, TargetThatIsNotConnectedIsAGeneralFailure) {
  Machine machine("win7 intel: internal 1366x768 active, crt");
  EXPECT_EQ(SetPaths(PathsTo({{0, "crt"}}), {}, kApplySupplied | SDC_ALLOW_CHANGES),
            ERROR_GEN_FAILURE);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(SetDisplayConfig, MoreDisplaysThanTheAdapterDrivesIsAGeneralFailure) {
  Machine machine("win7 intel: internal 1024x768 active, crt 1024x768, hdmi 1024x768");
  EXPECT_EQ(SetPaths(PathsTo({{0, "internal"}, {0, "crt"}, {0, "hdmi"}}), {}, kValidateSupplied),
            ERROR_GEN_FAILURE);
}

TEST(SetDisplayConfig, NoDriverMeansNotSupported) {
  Machine machine(kPanelAndCrt);
  machine.model().adapters[0].problem = 43;
  EXPECT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_NOT_SUPPORTED);
}

TEST(SetDisplayConfig, TopologiesThatTheMonitorsCannotMake) {
  Machine lonely("win7 intel: internal 1366x768 active, crt");
  for (UINT32 topology : {SDC_TOPOLOGY_CLONE, SDC_TOPOLOGY_EXTEND, SDC_TOPOLOGY_EXTERNAL}) {
    EXPECT_EQ(SetTopology(SDC_VALIDATE | topology), ERROR_GEN_FAILURE) << topology;
    EXPECT_EQ(SetTopology(SDC_APPLY | topology), ERROR_GEN_FAILURE) << topology;
  }
  EXPECT_EQ(lonely.Topology(), "single internal");
  Machine closed("win7 intel: internal, crt 1024x768 active");
  EXPECT_EQ(SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_INTERNAL), ERROR_GEN_FAILURE);
  Machine split("win7 intel, nvidia: internal 1366x768 active, hdmi@2 800x600");
  EXPECT_EQ(SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_CLONE), ERROR_GEN_FAILURE);
  EXPECT_EQ(SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
}

TEST(SetDisplayConfig, CloneWithoutACommonModeIsABadConfiguration) {
  Machine machine(kPanelAndCrt);
  machine.model().connectors[1].monitor->modes = {{1600, 1200, 32, 60}};
  EXPECT_EQ(SetPaths(PathsTo({{0, "internal"}, {0, "crt"}}), {}, kValidateSupplied),
            ERROR_BAD_CONFIGURATION);
  EXPECT_EQ(SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_CLONE), ERROR_GEN_FAILURE);
}

// --- SetDisplayConfig: what it does.

TEST(SetDisplayConfig, ValidationChangesNothing) {
  Machine machine(kPanelAndCrt);
  EXPECT_EQ(SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_CLONE), ERROR_SUCCESS);
  EXPECT_EQ(SetPaths(PathsTo({{1, "crt"}}), {}, kValidateSupplied | SDC_SAVE_TO_DATABASE),
            ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_INTERNAL);
}

TEST(SetDisplayConfig, NamedTopologiesHaveADefault) {
  const struct {
    UINT32 topology;
    const char* told;
  } rows[] = {{SDC_TOPOLOGY_INTERNAL, "single internal"},
              {SDC_TOPOLOGY_CLONE, "clone internal+crt"},
              {SDC_TOPOLOGY_EXTEND, "extend internal+crt"},
              {SDC_TOPOLOGY_EXTERNAL, "single crt"}};
  for (const auto& row : rows) {
    Machine machine(kPanelAndCrt);
    EXPECT_EQ(SetTopology(SDC_APPLY | row.topology), ERROR_SUCCESS);
    EXPECT_EQ(machine.Topology(), row.told);
    EXPECT_EQ(static_cast<UINT32>(Query(QDC_DATABASE_CURRENT).topology), row.topology);
  }
}

TEST(SetDisplayConfig, NamedTopologyComesBackAsItWasSavedLast) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  ASSERT_EQ(Change(kSecond, SizedAt(800, 600, -800, 0), CDS_UPDATEREGISTRY),
            DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_SUCCESS);
  EXPECT_EQ(Now(kSecond), "detached");
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  EXPECT_EQ(Now(kSecond), "800x600x32@60 at -800,0");
}

TEST(SetDisplayConfig, SeveralKindsMeanTheMostRecentOfThem) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE), ERROR_SUCCESS);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_SUCCESS);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
}

TEST(SetDisplayConfig, DatabaseIsKeptPerSetOfMonitors) {
  Machine machine("win7 intel: internal 1366x768 active, crt");
  machine.Plug("crt", MakeMonitor("CRT", 1024, 768));
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE), ERROR_SUCCESS);
  machine.Unplug("crt");
  EXPECT_EQ(machine.Topology(), "single internal");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_INTERNAL);
  machine.Plug("crt", MakeMonitor("CRT", 1024, 768));
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(SetTopology(SDC_APPLY | SDC_USE_DATABASE_CURRENT), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
}

TEST(SetDisplayConfig, SuppliedPathsWithoutModesGetTheBestOnes) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(SetPaths(PathsTo({{0, "internal"}, {0, "crt"}}), {}, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
  ASSERT_EQ(SetPaths(PathsTo({{0, "crt"}, {1, "internal"}}), {}, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1366x768x32@60 at 1024,0");
}

TEST(SetDisplayConfig, OnlySavedConfigurationsReachTheDatabase) {
  Machine machine(kPanelAndCrt);
  const auto extend = PathsTo({{0, "internal"}, {1, "crt"}});
  ASSERT_EQ(SetPaths(extend, {}, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "extend internal+crt");
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_INTERNAL);
  ASSERT_EQ(SetPaths(extend, {}, kApplySupplied | SDC_SAVE_TO_DATABASE), ERROR_SUCCESS);
  EXPECT_EQ(Query(QDC_DATABASE_CURRENT).topology, DISPLAYCONFIG_TOPOLOGY_EXTEND);
}

TEST(SetDisplayConfig, SuppliedTopologyTakesItsModesFromTheDatabase) {
  Machine machine(kPanelAndCrt);
  const auto extend = PathsTo({{0, "internal"}, {1, "crt"}});
  constexpr UINT32 kFlags = SDC_APPLY | SDC_TOPOLOGY_SUPPLIED;
  EXPECT_EQ(SetPaths(extend, {}, kFlags), ERROR_BAD_CONFIGURATION);  // never saved
  EXPECT_EQ(SetPaths(extend, {}, SDC_VALIDATE | SDC_TOPOLOGY_SUPPLIED | SDC_ALLOW_CHANGES),
            ERROR_SUCCESS);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  ASSERT_EQ(Change(kSecond, Sized(800, 600), CDS_UPDATEREGISTRY), DISP_CHANGE_SUCCESSFUL);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_SUCCESS);
  ASSERT_EQ(SetPaths(extend, {}, kFlags), ERROR_SUCCESS);
  EXPECT_EQ(Now(kSecond), "800x600x32@60 at 1366,0");
}

TEST(SetDisplayConfig, PathOrderCountsInASuppliedTopologyUnlessAllowed) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  const auto turned = PathsTo({{1, "crt"}, {0, "internal"}});
  constexpr UINT32 kFlags = SDC_VALIDATE | SDC_TOPOLOGY_SUPPLIED;
  EXPECT_EQ(SetPaths(turned, {}, kFlags), ERROR_BAD_CONFIGURATION);
  EXPECT_EQ(SetPaths(turned, {}, kFlags | SDC_ALLOW_PATH_ORDER_CHANGES), ERROR_SUCCESS);
}

TEST(SetDisplayConfig, SuppliedTopologyRefusesModes) {
  Machine machine(kPanelAndCrt);
  const Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  EXPECT_EQ(SetPaths(q.paths, q.modes, SDC_APPLY | SDC_TOPOLOGY_SUPPLIED), ERROR_INVALID_PARAMETER);
}

TEST(SetDisplayConfig, SourceModeChangesTheResolution) {
  Machine machine(kPanelAndCrt);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  SourceMode(&q, 0)->width = 1024;
  SourceMode(&q, 0)->height = 768;
  SourceMode(&q, 0)->pixelFormat = DISPLAYCONFIG_PIXELFORMAT_16BPP;
  EXPECT_EQ(SetPaths(q.paths, q.modes, kValidateSupplied), ERROR_SUCCESS);
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied | SDC_SAVE_TO_DATABASE), ERROR_SUCCESS);
  EXPECT_EQ(Now(kFirst), "1024x768x16@60 at 0,0");
  EXPECT_EQ(Told(Settings(kFirst, ENUM_REGISTRY_SETTINGS)), "1024x768x16@60 at 0,0");
}

TEST(SetDisplayConfig, UnlistedSourceModeNeedsLeaveToChange) {
  Machine machine(kPanelAndCrt);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  SourceMode(&q, 0)->width = 1300;
  SourceMode(&q, 0)->height = 768;
  EXPECT_EQ(SetPaths(q.paths, q.modes, kValidateSupplied), ERROR_BAD_CONFIGURATION);
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied | SDC_ALLOW_CHANGES), ERROR_SUCCESS);
  EXPECT_EQ(Now(kFirst), "1280x720x32@60 at 0,0");  // the largest that fits
}

TEST(SetDisplayConfig, DesktopsThatWouldOverlapMoveApart) {
  Machine machine(kExtended);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  for (size_t i = 0; i < 2; ++i) {
    SourceMode(&q, i)->width = 1024;
    SourceMode(&q, i)->height = 768;
    SourceMode(&q, i)->position = {0, 0};
  }
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(Now(kFirst), "1024x768x32@60 at 0,0");
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 1024,0");
}

TEST(SetDisplayConfig, SomeDesktopHasTheOrigin) {
  Machine machine(kExtended);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  SourceMode(&q, 0)->position = {100, 0};
  EXPECT_EQ(SetPaths(q.paths, q.modes, kValidateSupplied), ERROR_INVALID_PARAMETER);
  SourceMode(&q, 0)->position = {-1366, 0};
  SourceMode(&q, 1)->position = {0, 0};
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(Now(nullptr), "1024x768x32@60 at 0,0");
  EXPECT_EQ(Now(kFirst), "1366x768x32@60 at -1366,0");
}

TEST(SetDisplayConfig, TargetModeChoosesTheFrequency) {
  Machine machine("win7 intel: internal 1366x768, crt 1024x768 active");
  machine.model().connectors[1].monitor->modes.push_back({1024, 768, 32, 75});
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  DISPLAYCONFIG_MODE_INFO& target = q.modes[q.paths[0].targetInfo.modeInfoIdx];
  target.targetMode.targetVideoSignalInfo.vSyncFreq = {75000, 1000};
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(Now(nullptr), "1024x768x32@75 at 0,0");
  target.targetMode.targetVideoSignalInfo.vSyncFreq = {100, 1};
  EXPECT_EQ(SetPaths(q.paths, q.modes, kApplySupplied), ERROR_BAD_CONFIGURATION);
  EXPECT_EQ(SetPaths(q.paths, q.modes, kApplySupplied | SDC_ALLOW_CHANGES), ERROR_SUCCESS);
}

TEST(SetDisplayConfig, InactivePathsInTheArrayTurnTheirTargetsOff) {
  Machine machine(kExtended);
  Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  q.paths[1].flags = 0;
  ASSERT_EQ(SetPaths(q.paths, q.modes, kApplySupplied), ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "single internal");
}

TEST(SetDisplayConfig, PersistForcesAnAnalogTargetWithoutMonitor) {
  Machine machine("win7 intel: internal 1366x768 active, hdmi, crt");
  EXPECT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE), ERROR_GEN_FAILURE);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE | SDC_PATH_PERSIST_IF_REQUIRED),
            ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
  const Queried q = Query(QDC_ONLY_ACTIVE_PATHS);
  ASSERT_EQ(q.paths.size(), 2u);
  EXPECT_TRUE(q.paths[1].targetInfo.targetAvailable);
  EXPECT_NE(q.paths[1].targetInfo.statusFlags & DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH, 0u);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL), ERROR_SUCCESS);
  for (const DISPLAYCONFIG_PATH_INFO& path : Query(QDC_ALL_PATHS).paths) {
    EXPECT_EQ(path.targetInfo.statusFlags & DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH, 0u);
  }
}

TEST(SetDisplayConfig, PersistForcesNothingThatIsNotRequired) {
  Machine machine("win7 intel: internal 1366x768 active, crt, hdmi 800x600");
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE | SDC_PATH_PERSIST_IF_REQUIRED),
            ERROR_SUCCESS);
  EXPECT_EQ(machine.Topology(), "clone internal+hdmi");
}

TEST(SetDisplayConfig, DisplaySettingsSeeWhatChanged) {
  Machine machine(kPanelAndCrt);
  ASSERT_EQ(SetTopology(SDC_APPLY | SDC_TOPOLOGY_EXTEND), ERROR_SUCCESS);
  DISPLAY_DEVICEA device = {};
  device.cb = sizeof device;
  ASSERT_TRUE(FAKE(EnumDisplayDevicesA)(nullptr, 1, &device, 0));
  EXPECT_EQ(device.StateFlags, static_cast<DWORD>(DISPLAY_DEVICE_ATTACHED_TO_DESKTOP));
  EXPECT_EQ(Now(kSecond), "1024x768x32@60 at 1366,0");
}

TEST(SetDisplayConfig, EveryCallIsInTheJournal) {
  Machine machine(kPanelAndCrt);
  SetTopology(SDC_VALIDATE | SDC_TOPOLOGY_CLONE);
  SetTopology(SDC_APPLY | SDC_TOPOLOGY_CLONE);
  SetPaths(PathsTo({{0, "internal"}}), {}, 0x660);
  SetTopology(0);
  machine.Fail("SetDisplayConfig", 1, ERROR_ACCESS_DENIED);
  SetTopology(SDC_APPLY | SDC_TOPOLOGY_INTERNAL);
  EXPECT_EQ(machine.TakeJournal(),
            "SetDisplayConfig(paths=0 flags=0x42)=0\n"
            "SetDisplayConfig(paths=0 flags=0x82)=0\n"
            "SetDisplayConfig(paths=1 flags=0x660)=0\n"
            "SetDisplayConfig(paths=0 flags=0x0)=87\n"
            "SetDisplayConfig(paths=0 flags=0x81)=5\n");
  EXPECT_EQ(machine.Topology(), "clone internal+crt");
}

}  // namespace
}  // namespace sim
