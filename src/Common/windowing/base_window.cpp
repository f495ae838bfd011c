#include "Common/windowing/base_window.h"

#include <typeinfo>

#include "Common/Logging.h"

namespace windowing {

static_assert(sizeof(WNDCLASSEXW) == 80, "the size word that RegisterClassExW expects");

BaseWindow::~BaseWindow() {
  if (wnd_ == nullptr) return;
  DestroyWindow(wnd_);
  wnd_ = nullptr;
}

bool BaseWindow::Create(const std::wstring& title, DWORD style, DWORD ex_style, int /*x*/,
                        int /*y*/, int width, int height, HWND parent) {
  // Deliberate: a second Create makes a second window over the member.
  DCHECK(wnd_ == NULL) << "Create a window that already exists is not allowed";
  WNDCLASSEXW wcex = {};
  FillWindowClass(&wcex);
  RegisterClassExW(&wcex);  // fails for the second window of a class, which is fine

  const wchar_t* class_name = GetWindowClassName();
  // Deliberate: the asked place is not used.
  wnd_ = CreateWindowExW(ex_style, class_name, title.c_str(), style, CW_USEDEFAULT, CW_USEDEFAULT,
                         width, height, parent, nullptr, GetModuleHandleW(nullptr), this);
  DCHECK(wnd_ != NULL);
  if (wnd_ == nullptr) {
    LOG(ERROR) << "Creating window failed:\n"
               << typeid(*this).name() << "\n\t Window class name: " << class_name;
  }
  return wnd_ != nullptr;
}

void BaseWindow::Show() {
  ShowWindow(wnd_, SW_SHOWNORMAL);
  UpdateWindow(wnd_);
}

LRESULT BaseWindow::HandleMessage(HWND /*hwnd*/, UINT message, WPARAM wparam, LPARAM lparam) {
  return DefWindowProcW(wnd_, message, wparam, lparam);
}

void BaseWindow::FillWindowClass(WNDCLASSEXW* wcex) {
  DCHECK(wcex != NULL);
  if (wcex == nullptr) return;
  *wcex = {};
  wcex->cbSize = sizeof(*wcex);
  wcex->style = CS_HREDRAW | CS_VREDRAW;
  wcex->lpfnWndProc = &BaseWindow::MessageProc;
  wcex->hInstance = GetModuleHandleW(nullptr);
  wcex->lpszClassName = GetWindowClassName();
}

LRESULT CALLBACK BaseWindow::MessageProc(HWND hwnd, UINT message, WPARAM wparam, LPARAM lparam) {
  BaseWindow* window = nullptr;
  if (message == WM_NCCREATE) {
    const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lparam);
    window = static_cast<BaseWindow*>(creation->lpCreateParams);
    SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window));
    if (window != nullptr) window->wnd_ = hwnd;
  } else {
    window = reinterpret_cast<BaseWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
  }
  if (window == nullptr) return DefWindowProcA(hwnd, message, wparam, lparam);
  const LRESULT result = window->HandleMessage(hwnd, message, wparam, lparam);
  if (message == WM_DESTROY) window->wnd_ = nullptr;
  return result;
}

}  // namespace windowing
