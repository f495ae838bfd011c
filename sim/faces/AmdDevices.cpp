// Adapters and displays as AMD's libraries number and name them.
#include <algorithm>
#include <iterator>

#include "sim/Topology.h"
#include "sim/faces/AmdDriverRules.h"

namespace sim {
namespace {

constexpr char kAmdHardware[] = "VEN_1002";
constexpr int32_t kFirstPhysicalAdapter = 16;

// One row per output technology that ADL has a type and a connector for; any other is a digital
// flat panel on an unknown connector.
struct AdlOutput {
  uint32_t technology;
  int32_t type;
  int32_t connector;
};
constexpr AdlOutput kAdlOutputs[] = {
    {kTechnologyHd15, 0, 1},                  // monitor on VGA
    {1, 1, 12},                               // television on S-Video
    {2, 1, 13},                               // television on composite video
    {kTechnologyComponent, 4, 14},            // component video
    {4, 3, 2},                                // DVI-D
    {5, 3, 10},                               // HDMI type A
    {kTechnologyLvds, 2, 8},                  // panel on the maker's own plug
    {kTechnologyInternal, 2, 8},              //
    {10, 3, 15},                              // DisplayPort
    {kTechnologyEmbeddedDisplayPort, 2, 16},  // panel on embedded DisplayPort
    {15, 3, 17},                              // wireless
};

const AdlOutput* FindOutput(uint32_t technology) {
  const auto row = std::find_if(
      std::begin(kAdlOutputs), std::end(kAdlOutputs),
      [technology](const AdlOutput& output) { return output.technology == technology; });
  return row == std::end(kAdlOutputs) ? nullptr : row;
}

}  // namespace

bool IsAmdAdapter(const Adapter& adapter) {
  return adapter.hardware_id.find(kAmdHardware) != std::string::npos;
}

std::vector<AdlAdapter> AdlAdapters(const Model& model) {
  std::vector<AdlAdapter> adapters;
  int32_t next = 0;
  for (size_t gpu = 0; gpu < model.adapters.size(); ++gpu) {
    const Adapter& adapter = model.adapters[gpu];
    if (!IsAmdAdapter(adapter) || adapter.mirroring) continue;
    size_t place = 0;
    for (size_t source = 0; source < model.sources.size(); ++source) {
      if (model.sources[source].adapter != gpu) continue;
      const std::vector<uint32_t>& told = adapter.amd.adl_indices;
      const int32_t index = place < told.size() ? static_cast<int32_t>(told[place]) : next;
      next = std::max(next, index + 1);
      adapters.push_back({index, source, gpu, AdapterWorks(adapter)});
      ++place;
    }
  }
  return adapters;
}

std::optional<AdlAdapter> FindAdlAdapter(const Model& model, int32_t index) {
  for (const AdlAdapter& adapter : AdlAdapters(model)) {
    if (adapter.index == index) return adapter;
  }
  return std::nullopt;
}

int32_t AdlIndexOfSource(const Model& model, size_t source) {
  for (const AdlAdapter& adapter : AdlAdapters(model)) {
    if (adapter.source == source) return adapter.index;
  }
  return -1;
}

int32_t AdlPhysicalAdapter(const Model& model, size_t gpu) {
  int32_t number = kFirstPhysicalAdapter;
  for (size_t i = 0; i < gpu; ++i) number += IsAmdAdapter(model.adapters[i]) ? 1 : 0;
  return number;
}

std::vector<size_t> ConnectorsOfAdapter(const Model& model, size_t gpu) {
  std::vector<size_t> connectors;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (model.connectors[i].adapter == gpu) connectors.push_back(i);
  }
  return connectors;
}

// Display 1 is the panel, on every adapter; the others have the numbers around it in their order.
int32_t AdlDisplayIndex(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  if (c.amd.display_index) return static_cast<int32_t>(*c.amd.display_index);
  int32_t panels = 0;
  int32_t others = 0;
  for (const size_t i : ConnectorsOfAdapter(model, c.adapter)) {
    const bool first_panel = IsInternal(model.connectors[i].technology) && panels == 0;
    if (first_panel) ++panels;
    if (i == connector) return first_panel ? 1 : others == 0 ? 0 : others + 1;
    if (!first_panel) ++others;
  }
  return -1;
}

std::optional<size_t> AdlConnector(const Model& model, size_t gpu, int32_t display_index) {
  for (const size_t i : ConnectorsOfAdapter(model, gpu)) {
    if (AdlDisplayIndex(model, i) == display_index) return i;
  }
  return std::nullopt;
}

int32_t AdlDisplayType(const Connector& connector) {
  if (connector.amd.display_type) return static_cast<int32_t>(*connector.amd.display_type);
  const AdlOutput* output = FindOutput(connector.technology);
  return output != nullptr ? output->type : 3;
}

int32_t AdlConnectorType(const Connector& connector) {
  if (connector.amd.connector) return static_cast<int32_t>(*connector.amd.connector);
  const AdlOutput* output = FindOutput(connector.technology);
  return output != nullptr ? output->connector : 0;
}

std::vector<size_t> AmdDesktops(const Model& model, size_t gpu) {
  std::vector<size_t> desktops;
  for (size_t source = 0; source < model.sources.size(); ++source) {
    if (model.sources[source].adapter == gpu && IsAttached(model, source)) {
      desktops.push_back(source);
    }
  }
  std::stable_partition(desktops.begin(), desktops.end(),
                        [&model](size_t source) { return source == model.primary_source; });
  return desktops;
}

}  // namespace sim
