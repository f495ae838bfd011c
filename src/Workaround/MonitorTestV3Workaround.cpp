#include "Workaround/MonitorTestV3Workaround.h"

#include "Common/MultiMonitor/HelperFunctions.h"
#include "Common/Owners.h"

// After windows.h.
#include <shlwapi.h>

namespace {

using IsWow64ProcessFunction = BOOL(WINAPI*)(HANDLE, BOOL*);

constexpr char kExecutable[] = "\\MonitorTest.exe";
constexpr char kUninstallFolder[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr char kUninstallName[] = "\\MonitorTest_is1";

// Windows names the folder of 32-bit programs differently to 32-bit and to 64-bit processes.
constexpr char kFolderFrom32Bit[] = "%ProgramFiles%\\MonitorTest";
constexpr char kFolderFrom64Bit[] = "%ProgramFiles(x86)%\\MonitorTest";

struct Size {
  DWORD width;
  DWORD height;
};
constexpr Size kSmall = {800, 600};
constexpr Size kLarge = {1024, 768};

// Kept once it is bound: Windows XP before its second service pack has none.
IsWow64ProcessFunction g_isWow64Process = nullptr;

IsWow64ProcessFunction BindIsWow64Process() {
  const HMODULE kernel = GetModuleHandleA("Kernel32.dll");
  if (kernel == nullptr) return nullptr;
  // By way of void*, since FARPROC and the real type differ in their arguments.
  return reinterpret_cast<IsWow64ProcessFunction>(
      reinterpret_cast<void*>(GetProcAddress(kernel, "IsWow64Process")));
}

bool RunsUnderWow64() {
  if (g_isWow64Process == nullptr) g_isWow64Process = BindIsWow64Process();
  BOOL answer = FALSE;
  return g_isWow64Process != nullptr && g_isWow64Process(GetCurrentProcess(), &answer) != 0 &&
         answer != FALSE;
}

}  // namespace

MonitorTestV3Workaround::MonitorTestV3Workaround() {
  OutputDebugStringW(L"MonitorTestV3Workaround ctor\n");
}

bool MonitorTestV3Workaround::IsToolInstalled() {
  return PathFileExistsA(GetExecutablePath().c_str()) != 0 || HasUninstallKey() != 0;
}

BOOL MonitorTestV3Workaround::ChangeResolutionBeforeSwitch(IMMonitor* monitor) {
  DEVMODEA dm;
  // A size that cannot be read leaves nothing known to flip from.
  if (ReadDisplaySettings(ENUM_CURRENT_SETTINGS, nullptr, &dm) == 0) return 0;
  // Deliberate: only the width is looked at, and every width but 800 goes to the small size, 1024
  // as well.
  const Size& size = dm.dmPelsWidth == kSmall.width ? kLarge : kSmall;
  dm.dmPelsWidth = size.width;
  dm.dmPelsHeight = size.height;
  return ChangeDisplayResolution(monitor, dm) ? 1 : 0;
}

std::string MonitorTestV3Workaround::GetExecutablePath() {
  const std::string folder = GetInstallFolder();
  // The name alone would be looked for in the root of the current drive.
  return folder.empty() ? "" : folder + kExecutable;
}

BOOL MonitorTestV3Workaround::HasUninstallKey() {
  HKEY key = nullptr;
  const std::string path = GetUninstallKey();
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return 0;
  const UniqueKey opened(key);
  return 1;
}

std::string MonitorTestV3Workaround::GetInstallFolder() {
  char folder[MAX_PATH] = {};
  const char* const pattern = RunsUnderWow64() ? kFolderFrom32Bit : kFolderFrom64Bit;
  const DWORD length = ExpandEnvironmentStringsA(pattern, folder, MAX_PATH);
  return length != 0 && length <= MAX_PATH ? folder : "";
}

std::string MonitorTestV3Workaround::GetUninstallKey() {
  return std::string(kUninstallFolder) + kUninstallName;
}
