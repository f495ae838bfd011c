// The keyboard and the window in front, as whoever simulates key presses needs them. No press
// reaches the machine that the test runs on, and no driver of the model listens to one.
#include <cstdint>
#include <string>

#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

WindowBook& Book() { return Machine::Current().state().windows; }

std::string TellWindow(HWND window) {
  if (window == GetDesktopWindow()) return "desktop";
  char text[32];
  snprintf(text, sizeof text, "0x%llx",
           static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(window)));
  return text;
}

void WINAPI FakeKeybdEvent(BYTE key, BYTE scan, DWORD flags, ULONG_PTR) {
  const Call call("keybd_event");
  JournalLine("keybd_event(key=" + std::to_string(key) + " scan=" + std::to_string(scan) +
              " flags=" + std::to_string(flags) + ")");
}

HWND WINAPI FakeGetForegroundWindow() {
  const Call call("GetForegroundWindow");
  return call.Fails() ? nullptr : Book().foreground;
}

BOOL WINAPI FakeSetForegroundWindow(HWND window) {
  Call call("SetForegroundWindow");
  const bool refused = call.Fails() || window == nullptr;
  if (refused) SetLastError(FaultOr(call, ERROR_INVALID_WINDOW_HANDLE));
  if (!refused) Book().foreground = window;
  return static_cast<BOOL>(call.Changed(refused ? FALSE : TRUE, "%s", TellWindow(window).c_str()));
}

HWND WINAPI FakeGetDesktopWindow() {
  const Call call("GetDesktopWindow");
  return GetDesktopWindow();
}

}  // namespace

const std::vector<Entry>& KeyboardFace() {
  static const std::vector<Entry> entries = {
      {"user32.dll", "keybd_event", Guard<FakeKeybdEvent>()},
      {"user32.dll", "GetForegroundWindow", Guard<FakeGetForegroundWindow>()},
      {"user32.dll", "SetForegroundWindow", Guard<FakeSetForegroundWindow>()},
      {"user32.dll", "GetDesktopWindow", Guard<FakeGetDesktopWindow>()},
  };
  return entries;
}

}  // namespace sim
