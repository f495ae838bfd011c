// The programming interfaces of AMD's graphics driver over the one machine model: the display
// library atiadlxx.dll (ADL), and the older AtiPdl64.dll that thinks in display vectors. They are
// there when a working AMD adapter is whose driver brought them (Adapter::vendor_library,
// AmdDriver::adl_library, AmdDriver::legacy_library).
//
// Their functions count, fail and stand in the journal under the names of the exports:
//   machine.Fail("ADL_Display_DisplayMapConfig_Set", 1);                            // -1
//   machine.Fail("ADL_Display_DisplayMapConfig_Set", 1, static_cast<uint32_t>(-5)); // that result
//   machine.Fail("ATIDL_SetConfigurationEx", 1);   // kLegacyFault; "EnumDisplays": 0
// A failing call changes nothing and leaves its outputs as they were.
//
// Arrays that ADL hands out come from its client's callback and stand in the ledger as "ADL buffer"
// until the library gives them to free(). From ADL_Main_Control_Create to ADL_Main_Control_Destroy
// the ledger holds an "ADL session".
#pragma once

#include <cstdint>
#include <string>

#include "sim/MachineState.h"

namespace sim {

class Fields;

/// The fields of a machine file that speak of AMD's driver: of an adapter, of a connector.
AmdDriver ReadAmdDriver(Fields* adapter);
AmdOutput ReadAmdOutput(Fields* connector);

constexpr char kAdlLibrary[] = "atiadlxx.dll";
constexpr char kAmdLegacyLibrary[] = "atipdl64.dll";

/// Puts the libraries that this machine's driver brings among the invented modules, where no test
/// has put one of its own, and takes those away that it does not bring any more.
void BringAmdLibraries(Machine::State& state);
bool HasAdlLibrary(const Model& model);
bool HasAmdLegacyLibrary(const Model& model);
/// An export of either library.
bool IsAmdOperation(const std::string& name);

/// GetProcAddress does not find this export from now on.
void RemoveAmdEntry(Machine& machine, const std::string& name);

/// Has a function answer with this value in place of what the model says. Where a function gives
/// two, a word behind a blank tells which:
///   ADL_Display_NumberOfDisplays_Get, ADL_Display_Capabilities_Get controllers,
///   ADL_Display_Capabilities_Get displays, ADL_Display_EdidData_Get (the size told),
///   ADL_Display_SLSGrid_Caps (the count told), GetCapabilities first, GetCapabilities second,
///   ATIDL_GetAdapterID, GetConnectedDisplays (the vector)
void SetAmdAnswer(Machine& machine, const std::string& what, uint32_t value);

/// Shows an SLS map of the adapter in its first native mode.
void ShowAmdSls(Machine& machine, size_t adapter, size_t map);

/// Whether ADL_Main_Control_Create was called and not ended.
bool AdlIsRunning(const Machine& machine);

/// The results of the legacy library. It documents its success alone; the others are the
/// simulator's own.
enum AmdLegacyResult : uint32_t {
  kLegacySuccess = 0,
  kLegacyBadArgument = 1,     // a size, an arrangement, a count or a vector that cannot be
  kLegacyUnknownAdapter = 2,  // no display device of a working AMD adapter
  kLegacyUnknownDisplay = 3,  // no such display index, vector or type
  kLegacyNotConnected = 4,    // nothing hangs on that output, or it sends no EDID
  kLegacyTooManyDisplays = 5,
  kLegacyNoSuchMode = 6,
  kLegacyFault = 7,  // a declared fault without a code
};

}  // namespace sim
