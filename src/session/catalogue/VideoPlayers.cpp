// Whether a video player shows a picture now. What is looked for is the window that a player draws
// its video into, which is also there while it pauses, and never while it plays sound alone.
#include "session/catalogue/SwitchPreconditions.h"

#include <cstring>
#include <cwchar>

#include "Common/Owners.h"
#include "Common/Win.h"

// Behind Win.h, whose types it needs.
#include <tlhelp32.h>

namespace {

constexpr int kTextRoom = 256;  // characters, the end of the text included

using WindowTextFunction = int(WINAPI*)(HWND, LPWSTR, int);

/// Compares a text of a window without regard to case; a window without one never matches.
bool HasText(HWND window, WindowTextFunction read, const wchar_t* wanted) {
  wchar_t text[kTextRoom] = {};
  if (read(window, text, kTextRoom) < 1) return false;
  return _wcsicmp(text, wanted) == 0;
}

struct ChildSearch {
  const wchar_t* class_name;
  bool found;
};

BOOL CALLBACK LookAtChild(HWND window, LPARAM parameter) {
  auto* const search = reinterpret_cast<ChildSearch*>(parameter);
  search->found = HasText(window, &GetClassNameW, search->class_name);
  return search->found ? FALSE : TRUE;
}

bool HasChildOfClass(HWND window, const wchar_t* class_name) {
  ChildSearch search = {class_name, false};
  EnumChildWindows(window, &LookAtChild, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// Deliberate: a window of that title without any child does not count, and the search goes on.
BOOL CALLBACK LookAtTopLevel(HWND window, LPARAM parameter) {
  if (!HasText(window, &GetWindowTextW, L"CyberLink PowerDVD8")) return TRUE;
  if (GetWindow(window, GW_CHILD) == nullptr) return TRUE;
  *reinterpret_cast<HWND*>(parameter) = window;
  return FALSE;
}

bool IsPowerDVDRunning() {
  const HANDLE handle = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (handle == nullptr) return false;
  // Deliberate: a snapshot that failed has no processes, and the switch goes ahead.
  const UniqueFile snapshot(handle);
  PROCESSENTRY32 entry = {};
  static_assert(sizeof(entry) == 304, "the narrow record");
  entry.dwSize = sizeof(entry);
  BOOL more = Process32First(snapshot.get(), &entry);
  while (more != FALSE) {
    if (_stricmp(entry.szExeFile, "PowerDVD8.exe") == 0) return true;
    more = Process32Next(snapshot.get(), &entry);
  }
  return false;
}

}  // namespace

bool IsWindowsMediaPlayerPlaying() {
  const HWND player = FindWindowW(L"WMPlayerApp", nullptr);
  return player != nullptr && HasChildOfClass(player, L"EVRVideoHandler");
}

// Deliberate: one process of that name is enough to look at the windows, and whose they are is not
// asked.
bool IsPowerDVDPlaying() {
  if (!IsPowerDVDRunning()) return false;
  HWND player = nullptr;
  EnumWindows(&LookAtTopLevel, reinterpret_cast<LPARAM>(&player));
  return player != nullptr && HasChildOfClass(player, L"VideoRenderer");
}
