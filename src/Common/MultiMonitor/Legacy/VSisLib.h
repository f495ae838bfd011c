// The SiS control library SisVga.dll, bound at run time.
#pragma once

#include "Common/LoadDLL.h"
#include "Common/MultiMonitor/Legacy/SisMemos.h"
#include "Common/Win.h"

#include <cstdint>

/// Results are non-zero for success.
class VSisLib : public LoadDLL {
 public:
  /// Five entries. All are required, those that are never called too.
  BOOL Load(const char* file_name) override;

  /// @param kind    1: two displays with one picture; 2: one display
  /// @param second  all zero for one display
  int32_t(WINAPI* SwitchMode)(uint32_t kind, SisSwitchRecord* first,
                              SisSwitchRecord* second) = nullptr;
  /// @param first, second  out; device bits of what is active
  /// @param attached       out; device bits of what is plugged in
  int32_t(WINAPI* GetCurDeviceState)(uint32_t* first, uint32_t* second,
                                     uint32_t* attached) = nullptr;
  int32_t(WINAPI* ChangeTVMode)() = nullptr;       // never called
  int32_t(WINAPI* GetDriverModeData)() = nullptr;  // never called
  int32_t(WINAPI* NoDeviceTest)() = nullptr;       // never called
};
