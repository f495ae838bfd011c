#include "session/NvidiaAudioRefresh.h"

#include "Common/AtExitManager.h"
#include "Common/Logging.h"
#include "Common/MultiMonitor/CallScope.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/MultiMonitor/MMObjectFactory.h"
#include "Common/MultiMonitor/Nvidia/NvidiaMMImpl.h"
#include "Common/Win.h"
#include "Common/win_util.h"
#include "session/Lifecycle.h"

// Left out by WIN32_LEAN_AND_MEAN.
#include <mmsystem.h>

namespace {

constexpr UINT kRefreshPeriod = 2000;
constexpr uint32_t kRefreshLimit = 5;
constexpr UINT kSeveralAudioOutputs = 2;

UINT_PTR g_refreshTimer = 0;
uint32_t g_refreshCount = 0;
bool (*g_detect)() = nullptr;
bool g_killedAtUnload = false;  // the at-exit manager will see to it

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
  if (g_detect()) StartRefreshTimer();
}

void CALLBACK RefreshTimerProc(HWND, UINT, UINT_PTR, DWORD) {
  const CallScope scope;
  try {
    OnRefreshTimer();
  } catch (...) {
    // Nothing may pass into the host's message loop; the detection simply is not repeated.
  }
}

/// @return false when `object` is not the control panel's, whose detection is the one to repeat
bool DetectOn(IMMonitor* object) {
  auto* const nv = dynamic_cast<NvidiaMMImpl*>(object);
  DCHECK(nv != NULL);
  if (nv == nullptr) return false;
  nv->DetectDisplays();
  return true;
}

/// The object of the switch may be gone by now. Without a side that is up there is none, and asking
/// would make one that nobody ends.
bool DetectOnActiveObject() {
  const bool has_object = g_switchReady || g_extendModeReady;
  return DetectOn(has_object ? GetMultiMonitorObject() : nullptr);
}

/// The host may unload the library with a timer pending, which would then call into nothing.
void KillAtUnload() {
  if (g_killedAtUnload) return;
  AtExitManager::RegisterCallback([](void*) { KillRefreshTimer(); }, nullptr);
  g_killedAtUnload = true;  // not before: the registration may throw
}

}  // namespace

void StartNvidiaAudioRefresh(IMMonitor* object, uint32_t mode, uint32_t displays) {
  static_cast<void>(displays);
  if (win_util::GetWinVersion() > win_util::WINVERSION_XP) return;
  if (object->GetVgaVendor() != kVendorNvidia || mode != IMMonitor::DM_SINGLE) return;
  if (DetectOn(object)) RepeatDetection(DetectOnActiveObject);
}

void RepeatDetection(bool (*detect)()) {
  // Deliberate: the timer has no window and outlives the session that started it, and the switch
  // side, too.
  KillRefreshTimer();
  KillAtUnload();
  g_detect = detect;
  g_refreshCount = 0;
  StartRefreshTimer();
}
