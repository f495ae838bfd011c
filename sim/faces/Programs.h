// The programs that the library starts, apart from what each of them does.
#pragma once

#include <cstdint>

#include "sim/Machine.h"

namespace sim {

/// Programs started from now on do their work that many milliseconds later, beside the library,
/// which goes on at once. 0, as on a new machine: before CreateProcess returns.
void LetProgramsTake(Machine& machine, uint32_t milliseconds);

}  // namespace sim
