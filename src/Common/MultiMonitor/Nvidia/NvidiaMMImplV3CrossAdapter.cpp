#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"

NvidiaMMImplV3CrossAdapter::NvidiaMMImplV3CrossAdapter(Win7CCDApi* ccd) : NvidiaMMImplV3(ccd) {}
BOOL NvidiaMMImplV3CrossAdapter::GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) {
  return NvidiaMMImplV2::GetCurrentDisplayMode(imm_mode, imm_displays);
}
BOOL NvidiaMMImplV3CrossAdapter::ShouldResetDisplaySettingAfterSwtich() {
  return static_cast<BOOL>(should_reset_display_settings_after_switch_);
}
BOOL NvidiaMMImplV3CrossAdapter::ApplyDisplayMode(uint32_t mode, uint32_t displays,
                                                  const NvidiaModeSettings* settings) {
  return NvidiaMMImplV3::ApplyDisplayMode(mode, displays, settings);
}
BOOL NvidiaMMImplV3CrossAdapter::ApplyExtendModeOnDisplay(uint32_t external_display) {
  return NvidiaMMImplV3::ApplyExtendModeOnDisplay(external_display);
}
void NvidiaMMImplV3CrossAdapter::SetTargetOfDisplay(uint32_t, NV_DISPLAYCONFIG_PATH_TARGET_INFO*) {}
void NvidiaMMImplV3CrossAdapter::SetPathAdapter(uint32_t, NV_DISPLAYCONFIG_PATH_INFO*) {}
void NvidiaMMImplV3CrossAdapter::FillSourceModes(uint32_t, uint32_t, uint32_t,
                                                 NV_DISPLAYCONFIG_PATH_INFO*) {}
BOOL NvidiaMMImplV3CrossAdapter::ApplyCrossAdapterClone(uint32_t) { return FALSE; }
