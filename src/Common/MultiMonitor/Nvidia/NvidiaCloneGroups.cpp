#include "Common/MultiMonitor/Nvidia/NvidiaCloneGroups.h"

#include <algorithm>

namespace {

// Deliberate: more groups or items than this, which is more than any notebook has displays, end the
// reading as a refusal does. Room has to be made for what the driver tells, and it may tell
// anything.
constexpr uint32_t kMostElements = 64;

}  // namespace

bool NvidiaCloneGroups::ReadCount() {
  top_ = {};
  top_.version = kNvTopologyVersion;
  return proxy_ != nullptr && proxy_->GetDisplayTopology(&top_);
}

bool NvidiaCloneGroups::ReadGroups() {
  if (proxy_ == nullptr || top_.count == 0 || top_.count > kMostElements) return false;
  groups_.assign(top_.count, {});
  // Deliberate: the first group alone gets the version word.
  groups_[0].version = kNvTopologyVersion;
  top_.elements = groups_.data();
  if (!proxy_->GetDisplayTopology(&top_)) return false;
  // Groups that went away since are not asked about; for one that came there is no room.
  top_.count = std::min(top_.count, static_cast<uint32_t>(groups_.size()));
  groups_.resize(top_.count);
  return true;
}

bool NvidiaCloneGroups::ReadItems() {
  if (groups_.empty()) return true;
  items_.assign(groups_.size(), {});
  for (size_t i = 0; i < groups_.size(); ++i) {
    if (groups_[i].count > kMostElements) return false;
    NvTopologyItem item = {};
    item.version = kNvTopologyItemVersion;
    items_[i].assign(groups_[i].count, item);
    groups_[i].elements = items_[i].data();
  }
  top_.elements = groups_.data();
  if (proxy_ == nullptr || !proxy_->GetDisplayTopology(&top_)) return false;
  for (size_t i = 0; i < groups_.size(); ++i) {
    if (groups_[i].count < items_[i].size()) items_[i].resize(groups_[i].count);
  }
  if (top_.count < items_.size()) items_.resize(top_.count);
  return true;
}

std::vector<NvTopologyItem> NvidiaCloneGroups::Items() const {
  std::vector<NvTopologyItem> all;
  for (const std::vector<NvTopologyItem>& items : items_) {
    all.insert(all.end(), items.begin(), items.end());
  }
  return all;
}

bool NvidiaCloneGroups::RemoveAll() {
  if (proxy_ == nullptr) return false;
  top_.count = 0;
  return proxy_->SetDisplayTopology(&top_);
}

bool WriteCloneGroup(NVApiWrapper* proxy, uint32_t panel_target_id, uint32_t display_id) {
  if (proxy == nullptr) return false;
  NvTopologyItem items[2] = {};
  items[0].version = kNvTopologyItemVersion;
  items[0].flags = NvTopologyItem::kForeign | NvTopologyItem::kNotebookPanel;
  items[0].id = panel_target_id;
  items[1].version = kNvTopologyItemVersion;
  items[1].id = display_id;
  NvTopology group = {};
  group.version = kNvTopologyVersion;
  group.count = 2;
  group.elements = items;
  NvTopology top = {};
  top.version = kNvTopologyVersion;
  top.count = 1;
  top.elements = &group;
  return proxy->SetDisplayTopology(&top);
}
