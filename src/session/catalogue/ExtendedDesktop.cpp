#include "session/catalogue/ExtendedDesktop.h"

#include <exception>
#include <memory>

#include "Common/CountedReference.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/Win7CCDApi.h"
#include "Common/MultiMonitor/win7_ccd_helper.h"
#include "Common/Text.h"
#include "Common/win_util.h"
#include "session/catalogue/ResolutionPolicy.h"

namespace {

constexpr DWORD kPlacedFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY |
                                DM_DISPLAYORIENTATION | DM_POSITION;

constexpr DWORD kTestFlags = CDS_UPDATEREGISTRY | CDS_TEST | CDS_GLOBAL;
constexpr DWORD kStageFlags = CDS_NORESET | CDS_UPDATEREGISTRY | CDS_GLOBAL;

/// @return one MD_* bit; 0 when the mask holds none of them
// Deliberate: further ones are not treated; they stay as the driver left them.
uint32_t FirstExternalDisplay(uint32_t displays) {
  for (const uint32_t bit : kRememberedExternals) {
    if ((displays & bit) != 0) return bit;
  }
  return 0;
}

/// Which device shows which display.
class DesktopDevices {
 public:
  /// @return false when there is no extended desktop
  bool Find() {
    ListDesktopDevices(&names_);
    if (names_.size() < 2) return false;
    if (win_util::GetWinVersion() < win_util::WINVERSION_WIN7) return true;
    api_.Load("User32.dll");
    IMMonitor* const object = GetMultiMonitorObject();
    // Deliberate: NVIDIA's devices are found by connector; all others are taken in Windows' order,
    // the panel first.
    by_target_ = object != nullptr && object->GetVgaVendor() == kVendorNvidia;
    return true;
  }

  /// @param name  out; stays as it was when the display is not found
  void GetName(uint32_t bit, std::string* name) {
    if (by_target_) {
      GetDeviceNameOfDisplay(&api_, bit, name);
    } else {
      *name = names_[bit == IMMonitor::MD_NB ? 0 : 1];
    }
  }

 private:
  std::vector<std::string> names_;
  Win7CCDApi api_;
  bool by_target_ = false;
};

/// Takes up everything that is stored. @return Windows' answer
LONG CommitStagedSettings() {
  return ChangeDisplaySettingsExA(nullptr, nullptr, nullptr, 0, nullptr);
}

bool ChangeStep(const char* device, DEVMODEA* dm, DWORD flags) {
  const LONG result = ChangeDisplaySettingsExA(device, dm, nullptr, flags, nullptr);
  if (result == DISP_CHANGE_SUCCESSFUL) return true;
  // Deliberate: with parentheses here, without them at the commit.
  LOG(ERROR) << "Call ChangeDisplaySettingsExA() failed, rv = " << result;
  return false;
}

/// A value of 0 says nothing about the depth or the frequency: the device's own stays.
void SetRemembered(const RememberedDisplay& remembered, DEVMODEA* dm) {
  dm->dmPelsWidth = remembered.width;
  dm->dmPelsHeight = remembered.height;
  if (remembered.bits != 0) dm->dmBitsPerPel = remembered.bits;
  if (remembered.frequency != 0) dm->dmDisplayFrequency = remembered.frequency;
}

/// The panel becomes primary display at its native size first, and then gets what is remembered.
bool StageRememberedPanel(DesktopDevices* devices, const SettingsKey& key) {
  RememberedDisplay remembered;
  if (!ReadRememberedDisplay(key.section, IMMonitor::MD_NB, &remembered)) return false;
  std::string name;
  devices->GetName(IMMonitor::MD_NB, &name);
  if (!StageNativeResolution(IMMonitor::MD_NB, name, true, nullptr, nullptr)) return false;
  DEVMODEA dm = {};
  if (!ReadCurrentSettings(name.c_str(), kPlacedFields, &dm)) return false;
  SetRemembered(remembered, &dm);
  // The driver may have handed the panel to another device by now.
  devices->GetName(IMMonitor::MD_NB, &name);
  return StageDisplaySettings(name.c_str(), &dm, true);
}

bool RestoreExtendedDesktop(DesktopDevices* devices, uint32_t displays, const SettingsKey& key) {
  if ((displays & IMMonitor::MD_NB) != 0 && !StageRememberedPanel(devices, key)) return false;
  const uint32_t bit = FirstExternalDisplay(displays);
  if (bit != 0) {
    std::string name;
    devices->GetName(bit, &name);
    // Deliberate: what is stored for the panel is taken up also without the second display.
    StageRememberedDisplay(name, bit, key);
  }
  const LONG result = CommitStagedSettings();
  if (result == DISP_CHANGE_SUCCESSFUL) return true;
  LOG(ERROR) << "Call ChangeDisplaySettingsExA failed, rv = " << result;
  return false;
}

// Deliberate: the panel is placed whether or not it is among the displays.
void PlaceNativeSizes(DesktopDevices* devices, uint32_t displays) {
  std::string name;
  devices->GetName(IMMonitor::MD_NB, &name);
  DEVMODEA dm = {};
  if (!StageNativeResolution(IMMonitor::MD_NB, name, true, nullptr, &dm)) return;
  const uint32_t bit = FirstExternalDisplay(displays);
  if (bit != 0) {
    std::string second;
    devices->GetName(bit, &second);
    dm.dmPosition.x += static_cast<LONG>(dm.dmPelsWidth);
    StageNativeResolution(bit, second, false, &dm, &dm);
  }
  const LONG result = CommitStagedSettings();
  if (result == DISP_CHANGE_SUCCESSFUL) return;
  LOG(ERROR) << "Calling ChangeDisplaySettingsExA() failed: " << result;
}

}  // namespace

void ListDesktopDevices(std::vector<std::string>* names) {
  names->clear();
  DISPLAY_DEVICEA device = {};
  for (DWORD index = 0; ReadDisplayDevice(index, &device); ++index) {
    if (!IsAttached(device.StateFlags) || IsMirroring(device.StateFlags)) continue;
    names->push_back(device.DeviceName);
  }
}

void GetDeviceNameOfDisplay(Win7CCDApi* api, uint32_t bit, std::string* name) {
  UINT32 path_count = 0;
  UINT32 mode_count = 0;
  std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> paths;
  std::unique_ptr<DISPLAYCONFIG_MODE_INFO[]> modes;
  if (!GetDisplayConfigBuffers(api, QDC_ONLY_ACTIVE_PATHS, &path_count, &paths, &mode_count,
                               &modes)) {
    return;
  }
  const uint32_t technology = OutputTechnologyFromDisplay(bit);
  for (UINT32 i = 0; i < path_count; ++i) {
    const DISPLAYCONFIG_PATH_TARGET_INFO& target = paths[i].targetInfo;
    if (!target.targetAvailable) continue;
    if (static_cast<uint32_t>(target.outputTechnology) != technology) continue;
    const DISPLAYCONFIG_PATH_SOURCE_INFO& source = paths[i].sourceInfo;
    DISPLAYCONFIG_SOURCE_DEVICE_NAME found = {};
    if (!GetSourceDeviceName(api, source.adapterId, source.id, &found)) return;
    *name = NarrowFromWide(found.viewGdiDeviceName);
    return;
  }
}

bool StageDisplaySettings(const char* device, DEVMODEA* dm, bool set_primary) {
  // Deliberate: the test is made with the flags of the change, not with the test flag alone.
  const DWORD primary = set_primary ? CDS_SET_PRIMARY : 0u;
  return ChangeStep(device, dm, kTestFlags | primary) &&
         ChangeStep(device, dm, kStageFlags | primary);
}

bool StageNativeResolution(uint32_t bit, const std::string& name, bool set_primary,
                           const DEVMODEA* previous, DEVMODEA* out) {
  DEVMODEA dm = {};
  if (!ReadCurrentSettings(name.c_str(), kPlacedFields, &dm)) return false;
  dm.dmBitsPerPel = 32;
  dm.dmDisplayFrequency = 60;
  if (set_primary) dm.dmPosition = {0, 0};
  if (previous != nullptr) dm.dmPosition = {previous->dmPosition.x, 0};
  const CountedReference<IPhysicalMonitor> monitor(CreatePhysicalMonitor());
  if (!monitor) return false;
  uint32_t width = 0;
  uint32_t height = 0;
  const bool known = monitor->GetNativeResolution(bit, &width, &height);
  dm.dmPelsWidth = known ? width : 1024;
  dm.dmPelsHeight = known ? height : 768;
  if (out != nullptr) *out = dm;
  return StageDisplaySettings(name.c_str(), &dm, set_primary);
}

bool StageRememberedDisplay(const std::string& name, uint32_t bit, const SettingsKey& key) {
  RememberedDisplay remembered;
  if (!ReadRememberedDisplay(key.section, bit, &remembered)) return false;
  DEVMODEA dm = {};
  if (!ReadCurrentSettings(name.c_str(), kPlacedFields, &dm)) return false;
  SetRemembered(remembered, &dm);
  if (remembered.orientation != 0) dm.dmDisplayOrientation = remembered.orientation;
  if (StageDisplaySettings(name.c_str(), &dm, false)) return true;
  // Deliberate: only the turn is given up; size, depth and frequency are tried again as they are.
  dm.dmFields &= ~static_cast<DWORD>(DM_DISPLAYORIENTATION);
  dm.dmDisplayOrientation = 0;
  return StageDisplaySettings(name.c_str(), &dm, false);
}

bool ApplyRememberedExtendSettings(uint32_t displays, const SettingsKey& key) {
  DesktopDevices devices;
  if (!devices.Find()) return false;
  try {
    return RestoreExtendedDesktop(&devices, displays, key);
  } catch (const std::exception& exception) {
    LOG(ERROR) << "Exception occurred: " << exception.what();
    return false;
  }
}

void ApplyExtendedDefault(uint32_t displays) {
  DesktopDevices devices;
  if (!devices.Find()) return;
  try {
    PlaceNativeSizes(&devices, displays);
  } catch (const std::exception& exception) {
    LOG(ERROR) << "Exception occurred: " << exception.what();
  }
}
