// NvAPI_SetViewEx: one desktop, a cloned one or one for each display, on the GPU of a handle.
#include <algorithm>

#include "sim/Topology.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// NV_DISPLAY_PATH_INFO.
constexpr uint32_t kCountAt = 4;
constexpr uint32_t kFirstPathAt = 8;
constexpr uint32_t kPathSize = 64;
constexpr uint32_t kMostPaths = 4;

// NV_DISPLAY_PATH.
constexpr uint32_t kMaskAt = 0;
constexpr uint32_t kSourceAt = 4;
constexpr uint32_t kPrimaryAt = 8;
constexpr uint32_t kConnectorAt = 12;
constexpr uint32_t kWidthAt = 16;
constexpr uint32_t kHeightAt = 20;
constexpr uint32_t kDepthAt = 24;
constexpr uint32_t kColorAt = 28;
constexpr uint32_t kRotationAt = 32;
constexpr uint32_t kScalingAt = 36;
constexpr uint32_t kRefreshAt = 40;
constexpr uint32_t kInterlacedAt = 44;
constexpr uint32_t kTvFormatAt = 48;
constexpr uint32_t kXAt = 52;
constexpr uint32_t kYAt = 56;
constexpr uint32_t kFlagsAt = 60;

constexpr uint32_t kGdiPrimary = 1;
constexpr uint32_t kForceModeSet = 2;
constexpr uint32_t kFocusDisplay = 4;
constexpr uint32_t kGpuIdShift = 3;
constexpr uint32_t kGpuIdMask = 0xFFFFFF;
constexpr uint32_t kUnusedFlags = 0xF8000000;

constexpr uint32_t kRotationIgnored = 4;

enum View : uint32_t { kStandard = 0, kClone = 1, kDualView = 4, kViews = 6 };

NvRecord PathAt(const NvRecord& record, uint32_t index) {
  return record.At(kFirstPathAt + index * kPathSize);
}

bool IsBlank(const NvRecord& path) {
  for (uint32_t at = 0; at < kPathSize; at += 4) {
    if (path.Get(at) != 0) return false;
  }
  return true;
}

DisplayMode ModeOf(const NvRecord& path) {
  return {path.Get(kWidthAt), path.Get(kHeightAt), path.Get(kDepthAt), path.Get(kRefreshAt)};
}

void AddNumber(std::string* text, const char* name, uint32_t value) {
  if (value != 0) NvAdd(text, name + std::to_string(value));
}

// Every field that is set, in the order of mask, size, source, marks, place, and the rest.
std::string DescribePath(const NvRecord& path) {
  std::string text = "[mask=" + NvHex(path.Get(kMaskAt)) + " " + NvSize(ModeOf(path)) +
                     " source=" + std::to_string(path.Get(kSourceAt));
  const uint32_t primary = path.Get(kPrimaryAt);
  const uint32_t flags = path.Get(kFlagsAt);
  if ((primary & 1) != 0) text += " primary";
  if ((flags & kGdiPrimary) != 0) text += " gdi";
  if (path.Get(kXAt) != 0 || path.Get(kYAt) != 0) {
    text +=
        " at " + std::to_string(path.GetSigned(kXAt)) + "," + std::to_string(path.GetSigned(kYAt));
  }
  AddNumber(&text, "connector=", path.Get(kConnectorAt));
  AddNumber(&text, "color=", path.Get(kColorAt));
  AddNumber(&text, "rotation=", path.Get(kRotationAt));
  AddNumber(&text, "scaling=", path.Get(kScalingAt));
  AddNumber(&text, "interlaced=", path.Get(kInterlacedAt));
  AddNumber(&text, "tv=", path.Get(kTvFormatAt));
  if ((flags & kForceModeSet) != 0) text += " force";
  if ((flags & kFocusDisplay) != 0) text += " focus";
  AddNumber(&text, "gpu=", (flags >> kGpuIdShift) & kGpuIdMask);
  if ((primary & ~1U) != 0) text += " primary-word=" + NvHex(primary);
  if ((flags & kUnusedFlags) != 0) text += " flags-word=" + NvHex(flags);
  return text + "]";
}

NvStatus CheckCount(uint32_t view, uint32_t count) {
  if (view >= kViews || count == 0 || count > kMostPaths) return kNvInvalidArgument;
  if (view == kStandard) return count == 1 ? kNvOk : kNvInvalidArgument;
  if (view == kClone || view == kDualView) return count > 1 ? kNvOk : kNvInvalidArgument;
  return kNvNoImplementation;  // spans, and views over several heads each
}

// One path by itself: an output of this GPU with a monitor on it.
NvStatus CheckPath(const Model& model, size_t gpu, const NvRecord& path) {
  const std::optional<size_t> connector = NvConnectorByOutput(model, gpu, path.Get(kMaskAt));
  if (!connector || path.Get(kRotationAt) > kRotationIgnored) return kNvInvalidArgument;
  return IsConnected(model, *connector) ? kNvOk : kNvError;
}

NvStatus ReadPaths(const Model& model, size_t gpu, const NvRecord& record, uint32_t view,
                   std::vector<NvDesktop>* desktops) {
  uint32_t primaries = 0;
  for (uint32_t i = 0; i < record.Get(kCountAt); ++i) {
    const NvRecord path = PathAt(record, i);
    if (const NvStatus status = CheckPath(model, gpu, path); status != kNvOk) return status;
    const bool gdi = (path.Get(kFlagsAt) & kGdiPrimary) != 0;
    if (gdi && ++primaries > 1) return kNvInvalidArgument;
    const size_t connector = *NvConnectorByOutput(model, gpu, path.Get(kMaskAt));
    if (view == kClone && i > 0) {
      // One desktop: the displays of a clone share its size.
      if (!(ModeOf(path) == ModeOf(PathAt(record, 0)))) return kNvError;
      desktops->front().connectors.push_back(connector);
      desktops->front().primary |= gdi;
      continue;
    }
    // The same source for both paths of a dual view leaves the second one's to the driver.
    std::optional<size_t> source = NvFreeSource(model, gpu, path.Get(kSourceAt), *desktops);
    if (!source && i > 0) source = NvFreeSource(model, gpu, 0, *desktops);
    if (!source) return kNvError;
    NvDesktop desktop;
    desktop.source = *source;
    desktop.connectors = {connector};
    desktop.mode = ModeOf(path);
    desktop.x = path.GetSigned(kXAt);
    desktop.y = path.GetSigned(kYAt);
    const uint32_t rotation = path.Get(kRotationAt);
    desktop.orientation = rotation == kRotationIgnored ? 0 : rotation;
    desktop.primary = gdi;
    desktops->push_back(desktop);
  }
  return kNvOk;
}

}  // namespace

std::string DescribeNvView(const NvRecord& record) {
  if (!record) return "null";
  if (record.version() != kNvViewVersion) return "version=" + NvHex(record.version());
  const uint32_t count = record.Get(kCountAt);
  std::string text = count > kMostPaths ? "count=" + std::to_string(count) + " " : "";
  std::string used;
  std::string unused;
  for (uint32_t i = 0; i < kMostPaths; ++i) {
    const NvRecord path = PathAt(record, i);
    if (i < count) {
      NvAdd(&used, DescribePath(path));
    } else if (!IsBlank(path)) {
      NvAdd(&unused, DescribePath(path));
    }
  }
  text += "paths=" + (used.empty() ? "none" : "[" + used + "]");
  // What stands behind the count was set for nothing, and is seen here.
  if (!unused.empty()) text += " unused=[" + unused + "]";
  return text;
}

NvStatus SetNvView(Machine& machine, const void* handle, NvRecord record, uint32_t view) {
  if (!record) return kNvInvalidArgument;
  if (record.version() != kNvViewVersion) return kNvIncompatibleVersion;
  const std::optional<size_t> display = NvDisplayFromHandle(machine, handle);
  if (!display) return kNvInvalidHandle;
  if (const NvStatus status = CheckCount(view, record.Get(kCountAt)); status != kNvOk) {
    return status;
  }
  Model& model = machine.state().model;
  const size_t gpu = model.sources[*display].adapter;
  std::vector<NvDesktop> desktops;
  NvStatus status = ReadPaths(model, gpu, record, view, &desktops);
  if (status != kNvOk) return status;
  Arrangement arrangement;
  status = ArrangeNvDesktops(model, desktops, gpu, &arrangement);
  if (status != kNvOk) return status;
  ApplyArrangement(model, arrangement);
  RememberCurrent(model);
  NvForgetHandles(machine);
  return kNvOk;
}

}  // namespace sim
