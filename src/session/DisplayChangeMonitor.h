// NVIDIA's driver below Windows Vista changes displays for a while after it has answered a switch.
// A resolution that is put back too early is lost, so it is put back only when WM_DISPLAYCHANGE has
// been quiet for a moment. A thread of its own with a hidden window listens; the caller waits.
#pragma once

#include <cstdint>

/// Waits until display changes have come to rest and the selected item's settings have been put
/// back: 1500 ms after the call when no change comes, else 800 ms after the last one (1600 ms when
/// extended desktop was left). The settings are put back on the monitoring thread.
/// Changes that never stop end it after 10000 ms with nothing put back; the caller does not learn
/// of that. A monitoring thread that does not end within another 10000 ms is left to itself, and
/// the library must stay loaded until it has ended.
/// @param previous_mode the mode that was left, 0 when it is not known
/// @note host thread, which it blocks without pumping messages; not reentrant
void RunDisplayChangeMonitor(uint32_t previous_mode);
