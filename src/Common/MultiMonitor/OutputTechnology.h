// How Windows' numbers for outputs, topologies and pixel formats map to the library's. Tables and
// the walks over them; no operating-system header, so that they also build outside Windows.
#pragma once

#include "Common/MultiMonitor/DisplayNumbers.h"

#include <algorithm>
#include <cstdint>
#include <vector>

/// DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY as unsigned numbers.
constexpr uint32_t kTechnologyInternal = 0x80000000;
constexpr uint32_t kTechnologyOther = 0xFFFFFFFF;
constexpr uint32_t kTechnologyHD15 = 0;
constexpr uint32_t kTechnologySVideo = 1;
constexpr uint32_t kTechnologyComposite = 2;
constexpr uint32_t kTechnologyComponent = 3;
constexpr uint32_t kTechnologyDVI = 4;
constexpr uint32_t kTechnologyHDMI = 5;
constexpr uint32_t kTechnologyDisplayPortExternal = 10;
constexpr uint32_t kTechnologyDisplayPortEmbedded = 11;

// One row per technology that has a display flag. A technology without a row has none, but its path
// still counts.
struct TechnologyFlag {
  uint32_t technology;
  uint32_t flag;
};
constexpr TechnologyFlag kTechnologyFlags[] = {
    {kTechnologyInternal, DisplayNumbers::MD_NB},
    {kTechnologyOther, DisplayNumbers::MD_HDMI},
    {kTechnologyHD15, DisplayNumbers::MD_CRT},
    {kTechnologySVideo, DisplayNumbers::MD_TV},
    {kTechnologyComposite, DisplayNumbers::MD_TV},
    {kTechnologyComponent, DisplayNumbers::MD_TV},
    {kTechnologyDVI, DisplayNumbers::MD_DVI},
    {kTechnologyHDMI, DisplayNumbers::MD_HDMI},
    {kTechnologyDisplayPortExternal, DisplayNumbers::MD_DP},
    {kTechnologyDisplayPortEmbedded, DisplayNumbers::MD_DP},
};

/// @return one MD_* bit, or 0 for a technology that has none
constexpr uint32_t FlagOfTechnology(uint32_t technology) {
  for (const TechnologyFlag& row : kTechnologyFlags) {
    if (row.technology == technology) return row.flag;
  }
  return 0;
}

// The technology that a display is looked up by.
struct DisplayTechnology {
  uint32_t display;
  uint32_t technology;
};
constexpr DisplayTechnology kDisplayTechnologies[] = {
    {DisplayNumbers::MD_NB, kTechnologyInternal},
    {DisplayNumbers::MD_CRT, kTechnologyHD15},
    {DisplayNumbers::MD_DVI, kTechnologyDVI},
    {DisplayNumbers::MD_HDMI, kTechnologyHDMI},
    {DisplayNumbers::MD_DP, kTechnologyDisplayPortExternal},
    {DisplayNumbers::MD_TV, kTechnologySVideo},
};

/// @return the technology of a display; "other" for a mask that is not exactly one known display
constexpr uint32_t TechnologyOfDisplay(uint32_t display) {
  for (const DisplayTechnology& row : kDisplayTechnologies) {
    if (row.display == display) return row.technology;
  }
  return kTechnologyOther;
}

// The two technologies by which the native size of a display is looked for.
struct NativeTechnologies {
  uint32_t display;
  uint32_t first;
  uint32_t second;
};
// Deliberate: DVI and HDMI look for both, whichever comes first.
constexpr NativeTechnologies kNativeTechnologies[] = {
    {DisplayNumbers::MD_NB, kTechnologyInternal, kTechnologyInternal},
    {DisplayNumbers::MD_CRT, kTechnologyHD15, kTechnologyHD15},
    {DisplayNumbers::MD_DVI, kTechnologyDVI, kTechnologyHDMI},
    {DisplayNumbers::MD_HDMI, kTechnologyDVI, kTechnologyHDMI},
    {DisplayNumbers::MD_DP, kTechnologyDisplayPortExternal, kTechnologyDisplayPortEmbedded},
};

/// Whether a path of `technology` is the one whose native size a display has.
constexpr bool IsNativeTechnology(uint32_t display, uint32_t technology) {
  for (const NativeTechnologies& row : kNativeTechnologies) {
    if (row.display == display) return technology == row.first || technology == row.second;
  }
  // Deliberate: what has no row is taken for the panel.
  return technology == kTechnologyInternal;
}

/// DISPLAYCONFIG_TOPOLOGY_ID; the same numbers are SDC_TOPOLOGY_* flags.
constexpr uint32_t kTopologyInternal = 1;
constexpr uint32_t kTopologyClone = 2;
constexpr uint32_t kTopologyExtend = 4;
constexpr uint32_t kTopologyExternal = 8;

struct TopologyMode {
  uint32_t topology;
  uint32_t mode;
};
constexpr TopologyMode kTopologyModes[] = {
    {kTopologyInternal, DisplayNumbers::DM_SINGLE},
    {kTopologyClone, DisplayNumbers::DM_CLONE},
    {kTopologyExtend, DisplayNumbers::DM_EXTEND},
    {kTopologyExternal, DisplayNumbers::DM_SINGLE},
};

/// @return a DM_* value; 0 for a topology that has none
constexpr uint32_t ModeOfTopology(uint32_t topology) {
  for (const TopologyMode& row : kTopologyModes) {
    if (row.topology == topology) return row.mode;
  }
  return 0;
}

/// The topology to ask for when `mode` is wanted on the displays of a mask.
constexpr uint32_t TopologyOfMode(uint32_t mode, uint32_t displays) {
  if (mode == DisplayNumbers::DM_CLONE) return kTopologyClone;
  if (mode == DisplayNumbers::DM_EXTEND) return kTopologyExtend;
  if (mode == DisplayNumbers::DM_SINGLE && (displays & DisplayNumbers::MD_NB) == 0) {
    return kTopologyExternal;
  }
  return kTopologyInternal;
}

// DISPLAYCONFIG_PIXELFORMAT: 1 to 4 are 8, 16, 24 and 32 bits per pixel, 5 is none of these.
constexpr uint32_t PixelFormatFromBits(uint32_t bits) {
  if (bits < 16) return 1;
  if (bits < 24) return 2;
  if (bits < 32) return 3;
  return 4;
}
constexpr uint32_t BitsFromPixelFormat(uint32_t pixel_format) {
  if (pixel_format == 1) return 8;
  if (pixel_format == 2) return 16;
  if (pixel_format == 3) return 24;
  return 32;
}

/// Brings paths into the order that all users share: ascending by technology as a signed number, so
/// that internal and other come first; equal ones keep their order, and only the first of them
/// stays.
/// @param technology_of  gives a path's technology as uint32_t
// Deliberate: one path a technology stays, so that two HDMI outputs count once.
template <typename Path, typename TechnologyOf>
void NormalisePaths(std::vector<Path>* paths, TechnologyOf technology_of) {
  const auto less = [&technology_of](const Path& a, const Path& b) {
    return static_cast<int32_t>(technology_of(a)) < static_cast<int32_t>(technology_of(b));
  };
  const auto equal = [&technology_of](const Path& a, const Path& b) {
    return technology_of(a) == technology_of(b);
  };
  std::stable_sort(paths->begin(), paths->end(), less);
  paths->erase(std::unique(paths->begin(), paths->end(), equal), paths->end());
}
