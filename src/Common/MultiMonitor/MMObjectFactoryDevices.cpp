#include "Common/MultiMonitor/MMObjectFactoryDevices.h"

#include <cfgmgr32.h>

#include <cstring>

namespace {

// {4D36E968-E325-11CE-BFC1-08002BE10318}
constexpr GUID kDisplayClass = {
    0x4D36E968, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};

}  // namespace

DisplayAdapterDevices::DisplayAdapterDevices()
    : list_(SetupDiGetClassDevsA(&kDisplayClass, nullptr, nullptr, DIGCF_PRESENT)),
      device_(),
      hardware_id_() {
  device_.cbSize = sizeof(device_);
}

DisplayAdapterDevices::~DisplayAdapterDevices() {
  if (list_ != INVALID_HANDLE_VALUE) SetupDiDestroyDeviceInfoList(list_);
}

bool DisplayAdapterDevices::Select(uint32_t index) {
  if (list_ == INVALID_HANDLE_VALUE) return false;
  device_ = {};
  device_.cbSize = sizeof(device_);
  return SetupDiEnumDeviceInfo(list_, index, &device_) != FALSE;
}

const char* DisplayAdapterDevices::HardwareId() {
  std::memset(hardware_id_, 0, sizeof(hardware_id_));
  const BOOL read = SetupDiGetDeviceRegistryPropertyA(list_, &device_, SPDRP_HARDWAREID, nullptr,
                                                      reinterpret_cast<BYTE*>(hardware_id_),
                                                      kHardwareIdBytes, nullptr);
  return read != FALSE ? hardware_id_ : nullptr;
}

DeviceStatus DisplayAdapterDevices::Status() const {
  ULONG status = 0;
  ULONG problem = 0;
  DeviceStatus result;
  if (CM_Get_DevNode_Status(&status, &problem, device_.DevInst, 0) != CR_SUCCESS) return result;
  result.known = true;
  result.status = status;
  result.problem = problem;
  return result;
}
