// The display adapters present.
#include <algorithm>

#include "Common/MultiMonitor/HasSeveralGraphicsVendors.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/MMObjectFactoryDevices.h"
#include "Common/MultiMonitor/MMObjectFactoryState.h"
#include "Common/MultiMonitor/VendorBackends.h"
#include "Common/win_util.h"

bool EnumerateDisplayAdapterVendors(bool include_root_enumerated, std::vector<uint16_t>* vendors) {
  DisplayAdapterDevices devices;
  bool listed = false;
  for (uint32_t index = 0; devices.Select(index); ++index) {
    const char* const hardware_id = devices.HardwareId();
    if (hardware_id == nullptr) continue;
    if (!IsListedAdapter(devices.Status(), include_root_enumerated)) continue;
    vendors->push_back(VendorFromHardwareId(hardware_id));
    listed = true;
  }
  return listed;
}

std::vector<uint16_t> ListAdapterVendors(bool include_root_enumerated) {
  std::vector<uint16_t> vendors;
  EnumerateDisplayAdapterVendors(include_root_enumerated, &vendors);
  FilterAdapterVendors(&vendors);
  return vendors;
}

bool ListsVendor(const std::vector<uint16_t>& vendors, uint32_t vendor) {
  return std::find(vendors.begin(), vendors.end(), vendor) != vendors.end();
}

bool HasSeveralGraphicsVendors() { return ListAdapterVendors(true).size() > 1; }

bool IsWindows7OrLater() { return win_util::GetWinVersion() >= win_util::WINVERSION_WIN7; }

bool ShouldUseDisplayLinkWorkaround(uint32_t vendor) {
  if (!IsWindows7OrLater()) return false;
  if (vendor != kVendorIntel && vendor < kVendorHybrid) return false;
  return IsDisplayLinkServicePresent();
}

bool IsDisplayLinkWorkaroundActive() {
  const std::vector<uint16_t> vendors = ListAdapterVendors(true);
  return std::any_of(vendors.begin(), vendors.end(), ShouldUseDisplayLinkWorkaround);
}
