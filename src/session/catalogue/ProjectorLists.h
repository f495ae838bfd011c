// The two lists of projectors that need a remedy. Host thread only.
#pragma once

#include <string>
#include <vector>

class IDisplayExtension;

/// Names of projectors that must not be offered 1024 by 768. Read at the first call and kept for
/// the process; never empty.
const std::vector<std::string>& GetProblemProjectors();

/// Names of projectors that need mode and resolution in one driver call. Read from Ostrel.cfg at
/// each call; usually empty.
std::vector<std::string> GetStupidProjectors();

/// True while a monitor of GetProblemProjectors is present.
bool IsProblemProjectorConnected();

/// True when the monitor on the CRT connector is one of `names`.
/// @param ext  the active object's; null is no such monitor
/// @throws invalid_edid_header, invalid_edid_checksum for a damaged EDID
bool IsStupidProjectorOnCrt(const std::vector<std::string>& names, IDisplayExtension* ext);
