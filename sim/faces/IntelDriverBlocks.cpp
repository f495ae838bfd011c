// The blocks of GetDeviceData and SetDeviceData: N-view, EDID, connectors.
#include <algorithm>
#include <cstdio>

#include "sim/Topology.h"
#include "sim/faces/IntelDriverRules.h"

namespace sim {
namespace {

// The N-view block: a head and an entry for each display.
constexpr uint32_t kModeAt = 0;
constexpr uint32_t kProbeAt = 4;
constexpr uint32_t kSizeAt = 8;
constexpr uint32_t kCountAt = 12;
constexpr uint32_t kHeadSize = 16;
constexpr uint32_t kEntrySize = 68;
constexpr uint32_t kSmallest = kHeadSize + kEntrySize;

// An entry.
constexpr uint32_t kUidAt = 0;
constexpr uint32_t kWidthAt = 4;
constexpr uint32_t kHeightAt = 8;
constexpr uint32_t kRefreshAt = 12;
constexpr uint32_t kBitsAt = 16;
constexpr uint32_t kFirstGap = 20;
constexpr uint32_t kLeftAt = 32;
constexpr uint32_t kRightAt = 36;
constexpr uint32_t kTopAt = 40;
constexpr uint32_t kBottomAt = 44;
constexpr uint32_t kSecondGap = 48;
constexpr uint32_t kOrientationAt = 56;
constexpr uint32_t kScalingAt = 60;
constexpr uint32_t kThirdGap = 64;

constexpr uint32_t kSingle = 1;
constexpr uint32_t kClone = 3;
constexpr uint32_t kExtended = 5;

// The EDID block.
constexpr uint32_t kEdidBlockSize = 268;
constexpr uint32_t kEdidLengthAt = 4;
constexpr uint32_t kEdidLength = 256;
constexpr uint32_t kEdidAt = 12;

// The connector block: three masks.
constexpr uint32_t kConnectorBlockSize = 12;
constexpr uint32_t kSupportsThreeDisplays = 0x200;
struct ConnectorBit {
  uint32_t type;
  uint32_t bit;
};
constexpr ConnectorBit kConnectorBits[] = {
    {1, 0x01}, {4, 0x02}, {3, 0x04}, {5, 0x08}, {2, 0x10}, {7, 0x20}, {6, 0x40},
};

// The active paths of the driver's adapters, those of the primary desktop first.
std::vector<Path> DrivenPaths(const Model& model) {
  std::vector<Path> paths;
  for (const Path& path : model.active) {
    if (IsIntelAdapter(model.adapters[model.sources[path.source].adapter])) paths.push_back(path);
  }
  std::stable_partition(paths.begin(), paths.end(),
                        [&model](const Path& path) { return path.source == model.primary_source; });
  return paths;
}

uint32_t OperatingMode(const std::vector<Path>& paths) {
  if (paths.size() < 2) return kSingle;
  const bool one_desktop = std::all_of(paths.begin(), paths.end(), [&paths](const Path& path) {
    return path.source == paths[0].source;
  });
  return one_desktop ? kClone : kExtended;
}

void PutEntry(const Model& model, const Path& path, IntelBlock entry) {
  const Source& source = model.sources[path.source];
  const auto left = static_cast<uint32_t>(source.x);
  const auto top = static_cast<uint32_t>(source.y);
  entry.Put(kUidAt, IntelUid(model, path.connector));
  entry.Put(kWidthAt, source.mode.width);
  entry.Put(kHeightAt, source.mode.height);
  entry.Put(kRefreshAt, source.mode.frequency);
  entry.Put(kBitsAt, source.mode.bits);
  entry.Put(kLeftAt, left);
  entry.Put(kRightAt, left + source.mode.width);
  entry.Put(kTopAt, top);
  entry.Put(kBottomAt, top + source.mode.height);
  entry.Put(kOrientationAt, source.orientation);
}

bool HeadIsSound(const IntelBlock& block) {
  return block.size() >= kSmallest && block.Get(kSizeAt) == block.size() &&
         block.Get(kProbeAt) <= 1;
}

// An entry's edges are the rectangle of its place and size, or all zero where `may_be_unplaced`.
bool EntryIsSound(const IntelBlock& entry, bool may_be_unplaced) {
  const uint32_t left = entry.Get(kLeftAt);
  const uint32_t top = entry.Get(kTopAt);
  const bool unplaced = may_be_unplaced && entry.IsZero(kLeftAt, kSecondGap);
  const bool rectangle = entry.Get(kRightAt) == left + entry.Get(kWidthAt) &&
                         entry.Get(kBottomAt) == top + entry.Get(kHeightAt);
  return (unplaced || rectangle) && entry.Get(kOrientationAt) <= 3 &&
         entry.IsZero(kFirstGap, kLeftAt) && entry.IsZero(kSecondGap, kOrientationAt) &&
         entry.IsZero(kThirdGap, kEntrySize);
}

bool SamePlace(const IntelDesktop& a, const IntelDesktop& b) {
  return a.x == b.x && a.y == b.y && a.orientation == b.orientation;
}

IntelError ReadEntry(const Model& model, const IntelBlock& entry, bool may_be_unplaced,
                     IntelDesktop* desktop) {
  if (!EntryIsSound(entry, may_be_unplaced)) return kIntelBadArgument;
  const std::optional<size_t> connector = IntelConnector(model, entry.Get(kUidAt));
  if (!connector) return kIntelUnknownDevice;
  desktop->connectors = {*connector};
  desktop->mode = DisplayMode{entry.Get(kWidthAt), entry.Get(kHeightAt), entry.Get(kBitsAt),
                              entry.Get(kRefreshAt)};
  desktop->placed = true;
  desktop->x = static_cast<int32_t>(entry.Get(kLeftAt));
  desktop->y = static_cast<int32_t>(entry.Get(kTopAt));
  desktop->orientation = entry.Get(kOrientationAt);
  return kIntelSuccess;
}

// The entries of a clone become one desktop. Each display may be given a size of its own, which it
// must take; where the sizes differ, the desktop gets the best that all of them take.
IntelError MakeClone(const Model& model, std::vector<IntelDesktop>* desktops) {
  IntelDesktop clone = (*desktops)[0];
  clone.connectors.clear();
  bool same = true;
  for (const IntelDesktop& desktop : *desktops) {
    if (!SamePlace(desktop, clone)) return kIntelBadArgument;
    if (!FindMode(ModesOfConnector(model, desktop.connectors[0]), *desktop.mode)) {
      return kIntelNoSuchMode;
    }
    same = same && desktop.mode == clone.mode;
    clone.connectors.push_back(desktop.connectors[0]);
  }
  if (!same) clone.mode = BestMode(model, clone.connectors);
  if (!clone.mode) return kIntelNoSuchMode;
  *desktops = {clone};
  return kIntelSuccess;
}

// The desktops take the adapter's sources in their order.
IntelError PutOnSources(const Model& model, std::vector<IntelDesktop>* desktops) {
  const size_t adapter = model.connectors[(*desktops)[0].connectors[0]].adapter;
  size_t next = 0;
  for (size_t i = 0; i < model.sources.size() && next < desktops->size(); ++i) {
    if (model.sources[i].adapter == adapter) (*desktops)[next++].source = i;
  }
  return next == desktops->size() ? kIntelSuccess : kIntelTooManyDisplays;
}

uint32_t MostHeads(const Model& model) {
  uint32_t most = 0;
  for (const Adapter& adapter : model.adapters) {
    if (IsIntelAdapter(adapter) && AdapterWorks(adapter)) most = std::max(most, HeadCount(adapter));
  }
  return most;
}

}  // namespace

// A block that is too small for every display holds those that fit; the count tells how many there
// are. A probe is told the size it takes, and nothing of the displays.
IntelError GetNView(const Model& model, IntelBlock block) {
  if (!HeadIsSound(block)) return kIntelBadArgument;
  const std::vector<Path> paths = DrivenPaths(model);
  const auto count = static_cast<uint32_t>(paths.size());
  block.Put(kCountAt, count);
  if (block.Get(kProbeAt) != 0) {
    block.Put(kSizeAt, kHeadSize + kEntrySize * std::max(count, 1U));
    return kIntelSuccess;
  }
  block.Put(kModeAt, OperatingMode(paths));
  const uint32_t fitting = std::min(count, (block.size() - kHeadSize) / kEntrySize);
  for (uint32_t i = 0; i < fitting; ++i) {
    PutEntry(model, paths[i], block.Slice(kHeadSize + i * kEntrySize, kEntrySize));
  }
  return kIntelSuccess;
}

IntelError SetNView(Model& model, IntelBlock block) {
  if (!HeadIsSound(block)) return kIntelBadArgument;
  const uint32_t count = block.Get(kCountAt);
  const uint32_t mode = block.Get(kModeAt);
  if (count == 0) return kIntelBadArgument;
  if (count > MostHeads(model)) return kIntelTooManyDisplays;
  if (block.Get(kProbeAt) != 0) {
    block.Put(kSizeAt, kHeadSize + kEntrySize * count);
    return kIntelSuccess;
  }
  if (block.size() < kHeadSize + kEntrySize * count) return kIntelBadArgument;
  const bool known = mode == kSingle || mode == kClone || mode == kExtended;
  if (!known || (mode == kSingle) != (count == 1)) return kIntelBadArgument;
  std::vector<IntelDesktop> desktops(count);
  for (uint32_t i = 0; i < count; ++i) {
    const IntelBlock entry = block.Slice(kHeadSize + i * kEntrySize, kEntrySize);
    // Of the desktops side by side only the first may be left at the origin; those of a clone are
    // one and the same.
    const bool may_be_unplaced = i == 0 || mode != kExtended;
    const IntelError error = ReadEntry(model, entry, may_be_unplaced, &desktops[i]);
    if (error != kIntelSuccess) return error;
  }
  if (mode == kClone) {
    if (const IntelError error = MakeClone(model, &desktops)) return error;
  }
  if (const IntelError error = PutOnSources(model, &desktops)) return error;
  return ShowIntelDesktops(model, desktops);
}

std::string DescribeNView(const IntelBlock& block) {
  if (block.size() < kHeadSize) return "n-view size=" + std::to_string(block.size());
  char text[256];
  snprintf(text, sizeof text, "n-view mode=%u probe=%u size=%u count=%u", block.Get(kModeAt),
           block.Get(kProbeAt), block.Get(kSizeAt), block.Get(kCountAt));
  std::string all = text;
  const uint32_t room = (block.size() - kHeadSize) / kEntrySize;
  const uint32_t shown = block.Get(kProbeAt) != 0 ? 0 : std::min(block.Get(kCountAt), room);
  for (uint32_t i = 0; i < shown; ++i) {
    const IntelBlock entry = block.Slice(kHeadSize + i * kEntrySize, kEntrySize);
    snprintf(text, sizeof text,
             ", 0x%x %ux%ux%u@%u left=%d right=%d top=%d bottom=%d orientation=%u scaling=%u",
             entry.Get(kUidAt), entry.Get(kWidthAt), entry.Get(kHeightAt), entry.Get(kBitsAt),
             entry.Get(kRefreshAt), static_cast<int32_t>(entry.Get(kLeftAt)),
             static_cast<int32_t>(entry.Get(kRightAt)), static_cast<int32_t>(entry.Get(kTopAt)),
             static_cast<int32_t>(entry.Get(kBottomAt)), entry.Get(kOrientationAt),
             entry.Get(kScalingAt));
    all += text;
  }
  return all;
}

IntelError GetIntelEdid(const Model& model, IntelBlock block) {
  if (block.size() != kEdidBlockSize || block.Get(kEdidLengthAt) != kEdidLength) {
    return kIntelBadArgument;
  }
  const std::optional<size_t> connector = IntelConnector(model, block.Get(kUidAt));
  if (!connector) return kIntelUnknownDevice;
  if (!IsConnected(model, *connector)) return kIntelNotAttached;
  const std::vector<uint8_t>& edid = model.connectors[*connector].monitor->edid;
  if (edid.empty()) return kIntelNotAttached;
  block.PutBytes(kEdidAt, edid);
  return kIntelSuccess;
}

// Of all working adapters of the driver together: the block names none.
IntelError GetIntelConnectors(const Model& model, IntelBlock block) {
  if (block.size() != kConnectorBlockSize) return kIntelBadArgument;
  uint32_t supported = MostHeads(model) >= 3 ? kSupportsThreeDisplays : 0;
  uint32_t attached = 0;
  uint32_t active = 0;
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const Connector& connector = model.connectors[i];
    if (!IsIntelDriven(model, i)) continue;
    for (const ConnectorBit& row : kConnectorBits) {
      if (row.type != IntelDeviceType(connector)) continue;
      supported |= row.bit;
      if (IsConnected(model, i)) attached |= row.bit;
      if (SourceOfConnector(model, i)) active |= row.bit;
    }
  }
  block.Put(0, supported);
  block.Put(4, attached);
  block.Put(8, active);
  return kIntelSuccess;
}

}  // namespace sim
