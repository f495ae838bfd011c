// The library is attached to its host, and detached from it.
#include "Common/AtExitManager.h"
#include "Common/LogSetup.h"
#include "Common/ProcessState.h"
#include "Common/Win.h"

namespace {

AtExitManager* g_atExitManager = nullptr;

void Detach() {
  delete g_atExitManager;
  g_atExitManager = nullptr;
}

// Under the loader lock: nothing but what must be there before the first export can be called.
bool Attach(HINSTANCE instance) {
  g_moduleInstance = instance;
  try {
    g_atExitManager = new AtExitManager();
    SetUpLogging();
    return true;
  } catch (...) {
    Detach();
    return false;
  }
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) return Attach(instance) ? TRUE : FALSE;
  if (reason == DLL_PROCESS_DETACH) Detach();
  return TRUE;
}
