// BSTRs: real ones, in the ledger until they are freed or handed to somebody who keeps them.
#pragma once

#include <cstdint>

#include "Common/Win.h"
#include "sim/Face.h"

#include <oleauto.h>

namespace sim {

/// The caller gives up a BSTR for good: it leaves the ledger, and freeing it fails the test.
/// Handing over the same one again is no second time. What is no BSTR of the DLL's fails the test,
/// in the name of `function`.
void KeepBasicString(const char* function, BSTR text);
/// How many were handed over.
uint64_t KeptBasicStrings(const Machine& machine);

}  // namespace sim
