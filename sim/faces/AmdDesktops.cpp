// Changing what an AMD adapter shows.
#include <algorithm>
#include <set>
#include <utility>

#include "sim/Topology.h"
#include "sim/faces/AmdDriver.h"
#include "sim/faces/AmdDriverRules.h"

namespace sim {
namespace {

uint64_t Area(const DisplayMode& mode) { return uint64_t{mode.width} * mode.height; }

// The largest listed mode that is no larger than the wanted one, at its depth; else the best there
// is.
std::optional<DisplayMode> NearestMode(const Model& model, const std::vector<size_t>& connectors,
                                       const DisplayMode& wanted) {
  std::optional<DisplayMode> nearest;
  for (const DisplayMode& mode : CommonModes(model, connectors)) {
    if (mode.bits != wanted.bits || mode.width > wanted.width || mode.height > wanted.height) {
      continue;
    }
    if (!nearest || Area(mode) > Area(*nearest)) nearest = mode;
  }
  return nearest ? nearest : BestMode(model, connectors);
}

std::optional<DisplayMode> ModeFor(const Model& model, const AmdDesktop& desktop) {
  if (!desktop.mode) return BestMode(model, desktop.connectors);
  const DisplayMode wanted = Turned(*desktop.mode, desktop.orientation);
  const std::optional<DisplayMode> found = FindMode(CommonModes(model, desktop.connectors), wanted);
  if (found || !desktop.nearest) return found;
  return NearestMode(model, desktop.connectors, wanted);
}

// The sources that the desktops take: their own, or the adapter's in order.
std::optional<std::vector<size_t>> SourcesFor(const Model& model, size_t gpu,
                                              const std::vector<AmdDesktop>& desktops) {
  std::set<size_t> used;
  for (const AmdDesktop& desktop : desktops) {
    if (desktop.source && !used.insert(*desktop.source).second) return std::nullopt;
  }
  std::vector<size_t> sources;
  size_t next = 0;
  for (const AmdDesktop& desktop : desktops) {
    if (desktop.source) {
      sources.push_back(*desktop.source);
      continue;
    }
    while (next < model.sources.size() &&
           (model.sources[next].adapter != gpu || used.count(next) != 0)) {
      ++next;
    }
    if (next == model.sources.size()) return std::nullopt;
    sources.push_back(next++);
  }
  return sources;
}

AmdOutcome CheckConnectors(const Model& model, const std::vector<AmdDesktop>& desktops) {
  std::set<size_t> seen;
  for (const AmdDesktop& desktop : desktops) {
    for (const size_t connector : desktop.connectors) {
      if (!IsConnected(model, connector)) return AmdOutcome::kNotConnected;
      if (!seen.insert(connector).second) return AmdOutcome::kTwice;
    }
  }
  return AmdOutcome::kDone;
}

// Sizes and places, each desktop to the right of the one before where it has no place of its own.
bool SettleAll(const Model& model, const std::vector<AmdDesktop>& desktops,
               const std::vector<size_t>& sources, Arrangement* arrangement) {
  const Arrangement* const last_use = LastUse(model, arrangement->paths);
  int32_t right = 0;
  for (size_t i = 0; i < desktops.size(); ++i) {
    const AmdDesktop& desktop = desktops[i];
    Source& source = arrangement->sources[sources[i]];
    if (!desktop.mode && last_use != nullptr) {
      source = last_use->sources[sources[i]];
    } else {
      const std::optional<DisplayMode> mode = ModeFor(model, desktop);
      if (!mode) return false;
      source.mode = Turned(*mode, desktop.orientation);
      source.orientation = desktop.orientation;
      source.x = desktop.placed ? desktop.x : right;
      source.y = desktop.placed ? desktop.y : 0;
    }
    right = source.x + static_cast<int32_t>(source.mode.width);
  }
  return true;
}

// The primary stays where another adapter shows it; otherwise the desktop at 0,0 has it.
size_t NewPrimary(const Model& model, size_t gpu, const Arrangement& arrangement,
                  const std::vector<size_t>& sources) {
  const size_t primary = model.primary_source;
  if (IsAttached(model, primary) && model.sources[primary].adapter != gpu) return primary;
  const auto at_origin = [&arrangement](size_t source) {
    return arrangement.sources[source].x == 0 && arrangement.sources[source].y == 0;
  };
  const auto found = std::find_if(sources.begin(), sources.end(), at_origin);
  return found != sources.end() ? *found : sources[0];
}

}  // namespace

AmdOutcome ShowAmdDesktops(Model& model, size_t gpu, const std::vector<AmdDesktop>& desktops) {
  const AmdOutcome checked = CheckConnectors(model, desktops);
  if (checked != AmdOutcome::kDone) return checked;
  const auto sources = SourcesFor(model, gpu, desktops);
  if (!sources) return AmdOutcome::kTooMany;
  Arrangement arrangement{{}, model.sources, 0};
  for (const Path& path : model.active) {
    if (model.sources[path.source].adapter != gpu) arrangement.paths.push_back(path);
  }
  for (size_t i = 0; i < desktops.size(); ++i) {
    for (const size_t connector : desktops[i].connectors) {
      arrangement.paths.push_back({(*sources)[i], connector});
    }
  }
  if (!PathsAreDrivable(model, arrangement.paths)) return AmdOutcome::kTooMany;
  if (!SettleAll(model, desktops, *sources, &arrangement)) return AmdOutcome::kNoSuchMode;
  PlaceDesktops(&arrangement, NewPrimary(model, gpu, arrangement, *sources));
  ApplyArrangement(model, arrangement);
  RememberCurrent(model);
  return AmdOutcome::kDone;
}

// The displays share one desktop whose size is that of the whole picture.
void ShowAmdSls(Machine& machine, size_t adapter, size_t map) {
  Model& model = machine.model();
  const AmdSlsMap& sls = model.adapters.at(adapter).amd.sls_maps.at(map);
  std::vector<size_t> connectors;
  for (const std::string& id : sls.connectors) {
    connectors.push_back(FindConnector(model, id).value());
  }
  Arrangement arrangement{{}, model.sources, 0};
  const std::vector<size_t> sources =
      SourcesFor(model, adapter, {AmdDesktop{}}).value_or(std::vector<size_t>{0});
  for (const size_t connector : connectors) arrangement.paths.push_back({sources[0], connector});
  Source& source = arrangement.sources[sources[0]];
  source.mode = sls.native.at(0);
  source.x = 0;
  source.y = 0;
  source.orientation = 0;
  Adapter& gpu = model.adapters[adapter];
  gpu.heads = std::max(HeadCount(gpu), static_cast<uint32_t>(connectors.size()));
  ApplyArrangement(model, arrangement);
}

}  // namespace sim
