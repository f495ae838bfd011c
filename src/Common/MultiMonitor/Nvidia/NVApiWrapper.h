// The calls of NVAPI that need their arguments checked. An object marks that NVAPI is in use.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/Nvidia/NvApi.h"

/// Each operation is true when NVAPI's answer is 0. None logs a refusal: what it means is the
/// caller's to know. A failed check is told and the call is made all the same.
class NVApiWrapper {
 public:
  /// A user of NvApi more; nothing is loaded yet.
  NVApiWrapper();
  /// The last user's end gives nvapi64.dll back.
  virtual ~NVApiWrapper();
  NVApiWrapper(const NVApiWrapper&) = delete;
  NVApiWrapper& operator=(const NVApiWrapper&) = delete;

  /// Brings NVAPI up and logs its version text.
  /// @return false when the driver brings no NVAPI or it does not start
  bool Initialize();

  bool GetDisplayTopology(NvTopology* topology);
  bool SetDisplayTopology(NvTopology* topology);
  /// @param output_id   exactly one bit of a GPU's output mask
  /// @param display_id  out; written on success only
  bool GetDisplayIdFromGpuAndOutputId(NvPhysicalGpuHandle gpu, uint32_t output_id,
                                      uint32_t* display_id);
  bool GetGpuAndOutputIdFromDisplayId(uint32_t display_id, NvPhysicalGpuHandle* gpu,
                                      uint32_t* output_id);
  /// @param flags  2 for one path, 10 for two
  bool SetDisplayConfig(uint32_t path_count, NV_DISPLAYCONFIG_PATH_INFO* path, uint32_t flags);
};
