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
/// devices and `detect` gives true. Needs the host's message loop on this thread. A second start
/// replaces the first. What is pending outlives the session and the switch side; it ends when the
/// library is unloaded, which the same thread must do.
void RepeatDetection(bool (*detect)());
