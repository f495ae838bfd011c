// The monitors that are present, as Windows keeps their EDIDs in the registry. Nothing is kept:
// every call asks Windows.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

/// One monitor's EDID. Shape: `cb` bytes at `pv`. The list's user frees `pv` with std::free.
struct RegistryEDID {
  uint32_t cb = 0;
  void* pv = nullptr;
};

/// Appends the EDIDs of the monitors present that have one, in Windows' order.
void ListRegistryEDIDs(std::vector<RegistryEDID>* edids);

/// Adds the names of the monitors present. One whose EDID is damaged is called
/// kUnknownMonitorName, one without a name adds nothing (an empty one is a name), several with one
/// name count as one.
void ListMonitorNamesFromRegistry(std::set<std::string>* names);

/// How many of `names` are the television that needs its driver's mode pruning off.
uint32_t CountMonitorsNamed(const std::set<std::string>& names);
