#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3.h"

#include "Common/Logging.h"
#include "Common/win_util.h"

NvidiaMMImplV3::NvidiaMMImplV3(Win7CCDApi* ccd) : ccd(ccd) {
  DCHECK(win_util::GetWinVersion() > win_util::WINVERSION_VISTA);
  DCHECK(ccd != NULL);
  if (ccd != nullptr) ccd->Load("User32.dll");
}
NvidiaMMImplV3::~NvidiaMMImplV3() = default;
BOOL NvidiaMMImplV3::ApplyDisplayMode(uint32_t, uint32_t, const NvidiaModeSettings*) {
  return FALSE;
}
BOOL NvidiaMMImplV3::ApplyExtendModeOnDisplay(uint32_t) { return FALSE; }
BOOL NvidiaMMImplV3::ApplyExtendMode() { return FALSE; }
void NvidiaMMImplV3::SetPathTargetCounts(uint32_t, NV_DISPLAYCONFIG_PATH_INFO*) {}
void NvidiaMMImplV3::FillPaths(uint32_t, uint32_t, uint32_t, NV_DISPLAYCONFIG_PATH_INFO*) {}
void NvidiaMMImplV3::SetTargetOfDisplay(uint32_t, NV_DISPLAYCONFIG_PATH_TARGET_INFO*) {}
void NvidiaMMImplV3::SetPathAdapter(uint32_t, NV_DISPLAYCONFIG_PATH_INFO*) {}
void NvidiaMMImplV3::FillSourceModes(uint32_t, uint32_t, uint32_t, NV_DISPLAYCONFIG_PATH_INFO*) {}
uint32_t NvidiaMMImplV3::DisplayIdOfDisplay(uint32_t) const { return 0; }
uint32_t NvidiaMMImplV3::DisplayIdOfConnectorType(uint32_t) const { return 0; }
