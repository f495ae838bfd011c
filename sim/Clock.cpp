#include "sim/Clock.h"

#include <algorithm>

namespace sim {
namespace {

// What Windows makes of a period outside its limits.
constexpr uint32_t kShortestPeriod = 10;         // USER_TIMER_MINIMUM
constexpr uint32_t kLongestPeriod = 0x7fffffff;  // USER_TIMER_MAXIMUM
constexpr uint64_t kFileTimeTicksPerMs = 10000;
constexpr uint64_t kMsPerMinute = 60000;

// 29 August 2012, 02:36:26 UTC, in 100 ns since 1601: 04:36:26 local with the default bias.
constexpr uint64_t kDefaultCalendar = 129906813860000000;

uint64_t Interval(uint32_t period) { return std::clamp(period, kShortestPeriod, kLongestPeriod); }

uint64_t Join(const FILETIME& time) {
  return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

SYSTEMTIME ToSystemTime(const FILETIME& time) {
  SYSTEMTIME result = {};
  FileTimeToSystemTime(&time, &result);
  return result;
}

}  // namespace

void Clock::PassTo(uint64_t moment) { now_ = std::max(now_.load(), moment); }

void Clock::SetCalendar(const SYSTEMTIME& utc, int32_t bias_minutes) {
  FILETIME time = {};
  SystemTimeToFileTime(&utc, &time);
  calendar_ = Join(time) - now_ * kFileTimeTicksPerMs;
  bias_minutes_ = bias_minutes;
}

FILETIME Clock::At(int32_t bias_minutes) const {
  const uint64_t start = calendar_ != 0 ? calendar_ : kDefaultCalendar;
  const int64_t shift = static_cast<int64_t>(bias_minutes) * static_cast<int64_t>(kMsPerMinute);
  const uint64_t moment = start + (now_ + static_cast<uint64_t>(shift)) * kFileTimeTicksPerMs;
  return {static_cast<DWORD>(moment), static_cast<DWORD>(moment >> 32)};
}

SYSTEMTIME Clock::Utc() const { return ToSystemTime(At(0)); }
SYSTEMTIME Clock::Local() const { return ToSystemTime(At(bias_minutes_)); }
FILETIME Clock::UtcFileTime() const { return At(0); }

namespace {

auto Same(HWND window, UINT_PTR id) {
  const DWORD thread = GetCurrentThreadId();
  return [=](const Machine::Timer& timer) {
    return timer.window == window && timer.id == id &&
           (window != nullptr || timer.thread == thread);
  };
}

}  // namespace

UINT_PTR Clock::Arm(HWND window, UINT_PTR id, uint32_t period, TIMERPROC procedure) {
  const Lock lock(mutex_);
  const DWORD thread = GetCurrentThreadId();
  const auto known = std::find_if(timers_.begin(), timers_.end(), Same(window, id));
  if (known != timers_.end()) {
    *known = {window, id, period, now_ + Interval(period), procedure, thread};
    return window == nullptr ? id : 1;
  }
  if (window == nullptr) id = next_thread_timer_++;
  timers_.push_back({window, id, period, now_ + Interval(period), procedure, thread});
  return window == nullptr ? id : 1;
}

bool Clock::Disarm(HWND window, UINT_PTR id) {
  const Lock lock(mutex_);
  const auto known = std::find_if(timers_.begin(), timers_.end(), Same(window, id));
  if (known == timers_.end()) return false;
  timers_.erase(known);
  return true;
}

void Clock::Record(const Machine::Timer& timer) {
  Disarm(timer.window, timer.id);
  const Lock lock(mutex_);
  timers_.push_back(timer);
}

void Clock::ForgetWindow(HWND window) {
  const Lock lock(mutex_);
  const auto gone = [&](const Machine::Timer& timer) { return timer.window == window; };
  timers_.erase(std::remove_if(timers_.begin(), timers_.end(), gone), timers_.end());
}

void Clock::ForgetThread(DWORD thread) {
  const Lock lock(mutex_);
  const auto gone = [&](const Machine::Timer& timer) {
    return timer.window == nullptr && timer.thread == thread;
  };
  timers_.erase(std::remove_if(timers_.begin(), timers_.end(), gone), timers_.end());
}

std::vector<Machine::Timer> Clock::ForgetProceduresIn(const void* begin, const void* end) {
  const Lock lock(mutex_);
  const auto stays = [&](const Machine::Timer& timer) {
    const void* code = reinterpret_cast<const void*>(timer.procedure);
    return code < begin || code >= end;
  };
  const auto gone = std::stable_partition(timers_.begin(), timers_.end(), stays);
  std::vector<Machine::Timer> dropped(gone, timers_.end());
  timers_.erase(gone, timers_.end());
  return dropped;
}

// The filters look elsewhere in the machine: they run outside the lock.
std::optional<uint64_t> Clock::EarliestDue(const Filter& counts) const {
  std::optional<uint64_t> first;
  for (const Machine::Timer& timer : timers()) {
    if (counts(timer) && (!first || timer.due < *first)) first = timer.due;
  }
  return first;
}

std::optional<Machine::Timer> Clock::NextDue(uint64_t moment, const Filter& counts) {
  std::optional<Machine::Timer> fired;
  for (const Machine::Timer& timer : timers()) {
    if (timer.due > moment || !counts(timer)) continue;
    if (!fired || timer.due < fired->due) fired = timer;
  }
  if (!fired) return std::nullopt;
  PassTo(fired->due);
  const Lock lock(mutex_);
  for (Machine::Timer& timer : timers_) {
    const bool same = timer.window == fired->window && timer.id == fired->id;
    // A timer that came due several times while nobody looked gives one message, as WM_TIMER does.
    if (same) timer.due = now_ + Interval(timer.period);
  }
  return fired;
}

std::vector<Machine::Timer> Clock::timers() const {
  const Lock lock(mutex_);
  return timers_;
}

}  // namespace sim
