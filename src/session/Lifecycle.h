// The two sides of the library, which share one display object and one connection to the
// DisplayLink add-on host: the switch side (the pop-up) and the extend-mode side (queries and
// commands). Host thread only; no lock.
#pragma once

#include <cstdint>

#include "Common/Win.h"

class DMSwitch;

extern bool g_switchReady;           // the switch side is up
extern bool g_extendModeReady;       // the extend-mode side is up
extern ULONG_PTR g_gdiplusToken;     // 0 while GDI+ is not started
extern DMSwitch* g_pDMSwitchDialog;  // the one session object; lives as long as the switch side

/// Readies the display object for the first side; the second one shares it.
/// @return false when there is no object for this machine or its library cannot be initialised
bool InitialMultiMonitorObject();

/// Lets go of the add-on host, and of the display object when no side is up any longer.
void ReleaseMultiMonitorObject();

/// Starts GDI+, the display object and the session object. @return 0 with GDI+ stopped again
BOOL StartSwitchSide();
/// Ends the switch side; a selection that is still open is not applied.
void EndSwitchSide();

/// Starts the extend-mode side. @return 0 on failure
BOOL StartExtendModeSide();
void EndExtendModeSide();
