// What a machine with two adapters decides from numbers alone: whom a display belongs to, which
// mode two answers make, and which display goes on which device. No operating-system header, so
// that it also builds outside Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/MultiMonitor/DisplayNumbers.h"

enum class HybridAdapter { kNone, kIntel, kNvidia };

/// @param display  one MD_* bit; anything else belongs to none
HybridAdapter AdapterOfDisplay(uint32_t display);

/// What the three objects say of the moment, Intel's (i), the operating system's (c) and NVIDIA's
/// (n); what nobody answered is 0.
struct HybridAnswers {
  bool i_ok = false;
  uint32_t i_mode = 0;
  uint32_t i_disp = 0;
  uint32_t i_conn_count = 0;
  uint32_t c_mode = 0;
  uint32_t c_disp = 0;
  bool n_ok = false;
  uint32_t n_mode = 0;
  uint32_t n_disp = 0;
  uint32_t n_conn_count = 0;
  uint32_t n_active = 0;
};

struct HybridMode {
  bool known;
  uint32_t mode;      // DM_*
  uint32_t displays;  // mask of the active ones
};

/// One mode out of three answers: the first rule that fits decides.
HybridMode DecideHybridMode(const HybridAnswers& answers);

/// A display that goes on an entry of the list of NVIDIA's devices.
struct NvidiaPlacing {
  uint32_t display;
  size_t entry;
};

/// The digital displays of an arrangement in their order from left to right.
/// @param connected       mask of what is connected
/// @param wanted          mask of what is to be placed
/// @param nvidia_devices  how many entries the list has
std::vector<NvidiaPlacing> PlacingsSideBySide(uint32_t connected, uint32_t wanted,
                                              size_t nvidia_devices);
/// The same beside a cloned pair.
std::vector<NvidiaPlacing> PlacingsBesideClone(uint32_t connected, uint32_t wanted,
                                               size_t nvidia_devices);
