// Where Ostrel.ini lies and how its sections are named: what back-ends and the session share of it.
// Host thread only.
#pragma once

#include <cstdint>
#include <string>

/// Names one section of Ostrel.ini. `section` is fully determined by the other three.
struct SettingsKey {
  uint32_t mode = 0;
  uint32_t displays = 0;
  std::string section;    // "<mode>,<displays> | <signature>"
  std::string signature;  // the monitors present, see GetMonitorSignature
};

/// Builds the path of Ostrel.ini, in the user's temporary folder, unless it is known already. It
/// stays empty while Windows names no such folder; nothing is then read or written.
void EnsureSettingsPath();

/// The path of Ostrel.ini; empty before EnsureSettingsPath.
const std::string& SettingsPath();

/// The section of Ostrel.ini for a mode on displays with these monitors.
std::string MakeSettingsSection(uint32_t mode, uint32_t displays, const std::string& signature);

/// A key with an empty signature. Such a section is never written, so that reads of it give the
/// defaults.
SettingsKey MakeSettingsKeyForDisplays(uint32_t mode, uint32_t displays);
