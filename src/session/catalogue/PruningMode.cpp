#include "session/catalogue/PruningMode.h"

#include <cwchar>
#include <iterator>

#include "Common/Owners.h"

namespace {

constexpr wchar_t kVideoDevices[] = L"HARDWARE\\DEVICEMAP\\VIDEO";
constexpr wchar_t kFirstDevice[] = L"\\Device\\Video0";
// The device map speaks as the kernel does, for which HKEY_LOCAL_MACHINE is a folder.
constexpr wchar_t kMachineFolder[] = L"\\Registry\\Machine\\";
constexpr size_t kMachineFolderLength = std::size(kMachineFolder) - 1;
constexpr wchar_t kPruningMode[] = L"PruningMode";

constexpr REGSAM kReadAccess = 0x20019;
constexpr REGSAM kWriteAccess = 0x2001F;
static_assert(kReadAccess == KEY_READ && kWriteAccess == (KEY_READ | KEY_WRITE),
              "as Windows has it");

constexpr DWORD kPathBytes = 256;

UniqueKey OpenMachineKey(const wchar_t* path, REGSAM access) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &key) != ERROR_SUCCESS) return UniqueKey();
  return UniqueKey(key);
}

/// The registry path of the first video device, as the device map has it.
/// @param path  zeroed by the caller, with one character more than is read
bool ReadFirstDevicePath(wchar_t* path) {
  const UniqueKey devices = OpenMachineKey(kVideoDevices, kReadAccess);
  if (!devices.IsValid()) return false;
  DWORD size = kPathBytes;
  return RegQueryValueExW(devices.get(), kFirstDevice, nullptr, nullptr,
                          reinterpret_cast<BYTE*>(path), &size) == ERROR_SUCCESS;
}

}  // namespace

BOOL ClearPruningMode() {
  // Zeroed and longer than what is read, since a text in the registry need not have an end.
  wchar_t path[kPathBytes / sizeof(wchar_t) + 1] = {};
  if (!ReadFirstDevicePath(path)) return 0;
  // The folder is passed over by its length; what it is called is not looked at.
  if (std::wcslen(path) < kMachineFolderLength) return 0;
  const UniqueKey device = OpenMachineKey(path + kMachineFolderLength, kWriteAccess);
  if (!device.IsValid()) return 0;
  DWORD mode = 0;
  DWORD type = 0;
  DWORD size = sizeof(mode);
  if (RegQueryValueExW(device.get(), kPruningMode, nullptr, &type, reinterpret_cast<BYTE*>(&mode),
                       &size) != ERROR_SUCCESS) {
    return 0;
  }
  if (mode == 0) return 0;
  mode = 0;
  // Deliberate: never undone, and done whether Windows takes it or not.
  RegSetValueExW(device.get(), kPruningMode, 0, type, reinterpret_cast<const BYTE*>(&mode), size);
  return 1;
}
