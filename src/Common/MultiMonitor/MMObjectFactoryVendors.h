// Which adapter vendors the factory sees: rules over plain numbers and texts, without Windows.
#pragma once

#include <cstdint>
#include <vector>

/// The vendor id in a hardware id: the four characters behind the first underscore, as hexadecimal
/// ("PCI\VEN_8086&..." gives 0x8086). Characters that are no digits are skipped, fewer than four
/// are read as they are. 0 without an underscore.
uint16_t VendorFromHardwareId(const char* hardware_id);

/// What CM_Get_DevNode_Status said about a device.
struct DeviceStatus {
  bool known = false;  // the call succeeded; `status` and `problem` are 0 otherwise
  uint32_t status = 0;
  uint32_t problem = 0;
};

/// Whether a display device counts as an adapter.
bool IsListedAdapter(const DeviceStatus& device, bool include_root_enumerated);

/// Drops every vendor equal to its direct predecessor, then every vendor without a back-end in the
/// factory's tree.
void FilterAdapterVendors(std::vector<uint16_t>* vendors);
