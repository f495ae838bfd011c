// Every call of the display library fails in turn, once and from then on: nothing is lost, and
// nothing that was handed out is kept.
#include "tests/behaviour/ADLImplHost.h"

namespace {

constexpr const char* kFunctions[] = {
    "ADL_Main_Control_Create",
    "ADL_Main_Control_Destroy",
    "ADL_Main_Control_Refresh",
    "ADL_Adapter_NumberOfAdapters_Get",
    "ADL_Adapter_AdapterInfo_Get",
    "ADL_Adapter_Active_Get",
    "ADL_Display_DisplayInfo_Get",
    "ADL_Display_SwitchingCapability_Get",
    "ADL_Display_DisplayMapConfig_Get",
    "ADL_Display_DisplayMapConfig_Set",
    "ADL_Display_EdidData_Get",
    "ADL_Display_SLSMapIndex_Get",
    "ADL_Display_SLSMapConfig_Get",
    "ADL_Display_SLSGrid_Caps",
    "ADL_Display_Modes_Get",
};

/// Everything that a session asks for, on an object that is ready.
void UseAll(AdlHost* host) {
  constexpr uint32_t kAll = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  host->Connected();
  host->Active();
  host->Mode();
  for (const uint32_t mode : {IMMonitor::DM_TRIPLE_EXTEND, IMMonitor::DM_TRIPLE_CLONE,
                              IMMonitor::DM_CLONE, IMMonitor::DM_SINGLE}) {
    host->adl().SetNewDisplayMode(mode, mode == IMMonitor::DM_SINGLE ? 1 : kAll);
  }
  host->adl().EnableExtendMode(TRUE);
  host->Mode();
  host->adl().EnableExtendModeOnDisplays(FALSE, 0);
  host->adl().HasDisplaySwitchingCapability();
  host->extension().HasSLSGrid();
  EdidBlob edid;
  if (host->extension().GetEDID(IMMonitor::MD_CRT, &edid)) host->extension().FreeEDID(&edid);
}

/// @return whether the fault was met
bool RunWithFault(const std::string& function, uint32_t nth, sim::Machine::Repeat repeat) {
  AdlHost host("win7 amd, intel: internal 1366x768 active, crt 1280x1024 active");
  host.driver().sls_maps = {{1, 2, {"internal", "crt"}, {{1280, 1024, 32, 60}}, {}, {}}};
  host.ostrel();
  const size_t modules = host.Modules();
  host.Forget();
  host.machine.Fail(function, nth, 0, repeat);
  UseAll(&host);
  const uint32_t given = host.machine.FaultsGiven();
  host.machine.ForgiveUnusedFaults();
  host.machine.ClearFaults();
  // Whatever happened, the next question brings the library back.
  EXPECT_NE(host.Connected(), "failed") << function << " " << nth;
  host.End();
  EXPECT_EQ(host.Held(), "") << function << " " << nth;
  EXPECT_EQ(host.Modules(), modules) << function << " " << nth;
  return given != 0;
}

class ADLImplFaults : public testing::TestWithParam<const char*> {};

TEST_P(ADLImplFaults, EachCallOnce) {
  uint32_t nth = 1;
  while (nth < 40 && RunWithFault(GetParam(), nth, sim::Machine::Repeat::kOnce)) ++nth;
  EXPECT_GT(nth, 1u);  // it was called at all
  EXPECT_LT(nth, 40u);
}

TEST_P(ADLImplFaults, FromTheFirstCallOn) {
  RunWithFault(GetParam(), 1, sim::Machine::Repeat::kFromThenOn);
}

INSTANTIATE_TEST_SUITE_P(Functions, ADLImplFaults, testing::ValuesIn(kFunctions),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
