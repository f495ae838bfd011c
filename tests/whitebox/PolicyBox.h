// What is remembered, and the resolution policy, from inside.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "session/catalogue/RememberedSettings.h"

struct PolicyBox {
  // --- What is remembered.
  std::string (*GetMonitorSignature)();
  std::string (*MakeSettingsSection)(uint32_t mode, uint32_t displays,
                                     const std::string& signature);
  bool (*ReadRememberedDisplay)(const std::string& section, uint32_t display,
                                RememberedDisplay* out);
  void (*ReadDisplayResolution)(const SettingsKey& key, uint32_t* width, uint32_t* height,
                                uint32_t display);
  void (*WriteActiveDisplayMode)(uint32_t mode, uint32_t displays, uint32_t presentation_type);
  uint32_t (*ReadActivePresentationType)();
  std::string (*SettingsPath)();  // as it is, without EnsureSettingsPath
  void (*EnsureSettingsPath)();

  // --- Operations of the session; it must exist.
  void (*RegisterSettingsKey)(uint32_t mode, uint32_t displays, const std::string& signature);
  void (*SaveDisplaySettings)(uint32_t mode, uint32_t displays);
  void (*RestoreDisplaySettings)(uint32_t mode, uint32_t displays);

  // --- The policy.
  bool (*ApplyRememberedSettings)(uint32_t mode, uint32_t displays, const SettingsKey& key);
  bool (*ApplyRememberedSingleSettings)(const SettingsKey& key);
  void (*ApplyDefaultPolicy)(uint32_t mode, uint32_t displays);
  bool (*ApplyBestResolution)(uint32_t mode, uint32_t displays);
  void (*ApplyFixedResolution)(uint32_t mode, uint32_t displays);
  uint32_t (*GetSettingType)(uint32_t mode, uint32_t displays);
  uint32_t (*GetAdjustPolicy)(uint32_t mode, uint32_t displays);
  bool (*GetFixedResolution)(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height);
  bool (*GetMaxResolution)(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height);

  // --- An extended desktop.
  std::vector<std::string> (*ListDesktopDevices)();
  /// With a Win7CCDApi of its own, bound or not. @return the name, `given` when there is none
  std::string (*GetDeviceNameOfDisplay)(bool bound, uint32_t bit, const std::string& given);
  bool (*StageDisplaySettings)(const char* device, DEVMODEA* dm, bool set_primary);
  bool (*StageNativeResolution)(uint32_t bit, const std::string& name, bool set_primary,
                                const DEVMODEA* previous, DEVMODEA* out);
  bool (*StageRememberedDisplay)(const std::string& name, uint32_t bit, const SettingsKey& key);
};

const PolicyBox* GetPolicyBox();
