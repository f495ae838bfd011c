// Extended desktop on and off. It goes off through Windows alone: settings are stored device by
// device under CDS_NORESET, and one commit at the end puts them all into effect.
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"

namespace {

constexpr DWORD kStore = CDS_NORESET | CDS_GLOBAL | CDS_UPDATEREGISTRY;
static_assert(kStore == 0x10000009 && (kStore | CDS_SET_PRIMARY) == 0x10000019,
              "no reset, global, update registry; set primary");

void StoreIfTaken(const char* device, DWORD flags, DEVMODEA* dm) {
  if (ChangeDisplaySettingsExA(device, dm, nullptr, CDS_TEST, nullptr) != DISP_CHANGE_SUCCESSFUL) {
    return;
  }
  ChangeDisplaySettingsExA(device, dm, nullptr, flags, nullptr);
}

BOOL DisableExtendMode() {
  DISPLAY_DEVICEA device = {};
  for (DWORD i = 0; ReadDisplayDevice(i, &device); ++i) {
    if (!IsAttached(device.StateFlags)) continue;
    DEVMODEA dm = {};
    // A failed read is logged there; the record goes on as it stands.
    ReadDisplaySettings(ENUM_CURRENT_SETTINGS, device.DeviceName, &dm);
    if ((device.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE) != 0) {
      StoreIfTaken(device.DeviceName, kStore | CDS_SET_PRIMARY, &dm);
      continue;
    }
    // No size is how Windows is told to detach a device.
    dm.dmPelsWidth = 0;
    dm.dmPelsHeight = 0;
    dm.dmPosition = {};
    StoreIfTaken(device.DeviceName, kStore, &dm);
  }
  const LONG status = ChangeDisplaySettingsExA(nullptr, nullptr, nullptr, 0, nullptr);
  return status == DISP_CHANGE_SUCCESSFUL ? TRUE : FALSE;
}

}  // namespace

BOOL NvidiaMMImplV2::EnableExtendModeOnDisplays(BOOL enable, uint32_t displays) {
  return enable != 0 ? ApplyExtendModeOnDisplay(displays) : DisableExtendMode();
}

BOOL NvidiaMMImplV2::EnableExtendMode(BOOL enable) {
  const BOOL capable = HasDualOutputCapability();
  if (capable == 0) return capable;
  return enable != 0 ? ApplyExtendMode() : DisableExtendMode();
}
