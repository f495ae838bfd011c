// Extended desktop on and off through ChangeDisplaySettingsEx. Settings are stored device by device
// under CDS_NORESET, and one commit at the end puts them all into effect.
#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/MultiMonitor.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr DWORD kSizeFields = DM_POSITION | DM_PELSWIDTH | DM_PELSHEIGHT;
constexpr DWORD kModeFields = kSizeFields | DM_BITSPERPEL | DM_DISPLAYFREQUENCY;
constexpr DWORD kEnumeratedFields = kModeFields;
static_assert(kSizeFields == 0x180020, "position, width, height");
static_assert(kModeFields == 0x5C0020, "position, width, height, depth, frequency");

LONG Test(const std::string& device, DEVMODEA* dm) {
  return ChangeDisplaySettingsExA(device.c_str(), dm, nullptr, CDS_TEST, nullptr);
}

LONG Store(const std::string& device, DEVMODEA* dm, DWORD more_flags) {
  return ChangeDisplaySettingsExA(device.c_str(), dm, nullptr,
                                  CDS_NORESET | CDS_GLOBAL | CDS_UPDATEREGISTRY | more_flags,
                                  nullptr);
}

// What the device shows now; a detached one has only what it showed last, or nothing.
void ReadSecondary(const std::string& device, const DEVMODEA& dm_primary, DEVMODEA* dm) {
  if (ReadDisplaySettings(ENUM_CURRENT_SETTINGS, device.c_str(), dm) != 0) return;
  if (ReadDisplaySettings(ENUM_REGISTRY_SETTINGS, device.c_str(), dm) != 0) return;
  *dm = dm_primary;
}

// Takes the deepest colour that the device has at the record's size.
void PickDepth(const std::string& device, DEVMODEA* dm) {
  std::vector<DWORD> depths;
  DEVMODEA mode = {};
  mode.dmSize = sizeof(mode);
  for (DWORD i = 0;; ++i) {
    mode.dmFields = kEnumeratedFields;
    if (EnumDisplaySettingsA(device.c_str(), i, &mode) == 0) break;
    if (mode.dmPelsWidth != dm->dmPelsWidth || mode.dmPelsHeight != dm->dmPelsHeight) continue;
    depths.push_back(mode.dmBitsPerPel);
  }
  if (depths.empty()) return;
  dm->dmBitsPerPel = *std::max_element(depths.begin(), depths.end());
  // Deliberate: not the frequency of the mode found.
  dm->dmDisplayFrequency = 60;
}

// The configured size with its depth, or 800 by 600 where the device refuses that.
void ChooseSecondaryMode(const std::string& device, DEVMODEA* dm) {
  dm->dmFields = kModeFields;
  const uint32_t width = ReadConfigInt(L"ExtendMode:2nd", L"Width", 1024);
  const uint32_t height = ReadConfigInt(L"ExtendMode:2nd", L"Height", 768);
  if (width != 0) dm->dmPelsWidth = width;
  if (height != 0) dm->dmPelsHeight = height;
  PickDepth(device, dm);
  if (Test(device, dm) == DISP_CHANGE_SUCCESSFUL) return;
  // Deliberate: not tested here, and with the depth that was picked for the refused size.
  dm->dmPelsWidth = 800;
  dm->dmPelsHeight = 600;
}

// The record that places the secondary device to the right of the primary one, or detaches it.
void PrepareSecondary(const std::string& device, const DEVMODEA& dm_primary, BOOL enable,
                      DEVMODEA* dm) {
  ReadSecondary(device, dm_primary, dm);
  dm->dmFields = kSizeFields;
  dm->dmPosition.y = 0;
  dm->dmPosition.x = enable != 0 ? static_cast<LONG>(dm_primary.dmPelsWidth) : 0;
  if (enable != 0) {
    ChooseSecondaryMode(device, dm);
  } else {
    // No size is how Windows is told to detach a device.
    dm->dmPelsWidth = 0;
    dm->dmPelsHeight = 0;
  }
}

// Stores a mode that any device should take.
void StoreLastResort(const std::string& device, DEVMODEA* dm) {
  dm->dmPelsWidth = 1024;
  dm->dmPelsHeight = 768;
  dm->dmBitsPerPel = 16;
  dm->dmDisplayFrequency = 60;
  ChangeDisplaySettingsTestAndApply(device.c_str(), dm, false, false, nullptr);
}

// Puts what is stored into effect. Windows moves the cursor when devices come and go.
bool Commit() {
  POINT cursor = {};
  const BOOL has_cursor = GetCursorPos(&cursor);
  const LONG status = ChangeDisplaySettingsExA(nullptr, nullptr, nullptr, 0, nullptr);
  // Deliberate: put back whatever the commit said.
  if (has_cursor != 0) SetCursorPos(cursor.x, cursor.y);
  return status == DISP_CHANGE_SUCCESSFUL;
}

}  // namespace

BOOL MultiMonitor::EnableExtendMode(BOOL enable) {
  PreloadDisplayModes();
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  DCHECK(attached_devices.size() >= 2 && "There should at least two display attached to system");
  if (attached_devices.size() < 2) return FALSE;
  const std::string& primary = attached_devices[0];
  const std::string& secondary = attached_devices[1];

  DEVMODEA dm_primary = {};
  if (ReadDisplaySettings(ENUM_CURRENT_SETTINGS, primary.c_str(), &dm_primary) == 0) return FALSE;
  if (Test(primary, &dm_primary) != DISP_CHANGE_SUCCESSFUL) return FALSE;
  if (Store(primary, &dm_primary, CDS_SET_PRIMARY) != DISP_CHANGE_SUCCESSFUL) return FALSE;

  DEVMODEA dm_secondary = {};
  PrepareSecondary(secondary, dm_primary, enable, &dm_secondary);
  LONG status = Test(secondary, &dm_secondary);
  if (status == DISP_CHANGE_SUCCESSFUL) status = Store(secondary, &dm_secondary, 0);
  if (status == DISP_CHANGE_SUCCESSFUL) {
    if (!Commit()) return FALSE;
    return IsExtendModeEnabled() == enable ? TRUE : FALSE;
  }
  // Deliberate: the mode of last resort is stored but not committed, and counts as failure even
  // when it was taken. The primary device's settings stay stored, too.
  if (status == DISP_CHANGE_BADMODE && enable != 0) StoreLastResort(secondary, &dm_secondary);
  return FALSE;
}
