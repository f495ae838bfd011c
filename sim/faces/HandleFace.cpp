// Kernel handles that the library makes itself: really made and closed, counted and kept in the
// ledger (threads and events are made in ThreadFace). Handles that the compiler's thread support
// makes and closes pass through uncounted.
#include "sim/Failure.h"
#include "sim/MachineState.h"

#include <cstdio>

namespace sim {
namespace {

constexpr char kFile[] = "file";
constexpr char kMutex[] = "mutex";
constexpr char kEvent[] = "event";
constexpr const char* kKinds[] = {kFile, kMutex, kThread, kEvent};

HANDLE Refuse(const Call& call, DWORD usual, HANDLE nothing) {
  SetLastError(call.FaultCode() != 0 ? call.FaultCode() : usual);
  return nothing;
}

HANDLE Take(const char* kind, HANDLE handle) {
  const DWORD error = GetLastError();  // a success may say ERROR_ALREADY_EXISTS
  if (handle != nullptr && handle != INVALID_HANDLE_VALUE) LedgerTake(kind, handle);
  SetLastError(error);
  return handle;
}

HANDLE WINAPI FakeCreateFileW(LPCWSTR name, DWORD access, DWORD share,
                              LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                              HANDLE pattern) {
  Call call("CreateFileW");
  if (call.Fails()) return Refuse(call, ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
  return Take(kFile, CreateFileW(name, access, share, security, disposition, flags, pattern));
}

HANDLE WINAPI FakeCreateMutexW(LPSECURITY_ATTRIBUTES security, BOOL owned, LPCWSTR name) {
  Call call("CreateMutexW");
  if (call.Fails()) return Refuse(call, ERROR_ACCESS_DENIED, nullptr);
  return Take(kMutex, CreateMutexW(security, owned, name));
}

// A handle closed twice may by then be somebody else's: told where it shows, the last error kept.
BOOL CloseReal(HANDLE handle) {
  if (CloseHandle(handle)) return TRUE;
  const DWORD error = GetLastError();
  char text[64];
  std::snprintf(text, sizeof(text), "closed a handle that is not open: 0x%llx",
                static_cast<unsigned long long>(reinterpret_cast<uint64_t>(handle)));
  ReportFailure(text);
  SetLastError(error);
  return FALSE;
}

BOOL WINAPI FakeCloseHandle(HANDLE handle) {
  Call call("CloseHandle");
  if (call.Fails()) return Refuse(call, ERROR_INVALID_HANDLE, nullptr) != nullptr;
  Machine::State& state = Machine::Current().state();
  const auto simulated = state.simulated_handles.find(handle);
  if (simulated != state.simulated_handles.end()) {
    LedgerGive(simulated->second.c_str(), handle);
    state.simulated_handles.erase(simulated);
    return TRUE;
  }
  if (state.ledger.Holds(kKeptThread, reinterpret_cast<uint64_t>(handle))) {
    ReportFailure("closed the handle of a thread that ends with its module");
  }
  for (const char* kind : kKinds) {
    if (!state.ledger.Give(kind, reinterpret_cast<uint64_t>(handle))) continue;
    call.Read(1, "%s", kind);
    break;
  }
  return CloseReal(handle);
}

}  // namespace

const std::vector<Entry>& HandleFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "CreateFileW", Guard<FakeCreateFileW>()},
      {"kernel32.dll", "CreateMutexW", Guard<FakeCreateMutexW>()},
      {"kernel32.dll", "CloseHandle", Guard<FakeCloseHandle>()},
  };
  return entries;
}

}  // namespace sim
