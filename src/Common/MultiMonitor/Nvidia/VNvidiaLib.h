// NVIDIA's control-panel library.
#pragma once

#include "Common/LoadDLL.h"
#include "Common/Win.h"

#include <cstddef>
#include <cstdint>

/// What NvGetDisplayInfo is asked and tells. The fields that are not named are not published, or
/// nobody's concern here; they stay zero.
struct NvCplDisplayInfo {
  static constexpr uint32_t kDisplayType = 0x1000;  // asks for display_type
  static constexpr uint32_t kMonikers = 0xC;        // asks for the connected and the active moniker

  uint32_t size;
  uint32_t input_fields_1;
  uint32_t output_fields_1;
  uint32_t input_fields_2;
  uint32_t reserved_16[407];
  uint32_t display_type;
  uint32_t reserved_1648[100];
};
static_assert(sizeof(NvCplDisplayInfo) == 2048 &&
              offsetof(NvCplDisplayInfo, input_fields_2) == 12 &&
              offsetof(NvCplDisplayInfo, display_type) == 1644);

/// Host thread only. An entry that the library lacks is null.
class VNvidiaLib : public LoadDLL {
 public:
  /// The ten entries of NvCpl.dll; all are required.
  BOOL Load(const char* file_name) override;

  /// @return the display state: below 4 there is none; 4 single, 5 dual view, 6 clone, 7 and 8
  /// spans
  int32_t(WINAPI* NvGetWindowsDisplayState)(UINT device, uint32_t* mode,
                                            uint32_t* displays) = nullptr;
  BOOL(WINAPI* NvCplGetConnectedDevicesString)
  (char* text, DWORD size, BOOL only_active) = nullptr;
  /// @param flags  1 leaves what is shown alone, 2 looks at all adapters
  BOOL(WINAPI* NvCplRefreshConnectedDevices)(DWORD flags) = nullptr;
  BOOL(WINAPI* NvCplGetFlatPanelNativeRes)
  (const char* moniker, DWORD* width, DWORD* height) = nullptr;
  /// The monikers of the connected displays, commas between them.
  BOOL(WINAPI* NvCplGetRealConnectedDevicesString)
  (char* text, DWORD size, BOOL only_active) = nullptr;
  BOOL(WINAPI* NvCplGetActiveDevicesString)(char* text, DWORD size) = nullptr;
  BOOL(WINAPI* NvGetDisplayInfo)(const char* moniker, NvCplDisplayInfo* record) = nullptr;
  DWORD(WINAPI* dtcfgex)(char* command_line) = nullptr;
  int32_t(WINAPI* NvGetPhysicalConnectorInfo)(UINT device, void* record) = nullptr;
  int32_t(WINAPI* NvEnumPhysicalConnectorDetails)(UINT device, DWORD index, void* record) = nullptr;
};
