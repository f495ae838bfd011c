// What must stop a switch, or shape it, before it starts. The guards fail towards allowing the
// switch. The keys that turn them on are read through Common/Config.h.
#pragma once

/// True on Windows 7 Starter, which has no extended desktop.
bool IsStarterEdition();

/// True while Windows Media Player shows a video, playing or paused.
bool IsWindowsMediaPlayerPlaying();

/// True while PowerDVD 8 shows a video.
bool IsPowerDVDPlaying();

/// Turns the driver's mode pruning off for a television that needs it, on Windows XP and Server
/// 2003.
void ApplyTV4810Workaround();
