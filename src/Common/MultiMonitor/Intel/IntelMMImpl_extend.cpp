// Extended desktop through the driver: one record for each display device of Windows.
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/Intel/ICUIExternal8.h"
#include "Common/MultiMonitor/Intel/IntelDeviceTypes.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"

#include <iterator>

BOOL IntelMMImpl::EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) {
  RefreshDeviceList();
  return enable != 0 ? AttachDevices(displays | MD_NB) : DetachToNotebook();
}

// Deliberate: the state and `enable` are compared as numbers. An `enable` of 2 equals no state:
// both ways are tried, and the result is 0 also where the desktop is extended.
BOOL IntelMMImpl::EnableExtendMode(BOOL enable) {
  if (IsExtendModeEnabled() == enable) return TRUE;
  MultiMonitor::EnableExtendMode(enable);
  if (IsExtendModeEnabled() != enable) {
    // Windows alone did not do it.
    RefreshDeviceList();
    if (enable != 0) {
      uint32_t displays = 0;
      uint32_t display_count = 0;
      const BOOL known = GetConnectedDisplays(&displays, &display_count);
      if (known != 0 && display_count >= 2) AttachDevices(displays);
    } else {
      DetachToNotebook();
    }
  }
  return IsExtendModeEnabled() == enable ? TRUE : FALSE;
}

BOOL IntelMMImpl::AttachDevices(uint32_t mask) {
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  if (attached_devices.size() < 2) return FALSE;
  std::vector<uint32_t> types;
  IntelTypesOfDisplays(mask, &types);
  if (types.size() < 2) return FALSE;
  // Deliberate: a third display of the mask is left out.
  CuiActiveDevices records[] = {
      CuiSingleRecord(attached_devices[0], UidOfType(types[0])),
      CuiSingleRecord(attached_devices[1], UidOfType(types[1])),
  };
  static_assert(sizeof(records) == 240, "two records in sequence");
  return ChangeActiveDevices(records, static_cast<uint32_t>(std::size(records))) ? TRUE : FALSE;
}

BOOL IntelMMImpl::DetachToNotebook() {
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  // Deliberate: the text asks for more than the condition does.
  // The check's text is what the log shows.
  // NOLINTNEXTLINE(readability-container-size-empty)
  DCHECK((attached_devices.size() > 0) && "More than two display devices is required!!!");
  if (attached_devices.empty()) return FALSE;
  std::vector<uint32_t> types;
  if (!IntelTypesOfDisplays(MD_NB, &types)) return FALSE;
  CuiActiveDevices record = CuiSingleRecord(attached_devices[0], UidOfType(types[0]));
  return ChangeActiveDevices(&record, 1) ? TRUE : FALSE;
}

bool IntelMMImpl::ChangeActiveDevices(CuiActiveDevices* records, uint32_t record_count) {
  if (m_pCUIExt == nullptr) return false;
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr = m_pCUIExt->ChangeActiveDevices(
      kCuiActiveDevicesGuid, record_count * static_cast<uint32_t>(sizeof(*records)),
      reinterpret_cast<BYTE*>(records), &err);
  if (FAILED(hr)) LOG(ERROR) << "Call to Intel ChangeActiveDevices() failed, error code = " << err;
  return SUCCEEDED(hr) && err == IGFX_SUCCESS;
}
