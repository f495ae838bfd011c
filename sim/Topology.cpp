#include "sim/Topology.h"

#include <algorithm>
#include <utility>

#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// What Windows assumes of a display that it drives without having detected it.
constexpr DisplayMode kAssumedModes[] = {
    {640, 480, 16, 60}, {800, 600, 16, 60}, {1024, 768, 16, 60},
    {640, 480, 32, 60}, {800, 600, 32, 60}, {1024, 768, 32, 60},
};

// 60 Hz first, then the higher frequency: what a person sees as the better of two equal sizes.
bool IsBetterFrequency(uint32_t candidate, uint32_t current) {
  if (current == 60) return false;
  return candidate == 60 || candidate > current;
}

bool IsLarger(const DisplayMode& candidate, const DisplayMode& current) {
  const uint64_t a = uint64_t{candidate.width} * candidate.height;
  const uint64_t b = uint64_t{current.width} * current.height;
  if (a != b) return a > b;
  if (candidate.bits != current.bits) return candidate.bits > current.bits;
  return IsBetterFrequency(candidate.frequency, current.frequency);
}

// NVIDIA's driver shows another adapter's picture on it, which no path tells. The other adapter's
// own display in the group shows what Windows gives it.
bool IsInCloneGroup(const Model& model, size_t connector) {
  for (const NvidiaCloneGroup& group : model.nvidia_clone_groups) {
    for (const NvidiaCloneItem& item : group) {
      const bool foreign = (item.flags & 1) != 0;
      if (!foreign && NvCloneConnector(model, item) == connector) return true;
    }
  }
  return false;
}

bool SamePaths(std::vector<Path> a, std::vector<Path> b) {
  const auto key = [](const Path& path) { return std::make_pair(path.source, path.connector); };
  const auto before = [&key](const Path& x, const Path& y) { return key(x) < key(y); };
  std::sort(a.begin(), a.end(), before);
  std::sort(b.begin(), b.end(), before);
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&key](const Path& x, const Path& y) { return key(x) == key(y); });
}

}  // namespace

bool IsInternal(uint32_t technology) {
  return technology == kTechnologyInternal || technology == kTechnologyLvds ||
         technology == kTechnologyEmbeddedDisplayPort || technology == kTechnologyEmbeddedUdi;
}

bool IsForcible(uint32_t technology) { return technology <= kTechnologyComponent; }

bool AdapterWorks(const Adapter& adapter) {
  return !adapter.disabled && adapter.problem == 0 && !adapter.mirroring;
}

bool IsConnected(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  return c.monitor && c.adapter < model.adapters.size() && AdapterWorks(model.adapters[c.adapter]);
}

bool IsAvailable(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  if (IsConnected(model, connector)) return true;
  return c.forced && c.adapter < model.adapters.size() && AdapterWorks(model.adapters[c.adapter]);
}

std::vector<size_t> ConnectorsOfSource(const Model& model, size_t source) {
  std::vector<size_t> connectors;
  for (const Path& path : model.active) {
    if (path.source == source) connectors.push_back(path.connector);
  }
  std::sort(connectors.begin(), connectors.end());
  return connectors;
}

bool IsAttached(const Model& model, size_t source) {
  return !ConnectorsOfSource(model, source).empty();
}

std::optional<size_t> SourceOfConnector(const Model& model, size_t connector) {
  for (const Path& path : model.active) {
    if (path.connector == connector) return path.source;
  }
  return std::nullopt;
}

std::optional<size_t> FindConnector(const Model& model, const std::string& id) {
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (model.connectors[i].id == id) return i;
  }
  return std::nullopt;
}

std::optional<size_t> FindSource(const Model& model, const std::string& device_name) {
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (model.sources[i].device_name == device_name) return i;
  }
  return std::nullopt;
}

std::set<std::string> ConnectedSet(const Model& model) {
  const std::vector<std::string> ids = ConnectedIds(model);
  return {ids.begin(), ids.end()};
}

uint32_t HeadCount(const Adapter& adapter) {
  return adapter.heads != 0 ? adapter.heads : adapter.sources;
}

std::vector<DisplayMode> ModesOfConnector(const Model& model, size_t connector) {
  const Connector& c = model.connectors[connector];
  if (c.monitor) return c.monitor->modes;
  return {std::begin(kAssumedModes), std::end(kAssumedModes)};
}

std::vector<DisplayMode> CommonModes(const Model& model, const std::vector<size_t>& connectors) {
  if (connectors.empty()) return {};
  std::vector<DisplayMode> common = ModesOfConnector(model, connectors[0]);
  for (size_t i = 1; i < connectors.size(); ++i) {
    const std::vector<DisplayMode> other = ModesOfConnector(model, connectors[i]);
    const auto is_missing = [&other](const DisplayMode& mode) {
      return std::find(other.begin(), other.end(), mode) == other.end();
    };
    common.erase(std::remove_if(common.begin(), common.end(), is_missing), common.end());
  }
  return common;
}

std::optional<DisplayMode> BestMode(const Model& model, const std::vector<size_t>& connectors) {
  const std::vector<DisplayMode> modes = CommonModes(model, connectors);
  if (connectors.size() == 1 && model.connectors[connectors[0]].monitor) {
    const DisplayMode& preferred = model.connectors[connectors[0]].monitor->preferred;
    if (std::find(modes.begin(), modes.end(), preferred) != modes.end()) return preferred;
  }
  std::optional<DisplayMode> best;
  for (const DisplayMode& mode : modes) {
    if (!best || IsLarger(mode, *best)) best = mode;
  }
  return best;
}

std::optional<DisplayMode> FindMode(const std::vector<DisplayMode>& modes,
                                    const DisplayMode& wanted) {
  std::optional<DisplayMode> found;
  for (const DisplayMode& mode : modes) {
    if (mode.width != wanted.width || mode.height != wanted.height || mode.bits != wanted.bits) {
      continue;
    }
    if (wanted.frequency != 0 && mode.frequency != wanted.frequency) continue;
    if (!found || IsBetterFrequency(mode.frequency, found->frequency)) found = mode;
  }
  return found;
}

std::optional<size_t> ConnectorForSource(const Model& model, const std::vector<Path>& paths,
                                         size_t source) {
  const size_t adapter = model.sources[source].adapter;
  const auto users = [&paths](size_t connector) {
    size_t count = 0;
    for (const Path& path : paths) {
      if (path.connector != connector) continue;
      for (const Path& other : paths) count += other.source == path.source ? 1 : 0;
    }
    return count;
  };
  std::optional<size_t> grouped;
  std::optional<size_t> shared;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (model.connectors[i].adapter != adapter || !IsAvailable(model, i)) continue;
    const size_t count = users(i);
    if (count == 0 && !IsInCloneGroup(model, i)) return i;
    if (count == 0 && !grouped) grouped = i;
    if (count > 1) shared = i;
  }
  return grouped ? grouped : shared;
}

std::vector<DisplayMode> ModesOfSource(const Model& model, size_t source) {
  const std::vector<size_t> connectors = ConnectorsOfSource(model, source);
  if (!connectors.empty()) return CommonModes(model, connectors);
  const std::optional<size_t> next = ConnectorForSource(model, model.active, source);
  return next ? ModesOfConnector(model, *next) : std::vector<DisplayMode>();
}

std::string DescribeSizes(const Model& model) {
  std::vector<const Source*> desktops;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (IsAttached(model, i)) desktops.push_back(&model.sources[i]);
  }
  std::stable_sort(desktops.begin(), desktops.end(),
                   [](const Source* a, const Source* b) { return a->x < b->x; });
  std::string text;
  for (const Source* desktop : desktops) {
    if (!text.empty()) text += "+";
    text += std::to_string(desktop->mode.width) + "x" + std::to_string(desktop->mode.height);
  }
  return text;
}

void NumberDevices(Model& model) {
  uint32_t luid = 0x9000;
  for (Adapter& adapter : model.adapters) {
    luid += 0x111;
    if (adapter.luid_low != 0 || adapter.luid_high != 0) continue;
    adapter.luid_low = luid;
    adapter.luid_high = adapter.usb ? 1 : 0;
  }
  std::vector<uint32_t> next_target;
  for (const Adapter& adapter : model.adapters) next_target.push_back(adapter.usb ? 0x1100 : 0x100);
  for (Connector& connector : model.connectors) {
    if (connector.target_id != 0 || connector.adapter >= model.adapters.size()) continue;
    connector.target_id = next_target[connector.adapter];
    next_target[connector.adapter] += 0x100;
  }
  if (!model.sources.empty()) return;
  uint32_t number = 0;
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    for (uint32_t id = 0; id < model.adapters[i].sources; ++id) {
      const bool mirror = model.adapters[i].mirroring;
      Source source;
      source.adapter = i;
      source.source_id = id;
      source.device_name = (mirror ? "\\\\.\\DISPLAYV" : "\\\\.\\DISPLAY") +
                           std::to_string(mirror ? id + 1 : ++number);
      model.sources.push_back(source);
    }
  }
}

const Arrangement* LastUse(const Model& model, const std::vector<Path>& paths) {
  const auto entry = model.remembered.find(ConnectedSet(model));
  if (entry == model.remembered.end()) return nullptr;
  for (auto saved = entry->second.rbegin(); saved != entry->second.rend(); ++saved) {
    if (SamePaths(saved->paths, paths)) return &*saved;
  }
  return nullptr;
}

DisplayMode Turned(DisplayMode mode, uint32_t orientation) {
  if ((orientation & 1) != 0) std::swap(mode.width, mode.height);
  return mode;
}

}  // namespace sim
