// COM as far as the library uses it. An object is made by COM itself, of a class whose class object
// this process has registered; which classes there are is the model's word, and nobody else's COM
// objects are reachable. Names of classes stand in the registry, which is simulated.
#include "Common/Win.h"
#include "sim/FaceTable.h"
#include "sim/MachineState.h"
#include "sim/faces/IntelDriver.h"

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

// The classes of this machine: a test's own, and those that its drivers bring.
std::map<std::string, ComClass> Classes() {
  std::map<std::string, ComClass> classes = State().com_classes;
  const ComClass* const intel = FindIntelDriver(State().model);
  if (intel != nullptr) classes.emplace(kIntelDriverProgramId, *intel);
  return classes;
}

HRESULT WINAPI FakeCLSIDFromProgID(LPCOLESTR name, LPCLSID id) {
  Call call("CLSIDFromProgID");
  const std::string text = Narrow(name);
  const auto classes = Classes();
  const auto found = classes.find(LowerCase(text));
  HRESULT result = S_OK;
  if (call.Fails()) {
    result = FaultOr(call, CO_E_CLASSSTRING);
  } else if (found == classes.end()) {
    *id = CLSID();
    result = CO_E_CLASSSTRING;
  } else {
    *id = found->second.id;
  }
  return static_cast<HRESULT>(call.Read(result, "%s", text.c_str()));
}

HRESULT Create(REFCLSID id, LPUNKNOWN outer, DWORD context, REFIID interface_id, LPVOID* object) {
  for (const auto& [name, com_class] : Classes()) {
    if (!IsEqualCLSID(com_class.id, id) || (com_class.contexts & context) == 0) continue;
    return State().com_registrations.CreateInstance(com_class, outer, context, interface_id,
                                                    object);
  }
  return REGDB_E_CLASSNOTREG;
}

HRESULT WINAPI FakeCoCreateInstance(REFCLSID id, LPUNKNOWN outer, DWORD context,
                                    REFIID interface_id, LPVOID* object) {
  Call call("CoCreateInstance");
  *object = nullptr;
  const HRESULT result = call.Fails() ? FaultOr(call, REGDB_E_CLASSNOTREG)
                                      : Create(id, outer, context, interface_id, object);
  return static_cast<HRESULT>(call.Read(result, "context=%lu", context));
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
