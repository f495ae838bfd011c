// Virtual time passes: what a test has planned, sleepers that wake, and timers that fall due, in
// the order of their moments.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace sim {

/// What a test has planned, by moment; of one moment in the order in which it was planned.
class Plan {
 public:
  void Add(uint64_t moment, std::function<void()> event);
  std::optional<uint64_t> Next() const;
  void RunNext();

 private:
  struct Event {
    uint64_t moment;
    std::function<void()> run;
  };
  std::vector<Event> events_;  // by moment
};

/// The thread that moves the clock does so in its message loop, where its own timers fire, or in a
/// wait, where only those of other threads do.
enum class Driver { kPumping, kWaiting };

/// Moves the clock of the current machine on to `moment`; what falls due on the way, at that moment
/// too, happens. `done` is asked whenever all threads have come to rest; true ends it there.
/// @return whether `done` did
bool PassTime(uint64_t moment, Driver driver, const std::function<bool()>& done);

}  // namespace sim
