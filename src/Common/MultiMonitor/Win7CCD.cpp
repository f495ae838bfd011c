#include "Common/MultiMonitor/Win7CCD.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/win_util.h"

#include <boost/make_shared.hpp>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

uint32_t TechnologyOf(const DISPLAYCONFIG_PATH_INFO& path) {
  return static_cast<uint32_t>(path.targetInfo.outputTechnology);
}

// A forced path belongs to an output with nothing plugged in.
bool HasRealTarget(const DISPLAYCONFIG_PATH_INFO& path) {
  return path.targetInfo.targetAvailable != 0 &&
         (path.targetInfo.statusFlags & DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH) == 0;
}

const DISPLAYCONFIG_PATH_INFO* FindTechnology(const Win7CCD::PathList& paths, uint32_t technology) {
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    if (TechnologyOf(path) == technology) return &path;
  }
  return nullptr;
}

std::string AdapterKey(const LUID& adapter_id) {
  char key[32];
  std::snprintf(key, sizeof(key), "%d-%d", static_cast<int>(adapter_id.HighPart),
                static_cast<int>(adapter_id.LowPart));
  return key;
}

}  // namespace

Win7CCD::Win7CCD(boost::shared_ptr<Win7CCDApi> ccd)
    : m_ccd(std::move(ccd)), m_validator(boost::make_shared<DisplayModeValidator>()) {}

Win7CCD::~Win7CCD() = default;

BOOL Win7CCD::Initial() {
  if (win_util::GetWinVersion() < win_util::WINVERSION_WIN7) {
    throw std::runtime_error("This class only support Windows 7 or later");
  }
  if (m_initialized || m_apiLoaded) return TRUE;
  if (m_ccd == nullptr) return FALSE;
  const BOOL loaded = m_ccd->Load("User32.dll");
  if (loaded == 0) return loaded;
  m_initialized = true;
  m_apiLoaded = true;
  return TRUE;
}

// Deliberate: interfaces are had by a run-time cast and never from here.
HRESULT Win7CCD::QueryInterface(REFIID /*iid*/, void** /*object*/) {
  DCHECK(0 && "Should never call this function");
  return E_FAIL;
}

ULONG Win7CCD::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_references)); }

ULONG Win7CCD::Release() {
  const LONG left = InterlockedDecrement(&m_references);
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

BOOL Win7CCD::QueryPaths(UINT32 flags, PathList* paths, DISPLAYCONFIG_TOPOLOGY_ID* topology) {
  DCHECK(m_ccd);
  if (m_ccd == nullptr) return FALSE;
  DisplayConfigBuffers buffers;
  if (!buffers.Read(*m_ccd, flags, topology)) return FALSE;
  for (const DISPLAYCONFIG_PATH_INFO& path : buffers.Paths()) {
    if (HasRealTarget(path)) paths->push_back(path);
  }
  return TRUE;
}

BOOL Win7CCD::QuerySortedPaths(UINT32 flags, PathList* paths) {
  if (QueryPaths(flags, paths, nullptr) == 0) return FALSE;
  NormalisePaths(paths, TechnologyOf);
  return TRUE;
}

uint32_t Win7CCD::TechnologyFromDisplay(uint32_t display) const {
  if (display == MD_DP) {
    // Deliberate: the map's keys are running masks, so that this one is there only when DisplayPort
    // was the first display seen.
    const auto entry = m_technologyByMask.find(MD_DP);
    if (entry != m_technologyByMask.end()) return entry->second;
  }
  return TechnologyOfDisplay(display);
}

BOOL Win7CCD::SelectPath(uint32_t display, const PathList& paths,
                         DISPLAYCONFIG_PATH_INFO* path_out) const {
  const DISPLAYCONFIG_PATH_INFO* path = FindTechnology(paths, TechnologyFromDisplay(display));
  // Deliberate: an output of technology "other" stands in for whatever is missing.
  if (path == nullptr) path = FindTechnology(paths, kTechnologyOther);
  if (path == nullptr) return FALSE;
  *path_out = *path;
  return TRUE;
}

// Deliberate: whichever display is asked for, the answer is the first path's.
uint32_t Win7CCD::GetActiveTargetId(uint32_t /*display*/) {
  PathList paths;
  if (QuerySortedPaths(QDC_ALL_PATHS, &paths) == 0) {
    LOG(ERROR) << "Can't find any active display path";
    return 0;
  }
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    if (path.targetInfo.targetAvailable != 0) return path.targetInfo.id;
  }
  return 0;
}

BOOL Win7CCD::HasMultipleDisplayAdapter() {
  PathList paths;
  if (QueryPaths(QDC_ALL_PATHS, &paths, nullptr) == 0) return FALSE;
  std::set<std::string> adapters;
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    adapters.insert(AdapterKey(path.sourceInfo.adapterId));
  }
  VLOG(2) << "HasMultipleDisplayAdapter() number of adapters =" << adapters.size();
  return adapters.size() > 1 ? TRUE : FALSE;
}
