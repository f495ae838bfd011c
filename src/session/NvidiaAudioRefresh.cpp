#include "session/NvidiaAudioRefresh.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/Win.h"
#include "Common/win_util.h"

// Left out by WIN32_LEAN_AND_MEAN.
#include <mmsystem.h>

namespace {

constexpr UINT kRefreshPeriod = 2000;
constexpr uint32_t kRefreshLimit = 5;
constexpr UINT kSeveralAudioOutputs = 2;

UINT_PTR g_refreshTimer = 0;
uint32_t g_refreshCount = 0;
void (*g_detect)() = nullptr;

void KillRefreshTimer() {
  if (g_refreshTimer == 0) return;
  KillTimer(nullptr, g_refreshTimer);
  g_refreshTimer = 0;
}

void CALLBACK RefreshTimerProc(HWND window, UINT message, UINT_PTR id, DWORD time);

void StartRefreshTimer() {
  g_refreshTimer = SetTimer(nullptr, 0, kRefreshPeriod, RefreshTimerProc);
}

void OnRefreshTimer() {
  KillRefreshTimer();
  ++g_refreshCount;
  // Deliberate: the fifth firing ends it, which leaves four further detections.
  if (g_refreshCount >= kRefreshLimit) return;
  if (waveOutGetNumDevs() < kSeveralAudioOutputs) return;
  g_detect();
  StartRefreshTimer();
}

void CALLBACK RefreshTimerProc(HWND, UINT, UINT_PTR, DWORD) {
  const CallScope scope;
  try {
    OnRefreshTimer();
  } catch (...) {
    // Nothing may pass into the host's message loop; the detection simply is not repeated.
  }
}

/// The control-panel object behind `object`, whose detection is the one to repeat. No such object
/// exists yet.
IMMonitor* NvidiaControlPanelObject(IMMonitor* object) {
  static_cast<void>(object);
  return nullptr;
}

bool DetectOn(IMMonitor* object) {
  IMMonitor* const nv = object == nullptr ? nullptr : NvidiaControlPanelObject(object);
  DCHECK(nv != NULL);
  if (nv == nullptr) return false;
  nv->DetectDisplays();
  return true;
}

void DetectOnActiveObject() { DetectOn(GetMultiMonitorObject()); }

}  // namespace

void StartNvidiaAudioRefresh(IMMonitor* object, uint32_t mode, uint32_t displays) {
  static_cast<void>(displays);
  if (win_util::GetWinVersion() > win_util::WINVERSION_XP) return;
  if (object->GetVgaVendor() != kVendorNvidia || mode != IMMonitor::DM_SINGLE) return;
  if (DetectOn(object)) RepeatDetection(DetectOnActiveObject);
}

void RepeatDetection(void (*detect)()) {
  // Deliberate: the timer has no window and outlives the session that started it.
  KillRefreshTimer();
  g_detect = detect;
  g_refreshCount = 0;
  StartRefreshTimer();
}

void StopDetection() { KillRefreshTimer(); }
