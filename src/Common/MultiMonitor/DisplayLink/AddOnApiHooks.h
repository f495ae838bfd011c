// The two decisions of the late binding: which module stands for a library, and which function of
// it for a name. A binding asks the first once, then the second for each function.
#pragma once

#include "Common/Win.h"

namespace displaylink {

/// The real library where it may be tried and can be loaded, with a reference for the caller, or
/// the process's own module in its place; the load state follows. Null for any library but
/// AddOnApi64.dll, spelt so.
HMODULE ModuleFor(const char* library);

/// A stand-in for a function where `module` is the process's own, otherwise the module's function;
/// null when it has none.
void* FunctionFor(HMODULE module, const char* name);

}  // namespace displaylink
