#include "sim/faces/ChangeSettings.h"

#include <algorithm>
#include <map>
#include <utility>

#include "sim/Topology.h"

namespace sim {
namespace {

constexpr DWORD kKnownFlags = CDS_UPDATEREGISTRY | CDS_TEST | CDS_FULLSCREEN | CDS_GLOBAL |
                              CDS_SET_PRIMARY | CDS_VIDEOPARAMETERS | CDS_NORESET | CDS_RESET;
constexpr DWORD kSize = DM_PELSWIDTH | DM_PELSHEIGHT;

bool FlagsAreValid(DWORD flags) {
  if ((flags & ~kKnownFlags) != 0) return false;
  const bool registry = (flags & CDS_UPDATEREGISTRY) != 0;
  if ((flags & (CDS_GLOBAL | CDS_NORESET)) != 0 && !registry) return false;
  return (flags & CDS_NORESET) == 0 || (flags & CDS_RESET) == 0;
}

bool AsksToDetach(const SettingsRequest& request) {
  return (request.fields & kSize) == kSize && (request.fields & DM_POSITION) != 0 &&
         request.mode.width == 0 && request.mode.height == 0;
}

int32_t RightEdge(const Model& model) {
  int32_t right = 0;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Source& source = model.sources[i];
    if (!IsAttached(model, i)) continue;
    right = std::max(right, source.x + static_cast<int32_t>(source.mode.width));
  }
  return right;
}

// Where a request starts from: the device as it stands, and a detached one as the registry knows
// it.
Staged StartingPoint(const Model& model, size_t index) {
  const Source& source = model.sources[index];
  Staged start;
  if (IsAttached(model, index)) {
    start.mode = source.mode;
    start.x = source.x;
    start.y = source.y;
    start.orientation = source.orientation;
    return start;
  }
  start.x = RightEdge(model);
  if (source.registry) {
    start.mode = *source.registry;
    return start;
  }
  const std::optional<size_t> connector = ConnectorForSource(model, model.active, index);
  if (connector) start.mode = BestMode(model, {*connector}).value_or(DisplayMode());
  return start;
}

// Fills in what the request leaves open and looks the mode up in the device's list. False: no such
// mode.
bool Resolve(const Model& model, size_t index, const SettingsRequest& request, DWORD flags,
             Staged* result) {
  Staged wanted = StartingPoint(model, index);
  wanted.primary = (flags & CDS_SET_PRIMARY) != 0;
  if (AsksToDetach(request)) {
    wanted.attached = false;
    *result = wanted;
    return true;
  }
  const DWORD fields = request.fields;
  if ((fields & DM_PELSWIDTH) != 0) wanted.mode.width = request.mode.width;
  if ((fields & DM_PELSHEIGHT) != 0) wanted.mode.height = request.mode.height;
  if ((fields & DM_BITSPERPEL) != 0 && request.mode.bits != 0) {
    wanted.mode.bits = request.mode.bits;
  }
  if ((fields & DM_DISPLAYORIENTATION) != 0) wanted.orientation = request.orientation;
  if ((fields & DM_POSITION) != 0) {
    wanted.x = request.x;
    wanted.y = request.y;
  }
  if (wanted.orientation > DMDO_270) return false;

  const std::vector<DisplayMode> modes = ModesOfSource(model, index);
  DisplayMode listed = Turned(wanted.mode, wanted.orientation);
  // 0 and 1 stand for the device's default frequency.
  const bool names_frequency = (fields & DM_DISPLAYFREQUENCY) != 0 && request.mode.frequency > 1;
  if (names_frequency) listed.frequency = request.mode.frequency;
  std::optional<DisplayMode> found = FindMode(modes, listed);
  if (!found && !names_frequency) {
    listed.frequency = 0;
    found = FindMode(modes, listed);
  }
  if (!found) return false;
  wanted.mode = Turned(*found, wanted.orientation);
  *result = wanted;
  return true;
}

bool Attach(const Model& model, size_t source, Arrangement* arrangement) {
  std::vector<Path>& paths = arrangement->paths;
  const auto is_mine = [source](const Path& path) { return path.source == source; };
  if (std::any_of(paths.begin(), paths.end(), is_mine)) return true;
  const std::optional<size_t> connector = ConnectorForSource(model, paths, source);
  if (!connector) return false;
  // A connector that was the second one of a clone leaves it.
  const auto is_taken = [&connector](const Path& path) { return path.connector == *connector; };
  paths.erase(std::remove_if(paths.begin(), paths.end(), is_taken), paths.end());
  paths.push_back({source, *connector});
  return true;
}

// The source that has the origin afterwards: the one that asks for it, else the one that has it,
// else the first left.
size_t PrimaryOf(const Model& model, const std::map<size_t, Staged>& changes,
                 const std::vector<Path>& paths) {
  const auto shows = [&paths](size_t source) {
    return std::any_of(paths.begin(), paths.end(),
                       [source](const Path& path) { return path.source == source; });
  };
  for (const auto& change : changes) {
    if (change.second.primary && shows(change.first)) return change.first;
  }
  return shows(model.primary_source) ? model.primary_source : paths[0].source;
}

void Detach(size_t source, std::vector<Path>* paths) {
  const auto is_mine = [source](const Path& path) { return path.source == source; };
  paths->erase(std::remove_if(paths->begin(), paths->end(), is_mine), paths->end());
}

// What was listed when a mode was stored may be gone when it is committed: another monitor hangs
// there now.
bool TakesItsMode(const Model& model, const std::vector<Path>& paths, size_t source,
                  const Staged& change) {
  std::vector<size_t> connectors;
  for (const Path& path : paths) {
    if (path.source == source) connectors.push_back(path.connector);
  }
  const DisplayMode mode = Turned(change.mode, change.orientation);
  return FindMode(CommonModes(model, connectors), mode).has_value();
}

LONG ApplyChanges(Model& model, const std::map<size_t, Staged>& changes) {
  Arrangement arrangement = CurrentArrangement(model);
  // A device that comes takes a display that was dark; only where there is none, one that a leaving
  // device frees.
  std::vector<size_t> waiting;
  for (const auto& [source, change] : changes) {
    if (change.attached && !Attach(model, source, &arrangement)) waiting.push_back(source);
  }
  for (const auto& [source, change] : changes) {
    if (!change.attached) Detach(source, &arrangement.paths);
  }
  for (size_t source : waiting) {
    if (!Attach(model, source, &arrangement)) return DISP_CHANGE_FAILED;
  }
  for (const auto& [index, change] : changes) {
    if (change.attached && !TakesItsMode(model, arrangement.paths, index, change)) {
      return DISP_CHANGE_BADMODE;
    }
    Source& source = arrangement.sources[index];
    source.mode = change.mode;
    source.x = change.x;
    source.y = change.y;
    source.orientation = change.orientation;
  }
  if (arrangement.paths.empty() || !PathsAreDrivable(model, arrangement.paths)) {
    return DISP_CHANGE_FAILED;
  }
  PlaceDesktops(&arrangement, PrimaryOf(model, changes, arrangement.paths));
  ApplyArrangement(model, arrangement);
  return DISP_CHANGE_SUCCESSFUL;
}

// A device without staged settings goes back to its registry mode.
std::optional<Staged> FromRegistry(const Model& model, size_t index) {
  const Source& source = model.sources[index];
  if (source.staged) return source.staged;
  if (!IsAttached(model, index) || !source.registry || *source.registry == source.mode) {
    return std::nullopt;
  }
  Staged stored = StartingPoint(model, index);
  stored.mode = *source.registry;
  return stored;
}

LONG Commit(Model& model, std::optional<size_t> only) {
  std::map<size_t, Staged> changes;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (only && *only != i) continue;
    const std::optional<Staged> stored = FromRegistry(model, i);
    if (stored) changes[i] = *stored;
  }
  if (changes.empty()) return DISP_CHANGE_SUCCESSFUL;
  const LONG result = ApplyChanges(model, changes);
  if (result != DISP_CHANGE_SUCCESSFUL) return result;
  for (const auto& change : changes) model.sources[change.first].staged.reset();
  RememberCurrent(model);
  return result;
}

}  // namespace

LONG ChangeSettings(Model& model, std::optional<size_t> source, const SettingsRequest* request,
                    DWORD flags) {
  if (!FlagsAreValid(flags)) return DISP_CHANGE_BADFLAGS;
  const bool only_test = (flags & CDS_TEST) != 0;
  if (request == nullptr) {
    const bool does_nothing = only_test || (flags & CDS_NORESET) != 0;
    return does_nothing ? DISP_CHANGE_SUCCESSFUL : Commit(model, source);
  }
  const size_t index = source.value_or(model.primary_source);
  if (index >= model.sources.size()) return DISP_CHANGE_FAILED;
  if (model.adapters[model.sources[index].adapter].mirroring) return DISP_CHANGE_FAILED;
  Staged wanted;
  if (!Resolve(model, index, *request, flags, &wanted)) return DISP_CHANGE_BADMODE;
  if (only_test) return DISP_CHANGE_SUCCESSFUL;
  if ((flags & CDS_NORESET) != 0) {
    model.sources[index].staged = wanted;
    return DISP_CHANGE_SUCCESSFUL;
  }
  const LONG result = ApplyChanges(model, {{index, wanted}});
  if (result != DISP_CHANGE_SUCCESSFUL) return result;
  model.sources[index].staged.reset();
  if ((flags & CDS_UPDATEREGISTRY) != 0) RememberCurrent(model);
  return result;
}

}  // namespace sim
