#pragma once

#include "Common/Win.h"

/// Centres a window on its owner when that is visible and not minimised, else on the work area of
/// the monitor nearest to it, and keeps it inside that area. A child window is centred in its
/// parent. Leaves it alone when Windows does not tell the monitor.
void CenterWindowOnMonitor(HWND window);
