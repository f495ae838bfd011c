// The threads that the DLL starts: real ones, but in virtual time each runs only until it waits for
// a message or sleeps, and goes on when the thread that drives the clock lets it. So a test
// with a second thread gives the same journal every time. Two do run side by side between the start
// of a thread, or a message for it, and the next moment at which the other one waits or moves the
// clock. Journal, ledger, faults, timers and this class are locked; the model and the book of
// windows are not: meanwhile they are the new thread's.
#pragma once

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

  // --- For the thread that drives the clock.
  /// Returns once every thread waits, sleeps or has really ended. @return false, with a failure
  /// reported, when one of them does not come to rest
  bool Settle(Scope scope);
  /// Hands a timer over that is due; the thread finds it when it next looks for messages.
  void Deliver(DWORD thread, const Machine::Timer& timer);
  /// A message was posted or sent to that thread; nothing happens if it is none of the DLL's.
  void Notify(DWORD thread);
  /// When the first sleeper wakes; nothing when nobody sleeps.
  std::optional<uint64_t> NextWake() const;
  void WakeSleepers(uint64_t moment);
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

 private:
  struct Record;
  struct Start;
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
};

}  // namespace sim
