// What Ostrel.ini remembers: the resolution of each mode per set of monitors, and the mode last
// applied. Host thread only. No result of a profile call is looked at: a failed write is silent, a
// failed read gives the default.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/MultiMonitor/DisplayNumbers.h"
#include "Common/MultiMonitor/SettingsKeys.h"

/// The external displays whose settings in an extended desktop are remembered, in the order in
/// which they are written and looked for.
// Deliberate: television and the wireless display have no keys, so that theirs are not remembered.
constexpr uint32_t kRememberedExternals[] = {DisplayNumbers::MD_CRT, DisplayNumbers::MD_DVI,
                                             DisplayNumbers::MD_HDMI, DisplayNumbers::MD_DP};

/// Names the monitors present: their names in ascending order, joined with ",". Empty when none has
/// a name.
void GetMonitorSignature(std::string* signature);

/// The first key whose mode, displays and signature are all equal; null when there is none.
const SettingsKey* FindSettingsKey(const std::vector<SettingsKey>& keys, uint32_t mode,
                                   uint32_t displays, const std::string& signature);

/// What a section remembers for one display: pixels, bits per pixel, Hz, quarter turns.
struct RememberedDisplay {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bits = 32;
  uint32_t frequency = 60;
  uint32_t orientation = 0;
};

/// Reads what `section` remembers for a display.
/// @param display  the MD_* bit whose suffix the keys carry, of kRememberedExternals; anything else
///                 means the plain keys, those of the panel or of the whole desktop
/// @param out      whatever stands there: missing keys give 0 by 0, 32 bits, 60 Hz, no turn
/// @return false when nothing is remembered: width or height is 0
bool ReadRememberedDisplay(const std::string& section, uint32_t display, RememberedDisplay* out);

/// Reads the size only, as ReadRememberedDisplay does.
/// @param width   out, pixels
/// @param height  out, pixels; when it is null neither is written
void ReadDisplayResolution(const SettingsKey& key, uint32_t* width, uint32_t* height,
                           uint32_t display);

/// Records what was applied last, in the section "Active Display Mode". The path must be known.
void WriteActiveDisplayMode(uint32_t mode, uint32_t displays, uint32_t presentation_type);

/// The presentation type in the section "Active Display Mode": 0, 32 or 64, or whatever stands
/// there; 0 by default.
uint32_t ReadActivePresentationType();
