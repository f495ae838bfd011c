// The system folder: which files lie in it is the machine's word, and nothing of the real one shows
// through. Of all other files the real functions tell.
#include <cstring>

#include "sim/FaceTable.h"
#include "sim/RealImports.h"
#include "sim/faces/AmdDriver.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/faces/FaceHelp.h"

// After windows.h.
#include <shlobj.h>
#include <shlwapi.h>

namespace sim {
namespace {

constexpr char kSystemFolder[] = "C:\\Windows\\system32";

// The name of a file right in the system folder, in lower case.
std::optional<std::string> NameInSystemFolder(const std::string& path) {
  const std::string lower = Lower(path);
  const std::string folder = Lower(kSystemFolder) + "\\";
  if (lower.compare(0, folder.size(), folder) != 0) return std::nullopt;
  const std::string name = lower.substr(folder.size());
  if (name.empty() || name.find('\\') != std::string::npos) return std::nullopt;
  return name;
}

bool LiesInSystemFolder(const std::string& name) {
  Machine::State& state = Machine::Current().state();
  BringAmdLibraries(state);
  return state.invented.count(name) != 0 || IsSystemModule(name);
}

BOOL WINAPI FakePathFileExistsA(LPCSTR path) {
  Call call("PathFileExistsA");
  const std::string text = path != nullptr ? path : "null";
  BOOL answer = FALSE;
  if (call.Fails()) {
    SetLastError(FaultOr(call, ERROR_FILE_NOT_FOUND));
  } else if (const std::optional<std::string> name = NameInSystemFolder(text)) {
    answer = LiesInSystemFolder(*name) ? TRUE : FALSE;
    if (!answer) SetLastError(ERROR_FILE_NOT_FOUND);
  } else {
    answer = PathFileExistsA(path);
  }
  return static_cast<BOOL>(call.Read(answer, "%s", text.c_str()));
}

BOOL WINAPI FakeSHGetSpecialFolderPathA(HWND window, LPSTR path, int folder, BOOL create) {
  constexpr int kFolderBits = 0xFF;  // the rest are flags
  Call call("SHGetSpecialFolderPathA");
  if (path == nullptr) return FALSE;
  path[0] = '\0';
  const bool known = !call.Fails() && (folder & kFolderBits) == CSIDL_SYSTEM;
  if (known) CopyText<char>(path, MAX_PATH, kSystemFolder);
  LeaveDirtyLastError();
  return static_cast<BOOL>(call.Read(known ? TRUE : FALSE, "%d window=%s create=%d", folder,
                                     window != nullptr ? "given" : "none", create));
}

// --- Version resources.

// The numbers of "8.14.10.1120".
VS_FIXEDFILEINFO FixedBlock(const std::string& version) {
  unsigned numbers[4] = {};
  sscanf(version.c_str(), "%u.%u.%u.%u", &numbers[0], &numbers[1], &numbers[2], &numbers[3]);
  VS_FIXEDFILEINFO fixed = {};
  fixed.dwSignature = VS_FFI_SIGNATURE;
  fixed.dwStrucVersion = VS_FFI_STRUCVERSION;
  fixed.dwFileVersionMS = numbers[0] << 16 | (numbers[1] & 0xFFFF);
  fixed.dwFileVersionLS = numbers[2] << 16 | (numbers[3] & 0xFFFF);
  fixed.dwProductVersionMS = fixed.dwFileVersionMS;
  fixed.dwProductVersionLS = fixed.dwFileVersionLS;
  fixed.dwFileFlagsMask = VS_FFI_FILEFLAGSMASK;
  fixed.dwFileOS = VOS_NT_WINDOWS32;
  fixed.dwFileType = VFT_DLL;
  return fixed;
}

// VS_VERSIONINFO with nothing behind the fixed block.
struct VersionBlock {
  WORD length = sizeof(VersionBlock);
  WORD value_length = sizeof(VS_FIXEDFILEINFO);
  WORD type = 0;
  wchar_t key[16] = L"VS_VERSION_INFO";
  WORD padding = 0;
  VS_FIXEDFILEINFO fixed = {};
};
static_assert(offsetof(VersionBlock, fixed) == 40, "the fixed block begins on a double word");

// The block of a file in the system folder; nothing for one that has none.
std::optional<VersionBlock> BlockOf(const std::string& name) {
  const Adapter* const adapter = AdlLibraryAdapter(CurrentModel());
  if (name != kAdlLibrary || adapter == nullptr) return std::nullopt;
  if (adapter->amd.adl_version.empty()) return std::nullopt;
  VersionBlock block;
  block.fixed = FixedBlock(adapter->amd.adl_version);
  return block;
}

// The real function of that name in version.dll.
template <typename Function>
Function* RealVersionFunction(Function*, const char* name) {
  const FARPROC found = GetProcAddress(LoadLibraryW(L"version.dll"), name);
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}
#define REAL_VERSION_FUNCTION(name) \
  RealVersionFunction(static_cast<decltype(&::name)>(nullptr), #name)

DWORD Refuse(const Call& call, DWORD documented) {
  SetLastError(call.Fails() ? FaultOr(call, documented) : documented);
  return 0;
}

DWORD WINAPI FakeGetFileVersionInfoSizeW(LPCWSTR path, LPDWORD handle) {
  Call call("GetFileVersionInfoSizeW");
  const std::string text = path != nullptr ? Narrow(path) : "null";
  const std::optional<std::string> name = NameInSystemFolder(text);
  DWORD size = 0;
  if (call.Fails()) {
    Refuse(call, ERROR_RESOURCE_DATA_NOT_FOUND);
  } else if (!name) {
    size = REAL_VERSION_FUNCTION(GetFileVersionInfoSizeW)(path, handle);
  } else if (BlockOf(*name)) {
    size = sizeof(VersionBlock);
    if (handle != nullptr) *handle = 0;
  } else {
    Refuse(call, LiesInSystemFolder(*name) ? ERROR_RESOURCE_DATA_NOT_FOUND : ERROR_FILE_NOT_FOUND);
  }
  return static_cast<DWORD>(call.Read(size, "%s", text.c_str()));
}

BOOL WINAPI FakeGetFileVersionInfoW(LPCWSTR path, DWORD handle, DWORD size, LPVOID data) {
  Call call("GetFileVersionInfoW");
  const std::string text = path != nullptr ? Narrow(path) : "null";
  const std::optional<std::string> name = NameInSystemFolder(text);
  BOOL answer = FALSE;
  if (call.Fails()) {
    Refuse(call, ERROR_RESOURCE_DATA_NOT_FOUND);
  } else if (!name) {
    answer = REAL_VERSION_FUNCTION(GetFileVersionInfoW)(path, handle, size, data);
  } else if (const std::optional<VersionBlock> block = BlockOf(*name)) {
    if (size >= sizeof *block && data != nullptr) {
      std::memcpy(data, &*block, sizeof *block);
      answer = TRUE;
    } else {
      Refuse(call, ERROR_INSUFFICIENT_BUFFER);
    }
  } else {
    Refuse(call, ERROR_RESOURCE_DATA_NOT_FOUND);
  }
  return static_cast<BOOL>(call.Read(answer, "%s size=%lu", text.c_str(), size));
}

}  // namespace

const std::vector<Entry>& FilesFace() {
  static const std::vector<Entry> entries = {
      {"shlwapi.dll", "PathFileExistsA", Guard<FakePathFileExistsA>()},
      {"shell32.dll", "SHGetSpecialFolderPathA", Guard<FakeSHGetSpecialFolderPathA>()},
      {"version.dll", "GetFileVersionInfoSizeW", Guard<FakeGetFileVersionInfoSizeW>()},
      {"version.dll", "GetFileVersionInfoW", Guard<FakeGetFileVersionInfoW>()},
  };
  return entries;
}

}  // namespace sim
