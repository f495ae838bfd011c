// Adapters and displays as the legacy library numbers them.
#include <algorithm>
#include <iterator>

#include "sim/Topology.h"
#include "sim/faces/AmdLegacy.h"

namespace sim {
namespace {

// One row per output technology: the type of EnumDisplays, the kind of a device, and the kind that
// display vectors are asked for by.
struct LegacyOutput {
  uint32_t technology;
  uint32_t type;
  uint32_t kind;
  uint32_t vector_kind;
};
constexpr LegacyOutput kOutputs[] = {
    {kTechnologyInternal, 1, 2, 1},
    {kTechnologyLvds, 1, 2, 1},
    {kTechnologyEmbeddedDisplayPort, 1, 2, 1},
    {kTechnologyHd15, 2, 5, 2},
    {1, 3, 3, 4},
    {2, 3, 3, 4},
    {kTechnologyComponent, 3, 4, 4},
    {4, 4, 6, 8},
    {5, 6, 8, 8},
    {10, 7, 10, 8},
};
constexpr LegacyOutput kOtherOutput = {0, 9, 11, 8};

const LegacyOutput& OutputOf(const Connector& connector) {
  const auto row = std::find_if(
      std::begin(kOutputs), std::end(kOutputs),
      [&connector](const LegacyOutput& o) { return o.technology == connector.technology; });
  return row != std::end(kOutputs) ? *row : kOtherOutput;
}

}  // namespace

// Windows counts the devices of adapters that work, and mirroring ones.
std::optional<size_t> LegacySource(const Model& model, uint32_t adapter) {
  uint32_t number = 0;
  for (size_t source = 0; source < model.sources.size(); ++source) {
    const Adapter& gpu = model.adapters[model.sources[source].adapter];
    if (!AdapterWorks(gpu) && !gpu.mirroring) continue;
    if (number++ != adapter) continue;
    return IsAmdAdapter(gpu) && AdapterWorks(gpu) ? std::optional<size_t>(source) : std::nullopt;
  }
  return std::nullopt;
}

// The panel has the first bit.
std::vector<size_t> LegacyDisplays(const Model& model, size_t gpu) {
  std::vector<size_t> connectors = ConnectorsOfAdapter(model, gpu);
  std::stable_partition(connectors.begin(), connectors.end(),
                        [&model](size_t i) { return IsInternal(model.connectors[i].technology); });
  if (connectors.size() > kLegacyDisplays) connectors.resize(kLegacyDisplays);
  return connectors;
}

std::optional<size_t> LegacyConnector(const Model& model, size_t gpu, uint32_t index) {
  const std::vector<size_t> displays = LegacyDisplays(model, gpu);
  return index < displays.size() ? std::optional<size_t>(displays[index]) : std::nullopt;
}

uint32_t LegacyVector(const Model& model, size_t connector) {
  const std::vector<size_t> displays = LegacyDisplays(model, model.connectors[connector].adapter);
  const auto place = std::find(displays.begin(), displays.end(), connector);
  return place == displays.end() ? 0 : 1U << (place - displays.begin());
}

uint32_t LegacyType(const Connector& connector) {
  return connector.amd.legacy_type.value_or(OutputOf(connector).type);
}

uint32_t LegacyKind(const Connector& connector) {
  return connector.amd.legacy_kind.value_or(OutputOf(connector).kind);
}

uint32_t LegacyVectorOfKind(const Model& model, size_t gpu, uint32_t kind) {
  uint32_t vector = 0;
  for (const size_t connector : LegacyDisplays(model, gpu)) {
    if (OutputOf(model.connectors[connector]).vector_kind == kind) {
      vector |= LegacyVector(model, connector);
    }
  }
  return vector;
}

}  // namespace sim
