// The programming interface of NVIDIA's driver: nvapi64.dll with its one export
// nvapi_QueryInterface, over the one machine model. It is there while a working NVIDIA adapter is
// that brought it (Adapter::vendor_library). Records are read and written by byte offset, and their
// version words are checked.
//
// Its functions count and fail under their published names, those without one under
// NvAPI_GetDisplaySettings, NvAPI_Coproc_GetCoprocStatus, NvAPI_GetHybridMode,
// NvAPI_DISP_GetHCloneTopology and NvAPI_DISP_SetHCloneTopology:
//   machine.Fail("NvAPI_SetViewEx", 1);                             // -1, an unspecified error
//   machine.Fail("NvAPI_EnumPhysicalGPUs", 1, NvCode(-6));          // that result
//   machine.Fail("nvapi_QueryInterface", 3);                        // no such function
// A failing call changes nothing and leaves its outputs as they were.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/MachineState.h"

namespace sim {

constexpr char kNvidiaLibrary[] = "nvapi64.dll";

/// What nvapi64.dll is in this simulation. Every machine has the record; whether the library can be
/// loaded follows the model.
InventedModule NvidiaLibrary();

/// "NvAPI_SetViewEx" and its fellows.
bool IsNvidiaFunction(const std::string& name);

/// A result of the driver as a fault's code: Fail("NvAPI_Initialize", 1, NvCode(-6)).
constexpr uint32_t NvCode(int32_t status) { return static_cast<uint32_t>(status); }

/// From now on the driver does not offer the function: nvapi_QueryInterface answers null for it.
void RemoveNvApi(Machine& machine, const std::string& name);

/// From now on NvAPI_GetDisplaySettings does not say which connector a record speaks of.
void HideNvConnectorTypes(Machine& machine);

/// From now on NvAPI_GetHybridMode succeeds and leaves the caller's value as it is.
void LeaveNvHybridMode(Machine& machine);

/// How often NvAPI_Initialize succeeded since the library was loaded.
uint64_t NvInitializations(const Machine& machine);

// --- The driver's names for a connector, by the connector's id: what a test compares with. They
// are unlike one another and unlike Windows' target ids.
uint32_t NvOutputOf(const Model& model, const std::string& id);     // one bit: 0x10000
uint32_t NvDisplayIdOf(const Model& model, const std::string& id);  // 0x80061001
/// The GPU handle of the n-th adapter of the model.
void* NvGpuOf(size_t adapter);

}  // namespace sim
