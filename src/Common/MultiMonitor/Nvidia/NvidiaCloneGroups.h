// The clone groups that NVIDIA's driver keeps across adapters: a list of groups, each a list of
// displays.
#pragma once

#include "Common/MultiMonitor/Nvidia/NVApiWrapper.h"

#include <cstdint>
#include <vector>

/// The groups as the driver tells them, in three questions: how many there are, how many displays
/// each has, which these are. Each needs the one before it. @note host thread
class NvidiaCloneGroups {
 public:
  /// @param proxy  null while NVAPI is down: every question then fails; not owned
  explicit NvidiaCloneGroups(NVApiWrapper* proxy) : proxy_(proxy) {}
  NvidiaCloneGroups(const NvidiaCloneGroups&) = delete;
  NvidiaCloneGroups& operator=(const NvidiaCloneGroups&) = delete;

  bool ReadCount();
  bool ReadGroups();
  bool ReadItems();

  /// Behind ReadCount: the driver's number, which it may have made up.
  uint32_t count() const { return top_.count; }
  /// Behind ReadItems: the displays of all groups in the driver's order.
  std::vector<NvTopologyItem> Items() const;

  /// Behind ReadCount: writes the list back as an empty one.
  bool RemoveAll();

 private:
  NVApiWrapper* const proxy_;
  NvTopology top_ = {};
  std::vector<NvTopology> groups_;
  std::vector<std::vector<NvTopologyItem>> items_;
};

/// Makes the driver keep one group of two displays, and show them the same.
/// @param panel_target_id  Windows' target id of the notebook's panel
/// @param display_id       NVAPI's id of the other one
bool WriteCloneGroup(NVApiWrapper* proxy, uint32_t panel_target_id, uint32_t display_id);
