// Base of the library's own windows: the window's messages reach the object.
#pragma once

#include <string>

#include "Common/Win.h"

namespace windowing {

/// One window, on the thread that creates it. Messages during creation already reach HandleMessage
/// with a window.
class BaseWindow {
 public:
  BaseWindow() = default;
  BaseWindow(const BaseWindow&) = delete;
  BaseWindow& operator=(const BaseWindow&) = delete;
  /// Destroys a window that exists.
  virtual ~BaseWindow() = 0;

  /// Registers the class and creates the window. @param x, y  not used, Windows chooses the place
  /// @return false when there is no window then; logged
  virtual bool Create(const std::wstring& title, DWORD style, DWORD ex_style, int x, int y,
                      int width, int height, HWND parent);
  virtual void Show();
  virtual LRESULT HandleMessage(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);
  /// Fills the class record that Create registers. @param wcex  out; never null
  virtual void FillWindowClass(WNDCLASSEXW* wcex);
  /// The class's name; stays valid as long as the object.
  virtual const wchar_t* GetWindowClassName() = 0;

  HWND wnd() const { return wnd_; }

 protected:
  /// The procedure of every window class: finds the object of a window and hands the message to it.
  static LRESULT CALLBACK MessageProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam);

  HWND wnd_ = nullptr;
};

}  // namespace windowing
