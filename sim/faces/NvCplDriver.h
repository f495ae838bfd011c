// The library behind NVIDIA's control panel, NvCpl.dll, over the one machine model. It is there
// while a working NVIDIA adapter is that brought its driver's libraries (Adapter::vendor_library).
//
// Its entries count and fail under their names:
//   machine.Fail("NvGetDisplayInfo", 2);                 // FALSE
//   machine.Fail("NvGetWindowsDisplayState", 1, 9);      // that state; 0, "failed", without a code
//   machine.Fail("dtcfg", 1);                            // the program starts and changes nothing
// A failing call writes nothing. `dtcfg` is what rundll32.exe runs, at once or later (Programs.h);
// when it has changed the view, Windows tells of one display change. The entries that the library
// under test binds and never calls fail the test when somebody does.
#pragma once

#include <string>

#include "sim/MachineState.h"

namespace sim {

constexpr char kNvCplLibrary[] = "nvcpl.dll";

/// What NvCpl.dll is in this simulation. Every machine has the record; whether the library can be
/// loaded follows the model.
InventedModule NvCplLibrary();

/// From now on the library lacks the entry.
/// @throw std::runtime_error when it has no such entry
void RemoveNvCplEntry(Machine& machine, const std::string& name);

}  // namespace sim
