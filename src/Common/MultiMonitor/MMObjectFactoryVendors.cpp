#include "Common/MultiMonitor/MMObjectFactoryVendors.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

#include "Common/HexWord.h"
#include "Common/MultiMonitor/DisplayNumbers.h"

namespace {

// SiS and VIA have back-ends, too, but those are reached by an explicit vendor id only.
// Deliberate: a machine with nothing but SiS or VIA hardware counts as one without an adapter.
constexpr uint16_t kSupportedVendors[] = {kVendorAmd, kVendorNvidia, kVendorIntel};

constexpr uint32_t kRootEnumerated = 0x1;  // DN_ROOT_ENUMERATED
constexpr uint32_t kProblemDisabled = 22;  // CM_PROB_DISABLED

constexpr size_t kVendorDigits = 4;

bool IsSupportedVendor(uint16_t vendor) {
  return std::find(std::begin(kSupportedVendors), std::end(kSupportedVendors), vendor) !=
         std::end(kSupportedVendors);
}

}  // namespace

uint16_t VendorFromHardwareId(const char* hardware_id) {
  const char* underscore = std::strchr(hardware_id, '_');
  if (underscore == nullptr) return 0;
  return ParseHexWord(std::string(underscore + 1).substr(0, kVendorDigits).c_str());
}

bool IsListedAdapter(const DeviceStatus& device, bool include_root_enumerated) {
  if (!include_root_enumerated && (device.status & kRootEnumerated) != 0) return false;
  // Deliberate: a device whose status cannot be read is kept, and no other problem drops one.
  return !device.known || device.problem != kProblemDisabled;
}

void FilterAdapterVendors(std::vector<uint16_t>* vendors) {
  // Deliberate: the list is not sorted first, so that Intel, NVIDIA, Intel stays three.
  vendors->erase(std::unique(vendors->begin(), vendors->end()), vendors->end());
  vendors->erase(std::remove_if(vendors->begin(), vendors->end(),
                                [](uint16_t vendor) { return !IsSupportedVendor(vendor); }),
                 vendors->end());
}
