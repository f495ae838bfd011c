// A tiny DLL for the simulator's own tests: its DllMain and its exports call a simulated function,
// a real one and one that nobody listed. Statically linked as the library under test is, so that it
// has the same imports from the C run-time.
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "Common/Win.h"

namespace {

// What DllMain saw: proves that the import table was patched before it ran.
ULONGLONG g_ticks_at_load = 0;
uint32_t g_counter = 0;  // process-wide state that must be fresh after each load

}  // namespace

extern "C" {

__declspec(dllexport) ULONGLONG Sample_TicksAtLoad() { return g_ticks_at_load; }

__declspec(dllexport) uint32_t Sample_Count() { return ++g_counter; }

__declspec(dllexport) void Sample_Sleep(DWORD milliseconds) { Sleep(milliseconds); }

// An import that is neither simulated nor listed as real.
__declspec(dllexport) BOOL Sample_CallUnlisted() { return SetComputerNameA("nobody"); }

__declspec(dllexport) HMODULE Sample_LoadLibrary(const char* name) { return LoadLibraryA(name); }

__declspec(dllexport) BOOL Sample_FreeLibrary(HMODULE module) { return FreeLibrary(module); }

__declspec(dllexport) void* Sample_GetProcAddress(HMODULE module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(module, name));
}

__declspec(dllexport) UINT_PTR
    Sample_SetTimer(HWND window, UINT_PTR id, UINT period, TIMERPROC procedure) {
  return SetTimer(window, id, period, procedure);
}

// Streams, exceptions and containers, so that their imports are here too.
__declspec(dllexport) uint32_t Sample_UseRunTime() {
  std::map<std::string, int> words;
  std::istringstream text("one two three");
  for (std::string word; text >> word;) words[word] = static_cast<int>(words.size());
  try {
    throw std::runtime_error("thrown in the sample");
  } catch (const std::exception& error) {
    return static_cast<uint32_t>(words.size() + std::string(error.what()).size());
  }
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    OutputDebugStringA("SimSample.dll is attached\n");  // a real one: seen even with real imports
    g_ticks_at_load = GetTickCount64();
  }
  return TRUE;
}

}  // extern "C"
