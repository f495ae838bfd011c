// COM as far as the library uses it: classes that only the model has. Nobody else's COM objects are
// reachable.
#include "Common/Win.h"
#include "sim/FaceTable.h"
#include "sim/MachineState.h"

#include <objbase.h>

namespace sim {
namespace {

Machine::State& State() { return Machine::Current().state(); }

HRESULT FaultOr(const Call& call, HRESULT documented) {
  return call.FaultCode() != 0 ? static_cast<HRESULT>(call.FaultCode()) : documented;
}

HRESULT WINAPI FakeCoInitialize(LPVOID reserved) {
  Call call("CoInitialize");
  if (call.Fails()) return FaultOr(call, E_OUTOFMEMORY);
  return State().clock.real() ? CoInitialize(reserved) : S_OK;
}

HRESULT WINAPI FakeCoInitializeEx(LPVOID reserved, DWORD flags) {
  Call call("CoInitializeEx");
  if (call.Fails()) return FaultOr(call, RPC_E_CHANGED_MODE);
  return State().clock.real() ? CoInitializeEx(reserved, flags) : S_OK;
}

// The host's own COM is at stake only where there is a host.
void WINAPI FakeCoUninitialize() {
  Call call("CoUninitialize");
  call.Read(0, "%s", "");
  if (State().clock.real()) CoUninitialize();
}

HRESULT WINAPI FakeCLSIDFromProgID(LPCOLESTR name, LPCLSID id) {
  Call call("CLSIDFromProgID");
  if (call.Fails()) return FaultOr(call, CO_E_CLASSSTRING);
  const auto found = State().com_classes.find(LowerCase(Narrow(name)));
  if (found == State().com_classes.end()) {
    *id = CLSID();
    return CO_E_CLASSSTRING;
  }
  *id = found->second.id;
  return S_OK;
}

HRESULT WINAPI FakeCoCreateInstance(REFCLSID id, LPUNKNOWN outer, DWORD context,
                                    REFIID interface_id, LPVOID* object) {
  Call call("CoCreateInstance");
  *object = nullptr;
  if (call.Fails()) return FaultOr(call, REGDB_E_CLASSNOTREG);
  (void)context;
  if (outer != nullptr) return CLASS_E_NOAGGREGATION;
  for (const auto& [name, com_class] : State().com_classes) {
    if (IsEqualCLSID(com_class.id, id)) return com_class.create(interface_id, object);
  }
  return REGDB_E_CLASSNOTREG;
}

}  // namespace

const std::vector<Entry>& ComFace() {
  static const std::vector<Entry> entries = {
      {"ole32.dll", "CoInitialize", Guard<FakeCoInitialize>()},
      {"ole32.dll", "CoInitializeEx", Guard<FakeCoInitializeEx>()},
      {"ole32.dll", "CoUninitialize", Guard<FakeCoUninitialize>()},
      {"ole32.dll", "CLSIDFromProgID", Guard<FakeCLSIDFromProgID>()},
      {"ole32.dll", "CoCreateInstance", Guard<FakeCoCreateInstance>()},
  };
  return entries;
}

}  // namespace sim
