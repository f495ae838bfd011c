// The control library of SiS graphics, SisVga.dll, over the one machine model. It is there while a
// working SiS adapter is that brought it (Adapter::vendor_library), and knows the panel,
// televisions and CRTs of the first such adapter.
//
// Its entries count, fail and stand in the journal under their names:
//   machine.Fail("GetCurDeviceState", 1);           // 0, its way to fail; nothing is written
//   machine.Fail("SwitchMode", 1);                  // 0
//   machine.Fail("SwitchMode", 1, 0xFFFFFFFF);      // that result, and nothing is switched
// SwitchMode is journalled with every word of both records. Entries that the library under test
// binds and never calls fail the test when somebody does.
#pragma once

#include <cstdint>
#include <string>

#include "sim/MachineState.h"

namespace sim {

constexpr char kSisLibrary[] = "sisvga.dll";
/// What SwitchMode answers when it has switched: any number but 0 says so.
constexpr int32_t kSisSwitched = 2;

/// What SisVga.dll is in this simulation. Every machine has the record; whether the library can be
/// loaded follows the model.
InventedModule SisLibrary();

/// From now on the library lacks the entry.
/// @throw std::runtime_error when it has no such entry
void RemoveSisEntry(Machine& machine, const std::string& name);

/// GetCurDeviceState tells these words from now on, whatever the model says.
void SetSisState(Machine& machine, uint32_t first, uint32_t second, uint32_t attached);

}  // namespace sim
