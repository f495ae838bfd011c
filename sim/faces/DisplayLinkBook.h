// What the simulated library of USB displays keeps: who listens, for which products, and what they
// have not been told yet.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "Common/Win.h"
#include "sim/Lock.h"

namespace sim {

struct NivoEvent {
  uint32_t event;
  uint64_t handle;
};

using NivoCallback = void (*)(void* context, uint32_t event, uint64_t handle, uint64_t unused);

struct NivoListener {
  NivoCallback callback;
  void* context;
  std::deque<NivoEvent> pending;
};

/// Clients of several threads meet here; `mutex` guards all of it.
struct DisplayLinkBook {
  DisplayLinkBook() : arrived(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
  ~DisplayLinkBook() { CloseHandle(arrived); }
  DisplayLinkBook(const DisplayLinkBook&) = delete;
  DisplayLinkBook& operator=(const DisplayLinkBook&) = delete;

  mutable Mutex mutex;
  HANDLE arrived;  // set when there is something to deliver; waited for in real time only
  std::vector<uint32_t> pids;
  uint32_t pids_asked_for = 0;  // calls of dlSubscribePids, whatever came of them
  std::vector<NivoListener> listeners;
  /// Pairs that dlRegisterNivoDisplayNotification was called with, whatever came of it.
  std::set<std::pair<NivoCallback, void*>> asked_for;
  std::map<uint64_t, uint32_t> states;  // execution states that a test has set, by handle
  std::set<uint64_t> told;              // handles that events have named
};

}  // namespace sim
