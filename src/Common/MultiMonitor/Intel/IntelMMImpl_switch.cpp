// Switching to one display, or to two that show the same.
#include "Common/Config.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayDevices.h"
#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/MultiMonitor/Intel/ICUIExternal8.h"
#include "Common/MultiMonitor/Intel/IntelDeviceTypes.h"
#include "Common/MultiMonitor/Intel/IntelHdmiWorkaround.h"
#include "Common/MultiMonitor/Intel/IntelMMImpl.h"
#include "Common/MultiMonitor/SettingsKeys.h"

namespace {

constexpr DWORD kDowngradedWidth = 1024;
constexpr DWORD kDowngradedHeight = 768;
constexpr UINT kUsualColorDepth = 32;
constexpr UINT kUsualFrequency = 60;
constexpr DWORD kSettlingTime = 1000;  // milliseconds
constexpr DWORD kModeFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFREQUENCY;
static_assert(kModeFields == 0x5C0000, "depth, width, height, frequency");

// Without an aspect setting of its own a display is scaled like this.
constexpr uint32_t kUsualAspect = 2;

UINT ReadRemembered(const SettingsKey& key, const char* name, UINT usual) {
  // Without a path Windows would take a file of its own folder.
  if (SettingsPath().empty()) return usual;
  return GetPrivateProfileIntA(key.section.c_str(), name, static_cast<INT>(usual),
                               SettingsPath().c_str());
}

// A 0 in the file means the usual value, too.
DWORD ReadRememberedOrUsual(const SettingsKey& key, const char* name, UINT usual) {
  const UINT value = ReadRemembered(key, name, usual);
  return value != 0 ? value : usual;
}

bool HasHdmiHotkey(uint32_t type) {
  return type == IntelTypeOfDisplay(IMMonitor::MD_HDMI) ||
         type == IntelTypeOfDisplay(IMMonitor::MD_DVI);
}

}  // namespace

// Puts the aspect setting right at the end of a switch, whichever way that ends.
class IntelMMImpl::AspectScalingGuard {
 public:
  AspectScalingGuard(IntelMMImpl* owner, uint32_t displays) : owner_(owner), displays_(displays) {}
  ~AspectScalingGuard() {
    if (SupportAspectRatioWorkaround() != 0) owner_->RestoreAspectScaling(displays_);
  }
  AspectScalingGuard(const AspectScalingGuard&) = delete;
  AspectScalingGuard& operator=(const AspectScalingGuard&) = delete;

 private:
  IntelMMImpl* const owner_;
  const uint32_t displays_;
};

BOOL IntelMMImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  if (m_pCUIExt == nullptr) return FALSE;
  RefreshDeviceList();
  if (DowngradeResolutionBeforeSwitch() != 0) DowngradeResolution(mode, displays);
  PreloadDisplayModes();
  if (SupportAspectRatioWorkaround() != 0) SaveAspectScaling();
  const AspectScalingGuard guard(this, displays);

  if (mode == DM_TRIPLE_CLONE) return ApplyTriple(kCuiClone, displays);
  if (mode == DM_TRIPLE_EXTEND) {
    if (ApplyTriple(kCuiExtended, displays) == 0) return FALSE;
    should_reset_display_settings_after_switch_ = FALSE;
    return TRUE;
  }
  if (ApplySingleOrClone(mode, displays) != 0) return TRUE;
  // Deliberate: once more from a small desktop, whatever the key about the downgrade says.
  DowngradeResolution(mode, displays);
  return ApplySingleOrClone(mode, displays);
}

// Deliberate: every mode but one goes to clone, extended desktop too.
BOOL IntelMMImpl::ApplySingleOrClone(uint32_t mode, uint32_t displays) {
  return mode == DM_SINGLE ? ApplySingle(displays) : ApplyClone(displays);
}

BOOL IntelMMImpl::ApplySingle(uint32_t displays) {
  const uint32_t type = TypeFromBit(displays);
  if (type == 0) return FALSE;
  if (HasHdmiHotkey(type) && UseHdmiHotkeyWorkaround()) {
    // Deliberate: the driver's own hotkey does it, and nobody asks whether it did.
    PressIntelHdmiHotkeyOnDesktop();
    return TRUE;
  }
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  if (attached_devices.empty()) return FALSE;
  CuiActiveDevices record = CuiSingleRecord(attached_devices.front(), UidOfType(type));
  return ChangeActiveDevicesWithRetry(&record) ? TRUE : FALSE;
}

BOOL IntelMMImpl::ApplyClone(uint32_t displays) {
  std::vector<uint32_t> types;
  if (!IntelTypesOfDisplays(displays, &types)) return FALSE;
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  if (attached_devices.empty()) return FALSE;
  // The panel leads whenever it takes part: types come in the order of the display flags. A second
  // display that is not there has no uid.
  const uint32_t second_uid = types.size() > 1 ? UidOfType(types[1]) : 0;
  CuiActiveDevices record =
      CuiCloneRecord(attached_devices.front(), UidOfType(types[0]), second_uid);
  return ChangeActiveDevicesWithRetry(&record) ? TRUE : FALSE;
}

bool IntelMMImpl::ChangeActiveDevicesWithRetry(CuiActiveDevices* record) {
  auto* const bytes = reinterpret_cast<BYTE*>(record);
  DWORD err = IGFX_SUCCESS;
  // Deliberate: `err` is not looked at.
  if (SUCCEEDED(
          m_pCUIExt->ChangeActiveDevices(kCuiActiveDevicesGuid, sizeof(*record), bytes, &err))) {
    return true;
  }
  PreloadDisplayModes();
  return SUCCEEDED(
      m_pCUIExt->ChangeActiveDevices(kCuiActiveDevicesGuid, sizeof(*record), bytes, &err));
}

// The driver refuses a switch from a desktop that the new displays could not show.
BOOL IntelMMImpl::DowngradeResolution(uint32_t mode, uint32_t displays) {
  EnsureSettingsPath();
  const SettingsKey key = MakeSettingsKeyForDisplays(mode, displays);
  std::vector<std::string> attached_devices;
  GetAttachedDevices(&attached_devices);
  if (attached_devices.empty()) return FALSE;
  const char* const device = attached_devices.front().c_str();
  DEVMODEA dm = {};
  if (ReadDisplaySettings(ENUM_CURRENT_SETTINGS, device, &dm) == 0) return FALSE;

  dm.dmFields = kModeFields;
  // Deliberate: the remembered size is read and dropped.
  static_cast<void>(ReadRemembered(key, "Width", 0));
  static_cast<void>(ReadRemembered(key, "Height", 0));
  dm.dmPelsWidth = kDowngradedWidth;
  dm.dmPelsHeight = kDowngradedHeight;
  dm.dmBitsPerPel = ReadRememberedOrUsual(key, "Color Depth", kUsualColorDepth);
  dm.dmDisplayFrequency = ReadRememberedOrUsual(key, "Frequency", kUsualFrequency);
  if (ChangeDisplaySettingsExA(device, &dm, nullptr, CDS_TEST, nullptr) == DISP_CHANGE_SUCCESSFUL) {
    ChangeDisplaySettingsExA(device, &dm, nullptr, CDS_RESET | CDS_GLOBAL | CDS_UPDATEREGISTRY,
                             nullptr);
  }
  // Deliberate: also when nothing was changed.
  Sleep(kSettlingTime);
  return TRUE;
}

void IntelMMImpl::SaveAspectScaling() {
  DCHECK(m_pCUIExt != NULL);
  if (m_pCUIExt == nullptr) return;
  uint32_t displays = 0;
  uint32_t display_count = 0;
  GetActiveDisplays(&displays, &display_count);
  if ((displays & MD_NB) == 0) return;
  DWORD capabilities = 0;
  DWORD current = 0;
  DWORD err = IGFX_SUCCESS;
  const HRESULT hr = m_pCUIExt->GetAspectScaling(kCuiAspectUid, kCuiAspectOperatingMode,
                                                 &capabilities, &current, &err);
  m_aspectByDisplays[displays] = FAILED(hr) ? kUsualAspect : current;
}

void IntelMMImpl::RestoreAspectScaling(uint32_t displays) {
  DCHECK(m_pCUIExt != NULL);
  if (m_pCUIExt == nullptr || (displays & MD_NB) == 0) return;
  // Deliberate: what was saved under the mask before the switch is not taken for another mask.
  const auto saved = m_aspectByDisplays.find(displays);
  const uint32_t aspect = saved != m_aspectByDisplays.end() ? saved->second : kUsualAspect;
  DWORD err = IGFX_SUCCESS;
  m_pCUIExt->SetAspectScaling(kCuiAspectUid, aspect, &err);
}
