// The programming interface of the Intel graphics driver: the COM class "IgfxExt.CUIExternal" with
// the interface ICUIExternal8, over the one machine model. It is there when an Intel adapter is,
// unless the machine says that it is not installed (Adapter::vendor_library). It is a COM object of
// a class that this process registers, so that COM's own CoCreateInstance finds it; the
// registration ends with the machine.
//
// Its operations count and fail under names of their own:
//   machine.Fail("ICUIExternal8::ChangeActiveDevices", 1);              // E_FAIL
//   machine.Fail("ICUIExternal8::GetDeviceData", 2, E_ACCESSDENIED);    // that result
//   machine.Fail("ICUIExternal8::ChangeActiveDevices", 1, 5);           // S_OK, and `err` is 5
// A failing call changes nothing and leaves its outputs, `err` apart, as they were.
//
// The library keeps for good the reference that CoCreateInstance gave it, and every BSTR that it
// handed to EnumDevices. Both are its to keep and stand in no ledger; giving one of them back fails
// the test, and so does a reference or a BSTR beyond these that is not given back.
#pragma once

#include <cstdint>
#include <string>

#include "sim/MachineState.h"

namespace sim {

/// The class and its program id in lower case; null when this machine's driver does not bring it.
const ComClass* FindIntelDriver(const Model& model);
constexpr char kIntelDriverProgramId[] = "igfxext.cuiexternal";

/// "ICUIExternal8::EnumDevices" and its five fellows.
bool IsIntelDriverOperation(const std::string& name);

/// What the driver holds as the aspect setting of the device; 4 until somebody sets it.
uint32_t IntelAspectScaling(const Machine& machine, uint32_t uid);
void SetIntelAspectScaling(Machine& machine, uint32_t uid, uint32_t setting);

/// How many references to driver objects the library holds.
uint64_t IntelDriverReferences(const Machine& machine);

}  // namespace sim
