// Monitor identity from inside: EDIDs, the registry listing, names and native sizes.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/IPhysicalMonitor.h"
#include "Common/MultiMonitor/MonitorIdentity.h"
#include "Common/MultiMonitor/MultiMonitor.h"

/// What a monitor's EDID gives to who asks a MultiMonitor for it, and what happened.
struct BlobScript {
  bool readable = true;
  uint32_t cb = 0;
  const void* pv = nullptr;  // stays the test's
  std::string calls;         // "GetMonitorEDID(2)\nFreeMonitorEDID\n"
};

struct IdentityBox {
  /// EDID::Load on an empty record: "1", "0", or the text of what it threw.
  std::string (*LoadEdid)(const void* data, uint32_t size);

  void (*ListRegistryEDIDs)(std::vector<RegistryEDID>* edids);
  void (*ListMonitorNamesFromRegistry)(std::set<std::string>* names);
  uint32_t (*CountMonitorsNamed)(const std::set<std::string>& names);

  /// A back-end that answers GetMonitorEDID as `script` says; ends by delete.
  MultiMonitor* (*NewScriptedMultiMonitor)(BlobScript* script);

  /// A PhysicalMonitorByDisplayLibrary, count 0; null with the text of what its construction threw.
  IPhysicalMonitor* (*NewPhysicalMonitor)(std::string* error);
  /// The same over `monitor`.
  IPhysicalMonitor* (*NewPhysicalMonitorOf)(IMMonitor* monitor);
};

const IdentityBox* GetIdentityBox();
