// AMD's legacy control library AtiPdl64.dll, bound at run time.
#pragma once

#include "Common/LoadDLL.h"
#include "Common/MultiMonitor/Amd/AtiRecords.h"
#include "Common/Win.h"

#include <cstdint>

/// An adapter is a display device by Windows' count, from 0. Results are 0 for success unless told
/// otherwise.
class VAtiLib : public LoadDLL {
 public:
  /// Seventeen entries. The first six are required; each of the others may be null, and is tested
  /// where it is used.
  BOOL Load(const char* file_name) override;

  int32_t(WINAPI* GetCapabilities)(uint32_t adapter, uint32_t* first, uint32_t* second) = nullptr;
  int32_t(WINAPI* GetConfiguration)() = nullptr;  // never called
  int32_t(WINAPI* SetConfiguration)() = nullptr;  // never called
  /// Non-zero for success.
  int32_t(WINAPI* EnumDisplays)(uint32_t adapter, uint32_t display_index, uint32_t* type) = nullptr;
  int32_t(WINAPI* GetConnectedDisplays)(uint32_t adapter, uint32_t* display_vector) = nullptr;
  /// `device` is the adapter's number plus one: its second display device.
  int32_t(WINAPI* EnableExtendedDesktop)(uint32_t device, uint32_t enable) = nullptr;

  int32_t(WINAPI* GetDisplaySwitchingCapability)(uint32_t adapter, uint32_t* value) = nullptr;
  int32_t(WINAPI* GetActiveDisplays)(uint32_t adapter, AtiConfigRecord* record) = nullptr;
  int32_t(WINAPI* SetActiveDisplays)() = nullptr;  // never called
  int32_t(WINAPI* SetConfigurationEx)(uint32_t adapter, AtiConfigRecord* record) = nullptr;
  /// Takes any display device; one that is not the library's has no id.
  int32_t(WINAPI* GetAdapterID)(uint32_t device, uint32_t* id) = nullptr;
  /// @return the vector of all outputs of a kind: 1 panel, 4 television
  uint32_t(WINAPI* GetDisplayVector)(uint32_t adapter, uint32_t kind) = nullptr;
  int32_t(WINAPI* GetAdapterConfig)(AtiAdapterConfig* config) = nullptr;
  int32_t(WINAPI* SetAdapterConfig)(AtiAdapterConfig* config) = nullptr;
  int32_t(WINAPI* DisplayGetEdidData)(uint32_t adapter, uint32_t display_index,
                                      AtiEdidRecord* record) = nullptr;
  int32_t(WINAPI* DisplayGetDeviceConfig)(uint32_t adapter, uint32_t display_index,
                                          AtiDeviceConfig* config) = nullptr;
  int32_t(WINAPI* GetDisplaySettings)() = nullptr;  // never called
};
