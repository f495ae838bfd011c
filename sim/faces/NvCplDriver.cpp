#include "sim/faces/NvCplDriver.h"

#include <algorithm>
#include <stdexcept>

#include "sim/Failure.h"
#include "sim/faces/FaceHelp.h"
#include "sim/faces/NvCplRules.h"

namespace sim {
namespace {

// --- What the driver tells.

int32_t WINAPI FakeNvGetWindowsDisplayState(UINT monitor) {
  Call call("NvGetWindowsDisplayState");
  const int32_t state =
      call.Fails() ? static_cast<int32_t>(call.FaultCode()) : NvCplStateOf(CurrentModel(), monitor);
  return static_cast<int32_t>(call.Read(state, "%u", monitor));
}

BOOL WINAPI FakeNvCplRefreshConnectedDevices(DWORD flags) {
  Call call("NvCplRefreshConnectedDevices");
  constexpr DWORD kNonIntrusive = 1;
  constexpr DWORD kAllAdapters = 2;
  const bool known = flags != 0 && (flags & ~(kNonIntrusive | kAllAdapters)) == 0;
  const bool done = !call.Fails() && known;
  if (done) DetectNvCplDisplays(Machine::Current());
  return static_cast<BOOL>(call.Read(done, "0x%lx", flags));
}

// What does not fit is cut.
BOOL WINAPI FakeNvCplGetRealConnectedDevicesString(char* text, DWORD size, BOOL only_active) {
  Call call("NvCplGetRealConnectedDevicesString");
  if (call.Fails() || text == nullptr || size == 0) {
    return static_cast<BOOL>(call.Read(FALSE, "size=%lu active=%d", size, only_active));
  }
  CopyText(text, size, NvCplConnectedText(Machine::Current(), only_active != FALSE));
  return static_cast<BOOL>(call.Read(TRUE, "%s size=%lu active=%d", text, size, only_active));
}

BOOL WINAPI FakeNvGetDisplayInfo(const char* moniker, void* record) {
  Call call("NvGetDisplayInfo");
  const char* const shown = moniker != nullptr ? moniker : "null";
  const bool done = !call.Fails() && moniker != nullptr && record != nullptr &&
                    GetNvCplDisplayInfo(CurrentModel(), moniker, NvRecord(record));
  return static_cast<BOOL>(call.Read(done, "%s", shown));
}

// --- What rundll32.exe runs.

void WINAPI FakeDtcfg(HWND, HINSTANCE, const char* command, int) {
  Call call("dtcfg");
  const bool done = !call.Fails() && RunNvCplCommand(Machine::Current(), command);
  call.Changed(done, "%s", command);
  if (done) Machine::Current().BroadcastDisplayChange();
}

// --- What is bound and never called: the arguments need not be known, the caller clears the stack.

uint32_t NeverCalled(const char* name) {
  ReportFailure(std::string(name) + " of NvCpl.dll was called, which is not simulated");
  return 0;
}

BOOL WINAPI NvCplGetConnectedDevicesString(char*, DWORD, BOOL) {
  return static_cast<BOOL>(NeverCalled("NvCplGetConnectedDevicesString"));
}
BOOL WINAPI NvCplGetFlatPanelNativeRes(const char*, DWORD*, DWORD*) {
  return static_cast<BOOL>(NeverCalled("NvCplGetFlatPanelNativeRes"));
}
BOOL WINAPI NvCplGetActiveDevicesString(char*, DWORD) {
  return static_cast<BOOL>(NeverCalled("NvCplGetActiveDevicesString"));
}
DWORD WINAPI Dtcfgex(char*) { return NeverCalled("dtcfgex"); }
int32_t WINAPI NvGetPhysicalConnectorInfo(UINT, void*) {
  return static_cast<int32_t>(NeverCalled("NvGetPhysicalConnectorInfo"));
}
int32_t WINAPI NvEnumPhysicalConnectorDetails(UINT, DWORD, void*) {
  return static_cast<int32_t>(NeverCalled("NvEnumPhysicalConnectorDetails"));
}

const std::vector<Entry>& Entries() {
  static const std::vector<Entry> entries = {
      {kNvCplLibrary, "NvGetWindowsDisplayState", Guard<FakeNvGetWindowsDisplayState>()},
      {kNvCplLibrary, "NvCplGetConnectedDevicesString", Guard<NvCplGetConnectedDevicesString>()},
      {kNvCplLibrary, "NvCplRefreshConnectedDevices", Guard<FakeNvCplRefreshConnectedDevices>()},
      {kNvCplLibrary, "NvCplGetFlatPanelNativeRes", Guard<NvCplGetFlatPanelNativeRes>()},
      {kNvCplLibrary, "NvCplGetRealConnectedDevicesString",
       Guard<FakeNvCplGetRealConnectedDevicesString>()},
      {kNvCplLibrary, "NvCplGetActiveDevicesString", Guard<NvCplGetActiveDevicesString>()},
      {kNvCplLibrary, "NvGetDisplayInfo", Guard<FakeNvGetDisplayInfo>()},
      {kNvCplLibrary, "dtcfgex", Guard<Dtcfgex>()},
      {kNvCplLibrary, "NvGetPhysicalConnectorInfo", Guard<NvGetPhysicalConnectorInfo>()},
      {kNvCplLibrary, "NvEnumPhysicalConnectorDetails", Guard<NvEnumPhysicalConnectorDetails>()},
      {kNvCplLibrary, "dtcfg", Guard<FakeDtcfg>()},
  };
  return entries;
}

}  // namespace

InventedModule NvCplLibrary() {
  InventedModule library;
  library.name = kNvCplLibrary;
  library.entries = Entries();
  library.available = NvidiaDriverInstalled;
  return library;
}

void RemoveNvCplEntry(Machine& machine, const std::string& name) {
  std::vector<Entry>& entries = machine.state().invented.at(kNvCplLibrary).entries;
  const auto entry = std::find_if(entries.begin(), entries.end(),
                                  [&name](const Entry& e) { return name == e.name; });
  if (entry == entries.end()) throw std::runtime_error("NvCpl.dll has no entry " + name);
  entries.erase(entry);
}

}  // namespace sim
