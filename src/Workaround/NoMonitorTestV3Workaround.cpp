#include "Workaround/NoMonitorTestV3Workaround.h"

NoMonitorTestV3Workaround::NoMonitorTestV3Workaround() {
  OutputDebugStringW(L"NoMonitorTestV3Workaround ctor\n");
}

BOOL NoMonitorTestV3Workaround::ChangeResolutionBeforeSwitch(IMMonitor* monitor) {
  static_cast<void>(monitor);
  return 0;
}
