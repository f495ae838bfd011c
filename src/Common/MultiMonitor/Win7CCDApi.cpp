#include "Common/MultiMonitor/Win7CCDApi.h"

BOOL Win7CCDApi::Load(const char* file_name) {
  const Entry entries[] = {
      {"GetDisplayConfigBufferSizes", Slot(GetDisplayConfigBufferSizes)},
      {"QueryDisplayConfig", Slot(QueryDisplayConfig)},
      {"DisplayConfigGetDeviceInfo", Slot(DisplayConfigGetDeviceInfo)},
      {"DisplayConfigSetDeviceInfo", Slot(DisplayConfigSetDeviceInfo)},
      {"SetDisplayConfig", Slot(SetDisplayConfig)},
  };
  return Bind(file_name, entries);
}
