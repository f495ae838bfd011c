// LoadLibrary, GetModuleHandle, GetProcAddress, FreeLibrary. A library is one of three: invented (a
// vendor's, in the model only), a system library (really loaded), or absent. GetProcAddress answers
// from the same tables as the static imports, so that a function bound at run time is the same
// simulated one.
#include <string>

#include "sim/FaceTable.h"
#include "sim/Failure.h"
#include "sim/MachineState.h"
#include "sim/Patcher.h"
#include "sim/RealImports.h"
#include "sim/faces/AmdDriver.h"

namespace sim {
namespace {

constexpr char kModule[] = "module";

Machine::State& State() { return Machine::Current().state(); }

// "C:\\x\\NvApi64" to "nvapi64.dll": the name under which a module is known.
std::string BaseName(const std::string& path) {
  std::string name = LowerCase(path.substr(path.find_last_of("\\/") + 1));
  if (name.find('.') == std::string::npos) name += ".dll";
  return name;
}

// Libraries may be loaded on several threads at a time.
Mutex& InventedLock() {
  static Mutex mutex;
  return mutex;
}

InventedModule* FindInvented(const std::string& path) {
  const Lock lock(InventedLock());
  BringAmdLibraries(State());
  auto& invented = State().invented;
  auto found = invented.find(LowerCase(path));
  if (found == invented.end()) found = invented.find(BaseName(path));
  if (found == invented.end()) return nullptr;
  InventedModule& module = found->second;
  const bool is_there = module.available == nullptr || module.available(State().model);
  return is_there || module.references > 0 ? &module : nullptr;
}

InventedModule* InventedFromHandle(HMODULE module) {
  const Lock lock(InventedLock());
  for (auto& [name, invented] : State().invented) {
    if (reinterpret_cast<HMODULE>(&invented) == module) return &invented;
  }
  return nullptr;
}

HMODULE Refuse(DWORD error) {
  SetLastError(error);
  return nullptr;
}

HMODULE LoadReal(const std::string& base_name) {
  const HMODULE module = LoadLibraryW(Widen(base_name).c_str());
  if (module != nullptr) LedgerTake(kModule, module);
  return module;
}

HMODULE Load(const char* function, const std::string& path) {
  Call call(function);
  if (call.Fails()) return Refuse(call.FaultCode() != 0 ? call.FaultCode() : ERROR_MOD_NOT_FOUND);
  call.Read(0, "%s", path.c_str());
  if (InventedModule* invented = FindInvented(path)) {
    bool first = false;
    {
      const Lock lock(InventedLock());
      first = invented->references++ == 0;
    }
    // Without the lock: a slow library waits in there.
    if (first && invented->on_load != nullptr) invented->on_load();
    LedgerTake(kModule, invented);
    return reinterpret_cast<HMODULE>(invented);
  }
  const std::string base_name = BaseName(path);
  return IsSystemModule(base_name) ? LoadReal(base_name) : Refuse(ERROR_MOD_NOT_FOUND);
}

HMODULE WINAPI FakeLoadLibraryA(LPCSTR name) {
  return name == nullptr ? Refuse(ERROR_INVALID_PARAMETER) : Load("LoadLibraryA", name);
}

HMODULE WINAPI FakeLoadLibraryW(LPCWSTR name) {
  return name == nullptr ? Refuse(ERROR_INVALID_PARAMETER) : Load("LoadLibraryW", Narrow(name));
}

HMODULE WINAPI FakeLoadLibraryExA(LPCSTR name, HANDLE, DWORD) {
  return name == nullptr ? Refuse(ERROR_INVALID_PARAMETER) : Load("LoadLibraryExA", name);
}

HMODULE WINAPI FakeLoadLibraryExW(LPCWSTR name, HANDLE, DWORD) {
  return name == nullptr ? Refuse(ERROR_INVALID_PARAMETER) : Load("LoadLibraryExW", Narrow(name));
}

// Without a name: the host's executable, which is really this process's.
HMODULE Find(const char* function, const std::string& path) {
  Call call(function);
  if (call.Fails()) return Refuse(call.FaultCode() != 0 ? call.FaultCode() : ERROR_MOD_NOT_FOUND);
  if (path.empty()) return GetModuleHandleW(nullptr);
  if (InventedModule* invented = FindInvented(path)) {
    if (invented->references == 0) return Refuse(ERROR_MOD_NOT_FOUND);
    return reinterpret_cast<HMODULE>(invented);
  }
  const std::string base_name = BaseName(path);
  if (!IsSystemModule(base_name)) return Refuse(ERROR_MOD_NOT_FOUND);
  return GetModuleHandleW(Widen(base_name).c_str());
}

HMODULE WINAPI FakeGetModuleHandleA(LPCSTR name) {
  return Find("GetModuleHandleA", name == nullptr ? "" : name);
}

HMODULE WINAPI FakeGetModuleHandleW(LPCWSTR name) {
  return Find("GetModuleHandleW", name == nullptr ? "" : Narrow(name));
}

// By address the answer is the real one: the library asks for its own module, to hold it or to read
// its resources.
BOOL FindEx(const char* function, DWORD flags, const wchar_t* address, const std::string& path,
            HMODULE* module) {
  if (module == nullptr) return Refuse(ERROR_INVALID_PARAMETER) != nullptr;
  const bool counted = (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT) == 0;
  if ((flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0) {
    Call call(function);
    *module = nullptr;
    if (call.Fails()) return Refuse(ERROR_MOD_NOT_FOUND) != nullptr;
    if (!GetModuleHandleExW(flags, address, module)) return FALSE;
    if (counted) LedgerTake(kModule, *module);
    return TRUE;
  }
  *module = Find(function, path);
  if (*module == nullptr) return FALSE;
  if (!counted) return TRUE;
  if (InventedModule* invented = InventedFromHandle(*module)) {
    ++invented->references;
  } else {
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const wchar_t*>(*module), module);
  }
  LedgerTake(kModule, *module);
  return TRUE;
}

BOOL WINAPI FakeGetModuleHandleExA(DWORD flags, LPCSTR name, HMODULE* module) {
  const bool by_name = (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) == 0 && name != nullptr;
  return FindEx("GetModuleHandleExA", flags, reinterpret_cast<LPCWSTR>(name), by_name ? name : "",
                module);
}

BOOL WINAPI FakeGetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module) {
  const bool by_name = (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) == 0 && name != nullptr;
  return FindEx("GetModuleHandleExW", flags, name, by_name ? Narrow(name) : "", module);
}

FARPROC NotThere() {
  SetLastError(ERROR_PROC_NOT_FOUND);
  return nullptr;
}

FARPROC AsProc(void* function) { return reinterpret_cast<FARPROC>(function); }

FARPROC FromInvented(const InventedModule& module, const std::string& name) {
  for (const Entry& entry : module.entries) {
    if (name == entry.name) return IsAvailable(entry) ? AsProc(entry.function) : NotThere();
  }
  return NotThere();
}

FARPROC FromReal(HMODULE module, const std::string& name) {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(module, path, MAX_PATH);
  const std::string base_name = BaseName(Narrow(path));
  const Entry* entry = FindEntry(base_name, name);
  const FARPROC real = GetProcAddress(module, name.c_str());
  if (entry == nullptr && real != nullptr) entry = FindEntryByName(name);
  if (entry != nullptr) return IsAvailable(*entry) ? AsProc(entry->function) : NotThere();
  if (real == nullptr || IsRealImport(base_name, name)) return real;
  ReportFailure("GetProcAddress asked for " + base_name + "!" + name +
                ", which is neither simulated nor listed as real");
  return NotThere();
}

FARPROC WINAPI FakeGetProcAddress(HMODULE module, LPCSTR name) {
  const uint64_t number = reinterpret_cast<uint64_t>(name);
  Call call("GetProcAddress");
  if (call.Fails()) return NotThere();
  const std::string text = number > 0xFFFF ? name : "#" + std::to_string(number);
  const InventedModule* invented = InventedFromHandle(module);
  call.Read(0, "%s", text.c_str());
  return invented != nullptr ? FromInvented(*invented, text) : FromReal(module, text);
}

BOOL WINAPI FakeFreeLibrary(HMODULE module) {
  Call call("FreeLibrary");
  if (call.Fails()) {
    SetLastError(call.FaultCode() != 0 ? call.FaultCode() : ERROR_INVALID_HANDLE);
    return FALSE;
  }
  LedgerGive(kModule, module);
  InventedModule* invented = InventedFromHandle(module);
  if (invented == nullptr) return FreeLibrary(module);
  bool last = false;
  {
    const Lock lock(InventedLock());
    last = invented->references > 0 && --invented->references == 0;
  }
  if (last && invented->on_unload != nullptr) invented->on_unload();
  return TRUE;
}

void WINAPI FakeFreeLibraryAndExitThread(HMODULE module, DWORD code) {
  Call call("FreeLibraryAndExitThread");
  LedgerGive(kModule, module);
  State().threads.LeaveWithModule();
  FreeLibraryAndExitThread(module, code);
}

}  // namespace

const std::vector<Entry>& LoaderFace() {
  static const std::vector<Entry> entries = {
      {"kernel32.dll", "LoadLibraryA", Guard<FakeLoadLibraryA>()},
      {"kernel32.dll", "LoadLibraryW", Guard<FakeLoadLibraryW>()},
      {"kernel32.dll", "LoadLibraryExA", Guard<FakeLoadLibraryExA>()},
      {"kernel32.dll", "LoadLibraryExW", Guard<FakeLoadLibraryExW>()},
      {"kernel32.dll", "GetModuleHandleA", Guard<FakeGetModuleHandleA>()},
      {"kernel32.dll", "GetModuleHandleW", Guard<FakeGetModuleHandleW>()},
      {"kernel32.dll", "GetModuleHandleExA", Guard<FakeGetModuleHandleExA>()},
      {"kernel32.dll", "GetModuleHandleExW", Guard<FakeGetModuleHandleExW>()},
      {"kernel32.dll", "GetProcAddress", Guard<FakeGetProcAddress>()},
      {"kernel32.dll", "FreeLibrary", Guard<FakeFreeLibrary>()},
      {"kernel32.dll", "FreeLibraryAndExitThread", Erase(FakeFreeLibraryAndExitThread)},
  };
  return entries;
}

}  // namespace sim
