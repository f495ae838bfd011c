#include "Common/MultiMonitor/DisplayLink/DisplayLinkWorkaroundImpl.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "Common/MultiMonitor/DisplayLink/AddOnApi.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/MultiMonitor/PresentationTypes.h"

namespace displaylink {
namespace {

/// Leaves one path a target, whatever number of sources it could be shown from.
// Deliberate: a target is told by its id alone, so that of two adapters' targets with one id only
// the first stays, and that before DisplayLink's are taken out.
void ReduceToTargets(Win7CCD::PathList* paths) {
  const auto less = [](const DISPLAYCONFIG_PATH_INFO& a, const DISPLAYCONFIG_PATH_INFO& b) {
    return a.targetInfo.id < b.targetInfo.id;
  };
  const auto equal = [](const DISPLAYCONFIG_PATH_INFO& a, const DISPLAYCONFIG_PATH_INFO& b) {
    return a.targetInfo.id == b.targetInfo.id;
  };
  std::stable_sort(paths->begin(), paths->end(), less);
  paths->erase(std::unique(paths->begin(), paths->end(), equal), paths->end());
}

std::vector<VidPnTarget> TargetsOf(const std::vector<NivoDisplay>& nivo_displays) {
  std::vector<VidPnTarget> targets;
  targets.reserve(nivo_displays.size());
  for (const NivoDisplay& nivo_display : nivo_displays) {
    VidPnTarget target = {};
    // Deliberate: the result is not looked at. A failure leaves zeros, which no real target has.
    dlGetVidPnTargetID(nivo_display.handle, kNivoQuery, &target);
    targets.push_back(target);
  }
  return targets;
}

bool IsTargetOf(const DISPLAYCONFIG_PATH_INFO& path, const std::vector<VidPnTarget>& targets) {
  const LUID& adapter = path.targetInfo.adapterId;
  const uint64_t adapter_id =
      static_cast<uint64_t>(static_cast<uint32_t>(adapter.HighPart)) << 32 | adapter.LowPart;
  return std::any_of(targets.begin(), targets.end(), [&](const VidPnTarget& target) {
    return target.adapter_id == adapter_id && target.target_id == path.targetInfo.id;
  });
}

}  // namespace

DisplayLinkWorkaroundImpl::DisplayLinkWorkaroundImpl(boost::shared_ptr<DisplayLinkAddOnHost> host)
    : Win7CCD(boost::shared_ptr<Win7CCDApi>(new Win7CCDApi())), host_(std::move(host)) {}

// Deliberate: leaves the host once, whether it joined it never or several times.
DisplayLinkWorkaroundImpl::~DisplayLinkWorkaroundImpl() { host_->Disconnect(); }

BOOL DisplayLinkWorkaroundImpl::Initial() {
  const BOOL initialised = Win7CCD::Initial();
  if (initialised == 0) return initialised;
  // Deliberate: joins the host at every success, also when it is a client already.
  host_->Connect();
  return TRUE;
}

BOOL DisplayLinkWorkaroundImpl::GetConnectedDisplays(uint32_t* displays, uint32_t* display_count) {
  return ReportDisplays(QDC_ALL_PATHS, displays, display_count);
}

BOOL DisplayLinkWorkaroundImpl::GetActiveDisplays(uint32_t* displays, uint32_t* display_count) {
  return ReportDisplays(QDC_ONLY_ACTIVE_PATHS, displays, display_count);
}

// Deliberate: adds to its outputs without clearing them, and keeps no technologies, so that
// DisplayPort is always looked up as an external one.
BOOL DisplayLinkWorkaroundImpl::ReportDisplays(UINT32 flags, uint32_t* displays,
                                               uint32_t* display_count) {
  PathList paths;
  if (QueryPaths(flags, &paths, nullptr) == 0) return FALSE;
  ReduceToTargets(&paths);
  const std::vector<VidPnTarget> display_link = TargetsOf(host_->NivoDisplays());
  for (const DISPLAYCONFIG_PATH_INFO& path : paths) {
    if (IsTargetOf(path, display_link)) continue;
    *displays |= FlagOfTechnology(static_cast<uint32_t>(path.targetInfo.outputTechnology));
    ++*display_count;  // Deliberate: also for a path that has no flag
  }
  return TRUE;
}

BOOL DisplayLinkWorkaroundImpl::SetNewDisplayMode(uint32_t mode, uint32_t displays) {
  // Deliberate: a clone is reached from extended desktop through the panel alone, and whether that
  // step worked is not asked.
  if (LeavesExtendedDesktopForClone(mode)) Win7CCD::SetNewDisplayMode(DM_SINGLE, MD_NB);
  return Win7CCD::SetNewDisplayMode(mode, displays);
}

bool DisplayLinkWorkaroundImpl::LeavesExtendedDesktopForClone(uint32_t mode) {
  uint32_t current = 0;
  uint32_t active = 0;
  GetCurrentDisplayMode(&current, &active);  // a mode that cannot be had is not extended desktop
  if (current != DM_EXTEND) return false;
  return mode == DM_CLONE || IsPresentationType(mode);
}

Win7CCD* CreateDisplayLinkWorkaround() {
  return new (std::nothrow) DisplayLinkWorkaroundImpl(DisplayLinkAddOnHost::GetInstance());
}

}  // namespace displaylink
