// Which object switches to a mode, and what goes before it.
#include "Common/MultiMonitor/Hybrid/HybridController.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3CrossAdapter.h"

BOOL HybridController::ApplyCrossAdapterClone(uint32_t displays) {
  auto* const nvidia = dynamic_cast<NvidiaMMImplV3CrossAdapter*>(m_nvidia.get());
  return nvidia != nullptr ? nvidia->ApplyCrossAdapterClone(displays) : FALSE;
}

BOOL HybridController::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  if (mode == DM_CLONE && (displays & (MD_HDMI | MD_DP)) != 0) {
    return Nvidia().SetNewDisplayMode(DM_CLONE, displays);
  }
  uint32_t connected = 0;
  uint32_t connected_count = 0;
  GetConnectedDisplays(&connected, &connected_count);
  if (mode == DM_ADVANCED_P1) {
    // Deliberate: both passes, neither result looked at, and success whatever came of them. The
    // first one brings the devices into their places; sizes go in only when all are there.
    ApplyExtendAcrossAdapters(connected, displays);
    ApplyExtendAcrossAdaptersWithSize(connected, displays);
    return TRUE;
  }
  if (mode == DM_ADVANCED_P2) {
    // Deliberate: twice in a row; the second result counts.
    ApplyCloneAcrossAdapters(connected, displays);
    return ApplyCloneAcrossAdapters(connected, displays);
  }
  return SetOrdinaryMode(mode, displays);
}

// Deliberate: NVIDIA's clone groups go first, whatever the mode, and only then is it asked which
// mode stands, so that a clone that was a group alone counts as left.
BOOL HybridController::SetOrdinaryMode(uint32_t mode, uint32_t displays) {
  ApplyCrossAdapterClone(0);
  LeaveClone(mode, displays);
  return Ccd().SetNewDisplayMode(mode, displays);
}

// Deliberate: from a clone the way leads over extended desktop, but for a clone on CRT that takes
// the place of one on HDMI.
void HybridController::LeaveClone(uint32_t mode, uint32_t displays) {
  uint32_t current_mode = 0;
  uint32_t current_displays = 0;
  GetCurrentDisplayMode(&current_mode, &current_displays);
  if (current_mode != DM_CLONE) return;
  if ((current_displays & MD_HDMI) != 0) {
    ApplyCrossAdapterClone(0);
    if (mode == DM_CLONE && (displays & MD_CRT) != 0) return;
  }
  Ccd().EnableExtendMode(TRUE);
}

// Deliberate: the panel stands alone first, also when extended desktop is turned off.
BOOL HybridController::EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) {
  Ccd().SetNewDisplayMode(DM_SINGLE, MD_NB);
  if (Intel().EnableExtendModeOnDisplays(enable, displays) != 0) return TRUE;
  if (Nvidia().EnableExtendModeOnDisplays(enable, displays) != 0) return TRUE;
  return Ccd().EnableExtendMode(enable) != 0 ? TRUE : FALSE;
}

BOOL HybridController::EnableExtendMode(BOOL enable) { return Ccd().EnableExtendMode(enable); }

BOOL HybridController::ChangeToNBOnlySingleDisplayMode() {
  return Ccd().SetNewDisplayMode(DM_SINGLE, MD_NB);
}
