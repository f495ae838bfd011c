// Notebooks and televisions on which Intel's driver does not switch to the HDMI display alone,
// while its own hotkey does. Ostrel.cfg says which; all of it is read once per process. Host thread
// only.
#pragma once

/// Whether this notebook, with the monitors that are present, needs the hotkey.
bool UseHdmiHotkeyWorkaround();

/// Presses the driver's hotkey for the HDMI display, Ctrl+Alt+F4, with the desktop in front, where
/// no program takes it for its own.
void PressIntelHdmiHotkeyOnDesktop();
