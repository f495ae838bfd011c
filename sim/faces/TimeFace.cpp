// Time: the DLL sees the machine's virtual clock. A Sleep moves it and fires nothing; timers fire in Machine::Advance,
// since only a pumped message loop would deliver them. With real time the real functions work and timers are only
// recorded.
#include <algorithm>
#include <ctime>

#include "sim/Failure.h"
#include "sim/MachineState.h"

namespace sim {
namespace {

// How long a wait with a time-out may really take before virtual time is said to have run out: enough for a thread of
// the library that is about to signal.
constexpr DWORD kRealPatience = 200;

Clock& TheClock() { return Machine::Current().state().clock; }

void WINAPI FakeSleep(DWORD milliseconds) {
  Call call("Sleep");
  call.Read(0, "%lu", milliseconds);
  if (TheClock().real()) return Sleep(milliseconds);
  TheClock().Pass(milliseconds);
  Sleep(0);
}

DWORD WINAPI FakeSleepEx(DWORD milliseconds, BOOL) {
  Call call("SleepEx");
  call.Read(0, "%lu", milliseconds);
  if (TheClock().real()) return SleepEx(milliseconds, FALSE);
  TheClock().Pass(milliseconds);
  return 0;
}

ULONGLONG WINAPI FakeGetTickCount64() {
  return TheClock().real() ? GetTickCount64() : TheClock().tick_count();
}

DWORD WINAPI FakeGetTickCount() { return static_cast<DWORD>(FakeGetTickCount64()); }

DWORD WINAPI FakeTimeGetTime() { return FakeGetTickCount(); }

clock_t FakeClock() {
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

uint64_t UnixSeconds() {
  constexpr uint64_t kTicksPerSecond = 10000000;
  constexpr uint64_t kFrom1601To1970 = 11644473600;
  FILETIME time = {};
  FakeGetSystemTimeAsFileTime(&time);
  const uint64_t ticks = (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return ticks / kTicksPerSecond - kFrom1601To1970;
}

__time64_t FakeTime64(__time64_t* result) {
  const auto seconds = static_cast<__time64_t>(UnixSeconds());
  if (result != nullptr) *result = seconds;
  return seconds;
}

BOOL WINAPI FakeQueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  if (TheClock().real()) return QueryPerformanceFrequency(frequency);
  frequency->QuadPart = 1000;
  return TRUE;
}

BOOL WINAPI FakeQueryPerformanceCounter(LARGE_INTEGER* counter) {
  if (TheClock().real()) return QueryPerformanceCounter(counter);
  counter->QuadPart = static_cast<LONGLONG>(TheClock().tick_count());
  return TRUE;
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
                  procedure});
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

DWORD WINAPI FakeWaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  Call call("WaitForSingleObject");
  if (call.Fails()) {
    SetLastError(call.FaultCode() != 0 ? call.FaultCode() : ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
  }
  Clock& clock = TheClock();
  call.Read(0, "%lu", milliseconds);
  if (clock.real() || milliseconds == INFINITE) return WaitForSingleObject(handle, milliseconds);
  const DWORD result = WaitForSingleObject(handle, std::min(milliseconds, kRealPatience));
  if (result == WAIT_TIMEOUT) clock.Pass(milliseconds);
  return result;
}

DWORD WINAPI FakeWaitForSingleObjectEx(HANDLE handle, DWORD milliseconds, BOOL) {
  return FakeWaitForSingleObject(handle, milliseconds);
}

}  // namespace

const std::vector<Entry>& TimeFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "Sleep", Guard<FakeSleep>()},
      {"kernel32.dll", "SleepEx", Guard<FakeSleepEx>()},
      {"kernel32.dll", "GetTickCount", Guard<FakeGetTickCount>()},
      {"kernel32.dll", "GetTickCount64", Guard<FakeGetTickCount64>()},
      {"winmm.dll", "timeGetTime", Guard<FakeTimeGetTime>()},
      {"msvcrt.dll", "clock", Guard<FakeClock>()},
      {"msvcrt.dll", "_time64", Guard<FakeTime64>()},
      {"msvcrt.dll", "time", Guard<FakeTime64>()},
      {"kernel32.dll", "GetSystemTime", Guard<FakeGetSystemTime>()},
      {"kernel32.dll", "GetLocalTime", Guard<FakeGetLocalTime>()},
      {"kernel32.dll", "GetSystemTimeAsFileTime", Guard<FakeGetSystemTimeAsFileTime>()},
      {"kernel32.dll", "GetSystemTimePreciseAsFileTime", Guard<FakeGetSystemTimeAsFileTime>(),
       SinceWindows8},
      {"kernel32.dll", "QueryPerformanceFrequency", Guard<FakeQueryPerformanceFrequency>()},
      {"kernel32.dll", "QueryPerformanceCounter", Guard<FakeQueryPerformanceCounter>()},
      {"user32.dll", "SetTimer", Guard<FakeSetTimer>()},
      {"user32.dll", "KillTimer", Guard<FakeKillTimer>()},
      {"kernel32.dll", "WaitForSingleObject", Guard<FakeWaitForSingleObject>()},
      {"kernel32.dll", "WaitForSingleObjectEx", Guard<FakeWaitForSingleObjectEx>()},
  };
  return entries;
}

}  // namespace sim
