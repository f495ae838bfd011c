// A walk over the devices that Intel's driver lists for one adapter.
#pragma once

#include <cstdint>
#include <string>

#include "Common/Win.h"

class ICUIExternal8;

class CuiDevices {
 public:
  /// @param cui          not owned, never null
  /// @param device_name  \\.\DISPLAYn of the adapter
  CuiDevices(ICUIExternal8* cui, const std::wstring& device_name);

  /// Goes to the first device, then to the next. @return false behind the last one
  bool Next();

  uint32_t uid() const { return uid_; }
  uint32_t type() const { return type_; }
  uint32_t status() const { return status_; }

 private:
  ICUIExternal8* const cui_;
  wchar_t* const device_name_;
  uint32_t next_ = 0;
  DWORD uid_ = 0;
  DWORD type_ = 0;
  DWORD status_ = 0;
};
