#include "Common/MultiMonitor/Intel/IntelHdmiWorkaround.h"

#include "Common/Config.h"
#include "Common/MultiMonitor/DisplayNumbers.h"
#include "Common/MultiMonitor/Intel/IntelHardwareId.h"
#include "Common/MultiMonitor/MMObjectFactoryDevices.h"
#include "Common/MultiMonitor/MonitorIdentity.h"
#include "Common/Win.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr char kSection[] = "Single External";
constexpr uint32_t kUsualProblemDevice = 10818;
constexpr const char* kUsualProblemMonitors[] = {"Veld TV4810", "BenQ 241W Z"};
constexpr uint32_t kMonitorNameRoom = 256;

constexpr uint16_t kNotRead = 0xFFFF;
uint16_t g_vendorId = kNotRead;
uint16_t g_deviceId = kNotRead;

struct Key {
  BYTE virtual_key;
  BYTE scan_code;
  DWORD flags;
};
constexpr Key kHdmiHotkey[] = {
    {VK_LCONTROL, 29, 0},
    {VK_LMENU, 56, 0},
    {VK_F4, 62, 0},
    {VK_F4, 62, KEYEVENTF_KEYUP},
    {VK_LMENU, 56, KEYEVENTF_KEYUP},
    {VK_LCONTROL, 29, KEYEVENTF_KEYUP},
};
static_assert(VK_LCONTROL == 162 && VK_LMENU == 164 && VK_F4 == 115, "keys by number");

/// Reads a number out of the hardware id of the first display device present.
/// @return 0 when that cannot be read
uint16_t ReadFromFirstAdapter(uint16_t (*read)(const char* hardware_id)) {
  DisplayAdapterDevices devices;
  if (!devices.Select(0)) return 0;
  const char* const hardware_id = devices.HardwareId();
  return hardware_id != nullptr ? read(hardware_id) : uint16_t{0};
}

uint16_t FirstAdapterVendor() {
  if (g_vendorId == kNotRead) g_vendorId = ReadFromFirstAdapter(VendorFromHardwareId);
  return g_vendorId;
}

uint16_t FirstAdapterDevice() {
  if (g_deviceId == kNotRead) {
    g_deviceId = ReadFromFirstAdapter(
        [](const char* hardware_id) { return DeviceFromHardwareId(hardware_id); });
  }
  return g_deviceId;
}

std::string NumberedKey(const char* name, uint32_t number) { return name + std::to_string(number); }

// Deliberate: a first number of 0 counts as no key at all.
const std::vector<uint32_t>& ProblemDevices() {
  static std::vector<uint32_t> devices;
  if (!devices.empty()) return devices;
  for (uint32_t i = 1;; ++i) {
    const uint32_t device = GetPrivateProfileIntA(
        kSection, NumberedKey("Display Device ID ", i).c_str(), 0, GetConfigPathNarrow().c_str());
    if (device == 0) break;
    devices.push_back(device);
  }
  if (devices.empty()) devices.push_back(kUsualProblemDevice);
  return devices;
}

// Deliberate: one key is enough to have neither of the usual names in the list.
const std::vector<std::string>& ProblemMonitors() {
  static std::vector<std::string> monitors;
  if (!monitors.empty()) return monitors;
  for (uint32_t i = 1;; ++i) {
    std::string monitor =
        ReadConfigText(kSection, NumberedKey("HDMI Monitor ", i).c_str(), kMonitorNameRoom);
    if (monitor.empty()) break;
    monitors.push_back(std::move(monitor));
  }
  if (monitors.empty()) {
    monitors.assign(std::begin(kUsualProblemMonitors), std::end(kUsualProblemMonitors));
  }
  return monitors;
}

bool IsProblemDevice() {
  if (FirstAdapterVendor() != kVendorIntel) return false;
  if (AlwaysAssumeDeviceHasProblem() != 0) return true;
  const std::vector<uint32_t>& devices = ProblemDevices();
  return std::find(devices.begin(), devices.end(), FirstAdapterDevice()) != devices.end();
}

bool IsProblemMonitorConnected() {
  if (AlwaysAssumeMonitorHasProblem() != 0) return true;
  std::set<std::string> names;
  ListMonitorNamesFromRegistry(&names);
  if (names.empty()) return false;
  const std::vector<std::string>& monitors = ProblemMonitors();
  return std::any_of(monitors.begin(), monitors.end(),
                     [&names](const std::string& monitor) { return names.count(monitor) != 0; });
}

void PressIntelHdmiHotkey() {
  for (const Key& key : kHdmiHotkey) keybd_event(key.virtual_key, key.scan_code, key.flags, 0);
}

}  // namespace

bool UseHdmiHotkeyWorkaround() {
  return IntelHDMIWorkaround() != 0 && IsProblemDevice() && IsProblemMonitorConnected();
}

void PressIntelHdmiHotkeyOnDesktop() {
  const HWND foreground = GetForegroundWindow();
  SetForegroundWindow(GetDesktopWindow());
  PressIntelHdmiHotkey();
  SetForegroundWindow(foreground);
}
