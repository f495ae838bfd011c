// The settings that a display has and the size that it was made for.
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/MultiMonitor/Win7CCD.h"

static_assert(sizeof(DISPLAYCONFIG_TARGET_PREFERRED_MODE) == 80,
              "record of the display configuration API");

bool Win7CCD::GetDisplaySettings(uint32_t imm_display, DEVMODEA* dm) {
  DCHECK(dm != NULL);
  if (dm == nullptr || m_ccd == nullptr) return false;
  DisplayConfigBuffers buffers;
  if (!buffers.Read(*m_ccd, QDC_ONLY_ACTIVE_PATHS)) return false;
  const uint32_t technology = TechnologyFromDisplay(imm_display);
  for (const DISPLAYCONFIG_PATH_INFO& path : buffers.Paths()) {
    if (static_cast<uint32_t>(path.targetInfo.outputTechnology) != technology) continue;
    const auto modes = buffers.Modes();
    const UINT32 index = path.sourceInfo.modeInfoIdx;
    if (index >= modes.count) return false;
    const DISPLAYCONFIG_SOURCE_MODE& source = modes.first[index].sourceMode;
    dm->dmPelsWidth = source.width;
    dm->dmPelsHeight = source.height;
    dm->dmBitsPerPel = BitsFromPixelFormat(static_cast<uint32_t>(source.pixelFormat));
    dm->dmDisplayFrequency = 60;  // Deliberate: whatever the mode says
    return true;
  }
  return false;
}

bool Win7CCD::GetNativeResolution(uint32_t monitor_id, uint32_t* width, uint32_t* height) {
  DCHECK(width != NULL && height != NULL);
  DCHECK(CountBits(monitor_id) == 1);
  if (width == nullptr || height == nullptr) return false;
  LoadOnDemand();
  *width = 0;
  *height = 0;
  DISPLAYCONFIG_TARGET_PREFERRED_MODE preferred = {};
  if (!ReadPreferredMode(monitor_id, &preferred)) return false;
  *width = preferred.width;
  *height = preferred.height;
  return true;
}

BOOL Win7CCD::GetTargetPreferredMode(uint32_t monitor_id,
                                     DISPLAYCONFIG_TARGET_PREFERRED_MODE* record) {
  DCHECK(CountBits(monitor_id) == 1);
  if (record == nullptr) return FALSE;
  LoadOnDemand();
  DISPLAYCONFIG_TARGET_PREFERRED_MODE preferred = {};
  if (!ReadPreferredMode(monitor_id, &preferred)) return FALSE;
  *record = preferred;
  return TRUE;
}

void Win7CCD::LoadOnDemand() {
  if (m_apiLoaded) return;
  Initial();
  m_apiLoaded = true;  // Deliberate: also when it failed, so that it is not tried again
}

bool Win7CCD::ReadPreferredMode(uint32_t monitor_id,
                                DISPLAYCONFIG_TARGET_PREFERRED_MODE* preferred) {
  PathList paths;
  if (QuerySortedPaths(QDC_ALL_PATHS, &paths) == 0) return false;
  if (m_ccd->DisplayConfigGetDeviceInfo == nullptr) return false;
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    const auto technology = static_cast<uint32_t>(path.targetInfo.outputTechnology);
    if (!IsNativeTechnology(monitor_id, technology)) continue;
    preferred->header.type = DISPLAYCONFIG_DEVICE_INFO_GET_TARGET_PREFERRED_MODE;
    preferred->header.size = sizeof(*preferred);
    preferred->header.adapterId = path.targetInfo.adapterId;
    preferred->header.id = path.targetInfo.id;
    return m_ccd->DisplayConfigGetDeviceInfo(&preferred->header) == ERROR_SUCCESS;
  }
  return false;
}
