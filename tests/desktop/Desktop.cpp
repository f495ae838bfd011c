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
  if (library_ != nullptr) FreeLibrary(library_);
  DeleteFileA(ConfigurationFile().c_str());
}

void Desktop::Config(const char* section, const char* key, uint32_t value) {
  ASSERT_TRUE(WritePrivateProfileStringA(section, key, std::to_string(value).c_str(),
                                         ConfigurationFile().c_str()));
}

void Desktop::Load() {
  library_ = LoadLibraryA("OstrelWhiteBox.dll");
  ASSERT_NE(library_, nullptr);
  const auto bind = [this](auto* entry, const char* name) {
    void* address = reinterpret_cast<void*>(GetProcAddress(library_, name));
    ASSERT_NE(address, nullptr) << name;
    std::memcpy(entry, &address, sizeof(address));
  };
  bind(&Init, "Ostrel_Init");
  bind(&DeInit, "Ostrel_DeInit");
  bind(&Run, "Ostrel_Run");
  bind(&RunEx, "Ostrel_RunEx");
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
