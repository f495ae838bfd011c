// Memory that runs out: the white-box build takes all of the library's memory through here.
#pragma once

#include <cstdint>

/// Refuses the `nth` piece of memory from now on (1 = the next), once; 0 refuses none.
/// @return true when an earlier refusal was still to come, and is given up now
/// @note one thread at a time
bool RefuseMemory(uint32_t nth);

/// How many pieces of memory the library has taken and not given back. One that a test's code gives
/// back for it, a text that it returned for one, is not seen to come back.
int64_t PiecesOut();
