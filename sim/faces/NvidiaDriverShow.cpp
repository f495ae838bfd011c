// From what the driver is told to show to what Windows then has.
#include <algorithm>
#include <set>
#include <utility>

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

NvStatus CheckConnectors(const Model& model, const std::vector<NvDesktop>& desktops) {
  std::set<size_t> seen;
  for (const NvDesktop& desktop : desktops) {
    if (desktop.connectors.empty()) return kNvInvalidArgument;
    for (const size_t connector : desktop.connectors) {
      if (!seen.insert(connector).second) return kNvInvalidArgument;
      const size_t adapter = model.connectors[connector].adapter;
      if (adapter != model.sources[desktop.source].adapter) return kNvError;
    }
  }
  return kNvOk;
}

// The mode of one desktop; its place is told already.
NvStatus Settle(const Model& model, const NvDesktop& desktop, const Arrangement* last_use,
                Source* source) {
  source->x = desktop.x;
  source->y = desktop.y;
  source->orientation = desktop.orientation;
  if (desktop.mode) {
    const std::optional<DisplayMode> found = FindMode(CommonModes(model, desktop.connectors),
                                                      Turned(*desktop.mode, desktop.orientation));
    if (!found) return kNvError;
    source->mode = Turned(*found, desktop.orientation);
    return kNvOk;
  }
  if (last_use != nullptr) {
    *source = last_use->sources[desktop.source];
    return kNvOk;
  }
  const std::optional<DisplayMode> best = BestMode(model, desktop.connectors);
  if (!best) return kNvError;
  source->mode = *best;
  return kNvOk;
}

// The desktop that says so; otherwise the primary stays where it is shown on another adapter, and
// else the first desktop has it.
size_t PrimaryOf(const Model& model, const std::vector<NvDesktop>& desktops,
                 const std::vector<Path>& paths) {
  for (const NvDesktop& desktop : desktops) {
    if (desktop.primary) return desktop.source;
  }
  const bool stays = std::any_of(paths.begin(), paths.end(), [&model](const Path& path) {
    return path.source == model.primary_source;
  });
  return stays ? model.primary_source : desktops[0].source;
}

}  // namespace

NvStatus ArrangeNvDesktops(const Model& model, const std::vector<NvDesktop>& desktops,
                           std::optional<size_t> only, Arrangement* result) {
  if (desktops.empty()) return kNvInvalidArgument;
  if (const NvStatus status = CheckConnectors(model, desktops); status != kNvOk) return status;
  result->sources = model.sources;
  for (const Path& path : model.active) {
    if (only && model.sources[path.source].adapter != *only) result->paths.push_back(path);
  }
  for (const NvDesktop& desktop : desktops) {
    for (const size_t connector : desktop.connectors) {
      result->paths.push_back({desktop.source, connector});
    }
  }
  if (!PathsAreDrivable(model, result->paths)) return kNvError;
  const Arrangement* const last_use = LastUse(model, result->paths);
  for (const NvDesktop& desktop : desktops) {
    const NvStatus status = Settle(model, desktop, last_use, &result->sources[desktop.source]);
    if (status != kNvOk) return status;
  }
  PlaceDesktops(result, PrimaryOf(model, desktops, result->paths));
  return kNvOk;
}

std::optional<size_t> NvFreeSource(const Model& model, size_t adapter, uint32_t source_id,
                                   const std::vector<NvDesktop>& taken) {
  const auto is_taken = [&taken](size_t source) {
    return std::any_of(taken.begin(), taken.end(),
                       [source](const NvDesktop& desktop) { return desktop.source == source; });
  };
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Source& source = model.sources[i];
    if (source.adapter != adapter || is_taken(i)) continue;
    if (source_id == 0 || source.source_id == source_id) return i;
  }
  return std::nullopt;
}

}  // namespace sim
