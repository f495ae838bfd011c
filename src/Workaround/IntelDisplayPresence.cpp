#include "Workaround/IntelDisplayPresence.h"

#include <string>
#include <string_view>

#include "Common/Logging.h"
#include "Common/Text.h"
#include "Common/Wildcard.h"
#include "Common/Win.h"

// After windows.h.
#include <setupapi.h>

namespace {

constexpr GUID kDisplayClass = {
    0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
constexpr char kIntelHardwareId[] = "*ven_8086*";
constexpr size_t kHardwareIdSize = 512;  // bytes; a list that does not fit counts as unreadable

// An old setupapi.dll without the property call is not worth asking.
// Deliberate: what is found here is never called; the call below is linked.
bool HasPropertyCall() {
  const HMODULE setup_api = GetModuleHandleW(L"setupapi.dll");
  const FARPROC pfnpSetupDiGetDevicePropertyW =
      setup_api == nullptr ? nullptr
                           : GetProcAddress(setup_api, "SetupDiGetDeviceRegistryPropertyW");
  DCHECK(pfnpSetupDiGetDevicePropertyW != NULL);
  return pfnpSetupDiGetDevicePropertyW != nullptr;
}

bool IsIntelDevice(HDEVINFO di, SP_DEVINFO_DATA* device) {
  // One character more than the call may fill, so that the first text always ends.
  wchar_t ids[kHardwareIdSize / sizeof(wchar_t) + 1] = {};
  if (SetupDiGetDeviceRegistryPropertyW(di, device, SPDRP_HARDWAREID, nullptr,
                                        reinterpret_cast<BYTE*>(ids), kHardwareIdSize,
                                        nullptr) == 0) {
    return false;
  }
  // Vendor digits stand in capitals in a PCI device id, and in small letters in the pattern.
  return MatchPattern(ToLowerAscii(std::string_view(NarrowFromWide(ids))), kIntelHardwareId);
}

}  // namespace

bool IsIntelDisplayPresent() {
  if (!HasPropertyCall()) return false;
  const HDEVINFO di = SetupDiGetClassDevsW(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT);
  DCHECK(di != INVALID_HANDLE_VALUE);
  if (di == INVALID_HANDLE_VALUE) {
    LOG_SYSTEM_ERROR(ERROR, GetLastError()) << "SetupDiGetClassDevsW() failed";
    return false;
  }
  SP_DEVINFO_DATA device = {};
  device.cbSize = sizeof(device);
  for (DWORD i = 0; SetupDiEnumDeviceInfo(di, i, &device) != 0; ++i) {
    // Deliberate: on a match the device list is left undestroyed.
    if (IsIntelDevice(di, &device)) return true;
  }
  SetupDiDestroyDeviceInfoList(di);
  return false;
}
