// The windows of other programs. Those of the model have invented handles; the library's own are
// the real ones. Nothing of the desktop that the test runs on shows through.
#include <algorithm>
#include <iterator>
#include <optional>

#include "sim/Failure.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

// An invented handle: a mark that no real handle has in its upper half, then the window's number
// and, from 1 up, the child's.
constexpr uintptr_t kMark = 0x7A000000;
constexpr uintptr_t kMarkMask = 0xFF000000;
constexpr unsigned kWindowShift = 10;
constexpr uintptr_t kChildMask = (uintptr_t{1} << kWindowShift) - 1;

HWND HandleOf(size_t window, size_t child = 0) {
  return reinterpret_cast<HWND>(kMark | (window << kWindowShift) | child);
}

/// A window of another program: `child` counts from 1, 0 is the top-level window itself.
struct Place {
  const OtherWindow* window;
  size_t number;
  size_t child;
  const std::string& ClassName() const {
    return child == 0 ? window->class_name : window->child_classes[child - 1];
  }
};

bool IsInvented(HWND handle) { return (reinterpret_cast<uintptr_t>(handle) & kMarkMask) == kMark; }

/// Nothing for a handle whose window is not, or no longer, in the model.
std::optional<Place> Find(HWND handle) {
  const uintptr_t value = reinterpret_cast<uintptr_t>(handle) & ~kMarkMask;
  const std::vector<OtherWindow>& windows = CurrentModel().other_windows;
  const size_t number = value >> kWindowShift;
  const size_t child = value & kChildMask;
  if (number >= windows.size() || child > windows[number].child_classes.size()) return {};
  return Place{&windows[number], number, child};
}

template <typename Result>
Result Refuse(const Call& call, uint32_t documented) {
  SetLastError(FaultOr(call, documented));
  return Result();
}

bool Matches(LPCWSTR wanted, const std::string& text) {
  return wanted == nullptr || Lower(Narrow(wanted)) == Lower(text);
}

HWND WINAPI FakeFindWindowW(LPCWSTR class_name, LPCWSTR title) {
  Call call("FindWindowW");
  if (call.Fails()) return Refuse<HWND>(call, ERROR_FILE_NOT_FOUND);
  const std::vector<OtherWindow>& windows = CurrentModel().other_windows;
  const auto found = std::find_if(windows.begin(), windows.end(), [&](const OtherWindow& window) {
    return Matches(class_name, window.class_name) && Matches(title, window.title);
  });
  if (found == windows.end()) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  LeaveDirtyLastError();
  return HandleOf(static_cast<size_t>(std::distance(windows.begin(), found)));
}

// The library's own windows stand in front of those of other programs.
std::vector<HWND> TopLevelWindows() {
  std::vector<HWND> handles;
  for (const HWND own : Machine::Current().state().windows.alive) {
    if (IsWindow(own) && GetAncestor(own, GA_PARENT) == GetDesktopWindow()) handles.push_back(own);
  }
  for (size_t i = 0; i < CurrentModel().other_windows.size(); ++i) handles.push_back(HandleOf(i));
  return handles;
}

BOOL Enumerate(const std::vector<HWND>& handles, WNDENUMPROC procedure, LPARAM parameter) {
  for (const HWND handle : handles) {
    if (!procedure(handle, parameter)) return FALSE;
  }
  return TRUE;
}

BOOL WINAPI FakeEnumWindows(WNDENUMPROC procedure, LPARAM parameter) {
  Call call("EnumWindows");
  if (call.Fails()) return Refuse<BOOL>(call, ERROR_ACCESS_DENIED);
  if (procedure == nullptr) return Refuse<BOOL>(call, ERROR_INVALID_PARAMETER);
  return Enumerate(TopLevelWindows(), procedure, parameter);
}

BOOL WINAPI FakeEnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM parameter) {
  Call call("EnumChildWindows");
  if (call.Fails()) return Refuse<BOOL>(call, ERROR_INVALID_WINDOW_HANDLE);
  if (procedure == nullptr) return Refuse<BOOL>(call, ERROR_INVALID_PARAMETER);
  if (parent == nullptr) return Enumerate(TopLevelWindows(), procedure, parameter);
  if (!IsInvented(parent)) return EnumChildWindows(parent, procedure, parameter);
  const std::optional<Place> place = Find(parent);
  if (!place) return Refuse<BOOL>(call, ERROR_INVALID_WINDOW_HANDLE);
  std::vector<HWND> children;
  if (place->child == 0) {
    for (size_t i = 1; i <= place->window->child_classes.size(); ++i) {
      children.push_back(HandleOf(place->number, i));
    }
  }
  // Documented as meaning nothing.
  Enumerate(children, procedure, parameter);
  LeaveDirtyLastError();
  return FALSE;
}

/// The rule of both text functions: as much as there is room for, and how much that is.
int Give(const std::string& text, LPWSTR to, int room) {
  if (to == nullptr || room < 1) return 0;
  CopyText(to, static_cast<size_t>(room), Widen(text));
  LeaveDirtyLastError();
  return std::min(static_cast<int>(Widen(text).size()), room - 1);
}

int WINAPI FakeGetClassNameW(HWND window, LPWSTR name, int room) {
  Call call("GetClassNameW");
  if (call.Fails()) return Refuse<int>(call, ERROR_INVALID_WINDOW_HANDLE);
  if (!IsInvented(window)) return GetClassNameW(window, name, room);
  const std::optional<Place> place = Find(window);
  if (!place) return Refuse<int>(call, ERROR_INVALID_WINDOW_HANDLE);
  return Give(place->ClassName(), name, room);
}

int WINAPI FakeGetWindowTextW(HWND window, LPWSTR text, int room) {
  Call call("GetWindowTextW");
  if (call.Fails()) return Refuse<int>(call, ERROR_INVALID_WINDOW_HANDLE);
  if (!IsInvented(window)) return GetWindowTextW(window, text, room);
  const std::optional<Place> place = Find(window);
  if (!place) return Refuse<int>(call, ERROR_INVALID_WINDOW_HANDLE);
  // The text of a control in another process cannot be read.
  return Give(place->child == 0 ? place->window->title : std::string(), text, room);
}

HWND Related(const Place& place, UINT relation) {
  switch (relation) {
    case GW_OWNER:
      return nullptr;
    case GW_CHILD:
      return place.child == 0 && !place.window->child_classes.empty() ? HandleOf(place.number, 1)
                                                                      : nullptr;
    default:
      ReportFailure("GetWindow: this relation is not simulated for another program's window: " +
                    std::to_string(relation));
      return nullptr;
  }
}

HWND WINAPI FakeGetWindow(HWND window, UINT relation) {
  Call call("GetWindow");
  if (call.Fails()) return Refuse<HWND>(call, ERROR_INVALID_WINDOW_HANDLE);
  if (!IsInvented(window)) return GetWindow(window, relation);
  const std::optional<Place> place = Find(window);
  if (!place) return Refuse<HWND>(call, ERROR_INVALID_WINDOW_HANDLE);
  LeaveDirtyLastError();
  return Related(*place, relation);
}

}  // namespace

const std::vector<Entry>& PlayersFace() {
  static const std::vector<Entry> entries = {
      {"user32.dll", "FindWindowW", Guard<FakeFindWindowW>()},
      {"user32.dll", "EnumWindows", Guard<FakeEnumWindows>()},
      {"user32.dll", "EnumChildWindows", Guard<FakeEnumChildWindows>()},
      {"user32.dll", "GetClassNameW", Guard<FakeGetClassNameW>()},
      {"user32.dll", "GetWindowTextW", Guard<FakeGetWindowTextW>()},
      {"user32.dll", "GetWindow", Guard<FakeGetWindow>()},
  };
  return entries;
}

}  // namespace sim
