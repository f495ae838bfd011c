// Presentation modes and projectors that need a remedy. The operations that touch the list of items
// are members of DMSwitch.
#pragma once

#include <cstdint>

#include "Common/Win.h"

/// Brings the primary display to the resolution of a presentation type.
/// @param type 32 for 800 by 600, 64 for 1024 by 768; any other does nothing
/// @return 0 when nothing was done or the change failed
BOOL ApplyPresentationResolution(uint32_t type);
