// All faces together: where the patcher and the simulated GetProcAddress look a function up.
#pragma once

#include <string>
#include <vector>

#include "sim/Face.h"

namespace sim {

/// Every simulated function, in no particular order. A name that two faces claim is reported as a
/// failure once.
const std::vector<const Entry*>& AllEntries();

/// The simulated function `name` of `module` (lower case). Null when it is not simulated.
const Entry* FindEntry(const std::string& module, const std::string& name);

/// The same whatever the module: Windows forwards many functions from one library to another.
const Entry* FindEntryByName(const std::string& name);

/// Whether the function has a failure to answer with. False for those that document none (Sleep,
/// GdiplusShutdown, ...): a fault declared for one could not happen.
bool CanFail(const std::string& name);

/// Whether the Windows of the current machine has the function.
bool IsAvailable(const Entry& entry);

std::string LowerCase(std::string text);

}  // namespace sim
