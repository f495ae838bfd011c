// On NVIDIA below Windows Vista the resolution is put back only when display changes have come to
// rest.
#pragma once

#include <cstdint>

/// Waits until display changes have stopped and the selected item's settings have been put back.
/// @param previous_mode the mode that was left, 0 when it is not known; extended desktop takes
/// longer to settle
/// @note host thread, which it blocks for at most 20 seconds
void RunDisplayChangeMonitor(uint32_t previous_mode);
