#include "Common/MultiMonitor/DisplayLink/AddOnApi.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>
#include <string>

#include "Common/MultiMonitor/DisplayLink/AddOnApiHooks.h"
#include "Common/Owners.h"
#include "Common/Win.h"

// The shell's registry functions need what Common/Win.h brings.
#include <shlwapi.h>

namespace displaylink {

std::atomic<int32_t> ApiDllLoadState{ApiLoadPending};
ILoadObserver* g_loadObserver = nullptr;

namespace {

constexpr char kLibrary[] = "AddOnApi64.dll";
constexpr char kLibraryKey[] = "SOFTWARE\\DisplayLink\\Core";
constexpr char kLibraryValue[] = "AddOnApi64FileLocation";
constexpr DWORD kPathCapacity = 260;
constexpr uint32_t kRetryPeriod = 10000;  // milliseconds

// The functions of the library, in the order in which they are bound. Each knows its place.
enum Import : size_t {
  kSubscribePids,
  kUnSubscribePids,
  kRegisterNotification,
  kUnRegisterNotification,
  kPumpMessages,
  kGetExecutionState,
  kGetNivoID,
  kGetVidPnTargetID,
};
constexpr const char* kImports[] = {
    "dlSubscribePids",
    "dlUnSubscribePids",
    "dlRegisterNivoDisplayNotification",
    "dlUnRegisterNivoDisplayNotification",
    "dlPumpMessages",
    "dlGetExecutionState",
    "dlGetNivoID",
    "dlGetVidPnTargetID",
};

constexpr const char* kStateNames[] = {"ApiLoadPending", "ApiLoaded", "UnLoadPending",
                                       "DummyApiLoaded"};

// Null where a function is not bound: to nothing yet, or to a library that lacks it.
std::atomic<void*> g_bindings[std::size(kImports)];
UniqueModule g_realModule;
HMODULE g_dummyModule = nullptr;  // the process's own, not counted
uint32_t g_dummyLoadTime = 0;     // by clock(), in milliseconds

// --- The stand-ins. On this platform the caller clears the stack, so that a function may leave
// arguments untaken.

int32_t AnswerNothing() { return 0; }
int32_t Refuse() { return kNotBound; }
int32_t RefuseLater(uint32_t milliseconds, uint64_t /*reserved*/) {
  Sleep(milliseconds);
  return kNotBound;
}

template <typename Function>
void* Erase(Function* function) {
  return reinterpret_cast<void*>(function);
}

void* StandInFor(const char* name) {
  if (std::strcmp(name, "dlGetNivoDisplay") == 0) return Erase(AnswerNothing);
  if (std::strcmp(name, kImports[kPumpMessages]) == 0) return Erase(RefuseLater);
  return Erase(Refuse);
}

// A function that is not bound is refused as by its stand-in, the wait included.
template <typename... Parameters, typename... Arguments>
int32_t Call(int32_t (* /*type*/)(Parameters...), Import import, Arguments... arguments) {
  void* entry = g_bindings[import];
  if (entry == nullptr) entry = StandInFor(kImports[import]);
  return reinterpret_cast<int32_t (*)(Parameters...)>(entry)(arguments...);
}

// --- States.

std::string NameOf(int32_t state) {
  const bool named = state >= 0 && state < static_cast<int32_t>(std::size(kStateNames));
  return named ? kStateNames[state] : std::to_string(state);
}

// Deliberate: on the process's standard output, not in the log, with an empty line before it.
void WriteTransition(int32_t from, int32_t to) {
  const std::string line = "\nApiDllLoadState: " + NameOf(from) + " -> " + NameOf(to) + "\n";
  static_cast<void>(std::fwrite(line.data(), 1, line.size(), stdout));
  static_cast<void>(std::fflush(stdout));
}

// clock() counts milliseconds here, and may run over.
uint32_t ClockNow() { return static_cast<uint32_t>(std::clock()); }

// "" when the software is not installed; nothing is loaded from that.
std::string RealLibraryPath() {
  char path[kPathCapacity] = {};
  DWORD size = sizeof(path);
  SHGetValueA(HKEY_LOCAL_MACHINE, kLibraryKey, kLibraryValue, nullptr, path, &size);
  path[kPathCapacity - 1] = '\0';  // a value that is no text has no end of its own
  return path;
}

}  // namespace

void EnterLoadState(int32_t state) {
  if (ApiDllLoadState == state) return;
  WriteTransition(ApiDllLoadState, state);
  ApiDllLoadState = state;
  if (state == DummyApiLoaded) g_dummyLoadTime = ClockNow();
  if (state == ApiLoaded && g_loadObserver != nullptr) g_loadObserver->OnLoaded();
}

// --- Binding.

HMODULE ModuleFor(const char* library) {
  if (std::strcmp(library, kLibrary) != 0) return nullptr;
  // Deliberate: in UnLoadPending the real library is not even tried; the retry finds it.
  if (ApiDllLoadState == ApiLoadPending || ApiDllLoadState == ApiLoaded) {
    UniqueModule module(LoadLibraryA(RealLibraryPath().c_str()));
    if (module.IsValid()) {
      EnterLoadState(ApiLoaded);
      return module.Release();
    }
  }
  g_dummyModule = GetModuleHandleA(nullptr);
  EnterLoadState(DummyApiLoaded);
  return g_dummyModule;
}

void* FunctionFor(HMODULE module, const char* name) {
  if (module == nullptr) return nullptr;
  if (module == g_dummyModule) return StandInFor(name);
  return Erase(GetProcAddress(module, name));
}

void BindAll() {
  const HMODULE module = ModuleFor(kLibrary);
  for (size_t i = 0; i < std::size(kImports); ++i) {
    g_bindings[i] = FunctionFor(module, kImports[i]);
  }
  // After the bindings have changed: a module that was held until now is behind none of them.
  g_realModule.Reset(module != g_dummyModule ? module : nullptr);
}

void Unbind() {
  for (std::atomic<void*>& binding : g_bindings) binding = nullptr;
  g_realModule.Reset();
}

void RetryRealLibrary() {
  if (ClockNow() - g_dummyLoadTime < kRetryPeriod) return;
  Unbind();
  // Not by EnterLoadState: the transition alone belongs to this step.
  if (ApiDllLoadState != ApiLoadPending) {
    WriteTransition(ApiDllLoadState, ApiLoadPending);
    ApiDllLoadState = ApiLoadPending;
  }
  BindAll();
}

// --- The functions.

int32_t dlSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
  return Call(dlSubscribePids, kSubscribePids, pids, count, reserved);
}

int32_t dlUnSubscribePids(const uint32_t* pids, int32_t count, uint64_t reserved) {
  return Call(dlUnSubscribePids, kUnSubscribePids, pids, count, reserved);
}

int32_t dlRegisterNivoDisplayNotification(NivoNotification callback, void* context,
                                          uint64_t reserved) {
  return Call(dlRegisterNivoDisplayNotification, kRegisterNotification, callback, context,
              reserved);
}

int32_t dlUnRegisterNivoDisplayNotification(NivoNotification callback, void* context,
                                            uint64_t reserved) {
  return Call(dlUnRegisterNivoDisplayNotification, kUnRegisterNotification, callback, context,
              reserved);
}

int32_t dlPumpMessages(uint32_t milliseconds, uint64_t reserved) {
  return Call(dlPumpMessages, kPumpMessages, milliseconds, reserved);
}

int32_t dlGetExecutionState(uint64_t handle, uint32_t kind, uint32_t* state) {
  return Call(dlGetExecutionState, kGetExecutionState, handle, kind, state);
}

int32_t dlGetNivoID(uint64_t handle, NivoId* id) {
  return Call(dlGetNivoID, kGetNivoID, handle, id);
}

int32_t dlGetVidPnTargetID(uint64_t handle, uint32_t kind, VidPnTarget* record) {
  return Call(dlGetVidPnTargetID, kGetVidPnTargetID, handle, kind, record);
}

}  // namespace displaylink
