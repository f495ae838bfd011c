// A temporary folder that outlives the machine: what the library remembers there is found by the
// next process that puts the same notebook up.
#pragma once

#include <string>

#include "sim/Machine.h"

namespace sim {

/// From now on GetTempPath answers `folder`, which is made where it is missing and never deleted.
/// To be called before the library is loaded.
/// @throws std::runtime_error when there is no such folder and none can be made
void KeepTempFolder(Machine& machine, const std::wstring& folder);

}  // namespace sim
