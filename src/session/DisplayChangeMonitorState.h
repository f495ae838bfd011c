// What the display-change monitor keeps for the process, for the monitor itself and its tests.
#pragma once

#include <atomic>

#include "Common/Win.h"

/// Signalled when the restore has run; exists only during RunDisplayChangeMonitor. Both threads use
/// it: the host's may have given up and closed it while the other one still restores.
extern std::atomic<HANDLE> g_ResetDisplaySettingsCompletedEvent;

// The host thread's.
extern HANDLE g_DCMThreadHandle;
extern DWORD g_DCMThreadID;

/// The pending restore timer; 0 when none. The monitoring thread's; one that an earlier run has
/// left behind takes it, too, when its own timer fires.
extern std::atomic<UINT_PTR> g_resetTimer;

// The monitoring thread's. The period is set before it starts.
extern uint32_t g_resetTimerPeriod;  // milliseconds to wait after a WM_DISPLAYCHANGE
extern bool g_monitorClassRegistered;
