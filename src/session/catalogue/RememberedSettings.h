// What Ostrel.ini remembers: the resolution of each mode per set of monitors, and the mode last
// applied. Host thread only. No result of a profile call is looked at: a failed write is silent, a
// failed read gives the default.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Names one section of Ostrel.ini. `section` is fully determined by the other three.
struct SettingsKey {
  uint32_t mode = 0;
  uint32_t displays = 0;
  std::string section;    // "<mode>,<displays> | <signature>"
  std::string signature;  // the monitors present, see GetMonitorSignature
};

/// Builds the path of Ostrel.ini, in the user's temporary folder, unless it is known already.
void EnsureSettingsPath();

/// The path of Ostrel.ini; empty before EnsureSettingsPath.
const std::string& SettingsPath();

/// Names the monitors present: their names in ascending order, joined with ",". Empty when none has
/// a name.
void GetMonitorSignature(std::string* signature);

/// The section of Ostrel.ini for a mode on displays with these monitors.
std::string MakeSettingsSection(uint32_t mode, uint32_t displays, const std::string& signature);

/// A key with an empty signature. Such a section is never written, so that reads of it give the
/// defaults.
SettingsKey MakeSettingsKeyForDisplays(uint32_t mode, uint32_t displays);

/// The first key whose mode, displays and signature are all equal; null when there is none.
const SettingsKey* FindSettingsKey(const std::vector<SettingsKey>& keys, uint32_t mode,
                                   uint32_t displays, const std::string& signature);

/// Records what was applied last, in the section "Active Display Mode". The path must be known.
void WriteActiveDisplayMode(uint32_t mode, uint32_t displays, uint32_t presentation_type);

/// The presentation type in the section "Active Display Mode": 0, 32 or 64, or whatever stands
/// there; 0 by default.
uint32_t ReadActivePresentationType();
