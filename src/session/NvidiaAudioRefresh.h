// NVIDIA on Windows XP keeps a switched-off HDMI output's sound device for a while. Detecting the
// displays again, for as long as there is more than one sound device, makes the driver let go of
// it.
#pragma once

#include <cstdint>

class IMMonitor;

/// Detects the displays once and starts the repeated detection, on NVIDIA under Windows XP or
/// earlier after a switch to one display; otherwise nothing.
void StartNvidiaAudioRefresh(IMMonitor* object, uint32_t mode, uint32_t displays);

/// Runs `detect` every 2000 ms, at most four times, while the system has two or more wave-out
/// devices. Needs the host's message loop on this thread. A second start replaces the first.
void RepeatDetection(void (*detect)());

/// Ends a repeated detection that is still pending.
void StopDetection();
