#include "sim/VirtualTime.h"

#include <algorithm>
#include <utility>

#include "sim/MachineState.h"

namespace sim {
namespace {

DWORD OwnerOf(const Machine::Timer& timer) {
  return timer.window != nullptr ? GetWindowThreadProcessId(timer.window, nullptr) : timer.thread;
}

void Fire(Machine::State& state, const Machine::Timer& timer) {
  if (timer.window != nullptr && !IsWindow(timer.window)) {
    state.clock.ForgetWindow(timer.window);
  } else if (state.threads.IsMember(OwnerOf(timer))) {
    state.threads.Deliver(OwnerOf(timer), timer);
  } else if (timer.procedure != nullptr) {
    timer.procedure(timer.window, WM_TIMER, timer.id, static_cast<DWORD>(state.clock.tick_count()));
  } else if (timer.window != nullptr) {
    SendMessageA(timer.window, WM_TIMER, timer.id, 0);
  }
}

// The first thing that is due by `moment`: events before sleepers, sleepers before timers.
bool DoNext(Machine::State& state, uint64_t moment, Driver driver) {
  const auto fires = [&](const Machine::Timer& timer) {
    return driver == Driver::kPumping || state.threads.IsMember(OwnerOf(timer));
  };
  const uint64_t never = ~uint64_t{0};
  const uint64_t event = state.plan.Next().value_or(never);
  const uint64_t wake = state.threads.NextWake().value_or(never);
  const uint64_t timer = state.clock.EarliestDue(fires).value_or(never);
  const uint64_t first = std::min({event, wake, timer});
  if (first == never || first > moment) return false;
  state.clock.PassTo(first);
  if (event == first) {
    state.plan.RunNext();
  } else if (wake == first) {
    state.threads.WakeSleeper(first);
  } else if (const auto due = state.clock.NextDue(first, fires)) {
    Fire(state, *due);
  }
  return true;
}

}  // namespace

void Plan::Add(uint64_t moment, std::function<void()> event) {
  const auto later = [](uint64_t at, const Event& other) { return at < other.moment; };
  const auto place = std::upper_bound(events_.begin(), events_.end(), moment, later);
  events_.insert(place, {moment, std::move(event)});
}

std::optional<uint64_t> Plan::Next() const {
  if (events_.empty()) return std::nullopt;
  return events_.front().moment;
}

void Plan::RunNext() {
  const Event event = std::move(events_.front());
  events_.erase(events_.begin());
  event.run();
}

bool PassTime(uint64_t moment, Driver driver, const std::function<bool()>& done) {
  Machine::State& state = Machine::Current().state();
  const auto scope = driver == Driver::kWaiting ? Threads::Scope::kAll : Threads::Scope::kResting;
  // Whoever polls the clock looks at it at both ends, too.
  state.threads.WakePollers();
  for (;;) {
    const bool settled = state.threads.Settle(scope);
    if (done()) return true;
    if (!settled) break;
    if (DoNext(state, moment, driver)) continue;
    if (state.clock.now() >= moment) return false;
    state.clock.PassTo(moment);
    state.threads.WakePollers();
  }
  state.clock.PassTo(moment);
  return false;
}

}  // namespace sim
