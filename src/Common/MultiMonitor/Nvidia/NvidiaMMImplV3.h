// NVIDIA graphics from Windows 7 on, driven by display paths, which may name displays of another
// adapter.
#pragma once

#include <cstdint>
#include <memory>

#include "Common/MultiMonitor/Nvidia/NvidiaMMImplV2.h"
#include "Common/MultiMonitor/Win7CCDApi.h"

/// What cannot be found out about a display (its id, its size) goes to the driver as 0 or as a
/// usual size: whether a mode is set is the driver's decision.
class NvidiaMMImplV3 : public NvidiaMMImplV2 {
 public:
  /// @param api  new and not loaded
  explicit NvidiaMMImplV3(std::unique_ptr<Win7CCDApi> api);
  ~NvidiaMMImplV3() override;

  BOOL ApplyDisplayMode(uint32_t mode, uint32_t displays,
                        const NvidiaModeSettings* settings) override;
  BOOL ApplyExtendModeOnDisplay(uint32_t external_display) override;
  /// Does nothing. @return 0
  BOOL ApplyExtendMode() override;

  // --- What goes into the paths. `path_info` is one record, or two for DM_EXTEND; the arrays are
  // there once the targets are counted.
  virtual void SetPathTargetCounts(uint32_t mode, NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void FillPaths(uint32_t mode, uint32_t primary, uint32_t secondary,
                         NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void SetTargetOfDisplay(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_TARGET_INFO* target);
  /// An adapter id that is put on the path belongs to the path's owner (FreeAdapterId).
  virtual void SetPathAdapter(uint32_t imm_display, NV_DISPLAYCONFIG_PATH_INFO* path_info);
  virtual void FillSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                               NV_DISPLAYCONFIG_PATH_INFO* path_info);

 protected:
  /// NVAPI's id of a display; 0 when its output is not known.
  uint32_t DisplayIdOfDisplay(uint32_t imm_display) const;
  /// The same for the first output with a connector of that type.
  uint32_t DisplayIdOfConnectorType(uint32_t connector_type) const;
  /// The native size of a display of this adapter, from its EDID.
  bool NativeSizeByThisDriver(uint32_t imm_display, uint32_t* width, uint32_t* height);

  const std::unique_ptr<Win7CCDApi> ccd;

 private:
  void NameTargets(const uint32_t* displays, NV_DISPLAYCONFIG_PATH_INFO* path);
  uint32_t DisplayIdOfOutput(uint32_t nv_output) const;
  BOOL SetDisplayConfig(uint32_t path_count, NV_DISPLAYCONFIG_PATH_INFO* paths, uint32_t flags);
};
