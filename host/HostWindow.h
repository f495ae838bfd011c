// The host's own window and message loop: where the library's notifications and the hotkey arrive.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "Common/Win.h"

class HostWindow {
 public:
  /// The message that the host asks the library to post.
  static constexpr uint32_t kNotification = WM_APP + 1;

  HostWindow();
  ~HostWindow();
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  HWND handle() const { return window_; }

  std::function<void(uint32_t code)>
      on_notification;  // 1: the pop-up is about to run, 2: it has gone
  std::function<void()> on_hotkey;
  std::function<void()> on_timer;  // one shot, see After

  /// Registers a system-wide hotkey written like "win+p" or "ctrl+alt+f7".
  /// @return false when the text is no hotkey or another program holds it
  bool RegisterHotkey(const std::string& text);

  /// Calls on_timer once, `milliseconds` from now.
  void After(uint32_t milliseconds);

  /// Pumps messages until Quit, a closed window or Ctrl+C.
  /// @return true when it ended by Quit
  bool Pump();
  void Quit();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  LRESULT Handle(UINT message, WPARAM wparam, LPARAM lparam);

  HWND window_ = nullptr;
  bool quit_ = false;
  bool closed_ = false;
};
