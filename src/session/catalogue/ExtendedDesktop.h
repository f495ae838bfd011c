// The resolutions of an extended desktop: the panel, and one external display to its right. Each
// display's settings are tested and stored, and then taken up together by one commit. Host thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "session/catalogue/RememberedSettings.h"

class Win7CCDApi;

/// The devices that show a desktop, in Windows' order, mirroring drivers left out.
void ListDesktopDevices(std::vector<std::string>* names);

/// The device that shows a display now, found by its connector.
/// @param bit   one MD_* bit
/// @param name  out; stays as it was when no active display hangs there
void GetDeviceNameOfDisplay(Win7CCDApi* api, uint32_t bit, std::string* name);

/// Tests settings for a device and stores them until the next commit.
/// @param device       \\.\DISPLAYn
/// @param dm           what its dmFields names
/// @param set_primary  make it the primary display
/// @return false when the device refused them, which is logged
bool StageDisplaySettings(const char* device, DEVMODEA* dm, bool set_primary);

/// Stores the native size of a display's monitor, with 32 bits and 60 Hz.
/// @param bit          one MD_* bit
/// @param name         its device
/// @param set_primary  make it the primary display, at the origin
/// @param previous     where it stands; null: where it is now, or at the origin as primary display
/// @param out          what was stored, also when it was refused; may be null, or `previous`
/// @return false when the device cannot be read or refused it
/// @throws std::exception when the monitor cannot be asked
bool StageNativeResolution(uint32_t bit, const std::string& name, bool set_primary,
                           const DEVMODEA* previous, DEVMODEA* out);

/// Stores what `key` remembers for an external display.
/// @return false when nothing is remembered or it was refused
bool StageRememberedDisplay(const std::string& name, uint32_t bit, const SettingsKey& key);

/// Puts back what `key` remembers for panel and external display.
/// @return false when there is no second desktop, nothing is remembered for the panel or it refused
///         it, or the commit failed
bool ApplyRememberedExtendSettings(uint32_t displays, const SettingsKey& key);

/// Gives panel and external display their native sizes, side by side.
void ApplyExtendedDefault(uint32_t displays);
