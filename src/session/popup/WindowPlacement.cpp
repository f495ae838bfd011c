#include "session/popup/WindowPlacement.h"

#include "session/popup/PopupGeometry.h"

namespace {

constexpr UINT kMoveOnly = SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
static_assert(kMoveOnly == 21, "the window keeps its size, its place in the stack and the focus");

popup::Rect FromRect(const RECT& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

/// The frame of a child window: the client area of its parent, in which its position counts.
bool FrameOfChild(HWND window, popup::Rect* frame) {
  RECT client = {};
  if (GetClientRect(GetParent(window), &client) == 0) return false;
  *frame = FromRect(client);
  return true;
}

bool FrameOfMonitor(HWND window, popup::Rect* frame) {
  const HMONITOR monitor = MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST);
  if (monitor == nullptr) return false;
  MONITORINFO info = {};
  static_assert(sizeof(info) == 40, "GetMonitorInfoA is asked for the short record");
  info.cbSize = sizeof(info);
  if (GetMonitorInfoA(monitor, &info) == 0) return false;
  *frame = FromRect(info.rcWork);
  return true;
}

/// The owner of a top-level window, if a person sees it.
HWND VisibleOwner(HWND window) {
  const HWND owner = GetWindow(window, GW_OWNER);
  if (owner == nullptr) return nullptr;
  const LONG style = GetWindowLongA(owner, GWL_STYLE);
  return (style & WS_VISIBLE) != 0 && (style & WS_MINIMIZE) == 0 ? owner : nullptr;
}

/// Where a top-level window goes: `centre` is what it is centred on, `frame` what it must not
/// leave.
bool PlaceOfTopLevel(HWND window, popup::Rect* centre, popup::Rect* frame) {
  const HWND owner = VisibleOwner(window);
  if (!FrameOfMonitor(window, frame)) return false;
  *centre = *frame;
  RECT rect = {};
  if (owner != nullptr && GetWindowRect(owner, &rect) != 0) *centre = FromRect(rect);
  return true;
}

}  // namespace

void CenterWindowOnMonitor(HWND window) {
  popup::Rect frame;
  popup::Rect centre;
  if ((GetWindowLongA(window, GWL_STYLE) & WS_CHILD) != 0) {
    if (!FrameOfChild(window, &frame)) return;
    centre = frame;
  } else if (!PlaceOfTopLevel(window, &centre, &frame)) {
    return;
  }
  RECT rect = {};
  GetWindowRect(window, &rect);
  const popup::Point corner =
      popup::CentredIn(centre, frame, rect.right - rect.left, rect.bottom - rect.top);
  SetWindowPos(window, nullptr, corner.x, corner.y, -1, -1, kMoveOnly);
}
