// Windows: real ones, recorded. The cursor and the posts are simulated in virtual time, since a
// test has no person at the mouse and no message loop.
#include <algorithm>
#include <cstdio>
#include <string>

#include "sim/MachineState.h"
#include "sim/faces/Counted.h"

#include <commctrl.h>

namespace sim {
namespace {

constexpr char kWindow[] = "window";

Machine::State& State() { return Machine::Current().state(); }
WindowBook& Book() { return State().windows; }

DWORD CodeOr(const Call& call, DWORD usual) {
  return call.FaultCode() != 0 ? call.FaultCode() : usual;
}

// --- Making and destroying.
// -------------------------------------------------------------------------------------

HWND Made(HWND window) {
  if (window == nullptr) return nullptr;
  Book().alive.push_back(window);
  LedgerTake(kWindow, window);
  return window;
}

// Whose instance a window or class was made with.
const char* InstanceName(HINSTANCE instance) {
  if (instance == nullptr) return "no instance";
  return instance == GetModuleHandleW(nullptr) ? "the host's instance" : "another instance";
}

HWND WINAPI FakeCreateDialogParamA(HINSTANCE instance, LPCSTR resource, HWND owner,
                                   DLGPROC procedure, LPARAM parameter) {
  Call call("CreateDialogParamA");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_RESOURCE_NAME_NOT_FOUND));
    return nullptr;
  }
  const HWND window = Made(CreateDialogParamA(instance, resource, owner, procedure, parameter));
  if (window != nullptr) Book().dialogs.push_back(window);
  return window;
}

HWND WINAPI FakeCreateWindowExA(DWORD ex_style, LPCSTR class_name, LPCSTR title, DWORD style, int x,
                                int y, int width, int height, HWND parent, HMENU menu,
                                HINSTANCE instance, LPVOID parameter) {
  Call call("CreateWindowExA");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_NOT_ENOUGH_MEMORY));
    return nullptr;
  }
  const HWND window = Made(CreateWindowExA(ex_style, class_name, title, style, x, y, width, height,
                                           parent, menu, instance, parameter));
  const DWORD error = GetLastError();
  call.Read(window != nullptr,
            "ex_style=0x%lx class=%s title=%s style=0x%lx at %d,%d size=%dx%d parent=%d menu=%d %s",
            ex_style, IS_INTRESOURCE(class_name) ? "#" : class_name, title != nullptr ? title : "",
            style, x, y, width, height, parent != nullptr, menu != nullptr, InstanceName(instance));
  SetLastError(error);
  return window;
}

HWND WINAPI FakeCreateWindowExW(DWORD ex_style, LPCWSTR class_name, LPCWSTR title, DWORD style,
                                int x, int y, int width, int height, HWND parent, HMENU menu,
                                HINSTANCE instance, LPVOID parameter) {
  Call call("CreateWindowExW");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_NOT_ENOUGH_MEMORY));
    return nullptr;
  }
  return Made(CreateWindowExW(ex_style, class_name, title, style, x, y, width, height, parent, menu,
                              instance, parameter));
}

BOOL WINAPI FakeDestroyWindow(HWND window) {
  Call call("DestroyWindow");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_ACCESS_DENIED));
    return FALSE;
  }
  if (!DestroyWindow(window)) return FALSE;
  WindowBook& book = Book();
  const auto forget = [&](std::vector<HWND>& list) {
    list.erase(std::remove(list.begin(), list.end(), window), list.end());
  };
  forget(book.alive);
  forget(book.dialogs);
  State().ledger.Give(kWindow, reinterpret_cast<uint64_t>(window));
  State().clock.ForgetWindow(window);
  return TRUE;
}

// --- Classes.
// ---------------------------------------------------------------------------------------------------

// The name by which the class can be unregistered: itself, or the atom that stands for it.
std::wstring ClassName(LPCWSTR name) {
  return IS_INTRESOURCE(name) ? L"#" + std::to_wstring(reinterpret_cast<uint64_t>(name))
                              : std::wstring(name);
}

std::wstring ClassName(LPCSTR name) {
  return IS_INTRESOURCE(name) ? L"#" + std::to_wstring(reinterpret_cast<uint64_t>(name))
                              : Widen(name);
}

template <typename Record, typename Function>
ATOM Register(const char* name, const Record* record, Function real) {
  Call call(name);
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_NOT_ENOUGH_MEMORY));
    return 0;
  }
  const ATOM atom = real(record);
  if (atom != 0) {
    Book().classes.push_back({ClassName(record->lpszClassName), record->hInstance});
  }
  return atom;
}

ATOM WINAPI FakeRegisterClassA(const WNDCLASSA* record) {
  const ATOM atom = Register("RegisterClassA", record, RegisterClassA);
  if (!State().journal.reads()) return atom;
  const std::wstring name = ClassName(record->lpszClassName);
  char text[200];
  std::snprintf(text, sizeof(text), "style=%u background=%llu menu=%d extra=%d,%d %s)=%d",
                record->style,
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(record->hbrBackground)),
                record->lpszMenuName != nullptr, record->cbClsExtra, record->cbWndExtra,
                InstanceName(record->hInstance), atom != 0);
  JournalLine("RegisterClassA(" + Narrow(name) + " " + text);
  return atom;
}

ATOM WINAPI FakeRegisterClassExW(const WNDCLASSEXW* record) {
  return Register("RegisterClassExW", record, RegisterClassExW);
}

// --- The layered picture.
// ---------------------------------------------------------------------------------------

// The pixels of a bitmap as 32-bit values from the top row down; nothing when it cannot be read.
Picture PixelsOf(HDC dc, HBITMAP bitmap) {
  BITMAP facts = {};
  if (GetObjectW(bitmap, sizeof(facts), &facts) == 0) return {};
  Picture picture;
  picture.width = static_cast<uint32_t>(facts.bmWidth);
  picture.height = static_cast<uint32_t>(facts.bmHeight);
  picture.pixels.resize(static_cast<size_t>(picture.width) * picture.height);
  BITMAPINFO info = {};
  info.bmiHeader.biSize = sizeof(info.bmiHeader);
  info.bmiHeader.biWidth = facts.bmWidth;
  info.bmiHeader.biHeight = -facts.bmHeight;  // from the top
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  GetDIBits(dc, bitmap, 0, picture.height, picture.pixels.data(), &info, DIB_RGB_COLORS);
  return picture;
}

void Capture(HDC source) {
  const auto bitmap = static_cast<HBITMAP>(GetCurrentObject(source, OBJ_BITMAP));
  Book().picture = PixelsOf(source, bitmap);
  const auto& known = State().drawings.gdi_bitmaps;
  const auto drawn = known.find(bitmap);
  Book().drawing = drawn == known.end() ? std::vector<Drawn>() : drawn->second;
}

BOOL WINAPI FakeUpdateLayeredWindow(HWND window, HDC destination, POINT* position, SIZE* size,
                                    HDC source, POINT* origin, COLORREF key, BLENDFUNCTION* blend,
                                    DWORD flags) {
  Call call("UpdateLayeredWindow");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_INVALID_PARAMETER));
    return FALSE;
  }
  if (source != nullptr) Capture(source);
  const BOOL result =
      UpdateLayeredWindow(window, destination, position, size, source, origin, key, blend, flags);
  call.Read(result, "size=%ldx%ld flags=%lu", size != nullptr ? size->cx : 0,
            size != nullptr ? size->cy : 0, flags);
  return result;
}

// --- The cursor and the posts.
// ----------------------------------------------------------------------------------

BOOL WINAPI FakeGetCursorPos(POINT* point) {
  Call call("GetCursorPos");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_ACCESS_DENIED));
    return FALSE;
  }
  if (State().clock.real()) return GetCursorPos(point);
  *point = Book().cursor;
  return TRUE;
}

BOOL WINAPI FakeSetCursorPos(int x, int y) {
  Call call("SetCursorPos");
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_ACCESS_DENIED));
    return FALSE;
  }
  call.Read(TRUE, "%d,%d", x, y);
  if (State().clock.real()) return SetCursorPos(x, y);
  Book().cursor = {x, y};
  return TRUE;
}

BOOL Post(const char* function, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  Call call(function);
  if (call.Fails()) {
    SetLastError(CodeOr(call, ERROR_NOT_ENOUGH_QUOTA));
    return FALSE;
  }
  State().notifications.push_back({window, message, wparam, lparam});
  JournalLine(std::string(function) + "(id=" + std::to_string(message) +
              " wparam=" + std::to_string(wparam) + " lparam=" + std::to_string(lparam) + ")");
  if (State().clock.real()) return PostMessageA(window, message, wparam, lparam);
  if (window == nullptr || window == HWND_BROADCAST || IsWindow(window)) return TRUE;
  SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  return FALSE;
}

BOOL WINAPI FakePostMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return Post("PostMessageA", window, message, wparam, lparam);
}

constexpr char kUser32[] = "user32.dll";

std::vector<Entry> SimulatedEntries() {
  return {
      {kUser32, "CreateDialogParamA", Guard<FakeCreateDialogParamA>()},
      {kUser32, "CreateWindowExA", Guard<FakeCreateWindowExA>()},
      {kUser32, "CreateWindowExW", Guard<FakeCreateWindowExW>()},
      {kUser32, "DestroyWindow", Guard<FakeDestroyWindow>()},
      {kUser32, "RegisterClassA", Guard<FakeRegisterClassA>()},
      {kUser32, "RegisterClassExW", Guard<FakeRegisterClassExW>()},
      {kUser32, "UpdateLayeredWindow", Guard<FakeUpdateLayeredWindow>()},
      {kUser32, "GetCursorPos", Guard<FakeGetCursorPos>()},
      {kUser32, "SetCursorPos", Guard<FakeSetCursorPos>()},
      {kUser32, "PostMessageA", Guard<FakePostMessageA>()},
  };
}

// Real work, counted.
std::vector<Entry> RealEntries() {
  return {
      CountedEntry<ShowWindow>(kUser32, "ShowWindow"),
      CountedEntry<SetWindowPos>(kUser32, "SetWindowPos"),
      CountedEntry<BringWindowToTop>(kUser32, "BringWindowToTop"),
      CountedEntry<GetParent>(kUser32, "GetParent"),
      CountedEntry<IsWindow>(kUser32, "IsWindow"),
      CountedEntry<IsWindowVisible>(kUser32, "IsWindowVisible"),
      CountedEntry<IsIconic>(kUser32, "IsIconic"),
      CountedEntry<GetClientRect>(kUser32, "GetClientRect"),
      CountedEntry<GetWindowRect>(kUser32, "GetWindowRect"),
      CountedEntry<InvalidateRect>(kUser32, "InvalidateRect"),
      CountedEntry<UpdateWindow>(kUser32, "UpdateWindow"),
      CountedEntry<MapWindowPoints>(kUser32, "MapWindowPoints"),
      CountedEntry<GetWindowLongA>(kUser32, "GetWindowLongA"),
      CountedEntry<SetWindowLongA>(kUser32, "SetWindowLongA"),
      CountedEntry<GetWindowLongPtrA>(kUser32, "GetWindowLongPtrA"),
      CountedEntry<SetWindowLongPtrA>(kUser32, "SetWindowLongPtrA"),
      CountedEntry<MonitorFromWindow>(kUser32, "MonitorFromWindow"),
      CountedEntry<GetMonitorInfoA>(kUser32, "GetMonitorInfoA"),
      CountedEntry<DefWindowProcA>(kUser32, "DefWindowProcA"),
      CountedEntry<DefWindowProcW>(kUser32, "DefWindowProcW"),
      CountedEntry<TranslateMessage>(kUser32, "TranslateMessage"),
      CountedEntry<PostQuitMessage>(kUser32, "PostQuitMessage"),
      CountedEntry<InitCommonControls>("comctl32.dll", "InitCommonControls"),
  };
}

}  // namespace

const std::vector<Entry>& WindowFace() {
  static const std::vector<Entry> entries = [] {
    std::vector<Entry> all = SimulatedEntries();
    const std::vector<Entry> real = RealEntries();
    all.insert(all.end(), real.begin(), real.end());
    return all;
  }();
  return entries;
}

}  // namespace sim
