// NvAPI_DISP_SetDisplayConfig: the paths of the whole desktop, those of other adapters' displays
// among them.
#include <algorithm>

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// NV_DISPLAYCONFIG_PATH_INFO.
constexpr uint32_t kPathSize = 48;
constexpr uint32_t kSourceIdAt = 4;
constexpr uint32_t kTargetCountAt = 8;
constexpr uint32_t kTargetsAt = 16;
constexpr uint32_t kSourceModeAt = 24;
constexpr uint32_t kPathFlagsAt = 32;
constexpr uint32_t kAdapterIdAt = 40;
constexpr uint32_t kForeign = 1;

// NV_DISPLAYCONFIG_PATH_TARGET_INFO.
constexpr uint32_t kTargetSize = 24;
constexpr uint32_t kDisplayIdAt = 0;
constexpr uint32_t kDetailsAt = 8;
constexpr uint32_t kTargetIdAt = 16;

// NV_DISPLAYCONFIG_SOURCE_MODE_INFO.
constexpr uint32_t kWidthAt = 0;
constexpr uint32_t kHeightAt = 4;
constexpr uint32_t kDepthAt = 8;
constexpr uint32_t kFormatAt = 12;
constexpr uint32_t kXAt = 16;
constexpr uint32_t kYAt = 20;
constexpr uint32_t kSpanningAt = 24;
constexpr uint32_t kModeFlagsAt = 28;
constexpr uint32_t kGdiPrimary = 1;
constexpr uint32_t kSliFocus = 2;

constexpr uint32_t kKnownFlags = 31;
constexpr uint32_t kMostPaths = 16;
constexpr uint32_t kMostTargets = 16;

NvRecord PathAt(const NvRecord& paths, uint32_t index) { return paths.At(index * kPathSize); }
NvRecord TargetAt(const NvRecord& path, uint32_t index) {
  return NvRecord(path.GetPointer(kTargetsAt)).At(index * kTargetSize);
}
bool IsForeign(const NvRecord& path) { return (path.Get(kPathFlagsAt) & kForeign) != 0; }

// The adapter that a foreign path names by its Windows identifier.
std::optional<size_t> AdapterByLuid(const Model& model, const NvRecord& luid) {
  for (size_t i = 0; i < model.adapters.size(); ++i) {
    const Adapter& adapter = model.adapters[i];
    if (adapter.luid_low == luid.Get(0) && adapter.luid_high == luid.GetSigned(4)) return i;
  }
  return std::nullopt;
}

// A display of another vendor's adapter by Windows' target id; without an adapter the id must be
// one alone.
std::optional<size_t> ForeignConnector(const Model& model, const NvRecord& path,
                                       uint32_t target_id) {
  const NvRecord luid(path.GetPointer(kAdapterIdAt));
  const std::optional<size_t> named = luid ? AdapterByLuid(model, luid) : std::nullopt;
  if (luid && !named) return std::nullopt;
  std::optional<size_t> found;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const Connector& c = model.connectors[i];
    if (IsNvidiaAdapter(model.adapters[c.adapter]) || c.target_id != target_id) continue;
    if (named && c.adapter != *named) continue;
    if (found) return std::nullopt;
    found = i;
  }
  return found;
}

std::optional<size_t> ConnectorOf(const Model& model, const NvRecord& path, uint32_t index) {
  const NvRecord target = TargetAt(path, index);
  if (IsForeign(path)) return ForeignConnector(model, path, target.Get(kTargetIdAt));
  return NvConnectorByDisplayId(model, target.Get(kDisplayIdAt));
}

// --- The journal.

std::string DescribeTarget(const Model& model, const NvRecord& path, uint32_t index) {
  const NvRecord target = TargetAt(path, index);
  const uint32_t display_id = target.Get(kDisplayIdAt);
  const uint32_t target_id = target.Get(kTargetIdAt);
  std::string text = "[";
  if (display_id != 0 || !IsForeign(path)) text += "display=" + NvHex(display_id);
  if (target_id != 0 || IsForeign(path)) NvAdd(&text, "target=" + NvHex(target_id));
  const std::optional<size_t> connector = ConnectorOf(model, path, index);
  text += " " + (connector ? model.connectors[*connector].id : "unknown");
  if (target.GetPointer(kDetailsAt) != nullptr) text += " details";
  return text + "]";
}

std::string DescribeSourceMode(const NvRecord& mode) {
  std::string text = NvSize({mode.Get(kWidthAt), mode.Get(kHeightAt), mode.Get(kDepthAt), 0}) +
                     " format=" + std::to_string(mode.Get(kFormatAt));
  const uint32_t flags = mode.Get(kModeFlagsAt);
  if ((flags & kGdiPrimary) != 0) text += " gdi";
  if ((flags & kSliFocus) != 0) text += " focus";
  if (mode.Get(kXAt) != 0 || mode.Get(kYAt) != 0) {
    text +=
        " at " + std::to_string(mode.GetSigned(kXAt)) + "," + std::to_string(mode.GetSigned(kYAt));
  }
  if (mode.Get(kSpanningAt) != 0) text += " spanning=" + std::to_string(mode.Get(kSpanningAt));
  if ((flags & ~(kGdiPrimary | kSliFocus)) != 0) text += " mode-flags=" + NvHex(flags);
  return text;
}

std::string DescribeLuid(const Model& model, const NvRecord& luid) {
  std::string text = "adapter=";
  if (luid.Get(4) != 0) text += NvHex(luid.Get(4)) + ":";
  text += NvHex(luid.Get(0));
  return AdapterByLuid(model, luid) ? text : text + " (unknown)";
}

std::string DescribePath(const Model& model, const NvRecord& path) {
  std::string text = "[";
  if (path.version() != kNvPathVersion) return text + "version=" + NvHex(path.version()) + "]";
  if (path.Get(kSourceIdAt) != 0) text += "source=" + std::to_string(path.Get(kSourceIdAt));
  const uint32_t flags = path.Get(kPathFlagsAt);
  if (IsForeign(path)) NvAdd(&text, "foreign");
  if ((flags & ~kForeign) != 0) NvAdd(&text, "flags=" + NvHex(flags));
  const NvRecord luid(path.GetPointer(kAdapterIdAt));
  if (luid) NvAdd(&text, DescribeLuid(model, luid));
  const uint32_t count = path.Get(kTargetCountAt);
  if (count == 0 || count > kMostTargets || path.GetPointer(kTargetsAt) == nullptr) {
    NvAdd(&text, "targets=" + std::to_string(count));
    if (path.GetPointer(kTargetsAt) == nullptr) text += " (null)";
  } else {
    std::string targets;
    for (uint32_t i = 0; i < count; ++i) NvAdd(&targets, DescribeTarget(model, path, i));
    NvAdd(&text, targets);
  }
  const NvRecord mode(path.GetPointer(kSourceModeAt));
  return text + " " + (mode ? DescribeSourceMode(mode) : "no mode") + "]";
}

// --- The rules.

NvStatus CheckPath(const Model& model, const NvRecord& path) {
  if (path.version() != kNvPathVersion) return kNvIncompatibleVersion;
  const uint32_t count = path.Get(kTargetCountAt);
  if (count == 0 || count > kMostTargets || path.GetPointer(kTargetsAt) == nullptr) {
    return kNvInvalidArgument;
  }
  if ((path.Get(kPathFlagsAt) & ~kForeign) != 0) return kNvInvalidArgument;
  for (uint32_t i = 0; i < count; ++i) {
    const std::optional<size_t> connector = ConnectorOf(model, path, i);
    if (!connector) return kNvInvalidArgument;
    if (!IsConnected(model, *connector)) return kNvError;
  }
  return kNvOk;
}

NvStatus ReadPath(const Model& model, const NvRecord& path, std::vector<NvDesktop>* desktops) {
  NvDesktop desktop;
  for (uint32_t i = 0; i < path.Get(kTargetCountAt); ++i) {
    desktop.connectors.push_back(*ConnectorOf(model, path, i));
  }
  const size_t adapter = model.connectors[desktop.connectors[0]].adapter;
  const std::optional<size_t> source =
      NvFreeSource(model, adapter, path.Get(kSourceIdAt), *desktops);
  if (!source) return kNvError;
  desktop.source = *source;
  if (const NvRecord mode(path.GetPointer(kSourceModeAt)); mode) {
    desktop.mode = DisplayMode{mode.Get(kWidthAt), mode.Get(kHeightAt), mode.Get(kDepthAt), 0};
    desktop.x = mode.GetSigned(kXAt);
    desktop.y = mode.GetSigned(kYAt);
    desktop.primary = (mode.Get(kModeFlagsAt) & kGdiPrimary) != 0;
  }
  desktops->push_back(desktop);
  return kNvOk;
}

NvStatus ReadPaths(const Model& model, uint32_t count, const NvRecord& paths,
                   std::vector<NvDesktop>* desktops) {
  for (uint32_t i = 0; i < count; ++i) {
    const NvStatus status = CheckPath(model, PathAt(paths, i));
    if (status != kNvOk) return status;
  }
  for (uint32_t i = 0; i < count; ++i) {
    const NvStatus status = ReadPath(model, PathAt(paths, i), desktops);
    if (status != kNvOk) return status;
  }
  const auto primaries = std::count_if(desktops->begin(), desktops->end(),
                                       [](const NvDesktop& desktop) { return desktop.primary; });
  return primaries > 1 ? kNvInvalidArgument : kNvOk;
}

}  // namespace

std::string DescribeNvPaths(const Model& model, uint32_t count, NvRecord paths) {
  if (!paths) return "count=" + std::to_string(count) + " paths=null";
  if (count == 0 || count > kMostPaths) return "count=" + std::to_string(count);
  std::string text;
  for (uint32_t i = 0; i < count; ++i) NvAdd(&text, DescribePath(model, PathAt(paths, i)));
  return "paths=[" + text + "]";
}

// These paths and no others: a display of any adapter that is not among them goes dark.
NvStatus SetNvPaths(Machine& machine, uint32_t count, NvRecord paths, uint32_t flags) {
  Model& model = machine.state().model;
  if (!model.windows.HasDisplayConfig()) return kNvNoImplementation;
  if (!paths || count == 0 || count > kMostPaths || (flags & ~kKnownFlags) != 0) {
    return kNvInvalidArgument;
  }
  std::vector<NvDesktop> desktops;
  NvStatus status = ReadPaths(model, count, paths, &desktops);
  if (status != kNvOk) return status;
  Arrangement arrangement;
  status = ArrangeNvDesktops(model, desktops, std::nullopt, &arrangement);
  if (status != kNvOk || (flags & kNvValidateOnly) != 0) return status;
  ApplyArrangement(model, arrangement);
  if ((flags & kNvSave) != 0) RememberCurrent(model);
  NvForgetHandles(machine);
  return kNvOk;
}

}  // namespace sim
