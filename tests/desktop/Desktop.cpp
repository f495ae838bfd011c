#include "tests/desktop/Desktop.h"

#include <cstring>

#include "tests/desktop/XServer.h"

namespace {

std::string ConfigurationFile() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string text(path);
  return text.substr(0, text.find_last_of('\\') + 1) + "Ostrel.cfg";
}

DEVMODEA Placed(uint32_t width, uint32_t height, int32_t x) {
  DEVMODEA mode = Resolution(width, height);
  mode.dmFields |= DM_POSITION | DM_BITSPERPEL | DM_DISPLAYFREQUENCY;
  mode.dmPosition.x = x;
  mode.dmBitsPerPel = 32;
  mode.dmDisplayFrequency = 60;
  return mode;
}

void Store(const char* device, DEVMODEA mode, DWORD flags) {
  ASSERT_EQ(ChangeDisplaySettingsExA(device, &mode, nullptr,
                                     CDS_UPDATEREGISTRY | CDS_NORESET | flags, nullptr),
            DISP_CHANGE_SUCCESSFUL);
}

// Wine 8 has every display configuration function but DisplayConfigSetDeviceInfo, and the library
// uses these functions only where it finds them all. It is the one that is never called.
LONG WINAPI LentDisplayConfigSetDeviceInfo(void* /*packet*/) {
  ADD_FAILURE() << "DisplayConfigSetDeviceInfo was called";
  return ERROR_NOT_SUPPORTED;
}

FARPROC WINAPI GetProcAddressOrLent(HMODULE module, const char* name) {
  FARPROC found = GetProcAddress(module, name);
  const bool is_name = reinterpret_cast<uintptr_t>(name) > 0xFFFF;
  if (found == nullptr && is_name && std::strcmp(name, "DisplayConfigSetDeviceInfo") == 0) {
    void* lent = reinterpret_cast<void*>(LentDisplayConfigSetDeviceInfo);
    std::memcpy(&found, &lent, sizeof(found));
  }
  return found;
}

/// Puts GetProcAddressOrLent in the place of GetProcAddress among the imports of `library`.
void LendMissingFunction(HMODULE library) {
  auto* base = reinterpret_cast<unsigned char*>(library);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const DWORD table =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT].VirtualAddress;
  const DWORD size = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT].Size;
  void* const wanted = reinterpret_cast<void*>(GetProcAddress);
  auto* slots = reinterpret_cast<void**>(base + table);
  for (DWORD i = 0; i < size / sizeof(void*); ++i) {
    if (slots[i] != wanted) continue;
    DWORD protection = 0;
    ASSERT_TRUE(VirtualProtect(&slots[i], sizeof(void*), PAGE_READWRITE, &protection));
    slots[i] = reinterpret_cast<void*>(GetProcAddressOrLent);
    VirtualProtect(&slots[i], sizeof(void*), protection, &protection);
    return;
  }
  FAIL() << "the library does not import GetProcAddress";
}

}  // namespace

DEVMODEA Resolution(uint32_t width, uint32_t height) {
  DEVMODEA mode;
  std::memset(&mode, 0, sizeof(mode));
  mode.dmSize = sizeof(mode);
  mode.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;
  mode.dmPelsWidth = width;
  mode.dmPelsHeight = height;
  return mode;
}

void Arrange(uint32_t second_width, uint32_t second_height) {
  Store(kFirstDevice, Placed(1366, 768, 0), CDS_SET_PRIMARY);
  Store(kSecondDevice, Placed(second_width, second_height, second_width == 0 ? 0 : 1366), 0);
  ASSERT_EQ(ChangeDisplaySettingsExA(nullptr, nullptr, nullptr, 0, nullptr),
            DISP_CHANGE_SUCCESSFUL);
}

void Pump(uint32_t milliseconds) {
  const DWORD begin = GetTickCount();
  while (GetTickCount() - begin < milliseconds) {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageA(&message);
    }
    Sleep(10);
  }
}

void Desktop::SetUp() {
  DeleteFileA(ConfigurationFile().c_str());
  Arrange(1024, 768);
  ASSERT_EQ(OutputsThatAreOn(), kBothOn);
}

void Desktop::TearDown() {
  Unload();
  DeleteFileA(ConfigurationFile().c_str());
}

void Desktop::Unload() {
  if (library_ != nullptr) FreeLibrary(library_);
  library_ = nullptr;
  white_box_ = nullptr;
}

void Desktop::Config(const char* section, const char* key, uint32_t value) {
  ASSERT_TRUE(WritePrivateProfileStringA(section, key, std::to_string(value).c_str(),
                                         ConfigurationFile().c_str()));
}

void Desktop::Load() {
  library_ = LoadLibraryA("OstrelWhiteBox.dll");
  ASSERT_NE(library_, nullptr);
  LendMissingFunction(library_);
  const auto bind = [this](auto* entry, const char* name) {
    void* address = reinterpret_cast<void*>(GetProcAddress(library_, name));
    ASSERT_NE(address, nullptr) << name;
    std::memcpy(entry, &address, sizeof(address));
  };
  bind(&Init, "Ostrel_Init");
  bind(&DeInit, "Ostrel_DeInit");
  bind(&Run, "Ostrel_Run");
  bind(&RunEx, "Ostrel_RunEx");
  bind(&FlushRememberedSettings, "Ostrel_FlushRememberedSettings");
  bind(&RegisterNotification, "Ostrel_RegisterNotification");
  bind(&InitExtendMode, "Ostrel_InitExtendMode");
  bind(&DeInitExtendMode, "Ostrel_DeInitExtendMode");
  bind(&EnableExtendMode, "Ostrel_EnableExtendMode");
  bind(&IsExtendModeEnabled, "Ostrel_IsExtendModeEnabled");
  bind(&HasDualOutputCapability, "Ostrel_HasDualOutputCapability");
  WhiteBoxExport white_box = nullptr;
  bind(&white_box, "Ostrel_WhiteBox");
  if (white_box != nullptr) white_box_ = white_box();
}
