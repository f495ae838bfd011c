// Calls of the simulated functions as the DLL makes them: through the entry tables.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Common/Win.h"
#include "sim/FaceTable.h"
#include "sim/Machine.h"
#include "sim/MachineState.h"

namespace sim {

template <typename Function>
Function* SimulatedFunction(const char* name) {
  const Entry* entry = FindEntryByName(name);
  if (entry == nullptr) throw std::runtime_error(std::string("not simulated: ") + name);
  return reinterpret_cast<Function*>(entry->function);
}

/// FAKE(SetDisplayConfig)(0, nullptr, 0, nullptr, flags)
#define FAKE(name) ::sim::SimulatedFunction<decltype(::name)>(#name)

// --- Display configuration.

struct Queried {
  LONG result = 0;
  std::vector<DISPLAYCONFIG_PATH_INFO> paths;
  std::vector<DISPLAYCONFIG_MODE_INFO> modes;
  DISPLAYCONFIG_TOPOLOGY_ID topology = DISPLAYCONFIG_TOPOLOGY_FORCE_UINT32;
};

/// Both calls, sizes and data, as the documentation's example makes them.
inline Queried Query(UINT32 flags) {
  Queried q;
  UINT32 paths = 0;
  UINT32 modes = 0;
  q.result = FAKE(GetDisplayConfigBufferSizes)(flags, &paths, &modes);
  if (q.result != ERROR_SUCCESS) return q;
  q.paths.resize(paths);
  q.modes.resize(modes);
  q.result = FAKE(QueryDisplayConfig)(flags, &paths, q.paths.data(), &modes, q.modes.data(),
                                      flags == QDC_DATABASE_CURRENT ? &q.topology : nullptr);
  q.paths.resize(paths);
  q.modes.resize(modes);
  return q;
}

/// The source mode of a path that has one.
inline DISPLAYCONFIG_SOURCE_MODE* SourceMode(Queried* q, size_t path) {
  return &q->modes[q->paths[path].sourceInfo.modeInfoIdx].sourceMode;
}

/// SetDisplayConfig for a named topology.
inline LONG SetTopology(UINT32 flags) {
  return FAKE(SetDisplayConfig)(0, nullptr, 0, nullptr, flags);
}

inline LONG SetPaths(std::vector<DISPLAYCONFIG_PATH_INFO> paths,
                     std::vector<DISPLAYCONFIG_MODE_INFO> modes, UINT32 flags) {
  return FAKE(SetDisplayConfig)(static_cast<UINT32>(paths.size()), paths.data(),
                                static_cast<UINT32>(modes.size()),
                                modes.empty() ? nullptr : modes.data(), flags);
}

// --- Display settings.

inline DEVMODEA EmptyMode() {
  DEVMODEA dm = {};
  dm.dmSize = sizeof dm;
  return dm;
}

/// EnumDisplaySettingsA; a width of 0xFFFFFFFF stands for a refusal.
inline DEVMODEA Settings(const char* device, DWORD number = ENUM_CURRENT_SETTINGS) {
  DEVMODEA dm = EmptyMode();
  if (!FAKE(EnumDisplaySettingsA)(device, number, &dm)) dm.dmPelsWidth = 0xFFFFFFFF;
  return dm;
}

/// "1024x768x32@60 at 0,0", "detached" for sizes of zero, "refused".
inline std::string Told(const DEVMODEA& dm) {
  if (dm.dmPelsWidth == 0xFFFFFFFF) return "refused";
  if (dm.dmPelsWidth == 0 && dm.dmPelsHeight == 0) return "detached";
  return std::to_string(dm.dmPelsWidth) + "x" + std::to_string(dm.dmPelsHeight) + "x" +
         std::to_string(dm.dmBitsPerPel) + "@" + std::to_string(dm.dmDisplayFrequency) + " at " +
         std::to_string(dm.dmPosition.x) + "," + std::to_string(dm.dmPosition.y);
}

inline std::string Now(const char* device) { return Told(Settings(device)); }

inline DEVMODEA Sized(DWORD width, DWORD height) {
  DEVMODEA dm = EmptyMode();
  dm.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
  dm.dmPelsWidth = width;
  dm.dmPelsHeight = height;
  return dm;
}

inline DEVMODEA SizedAt(DWORD width, DWORD height, LONG x, LONG y) {
  DEVMODEA dm = Sized(width, height);
  dm.dmFields |= DM_POSITION;
  dm.dmPosition.x = x;
  dm.dmPosition.y = y;
  return dm;
}

inline LONG Change(const char* device, DEVMODEA dm, DWORD flags) {
  return FAKE(ChangeDisplaySettingsExA)(device, &dm, nullptr, flags, nullptr);
}

inline LONG Commit() {
  return FAKE(ChangeDisplaySettingsExA)(nullptr, nullptr, nullptr, 0, nullptr);
}

constexpr char kFirst[] = "\\\\.\\DISPLAY1";
constexpr char kSecond[] = "\\\\.\\DISPLAY2";

}  // namespace sim
