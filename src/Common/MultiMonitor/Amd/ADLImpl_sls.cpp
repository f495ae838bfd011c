// Whether one picture lies across several displays.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int kNoGpuInfo = 0;
constexpr int kCurrentAngle = 2;

// A map of the driver's, and all that belongs to it.
struct SlsMap {
  ADLSLSMap map = {};
  AdlArray<ADLSLSTarget> targets;
  AdlArray<ADLSLSMode> native;
  AdlArray<ADLBezelTransientMode> bezel;
  AdlArray<ADLBezelTransientMode> transient;
  AdlArray<ADLSLSOffset> offsets;

  int Read(const VADLLib& adl, int32_t adapter, int map_index) {
    return VADLLib::Call(adl.ADL_Display_SLSMapConfig_Get, adapter, map_index, &map,
                         targets.ReceiveCount(), targets.Receive(), native.ReceiveCount(),
                         native.Receive(), bezel.ReceiveCount(), bezel.Receive(),
                         transient.ReceiveCount(), transient.Receive(), offsets.ReceiveCount(),
                         offsets.Receive(), kCurrentAngle);
  }

  int64_t GridSize() const { return int64_t{map.grid.iSLSGridRow} * map.grid.iSLSGridColumn; }

  /// Some size of the whole picture.
  bool HasSize(const ADLMode& mode) const {
    const auto same = [&mode](const auto& record) {
      return record.displayMode.iXRes == mode.iXRes && record.displayMode.iYRes == mode.iYRes;
    };
    return std::any_of(native.begin(), native.end(), same) ||
           std::any_of(bezel.begin(), bezel.end(), same) ||
           std::any_of(transient.begin(), transient.end(), same);
  }
};

}  // namespace

bool ADLImpl::IsSlsActive() {
  for (int position = 0; position < ListedAdapters(); ++position) {
    DisplayMap map;
    // Deliberate: the position in the list, not the index that the record there tells.
    const int rv = VADLLib::Call(m_adl->ADL_Display_DisplayMapConfig_Get, position,
                                 map.maps.ReceiveCount(), map.maps.Receive(),
                                 map.targets.ReceiveCount(), map.targets.Receive(), kNoGpuInfo);
    if (rv != ADL_OK) continue;
    int32_t adapter = 0;
    return map.targets.size() >= 2 && AdapterAt(position, &adapter) &&
           ShowsSlsPicture(adapter, map);
  }
  return false;
}

bool ADLImpl::ShowsSlsPicture(int32_t adapter, const DisplayMap& map) {
  std::vector<ADLDisplayTarget> targets(map.targets.begin(), map.targets.end());
  const int target_count = map.targets.size();
  int map_index = 0;
  int rv = VADLLib::Call(m_adl->ADL_Display_SLSMapIndex_Get, adapter, target_count, targets.data(),
                         &map_index);
  if (rv != ADL_OK) {
    LOG(ERROR) << "Calling ADL_Display_SLSMapIndex_Get() failed, rv = " << rv;
    return false;
  }
  SlsMap sls;
  rv = sls.Read(*m_adl, adapter, map_index);
  if (rv != ADL_OK || target_count != sls.GridSize()) {
    LOG(ERROR) << "Calling ADL_Display_SLSMapConfig_Get() failed, rv = " << rv;
    return false;
  }
  bool any = false;
  for (const ADLDisplayTarget& target : targets) {
    AdlArray<ADLMode> modes;
    rv = VADLLib::Call(m_adl->ADL_Display_Modes_Get, adapter, target.displayID.iDisplayLogicalIndex,
                       modes.ReceiveCount(), modes.Receive());
    if (rv != ADL_OK) {
      LOG(ERROR) << "Calling ADL_Display_Modes_Get() failed, rv = " << rv;
      break;
    }
    if (!modes.empty() && sls.HasSize(modes[0])) any = true;
  }
  return any;
}

bool ADLImpl::HasSLSGrid() {
  DCHECK(m_infoAdapters != NULL);
  DCHECK(m_numAdapters > 0);
  for (int position = 0; position < ListedAdapters(); ++position) {
    int32_t adapter = 0;
    if (!AdapterAt(position, &adapter)) break;
    AdlArray<ADLSLSGrid> grids;
    const int rv = VADLLib::Call(m_adl->ADL_Display_SLSGrid_Caps, adapter, grids.ReceiveCount(),
                                 grids.Receive(), 0);
    if (rv != ADL_OK) {
      char text[96];
      std::snprintf(text, sizeof(text),
                    "Calling ADL_Display_SLSGrid_Caps() failed, adapter index = %d, rv = %d",
                    position, rv);
      LOG(ERROR) << text;
    }
    VLOG(0) << "Calling ADL_Display_SLSGrid_Caps(), number of SLS grid: " << grids.told_count();
    if (grids.told_count() > 0) return true;
  }
  return false;
}
