// A list of display objects that waits for its end. Plain data, so that a process-wide one needs no
// initialisation.
#pragma once

#include <new>

#include "Common/MultiMonitor/IMMonitor.h"

struct MonitorList {
  struct Node {
    IMMonitor* monitor;
    Node* next;
  };
  Node* first;

  /// Takes ownership of `monitor`; null is allowed and adds nothing.
  /// @return false without memory; `monitor` then is the caller's still
  bool Add(IMMonitor* monitor) noexcept {
    if (monitor == nullptr) return true;
    Node* const node = new (std::nothrow) Node{monitor, first};
    if (node == nullptr) return false;
    first = node;
    return true;
  }

  /// Gives ownership of the object added last to the caller; null when the list is empty.
  IMMonitor* TakeLast() {
    if (first == nullptr) return nullptr;
    Node* const node = first;
    IMMonitor* const monitor = node->monitor;
    first = node->next;
    delete node;
    return monitor;
  }
};
