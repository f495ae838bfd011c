// Windows' display devices (\\.\DISPLAYn) in the orders that the back-ends need. A mirroring driver
// is never a display device. Nothing is kept: every call asks Windows.
#pragma once

#include "Common/Win.h"

#include <cstdint>
#include <string>
#include <vector>

/// Reads entry `index` of Windows' list of display devices, record cleared first.
/// @return false behind the end of the list
bool ReadDisplayDevice(DWORD index, DISPLAY_DEVICEA* device);

constexpr bool IsMirroring(DWORD state_flags) {
  return (state_flags & DISPLAY_DEVICE_MIRRORING_DRIVER) != 0;
}
constexpr bool IsAttached(DWORD state_flags) {
  return (state_flags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) != 0;
}

/// The devices from the first one that is attached to the desktop on, attached or not, in Windows'
/// order. Devices in front of it are left out. Empty when none is attached.
void GetAttachedDevices(std::vector<std::string>* attached_devices);

/// Every device, in Windows' order.
void GetDisplayDeviceNames(std::vector<std::wstring>* device_names);

/// Intel's devices from the first attached one on, attached or not. Empty when none is attached.
void GetIntelAttachedDevices(std::vector<std::wstring>* attached_devices);

/// The devices whose lower-cased device id matches a wildcard, in Windows' order.
/// @param vendor_id_string  "*10de*", for one; null gives no devices
void GetDeviceNamesByVendor(const char* vendor_id_string, std::vector<std::wstring>* device_names);

/// How many devices there are.
uint32_t GetDisplayDeviceCount();

/// Stores settings for one device in the registry, having asked whether it would take them.
/// @param device       \\.\DISPLAYn
/// @param dm           what its dmFields names
/// @param reset        apply at once, even if nothing differs; otherwise at the next commit
/// @param set_primary  make it the primary device
/// @param status       out, may be null; DISP_CHANGE_* of the last call made
/// @return true when the device took them
bool ChangeDisplaySettingsTestAndApply(const char* device, DEVMODEA* dm, bool reset,
                                       bool set_primary, int32_t* status);
