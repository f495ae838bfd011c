// Kernel handles that the library makes itself: really made and closed, counted and kept in the
// ledger. Handles that the compiler's thread support makes and closes pass through uncounted.
#include "sim/Failure.h"
#include "sim/MachineState.h"

#include <cstdio>

namespace sim {
namespace {

constexpr char kFile[] = "file";
constexpr char kMutex[] = "mutex";
constexpr char kThread[] = "thread";
constexpr const char* kKinds[] = {kFile, kMutex, kThread};

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

// Not in the ledger: the compiler's thread support makes such events for itself and keeps some.
HANDLE WINAPI FakeCreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manual, BOOL set, LPCSTR name) {
  Call call("CreateEventA");
  if (call.Fails()) return Refuse(call, ERROR_NO_SYSTEM_RESOURCES, nullptr);
  return CreateEventA(security, manual, set, name);
}

// The thread really runs. The compiler's thread support starts its own by another way.
HANDLE WINAPI FakeCreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack,
                               LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                               LPDWORD id) {
  Call call("CreateThread");
  if (call.Fails()) return Refuse(call, ERROR_NOT_ENOUGH_MEMORY, nullptr);
  return Take(kThread, CreateThread(security, stack, start, parameter, flags, id));
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
  for (const char* kind : kKinds) {
    if (state.ledger.Give(kind, reinterpret_cast<uint64_t>(handle))) break;
  }
  return CloseReal(handle);
}

}  // namespace

const std::vector<Entry>& HandleFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "CreateFileW", Guard<FakeCreateFileW>()},
      {"kernel32.dll", "CreateMutexW", Guard<FakeCreateMutexW>()},
      {"kernel32.dll", "CreateEventA", Guard<FakeCreateEventA>()},
      {"kernel32.dll", "CreateThread", Guard<FakeCreateThread>()},
      {"kernel32.dll", "CloseHandle", Guard<FakeCloseHandle>()},
  };
  return entries;
}

}  // namespace sim
