#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/IDisplayExtension.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"

struct FactoryBox {
  IMMonitor* (*GetMultiMonitorObject)();
  void (*OnActiveDisplayAdapterVendorChanged)();
  IDisplayExtension* (*GetDisplayExtension)();
  IPhysicalMonitor* (*CreatePhysicalMonitor)();
  IMMonitor* (*CreateIMMonitorByVendor)(uint32_t vendor);
  IMMonitor* (*CreateIMMonitorForActiveVendor)();
  uint32_t (*GetActiveVendorId)();
  bool (*EnumerateDisplayAdapterVendors)(bool include_root_enumerated,
                                         std::vector<uint16_t>* vendors);
  void (*DeleteMultiMonitorObject)();

  /// Puts an object of the test's own in the active place, as the object of `vendor`; the factory then owns it.
  void (*InstallMonitor)(IMMonitor* monitor, uint16_t vendor);
};

const FactoryBox* GetFactoryBox();
