#include "Workaround/IntelRRWorkaroundWindow.h"

#include "Common/Logging.h"
#include "Common/MultiMonitor/IMMonitor.h"
#include "Workaround/HdmiRefreshRate.h"

namespace {

constexpr UINT_PTR kCheckTimer = 10;
constexpr UINT kDeviceChangePeriod = 3000;   // milliseconds
constexpr UINT kDisplayChangePeriod = 5000;  // milliseconds
constexpr uint32_t kSeveralDisplays = 2;

}  // namespace

IntelRRWorkaroundWindow::~IntelRRWorkaroundWindow() { VLOG(3) << "~IntelRRWorkaroundWindow()"; }

bool IntelRRWorkaroundWindow::Create(const std::wstring& title, DWORD style, DWORD ex_style, int x,
                                     int y, int width, int height, HWND parent) {
  if (!BaseWindow::Create(title, style, ex_style, x, y, width, height, parent)) return false;
  uint32_t count = 0;
  if (m != nullptr) m->GetConnectedDisplays(&known_displays_, &count);
  return true;
}

LRESULT IntelRRWorkaroundWindow::HandleMessage(HWND hwnd, UINT message, WPARAM wparam,
                                               LPARAM lparam) {
  switch (message) {
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    case WM_CLOSE:
    case WM_SYSCOMMAND:
      return 0;  // the window does not close itself
    case WM_DISPLAYCHANGE:
      return OnDisplayChange();
    case WM_TIMER:
      return OnTimer(wparam);
    case WM_DEVICECHANGE:
      return OnDeviceChange();
    default:
      return DefWindowProcW(hwnd, message, wparam, lparam);
  }
}

const wchar_t* IntelRRWorkaroundWindow::GetWindowClassName() {
  return L"HarborIntelRRWorkaroundWindowClassName";
}

LRESULT IntelRRWorkaroundWindow::OnDeviceChange() {
  SetTimer(wnd_, kCheckTimer, kDeviceChangePeriod, nullptr);
  timer_armed_ = true;
  return 0;
}

LRESULT IntelRRWorkaroundWindow::OnDisplayChange() {
  if (timer_armed_) SetTimer(wnd_, kCheckTimer, kDisplayChangePeriod, nullptr);
  return 0;
}

LRESULT IntelRRWorkaroundWindow::OnTimer(UINT_PTR id) {
  if (id != kCheckTimer) return 0;
  KillTimer(wnd_, kCheckTimer);
  timer_armed_ = false;
  if (worker_thread_ == nullptr) StartWorker();
  return 0;
}

void IntelRRWorkaroundWindow::StartWorker() {
  worker_thread_ = CreateThread(nullptr, 0, WorkerProc, this, 0, &worker_thread_id_);
}

DWORD WINAPI IntelRRWorkaroundWindow::WorkerProc(void* window) {
  auto* const self = static_cast<IntelRRWorkaroundWindow*>(window);
  try {
    self->CheckDisplays();
  } catch (...) {
    // Nothing may leave the thread; the next device change starts another.
  }
  self->EndWorker();
  return 0;
}

void IntelRRWorkaroundWindow::CheckDisplays() {
  if (m == nullptr) return;
  uint32_t displays = 0;
  uint32_t count = 0;
  if (m->GetConnectedDisplays(&displays, &count) == 0 || displays == known_displays_) return;
  known_displays_ = displays;
  ApplyWorkaround(displays, count);
}

void IntelRRWorkaroundWindow::EndWorker() {
  // The handle arrives when CreateThread returns to the starter, which may be after the check.
  while (worker_thread_ == nullptr) Sleep(0);
  worker_thread_id_ = 0;
  CloseHandle(worker_thread_);
  worker_thread_ = nullptr;  // last: from here on another check may start
}

void IntelRRWorkaroundWindow::ApplyWorkaround(uint32_t displays, uint32_t count) {
  VLOG(1) << "IntelRRWorkaroundWindow::ApplyWorkaround()";
  if (count >= kSeveralDisplays && (displays & IMMonitor::MD_HDMI) != 0) AdjustHdmiRefreshRate(m);
}
