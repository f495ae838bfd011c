// Raises the refresh rate of an HDMI monitor that has come up below 59 Hz: its preferred timing is
// set anew through Windows' display configuration functions, whatever library controls the display.
#pragma once

#include "Common/Win.h"

class IMMonitor;
class Win7CCDApi;

/// @param m  the display controller; never null
/// @return true when the HDMI display shows less than 59 Hz; false also when that cannot be read
bool HdmiRefreshRateIsLow(IMMonitor* m);

/// Looks whether the HDMI display is active below 59 Hz and raises its rate then. Windows 7 or
/// later only.
/// @param m  the display controller; null does nothing
void AdjustHdmiRefreshRate(IMMonitor* m);

/// Gives the first active HDMI path the timing in `record`.
/// @param api     bound to its library
/// @param record  as Windows fills it; a zeroed one is applied as it is
/// @return false when Windows could not be asked or refused; what failed to be set is logged
bool ApplyPreferredTiming(Win7CCDApi* api, const DISPLAYCONFIG_TARGET_PREFERRED_MODE& record);
