// What the DLL is told of the system and of its host: version, edition, environment, command line,
// folders, processes, sound devices.
#include <algorithm>
#include <map>

#include "sim/faces/FaceHelp.h"

// After windows.h.
#include <shlobj.h>
#include <tlhelp32.h>

namespace sim {
namespace {

constexpr char kSnapshotKind[] = "process snapshot";

HostProcess& Host() { return Machine::Current().state().host; }

BOOL Refuse(const Call& call, DWORD error) {
  SetLastError(call.Fails() ? FaultOr(call, error) : error);
  return FALSE;
}

// --- Version and edition.

template <typename Record>
void FillVersion(const WindowsVersion& windows, Record* record) {
  record->dwMajorVersion = windows.major;
  record->dwMinorVersion = windows.minor;
  record->dwBuildNumber = windows.build;
  record->dwPlatformId = VER_PLATFORM_WIN32_NT;
}

template <typename Record>
void FillExtendedVersion(const WindowsVersion& windows, Record* record) {
  const std::string& pack = windows.service_pack;
  const bool numbered = !pack.empty() && pack.back() >= '0' && pack.back() <= '9';
  record->wServicePackMajor = static_cast<WORD>(numbered ? pack.back() - '0' : 0);
  record->wServicePackMinor = 0;
  record->wSuiteMask = VER_SUITE_SINGLEUSERTS;
  record->wProductType = windows.product_type;
  record->wReserved = 0;
}

BOOL WINAPI FakeGetVersionExA(LPOSVERSIONINFOA record) {
  Call call("GetVersionExA");
  if (call.Fails() || record == nullptr) return Refuse(call, ERROR_INVALID_PARAMETER);
  const DWORD size = record->dwOSVersionInfoSize;
  if (size != sizeof(OSVERSIONINFOA) && size != sizeof(OSVERSIONINFOEXA)) {
    return Refuse(call, ERROR_INSUFFICIENT_BUFFER);
  }
  const WindowsVersion& windows = CurrentModel().windows;
  FillVersion(windows, record);
  CopyText(record->szCSDVersion, 128, windows.service_pack);
  if (size == sizeof(OSVERSIONINFOEXA)) {
    FillExtendedVersion(windows, reinterpret_cast<OSVERSIONINFOEXA*>(record));
  }
  return static_cast<BOOL>(call.Read(TRUE, "%lu", size));
}

BOOL WINAPI FakeGetVersionExW(LPOSVERSIONINFOW record) {
  Call call("GetVersionExW");
  if (call.Fails() || record == nullptr) return Refuse(call, ERROR_INVALID_PARAMETER);
  const DWORD size = record->dwOSVersionInfoSize;
  if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
    return Refuse(call, ERROR_INSUFFICIENT_BUFFER);
  }
  const WindowsVersion& windows = CurrentModel().windows;
  FillVersion(windows, record);
  CopyText(record->szCSDVersion, 128, Widen(windows.service_pack));
  if (size == sizeof(OSVERSIONINFOEXW)) {
    FillExtendedVersion(windows, reinterpret_cast<OSVERSIONINFOEXW*>(record));
  }
  return static_cast<BOOL>(call.Read(TRUE, "%lu", size));
}

BOOL WINAPI FakeGetProductInfo(DWORD major, DWORD minor, DWORD, DWORD, PDWORD product) {
  Call call("GetProductInfo");
  if (product == nullptr) return FALSE;
  *product = PRODUCT_UNDEFINED;
  if (call.Fails()) return Refuse(call, ERROR_INVALID_PARAMETER);
  if (major < 6) return FALSE;
  *product = CurrentModel().windows.product.value_or(PRODUCT_UNDEFINED);
  return static_cast<BOOL>(call.Read(TRUE, "%lu.%lu", major, minor));
}

bool HasProductInfo(const Model& model) { return model.windows.product.has_value(); }

// --- Environment.

// The variables that every process has, where the machine does not set them.
std::optional<std::wstring> UsualVariable(const std::string& name) {
  if (name == "appdata") return Host().appdata_folder;
  if (name == "temp" || name == "tmp") return Host().temp_folder;
  if (name == "programfiles") return L"C:\\Program Files";
  if (name == "programfiles(x86)") return L"C:\\Program Files (x86)";
  if (name == "systemroot" || name == "windir") return L"C:\\Windows";
  return std::nullopt;
}

std::optional<std::wstring> Variable(const std::string& name) {
  for (const auto& variable : Host().environment) {
    if (Lower(variable.first) == Lower(name)) return Widen(variable.second);
  }
  return UsualVariable(Lower(name));
}

// Windows sets this variable in the environment of 32-bit processes on 64-bit systems and in no
// other, so that it tells what kind of process the machine has for a host.
constexpr char kNativeArchitecture[] = "PROCESSOR_ARCHITEW6432";

BOOL WINAPI FakeIsWow64Process(HANDLE, PBOOL answer) {
  Call call("IsWow64Process");
  if (call.Fails() || answer == nullptr) return Refuse(call, ERROR_INVALID_PARAMETER);
  *answer = Variable(kNativeArchitecture) ? TRUE : FALSE;
  return static_cast<BOOL>(call.Read(TRUE, "%d", *answer));
}

std::wstring Expand(const std::wstring& text) {
  std::wstring expanded;
  size_t at = 0;
  while (at < text.size()) {
    const size_t end = text[at] == L'%' ? text.find(L'%', at + 1) : std::wstring::npos;
    const std::optional<std::wstring> value =
        end != std::wstring::npos ? Variable(Narrow(text.substr(at + 1, end - at - 1)))
                                  : std::nullopt;
    if (value) {
      expanded += *value;
      at = end + 1;
    } else {
      expanded += text[at++];
    }
  }
  return expanded;
}

DWORD WINAPI FakeGetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD room) {
  Call call("GetEnvironmentVariableA");
  const std::optional<std::wstring> value =
      call.Fails() || name == nullptr ? std::nullopt : Variable(name);
  if (!value) return static_cast<DWORD>(Refuse(call, ERROR_ENVVAR_NOT_FOUND));
  return static_cast<DWORD>(call.Read(GiveText(Narrow(*value), buffer, room), "%s", name));
}

DWORD WINAPI FakeGetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD room) {
  Call call("GetEnvironmentVariableW");
  const std::optional<std::wstring> value =
      call.Fails() || name == nullptr ? std::nullopt : Variable(Narrow(name));
  if (!value) return static_cast<DWORD>(Refuse(call, ERROR_ENVVAR_NOT_FOUND));
  return static_cast<DWORD>(call.Read(GiveText(*value, buffer, room), "%s", Narrow(name).c_str()));
}

// Both give the length with the terminating zero, whether the text fitted or not.
DWORD WINAPI FakeExpandEnvironmentStringsA(LPCSTR text, LPSTR buffer, DWORD room) {
  Call call("ExpandEnvironmentStringsA");
  if (call.Fails() || text == nullptr) {
    return static_cast<DWORD>(Refuse(call, ERROR_NOT_ENOUGH_MEMORY));
  }
  const std::string expanded = Narrow(Expand(Widen(text)));
  GiveText(expanded, buffer, room);
  return static_cast<DWORD>(call.Read(static_cast<DWORD>(expanded.size() + 1), "%s", text));
}

DWORD WINAPI FakeExpandEnvironmentStringsW(LPCWSTR text, LPWSTR buffer, DWORD room) {
  Call call("ExpandEnvironmentStringsW");
  if (call.Fails() || text == nullptr) {
    return static_cast<DWORD>(Refuse(call, ERROR_NOT_ENOUGH_MEMORY));
  }
  const std::wstring expanded = Expand(text);
  GiveText(expanded, buffer, room);
  return static_cast<DWORD>(
      call.Read(static_cast<DWORD>(expanded.size() + 1), "%s", Narrow(text).c_str()));
}

// --- The host process and its folders.

std::wstring HostPath() { return Host().folder + L"\\host.exe"; }

LPWSTR WINAPI FakeGetCommandLineW() {
  static std::wstring line;  // callers keep the pointer
  const std::wstring& given = Host().command_line;
  const std::wstring current = given.empty() ? L"\"" + HostPath() + L"\"" : given;
  if (line != current) line = current;
  return line.data();
}

LPSTR WINAPI FakeGetCommandLineA() {
  static std::string line;
  const std::string current = Narrow(FakeGetCommandLineW());
  if (line != current) line = current;
  return line.data();
}

// A path that does not fit is cut, ended, and told by the last error.
template <typename Character>
DWORD GivePath(const std::basic_string<Character>& path, Character* buffer, DWORD room) {
  if (buffer == nullptr || room == 0) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
  CopyText(buffer, room, path);
  if (path.size() < room) return static_cast<DWORD>(path.size());
  SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return room;
}

DWORD WINAPI FakeGetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD room) {
  Call call("GetModuleFileNameW");
  if (call.Fails()) return static_cast<DWORD>(Refuse(call, ERROR_MOD_NOT_FOUND));
  if (module != nullptr) return GetModuleFileNameW(module, buffer, room);
  return static_cast<DWORD>(call.Read(GivePath(HostPath(), buffer, room), "null"));
}

DWORD WINAPI FakeGetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD room) {
  Call call("GetModuleFileNameA");
  if (call.Fails()) return static_cast<DWORD>(Refuse(call, ERROR_MOD_NOT_FOUND));
  if (module != nullptr) return GetModuleFileNameA(module, buffer, room);
  return static_cast<DWORD>(call.Read(GivePath(Narrow(HostPath()), buffer, room), "null"));
}

DWORD WINAPI FakeGetTempPathA(DWORD room, LPSTR buffer) {
  Call call("GetTempPathA");
  if (call.Fails()) return static_cast<DWORD>(Refuse(call, ERROR_PATH_NOT_FOUND));
  const std::string folder = Narrow(Host().temp_folder) + "\\";
  return static_cast<DWORD>(call.Read(GiveText(folder, buffer, room), "%lu", room));
}

DWORD WINAPI FakeGetTempPathW(DWORD room, LPWSTR buffer) {
  Call call("GetTempPathW");
  if (call.Fails()) return static_cast<DWORD>(Refuse(call, ERROR_PATH_NOT_FOUND));
  const std::wstring folder = Host().temp_folder + L"\\";
  return static_cast<DWORD>(call.Read(GiveText(folder, buffer, room), "%lu", room));
}

HRESULT WINAPI FakeSHGetFolderPathW(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
  Call call("SHGetFolderPathW");
  constexpr int kFolderBits = 0xFF;  // the rest are flags
  if (path == nullptr) return E_INVALIDARG;
  path[0] = L'\0';
  HRESULT result = S_OK;
  if (call.Fails()) {
    result = static_cast<HRESULT>(FaultOr(call, static_cast<uint32_t>(E_FAIL)));
  } else if ((folder & kFolderBits) == CSIDL_APPDATA) {
    CopyText(path, MAX_PATH, Host().appdata_folder);
  } else {
    result = E_INVALIDARG;
  }
  LeaveDirtyLastError();
  return static_cast<HRESULT>(call.Read(result, "%d", folder));
}

// --- Processes.

struct Snapshot {
  std::vector<Process> processes;
  size_t next = 0;
};

std::map<HANDLE, Snapshot>& Snapshots() {
  static std::map<HANDLE, Snapshot> snapshots;
  return snapshots;
}

HANDLE WINAPI FakeCreateToolhelp32Snapshot(DWORD flags, DWORD) {
  Call call("CreateToolhelp32Snapshot");
  if (call.Fails() || (flags & TH32CS_SNAPPROCESS) == 0) {
    Refuse(call, ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
  }
  static uintptr_t next = 0x71000;
  const HANDLE snapshot = reinterpret_cast<HANDLE>(next += 4);
  Snapshots()[snapshot] = {CurrentModel().processes, 0};
  Machine::Current().state().simulated_handles[snapshot] = kSnapshotKind;
  LedgerTake(kSnapshotKind, snapshot);
  call.Read(0, "0x%lx", flags);
  return snapshot;
}

// The snapshot's next process; null at its end or when the handle is none that is open.
const Process* NextProcess(const Call& call, HANDLE handle, bool from_start) {
  const auto snapshot = Snapshots().find(handle);
  const bool open = Machine::Current().state().simulated_handles.count(handle) != 0;
  if (call.Fails() || snapshot == Snapshots().end() || !open) {
    Refuse(call, call.Fails() ? ERROR_NO_MORE_FILES : ERROR_INVALID_HANDLE);
    return nullptr;
  }
  Snapshot& s = snapshot->second;
  if (from_start) s.next = 0;
  if (s.next < s.processes.size()) return &s.processes[s.next++];
  SetLastError(ERROR_NO_MORE_FILES);
  return nullptr;
}

template <typename Record, typename Text>
BOOL GiveProcess(const char* function, HANDLE handle, Record* record, bool from_start,
                 Text (*convert)(const std::string&)) {
  Call call(function);
  if (record == nullptr || record->dwSize < sizeof *record) return Refuse(call, ERROR_BAD_LENGTH);
  const Process* process = NextProcess(call, handle, from_start);
  if (process == nullptr) return FALSE;
  const DWORD size = record->dwSize;
  *record = {};
  record->dwSize = size;
  record->th32ProcessID = process->id;
  record->cntThreads = 1;
  CopyText(record->szExeFile, MAX_PATH, convert(process->executable));
  return static_cast<BOOL>(call.Read(TRUE, "%s", process->executable.c_str()));
}

std::string Same(const std::string& text) { return text; }

BOOL WINAPI FakeProcess32First(HANDLE snapshot, LPPROCESSENTRY32 record) {
  return GiveProcess("Process32First", snapshot, record, true, Same);
}

BOOL WINAPI FakeProcess32Next(HANDLE snapshot, LPPROCESSENTRY32 record) {
  return GiveProcess("Process32Next", snapshot, record, false, Same);
}

BOOL WINAPI FakeProcess32FirstW(HANDLE snapshot, LPPROCESSENTRY32W record) {
  return GiveProcess("Process32FirstW", snapshot, record, true, Widen);
}

BOOL WINAPI FakeProcess32NextW(HANDLE snapshot, LPPROCESSENTRY32W record) {
  return GiveProcess("Process32NextW", snapshot, record, false, Widen);
}

// --- Lines for a debugger.

// The journal has one line a call: a line feed shows as "\n" there.
void WINAPI FakeOutputDebugStringW(LPCWSTR text) {
  Call call("OutputDebugStringW");
  std::string shown;
  for (const char letter : Narrow(text != nullptr ? text : L"")) {
    shown += letter == '\n' ? std::string("\\n") : std::string(1, letter);
  }
  call.Read(0, "%s", shown.c_str());
}

// --- Sound.

UINT WINAPI FakeWaveOutGetNumDevs() {
  Call call("waveOutGetNumDevs");
  const uint32_t count = call.Fails() ? 0 : CurrentModel().wave_out_devices;
  return static_cast<UINT>(call.Read(count, "%s", ""));
}

}  // namespace

const std::vector<Entry>& SystemFace() {
  static const std::vector<Entry> kEntries = {
      {"kernel32.dll", "GetVersionExA", Guard<FakeGetVersionExA>()},
      {"kernel32.dll", "GetVersionExW", Guard<FakeGetVersionExW>()},
      {"kernel32.dll", "GetProductInfo", Guard<FakeGetProductInfo>(), HasProductInfo},
      {"kernel32.dll", "IsWow64Process", Guard<FakeIsWow64Process>()},
      {"kernel32.dll", "GetEnvironmentVariableA", Guard<FakeGetEnvironmentVariableA>()},
      {"kernel32.dll", "GetEnvironmentVariableW", Guard<FakeGetEnvironmentVariableW>()},
      {"kernel32.dll", "ExpandEnvironmentStringsA", Guard<FakeExpandEnvironmentStringsA>()},
      {"kernel32.dll", "ExpandEnvironmentStringsW", Guard<FakeExpandEnvironmentStringsW>()},
      {"kernel32.dll", "GetCommandLineA", Guard<FakeGetCommandLineA>()},
      {"kernel32.dll", "GetCommandLineW", Guard<FakeGetCommandLineW>()},
      {"kernel32.dll", "GetModuleFileNameA", Guard<FakeGetModuleFileNameA>()},
      {"kernel32.dll", "GetModuleFileNameW", Guard<FakeGetModuleFileNameW>()},
      {"kernel32.dll", "GetTempPathA", Guard<FakeGetTempPathA>()},
      {"kernel32.dll", "GetTempPathW", Guard<FakeGetTempPathW>()},
      {"shell32.dll", "SHGetFolderPathW", Guard<FakeSHGetFolderPathW>()},
      {"kernel32.dll", "CreateToolhelp32Snapshot", Guard<FakeCreateToolhelp32Snapshot>()},
      {"kernel32.dll", "Process32First", Guard<FakeProcess32First>()},
      {"kernel32.dll", "Process32Next", Guard<FakeProcess32Next>()},
      {"kernel32.dll", "Process32FirstW", Guard<FakeProcess32FirstW>()},
      {"kernel32.dll", "Process32NextW", Guard<FakeProcess32NextW>()},
      {"kernel32.dll", "OutputDebugStringW", Guard<FakeOutputDebugStringW>()},
      {"winmm.dll", "waveOutGetNumDevs", Guard<FakeWaveOutGetNumDevs>()},
  };
  return kEntries;
}

}  // namespace sim
