// What an import of the DLL under test is bound to.
#pragma once

#include "sim/Patcher.h"

namespace sim {

/// Default deny: the simulated function, the real one when it is listed as such, or a trap. Throws
/// when the function is simulated but this Windows has none: the loader would refuse the DLL.
void* ResolveImport(const Import& import, void* real);

}  // namespace sim
