// DisplayLink's software for USB displays: AddOnApi64.dll over the one machine model. The displays
// are connectors of an adapter with Adapter::usb, which Windows lists like any other. The library
// lies in the folder that DisplayLinkSoftware tells, and is found by its whole path only.
//
// Its functions count, fail and stand in the journal, on request, under the names of the exports:
//   machine.Fail("dlSubscribePids", 1);               // -1
//   machine.Fail("dlPumpMessages", 1, 0xFFFFFFF8);    // that result
// A failing call changes nothing and leaves its outputs as they were; a failing dlPumpMessages
// takes its whole time. What cannot be (a foreign handle, an argument that is to be 0, a record of
// another size, the end of a subscription that nobody asked for) is refused and fails the test.
// A listener stands in the ledger as "DisplayLink listener".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/MachineState.h"

namespace sim {

class Fields;

// The events of its notifications.
constexpr uint32_t kNivoUndefined = 0;
constexpr uint32_t kNivoConnected = 1;
constexpr uint32_t kNivoDisplayAdded = 2;
constexpr uint32_t kNivoDisplayChanged = 3;
constexpr uint32_t kNivoShutdown = 4;
constexpr uint32_t kNivoUnloadApi = 5;

/// The state of a display that takes no part in the desktop, one that is not plugged in for one.
constexpr uint32_t kNivoOffDesktop = 6;

/// What the functions answer. The library documents that negative numbers are failures and no
/// single one of them.
enum DisplayLinkResult : int32_t {
  kDlFault = -1,          // a declared fault without a code
  kDlBadArgument = -2,    // null, a size, or a number that is to be another one
  kDlUnknownHandle = -3,  // no display of that handle
  kDlNotSubscribed = -4,  // nothing to withdraw
  kDlNotWorking = -5,     // the service behind the library does not work
  kDlNoTarget = -6,       // a display that Windows has no target for
};

// --- For the machine itself.

/// What AddOnApi64.dll is on this machine. Whether it can be loaded follows the model.
InventedModule DisplayLinkLibrary(const Model& model);
/// Library, registry value and running service, as the set-up program leaves them.
void InstallDisplayLink(Model& model);
/// The table [displaylink] of a machine file, and a connector's fields.
void ReadDisplayLink(Fields* file, Model* model);
NivoOutput ReadNivoOutput(Fields* connector);
/// Tells the listeners of a display on an adapter for USB; nothing for any other connector.
void TellOfUsbDisplay(Machine& machine, size_t connector, uint32_t event);

// --- For tests.

/// The software is installed now: library, registry value and running service. Whoever looks finds
/// it.
void InstallDisplayLink(Machine& machine);
/// The registry value, and no service: what the library under test needs to load AddOnApi64.dll.
void InstallDisplayLinkLibrary(Machine& machine);
/// The service stops working: listeners hear of a shutdown, every function fails from now on, and
/// the displays go dark. A library that is loaded stays so.
void StopDisplayLink(Machine& machine);
/// The same, and library, registry value and service are gone.
void RemoveDisplayLink(Machine& machine);
/// The library of an older version lacks that export.
/// @throw std::runtime_error when it has no such export
void RemoveDisplayLinkEntry(Machine& machine, const std::string& name);

/// The library's handle of the display on that connector. @throw std::runtime_error for a connector
/// that is no USB display's
uint64_t NivoHandleOf(const Machine& machine, const std::string& connector);
/// A display answers with that execution state from now on, plugged in or not; nobody is told.
void SetNivoState(Machine& machine, uint64_t handle, uint32_t state);
/// Every listener hears of the event when it next pumps. Any number and any handle will do; one
/// that is no display's is known to the library from now on, without a target in Windows.
void PostNivoEvent(Machine& machine, uint32_t event, uint64_t handle);

/// The products that somebody has subscribed, in the order of the call.
std::vector<uint32_t> SubscribedPids(const Machine& machine);
size_t NivoListeners(const Machine& machine);

}  // namespace sim
