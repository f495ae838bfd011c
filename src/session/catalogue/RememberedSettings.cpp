#include "session/catalogue/RememberedSettings.h"

#include "Common/Win.h"
#include "session/DMSwitch.h"

namespace {

constexpr char kActiveDisplayMode[] = "Active Display Mode";
constexpr char kPresentationMode[] = "Presentation Mode";

std::string& PathStorage() {
  static std::string path;
  return path;
}

/// Numbers stand in the file in decimal, as the signed number that the run-time library makes of
/// them.
void WriteNumber(const char* section, const char* key, uint32_t value) {
  const std::string text = std::to_string(static_cast<int32_t>(value));
  WritePrivateProfileStringA(section, key, text.c_str(), SettingsPath().c_str());
}

}  // namespace

void EnsureSettingsPath() {
  std::string& path = PathStorage();
  if (!path.empty()) return;
  char folder[MAX_PATH] = {};
  GetTempPathA(MAX_PATH, folder);
  path = std::string(folder) + "Ostrel.ini";
}

const std::string& SettingsPath() { return PathStorage(); }

void GetMonitorSignature(std::string* signature) {
  // The names of monitors cannot be listed yet, so that every set of monitors counts as one without
  // names.
  signature->clear();
}

std::string MakeSettingsSection(uint32_t mode, uint32_t displays, const std::string& signature) {
  return std::to_string(static_cast<int32_t>(mode)) + "," +
         std::to_string(static_cast<int32_t>(displays)) + " | " + signature;
}

SettingsKey MakeSettingsKeyForDisplays(uint32_t mode, uint32_t displays) {
  return {mode, displays, MakeSettingsSection(mode, displays, std::string()), std::string()};
}

const SettingsKey* FindSettingsKey(const std::vector<SettingsKey>& keys, uint32_t mode,
                                   uint32_t displays, const std::string& signature) {
  for (const SettingsKey& key : keys) {
    if (key.mode == mode && key.displays == displays && key.signature == signature) return &key;
  }
  return nullptr;
}

void WriteActiveDisplayMode(uint32_t mode, uint32_t displays, uint32_t presentation_type) {
  WriteNumber(kActiveDisplayMode, "Display Mode", mode);
  WriteNumber(kActiveDisplayMode, "Active Displays", displays);
  WriteNumber(kActiveDisplayMode, kPresentationMode, presentation_type);
}

uint32_t ReadActivePresentationType() {
  return GetPrivateProfileIntA(kActiveDisplayMode, kPresentationMode, 0, SettingsPath().c_str());
}

void DMSwitch::RegisterSettingsKey(uint32_t mode, uint32_t displays, const std::string& signature) {
  if (FindSettingsKey(settings_keys_, mode, displays, signature) != nullptr) return;
  settings_keys_.push_back(
      {mode, displays, MakeSettingsSection(mode, displays, signature), signature});
}

void DMSwitch::SaveDisplaySettings(uint32_t mode, uint32_t displays) {
  std::string signature;
  GetMonitorSignature(&signature);
  EnsureSettingsPath();
  RegisterSettingsKey(mode, displays, signature);
  // The settings themselves are not written yet: without monitor names one section would serve all
  // monitors.
}
