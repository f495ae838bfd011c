// NVIDIA graphics from Windows 7 on, driven by display paths, which may name displays of another
// adapter.
#pragma once

#include <cstdint>
#include <memory>

#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"
#include "Common/MultiMonitor/Win7CCDApi.h"

class NvidiaMMImplV3 : public NvidiaMMImplV2 {
 public:
  /// @param ccd  new and not loaded; owned
  explicit NvidiaMMImplV3(Win7CCDApi* ccd);
  ~NvidiaMMImplV3() override;

  BOOL ApplyDisplayMode(uint32_t mode, uint32_t displays,
                        const NvidiaModeSettings* settings) override;
  BOOL ApplyExtendModeOnDisplay(uint32_t external_display) override;
  BOOL ApplyExtendMode() override;

  // --- What goes into the paths. `path_info` is one record, or two for DM_EXTEND, with its arrays.
  virtual void SetPathTargetCounts(uint32_t mode, NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void FillPaths(uint32_t mode, uint32_t primary, uint32_t secondary,
                         NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void SetTargetOfDisplay(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_TARGET_INFO* target);
  virtual void SetPathAdapter(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void FillSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                               NV_DISPLAYCONFIG_PATH_INFO* path_info);

 protected:
  /// NVAPI's id of a display; 0 when its output is not known.
  uint32_t DisplayIdOfDisplay(uint32_t imm_display) const;
  uint32_t DisplayIdOfConnectorType(uint32_t connector_type) const;

  const std::unique_ptr<Win7CCDApi> ccd;
};
