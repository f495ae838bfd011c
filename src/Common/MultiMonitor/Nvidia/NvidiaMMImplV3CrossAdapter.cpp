#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/CreateWin7CCDObject.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/Nvidia/NvidiaCloneGroups.h"
#include "Common/MultiMonitor/Nvidia/NvidiaDisplayPaths.h"
#include "Common/MultiMonitor/Nvidia/NvidiaPathRecords.h"
#include "Common/MultiMonitor/PhysicalMonitorByDisplayLibrary.h"
#include "Common/MultiMonitor/Win7CCD.h"

#include <memory>
#include <utility>

namespace {

constexpr uint32_t kGroupDisplays = IMMonitor::MD_NB | IMMonitor::MD_HDMI | IMMonitor::MD_DP;
constexpr uint32_t kHdmiConnector = 97;
constexpr uint32_t kDisplayPortConnector = 70;

// What hangs on the Intel adapter.
constexpr bool IsOfIntel(uint32_t imm_display) {
  return imm_display == IMMonitor::MD_NB || imm_display == IMMonitor::MD_CRT;
}

// What hangs on NVIDIA's.
constexpr bool IsOfNvidia(uint32_t imm_display) {
  return imm_display == IMMonitor::MD_DVI || imm_display == IMMonitor::MD_HDMI ||
         imm_display == IMMonitor::MD_DP;
}

// The Intel driver's view of its monitors; null when that driver cannot be used. It alone holds the
// object that it asks.
PhysicalMonitorByDisplayLibrary* NewIntelMonitor() {
  std::unique_ptr<IntelMMImpl> intel_ext(new IntelMMImpl());
  DCHECK(intel_ext != NULL);
  if (!intel_ext->InitialExtension()) return nullptr;
  auto* const monitor = new PhysicalMonitorByDisplayLibrary(intel_ext.get());
  intel_ext.release()->Release();
  return monitor;
}

}  // namespace

NvidiaMMImplV3CrossAdapter::NvidiaMMImplV3CrossAdapter(std::unique_ptr<Win7CCDApi> api)
    : NvidiaMMImplV3(std::move(api)) {}

BOOL NvidiaMMImplV3CrossAdapter::GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) {
  NvidiaCloneGroups groups(m_nvProxy);
  if (!IsCrossAdapterCapable() || imm_mode == nullptr || imm_displays == nullptr ||
      !groups.ReadCount() || groups.count() == 0) {
    return NvidiaMMImplV2::GetCurrentDisplayMode(imm_mode, imm_displays);
  }
  *imm_mode = DM_CLONE;
  *imm_displays = 0;
  // Deliberate: groups that cannot be read any further are a clone of nobody, and a success.
  if (!groups.ReadGroups() || !groups.ReadItems()) return TRUE;

  const std::unique_ptr<Win7CCD> windows(CreateWin7CCDObject());
  const bool ccd_ok = windows != nullptr && windows->Initial() != 0;
  DCHECK(ccd_ok);
  for (const NvTopologyItem& item : groups.Items()) {
    *imm_displays |= DisplayOfItem(item, windows.get());
  }
  return TRUE;
}

uint32_t NvidiaMMImplV3CrossAdapter::DisplayOfItem(const NvTopologyItem& item, Win7CCD* windows) {
  if ((item.flags & NvTopologyItem::kForeign) != 0) {
    if (windows == nullptr) return 0;
    if (item.id == windows->GetActiveTargetId(MD_NB)) return MD_NB;
    // Deliberate: the target is the same whichever display is asked for, so that this one is never
    // found.
    if (item.id == windows->GetActiveTargetId(MD_CRT)) return MD_CRT;
    return 0;
  }
  NvPhysicalGpuHandle gpu = nullptr;
  uint32_t nv_output = 0;
  if (m_nvProxy == nullptr ||
      !m_nvProxy->GetGpuAndOutputIdFromDisplayId(item.id, &gpu, &nv_output)) {
    return 0;
  }
  uint32_t displays = 0;
  uint32_t display_count = 0;
  NvMaskToDisplays(nv_output, &displays, &display_count);
  return displays;
}

// Deliberate: the answer is always 1, as nothing clears the member.
BOOL NvidiaMMImplV3CrossAdapter::ShouldResetDisplaySettingAfterSwtich() {
  const uint32_t rv = should_reset_display_settings_after_switch_;
  should_reset_display_settings_after_switch_ = 1;
  VLOG(2) << "ShouldResetDisplaySettingAfterSwtich() rv = " << rv;
  VLOG(2) << "ShouldResetDisplaySettingAfterSwtich() should_reset_display_settings_after_switch_ = "
          << should_reset_display_settings_after_switch_;
  return static_cast<BOOL>(rv);
}

BOOL NvidiaMMImplV3CrossAdapter::ApplyDisplayMode(uint32_t mode, uint32_t displays,
                                                  const NvidiaModeSettings* settings) {
  if (mode == DM_CLONE && (displays & (MD_HDMI | MD_DP)) != 0) {
    return ApplyCrossAdapterClone(displays);
  }
  uint32_t current_mode = 0;
  uint32_t current_displays = 0;
  GetCurrentDisplayMode(&current_mode, &current_displays);
  // Deliberate: this does nothing, so that a clone group outlives the switch and goes on being
  // reported.
  if (current_mode == DM_CLONE) EnableExtendMode(TRUE);
  return NvidiaMMImplV3::ApplyDisplayMode(mode, displays, settings);
}

BOOL NvidiaMMImplV3CrossAdapter::ApplyCrossAdapterClone(uint32_t displays) {
  if (m_nvProxy == nullptr) return FALSE;
  if ((displays & kGroupDisplays) == 0) return RemoveCloneGroups();
  const std::unique_ptr<Win7CCD> windows(CreateWin7CCDObject());
  if (windows == nullptr) return FALSE;
  // The panel has to stand alone when the group is written. Whether it does, the driver will say.
  if (windows->Initial() != 0) windows->SetNewDisplayMode(DM_SINGLE, MD_NB);
  const uint32_t panel = windows->GetActiveTargetId(MD_NB);
  uint32_t external = 0;
  if ((displays & MD_HDMI) != 0) {
    external = DisplayIdOfConnectorType(kHdmiConnector);
  } else if ((displays & MD_DP) != 0) {
    external = DisplayIdOfConnectorType(kDisplayPortConnector);
  }
  return WriteCloneGroup(m_nvProxy, panel, external) ? TRUE : FALSE;
}

BOOL NvidiaMMImplV3CrossAdapter::RemoveCloneGroups() {
  NvidiaCloneGroups groups(m_nvProxy);
  if (!groups.ReadCount()) return FALSE;
  return groups.count() == 0 || groups.RemoveAll() ? TRUE : FALSE;
}

BOOL NvidiaMMImplV3CrossAdapter::ApplyExtendModeOnDisplay(uint32_t external_display) {
  DCHECK((external_display & IMMonitor::MD_NB) == 0);
  return NvidiaMMImplV3::ApplyExtendModeOnDisplay(external_display);
}

void NvidiaMMImplV3CrossAdapter::SetTargetOfDisplay(uint32_t imm_display,
                                                    NV_DISPLAYCONFIG_PATH_TARGET_INFO* target) {
  DCHECK(CountBits(imm_display));
  if (target == nullptr) return;
  if (IsOfIntel(imm_display)) target->targetId = GetDisplayTargetId(ccd.get(), imm_display);
  if (IsOfNvidia(imm_display)) target->displayId = DisplayIdOfDisplay(imm_display);
}

void NvidiaMMImplV3CrossAdapter::SetPathAdapter(uint32_t imm_display,
                                                NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  DCHECK(CountBits(imm_display));
  if (path_info == nullptr) return;
  if (IsOfNvidia(imm_display)) path_info->IsNonNVIDIAAdapter = 0;
  if (!IsOfIntel(imm_display)) return;
  path_info->IsNonNVIDIAAdapter = 1;
  // Deliberate: only the panel's adapter is looked up; that of the analogue output stays zero.
  GetNotebookAdapterId(ccd.get(), imm_display, MakeAdapterId(path_info));
}

void NvidiaMMImplV3CrossAdapter::FillSourceModes(uint32_t mode, uint32_t primary,
                                                 uint32_t secondary,
                                                 NV_DISPLAYCONFIG_PATH_INFO* path_info) {
  FillNativeSourceModes(mode, primary, secondary, path_info,
                        [this](uint32_t imm_display, uint32_t* width, uint32_t* height) {
                          return NativeSizeAcrossAdapters(imm_display, width, height);
                        });
}

bool NvidiaMMImplV3CrossAdapter::NativeSizeAcrossAdapters(uint32_t imm_display, uint32_t* width,
                                                          uint32_t* height) {
  if (IsOfNvidia(imm_display)) return NativeSizeByThisDriver(imm_display, width, height);
  if (!IsOfIntel(imm_display)) return false;
  PhysicalMonitorByDisplayLibrary* const monitor = NewIntelMonitor();
  if (monitor == nullptr) return false;
  const CountedReference<PhysicalMonitorByDisplayLibrary> pm(monitor);
  DCHECK(pm.get() != NULL);
  return pm->GetNativeResolution(imm_display, width, height);
}
