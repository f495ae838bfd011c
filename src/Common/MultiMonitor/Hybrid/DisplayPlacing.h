// Placing one display device at a time, stored without taking effect until the commit.
#pragma once

#include <cstdint>

#include "Common/Win.h"

/// Stores a place for a device, and with it the size that the device has already. Tried three
/// times: with the position alone, with the fields that `dm` came with, and with what the registry
/// has of the device. There is no result: the commit tells.
/// @param width, height  pixels
/// @param dm             in and out, caller's; its position counts. What the last attempt left in
///                       it stays
/// @param device         \\.\DISPLAYn
/// @param primary        make it the primary device
void PlaceDisplay(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device, bool primary);

/// The same with the size in the first attempt, too.
void PlaceDisplayWithSize(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                          bool primary);

/// Either of them.
using PlaceFunction = void (*)(uint32_t width, uint32_t height, DEVMODEA* dm, const char* device,
                               bool primary);

/// Puts what was placed into effect.
/// @return false when Windows refused
bool CommitPlaces();

/// The settings of the primary display now; a usual panel's when they cannot be had.
/// @param dm  out
void ReadPrimarySettings(DEVMODEA* dm);

/// Reads the same through the wide call, and drops it.
void ReadPrimarySettingsWide();
