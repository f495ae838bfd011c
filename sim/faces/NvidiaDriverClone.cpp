// Clone groups over several adapters: the driver shows the picture of another adapter's display on
// its own. Windows' topology knows nothing of it.
#include "sim/Topology.h"
#include "sim/faces/NvidiaDriverRules.h"

namespace sim {
namespace {

// The record of the whole and that of a group have one shape.
constexpr uint32_t kCountAt = 4;
constexpr uint32_t kElementsAt = 8;
constexpr uint32_t kReservedAt = 16;
constexpr uint32_t kGroupSize = 24;

// An item of a group.
constexpr uint32_t kItemSize = 44;
constexpr uint32_t kFlagsAt = 4;
constexpr uint32_t kItemReservedAt = 8;
constexpr uint32_t kIdAt = 12;
constexpr uint32_t kItemRestAt = 16;

constexpr uint32_t kForeign = 1;
constexpr uint32_t kPanel = 2;

constexpr uint32_t kMostElements = 16;

NvRecord GroupAt(const NvRecord& top, uint32_t index) {
  return NvRecord(top.GetPointer(kElementsAt)).At(index * kGroupSize);
}
NvRecord ItemAt(const NvRecord& group, uint32_t index) {
  return NvRecord(group.GetPointer(kElementsAt)).At(index * kItemSize);
}

// The items of one group, into an array of the caller with a version word in each.
NvStatus ReadItems(const NvidiaCloneGroup& from, const NvRecord& group) {
  if (group.Get(kCountAt) < from.size()) return kNvInvalidArgument;
  for (uint32_t i = 0; i < from.size(); ++i) {
    NvRecord item = ItemAt(group, i);
    if (item.version() != kNvCloneItemVersion) return kNvIncompatibleVersion;
    item.Put(kFlagsAt, from[i].flags);
    item.Put(kIdAt, from[i].id);
  }
  return kNvOk;
}

NvStatus CheckItem(const Model& model, const NvRecord& item) {
  if (item.version() != kNvCloneItemVersion) return kNvIncompatibleVersion;
  const uint32_t flags = item.Get(kFlagsAt);
  const bool known = flags == 0 || flags == kForeign || flags == (kForeign | kPanel);
  if (!known || item.Get(kItemReservedAt) != 0) return kNvInvalidArgument;
  for (uint32_t at = kItemRestAt; at < kItemSize; at += 4) {
    if (item.Get(at) != 0) return kNvInvalidArgument;
  }
  const std::optional<size_t> connector = NvCloneConnector(model, {flags, item.Get(kIdAt)});
  if (!connector) return kNvInvalidArgument;
  const bool panel = IsInternal(model.connectors[*connector].technology);
  if ((flags & kPanel) != 0 && !panel) return kNvInvalidArgument;
  return IsConnected(model, *connector) ? kNvOk : kNvError;
}

NvStatus CheckGroup(const Model& model, const NvRecord& group) {
  if (group.version() != kNvCloneVersion) return kNvIncompatibleVersion;
  const uint32_t count = group.Get(kCountAt);
  if (count < 2 || count > kMostElements || group.GetPointer(kElementsAt) == nullptr) {
    return kNvInvalidArgument;
  }
  if (group.Get(kReservedAt) != 0 || group.Get(kReservedAt + 4) != 0) return kNvInvalidArgument;
  for (uint32_t i = 0; i < count; ++i) {
    const NvStatus status = CheckItem(model, ItemAt(group, i));
    if (status != kNvOk) return status;
  }
  return kNvOk;
}

NvStatus CheckTop(const Model& model, const NvRecord& top) {
  if (!top) return kNvInvalidArgument;
  if (top.version() != kNvCloneVersion) return kNvIncompatibleVersion;
  const uint32_t count = top.Get(kCountAt);
  if (count == 0) return kNvOk;
  if (count > kMostElements || top.GetPointer(kElementsAt) == nullptr) return kNvInvalidArgument;
  for (uint32_t i = 0; i < count; ++i) {
    const NvStatus status = CheckGroup(model, GroupAt(top, i));
    if (status != kNvOk) return status;
  }
  return kNvOk;
}

std::string DescribeItem(const Model& model, const NvRecord& item) {
  if (item.version() != kNvCloneItemVersion) return "[version=" + NvHex(item.version()) + "]";
  const uint32_t flags = item.Get(kFlagsAt);
  const uint32_t id = item.Get(kIdAt);
  const std::optional<size_t> connector = NvCloneConnector(model, {flags, id});
  return "[flags=" + std::to_string(flags) + ((flags & kForeign) != 0 ? " target=" : " display=") +
         NvHex(id) + " " + (connector ? model.connectors[*connector].id : "unknown") + "]";
}

std::string DescribeGroup(const Model& model, const NvRecord& group) {
  if (group.version() != kNvCloneVersion) return "[version=" + NvHex(group.version()) + "]";
  const uint32_t count = group.Get(kCountAt);
  if (count == 0 || count > kMostElements || group.GetPointer(kElementsAt) == nullptr) {
    return "[items=" + std::to_string(count) + "]";
  }
  std::string text;
  for (uint32_t i = 0; i < count; ++i) NvAdd(&text, DescribeItem(model, ItemAt(group, i)));
  return "[" + text + "]";
}

}  // namespace

std::optional<size_t> NvCloneConnector(const Model& model, const NvidiaCloneItem& item) {
  if ((item.flags & kForeign) == 0) return NvConnectorByDisplayId(model, item.id);
  for (size_t i = 0; i < model.connectors.size(); ++i) {
    const Connector& c = model.connectors[i];
    if (c.target_id == item.id && !IsNvidiaAdapter(model.adapters[c.adapter])) return i;
  }
  return std::nullopt;
}

// Three stages, told apart by the arrays that the caller brings: how many groups there are, how
// many items each has, the items. A version word is looked for in the whole, in the first group and
// in every item.
NvStatus ReadNvCloneGroups(const Model& model, NvRecord top) {
  if (!top) return kNvInvalidArgument;
  if (top.version() != kNvCloneVersion) return kNvIncompatibleVersion;
  const auto& groups = model.nvidia_clone_groups;
  const auto count = static_cast<uint32_t>(groups.size());
  if (top.GetPointer(kElementsAt) == nullptr) {
    top.Put(kCountAt, count);
    return kNvOk;
  }
  if (top.Get(kCountAt) < count) return kNvInvalidArgument;
  top.Put(kCountAt, count);
  if (count > 0 && GroupAt(top, 0).version() != kNvCloneVersion) return kNvIncompatibleVersion;
  for (uint32_t i = 0; i < count; ++i) {
    NvRecord group = GroupAt(top, i);
    if (group.GetPointer(kElementsAt) == nullptr) {
      group.Put(kCountAt, static_cast<uint32_t>(groups[i].size()));
      continue;
    }
    const NvStatus status = ReadItems(groups[i], group);
    if (status != kNvOk) return status;
  }
  return kNvOk;
}

// The groups of the record take the place of those that stood; a count of 0 removes them all.
NvStatus WriteNvCloneGroups(Model& model, NvRecord top) {
  if (const NvStatus status = CheckTop(model, top); status != kNvOk) return status;
  std::vector<NvidiaCloneGroup> groups(top.Get(kCountAt));
  for (uint32_t i = 0; i < groups.size(); ++i) {
    const NvRecord group = GroupAt(top, i);
    for (uint32_t k = 0; k < group.Get(kCountAt); ++k) {
      const NvRecord item = ItemAt(group, k);
      groups[i].push_back({item.Get(kFlagsAt), item.Get(kIdAt)});
    }
  }
  model.nvidia_clone_groups = groups;
  return kNvOk;
}

std::string DescribeNvCloneGroups(const Model& model, const NvRecord& top) {
  if (!top) return "null";
  if (top.version() != kNvCloneVersion) return "version=" + NvHex(top.version());
  const uint32_t count = top.Get(kCountAt);
  if (count == 0) return "groups=none";
  if (count > kMostElements || top.GetPointer(kElementsAt) == nullptr) {
    return "groups=" + std::to_string(count);
  }
  std::string text;
  for (uint32_t i = 0; i < count; ++i) NvAdd(&text, DescribeGroup(model, GroupAt(top, i)));
  return "groups=[" + text + "]";
}

}  // namespace sim
