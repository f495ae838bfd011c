#include <algorithm>
#include <utility>

#include "sim/Topology.h"
#include "sim/faces/DisplayConfigRules.h"

namespace sim {
namespace {

constexpr uint32_t kNamedTopologies =
    SDC_TOPOLOGY_INTERNAL | SDC_TOPOLOGY_CLONE | SDC_TOPOLOGY_EXTEND | SDC_TOPOLOGY_EXTERNAL;
constexpr uint32_t kTopologies = kNamedTopologies | SDC_TOPOLOGY_SUPPLIED;
constexpr uint32_t kKnownFlags = kTopologies | SDC_USE_SUPPLIED_DISPLAY_CONFIG | SDC_VALIDATE |
                                 SDC_APPLY | SDC_NO_OPTIMIZATION | SDC_SAVE_TO_DATABASE |
                                 SDC_ALLOW_CHANGES | SDC_PATH_PERSIST_IF_REQUIRED |
                                 SDC_FORCE_MODE_ENUMERATION | SDC_ALLOW_PATH_ORDER_CHANGES;

bool Has(uint32_t flags, uint32_t bits) { return (flags & bits) != 0; }

// The combinations that SetDisplayConfig documents as valid.
bool FlagsAreValid(uint32_t flags) {
  if (Has(flags, ~kKnownFlags)) return false;
  const bool apply = Has(flags, SDC_APPLY);
  if (apply == Has(flags, SDC_VALIDATE)) return false;
  const bool supplied = Has(flags, SDC_USE_SUPPLIED_DISPLAY_CONFIG);
  if (supplied == Has(flags, kTopologies)) return false;
  if (Has(flags, SDC_TOPOLOGY_SUPPLIED) && Has(flags, kNamedTopologies)) return false;
  if (Has(flags, SDC_NO_OPTIMIZATION) && !apply) return false;
  if (Has(flags, SDC_FORCE_MODE_ENUMERATION) && !apply) return false;
  if (Has(flags, SDC_SAVE_TO_DATABASE) && !supplied) return false;
  if (Has(flags, SDC_PATH_PERSIST_IF_REQUIRED) && supplied) return false;
  return !Has(flags, SDC_ALLOW_PATH_ORDER_CHANGES) || Has(flags, SDC_TOPOLOGY_SUPPLIED);
}

// A named topology takes no arrays, a supplied one only paths, a supplied configuration paths and
// perhaps modes.
bool ArraysAreValid(const SuppliedConfig& supplied, uint32_t flags) {
  const bool no_modes = supplied.modes == nullptr && supplied.mode_count == 0;
  if (Has(flags, kNamedTopologies)) {
    return supplied.paths == nullptr && supplied.path_count == 0 && no_modes;
  }
  if (supplied.paths == nullptr || supplied.path_count == 0) return false;
  if (Has(flags, SDC_TOPOLOGY_SUPPLIED)) return no_modes;
  return (supplied.modes != nullptr) == (supplied.mode_count != 0);
}

bool SameLuid(LUID a, LUID b) { return a.LowPart == b.LowPart && a.HighPart == b.HighPart; }

uint32_t BitsOf(DISPLAYCONFIG_PIXELFORMAT format) {
  switch (format) {
    case DISPLAYCONFIG_PIXELFORMAT_8BPP:
      return 8;
    case DISPLAYCONFIG_PIXELFORMAT_16BPP:
      return 16;
    case DISPLAYCONFIG_PIXELFORMAT_24BPP:
      return 24;
    default:
      return 32;
  }
}

uint32_t Hertz(DISPLAYCONFIG_RATIONAL rate) {
  if (rate.Denominator == 0) return 0;
  return static_cast<uint32_t>((uint64_t{rate.Numerator} + rate.Denominator / 2) /
                               rate.Denominator);
}

// What the caller asks of one source.
struct SourceRequest {
  size_t source = 0;
  std::vector<size_t> connectors;
  const DISPLAYCONFIG_SOURCE_MODE* mode = nullptr;  // null: the best one
  uint32_t mode_index = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
  std::vector<const DISPLAYCONFIG_VIDEO_SIGNAL_INFO*>
      signals;             // one per connector; null: the best one
  uint32_t frequency = 0;  // from a signal or a refresh rate, 0 for none
  uint32_t orientation = 0;
};

// Turns the caller's arrays into requests per source and these into an arrangement.
class ConfigReader {
 public:
  ConfigReader(const Model& model, const SuppliedConfig& supplied, bool allow_changes)
      : model_(model), supplied_(supplied), allow_changes_(allow_changes) {}

  // ERROR_INVALID_PARAMETER when the arrays contradict themselves or the hardware.
  LONG ReadPaths() {
    for (uint32_t i = 0; i < supplied_.path_count; ++i) {
      if (!Has(supplied_.paths[i].flags, DISPLAYCONFIG_PATH_ACTIVE)) continue;
      if (!ReadPath(supplied_.paths[i])) return ERROR_INVALID_PARAMETER;
    }
    return paths_.empty() ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
  }

  const std::vector<Path>& paths() const { return paths_; }

  // No mode of the caller's at all: what a topology that only gives paths must have.
  bool HasModeIndexes() const {
    return std::any_of(requests_.begin(), requests_.end(), [](const SourceRequest& request) {
      const auto& signals = request.signals;
      return request.mode != nullptr ||
             std::any_of(signals.begin(), signals.end(), [](auto* s) { return s != nullptr; });
    });
  }

  // ERROR_BAD_CONFIGURATION when some source has no mode that all its displays take.
  LONG Arrange(Arrangement* arrangement) const {
    *arrangement = {paths_, model_.sources, TopologyOf(model_, paths_)};
    std::optional<size_t> primary;
    bool all_placed = true;
    int64_t right = 0;
    for (const SourceRequest& request : requests_) {
      const std::optional<DisplayMode> mode = ModeFor(request);
      if (!mode) return ERROR_BAD_CONFIGURATION;
      Source& source = arrangement->sources[request.source];
      source.mode = *mode;
      source.orientation = request.orientation;
      source.x = static_cast<int32_t>(right);
      source.y = 0;
      if (request.mode != nullptr) {
        source.x = request.mode->position.x;
        source.y = request.mode->position.y;
        if (!primary && source.x == 0 && source.y == 0) primary = request.source;
      } else {
        all_placed = false;
      }
      right = std::max(right, int64_t{source.x} + mode->width);
    }
    // One display has the origin. Where the caller placed all of them, that is the caller's to say.
    if (!primary && all_placed && !allow_changes_) return ERROR_INVALID_PARAMETER;
    PlaceDesktops(arrangement, primary.value_or(requests_[0].source));
    return ERROR_SUCCESS;
  }

 private:
  bool ReadPath(const DISPLAYCONFIG_PATH_INFO& info) {
    const auto& from = info.sourceInfo;
    const auto& to = info.targetInfo;
    const std::optional<size_t> source = SourceById(model_, from.adapterId, from.id);
    const std::optional<size_t> connector = ConnectorById(model_, to.adapterId, to.id);
    if (!source || !connector) return false;
    if (!SameLuid(from.adapterId, to.adapterId)) return false;
    for (const Path& path : paths_) {
      if (path.connector == *connector) return false;
    }
    SourceRequest* request = RequestFor(*source, from.modeInfoIdx);
    if (request == nullptr) return false;
    const DISPLAYCONFIG_VIDEO_SIGNAL_INFO* signal = nullptr;
    if (to.modeInfoIdx != DISPLAYCONFIG_PATH_MODE_IDX_INVALID) {
      const DISPLAYCONFIG_MODE_INFO* mode =
          ModeAt(to.modeInfoIdx, DISPLAYCONFIG_MODE_INFO_TYPE_TARGET, to.adapterId, to.id);
      if (mode == nullptr) return false;
      signal = &mode->targetMode.targetVideoSignalInfo;
    }
    if (to.rotation > DISPLAYCONFIG_ROTATION_ROTATE270) return false;
    if (to.rotation != 0) request->orientation = static_cast<uint32_t>(to.rotation) - 1;
    const uint32_t frequency = Hertz(signal != nullptr ? signal->vSyncFreq : to.refreshRate);
    if (frequency != 0) request->frequency = frequency;
    request->connectors.push_back(*connector);
    request->signals.push_back(signal);
    paths_.push_back({*source, *connector});
    return true;
  }

  // Null when the paths of one source name different modes, or an index that is none of its.
  SourceRequest* RequestFor(size_t source, uint32_t mode_index) {
    for (SourceRequest& request : requests_) {
      if (request.source == source) return request.mode_index == mode_index ? &request : nullptr;
    }
    SourceRequest request;
    request.source = source;
    request.mode_index = mode_index;
    if (mode_index != DISPLAYCONFIG_PATH_MODE_IDX_INVALID) {
      const Source& own = model_.sources[source];
      const DISPLAYCONFIG_MODE_INFO* mode =
          ModeAt(mode_index, DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE,
                 LuidOf(model_.adapters[own.adapter]), own.source_id);
      if (mode == nullptr) return nullptr;
      request.mode = &mode->sourceMode;
    }
    requests_.push_back(request);
    return &requests_.back();
  }

  const DISPLAYCONFIG_MODE_INFO* ModeAt(uint32_t index, DISPLAYCONFIG_MODE_INFO_TYPE type,
                                        LUID adapter, uint32_t id) const {
    if (index >= supplied_.mode_count) return nullptr;
    const DISPLAYCONFIG_MODE_INFO& mode = supplied_.modes[index];
    if (mode.infoType != type || mode.id != id || !SameLuid(mode.adapterId, adapter)) {
      return nullptr;
    }
    return &mode;
  }

  std::optional<DisplayMode> ModeFor(const SourceRequest& request) const {
    if (!allow_changes_ && !SignalsAreListed(request)) return std::nullopt;
    const std::vector<DisplayMode> modes = CommonModes(model_, request.connectors);
    DisplayMode wanted{0, 0, 32, 0};
    if (request.mode != nullptr) {
      wanted = {request.mode->width, request.mode->height, BitsOf(request.mode->pixelFormat), 0};
      if ((request.orientation & 1) != 0) std::swap(wanted.width, wanted.height);
    } else {
      const std::optional<DisplayMode> best = BestMode(model_, request.connectors);
      if (!best) return std::nullopt;
      wanted = *best;
    }
    std::optional<DisplayMode> found;
    wanted.frequency = request.frequency;
    if (wanted.frequency != 0) found = FindMode(modes, wanted);
    wanted.frequency = 0;
    if (!found) found = FindMode(modes, wanted);
    if (!found && allow_changes_) found = LargestWithin(modes, wanted);
    if (!found && allow_changes_) found = BestMode(model_, request.connectors);
    if (found && (request.orientation & 1) != 0) std::swap(found->width, found->height);
    return found;
  }

  bool SignalsAreListed(const SourceRequest& request) const {
    for (size_t i = 0; i < request.connectors.size(); ++i) {
      const DISPLAYCONFIG_VIDEO_SIGNAL_INFO* signal = request.signals[i];
      if (signal == nullptr) continue;
      const uint32_t frequency = Hertz(signal->vSyncFreq);
      const std::vector<DisplayMode> modes = ModesOfConnector(model_, request.connectors[i]);
      const auto matches = [&](const DisplayMode& mode) {
        return mode.width == signal->activeSize.cx && mode.height == signal->activeSize.cy &&
               mode.frequency == frequency;
      };
      if (std::none_of(modes.begin(), modes.end(), matches)) return false;
    }
    return true;
  }

  static std::optional<DisplayMode> LargestWithin(const std::vector<DisplayMode>& modes,
                                                  const DisplayMode& bounds) {
    std::optional<DisplayMode> found;
    for (const DisplayMode& mode : modes) {
      if (mode.width > bounds.width || mode.height > bounds.height || mode.bits != bounds.bits) {
        continue;
      }
      const bool larger =
          !found || uint64_t{mode.width} * mode.height > uint64_t{found->width} * found->height;
      if (larger) found = mode;
    }
    return found;
  }

  const Model& model_;
  const SuppliedConfig& supplied_;
  const bool allow_changes_;
  std::vector<Path> paths_;
  std::vector<SourceRequest> requests_;
};

bool SamePaths(std::vector<Path> a, std::vector<Path> b, bool any_order) {
  const auto less = [](const Path& x, const Path& y) {
    return std::pair(x.source, x.connector) < std::pair(y.source, y.connector);
  };
  if (any_order) {
    std::sort(a.begin(), a.end(), less);
    std::sort(b.begin(), b.end(), less);
  }
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](const Path& x, const Path& y) { return !less(x, y) && !less(y, x); });
}

// SDC_TOPOLOGY_SUPPLIED: the modes come from the last time that these paths were saved.
LONG FindSavedPaths(const Model& model, const ConfigReader& reader, uint32_t flags,
                    Arrangement* arrangement) {
  const auto saved = model.remembered.find(ConnectedSet(model));
  if (saved != model.remembered.end()) {
    const bool any_order = Has(flags, SDC_ALLOW_PATH_ORDER_CHANGES);
    for (auto entry = saved->second.rbegin(); entry != saved->second.rend(); ++entry) {
      if (!SamePaths(entry->paths, reader.paths(), any_order)) continue;
      *arrangement = *entry;
      return ERROR_SUCCESS;
    }
  }
  return Has(flags, SDC_ALLOW_CHANGES) ? reader.Arrange(arrangement) : ERROR_BAD_CONFIGURATION;
}

LONG FindSupplied(const Model& model, const SuppliedConfig& supplied, uint32_t flags,
                  Arrangement* arrangement) {
  ConfigReader reader(model, supplied, Has(flags, SDC_ALLOW_CHANGES));
  const LONG read = reader.ReadPaths();
  if (read != ERROR_SUCCESS) return read;
  const bool only_paths = Has(flags, SDC_TOPOLOGY_SUPPLIED);
  if (only_paths && reader.HasModeIndexes()) return ERROR_INVALID_PARAMETER;
  if (!PathsAreDrivable(model, reader.paths())) return ERROR_GEN_FAILURE;
  if (only_paths) return FindSavedPaths(model, reader, flags, arrangement);
  return reader.Arrange(arrangement);
}

// The most recent of the asked kinds, else the default of the first kind that these monitors can
// make.
LONG FindNamed(const Model& model, uint32_t flags, Arrangement* arrangement,
               std::vector<size_t>* forced) {
  const auto saved = model.remembered.find(ConnectedSet(model));
  if (saved != model.remembered.end()) {
    for (auto entry = saved->second.rbegin(); entry != saved->second.rend(); ++entry) {
      if (!Has(flags, entry->topology) || !PathsAreDrivable(model, entry->paths)) continue;
      *arrangement = *entry;
      return ERROR_SUCCESS;
    }
  }
  const bool force = Has(flags, SDC_PATH_PERSIST_IF_REQUIRED);
  for (uint32_t kind : {kTopologyClone, kTopologyExtend, kTopologyExternal, kTopologyInternal}) {
    if (!Has(flags, kind)) continue;
    const std::optional<Arrangement> found = NamedTopology(model, kind, force, forced);
    if (!found) continue;
    *arrangement = *found;
    return ERROR_SUCCESS;
  }
  return ERROR_GEN_FAILURE;
}

bool HasDisplayDriver(const Model& model) {
  return std::any_of(model.adapters.begin(), model.adapters.end(), AdapterWorks);
}

}  // namespace

LONG SetConfig(Model& model, const SuppliedConfig& supplied, uint32_t flags) {
  if (!FlagsAreValid(flags) || !ArraysAreValid(supplied, flags)) return ERROR_INVALID_PARAMETER;
  if (!HasDisplayDriver(model)) return ERROR_NOT_SUPPORTED;
  Arrangement arrangement;
  std::vector<size_t> forced;
  const bool named = Has(flags, kNamedTopologies);
  const LONG found = named ? FindNamed(model, flags, &arrangement, &forced)
                           : FindSupplied(model, supplied, flags, &arrangement);
  if (found != ERROR_SUCCESS || Has(flags, SDC_VALIDATE)) return found;
  for (size_t connector : forced) model.connectors[connector].forced = true;
  ApplyArrangement(model, arrangement);
  // A topology out of the database is the current one there from now on; a supplied one only when
  // the caller says so.
  if (Has(flags, kTopologies | SDC_SAVE_TO_DATABASE)) RememberCurrent(model);
  return ERROR_SUCCESS;
}

}  // namespace sim
