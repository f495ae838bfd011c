// How Intel's driver numbers the kinds of device, and the display flags that stand for them. No
// operating-system header, so that the table also builds outside Windows.
#pragma once

#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/DisplayNumbers.h"

struct IntelDeviceType {
  uint32_t display;  // one bit
  uint32_t type;
};

// Read in both directions; ascending by display.
constexpr IntelDeviceType kIntelDeviceTypes[] = {
    {0, 0},  // no device
    {DisplayNumbers::MD_NB, 2},
    {DisplayNumbers::MD_CRT, 1},
    {DisplayNumbers::MD_TV, 4},
    {DisplayNumbers::MD_DVI, 3},
    {DisplayNumbers::MD_HDMI, 5},
    {DisplayNumbers::MD_DP, 7},
    {0x40, 6},  // without a name here, and passed on as it stands
};

/// @return the driver's type of a display; 0 for a mask that is not exactly one known display
constexpr uint32_t IntelTypeOfDisplay(uint32_t display) {
  for (const IntelDeviceType& row : kIntelDeviceTypes) {
    if (row.display == display) return row.type;
  }
  return 0;
}

/// @return one display bit; 0 for an unknown type
constexpr uint32_t DisplayOfIntelType(uint32_t type) {
  for (const IntelDeviceType& row : kIntelDeviceTypes) {
    if (row.type == type) return row.display;
  }
  return 0;
}

/// Appends the type of every known display of a mask, ascending by display.
/// @return true when there is any
inline bool IntelTypesOfDisplays(uint32_t displays, std::vector<uint32_t>* types) {
  bool any = false;
  for (const IntelDeviceType& row : kIntelDeviceTypes) {
    if ((displays & row.display) == 0) continue;
    types->push_back(row.type);
    any = true;
  }
  return any;
}
