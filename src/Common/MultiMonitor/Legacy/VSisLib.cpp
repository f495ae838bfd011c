#include "Common/MultiMonitor/Legacy/VSisLib.h"

BOOL VSisLib::Load(const char* file_name) {
  const Entry entries[] = {
      {"SwitchMode", Slot(SwitchMode)},     {"GetCurDeviceState", Slot(GetCurDeviceState)},
      {"ChangeTVMode", Slot(ChangeTVMode)}, {"GetDriverModeData", Slot(GetDriverModeData)},
      {"NoDeviceTest", Slot(NoDeviceTest)},
  };
  return Bind(file_name, entries);
}
