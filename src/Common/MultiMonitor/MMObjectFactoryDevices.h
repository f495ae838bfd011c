// The list of display-class devices that are present, as SetupAPI keeps it.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/MMObjectFactoryVendors.h"
#include "Common/Win.h"

// SetupAPI needs what Common/Win.h brings.
#include <setupapi.h>

class DisplayAdapterDevices {
 public:
  DisplayAdapterDevices();
  ~DisplayAdapterDevices();
  DisplayAdapterDevices(const DisplayAdapterDevices&) = delete;
  DisplayAdapterDevices& operator=(const DisplayAdapterDevices&) = delete;

  /// Goes to the device of that number. @return false when there is none, or no list at all
  bool Select(uint32_t index);

  /// The selected device's hardware id; null when it cannot be read. Valid until the next call.
  const char* HardwareId();

  /// The selected device's status.
  DeviceStatus Status() const;

 private:
  // A hardware id is a list of texts, the most exact one first; 256 bytes hold what is looked at.
  static constexpr DWORD kHardwareIdBytes = 256;

  HDEVINFO list_;
  SP_DEVINFO_DATA device_;
  char hardware_id_[kHardwareIdBytes + 1];
};
