// The registry functions over the values that the model holds. Nothing of the real registry shows
// through.
#include <algorithm>
#include <map>

#include "sim/faces/FaceHelp.h"
#include "sim/faces/RegistryStore.h"

namespace sim {
namespace {

constexpr char kKeyKind[] = "registry key";

struct OpenKey {
  std::string path;
  REGSAM access;
};

// Handles are never used twice, so that one that outlives its machine cannot be taken for
// another's.
std::map<HKEY, OpenKey>& OpenKeys() {
  static std::map<HKEY, OpenKey> keys;
  return keys;
}

bool IsRoot(HKEY key) {
  return key == HKEY_LOCAL_MACHINE || key == HKEY_CURRENT_USER || key == HKEY_CLASSES_ROOT ||
         key == HKEY_USERS;
}

bool Allows(HKEY key, REGSAM access) {
  const auto open = OpenKeys().find(key);
  return open == OpenKeys().end() || (open->second.access & access) == access;
}

LSTATUS OpenKeyAt(HKEY key, const std::string& subkey, REGSAM access, PHKEY result) {
  if (result == nullptr) return ERROR_INVALID_PARAMETER;
  const std::optional<std::string> path = PathOfKey(key);
  if (!path) return ERROR_INVALID_HANDLE;
  const std::string full = JoinKey(*path, subkey);
  if (!KeyExists(CurrentModel(), full)) return ERROR_FILE_NOT_FOUND;
  *result = OpenKeyHandle(full, access);
  return ERROR_SUCCESS;
}

bool IsText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

// The narrow functions hand texts out in the ANSI code page.
RegistryData Narrowed(RegistryData data) {
  if (!IsText(data.type)) return data;
  std::wstring wide(data.bytes.size() / sizeof(wchar_t), L'\0');
  std::copy_n(data.bytes.begin(), wide.size() * sizeof(wchar_t),
              reinterpret_cast<uint8_t*>(wide.data()));
  const int size = static_cast<int>(wide.size());
  const int length =
      WideCharToMultiByte(CP_ACP, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  std::vector<uint8_t> bytes(static_cast<size_t>(std::max(length, 0)));
  WideCharToMultiByte(CP_ACP, 0, wide.data(), size, reinterpret_cast<char*>(bytes.data()), length,
                      nullptr, nullptr);
  data.bytes = bytes;
  return data;
}

LSTATUS QueryValue(HKEY key, const std::string& name, bool narrow, const DWORD* reserved,
                   LPDWORD type, LPBYTE buffer, LPDWORD size) {
  if (reserved != nullptr || (buffer != nullptr && size == nullptr)) return ERROR_INVALID_PARAMETER;
  const std::optional<std::string> path = PathOfKey(key);
  if (!path) return ERROR_INVALID_HANDLE;
  if (!Allows(key, KEY_QUERY_VALUE)) return ERROR_ACCESS_DENIED;
  std::optional<RegistryData> data = ReadRegistry(CurrentModel(), *path, name);
  if (!data) return ERROR_FILE_NOT_FOUND;
  if (narrow) data = Narrowed(*data);
  if (type != nullptr) *type = data->type;
  if (size == nullptr) return ERROR_SUCCESS;
  const DWORD room = *size;
  *size = static_cast<DWORD>(data->bytes.size());
  if (buffer == nullptr) return ERROR_SUCCESS;
  if (room < data->bytes.size()) return ERROR_MORE_DATA;
  std::copy(data->bytes.begin(), data->bytes.end(), buffer);
  return ERROR_SUCCESS;
}

std::string NarrowOrEmpty(LPCWSTR text) { return text != nullptr ? Narrow(text) : std::string(); }
std::string OrEmpty(LPCSTR text) { return text != nullptr ? text : ""; }

LSTATUS WINAPI FakeRegOpenKeyExA(HKEY key, LPCSTR subkey, DWORD, REGSAM access, PHKEY result) {
  Call call("RegOpenKeyExA");
  const std::string name = OrEmpty(subkey);
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_FILE_NOT_FOUND))
                                      : OpenKeyAt(key, name, access, result);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%s 0x%lx", name.c_str(), access));
}

LSTATUS WINAPI FakeRegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD, REGSAM access, PHKEY result) {
  Call call("RegOpenKeyExW");
  const std::string name = NarrowOrEmpty(subkey);
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_FILE_NOT_FOUND))
                                      : OpenKeyAt(key, name, access, result);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%s 0x%lx", name.c_str(), access));
}

LSTATUS WINAPI FakeRegQueryValueExA(HKEY key, LPCSTR value, LPDWORD reserved, LPDWORD type,
                                    LPBYTE buffer, LPDWORD size) {
  Call call("RegQueryValueExA");
  const std::string name = OrEmpty(value);
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_FILE_NOT_FOUND))
                                      : QueryValue(key, name, true, reserved, type, buffer, size);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%s", name.c_str()));
}

LSTATUS WINAPI FakeRegQueryValueExW(HKEY key, LPCWSTR value, LPDWORD reserved, LPDWORD type,
                                    LPBYTE buffer, LPDWORD size) {
  Call call("RegQueryValueExW");
  const std::string name = NarrowOrEmpty(value);
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_FILE_NOT_FOUND))
                                      : QueryValue(key, name, false, reserved, type, buffer, size);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%s", name.c_str()));
}

LSTATUS WINAPI FakeRegSetValueExW(HKEY key, LPCWSTR value, DWORD, DWORD type, const BYTE* bytes,
                                  DWORD size) {
  Call call("RegSetValueExW");
  const std::string name = NarrowOrEmpty(value);
  const std::optional<std::string> path = PathOfKey(key);
  RegistryData data{type, {}};
  if (bytes != nullptr) data.bytes.assign(bytes, bytes + size);
  LSTATUS status = ERROR_SUCCESS;
  if (call.Fails()) {
    status = static_cast<LSTATUS>(FaultOr(call, ERROR_ACCESS_DENIED));
  } else if (!path) {
    status = ERROR_INVALID_HANDLE;
  } else if (!Allows(key, KEY_SET_VALUE)) {
    status = ERROR_ACCESS_DENIED;
  } else {
    WriteRegistry(CurrentModel(), *path, name, data);
  }
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Changed(status, "%s %s %s", path.value_or("?").c_str(),
                                           name.c_str(), FormatRegistryText(data).c_str()));
}

LSTATUS WINAPI FakeRegCloseKey(HKEY key) {
  Call call("RegCloseKey");
  if (call.Fails()) return static_cast<LSTATUS>(FaultOr(call, ERROR_INVALID_HANDLE));
  if (IsRoot(key)) return ERROR_SUCCESS;
  LedgerGive(kKeyKind, key);
  LeaveDirtyLastError();
  return OpenKeys().erase(key) != 0 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

template <typename Character>
LSTATUS EnumKey(HKEY key, DWORD index, Character* buffer, LPDWORD size,
                const std::basic_string<Character>& (*convert)(const std::string&)) {
  if (buffer == nullptr || size == nullptr) return ERROR_INVALID_PARAMETER;
  const std::optional<std::string> path = PathOfKey(key);
  if (!path) return ERROR_INVALID_HANDLE;
  const std::vector<std::string> subkeys = SubkeysOf(CurrentModel(), *path);
  if (index >= subkeys.size()) return ERROR_NO_MORE_ITEMS;
  const std::basic_string<Character>& name = convert(subkeys[index]);
  if (*size <= name.size()) return ERROR_MORE_DATA;
  CopyText(buffer, *size, name);
  *size = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
}

LSTATUS WINAPI FakeRegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD size, LPDWORD, LPSTR,
                                 LPDWORD, PFILETIME) {
  Call call("RegEnumKeyExA");
  const auto same = [](const std::string& text) -> const std::string& { return text; };
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_ACCESS_DENIED))
                                      : EnumKey<char>(key, index, name, size, same);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%lu", index));
}

LSTATUS WINAPI FakeRegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD size, LPDWORD, LPWSTR,
                                 LPDWORD, PFILETIME) {
  Call call("RegEnumKeyExW");
  const auto widen = [](const std::string& text) -> const std::wstring& {
    static std::wstring wide;
    return wide = Widen(text);
  };
  const LSTATUS status = call.Fails() ? static_cast<LSTATUS>(FaultOr(call, ERROR_ACCESS_DENIED))
                                      : EnumKey<wchar_t>(key, index, name, size, widen);
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%lu", index));
}

// Opens, reads and closes in one call.
LSTATUS WINAPI FakeSHGetValueA(HKEY key, LPCSTR subkey, LPCSTR value, DWORD* type, void* buffer,
                               DWORD* size) {
  Call call("SHGetValueA");
  const std::string shown = OrEmpty(subkey) + " " + OrEmpty(value);
  LSTATUS status = ERROR_SUCCESS;
  HKEY open = nullptr;
  if (call.Fails()) {
    status = static_cast<LSTATUS>(FaultOr(call, ERROR_FILE_NOT_FOUND));
  } else {
    status = OpenKeyAt(key, OrEmpty(subkey), KEY_READ, &open);
  }
  if (status == ERROR_SUCCESS) {
    status =
        QueryValue(open, OrEmpty(value), true, nullptr, type, static_cast<LPBYTE>(buffer), size);
    LedgerGive(kKeyKind, open);
    OpenKeys().erase(open);
  }
  LeaveDirtyLastError();
  return static_cast<LSTATUS>(call.Read(status, "%s", shown.c_str()));
}

}  // namespace

std::optional<std::string> PathOfKey(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return "HKLM";
  if (key == HKEY_CURRENT_USER) return "HKCU";
  if (key == HKEY_CLASSES_ROOT) return "HKCR";
  if (key == HKEY_USERS) return "HKU";
  const auto open = OpenKeys().find(key);
  if (open == OpenKeys().end()) return std::nullopt;
  return open->second.path;
}

HKEY OpenKeyHandle(const std::string& path, REGSAM access) {
  static uintptr_t next = 0x51000;
  const HKEY key = reinterpret_cast<HKEY>(next += 4);
  OpenKeys()[key] = {path, access};
  LedgerTake(kKeyKind, key);
  return key;
}

const std::vector<Entry>& RegistryFace() {
  static const std::vector<Entry> kEntries = {
      {"advapi32.dll", "RegOpenKeyExA", Guard<FakeRegOpenKeyExA>()},
      {"advapi32.dll", "RegOpenKeyExW", Guard<FakeRegOpenKeyExW>()},
      {"advapi32.dll", "RegQueryValueExA", Guard<FakeRegQueryValueExA>()},
      {"advapi32.dll", "RegQueryValueExW", Guard<FakeRegQueryValueExW>()},
      {"advapi32.dll", "RegSetValueExW", Guard<FakeRegSetValueExW>()},
      {"advapi32.dll", "RegCloseKey", Guard<FakeRegCloseKey>()},
      {"advapi32.dll", "RegEnumKeyExA", Guard<FakeRegEnumKeyExA>()},
      {"advapi32.dll", "RegEnumKeyExW", Guard<FakeRegEnumKeyExW>()},
      {"shlwapi.dll", "SHGetValueA", Guard<FakeSHGetValueA>()},
  };
  return kEntries;
}

}  // namespace sim
