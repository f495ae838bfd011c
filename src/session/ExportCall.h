// The shape that all exports share.
#pragma once

#define OSTREL_BUILDING
#include "ostrel/ostrel.h"

#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/MMObjectFactory.h"

/// Runs an export's body inside a CallScope. No exception passes to the host: whatever comes out of
/// the body gives `failure`.
template <typename Result, typename Body>
Result ExportCall(Result failure, Body body) noexcept {
  try {
    const CallScope scope;
    return body();
  } catch (...) {
    return failure;
  }
}

/// The same for an export without a result.
template <typename Body>
void ExportCall(Body body) noexcept {
  ExportCall(0, [&body] {
    body();
    return 0;
  });
}

/// The display object of this moment, after a look whether the active adapter's vendor has changed.
/// @return null when no object answers for this machine
inline IMMonitor* RecheckedObject() {
  OnActiveDisplayAdapterVendorChanged();
  return GetMultiMonitorObject();
}

/// The exported code of the graphics vendor: the active object's while the switch side is up,
/// otherwise that of the first adapter that Windows lists.
uint32_t VgaVendorCode();
