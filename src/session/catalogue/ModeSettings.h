// The per-mode keys of Ostrel.cfg that say which resolution a mode gets. Read from the file at each
// use; host thread only.
#pragma once

#include <cstdint>

/// Values of "Setting Type"; every other one means a fixed resolution.
constexpr uint32_t kSettingLeaveAlone = 0;
constexpr uint32_t kSettingBest = 2;

/// What is done when nothing is remembered, see above; 2 by default.
uint32_t GetSettingType(uint32_t mode, uint32_t displays);

/// Not 0: what is remembered is not put back.
uint32_t GetAdjustPolicy(uint32_t mode, uint32_t displays);

/// The fixed resolution, 1024 by 768 by default.
/// @param width, height  out, pixels; never null
/// @return always true
bool GetFixedResolution(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height);

/// The upper limit of the resolution.
/// @param width, height  out, pixels; never null
/// @return false when there is no limit: either is 0
bool GetMaxResolution(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height);
