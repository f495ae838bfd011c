#include "session/DisplayChangeMonitor.h"

#include <atomic>

#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Common/Win.h"
#include "Common/win_util.h"
#include "session/DMSwitch.h"
#include "session/DisplayChangeMonitorState.h"

namespace {

constexpr UINT kFirstPeriod = 1500;  // milliseconds, before any change has come
constexpr uint32_t kPeriod = 800;
constexpr uint32_t kPeriodFromExtend = 1600;
constexpr DWORD kLongestWait = 10000;  // for the restore, and again for the thread's end
constexpr UINT kEndMonitoring = 1025;  // a message to the thread, not to its window

constexpr char kWindowClass[] = "HarborDisplayChangeMonitorWindow";
constexpr DWORD kWindowStyle = WS_OVERLAPPEDWINDOW;
constexpr DWORD kWindowExStyle = WS_EX_NOACTIVATE | WS_EX_TOOLWINDOW;
constexpr int kWindowWidth = 200;
constexpr int kWindowHeight = 100;

}  // namespace

std::atomic<HANDLE> g_ResetDisplaySettingsCompletedEvent{nullptr};
HANDLE g_DCMThreadHandle = nullptr;
DWORD g_DCMThreadID = 0;
std::atomic<UINT_PTR> g_resetTimer{0};
uint32_t g_resetTimerPeriod = kPeriod;
bool g_monitorClassRegistered = false;

namespace {

// Grows with every run, so that a thread which an earlier one has left behind knows that it is.
std::atomic<uint32_t> g_run{0};

// --- On the monitoring thread.

/// The item may be gone: a timer can fire late, when the host has given up and ended its session.
/// Nothing holds the session between the look and the use then; as long as the host waits, its
/// wait does.
void RestoreSelectedItem() {
  DMSwitch* const self = DMSwitch::s_self;
  const DMItem* const selected = self != nullptr ? self->SelectedItem() : nullptr;
  if (selected == nullptr) return;
  const DMItem item = *selected;
  self->RestoreSettingsForItem(item);
}

void OnResetTimer() {
  VLOG(2) << "ResetDisplaySettingsTimerProc()";
  const UINT_PTR fired = g_resetTimer.exchange(0);
  KillTimer(nullptr, fired);
  RestoreSelectedItem();
}

// No CallScope: its count is the host thread's, which holds one open through the whole wait.
void CALLBACK ResetDisplaySettingsTimerProc(HWND, UINT, UINT_PTR, DWORD) {
  try {
    OnResetTimer();
  } catch (...) {
    // The resolution stays as it is; the host must go on all the same.
  }
  try {
    DCHECK(g_ResetDisplaySettingsCompletedEvent != NULL);
  } catch (...) {
    // A record that cannot be written.
  }
  // Deliberate: also without the event, when the host has stopped waiting.
  SetEvent(g_ResetDisplaySettingsCompletedEvent);
}

void OnDisplayChange() {
  VLOG(2) << "OstrelWndProc() WM_DISPLAYCHANGE";
  // Deliberate: a change during or after the restore starts nothing; the restore's own is one.
  if (g_resetTimer == 0) return;
  LOG(INFO) << "Reset timer";
  KillTimer(nullptr, g_resetTimer);
  g_resetTimer = SetTimer(nullptr, 0, g_resetTimerPeriod, ResetDisplaySettingsTimerProc);
}

LRESULT CALLBACK OstrelWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DISPLAYCHANGE) {
    try {
      OnDisplayChange();
    } catch (...) {
      // A record that cannot be written; nothing may pass into Windows.
    }
  }
  return DefWindowProcA(window, message, wParam, lParam);
}

void RegisterMonitorClass(HINSTANCE instance) {
  // Deliberate: once per process, whether it succeeds or not, in the name of the host's executable,
  // and never unregistered.
  if (g_monitorClassRegistered) return;
  g_monitorClassRegistered = true;
  WNDCLASSA window_class = {};
  window_class.style = CS_VREDRAW | CS_HREDRAW | CS_DBLCLKS;
  window_class.lpfnWndProc = OstrelWndProc;
  window_class.hInstance = instance;
  window_class.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<UINT_PTR>(COLOR_WINDOW + 1));
  window_class.lpszClassName = kWindowClass;
  RegisterClassA(&window_class);
}

/// Hidden, and a top-level window: only those hear of a display change.
void CreateMonitorWindow(HINSTANCE instance) {
  const bool topmost = win_util::GetWinVersion() >= win_util::WINVERSION_WIN8;
  const DWORD ex_style = topmost ? kWindowExStyle | WS_EX_TOPMOST : kWindowExStyle;
  const HWND wnd =
      CreateWindowExA(ex_style, kWindowClass, kWindowClass, kWindowStyle, CW_USEDEFAULT, 0,
                      kWindowWidth, kWindowHeight, nullptr, nullptr, instance, nullptr);
  DCHECK(wnd != NULL);
}

void PumpUntilTold() {
  for (;;) {
    MSG message = {};
    if (GetMessageA(&message, nullptr, 0, 0) == 0 || message.message == kEndMonitoring) return;
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
}

void MonitorDisplayChanges() {
  VLOG(2) << "DislayChangeMonitoringThreadProc() enter";
  const HINSTANCE instance = GetModuleHandleA(nullptr);
  RegisterMonitorClass(instance);
  CreateMonitorWindow(instance);
  // Deliberate: the first period is longer than that behind a change.
  g_resetTimer = SetTimer(nullptr, g_resetTimer, kFirstPeriod, ResetDisplaySettingsTimerProc);
  PumpUntilTold();
  VLOG(2) << "DislayChangeMonitoringThreadProc() exit";
}

DWORD WINAPI DislayChangeMonitoringThreadProc(void*) {
  const uint32_t run = g_run;
  try {
    MonitorDisplayChanges();
  } catch (...) {
    // Nothing may leave the thread. The host's wait runs out, and nothing is restored.
  }
  // A timer that is still pending ends with its thread, as the window does. That of a later run is
  // not this thread's to forget.
  if (g_run == run) g_resetTimer = 0;
  return 0;
}

// --- On the host's thread.

void StartMonitoring() {
  ++g_run;
  // Nameless; the thread signals it once.
  g_ResetDisplaySettingsCompletedEvent = CreateEventA(nullptr, FALSE, FALSE, "");
  DCHECK(g_ResetDisplaySettingsCompletedEvent != NULL);
  g_DCMThreadHandle =
      CreateThread(nullptr, 0, DislayChangeMonitoringThreadProc, nullptr, 0, &g_DCMThreadID);
  DCHECK(g_DCMThreadHandle != NULL);
}

void WaitForRestore() {
  // Deliberate: the result is not looked at. When the changes have not stopped by then, nothing is
  // restored and the host goes on.
  WaitForSingleObject(g_ResetDisplaySettingsCompletedEvent, kLongestWait);
  const HANDLE event = g_ResetDisplaySettingsCompletedEvent.exchange(nullptr);
  if (event != nullptr) CloseHandle(event);
}

void EndMonitoring() {
  PostThreadMessageA(g_DCMThreadID, kEndMonitoring, 0, 0);
  // Deliberate: the result is not looked at; a thread that does not end is left to itself.
  WaitForSingleObject(g_DCMThreadHandle, kLongestWait);
  if (g_DCMThreadHandle != nullptr) CloseHandle(g_DCMThreadHandle);
  g_DCMThreadHandle = nullptr;
  g_DCMThreadID = 0;
}

}  // namespace

void RunDisplayChangeMonitor(uint32_t previous_mode) {
  DCHECK(g_ResetDisplaySettingsCompletedEvent == NULL);
  DCHECK(g_DCMThreadHandle == NULL);
  DCHECK(g_DCMThreadID == 0);
  g_resetTimerPeriod = previous_mode == IMMonitor::DM_EXTEND ? kPeriodFromExtend : kPeriod;
  StartMonitoring();
  WaitForRestore();
  EndMonitoring();
}
