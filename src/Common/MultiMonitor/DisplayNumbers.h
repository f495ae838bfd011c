// The numbers of the display model: display flags, mode values and vendor ids, without any
// operating-system header, so that tables and decisions made of them also build outside Windows.
#pragma once

#include <cstdint>

/// Vendor ids that GetVgaVendor reports: PCI vendor ids, and pseudo-ids for objects that use no
/// vendor's library.
constexpr uint32_t kVendorUnknown = 0;
constexpr uint32_t kVendorAmd = 0x1002;
constexpr uint32_t kVendorSis = 0x1039;
constexpr uint32_t kVendorNvidia = 0x10DE;
constexpr uint32_t kVendorVia = 0x1106;
constexpr uint32_t kVendorIntel = 0x8086;
constexpr uint32_t kVendorWin7CCD = 0x045E;
constexpr uint32_t kVendorHybrid = 0xFFFF;

/// Names of the numbers; IMMonitor inherits them, and IMMonitor::MD_NB is the usual spelling.
struct DisplayNumbers {
  /// Display flags, one bit a kind of output.
  enum Display : uint32_t {
    MD_NB = 0x01,    // the notebook's built-in panel
    MD_CRT = 0x02,   // analogue VGA
    MD_TV = 0x04,    // S-Video, composite or component television
    MD_DVI = 0x08,   // DVI
    MD_HDMI = 0x10,  // HDMI
    MD_DP = 0x20,    // DisplayPort
  };

  /// Display modes; exported numbers differ (see ostrel.h).
  enum Mode : uint32_t {
    DM_SINGLE = 1,         // one display active
    DM_CLONE = 2,          // two displays show the same desktop
    DM_EXTEND = 4,         // extended desktop
    DM_HSPAN = 8,          // horizontal span
    DM_VSPAN = 16,         // vertical span
    DM_ADVANCED_P1 = 128,  // the displays of both adapters side by side
    DM_ADVANCED_P2 =
        256,  // a cloned pair on one adapter, a further display of the other to its right
    DM_TRIPLE_EXTEND = 512,  // three displays extended on one adapter
    DM_TRIPLE_CLONE = 1024,  // three displays cloned on one adapter
  };
};

/// Counts the set bits of a display mask.
constexpr uint32_t CountBits(uint32_t mask) {
  uint32_t count = 0;
  for (; mask != 0; mask &= mask - 1) ++count;
  return count;
}
