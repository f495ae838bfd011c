// DMSwitch: the pop-up's window and what it does with messages.
#include "session/DMSwitch.h"

#include "Common/MultiMonitor/CallScope.h"
#include "session/popup/WindowPlacement.h"

namespace {

constexpr uint32_t kPopupClosed = 2;
constexpr UINT kShowOnTop = SWP_NOMOVE | SWP_NOACTIVATE | SWP_SHOWWINDOW;
static_assert(kShowOnTop == 82, "the pop-up is sized and shown, not moved and not activated");

/// Two mouse words as a message carries them, without their sign.
struct MouseWords {
  LONG x;
  LONG y;
};

MouseWords WordsOf(LPARAM packed) { return {LOWORD(packed), HIWORD(packed)}; }

}  // namespace

INT_PTR CALLBACK DMSwitch::DialogProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  const CallScope scope;
  if (s_self == nullptr) return 0;
  try {
    return s_self->HandleDialogMessage(window, message, wparam, lparam);
  } catch (...) {
    return 0;  // nothing may pass into the host's message loop
  }
}

INT_PTR DMSwitch::HandleDialogMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_INITDIALOG:
      SetWindowLongA(window, GWL_EXSTYLE, GetWindowLongA(window, GWL_EXSTYLE) | WS_EX_LAYERED);
      PositionPopup(window);
      UpdatePopupPicture(window);
      return 0;
    case WM_TIMER:
      OnTimer(wparam);
      return 1;
    case WM_MOUSEMOVE:
      OnMouseMove(lparam);
      return 1;
    case WM_LBUTTONDOWN:
      // Deliberate: a click between the pictures, too, applies what is highlighted.
      HitTest(lparam);
      ClosePopup();
      ApplySelection();
      return 1;
    case WM_KEYDOWN:
      OnKey(wparam);
      return 1;
    default:
      return 0;
  }
}

// Deliberate: another timer's id counts as handled.
void DMSwitch::OnTimer(WPARAM id) {
  if (id != kPopupTimer) return;
  KillTimer(dialog_, kPopupTimer);
  ClosePopup();
  ApplySelection();
}

void DMSwitch::OnMouseMove(LPARAM packed) {
  // The window may have appeared under a mouse that rests.
  // Deliberate: the words are compared without their sign, so that an opening position left of or
  // above the pop-up never counts as rest.
  const MouseWords words = WordsOf(packed);
  if (words.x == cursor_at_open_.x && words.y == cursor_at_open_.y) return;
  HitTest(packed);
}

void DMSwitch::OnKey(WPARAM key) {
  switch (key) {
    case VK_RIGHT:
    case VK_DOWN:
      MoveSelection(true);
      return;
    case VK_LEFT:
    case VK_UP:
      MoveSelection(false);
      return;
    case VK_RETURN:
      ClosePopup();
      ApplySelection();
      return;
    case VK_ESCAPE:
      // Deliberate: the host hears of the close before the selection is back where it was.
      ClosePopup();
      if (SelectionChanged()) RestoreSelection();
      return;
    default:
      // Deliberate: an unknown key counts as handled.
      return;
  }
}

void DMSwitch::PositionPopup(HWND window) {
  BringWindowToTop(window);
  SetWindowPos(window, HWND_TOPMOST, 0, 0, popup::Width(static_cast<uint32_t>(m_items.size())),
               popup::kHeight, kShowOnTop);
  CenterWindowOnMonitor(window);
}

void DMSwitch::ClosePopup() {
  if (dialog_ == nullptr) return;
  DestroyWindow(dialog_);
  dialog_ = nullptr;
  // Deliberate: the host hears of it before any change is made, and of the change nothing.
  Notify(kPopupClosed);
}
