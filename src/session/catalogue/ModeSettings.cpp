#include "session/catalogue/ModeSettings.h"

#include <string>

#include "Common/Config.h"
#include "Common/ConfigSection.h"

namespace {

uint32_t ReadModeInt(uint32_t mode, uint32_t displays, const wchar_t* key, uint32_t default_value) {
  std::wstring section;
  GetModeSection(mode, displays, &section);
  return ReadConfigInt(section.c_str(), key, default_value);
}

}  // namespace

uint32_t GetSettingType(uint32_t mode, uint32_t displays) {
  return ReadModeInt(mode, displays, L"Setting Type", kSettingBest);
}

uint32_t GetAdjustPolicy(uint32_t mode, uint32_t displays) {
  return ReadModeInt(mode, displays, L"Adjust Policy", 0);
}

bool GetFixedResolution(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height) {
  *width = ReadModeInt(mode, displays, L"Width", 1024);
  *height = ReadModeInt(mode, displays, L"Height", 768);
  return true;
}

bool GetMaxResolution(uint32_t mode, uint32_t displays, uint32_t* width, uint32_t* height) {
  *width = ReadModeInt(mode, displays, L"Max Width", 0);
  *height = ReadModeInt(mode, displays, L"Max Height", 0);
  // Deliberate: one maximum alone limits nothing.
  return *width != 0 && *height != 0;
}
