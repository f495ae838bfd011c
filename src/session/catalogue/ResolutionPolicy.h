// The resolution after a switch: what is remembered for the mode, or what the configuration asks
// for. DMSwitch::RestoreDisplaySettings, which begins the decision, is in the same source file;
// what concerns an extended desktop is in ExtendedDesktop.h. Host thread, with the mode switched
// already.
#pragma once

#include <cstdint>

#include "Common/Win.h"
#include "session/catalogue/RememberedSettings.h"

/// Reads the settings of a device as they are now.
/// @param device  \\.\DISPLAYn; null for the primary display
/// @param fields  what dmFields of the record says afterwards
/// @param dm      out; cleared first
/// @return false when they cannot be read
bool ReadCurrentSettings(const char* device, DWORD fields, DEVMODEA* dm);

/// Puts back what `key` remembers, for all displays of the mode.
/// @return false when nothing is remembered or it cannot be set
bool ApplyRememberedSettings(uint32_t mode, uint32_t displays, const SettingsKey& key);

/// The same for every mode that shows one desktop; also a smaller size when the remembered one is
/// refused.
bool ApplyRememberedSingleSettings(const SettingsKey& key);

/// Does what "Setting Type" of the mode says.
void ApplyDefaultPolicy(uint32_t mode, uint32_t displays);

/// Brings the primary display to the best mode it lists, within the mode's limit.
/// @return false when it lists none that will do, or refuses them all
bool ApplyBestResolution(uint32_t mode, uint32_t displays);

/// Brings the primary display to the configured resolution, if it takes it.
void ApplyFixedResolution(uint32_t mode, uint32_t displays);
