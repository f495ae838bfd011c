// The driver's names for what hangs on its GPUs. GPU handles, display handles, display ids and
// output masks are unlike one another, so that a mix-up shows.
#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriver.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// The first output of each kind; the next one of the kind has the next bit.
constexpr uint32_t kFirstCrt = 0x1;
constexpr uint32_t kFirstTv = 0x100;
constexpr uint32_t kPanel = 0x10000;
constexpr uint32_t kFirstDigital = 0x20000;

struct TechnologyType {
  uint32_t technology;
  uint32_t connector_type;
};
constexpr TechnologyType kConnectorTypes[] = {
    {kTechnologyHd15, 0},   // VGA
    {1, 17},                // S-Video
    {2, 16},                // composite
    {3, 19},                // component
    {4, 49},                // DVI-D
    {5, 97},                // HDMI A
    {kTechnologyLvds, 64},  // panel
    {10, 70},               // DisplayPort
    {kTechnologyEmbeddedDisplayPort, 71},
    {kTechnologyEmbeddedUdi, 64},
    {15, 112},  // wireless
    {kTechnologyInternal, 64},
};

constexpr uintptr_t kGpuBase = 0x6F0000000000;
constexpr uintptr_t kGpuStride = 0x100;
constexpr uintptr_t kHandleBase = 0xD10000000000;
constexpr uintptr_t kHandlesPerModeSet = 0x1000;
constexpr uintptr_t kHandleStride = 0x10;
constexpr uint32_t kDisplayIdBase = 0x80060000;

constexpr char kModeSets[] = "nvidia: mode sets";
constexpr char kLastArrangement[] = "nvidia: last arrangement";

uint32_t FirstBitOf(uint32_t technology) {
  if (IsInternal(technology)) return kPanel;
  if (technology == kTechnologyHd15) return kFirstCrt;
  if (technology >= 1 && technology <= kTechnologyComponent) return kFirstTv;
  return kFirstDigital;
}

std::vector<size_t> ConnectorsOf(const Model& model, size_t adapter) {
  std::vector<size_t> connectors;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (model.connectors[i].adapter == adapter) connectors.push_back(i);
  }
  return connectors;
}

// A number that changes with every mode set.
uint64_t NumberOf(const Model& model) {
  uint64_t number = 14695981039346656037U;
  const auto mix = [&number](uint64_t value) { number = (number ^ value) * 1099511628211U; };
  for (const Path& path : model.active) {
    const Source& source = model.sources[path.source];
    mix(path.source);
    mix(path.connector);
    for (const uint32_t part : {source.mode.width, source.mode.height, source.mode.bits,
                                source.mode.frequency, source.orientation}) {
      mix(part);
    }
    mix(static_cast<uint32_t>(source.x));
    mix(static_cast<uint32_t>(source.y));
  }
  return number;
}

// The handles of today: how many mode sets there were, those of other programs included.
uint64_t ModeSets(Machine& machine) {
  auto& counters = machine.state().counters;
  const uint64_t now = NumberOf(machine.state().model);
  if (counters[kLastArrangement] != now) {
    counters[kLastArrangement] = now;
    ++counters[kModeSets];
  }
  return counters[kModeSets];
}

size_t ConnectorNamed(const Model& model, const std::string& id) {
  const std::optional<size_t> connector = FindConnector(model, id);
  if (!connector) throw std::runtime_error("this machine has no connector " + id);
  return *connector;
}

}  // namespace

std::string NvHex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", value);
  return text;
}

std::string NvSize(const DisplayMode& mode) {
  std::string text = std::to_string(mode.width) + "x" + std::to_string(mode.height) + "x" +
                     std::to_string(mode.bits);
  if (mode.frequency != 0) text += "@" + std::to_string(mode.frequency);
  return text;
}

void NvAdd(std::string* text, const std::string& word) {
  if (!text->empty() && text->back() != '[') *text += " ";
  *text += word;
}

bool IsNvidiaAdapter(const Adapter& adapter) {
  return adapter.hardware_id.find("VEN_10DE") != std::string::npos;
}

bool NvidiaDriverInstalled(const Model& model) {
  const std::vector<size_t> gpus = NvGpus(model);
  return std::any_of(gpus.begin(), gpus.end(),
                     [&model](size_t gpu) { return model.adapters[gpu].vendor_library; });
}

std::vector<size_t> NvGpus(const Model& model) {
  std::vector<size_t> gpus;
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    if (IsNvidiaAdapter(model.adapters[i]) && AdapterWorks(model.adapters[i])) gpus.push_back(i);
  }
  return gpus;
}

void* NvGpuOf(size_t adapter) {
  return reinterpret_cast<void*>(kGpuBase + (adapter + 1) * kGpuStride);
}

std::optional<size_t> NvGpuFromHandle(const Model& model, const void* handle) {
  for (const size_t gpu : NvGpus(model)) {
    if (NvGpuOf(gpu) == handle) return gpu;
  }
  return std::nullopt;
}

// An output that the machine's maker gave a place has it; the others follow in order, each kind in
// its own range.
uint32_t NvOutput(const Model& model, size_t connector) {
  const std::vector<size_t> connectors = ConnectorsOf(model, model.connectors[connector].adapter);
  uint32_t taken = 0;
  for (const size_t i : connectors) taken |= model.connectors[i].nvidia_output;
  for (const size_t i : connectors) {
    const Connector& c = model.connectors[i];
    uint32_t output = c.nvidia_output;
    if (output == 0) {
      output = FirstBitOf(c.technology);
      while (output != 0 && (taken & output) != 0) output <<= 1;
      taken |= output;
    }
    if (i == connector) return output;
  }
  return 0;
}

uint32_t NvConnectorType(const Connector& connector) {
  if (connector.nvidia_connector_type) return *connector.nvidia_connector_type;
  for (const TechnologyType& row : kConnectorTypes) {
    if (row.technology == connector.technology) return row.connector_type;
  }
  return kNvUnknownConnector;
}

uint32_t NvDisplayId(const Model& model, size_t connector) {
  const size_t adapter = model.connectors[connector].adapter;
  uint32_t ordinal = 0;
  for (const size_t i : ConnectorsOf(model, adapter)) {
    ++ordinal;
    if (i == connector) break;
  }
  return kDisplayIdBase + ((static_cast<uint32_t>(adapter) + 1) << 12) + ordinal;
}

std::optional<size_t> NvConnectorByOutput(const Model& model, size_t gpu, uint32_t output) {
  for (const size_t i : ConnectorsOf(model, gpu)) {
    if (NvOutput(model, i) == output) return i;
  }
  return std::nullopt;
}

std::optional<size_t> NvConnectorByDisplayId(const Model& model, uint32_t display_id) {
  for (const size_t gpu : NvGpus(model)) {
    for (const size_t i : ConnectorsOf(model, gpu)) {
      if (NvDisplayId(model, i) == display_id) return i;
    }
  }
  return std::nullopt;
}

bool NvIsActive(const Model& model, size_t connector) {
  if (SourceOfConnector(model, connector)) return true;
  if (!IsConnected(model, connector)) return false;
  const uint32_t id = NvDisplayId(model, connector);
  for (const NvidiaCloneGroup& group : model.nvidia_clone_groups) {
    for (const NvidiaCloneItem& item : group) {
      if ((item.flags & 1) == 0 && item.id == id) return true;
    }
  }
  return false;
}

uint32_t NvOutputOf(const Model& model, const std::string& id) {
  return NvOutput(model, ConnectorNamed(model, id));
}

uint32_t NvDisplayIdOf(const Model& model, const std::string& id) {
  return NvDisplayId(model, ConnectorNamed(model, id));
}

// --- Display handles.

std::vector<size_t> NvDisplays(const Model& model) {
  std::vector<size_t> displays;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Adapter& adapter = model.adapters[model.sources[i].adapter];
    if (IsNvidiaAdapter(adapter) && AdapterWorks(adapter) && IsAttached(model, i)) {
      displays.push_back(i);
    }
  }
  return displays;
}

void* NvDisplayHandle(Machine& machine, size_t source) {
  return reinterpret_cast<void*>(kHandleBase + ModeSets(machine) * kHandlesPerModeSet +
                                 (source + 1) * kHandleStride);
}

std::optional<size_t> NvDisplayFromHandle(Machine& machine, const void* handle) {
  for (const size_t source : NvDisplays(machine.state().model)) {
    if (NvDisplayHandle(machine, source) == handle) return source;
  }
  return std::nullopt;
}

std::string NvHandleName(Machine& machine, const void* handle) {
  if (handle == nullptr) return "0";
  size_t number = 0;
  for (const size_t source : NvDisplays(machine.state().model)) {
    ++number;
    if (NvDisplayHandle(machine, source) == handle) return std::to_string(number);
  }
  const auto value = reinterpret_cast<uintptr_t>(handle);
  const uintptr_t end = kHandleBase + (ModeSets(machine) + 1) * kHandlesPerModeSet;
  return value >= kHandleBase && value < end ? "stale" : "unknown";
}

void NvForgetHandles(Machine& machine) {
  ModeSets(machine);  // takes notice of the arrangement as it is
  ++machine.state().counters[kModeSets];
}

}  // namespace sim
