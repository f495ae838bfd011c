// A critical section of the simulator's own. The library under test has threads, and their calls
// meet here.
#pragma once

#include "Common/Win.h"

namespace sim {

class Mutex {
 public:
  Mutex() { InitializeCriticalSection(&section_); }
  ~Mutex() { DeleteCriticalSection(&section_); }
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;

  void Enter() { EnterCriticalSection(&section_); }
  void Leave() { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

class Lock {
 public:
  explicit Lock(Mutex& mutex) : mutex_(mutex) { mutex_.Enter(); }
  ~Lock() { mutex_.Leave(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace sim
