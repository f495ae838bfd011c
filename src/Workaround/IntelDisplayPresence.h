// Whether the machine has a graphics adapter of Intel's, as Windows' device list tells it.
#pragma once

/// @return true when a display device that is present has Intel's vendor id in its hardware id;
/// false also when the devices cannot be listed
bool IsIntelDisplayPresent();
