// NVIDIA graphics of a notebook whose panel and analogue output hang on the Intel adapter: both are
// named to NVIDIA's driver as displays of another adapter.
#pragma once

#include <cstdint>
#include <memory>

#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV3.h"

class Win7CCD;

class NvidiaMMImplV3CrossAdapter : public NvidiaMMImplV3 {
 public:
  explicit NvidiaMMImplV3CrossAdapter(std::unique_ptr<Win7CCDApi> api);

  /// A clone group of the driver outranks what Windows says.
  /// @throws std::runtime_error below Windows 7, where there is such a group
  BOOL GetCurrentDisplayMode(uint32_t* imm_mode, uint32_t* imm_displays) override;
  BOOL ShouldResetDisplaySettingAfterSwtich() override;

  BOOL ApplyDisplayMode(uint32_t mode, uint32_t displays,
                        const NvidiaModeSettings* settings) override;
  BOOL ApplyExtendModeOnDisplay(uint32_t external_display) override;
  void SetTargetOfDisplay(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_TARGET_INFO* target) override;
  void SetPathAdapter(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_INFO* path_info) override;
  void FillSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                       NV_DISPLAYCONFIG_PATH_INFO* path_info) override;
  bool IsCrossAdapterCapable() override { return true; }

  /// Writes a clone group of the panel and the HDMI or DisplayPort display; with none of the panel,
  /// HDMI and DisplayPort in `displays` removes every group.
  /// @return the truth of the write; with nothing to remove 1, with groups that cannot be read 0
  /// @throws std::runtime_error below Windows 7
  virtual BOOL ApplyCrossAdapterClone(uint32_t displays);

  /// Reads the native size of a display from the driver of the adapter that it hangs on.
  /// @param imm_display  one bit other than MD_TV
  /// @return false when it is not known
  bool NativeSizeAcrossAdapters(uint32_t imm_display, uint32_t* width, uint32_t* height);

 private:
  BOOL RemoveCloneGroups();
  uint32_t DisplayOfItem(const NvTopologyItem& item, Win7CCD* windows);

  uint32_t should_reset_display_settings_after_switch_ = 1;
};
