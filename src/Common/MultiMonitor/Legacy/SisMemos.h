// The sizes that the SiS back-end knows for its displays, and what it takes for one that it knows
// nothing of. No Windows here.
#pragma once

#include <cstdint>
#include <initializer_list>

// Device bits of the library. Reports have either CRT bit; records have the second one.
constexpr uint32_t kSisTv = 1;
constexpr uint32_t kSisLcd = 2;
constexpr uint32_t kSisOtherCrt = 4;
constexpr uint32_t kSisCrt = 8;

/// One display of a switch: the library takes no display without a full mode.
struct SisSwitchRecord {
  uint32_t device = 0;
  uint32_t width = 0;   // pixels
  uint32_t height = 0;  // pixels
  uint32_t color_depth = 0;
  uint32_t frequency = 0;  // Hz
};
static_assert(sizeof(SisSwitchRecord) == 20, "the library's record");

/// What is remembered of one display in one mode.
struct SisDisplayMemo {
  bool dirty = false;  // the size is known
  SisSwitchRecord record;
};

/// Gives a memo that is not known the size of the first known one among `others`, or 1280 x 800 at
/// 16 bits and 60 Hz. It is known then. A memo that is known stays as it is.
void FillSisMemo(SisDisplayMemo* memo, std::initializer_list<const SisDisplayMemo*> others);
