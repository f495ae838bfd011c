#include <algorithm>

#include "sim/Topology.h"
#include "sim/faces/DisplayConfigRules.h"

namespace sim {
namespace {

DISPLAYCONFIG_PIXELFORMAT PixelFormat(uint32_t bits) {
  if (bits <= 8) return DISPLAYCONFIG_PIXELFORMAT_8BPP;
  if (bits <= 16) return DISPLAYCONFIG_PIXELFORMAT_16BPP;
  return bits <= 24 ? DISPLAYCONFIG_PIXELFORMAT_24BPP : DISPLAYCONFIG_PIXELFORMAT_32BPP;
}

// A path as every answer has it, no modes yet.
DISPLAYCONFIG_PATH_INFO DescribePath(const Model& model, const Path& path) {
  const Source& source = model.sources[path.source];
  const Connector& connector = model.connectors[path.connector];
  const LUID luid = LuidOf(model.adapters[connector.adapter]);
  DISPLAYCONFIG_PATH_INFO info = {};
  info.sourceInfo.adapterId = luid;
  info.sourceInfo.id = source.source_id;
  info.sourceInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
  if (IsAttached(model, path.source)) info.sourceInfo.statusFlags = DISPLAYCONFIG_SOURCE_IN_USE;
  info.targetInfo.adapterId = luid;
  info.targetInfo.id = connector.target_id;
  info.targetInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
  info.targetInfo.outputTechnology =
      static_cast<DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY>(connector.technology);
  info.targetInfo.rotation = DISPLAYCONFIG_ROTATION_IDENTITY;
  info.targetInfo.scaling = DISPLAYCONFIG_SCALING_PREFERRED;
  info.targetInfo.targetAvailable = IsAvailable(model, path.connector) ? TRUE : FALSE;
  UINT32& status = info.targetInfo.statusFlags;
  if (SourceOfConnector(model, path.connector)) status |= DISPLAYCONFIG_TARGET_IN_USE;
  if (IsForcible(connector.technology)) status |= DISPLAYCONFIG_TARGET_FORCIBLE;
  if (connector.boot_persistent) status |= DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_BOOT;
  if (connector.forced) status |= DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH;
  return info;
}

// The active paths of an arrangement with their modes. Paths of a clone share their source's entry.
void AddActivePaths(const Model& model, const Arrangement& arrangement, DisplayConfig* config) {
  std::vector<std::optional<uint32_t>> source_entries(arrangement.sources.size());
  for (const Path& path : arrangement.paths) {
    const Source& source = arrangement.sources[path.source];
    const Connector& connector = model.connectors[path.connector];
    const DisplayMode signal = SignalOn(connector, source.mode);
    DISPLAYCONFIG_PATH_INFO info = DescribePath(model, path);
    info.flags = DISPLAYCONFIG_PATH_ACTIVE;
    info.targetInfo.rotation = static_cast<DISPLAYCONFIG_ROTATION>(source.orientation + 1);
    info.targetInfo.refreshRate = {signal.frequency * 1000, 1000};
    info.targetInfo.scanLineOrdering = DISPLAYCONFIG_SCANLINE_ORDERING_PROGRESSIVE;

    info.targetInfo.modeInfoIdx = static_cast<uint32_t>(config->modes.size());
    DISPLAYCONFIG_MODE_INFO target = {};
    target.infoType = DISPLAYCONFIG_MODE_INFO_TYPE_TARGET;
    target.id = info.targetInfo.id;
    target.adapterId = info.targetInfo.adapterId;
    target.targetMode.targetVideoSignalInfo = DescribeSignal(signal);
    config->modes.push_back(target);

    std::optional<uint32_t>& entry = source_entries[path.source];
    if (!entry) {
      entry = static_cast<uint32_t>(config->modes.size());
      DISPLAYCONFIG_MODE_INFO mode = {};
      mode.infoType = DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE;
      mode.id = info.sourceInfo.id;
      mode.adapterId = info.sourceInfo.adapterId;
      mode.sourceMode.width = source.mode.width;
      mode.sourceMode.height = source.mode.height;
      mode.sourceMode.pixelFormat = PixelFormat(source.mode.bits);
      mode.sourceMode.position = {source.x, source.y};
      config->modes.push_back(mode);
    }
    info.sourceInfo.modeInfoIdx = *entry;
    config->paths.push_back(info);
  }
}

// Every other pair of a source and a target of one adapter.
void AddPossiblePaths(const Model& model, DisplayConfig* config) {
  for (size_t source = 0; source < model.sources.size(); ++source) {
    const size_t adapter = model.sources[source].adapter;
    if (!AdapterWorks(model.adapters[adapter])) continue;
    for (size_t connector = 0; connector < model.connectors.size(); ++connector) {
      if (model.connectors[connector].adapter != adapter) continue;
      if (SourceOfConnector(model, connector) == source) continue;
      config->paths.push_back(DescribePath(model, {source, connector}));
    }
  }
}

}  // namespace

LUID LuidOf(const Adapter& adapter) {
  LUID luid;
  luid.LowPart = adapter.luid_low;
  luid.HighPart = adapter.luid_high;
  return luid;
}

std::optional<size_t> SourceById(const Model& model, LUID adapter, uint32_t id) {
  for (size_t i = 0; i < model.sources.size(); ++i) {
    const Adapter& own = model.adapters[model.sources[i].adapter];
    if (own.mirroring || own.luid_low != adapter.LowPart || own.luid_high != adapter.HighPart) {
      continue;
    }
    if (model.sources[i].source_id == id) return i;
  }
  return std::nullopt;
}

std::optional<size_t> ConnectorById(const Model& model, LUID adapter, uint32_t id) {
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const Adapter& own = model.adapters[model.connectors[i].adapter];
    if (own.luid_low != adapter.LowPart || own.luid_high != adapter.HighPart) continue;
    if (model.connectors[i].target_id == id) return i;
  }
  return std::nullopt;
}

DisplayMode SignalOn(const Connector& connector, const DisplayMode& mode) {
  if (!connector.monitor || IsForcible(connector.technology)) return mode;
  DisplayMode signal = connector.monitor->preferred;
  const std::vector<DisplayMode>& modes = connector.monitor->modes;
  const auto listed = [&](const DisplayMode& m) {
    return m.width == signal.width && m.height == signal.height && m.frequency == mode.frequency;
  };
  if (std::any_of(modes.begin(), modes.end(), listed)) signal.frequency = mode.frequency;
  return signal;
}

DISPLAYCONFIG_VIDEO_SIGNAL_INFO DescribeSignal(const DisplayMode& mode) {
  constexpr uint32_t kHorizontalBlank = 160;
  constexpr uint32_t kVerticalBlank = 30;
  constexpr uint32_t kOtherStandard = 255;
  DISPLAYCONFIG_VIDEO_SIGNAL_INFO signal = {};
  signal.activeSize = {mode.width, mode.height};
  signal.totalSize = {mode.width + kHorizontalBlank, mode.height + kVerticalBlank};
  signal.pixelRate = UINT64{signal.totalSize.cx} * signal.totalSize.cy * mode.frequency;
  signal.hSyncFreq = {signal.totalSize.cy * mode.frequency, 1};
  signal.vSyncFreq = {mode.frequency * 1000, 1000};
  signal.videoStandard = kOtherStandard;
  signal.scanLineOrdering = DISPLAYCONFIG_SCANLINE_ORDERING_PROGRESSIVE;
  return signal;
}

bool QueryFlagsAreValid(uint32_t flags) {
  return flags == QDC_ALL_PATHS || flags == QDC_ONLY_ACTIVE_PATHS || flags == QDC_DATABASE_CURRENT;
}

DisplayConfig QueryConfig(const Model& model, uint32_t flags) {
  DisplayConfig config;
  if (flags == QDC_DATABASE_CURRENT) {
    const auto entry = model.database.find(ConnectedSet(model));
    const Arrangement arrangement =
        entry != model.database.end() ? entry->second : CurrentArrangement(model);
    AddActivePaths(model, arrangement, &config);
    config.topology = arrangement.topology;
    return config;
  }
  AddActivePaths(model, CurrentArrangement(model), &config);
  if (flags == QDC_ALL_PATHS) AddPossiblePaths(model, &config);
  return config;
}

}  // namespace sim
