// The threads that the DLL starts: real ones, but in virtual time each runs only until it waits for
// a message, sleeps or polls the clock, and goes on when the thread that drives the clock lets it.
// A new one begins when that thread next lets time pass. So a test with a second thread gives the
// same journal every time. Two do run side by side between a message for a thread and the next
// moment at which the other one waits or moves the clock. Journal, ledger, faults, timers and this
// class are locked; the model and the book of windows are not: meanwhile they are the thread's that
// got the message.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "Common/Win.h"
#include "sim/Lock.h"
#include "sim/Machine.h"

namespace sim {

class Threads {
 public:
  /// Which threads must have come to rest: all, or only those that have done so before. Another one
  /// may be held up by the test itself.
  enum class Scope { kAll, kResting };

  Threads();
  ~Threads();
  Threads(const Threads&) = delete;
  Threads& operator=(const Threads&) = delete;

  /// As CreateThread.
  HANDLE Create(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                void* parameter, DWORD flags, DWORD* id);
  bool IsMember(DWORD thread) const;
  bool Empty() const;
  /// From now on new threads run at once, beside the test. For tests that hold one up in the middle
  /// and wait for it by means of their own.
  void StartAtOnce() { start_at_once_ = true; }

  // --- For the thread that drives the clock.
  /// Lets those begin that have not yet, one after the other, and returns once every thread waits,
  /// sleeps or has really ended. @return false, with a failure reported, when one of them does not
  /// come to rest
  bool Settle(Scope scope);
  /// Hands a timer over that is due; the thread finds it when it next looks for messages.
  void Deliver(DWORD thread, const Machine::Timer& timer);
  /// A message was posted or sent to that thread; nothing happens if it is none of the DLL's.
  void Notify(DWORD thread);
  /// When the first sleeper wakes; nothing when nobody sleeps.
  std::optional<uint64_t> NextWake() const;
  /// Wakes the sleeper that is due first; of one moment the older thread.
  void WakeSleeper(uint64_t moment);
  /// Has those that poll the clock, or rest until something happens, wake now.
  void WakePollers() { WakeEarly(Rest::kPolling); }
  void WakeIdle() { WakeEarly(Rest::kIdle); }
  /// Lets threads begin that have not yet; for a test's thread that waits in real time.
  void BeginAll();
  /// Ends what is left: every message loop gets WM_QUIT. A thread that does not end is reported as
  /// a failure. @return how many there were
  size_t EndAll();
  /// How long a thread may really take to come to rest or to end; 20 seconds when nobody says.
  void SetPatience(uint32_t milliseconds) { patience_ = milliseconds; }

  // --- For the DLL's own threads.
  /// As GetMessageA.
  BOOL Get(MSG* message, HWND window, UINT first, UINT last);
  /// Sleeps in virtual time. @return false, at once, for another thread
  bool Sleep(uint32_t milliseconds);
  /// The same, but WakeIdle ends it.
  bool Idle(uint32_t milliseconds);
  /// The thread asks for the time. When it did so before at this moment, and called nothing
  /// simulated meanwhile, it is waiting for the clock, and rests until that has moved.
  void AskClock();
  /// The calling thread is about to end by FreeLibraryAndExitThread, and not to return from its
  /// procedure. Its handle is a kept one from now on.
  void LeaveWithModule();
  /// For a thread that looks for nothing but the clock, or for what another library delivers, and
  /// so cannot be asked to end: during EndAll it ends here.
  void EndIfTold();

 private:
  struct Record;
  struct Start;
  enum class Rest { kRunning, kBeginning, kWaiting, kSleeping, kPolling, kIdle, kEnded };
  static bool Sleeps(Rest rest);
  Record* Self() const;
  bool BeginNext();
  bool RestUntil(Record* self, Rest rest, uint64_t wake_at);
  void WakeEarly(Rest rest);
  void Leave();
  static DWORD WINAPI Run(void* start);
  Record* Find(DWORD thread) const;  // under the lock; null for a thread that is none of the DLL's
  bool TakeMessage(Record* self, MSG* message);
  bool IsAtRest(Scope scope) const;
  void Bury();
  void AskToEnd();

  mutable Mutex mutex_;
  std::vector<std::unique_ptr<Record>> records_;
  HANDLE changed_;  // a thread has come to rest
  uint32_t patience_;
  bool given_up_ = false;  // on threads that do not end
  bool start_at_once_ = false;
  std::atomic<bool> ending_{false};
};

}  // namespace sim
