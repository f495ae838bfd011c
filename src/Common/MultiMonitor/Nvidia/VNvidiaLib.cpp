#include "Common/MultiMonitor/Nvidia/VNvidiaLib.h"

BOOL VNvidiaLib::Load(const char* file_name) {
  // Deliberate: all are required, though six are never called.
  const Entry entries[] = {
      {"NvGetWindowsDisplayState", Slot(NvGetWindowsDisplayState)},
      {"NvCplGetConnectedDevicesString", Slot(NvCplGetConnectedDevicesString)},
      {"NvCplRefreshConnectedDevices", Slot(NvCplRefreshConnectedDevices)},
      {"NvCplGetFlatPanelNativeRes", Slot(NvCplGetFlatPanelNativeRes)},
      {"NvCplGetRealConnectedDevicesString", Slot(NvCplGetRealConnectedDevicesString)},
      {"NvCplGetActiveDevicesString", Slot(NvCplGetActiveDevicesString)},
      {"NvGetDisplayInfo", Slot(NvGetDisplayInfo)},
      {"dtcfgex", Slot(dtcfgex)},
      {"NvGetPhysicalConnectorInfo", Slot(NvGetPhysicalConnectorInfo)},
      {"NvEnumPhysicalConnectorDetails", Slot(NvEnumPhysicalConnectorDetails)},
  };
  return Bind(file_name, entries);
}
