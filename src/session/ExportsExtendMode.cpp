// The extend-mode side's exports: queries and commands without any user interface.
#include "Common/Config.h"
#include "session/ExportCall.h"
#include "session/ExportNumbers.h"
#include "session/Lifecycle.h"

namespace {

using DisplayReport = BOOL (IMMonitor::*)(uint32_t*, uint32_t*);

/// Reads a display report of the object into zeroed outputs, after the driver has looked again.
/// @return false when there is no object or it cannot report; the outputs are then unspecified
bool ReadDisplays(DisplayReport report, uint32_t* displays, uint32_t* count) {
  IMMonitor* const object = RecheckedObject();
  if (object == nullptr) return false;
  object->DetectDisplays();
  *displays = 0;
  *count = 0;
  return (object->*report)(displays, count) != 0;
}

BOOL ExportDisplays(DisplayReport report, uint32_t* displays, uint32_t* count) {
  if (displays == nullptr || !g_extendModeReady) return 0;
  uint32_t mask = 0;
  uint32_t number = 0;
  if (!ReadDisplays(report, &mask, &number)) return 0;
  // Deliberate: the mask loses the displays that hosts do not know, the count keeps them.
  *displays = ExportedMask(mask);
  if (count != nullptr) *count = number;
  return 1;
}

/// Whether extending may start from what is shown now.
/// Deliberate: the panel among the displays of a single mode is enough.
bool StartsFromPanel(IMMonitor* object) {
  uint32_t mode = 0;
  uint32_t displays = 0;
  if (object->GetCurrentDisplayMode(&mode, &displays) == 0) return false;
  return mode == IMMonitor::DM_SINGLE && (displays & IMMonitor::MD_NB) != 0;
}

BOOL EnableExtendModeChecked(uint32_t enable) {
  if (!g_extendModeReady) return 0;
  IMMonitor* const object = RecheckedObject();
  if (object == nullptr) return 0;
  if (object->HasDualOutputCapability() == 0) return 0;
  // Deliberate: compared as numbers. 2 never matches and goes through as it is.
  if (static_cast<uint32_t>(object->IsExtendModeEnabled()) == enable) return 1;
  if (enable != 0 && AssurePrimaryDisplayIsNotebook() != 0 && !StartsFromPanel(object)) {
    // Deliberate: its result is ignored.
    object->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB);
  }
  return object->EnableExtendMode(static_cast<BOOL>(enable));
}

BOOL SetMode(uint32_t mode, uint32_t displays) {
  if (!g_extendModeReady) return 0;
  OnActiveDisplayAdapterVendorChanged();
  // Deliberate: the mask is not looked at.
  if (mode == kExportedModeExtend) return EnableExtendModeChecked(1);
  if (displays == 0) return 0;
  IMMonitor* object = GetMultiMonitorObject();
  if (object == nullptr) return 0;
  if (mode == kExportedModeSingle && object->IsExtendModeEnabled() != 0) {
    EnableExtendModeChecked(0);
    object = GetMultiMonitorObject();  // that look at the vendor may have replaced it
    if (object == nullptr) return 0;
  }
  // Deliberate: the exported number goes on untranslated, a mask that narrows to 0 is sent, and
  // success or failure gives 0.
  object->SetNewDisplayMode(mode, ExportedMask(displays));
  return 0;
}

BOOL ReadMode(uint32_t* mode, uint32_t* displays) {
  if (mode == nullptr || !g_extendModeReady) return 0;
  IMMonitor* const object = RecheckedObject();
  if (object == nullptr) return 0;
  if (object->IsExtendModeEnabled() != 0) {
    // Deliberate: 0 with a valid mode, and the displays untouched.
    *mode = kExportedModeExtend;
    return 0;
  }
  uint32_t current = 0;
  uint32_t active = 0;
  if (object->GetCurrentDisplayMode(&current, &active) == 0) return 0;
  *mode = ExportedMode(current);
  if (displays != nullptr) *displays = ExportedMask(active);
  return 1;
}

BOOL HasExternalMonitor() {
  if (!g_extendModeReady) return 0;
  if (VgaVendorCode() == kExportedVendorIntel) {
    // Deliberate: with Intel graphics an extended desktop settles it, whatever is attached.
    IMMonitor* const object = RecheckedObject();
    if (object != nullptr && object->IsExtendModeEnabled() != 0) return 1;
  }
  uint32_t displays = 0;
  uint32_t count = 0;
  return ReadDisplays(&IMMonitor::GetConnectedDisplays, &displays, &count) && count > 1 ? 1 : 0;
}

}  // namespace

OstrelBool Ostrel_InitExtendMode() {
  return ExportCall<BOOL>(0, [] { return StartExtendModeSide(); });
}

void Ostrel_DeInitExtendMode() {
  ExportCall([] { EndExtendModeSide(); });
}

OstrelBool Ostrel_GetConnectedDisplays(uint32_t* displays, uint32_t* count) {
  return ExportCall<BOOL>(
      0, [=] { return ExportDisplays(&IMMonitor::GetConnectedDisplays, displays, count); });
}

OstrelBool Ostrel_GetActiveDisplays(uint32_t* displays, uint32_t* count) {
  return ExportCall<BOOL>(
      0, [=] { return ExportDisplays(&IMMonitor::GetActiveDisplays, displays, count); });
}

OstrelBool Ostrel_GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  return ExportCall<BOOL>(0, [=] { return ReadMode(mode, displays); });
}

OstrelBool Ostrel_SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  return ExportCall<BOOL>(0, [=] { return SetMode(mode, displays); });
}

OstrelBool Ostrel_EnableExtendMode(uint32_t enable) {
  return ExportCall<BOOL>(0, [=] {
    // Deliberate: this look at the vendor happens whether the side is up or not, and twice if it
    // is.
    OnActiveDisplayAdapterVendorChanged();
    return EnableExtendModeChecked(enable);
  });
}

OstrelBool Ostrel_IsExtendModeEnabled() {
  return ExportCall<BOOL>(0, [] {
    IMMonitor* const object = g_extendModeReady ? RecheckedObject() : nullptr;
    return object != nullptr ? object->IsExtendModeEnabled() : 0;
  });
}

OstrelBool Ostrel_ChangeToNBOnlySingleDisplayMode() {
  return ExportCall<BOOL>(0, [] {
    IMMonitor* const object = g_extendModeReady ? RecheckedObject() : nullptr;
    return object != nullptr ? object->ChangeToNBOnlySingleDisplayMode() : 0;
  });
}

OstrelBool Ostrel_HasDualOutputCapability() {
  return ExportCall<BOOL>(0, [] {
    // No look at the vendor here.
    IMMonitor* const object = g_extendModeReady ? GetMultiMonitorObject() : nullptr;
    return object != nullptr ? object->HasDualOutputCapability() : 0;
  });
}

OstrelBool Ostrel_HasExternalMonitorConnected() {
  return ExportCall<BOOL>(0, [] { return HasExternalMonitor(); });
}
