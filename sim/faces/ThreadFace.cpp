// Threads of the library, what they wait for and what they tell each other: real threads, events
// and queues in virtual time. A wait with a time-out moves the clock, and what falls due meanwhile
// in other threads happens.
#include <algorithm>

#include "sim/MachineState.h"
#include "sim/VirtualTime.h"
#include "sim/faces/Counted.h"

namespace sim {
namespace {

constexpr char kEvent[] = "event";

// How long a wait with a time-out may really take while the library has no thread of its own: that
// of another library may be about to signal.
constexpr DWORD kRealPatience = 200;

Machine::State& State() { return Machine::Current().state(); }

void SetError(const Call& call, DWORD usual) {
  SetLastError(call.FaultCode() != 0 ? call.FaultCode() : usual);
}

// --- Threads.

HANDLE WINAPI FakeCreateThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack,
                               LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD flags,
                               LPDWORD id) {
  Call call("CreateThread");
  if (call.Fails()) {
    SetError(call, ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  call.Read(1, "security=%d stack=%llu parameter=%d flags=%lu", security != nullptr,
            static_cast<unsigned long long>(stack), parameter != nullptr, flags);
  return State().threads.Create(security, stack, start, parameter, flags, id);
}

// --- Events. Nameless ones are not in the ledger: the compiler's thread support makes such for
// itself and keeps some.

HANDLE WINAPI FakeCreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manual, BOOL set, LPCSTR name) {
  Call call("CreateEventA");
  if (call.Fails()) {
    SetError(call, ERROR_NO_SYSTEM_RESOURCES);
    return nullptr;
  }
  const HANDLE event = CreateEventA(security, manual, set, name);
  if (event == nullptr || name == nullptr) return event;
  LedgerTake(kEvent, event);
  call.Read(1, "security=%d manual=%d set=%d name=\"%s\"", security != nullptr, manual, set, name);
  return event;
}

BOOL WINAPI FakeSetEvent(HANDLE event) {
  Call call("SetEvent");
  if (call.Fails()) {
    SetError(call, ERROR_INVALID_HANDLE);
    return FALSE;
  }
  const BOOL result = SetEvent(event);
  const DWORD error = GetLastError();
  call.Read(result, "%s", event != nullptr ? "event" : "null");
  SetLastError(error);
  return result;
}

// --- Waits.

DWORD WaitInVirtualTime(HANDLE handle, DWORD milliseconds) {
  Machine::State& state = State();
  DWORD result = WAIT_TIMEOUT;
  if (state.threads.Empty()) {
    result = WaitForSingleObject(handle, std::min(milliseconds, kRealPatience));
    if (result != WAIT_TIMEOUT) return result;
  }
  PassTime(state.clock.now() + milliseconds, Driver::kWaiting, [&] {
    result = WaitForSingleObject(handle, 0);
    return result != WAIT_TIMEOUT;
  });
  return result;
}

// On a thread of the library's own the clock is somebody else's to move. What is signalled in the
// meantime is seen at the end of the wait.
DWORD WaitOnOwnThread(HANDLE handle, DWORD milliseconds) {
  const DWORD result = WaitForSingleObject(handle, std::min(milliseconds, kRealPatience));
  if (result != WAIT_TIMEOUT || milliseconds == 0) return result;
  if (!State().threads.Sleep(milliseconds)) State().clock.Pass(milliseconds);
  return WaitForSingleObject(handle, 0);
}

// Real: a lock is soon free. Whoever waits for a thread that has not begun yet has it begin.
DWORD WaitForGood(HANDLE handle) {
  const DWORD result = WaitForSingleObject(handle, 0);
  if (result != WAIT_TIMEOUT) return result;
  if (!State().threads.IsMember(GetCurrentThreadId())) State().threads.BeginAll();
  return WaitForSingleObject(handle, INFINITE);
}

DWORD Wait(HANDLE handle, DWORD milliseconds) {
  if (State().clock.real()) return WaitForSingleObject(handle, milliseconds);
  if (milliseconds == INFINITE) return WaitForGood(handle);
  if (State().threads.IsMember(GetCurrentThreadId())) return WaitOnOwnThread(handle, milliseconds);
  return WaitInVirtualTime(handle, milliseconds);
}

// A wait that fails at once may still be the moment at which the others get their turn; here it
// always is.
void LetOthersRun() {
  Machine::State& state = State();
  if (state.clock.real() || state.threads.IsMember(GetCurrentThreadId())) return;
  state.threads.Settle(Threads::Scope::kAll);
}

DWORD WINAPI FakeWaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  Call call("WaitForSingleObject");
  if (call.Fails()) {
    LetOthersRun();
    SetError(call, ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
  }
  const DWORD result = Wait(handle, milliseconds);
  const DWORD error = GetLastError();
  call.Read(result, "%lu", milliseconds);
  SetLastError(error);
  return result;
}

// --- Messages of a thread.

BOOL WINAPI FakeGetMessageA(MSG* message, HWND window, UINT first, UINT last) {
  Call call("GetMessageA");
  if (call.Fails()) {
    SetError(call, ERROR_INVALID_WINDOW_HANDLE);
    return -1;
  }
  Machine::State& state = State();
  if (state.clock.real() || !state.threads.IsMember(GetCurrentThreadId())) {
    return GetMessageA(message, window, first, last);
  }
  return state.threads.Get(message, window, first, last);
}

// A timer's procedure gets the simulated tick count.
LRESULT WINAPI FakeDispatchMessageA(const MSG* message) {
  Call call("DispatchMessageA");
  if (call.Fails()) return 0;
  const bool calls = message->message == WM_TIMER && message->lParam != 0;
  if (State().clock.real() || !calls) return DispatchMessageA(message);
  const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
  procedure(message->hwnd, WM_TIMER, message->wParam, message->time);
  return 0;
}

BOOL WINAPI FakePostThreadMessageA(DWORD thread, UINT message, WPARAM wparam, LPARAM lparam) {
  Call call("PostThreadMessageA");
  if (call.Fails()) {
    SetError(call, ERROR_INVALID_THREAD_ID);
    return FALSE;
  }
  SetLastError(ERROR_INVALID_THREAD_ID);  // no thread has number 0, whatever Wine makes of it
  const BOOL result = thread != 0 && PostThreadMessageA(thread, message, wparam, lparam);
  const DWORD error = GetLastError();
  State().threads.Notify(thread);
  call.Read(result, "id=%u wparam=%llu lparam=%lld", message,
            static_cast<unsigned long long>(wparam), static_cast<long long>(lparam));
  SetLastError(error);
  return result;
}

}  // namespace

const std::vector<Entry>& ThreadFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "CreateThread", Guard<FakeCreateThread>()},
      {"kernel32.dll", "CreateEventA", Guard<FakeCreateEventA>()},
      {"kernel32.dll", "SetEvent", Guard<FakeSetEvent>()},
      {"kernel32.dll", "WaitForSingleObject", Guard<FakeWaitForSingleObject>()},
      {"user32.dll", "GetMessageA", Guard<FakeGetMessageA>()},
      {"user32.dll", "DispatchMessageA", Guard<FakeDispatchMessageA>()},
      {"user32.dll", "PostThreadMessageA", Guard<FakePostThreadMessageA>()},
  };
  return entries;
}

}  // namespace sim
