// Virtual time: a millisecond clock, a calendar behind it, and the timers armed with SetTimer.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "Common/Win.h"
#include "sim/Lock.h"
#include "sim/Machine.h"

namespace sim {

class Clock {
 public:
  bool real() const { return real_; }
  void UseRealTime() { real_ = true; }

  uint64_t now() const { return now_; }
  void Pass(uint64_t milliseconds) { now_ += milliseconds; }  // moves the clock, fires nothing
  void PassTo(uint64_t moment);                               // never backwards
  uint64_t tick_count() const { return kBootTicks + now_; }

  /// The calendar at Now() == 0 and what local time adds to it.
  void SetCalendar(const SYSTEMTIME& utc, int32_t bias_minutes);
  SYSTEMTIME Utc() const;
  SYSTEMTIME Local() const;
  FILETIME UtcFileTime() const;

  /// As SetTimer: a window's timer of the same id is replaced; without a window an unknown id gets
  /// a new one. A timer without a window is the calling thread's, and no other can disarm it.
  UINT_PTR Arm(HWND window, UINT_PTR id, uint32_t period, TIMERPROC procedure);
  bool Disarm(HWND window, UINT_PTR id);
  void Record(const Machine::Timer& timer);  // one that Windows itself keeps (real time)
  void ForgetWindow(HWND window);
  void ForgetThread(DWORD thread);  // its timers without a window
  /// Drops the timers whose procedure lies in that range and returns them.
  std::vector<Machine::Timer> ForgetProceduresIn(const void* begin, const void* end);
  using Filter = std::function<bool(const Machine::Timer&)>;
  /// When the first of the timers that `counts` accepts is due; nothing when there is none.
  std::optional<uint64_t> EarliestDue(const Filter& counts) const;
  /// Takes the earliest such timer that is due by `moment`, arms it again one period on, and
  /// returns it as it was.
  std::optional<Machine::Timer> NextDue(uint64_t moment, const Filter& counts);
  std::vector<Machine::Timer> timers() const;

 private:
  static constexpr uint64_t kBootTicks = 600000;  // the notebook has been up for ten minutes
  FILETIME At(int32_t bias_minutes) const;

  mutable Mutex mutex_;  // the timers; threads of the library have some, too
  bool real_ = false;
  std::atomic<uint64_t> now_{0};
  uint64_t calendar_ = 0;  // FILETIME at now_ == 0; 0 stands for the default
  int32_t bias_minutes_ = 120;
  UINT_PTR next_thread_timer_ = 0x7f00;
  std::vector<Machine::Timer> timers_;
};

}  // namespace sim
