// Which displays there are, and which of them show what.
#include "Common/Logging.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/MultiMonitor/Win7CCD.h"
#include "Common/ProcessState.h"

#include <memory>
#include <new>

namespace {

constexpr UINT32 kValidatePaths =
    SDC_VALIDATE | SDC_USE_SUPPLIED_DISPLAY_CONFIG | SDC_SAVE_TO_DATABASE | SDC_ALLOW_CHANGES;
constexpr UINT32 kApplyPaths =
    SDC_APPLY | SDC_USE_SUPPLIED_DISPLAY_CONFIG | SDC_SAVE_TO_DATABASE | SDC_ALLOW_CHANGES;
constexpr UINT32 kForce = SDC_APPLY | SDC_PATH_PERSIST_IF_REQUIRED;
static_assert(kValidatePaths == 0x660 && kApplyPaths == 0x6A0 && kForce == 0x880,
              "flags of SetDisplayConfig");

// Outputs that some displays drive without being seen to be there.
constexpr uint32_t kForceableDisplays = IMMonitor::MD_CRT | IMMonitor::MD_HDMI | IMMonitor::MD_DVI;

}  // namespace

// Deliberate: adds to its outputs without clearing them, and keeps the technologies by the mask
// gathered so far, not by their own flag.
BOOL Win7CCD::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  PathList paths;
  if (QuerySortedPaths(QDC_ALL_PATHS, &paths) == 0) return FALSE;
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    const auto technology = static_cast<uint32_t>(path.targetInfo.outputTechnology);
    *displays |= FlagOfTechnology(technology);
    m_technologyByMask[*displays] = technology;
    ++*display_count;  // Deliberate: also for a path that has no flag
  }
  return TRUE;
}

// Deliberate: adds to its outputs without clearing them.
BOOL Win7CCD::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  PathList paths;
  if (QuerySortedPaths(QDC_ONLY_ACTIVE_PATHS, &paths) == 0) return FALSE;
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    *displays |= FlagOfTechnology(static_cast<uint32_t>(path.targetInfo.outputTechnology));
    ++*display_count;
  }
  return TRUE;
}

BOOL Win7CCD::GetCurrentDisplayMode(uint32_t* mode, uint32_t* displays) {
  uint32_t active = 0;
  uint32_t active_count = 0;
  if (GetActiveDisplays(&active, &active_count) == 0) return FALSE;
  PathList paths;
  DISPLAYCONFIG_TOPOLOGY_ID topology = {};
  if (QueryPaths(QDC_DATABASE_CURRENT, &paths, &topology) == 0) return FALSE;
  // Deliberate: a topology without a name gives mode 0, with success.
  *mode = ModeOfTopology(static_cast<uint32_t>(topology));
  *displays = active;
  return TRUE;
}

BOOL Win7CCD::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  PathList paths;
  if (QuerySortedPaths(QDC_ALL_PATHS, &paths) == 0) return FALSE;
  // Windows chooses the displays of a topology itself, and with three of them perhaps the wrong
  // ones.
  // Deliberate: with three technologies the topology is not even tried, unless the lasso status is
  // set.
  if (paths.size() >= 3 && g_lassoBoxStatus == 0) return ApplyPaths(mode, displays, paths);

  const uint32_t topology = TopologyOfMode(mode, displays);
  if (SetDisplayConfig(0, nullptr, topology | SDC_VALIDATE) == ERROR_SUCCESS) {
    return SetDisplayConfig(0, nullptr, topology | SDC_APPLY) == ERROR_SUCCESS ? TRUE : FALSE;
  }
  if (ForceTopology(topology, mode, displays)) return TRUE;
  return ApplyPaths(mode, displays, paths);
}

// Deliberate: what Windows has just called impossible is forced, and looked at again after three
// seconds.
bool Win7CCD::ForceTopology(uint32_t topology, uint32_t mode, uint32_t displays) {
  if (g_lassoBoxStatus == 0 || topology == kTopologyInternal) return false;
  if ((displays & kForceableDisplays) == 0) return false;
  if (SetDisplayConfig(0, nullptr, topology | kForce) != ERROR_SUCCESS) return false;
  m_validator->Start(this, m_ccd, mode, displays);
  return true;
}

BOOL Win7CCD::ApplyPaths(uint32_t mode, uint32_t displays, const PathList& paths) {
  const UINT32 num_of_paths = mode == DM_SINGLE ? 1 : 2;
  const std::unique_ptr<DISPLAYCONFIG_PATH_INFO[]> new_paths(
      new (std::nothrow) DISPLAYCONFIG_PATH_INFO[num_of_paths]());
  if (new_paths == nullptr) return FALSE;
  if (FillPaths(mode, displays, paths, new_paths.get(), num_of_paths) == 0) return FALSE;
  for (UINT32 i = 0; i < num_of_paths; ++i) {
    new_paths[i].flags = DISPLAYCONFIG_PATH_ACTIVE;
    new_paths[i].sourceInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
    new_paths[i].targetInfo.modeInfoIdx = DISPLAYCONFIG_PATH_MODE_IDX_INVALID;
  }
  const LONG validated = SetDisplayConfig(num_of_paths, new_paths.get(), kValidatePaths);
  const UINT32 flags = validated == ERROR_SUCCESS
                           ? kApplyPaths
                           : TopologyOfMode(mode, displays) | SDC_TOPOLOGY_SUPPLIED | SDC_APPLY;
  return SetDisplayConfig(num_of_paths, new_paths.get(), flags) == ERROR_SUCCESS ? TRUE : FALSE;
}

BOOL Win7CCD::FillPaths(uint32_t mode, uint32_t displays, const PathList& paths,
                        DISPLAYCONFIG_PATH_INFO* new_paths, UINT32 num_of_paths) const {
  DCHECK(new_paths != NULL);
  DCHECK(num_of_paths > 0);
  if (paths.empty()) return FALSE;
  if (mode == DM_SINGLE) return SelectPath(displays, paths, &new_paths[0]);
  DCHECK(num_of_paths > 1);
  if (SelectPath(MD_NB, paths, &new_paths[0]) == 0) return FALSE;
  return SelectPath(displays & ~static_cast<uint32_t>(MD_NB), paths, &new_paths[1]);
}

BOOL Win7CCD::EnableExtendMode(BOOL enable) {
  const UINT32 topology = enable != 0 ? SDC_TOPOLOGY_EXTEND : SDC_TOPOLOGY_INTERNAL;
  return SetDisplayConfig(0, nullptr, SDC_APPLY | topology) == ERROR_SUCCESS ? TRUE : FALSE;
}

LONG Win7CCD::SetDisplayConfig(UINT32 count, DISPLAYCONFIG_PATH_INFO* paths, UINT32 flags) {
  if (m_ccd == nullptr || m_ccd->SetDisplayConfig == nullptr) return ERROR_NOT_SUPPORTED;
  return m_ccd->SetDisplayConfig(count, paths, 0, nullptr, flags);
}
