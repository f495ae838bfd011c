// The numbers of the exported interface, which differ from the library's own.
#pragma once

#include <cstdint>

#include "Common/MultiMonitor/DisplayNumbers.h"

struct ExportedNumber {
  uint32_t internal;
  uint32_t exported;
};

// Exported mode numbers. Deliberate: every mode without a row (three displays, two adapters) is 0.
constexpr ExportedNumber kExportedModes[] = {
    {DisplayNumbers::DM_SINGLE, 1}, {DisplayNumbers::DM_CLONE, 2}, {DisplayNumbers::DM_EXTEND, 3},
    {DisplayNumbers::DM_HSPAN, 4},  {DisplayNumbers::DM_VSPAN, 5},
};
constexpr uint32_t kExportedModeExtend = 3;
constexpr uint32_t kExportedModeSingle = 1;

// Exported vendor codes. Deliberate: the pseudo-vendors of objects without a vendor's library are
// 0.
constexpr ExportedNumber kExportedVendors[] = {
    {kVendorIntel, 1}, {kVendorAmd, 2}, {kVendorNvidia, 3}, {kVendorVia, 4}, {kVendorSis, 5},
};
constexpr uint32_t kExportedVendorIntel = 1;

// The displays that hosts know. Deliberate: HDMI and DisplayPort never pass, in either direction.
constexpr uint32_t kExportedDisplays[] = {
    DisplayNumbers::MD_NB,
    DisplayNumbers::MD_CRT,
    DisplayNumbers::MD_TV,
    DisplayNumbers::MD_DVI,
};

template <typename Table>
constexpr uint32_t FindExported(const Table& table, uint32_t internal) {
  for (const ExportedNumber& row : table) {
    if (row.internal == internal) return row.exported;
  }
  return 0;
}

/// The number that a host sees for one DM_* value; 0 for a mode that it does not know.
constexpr uint32_t ExportedMode(uint32_t mode) { return FindExported(kExportedModes, mode); }

/// The code that a host sees for a 16-bit PCI vendor id; 0 for any other.
constexpr uint32_t ExportedVendor(uint32_t vendor) {
  return FindExported(kExportedVendors, vendor);
}

/// The part of a display mask that passes between host and library.
constexpr uint32_t ExportedMask(uint32_t displays) {
  uint32_t narrowed = 0;
  for (const uint32_t display : kExportedDisplays) narrowed |= displays & display;
  return narrowed;
}
