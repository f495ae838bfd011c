#include "tests/whitebox/PolicyBox.h"

#include "Common/MultiMonitor/Win7CCDApi.h"
#include "session/DMSwitch.h"
#include "session/catalogue/ExtendedDesktop.h"
#include "session/catalogue/ModeSettings.h"
#include "session/catalogue/ResolutionPolicy.h"

/// Reaches the session's own operations for the box.
struct PolicyAccess {
  static void RegisterSettingsKey(uint32_t mode, uint32_t displays, const std::string& signature) {
    DMSwitch::s_self->RegisterSettingsKey(mode, displays, signature);
  }
  static void SaveDisplaySettings(uint32_t mode, uint32_t displays) {
    DMSwitch::s_self->SaveDisplaySettings(mode, displays);
  }
  static void RestoreDisplaySettings(uint32_t mode, uint32_t displays) {
    DMSwitch::s_self->RestoreDisplaySettings(mode, displays);
  }
};

namespace {

std::string Signature() {
  std::string signature = "left over";
  GetMonitorSignature(&signature);
  return signature;
}

std::string PathAsItIs() { return SettingsPath(); }

std::vector<std::string> DesktopDevices() {
  std::vector<std::string> names = {"left over"};
  ListDesktopDevices(&names);
  return names;
}

std::string DeviceNameOfDisplay(bool bound, uint32_t bit, const std::string& given) {
  Win7CCDApi api;
  if (bound) api.Load("User32.dll");
  std::string name = given;
  GetDeviceNameOfDisplay(&api, bit, &name);
  return name;
}

constexpr PolicyBox kBox = {
    Signature,
    MakeSettingsSection,
    ReadRememberedDisplay,
    ReadDisplayResolution,
    WriteActiveDisplayMode,
    ReadActivePresentationType,
    PathAsItIs,
    EnsureSettingsPath,
    PolicyAccess::RegisterSettingsKey,
    PolicyAccess::SaveDisplaySettings,
    PolicyAccess::RestoreDisplaySettings,
    ApplyRememberedSettings,
    ApplyRememberedSingleSettings,
    ApplyDefaultPolicy,
    ApplyBestResolution,
    ApplyFixedResolution,
    GetSettingType,
    GetAdjustPolicy,
    GetFixedResolution,
    GetMaxResolution,
    DesktopDevices,
    DeviceNameOfDisplay,
    StageDisplaySettings,
    StageNativeResolution,
    StageRememberedDisplay,
};

}  // namespace

const PolicyBox* GetPolicyBox() { return &kBox; }
