#include "Common/MultiMonitor/CallScope.h"

#include <cstdint>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MonitorList.h"

namespace {

// All of this runs on the host's thread, so that plain numbers do.
uint32_t g_openScopes = 0;
MonitorList g_retired = {nullptr};

void DeleteRetired() {
  // One at a time: an object's destructor may retire another.
  while (IMMonitor* monitor = g_retired.TakeLast()) delete monitor;
}

}  // namespace

CallScope::CallScope() { ++g_openScopes; }

CallScope::~CallScope() {
  // The objects go while the scope still counts as open: what their destructors run is code of the
  // library like any other.
  if (g_openScopes == 1) DeleteRetired();
  --g_openScopes;
}

void RetireMonitor(IMMonitor* monitor) noexcept {
  if (g_openScopes == 0) {
    delete monitor;
    return;
  }
  // Without memory to note it the object never ends: that is the lesser evil while somebody may
  // still be using it.
  static_cast<void>(g_retired.Add(monitor));
}

void DeleteRetiredMonitors() {
  if (g_openScopes <= 1) DeleteRetired();
}
