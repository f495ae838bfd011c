// What is connected, what is active, and how.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"

namespace {

constexpr int kForceDetect = 1;
constexpr int kWithGpuInfo = 1;

void AddDisplay(const ADLDisplayInfo& info, uint32_t* displays, uint32_t* display_count) {
  *displays |= DisplayOfAdlInfo(info);
  ++*display_count;
}

bool HasAll(const ADLDisplayInfo& info, int32_t bits) {
  return (info.iDisplayInfoValue & bits) == bits;
}

}  // namespace

int ADLImpl::AskDisplays(int position, DisplayInfos* infos) const {
  int32_t adapter = 0;
  if (!AdapterAt(position, &adapter)) return ADL_ERR_INVALID_ADL_IDX;
  return VADLLib::Call(m_adl->ADL_Display_DisplayInfo_Get, adapter, infos->ReceiveCount(),
                       infos->Receive(), kForceDetect);
}

BOOL ADLImpl::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  m_displayInfos.Reset();
  if (m_isHybrid) VADLLib::Call(m_adl->ADL_Main_Control_Refresh);
  int rv = AskDisplays(m_activeAdapter, &m_displayInfos);
  if (rv != ADL_OK) {
    LOG(ERROR) << "Calling to ADL_Display_DisplayInfo_Get, rv = " << rv;
    ReloadAdl();
    rv = AskDisplays(m_activeAdapter, &m_displayInfos);
  }
  if (rv != ADL_OK) {
    m_displayInfos.Reset();
    return FALSE;
  }
  *displays = 0;
  *display_count = 0;
  for (const ADLDisplayInfo& info : m_displayInfos) {
    if (HasAll(info, kAdlDisplayConnected)) AddDisplay(info, displays, display_count);
  }
  return TRUE;
}

// Deliberate: a success whatever failed, and without any adapter, too.
BOOL ADLImpl::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  if (displays == nullptr || display_count == nullptr) return FALSE;
  *displays = 0;
  *display_count = 0;
  // The list of adapters may be another one after a recovery.
  for (int position = 0; position < ListedAdapters(); ++position) {
    DisplayInfos infos;
    int rv = AskDisplays(position, &infos);
    if (rv != ADL_OK) {
      ReloadAdl();
      rv = AskDisplays(position, &infos);
    }
    int32_t adapter = 0;
    if (rv != ADL_OK || !AdapterAt(position, &adapter)) continue;
    for (const ADLDisplayInfo& info : infos) {
      if (!HasAll(info, kAdlDisplayConnected | kAdlDisplayMapped)) continue;
      if (info.displayID.iDisplayLogicalAdapterIndex != adapter) continue;
      AddDisplay(info, displays, display_count);
    }
  }
  return TRUE;
}

int ADLImpl::AskMap(int position, DisplayMap* map) const {
  int32_t adapter = 0;
  if (!AdapterAt(position, &adapter)) return ADL_ERR_INVALID_ADL_IDX;
  return VADLLib::Call(m_adl->ADL_Display_DisplayMapConfig_Get, adapter, map->maps.ReceiveCount(),
                       map->maps.Receive(), map->targets.ReceiveCount(), map->targets.Receive(),
                       kWithGpuInfo);
}

bool ADLImpl::GetDisplayMap(ADLDisplayMap** ppmaps, int* pnum_map, ADLDisplayTarget** pptargets,
                            int* pnum_target) {
  DCHECK(m_adl != NULL);
  DCHECK(m_numAdapters > 0);
  DCHECK(ppmaps != NULL);
  DCHECK(pnum_map != NULL);
  DCHECK(pptargets != NULL);
  DCHECK(pnum_target != NULL);
  if (m_adl == nullptr || ppmaps == nullptr || pnum_map == nullptr) return false;
  if (pptargets == nullptr || pnum_target == nullptr) return false;
  for (int position = 0; position < ListedAdapters(); ++position) {
    DisplayMap map;
    int rv = AskMap(position, &map);
    if (rv != ADL_OK) {
      LOG(WARNING) << "Call to ADL_Display_DisplayMapConfig_Get() has problem, rv = " << rv
                   << ". Refresh internal memory and try again.";
      ReloadAdl();
      rv = AskMap(position, &map);
    }
    if (rv == ADL_OK) {
      *ppmaps = map.maps.Release(pnum_map);
      *pptargets = map.targets.Release(pnum_target);
      return true;
    }
    LOG(ERROR) << "Call to ADL_Display_DisplayMapConfig_Get() failed, rv = " << rv;
  }
  return false;
}

bool ADLImpl::ReadMode(uint32_t* mode) {
  int num_map = 0;
  int num_target = 0;
  {
    DisplayMap map;
    if (!GetDisplayMap(map.maps.Receive(), &num_map, map.targets.Receive(), &num_target)) {
      return false;
    }
  }
  DCHECK(num_map > 0);
  const std::optional<uint32_t> known = ModeOfAdlMap(num_map, num_target);
  if (known == DM_EXTEND) DCHECK(num_target == num_map);
  if (known) *mode = *known;
  return true;
}

BOOL ADLImpl::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  if (mode == nullptr || displays == nullptr) return FALSE;
  if (IsSlsActive()) {
    // Deliberate: one picture across several displays is a success without a mode and without
    // displays.
    *mode = 0;
    *displays = 0;
    return TRUE;
  }
  uint32_t active = 0;
  uint32_t active_count = 0;
  if (GetActiveDisplays(&active, &active_count) == 0) return FALSE;
  uint32_t current = 0;
  if (!ReadMode(&current)) return FALSE;
  *mode = current;
  *displays = active;
  return TRUE;
}

// Deliberate: a display whose settings nobody knows counts as one whose settings are known; only
// DVI can fail, when there are none for HDMI either.
bool ADLImpl::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  if (MultiMonitor::GetDisplaySettings(imm_display, dm)) return true;
  return imm_display != MD_DVI || MultiMonitor::GetDisplaySettings(MD_HDMI, dm);
}

int32_t ADLImpl::ConnectorTypeFromIMMonitorDisplayType(uint32_t displays) const {
  const std::optional<int32_t> connector =
      AdlConnectorOfDisplays(displays, {m_displayInfos.data(), m_displayInfos.size()});
  if (connector) return *connector;
  DCHECK(0 && "ConnectorTypeFromIMMonitorDisplayType() unknown connector type");
  return 0;
}

int32_t ADLImpl::DisplayIndexFromConnector(const ADLDisplayInfo* all_display_infos, int num_display,
                                           int32_t connector) {
  DCHECK(all_display_infos != NULL);
  DCHECK(num_display > 0);
  return AdlIndexOfConnector(connector, {all_display_infos, num_display});
}

int32_t ADLImpl::DisplayIndexOf(uint32_t displays) const {
  return DisplayIndexFromConnector(m_displayInfos.data(), m_displayInfos.size(),
                                   ConnectorTypeFromIMMonitorDisplayType(displays));
}
