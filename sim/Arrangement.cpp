// Arrangements: checked, made by default, placed, applied, remembered; and what plugging does to
// them.

#include <algorithm>

#include "sim/Topology.h"

namespace sim {
namespace {

struct Rectangle {
  int64_t left, top, right, bottom;
};

Rectangle ExtentOf(const Source& source) {
  return {source.x, source.y, int64_t{source.x} + source.mode.width,
          int64_t{source.y} + source.mode.height};
}

bool Overlap(const Rectangle& a, const Rectangle& b) {
  return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool Touch(const Rectangle& a, const Rectangle& b) {
  const bool beside =
      (a.left == b.right || b.left == a.right) && a.top < b.bottom && b.top < a.bottom;
  const bool above =
      (a.top == b.bottom || b.top == a.bottom) && a.left < b.right && b.left < a.right;
  return beside || above;
}

bool Fits(const Rectangle& extent, const std::vector<Rectangle>& placed) {
  bool touches = false;
  for (const Rectangle& other : placed) {
    if (Overlap(extent, other)) return false;
    touches = touches || Touch(extent, other);
  }
  return touches;
}

std::vector<size_t> SourcesOf(const std::vector<Path>& paths) {
  std::vector<size_t> sources;
  for (const Path& path : paths) {
    if (std::find(sources.begin(), sources.end(), path.source) == sources.end()) {
      sources.push_back(path.source);
    }
  }
  return sources;
}

// The sources of one adapter, lowest first.
std::vector<size_t> SourcesOfAdapter(const Model& model, size_t adapter) {
  std::vector<size_t> sources;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (model.sources[i].adapter == adapter) sources.push_back(i);
  }
  return sources;
}

// Panels first: they are the primary display of a default arrangement.
std::vector<size_t> PanelsFirst(const Model& model, std::vector<size_t> connectors) {
  const auto is_panel = [&model](size_t i) { return IsInternal(model.connectors[i].technology); };
  std::stable_partition(connectors.begin(), connectors.end(), is_panel);
  return connectors;
}

// The paths for connectors that are to show desktops of their own; those beyond the hardware's
// means are left out.
std::vector<Path> SeparatePaths(const Model& model, const std::vector<size_t>& connectors) {
  std::vector<Path> paths;
  std::vector<uint32_t> used(model.adapters.size(), 0);
  for (size_t connector : connectors) {
    const size_t adapter = model.connectors[connector].adapter;
    const std::vector<size_t> sources = SourcesOfAdapter(model, adapter);
    if (used[adapter] >= sources.size() || used[adapter] >= HeadCount(model.adapters[adapter])) {
      continue;
    }
    paths.push_back({sources[used[adapter]++], connector});
  }
  return paths;
}

std::vector<Path> ClonePaths(const Model& model, const std::vector<size_t>& connectors) {
  for (size_t first : connectors) {
    const size_t adapter = model.connectors[first].adapter;
    const std::vector<size_t> sources = SourcesOfAdapter(model, adapter);
    if (sources.empty()) continue;
    std::vector<Path> paths;
    for (size_t connector : connectors) {
      if (model.connectors[connector].adapter != adapter) continue;
      if (paths.size() < HeadCount(model.adapters[adapter])) {
        paths.push_back({sources[0], connector});
      }
    }
    if (paths.size() > 1) return paths;
  }
  return {};
}

// The default paths of a kind of topology, out of the connectors that may be used.
std::vector<Path> DefaultPaths(const Model& model, uint32_t topology,
                               const std::vector<size_t>& connectors) {
  if (topology == kTopologyClone) return ClonePaths(model, connectors);
  if (topology == kTopologyExtend) {
    const std::vector<Path> paths = SeparatePaths(model, connectors);
    return paths.size() > 1 ? paths : std::vector<Path>();
  }
  for (size_t connector : connectors) {
    const bool panel = IsInternal(model.connectors[connector].technology);
    if (panel == (topology == kTopologyInternal)) return SeparatePaths(model, {connector});
  }
  return {};
}

// Best modes for every source of the paths, side by side in the order of the paths.
std::optional<Arrangement> Complete(const Model& model, const std::vector<Path>& paths,
                                    uint32_t topology) {
  Arrangement arrangement{paths, model.sources, topology};
  int32_t x = 0;
  for (size_t source : SourcesOf(paths)) {
    std::vector<size_t> connectors;
    for (const Path& path : paths) {
      if (path.source == source) connectors.push_back(path.connector);
    }
    const std::optional<DisplayMode> mode = BestMode(model, connectors);
    if (!mode) return std::nullopt;
    Source& s = arrangement.sources[source];
    s.mode = *mode;
    s.orientation = 0;
    s.x = x;
    s.y = 0;
    x += static_cast<int32_t>(mode->width);
  }
  return arrangement;
}

// Applies what the database holds for the monitors that are connected now.
bool ApplyFromDatabase(Model& model) {
  const auto entry = model.database.find(ConnectedSet(model));
  if (entry == model.database.end() || !PathsAreDrivable(model, entry->second.paths)) return false;
  ApplyArrangement(model, Arrangement(entry->second));
  return true;
}

}  // namespace

Arrangement CurrentArrangement(const Model& model) {
  return {model.active, model.sources, TopologyOf(model, model.active)};
}

uint32_t TopologyOf(const Model& model, const std::vector<Path>& paths) {
  if (paths.empty()) return 0;
  if (paths.size() == 1) {
    const bool panel = IsInternal(model.connectors[paths[0].connector].technology);
    return panel ? kTopologyInternal : kTopologyExternal;
  }
  const size_t desktops = SourcesOf(paths).size();
  if (desktops == 1) return kTopologyClone;
  return desktops == paths.size() ? kTopologyExtend : 0;
}

bool PathsAreDrivable(const Model& model, const std::vector<Path>& paths) {
  std::set<size_t> connectors;
  std::vector<uint32_t> used(model.adapters.size(), 0);
  for (const Path& path : paths) {
    if (path.source >= model.sources.size() || path.connector >= model.connectors.size()) {
      return false;
    }
    const size_t adapter = model.connectors[path.connector].adapter;
    if (model.sources[path.source].adapter != adapter) return false;
    if (!IsAvailable(model, path.connector)) return false;
    if (!connectors.insert(path.connector).second) return false;
    if (++used[adapter] > HeadCount(model.adapters[adapter])) return false;
  }
  return true;
}

std::optional<Arrangement> NamedTopology(const Model& model, uint32_t topology, bool force,
                                         std::vector<size_t>* forced) {
  const auto entry = model.remembered.find(ConnectedSet(model));
  if (entry != model.remembered.end()) {
    for (auto saved = entry->second.rbegin(); saved != entry->second.rend(); ++saved) {
      if (saved->topology == topology && PathsAreDrivable(model, saved->paths)) return *saved;
    }
  }
  std::vector<size_t> connectors;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (IsAvailable(model, i)) connectors.push_back(i);
  }
  const std::vector<Path> paths = DefaultPaths(model, topology, PanelsFirst(model, connectors));
  if (!paths.empty()) return Complete(model, paths, topology);
  if (!force || topology == kTopologyInternal) return std::nullopt;

  // One undetected analog output at a time, until one makes the topology possible.
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const Connector& c = model.connectors[i];
    if (IsAvailable(model, i) || !IsForcible(c.technology)) continue;
    if (c.adapter >= model.adapters.size() || !AdapterWorks(model.adapters[c.adapter])) continue;
    std::vector<size_t> more = connectors;
    more.push_back(i);
    const std::vector<Path> found = DefaultPaths(model, topology, PanelsFirst(model, more));
    if (found.empty()) continue;
    if (forced != nullptr) forced->push_back(i);
    return Complete(model, found, topology);
  }
  return std::nullopt;
}

void PlaceDesktops(Arrangement* arrangement, size_t primary) {
  std::vector<Source>& sources = arrangement->sources;
  const int32_t shift_x = sources[primary].x;
  const int32_t shift_y = sources[primary].y;
  std::vector<size_t> waiting;
  for (size_t source : SourcesOf(arrangement->paths)) {
    sources[source].x -= shift_x;
    sources[source].y -= shift_y;
    if (source != primary) waiting.push_back(source);
  }
  std::stable_sort(waiting.begin(), waiting.end(),
                   [&sources](size_t a, size_t b) { return sources[a].x < sources[b].x; });
  std::vector<Rectangle> placed = {ExtentOf(sources[primary])};
  while (!waiting.empty()) {
    auto next = std::find_if(waiting.begin(), waiting.end(), [&](size_t source) {
      return Fits(ExtentOf(sources[source]), placed);
    });
    if (next == waiting.end()) {
      next = waiting.begin();
      int64_t right = 0;
      for (const Rectangle& other : placed) right = std::max(right, other.right);
      sources[*next].x = static_cast<int32_t>(right);
      sources[*next].y = 0;
    }
    placed.push_back(ExtentOf(sources[*next]));
    waiting.erase(next);
  }
}

void ApplyArrangement(Model& model, const Arrangement& arrangement) {
  model.active = arrangement.paths;
  for (size_t source : SourcesOf(arrangement.paths)) {
    const Source& from = arrangement.sources[source];
    Source& to = model.sources[source];
    to.mode = from.mode;
    to.x = from.x;
    to.y = from.y;
    to.orientation = from.orientation;
    if (to.x == 0 && to.y == 0) model.primary_source = source;
  }
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    if (!SourceOfConnector(model, i)) model.connectors[i].forced = false;
  }
}

void RememberCurrent(Model& model) {
  const std::set<std::string> connected = ConnectedSet(model);
  for (size_t source : SourcesOf(model.active)) {
    model.sources[source].registry = model.sources[source].mode;
  }
  const Arrangement current = CurrentArrangement(model);
  model.database[connected] = current;
  std::vector<Arrangement>& saved = model.remembered[connected];
  const auto same = [&current](const Arrangement& a) { return a.topology == current.topology; };
  saved.erase(std::remove_if(saved.begin(), saved.end(), same), saved.end());
  saved.push_back(current);
}

void PlugMonitor(Model& model, size_t connector, const Monitor& monitor) {
  model.connectors[connector].monitor = monitor;
  model.connectors[connector].forced = false;
  if (!ApplyFromDatabase(model)) RememberCurrent(model);
}

void UnplugMonitor(Model& model, size_t connector) {
  model.connectors[connector].monitor.reset();
  model.connectors[connector].forced = false;
  if (ApplyFromDatabase(model)) return;
  Arrangement rest = CurrentArrangement(model);
  const auto is_dark = [&model](const Path& path) { return !IsAvailable(model, path.connector); };
  rest.paths.erase(std::remove_if(rest.paths.begin(), rest.paths.end(), is_dark), rest.paths.end());
  if (!rest.paths.empty()) {
    const std::vector<size_t> sources = SourcesOf(rest.paths);
    const bool keeps =
        std::find(sources.begin(), sources.end(), model.primary_source) != sources.end();
    PlaceDesktops(&rest, keeps ? model.primary_source : sources[0]);
    ApplyArrangement(model, rest);
  } else {
    std::optional<Arrangement> alone = NamedTopology(model, kTopologyInternal, false, nullptr);
    if (!alone) alone = NamedTopology(model, kTopologyExternal, false, nullptr);
    ApplyArrangement(model, alone.value_or(Arrangement()));
  }
  RememberCurrent(model);
}

}  // namespace sim
