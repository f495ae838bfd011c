// The records that NvAPI_DISP_SetDisplayConfig takes, with the arrays that they point to.
#pragma once

#include "Common/MultiMonitor/Nvidia/NvRecords.h"
#include "Common/Win.h"

#include <cstdint>
#include <functional>
#include <vector>

/// NV_FORMAT of a colour depth in bits per pixel; 0 for a depth that has none.
uint32_t ColorFormat(uint32_t depth);

/// Paths with everything that hangs on them, adapter ids included, for one call of the driver.
class NvidiaPathRecords {
 public:
  /// Cleared records with their version words.
  explicit NvidiaPathRecords(uint32_t path_count);
  ~NvidiaPathRecords();
  NvidiaPathRecords(const NvidiaPathRecords&) = delete;
  NvidiaPathRecords& operator=(const NvidiaPathRecords&) = delete;

  /// Gives each path as many cleared targets as its targetInfoCount says, and a cleared source
  /// mode.
  void MakeArrays();

  NV_DISPLAYCONFIG_PATH_INFO* paths() { return paths_.data(); }
  uint32_t path_count() const { return static_cast<uint32_t>(paths_.size()); }

 private:
  std::vector<NV_DISPLAYCONFIG_PATH_INFO> paths_;
  std::vector<std::vector<NV_DISPLAYCONFIG_PATH_TARGET_INFO>> targets_;
  std::vector<NV_DISPLAYCONFIG_SOURCE_MODE_INFO> source_modes_;
};

/// Puts a cleared adapter id on a path that has none. NvidiaPathRecords gives it back; who fills
/// other records does so with FreeAdapterId.
LUID* MakeAdapterId(NV_DISPLAYCONFIG_PATH_INFO* path);
void FreeAdapterId(NV_DISPLAYCONFIG_PATH_INFO* path);

/// Reads the native size of a display. @return false when it is not known
using NativeSizeReader =
    std::function<bool(uint32_t imm_display, uint32_t* width, uint32_t* height)>;

/// Fills the source mode of the first path with the native size of `primary`, and for DM_EXTEND
/// that of the second path, to its right, with the native size of `secondary`. What has no known
/// size gets one that most panels, or all monitors, take.
void FillNativeSourceModes(uint32_t mode, uint32_t primary, uint32_t secondary,
                           NV_DISPLAYCONFIG_PATH_INFO* path_info,
                           const NativeSizeReader& read_size);
