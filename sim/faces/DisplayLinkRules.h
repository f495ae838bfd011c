// What the simulated library of USB displays knows of them. Those that take the state read the
// book, whose lock the caller holds.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "sim/MachineState.h"

namespace sim {

uint64_t NivoHandle(const Model& model, size_t connector);
/// Nothing for a handle that is no connector's.
std::optional<size_t> NivoConnector(const Model& model, uint64_t handle);
/// A connector's, or one that a test has given out.
bool NivoHandleIsKnown(const Machine::State& state, uint64_t handle);
uint32_t NivoState(const Machine::State& state, uint64_t handle);
/// What a listener finds waiting that has just been registered.
std::deque<NivoEvent> FirstNivoEvents(const Model& model, const std::vector<uint32_t>& pids);

}  // namespace sim
