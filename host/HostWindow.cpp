#include "host/HostWindow.h"

#include <cctype>
#include <optional>
#include <sstream>

namespace {

constexpr wchar_t kClassName[] = L"OstrelHostWindow";
constexpr UINT_PTR kTimer = 1;
constexpr int kHotkey = 1;

constexpr DWORD kGraceAtClose = 5000;  // milliseconds; about what Windows itself grants

HWND g_window_to_close = nullptr;

/// Runs on a thread of the system's own: it may only post. When the console closes or the user logs
/// off, Windows ends the process as soon as this returns, so that the host's thread is given the
/// time to end the library first; the process then ends of its own and this never returns.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  PostMessageW(g_window_to_close, WM_CLOSE, 0, 0);
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(kGraceAtClose);
  return TRUE;
}

struct Hotkey {
  UINT modifiers = 0;
  UINT key = 0;
};

struct Modifier {
  const char* word;
  UINT flag;
};

constexpr Modifier kModifiers[] = {
    {"alt", MOD_ALT}, {"ctrl", MOD_CONTROL}, {"shift", MOD_SHIFT}, {"win", MOD_WIN}};

std::optional<UINT> KeyFromWord(const std::string& word) {
  if (word.size() == 1 && std::isalnum(static_cast<unsigned char>(word[0])) != 0) {
    return static_cast<UINT>(std::toupper(static_cast<unsigned char>(word[0])));
  }
  if (word.size() < 2 || word[0] != 'f') return std::nullopt;
  if (word.find_first_not_of("0123456789", 1) != std::string::npos || word.size() > 3) {
    return std::nullopt;
  }
  const int number = std::atoi(word.c_str() + 1);
  if (number < 1 || number > 24) return std::nullopt;
  return static_cast<UINT>(VK_F1 + number - 1);
}

std::optional<Hotkey> ParseHotkey(const std::string& text) {
  Hotkey hotkey;
  std::istringstream words(text);
  for (std::string word; std::getline(words, word, '+');) {
    for (char& letter : word) {
      letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    bool is_modifier = false;
    for (const Modifier& modifier : kModifiers) {
      if (word == modifier.word) {
        hotkey.modifiers |= modifier.flag;
        is_modifier = true;
      }
    }
    if (is_modifier) continue;
    const std::optional<UINT> key = KeyFromWord(word);
    if (!key || hotkey.key != 0) return std::nullopt;
    hotkey.key = *key;
  }
  if (hotkey.key == 0) return std::nullopt;
  return hotkey;
}

}  // namespace

HostWindow::HostWindow() {
  WNDCLASSEXW window_class = {};
  window_class.cbSize = sizeof(window_class);
  window_class.lpfnWndProc = &HostWindow::Procedure;
  window_class.hInstance = GetModuleHandleW(nullptr);
  window_class.lpszClassName = kClassName;
  RegisterClassExW(&window_class);
  window_ = CreateWindowExW(0, kClassName, L"Ostrel host", WS_OVERLAPPED, 0, 0, 0, 0, nullptr,
                            nullptr, window_class.hInstance, this);
  g_window_to_close = window_;
  SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
}

HostWindow::~HostWindow() {
  // The handler stays: a second Ctrl+C must not end the process while the library is being ended.
  if (window_ != nullptr) DestroyWindow(window_);
}

bool HostWindow::RegisterHotkey(const std::string& text) {
  const std::optional<Hotkey> hotkey = ParseHotkey(text);
  return hotkey && RegisterHotKey(window_, kHotkey, hotkey->modifiers, hotkey->key) != 0;
}

void HostWindow::After(uint32_t milliseconds) { SetTimer(window_, kTimer, milliseconds, nullptr); }

bool HostWindow::Pump() {
  MSG message;
  while (!quit_ && !closed_ && GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  return quit_;
}

void HostWindow::Quit() { quit_ = true; }

LRESULT CALLBACK HostWindow::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* record = reinterpret_cast<const CREATESTRUCTW*>(lparam);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(record->lpCreateParams));
  }
  auto* self = reinterpret_cast<HostWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr || self->window_ == nullptr) {
    return DefWindowProcW(window, message, wparam, lparam);
  }
  return self->Handle(message, wparam, lparam);
}

LRESULT HostWindow::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case kNotification:
      if (on_notification) on_notification(static_cast<uint32_t>(wparam));
      return 0;
    case WM_HOTKEY:
      if (on_hotkey) on_hotkey();
      return 0;
    case WM_TIMER:
      KillTimer(window_, kTimer);
      if (on_timer) on_timer();
      return 0;
    case WM_CLOSE:
      closed_ = true;
      return 0;
    default:
      return DefWindowProcW(window_, message, wparam, lparam);
  }
}
