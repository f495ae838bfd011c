#pragma once

#include <cstdint>
#include <string>

/// Chooses the section of Ostrel.cfg that holds the per-mode keys.
/// @param mode      an IMMonitor::DM_* number
/// @param displays  a set of IMMonitor::MD_* bits
/// @param section   out; never null
/// @return always true
bool GetModeSection(uint32_t mode, uint32_t displays, std::wstring* section);
