// Time: the DLL sees the machine's virtual clock. A Sleep moves it and fires nothing; timers fire
// in Machine::Advance, since only a pumped message loop would deliver them. With real time the real
// functions work and timers are only recorded.
#include <ctime>

#include "sim/MachineState.h"

namespace sim {
namespace {

Clock& TheClock() { return Machine::Current().state().clock; }

void WINAPI FakeSleep(DWORD milliseconds) {
  Call call("Sleep");
  call.Read(0, "%lu", milliseconds);
  if (TheClock().real()) return Sleep(milliseconds);
  if (milliseconds == 0 || !Machine::Current().state().threads.Sleep(milliseconds)) {
    TheClock().Pass(milliseconds);
  }
  Sleep(0);
}

ULONGLONG WINAPI FakeGetTickCount64() {
  return TheClock().real() ? GetTickCount64() : TheClock().tick_count();
}

DWORD WINAPI FakeGetTickCount() { return static_cast<DWORD>(FakeGetTickCount64()); }

// Counted, but too frequent for the journal: somebody may be waiting for it to move.
clock_t FakeClock() {
  Machine::State& state = Machine::Current().state();
  state.faults.OnCall("clock");
  state.threads.AskClock();
  return TheClock().real() ? std::clock() : static_cast<clock_t>(TheClock().now());
}

void WINAPI FakeGetSystemTime(SYSTEMTIME* time) {
  if (TheClock().real()) return GetSystemTime(time);
  *time = TheClock().Utc();
}

void WINAPI FakeGetLocalTime(SYSTEMTIME* time) {
  if (TheClock().real()) return GetLocalTime(time);
  *time = TheClock().Local();
}

void WINAPI FakeGetSystemTimeAsFileTime(FILETIME* time) {
  if (TheClock().real()) return GetSystemTimeAsFileTime(time);
  *time = TheClock().UtcFileTime();
}

bool SinceWindows8(const Model& model) {
  return model.windows.major > 6 || (model.windows.major == 6 && model.windows.minor >= 2);
}

UINT_PTR WINAPI FakeSetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
  Call call("SetTimer");
  if (call.Fails()) {
    SetLastError(call.FaultCode() != 0 ? call.FaultCode() : ERROR_NO_SYSTEM_RESOURCES);
    return 0;
  }
  Clock& clock = TheClock();
  call.Read(1, "id=%llu period=%u", static_cast<unsigned long long>(id), period);
  if (!clock.real()) return clock.Arm(window, id, period, procedure);
  const UINT_PTR result = SetTimer(window, id, period, procedure);
  if (result != 0) {
    clock.Record({window, window == nullptr ? result : id, period, GetTickCount64() + period,
                  procedure, GetCurrentThreadId()});
  }
  return result;
}

BOOL WINAPI FakeKillTimer(HWND window, UINT_PTR id) {
  Call call("KillTimer");
  if (call.Fails()) {
    SetLastError(call.FaultCode() != 0 ? call.FaultCode() : ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  Clock& clock = TheClock();
  call.Read(1, "id=%llu", static_cast<unsigned long long>(id));
  const bool known = clock.Disarm(window, id);
  return clock.real() ? KillTimer(window, id) : known;
}

}  // namespace

const std::vector<Entry>& TimeFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "Sleep", Guard<FakeSleep>()},
      {"kernel32.dll", "GetTickCount", Guard<FakeGetTickCount>()},
      {"kernel32.dll", "GetTickCount64", Guard<FakeGetTickCount64>()},
      {"msvcrt.dll", "clock", Guard<FakeClock>()},
      {"kernel32.dll", "GetSystemTime", Guard<FakeGetSystemTime>()},
      {"kernel32.dll", "GetLocalTime", Guard<FakeGetLocalTime>()},
      {"kernel32.dll", "GetSystemTimeAsFileTime", Guard<FakeGetSystemTimeAsFileTime>()},
      {"kernel32.dll", "GetSystemTimePreciseAsFileTime", Guard<FakeGetSystemTimeAsFileTime>(),
       SinceWindows8},
      {"user32.dll", "SetTimer", Guard<FakeSetTimer>()},
      {"user32.dll", "KillTimer", Guard<FakeKillTimer>()},
  };
  return entries;
}

}  // namespace sim
