// Presentation resolutions: what they are, whether the panel can show them, and how they are set.
// Host thread only. The operations that touch the list of items are members of DMSwitch.
#pragma once

#include <cstdint>

#include "Common/Win.h"

class IPhysicalMonitor;

/// Reads the size of a presentation type, in pixels, as Ostrel.cfg has it now.
/// @param type    32 for 800 by 600, 64 for 1024 by 768
/// @param width   out; unchanged for any other type
/// @param height  out; likewise
/// @return false for any other type
bool ReadPresentationSize(uint32_t type, DWORD* width, DWORD* height);

/// Brings the primary display to the resolution of a presentation type.
/// @param type 32 for 800 by 600, 64 for 1024 by 768; any other does nothing
/// @return 0 when nothing was done or the change failed
BOOL ApplyPresentationResolution(uint32_t type);

/// False when the panel is known to be smaller than 1024 by 768; the answer is kept for the
/// process.
bool PanelReaches1024x768();

/// The question behind PanelReaches1024x768, asked once of a new reader that `create` makes.
bool PanelReaches1024x768(IPhysicalMonitor* (*create)());
