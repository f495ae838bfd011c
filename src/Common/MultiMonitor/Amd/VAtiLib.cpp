#include "Common/MultiMonitor/Amd/VAtiLib.h"

BOOL VAtiLib::Load(const char* file_name) {
  constexpr bool kOptional = false;
  const Entry entries[] = {
      {"GetCapabilities", Slot(GetCapabilities)},
      {"GetConfiguration", Slot(GetConfiguration)},
      {"SetConfiguration", Slot(SetConfiguration)},
      {"EnumDisplays", Slot(EnumDisplays)},
      {"GetConnectedDisplays", Slot(GetConnectedDisplays)},
      {"EnableExtendedDesktop", Slot(EnableExtendedDesktop)},
      {"ATIDL_GetDisplaySwitchingCapability", Slot(GetDisplaySwitchingCapability), kOptional},
      {"ATIDL_GetActiveDisplays", Slot(GetActiveDisplays), kOptional},
      {"ATIDL_SetActiveDisplays", Slot(SetActiveDisplays), kOptional},
      {"ATIDL_SetConfigurationEx", Slot(SetConfigurationEx), kOptional},
      {"ATIDL_GetAdapterID", Slot(GetAdapterID), kOptional},
      {"ATIDL_GetDisplayVector", Slot(GetDisplayVector), kOptional},
      {"ATIDL_GetAdapterConfig", Slot(GetAdapterConfig), kOptional},
      {"ATIDL_SetAdapterConfig", Slot(SetAdapterConfig), kOptional},
      {"ATIDL_DisplayGetEdidData", Slot(DisplayGetEdidData), kOptional},
      {"ATIDL_DisplayGetDeviceConfig", Slot(DisplayGetDeviceConfig), kOptional},
      {"ATIDL_GetDisplaySettings", Slot(GetDisplaySettings), kOptional},
  };
  return Bind(file_name, entries);
}
