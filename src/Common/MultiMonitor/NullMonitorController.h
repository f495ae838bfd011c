// The controller of a machine that has none: every operation refuses, and no output is written.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/IMMonitor.h"

class NullMonitorController final : public IMMonitor {
 public:
  BOOL Initial() override { return FALSE; }
  BOOL GetConnectedDisplays(uint32_t* /*displays*/, uint32_t* /*display_count*/) override {
    return FALSE;
  }
  BOOL GetActiveDisplays(uint32_t* /*displays*/, uint32_t* /*display_count*/) override {
    return FALSE;
  }
  BOOL GetCurrentDisplayMode(uint32_t* /*mode*/, uint32_t* /*displays*/) override { return FALSE; }
  BOOL SetNewDisplayMode(uint32_t /*mode*/, uint32_t /*displays*/) override { return FALSE; }
  void DetectDisplays() override {}
  void PreloadDisplayModes() override {}
  BOOL IsExtendModeEnabled() override { return FALSE; }
  BOOL EnableExtendModeOnDisplays(BOOL /*enable*/, uint32_t /*displays*/) override { return FALSE; }
  BOOL EnableExtendMode(BOOL /*enable*/) override { return FALSE; }
  BOOL ChangeToNBOnlySingleDisplayMode() override { return FALSE; }
  BOOL HasDualOutputCapability() override { return FALSE; }
  BOOL HasDisplaySwitchingCapability() override { return FALSE; }
  BOOL ShouldResetDisplaySettingAfterSwtich() override { return FALSE; }
  uint32_t GetVgaVendor() override { return kVendorUnknown; }
  bool GetDisplaySettings(uint32_t /*imm_display*/, DEVMODEA* /*dm*/) override { return false; }
};
