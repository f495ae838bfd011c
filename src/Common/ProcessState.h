// Process-wide values that more than one layer reads. Plain data with constant initialisation; no
// lock, see the threading rules in docs/architecture.md.
#pragma once

#include <cstdint>

#include "Common/Win.h"

/// The library's own instance handle, stored when the library is attached to the process.
extern HINSTANCE g_moduleInstance;

/// Last value given to Ostrel_SetLassoBoxStatus; non-zero withdraws the presentation items and
/// changes how Win7CCD sets a mode.
extern uint32_t g_lassoBoxStatus;
