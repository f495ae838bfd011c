// Single and clone, and the ways to an extended desktop.
#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/AtiMMImpl.h"
#include "Common/MultiMonitor/Amd/AtiMMImplDisplays.h"
#include "Common/MultiMonitor/DisplayDevices.h"

#include <exception>

namespace {

constexpr uint32_t kPanels = 1;  // a kind of ATIDL_GetDisplayVector

// With three display devices and more, Windows' second one need not be the adapter's second one, so
// that the library's own ways come first.
constexpr uint32_t kManyDevices = 3;

AtiConfigRecord MakeSingle(uint32_t display_vector) {
  AtiConfigRecord record = MakeAtiConfigRecord();
  record.arrangement = kAtiSingle;
  record.vector_count = 1;
  record.vectors[0] = display_vector;
  return record;
}

AtiConfigRecord MakePair(AtiArrangement arrangement, uint32_t first, uint32_t second) {
  AtiConfigRecord record = MakeAtiConfigRecord();
  record.arrangement = arrangement;
  record.vector_count = 2;
  record.vectors[0] = first;
  record.vectors[1] = second;
  return record;
}

// The second device gets a desktop of this size to the right of the first one's.
void PlaceSecond(uint32_t adapter, uint32_t target_type, AtiAdapterConfig* config) {
  config->set = 1;
  AtiAdapterEntry& first = config->entries[0];
  first.adapter = adapter;
  first.slot_count = 1;
  AtiAdapterEntry& second = config->entries[1];
  second.size = sizeof(second);
  second.adapter = adapter + 1;
  second.slot_count = 1;
  second.slots[0].display = target_type;
  second.x = first.width;
  second.width = 1024;
  second.height = 768;
  second.bits_per_pixel = 32;
  second.frequency = 60;
}

// Device lists and the configuration file take memory: an operation that gets none has failed.
template <typename Operation>
BOOL WithoutThrowing(Operation operation) {
  try {
    return operation();
  } catch (const std::exception&) {
    return FALSE;
  }
}

}  // namespace

bool AtiMMImpl::SetConfiguration(AtiConfigRecord record) {
  return m_pLib->SetConfigurationEx != nullptr &&
         m_pLib->SetConfigurationEx(GetAtiAdapterIndex(m_pLib.get()), &record) == 0;
}

// Deliberate: before any connected-display report the vectors sent are zero.
BOOL AtiMMImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  if (m_pLib->SetConfigurationEx == nullptr) return FALSE;
  AtiConfigRecord record;
  if (mode == DM_SINGLE) {
    record = MakeSingle(VectorOfDisplay(displays));
  } else if (mode == DM_CLONE) {
    record = MakePair(kAtiClone, VectorOfDisplay(MD_NB), VectorOfDisplay(displays & ~MD_NB));
  } else {
    DCHECK(0 && "Selected display mode is not supported!!!");
    return FALSE;
  }
  if (!SetConfiguration(record)) return FALSE;
  uint32_t mode_now = 0;
  uint32_t displays_now = 0;
  if (GetCurrentDisplayMode(&mode_now, &displays_now) == 0) return FALSE;
  if (mode_now == mode) return TRUE;
  // Deliberate: the mode is not looked at again.
  return SetConfiguration(record) ? TRUE : FALSE;
}

// --- Extended desktop.

void AtiMMImpl::ExtendByLibrary(BOOL enable) {
  if (m_pLib->EnableExtendedDesktop == nullptr) return;
  m_pLib->EnableExtendedDesktop(GetAtiAdapterIndex(m_pLib.get()) + 1, enable != 0 ? 1 : 0);
}

bool AtiMMImpl::ExtendByAdapterConfig() {
  if (m_pLib->SetAdapterConfig == nullptr || m_pLib->GetDisplayVector == nullptr ||
      m_pLib->GetAdapterConfig == nullptr) {
    return false;
  }
  AtiAdapterConfig config = MakeAtiAdapterConfig();
  const uint32_t adapter = GetAtiAdapterIndex(m_pLib.get());
  config.entries[0].adapter = adapter;
  config.entries[1].adapter = adapter + 1;
  if (m_pLib->GetAdapterConfig(&config) != 0) return false;

  const uint32_t adapter_now = GetAtiAdapterIndex(m_pLib.get());
  const uint32_t target_type = ReadAtiTargetType(m_pLib.get());
  PlaceSecond(adapter_now, target_type, &config);
  if (m_pLib->SetAdapterConfig(&config) == 0) return true;
  config.last = 0;
  config.entries[1].width = 800;
  config.entries[1].height = 600;
  return m_pLib->SetAdapterConfig(&config) == 0;
}

BOOL AtiMMImpl::EnableExtendMode(BOOL enable) {
  const BOOL has_dual_output = HasDualOutputCapability();
  if (has_dual_output == 0) return has_dual_output;
  return WithoutThrowing(
      [this, enable] { return enable != 0 ? EnterExtendMode() : LeaveExtendMode(); });
}

BOOL AtiMMImpl::EnterExtendMode() {
  if (IsExtendModeEnabled() != 0) return TRUE;
  const bool library_first =
      AlwaysUseWindowsAPIToControlExtendMode() == 0 && GetDisplayDeviceCount() >= kManyDevices;
  // The desktop is asked, not the library's result.
  if (library_first) ExtendByAdapterConfig();
  if (!library_first || IsExtendModeEnabled() == 0) MultiMonitor::EnableExtendMode(TRUE);
  if (IsExtendModeEnabled() == 0) ExtendByLibrary(TRUE);
  return IsExtendModeEnabled();
}

BOOL AtiMMImpl::LeaveExtendMode() {
  if (IsExtendModeEnabled() == 0) return TRUE;
  if (GetDisplayDeviceCount() >= kManyDevices) {
    if (m_pLib->GetDisplayVector == nullptr || m_pLib->SetConfigurationEx == nullptr) return FALSE;
    const uint32_t panels = m_pLib->GetDisplayVector(GetAtiAdapterIndex(m_pLib.get()), kPanels);
    return SetConfiguration(MakeSingle(panels)) ? TRUE : FALSE;
  }
  MultiMonitor::EnableExtendMode(FALSE);
  if (IsExtendModeEnabled() != 0) ExtendByLibrary(FALSE);
  return IsExtendModeEnabled() == 0 ? TRUE : FALSE;
}

// Deliberate: the result is whether the desktop is extended, so that turning it off with success
// reports failure.
BOOL AtiMMImpl::EnableExtendModeOnDisplays(BOOL enable, uint32_t dwExternalDisplay) {
  const BOOL has_dual_output = HasDualOutputCapability();
  if (has_dual_output == 0) return has_dual_output;
  if (enable == 0) {
    SetNewDisplayMode(DM_SINGLE, MD_NB);
    return IsExtendModeEnabled();
  }
  return WithoutThrowing([this, dwExternalDisplay] { return ExtendOn(dwExternalDisplay); });
}

BOOL AtiMMImpl::ExtendOn(uint32_t dwExternalDisplay) {
  DCHECK(m_pLib->SetConfigurationEx != NULL) << "SetConfigurationEx() is not load.";
  if (m_pLib->SetConfigurationEx != nullptr) {
    constexpr uint32_t kFirstDisplay = 1;
    DCHECK(CountBits(dwExternalDisplay) == 1) << "dwExtendDisplay is not One monitor";
    // Deliberate: nothing is sent for the panel alone.
    if (dwExternalDisplay != MD_NB) {
      SetConfiguration(MakePair(kAtiExtended, kFirstDisplay, VectorOfDisplay(dwExternalDisplay)));
    }
  }
  if (IsExtendModeEnabled() == 0) MultiMonitor::EnableExtendMode(TRUE);
  if (IsExtendModeEnabled() == 0) ExtendByLibrary(TRUE);
  return IsExtendModeEnabled();
}
