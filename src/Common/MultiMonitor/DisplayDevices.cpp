#include "Common/MultiMonitor/DisplayDevices.h"

#include "Common/Logging.h"
#include "Common/Text.h"
#include "Common/Wildcard.h"

namespace {

bool ReadDisplayDeviceWide(DWORD index, DISPLAY_DEVICEW* device) {
  *device = {};
  device->cb = sizeof(*device);
  return EnumDisplayDevicesW(nullptr, index, device, 0) != 0;
}

// Vendor digits stand in capitals in a PCI device id, and in small letters in the wildcards.
bool MatchesVendor(const DISPLAY_DEVICEW& device, const char* vendor_id_string) {
  const std::wstring device_id = ToLowerAscii(std::wstring_view(device.DeviceID));
  return MatchPattern(NarrowFromWide(device_id), vendor_id_string);
}

}  // namespace

bool ReadDisplayDevice(DWORD index, DISPLAY_DEVICEA* device) {
  *device = {};
  device->cb = sizeof(*device);
  return EnumDisplayDevicesA(nullptr, index, device, 0) != 0;
}

// Deliberate: behind the first attached device the unattached ones stay in the list, and in front
// of it they are dropped, so that the one to extend to is found only if it comes later.
void GetAttachedDevices(std::vector<std::string>* attached_devices) {
  attached_devices->clear();
  DISPLAY_DEVICEA device = {};
  for (DWORD i = 0; ReadDisplayDevice(i, &device); ++i) {
    if (IsMirroring(device.StateFlags)) continue;
    if (attached_devices->empty() && !IsAttached(device.StateFlags)) continue;
    attached_devices->push_back(device.DeviceName);
  }
}

void GetDisplayDeviceNames(std::vector<std::wstring>* device_names) {
  device_names->clear();
  DISPLAY_DEVICEW device = {};
  for (DWORD i = 0; ReadDisplayDeviceWide(i, &device); ++i) {
    if (!IsMirroring(device.StateFlags)) device_names->push_back(device.DeviceName);
  }
}

void GetIntelAttachedDevices(std::vector<std::wstring>* attached_devices) {
  attached_devices->clear();
  DISPLAY_DEVICEW device = {};
  for (DWORD i = 0; ReadDisplayDeviceWide(i, &device); ++i) {
    if (IsMirroring(device.StateFlags) || !MatchesVendor(device, "*8086*")) continue;
    if (attached_devices->empty() && !IsAttached(device.StateFlags)) continue;
    attached_devices->push_back(device.DeviceName);
  }
}

void GetDeviceNamesByVendor(const char* vendor_id_string, std::vector<std::wstring>* device_names) {
  DCHECK(vendor_id_string != NULL);
  device_names->clear();
  if (vendor_id_string == nullptr) return;
  DISPLAY_DEVICEW device = {};
  for (DWORD i = 0; ReadDisplayDeviceWide(i, &device); ++i) {
    if (IsMirroring(device.StateFlags) || !MatchesVendor(device, vendor_id_string)) continue;
    device_names->push_back(device.DeviceName);
  }
}

uint32_t GetDisplayDeviceCount() {
  uint32_t count = 0;
  DISPLAY_DEVICEA device = {};
  for (DWORD i = 0; ReadDisplayDevice(i, &device); ++i) {
    if (!IsMirroring(device.StateFlags)) ++count;
  }
  return count;
}

bool ChangeDisplaySettingsTestAndApply(const char* device, DEVMODEA* dm, bool reset,
                                       bool set_primary, int32_t* status) {
  LONG result = ChangeDisplaySettingsExA(device, dm, nullptr, CDS_TEST, nullptr);
  if (result == DISP_CHANGE_SUCCESSFUL) {
    const DWORD flags = (reset ? CDS_RESET : CDS_NORESET) | (set_primary ? CDS_SET_PRIMARY : 0u) |
                        CDS_GLOBAL | CDS_UPDATEREGISTRY;
    result = ChangeDisplaySettingsExA(device, dm, nullptr, flags, nullptr);
  }
  if (status != nullptr) *status = result;
  return result == DISP_CHANGE_SUCCESSFUL;
}
