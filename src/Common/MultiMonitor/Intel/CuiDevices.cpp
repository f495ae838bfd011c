#include "Common/MultiMonitor/Intel/CuiDevices.h"

#include "Common/MultiMonitor/Intel/ICUIExternal8.h"

#include <oleauto.h>

namespace {

constexpr DWORD kAllKinds = 0xFFFFFFFF;

}  // namespace

// Deliberate: the name is never freed. A walk is short, and the driver's process may still hold it.
CuiDevices::CuiDevices(ICUIExternal8* cui, const std::wstring& device_name)
    : cui_(cui), device_name_(SysAllocString(device_name.c_str())) {}

bool CuiDevices::Next() {
  // The type is asked for by what it holds before the call, so it is set again each time.
  uid_ = kAllKinds;
  type_ = kAllKinds;
  status_ = kAllKinds;
  return cui_->EnumDevices(device_name_, next_++, &uid_, &type_, &status_) == S_OK;
}
