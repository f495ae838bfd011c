#include "Common/MultiMonitor/DisplayModeValidator.h"

#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/CreateIMMonitorForActiveVendor.h"
#include "Common/MultiMonitor/DisplayConfigBuffers.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/OutputTechnology.h"
#include "Common/MultiMonitor/Win7CCD.h"

#include <algorithm>
#include <memory>

namespace {

constexpr UINT kDelay = 3000;  // milliseconds

// A thread timer has no argument, so that its callback finds the record here.
// Deliberate: the newest record is the one that counts, even when an older one armed the timer, and
// the end of any record leaves none.
DisplayModeValidator* g_newestValidator = nullptr;

// Asks the vendor's own library, whose news are fresher than Windows'. It counts only when it
// answers.
bool SomeDisplayIsConnected(DisplayModeValidator::MonitorMaker make, uint32_t displays) {
  try {
    const std::unique_ptr<IMMonitor> imm(make());
    if (imm == nullptr || imm->Initial() == 0) return true;
    uint32_t connected = 0;
    uint32_t count = 0;
    if (imm->GetConnectedDisplays(&connected, &count) == 0) return true;
    return (connected & displays) != 0;
  } catch (...) {
    return true;
  }
}

// An analogue output that only shows a picture because it was forced to: nobody sees it.
bool IsForcedCrt(const DISPLAYCONFIG_PATH_INFO& path) {
  return path.targetInfo.targetAvailable != 0 &&
         static_cast<uint32_t>(path.targetInfo.outputTechnology) == kTechnologyHD15 &&
         (path.targetInfo.statusFlags & DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH) != 0;
}

bool SomeActivePathIsForced(const Win7CCDApi& ccd) {
  DisplayConfigBuffers buffers;
  if (!buffers.Read(ccd, QDC_ONLY_ACTIVE_PATHS)) return false;
  const auto paths = buffers.Paths();
  return std::any_of(paths.begin(), paths.end(), IsForcedCrt);
}

}  // namespace

DisplayModeValidator::DisplayModeValidator() { g_newestValidator = this; }

DisplayModeValidator::~DisplayModeValidator() {
  if (m_timer != 0) KillTimer(nullptr, m_timer);
  m_timer = 0;
  g_newestValidator = nullptr;
}

void DisplayModeValidator::Start(Win7CCD* monitor, const boost::shared_ptr<Win7CCDApi>& ccd,
                                 uint32_t mode, uint32_t displays) {
  m_monitor = monitor;
  m_ccd = ccd;
  m_mode = mode;
  m_displays = displays;
  if (m_timer != 0) KillTimer(nullptr, m_timer);
  m_timer = SetTimer(nullptr, 0, kDelay, OnTimer);
}

void CALLBACK DisplayModeValidator::OnTimer(HWND /*wnd*/, UINT /*message*/, UINT_PTR id,
                                            DWORD /*time*/) {
  const CallScope scope;
  KillTimer(nullptr, id);
  // Deliberate: the newest record's, even when another's timer fired.
  if (g_newestValidator != nullptr) g_newestValidator->m_timer = 0;
  try {
    ValidateNewest(CreateIMMonitorForActiveVendor);
  } catch (...) {  // nothing may leave a callback of Windows; there is nobody to tell
  }
}

void DisplayModeValidator::ValidateNewest(MonitorMaker make) {
  const DisplayModeValidator* const validator = g_newestValidator;
  if (validator == nullptr) return;
  if (validator->m_monitor == nullptr || validator->m_ccd == nullptr) return;

  // Taken out first: an object that is made below may become the newest one, and end.
  Win7CCD* const monitor = validator->m_monitor;
  const boost::shared_ptr<Win7CCDApi> ccd = validator->m_ccd;
  if (!SomeDisplayIsConnected(make, validator->m_displays) || SomeActivePathIsForced(*ccd)) {
    monitor->SetNewDisplayMode(IMMonitor::DM_SINGLE, IMMonitor::MD_NB);
  }
}
