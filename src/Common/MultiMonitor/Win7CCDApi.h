// The display configuration functions of Windows 7, bound at run time: User32.dll of older systems
// has none of them.
#pragma once

#include "Common/LoadDLL.h"
#include "Common/Win.h"

class Win7CCDApi : public LoadDLL {
 public:
  /// All five functions are required. Every user loads "User32.dll".
  BOOL Load(const char* file_name) override;

  LONG(WINAPI* GetDisplayConfigBufferSizes)
  (UINT32 flags, UINT32* path_count, UINT32* mode_count) = nullptr;
  LONG(WINAPI* QueryDisplayConfig)
  (UINT32 flags, UINT32* path_count, DISPLAYCONFIG_PATH_INFO* paths, UINT32* mode_count,
   DISPLAYCONFIG_MODE_INFO* modes, DISPLAYCONFIG_TOPOLOGY_ID* topology) = nullptr;
  LONG(WINAPI* DisplayConfigGetDeviceInfo)(DISPLAYCONFIG_DEVICE_INFO_HEADER* packet) = nullptr;
  LONG(WINAPI* DisplayConfigSetDeviceInfo)(DISPLAYCONFIG_DEVICE_INFO_HEADER* packet) = nullptr;
  LONG(WINAPI* SetDisplayConfig)
  (UINT32 path_count, DISPLAYCONFIG_PATH_INFO* paths, UINT32 mode_count,
   DISPLAYCONFIG_MODE_INFO* modes, UINT32 flags) = nullptr;
};
